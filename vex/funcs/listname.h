// Names of list attributes, such as "part{3}.height", held against patterns, such as "part{}".
#pragma once

#include <cstddef>
#include <string_view>

// The length of the part of `name`, from its start, that fits `pattern`, in which each "{}" stands for any "{digits}";
// 0 when none does.
inline std::size_t listPrefixLength(std::string_view name, std::string_view pattern) {
  std::size_t at = 0;
  for (std::size_t p = 0; p < pattern.size(); ++p) {
    if (at >= name.size() || name[at] != pattern[p]) return 0;
    ++at;
    if (pattern[p] != '{' || p + 1 >= pattern.size() || pattern[p + 1] != '}') continue;
    const std::size_t first = at;
    while (at < name.size() && name[at] >= '0' && name[at] <= '9') ++at;
    if (at == first) return 0;
  }
  return at;
}
