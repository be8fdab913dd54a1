// A net of streets for benchmarks of noding and polygon forming: lines of two to five segments that wander over a
// square and cross each other anywhere, 2.1 crossings a line at any number of lines. The same numbers give the same
// net.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

struct Street {
  std::vector<double> x, y;
};

inline std::vector<Street> makeStreets(std::size_t numStreets, std::uint64_t seed = 20261123) {
  std::uint64_t state = seed;
  auto random01 = [&state] {
    state += 0x9E3779B97F4A7C15U;
    std::uint64_t z = state;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    return static_cast<double>((z ^ (z >> 31)) >> 11) * 0x1p-53;
  };
  // 3.5 segments a line, 50 m on the average; this side gives as many crossings as a net of towns has.
  const double side = 36.0 * std::sqrt(3.5 * static_cast<double>(numStreets));
  std::vector<Street> streets(numStreets);
  for (Street& street : streets) {
    const std::size_t numSegments = 2 + static_cast<std::size_t>(random01() * 4.0);
    double x = random01() * side;
    double y = random01() * side;
    double heading = random01() * 6.283185307179586;
    street.x.push_back(x);
    street.y.push_back(y);
    for (std::size_t i = 0; i < numSegments; ++i) {
      const double length = 20.0 + 60.0 * random01();
      x += length * std::cos(heading);
      y += length * std::sin(heading);
      street.x.push_back(x);
      street.y.push_back(y);
      heading += random01() - 0.5;
    }
  }
  return streets;
}
