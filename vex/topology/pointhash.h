// Hashes over the bits of coordinates. They are the same in every run, and nothing that is put out depends on them.
#pragma once

#include <bit>
#include <cstdint>

inline std::uint64_t mixBits(std::uint64_t h) {
  h ^= h >> 32;
  h *= 0xD6E8FEB86659FD93U;
  h ^= h >> 32;
  h *= 0xD6E8FEB86659FD93U;
  return h ^ (h >> 32);
}

inline std::uint64_t pointHash(double x, double y) {
  // Adding 0 makes one number of 0 and -0.
  const std::uint64_t xBits = std::bit_cast<std::uint64_t>(x + 0.0);
  const std::uint64_t yBits = std::bit_cast<std::uint64_t>(y + 0.0);
  return mixBits(xBits * 0x9E3779B97F4A7C15U + std::rotl(yBits, 29) * 0xC2B2AE3D27D4EB4FU);
}
