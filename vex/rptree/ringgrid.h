// RingGrid: cells over a polygon of many vertices. Those that no edge comes near and that lie inside spare the walk of
// the polygon for each candidate in them. Made for one search of a polygon; it outlives the grid.
#pragma once

#include <cstdint>
#include <vector>

#include "vex/rptree/rpnode.h"
#include "vex/src/vexline.h"

class RingGrid {
 public:
  // The number of cells along a side that pays for so many candidates, or 0.
  static std::size_t cellsFor(std::size_t numCandidates, std::size_t numCoords);

  VEXStatus build(const VEXLine& polygon, std::size_t numCells);
  // True: the box lies in inside cells. False says nothing.
  bool holds(const RpBox& box) const;

 private:
  bool place(double value, double origin, double size, std::size_t& cell) const;
  void markEdge(double x1, double y1, double x2, double y2);

  std::size_t numCells_ = 0;
  double originX_ = 0.0, originY_ = 0.0, cellWidth_ = 0.0, cellHeight_ = 0.0;
  std::vector<std::uint8_t> cells_;  // row by row
};
