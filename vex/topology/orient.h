// On which side of a line a point lies, exactly, for any finite coordinates: rotational order and the sides of faces
// must not depend on rounding, nor on the size of the coordinates.
#pragma once

#include <cstddef>
#include <span>

// 1 when c lies to the left of the line from a to b, -1 to the right, 0 on it.
int orientation(double ax, double ay, double bx, double by, double cx, double cy);

// True when a and b, neither of them equal to `from`, are seen from it in the same direction.
bool inSameDirection(double fromX, double fromY, double ax, double ay, double bx, double by);

// 1 when a ring that meets itself nowhere runs counter-clockwise, -1 clockwise, exactly. First coordinate equal to
// last. 0: it turns back on itself at its leftmost place, or lies in one place.
int ringDirection(std::span<const double> xs, std::span<const double> ys);

// How often a closed line turns counter-clockwise: 1 for a ring that runs so and meets itself nowhere, -1 for a
// clockwise one. First coordinate equal to last, none equal to its successor. Where the line turns back on itself the
// answer depends on the side on which it turns: `turnsLeft(i)` is asked for vertex i.
template <class TurnsLeft>
int turningNumber(const double* xs, const double* ys, std::size_t count, TurnsLeft&& turnsLeft) {
  if (count < 3) return 0;
  auto goesUp = [&](std::size_t from, std::size_t to) {
    return ys[to] > ys[from] || (ys[to] == ys[from] && xs[to] > xs[from]);
  };
  // A turn counts when it passes the direction of the x axis: leftward from below to above, rightward back.
  int turns = 0;
  bool wasUp = goesUp(count - 2, count - 1);
  for (std::size_t i = 0; i + 1 < count; ++i) {
    const bool isUp = goesUp(i, i + 1);
    if (isUp == wasUp) continue;
    const std::size_t before = i > 0 ? i - 1 : count - 2;
    int side = orientation(xs[before], ys[before], xs[i], ys[i], xs[i + 1], ys[i + 1]);
    if (side == 0) side = turnsLeft(i) ? 1 : -1;  // up on one side and down on the other, in line: it turns back
    if (isUp && side > 0) ++turns;
    if (!isUp && side < 0) --turns;
    wasUp = isUp;
  }
  return turns;
}
