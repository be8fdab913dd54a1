// The recursive grid under the search for pairs that may meet: squares hold numbers of entries in counting-sorted
// lists, and a crowded square is divided again when that pays. It owns nothing but its lists.
#pragma once

#include <cstddef>
#include <cstdint>

#include "vex/src/plangeom.h"

// Row and column share one key, so a grid has at most 65536 of either.
struct VEXGridParms {
  std::uint32_t rows = 25;
  std::uint32_t cols = 25;
  std::uint32_t maxDepth = 12;   // levels that a square may be divided
  std::uint32_t maxEntries = 40;  // entries before a square is divided
};

// A square as the dump of a grid tells it.
struct VEXGridSquare {
  VEXBox extent;
  std::uint32_t key = 0;  // (row << 16) + column in its own grid
  std::uint32_t gridId = 0;  // 1 for the top grid, others in the order in which they are made
  std::uint32_t depth = 0;  // 0 in the top grid
  std::size_t numEntries = 0;
  bool isSubdivided = false;
};
