// letGo: frees what containers hold. Assigning an empty list to a vector would leave its memory with it.
#pragma once

template <class... Containers>
void letGo(Containers&... containers) {
  ((containers = Containers()), ...);
}
