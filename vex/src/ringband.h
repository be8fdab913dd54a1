// VEXRingBands: the edges of one ring by bands of y, for many points to be tested against a ring of many vertices.
// Tells of each point what isPointInRing tells. The ring's arrays outlive it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vex/src/plangeom.h"

class VEXRingBands {
 public:
  VEXRingBands(VEXOrdinates xs, VEXOrdinates ys);
  bool holds(double px, double py) const;

 private:
  std::size_t bandOf(double y) const;

  VEXOrdinates xs_, ys_;
  double minY_ = 0.0, maxY_ = 0.0, perUnit_ = 0.0;
  std::size_t numBands_ = 1;
  std::vector<std::size_t> starts_;   // of each band in edges_, and the end
  std::vector<std::uint32_t> edges_;  // by their first vertex; the last vertex, too, which begins none
};
