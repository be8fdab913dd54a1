// Runs of points, asked at once what a loop over them would ask one by one. Written so that compilers make vector
// operations of the loops.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace pointrun {

// Written so that a difference in x, which is the rule, is one branch.
inline bool isSame(double x1, double y1, double x2, double y2) {
  return __builtin_expect(x1 == x2, 0) && y1 == y2;
}

inline std::uint64_t bitsOf(double value) {
  return std::bit_cast<std::uint64_t>(value + 0.0);  // -0.0 becomes 0.0
}

// The highest bit is set when the two differ.
inline std::uint64_t difference(std::uint64_t one, std::uint64_t other) {
  const std::uint64_t bits = one ^ other;
  return bits | (0 - bits);
}

// True when no point equals its successor, nor any but the last the first. Numbers only.
inline bool hasNoRepeats(const double* x, const double* y, std::size_t count) {
  const std::uint64_t first = bitsOf(x[0]);
  std::uint64_t differ = ~std::uint64_t{0};
  for (std::size_t i = 1; i < count; ++i) differ &= difference(bitsOf(x[i]), bitsOf(x[i - 1]));
  for (std::size_t i = 1; i + 1 < count; ++i) differ &= difference(bitsOf(x[i]), first);
  if (differ >> 63 == 1) [[likely]]
    return true;
  for (std::size_t i = 1; i < count; ++i)
    if (isSame(x[i], y[i], x[i - 1], y[i - 1]) || (i + 1 < count && isSame(x[i], y[i], x[0], y[0]))) return false;
  return true;
}

}  // namespace pointrun
