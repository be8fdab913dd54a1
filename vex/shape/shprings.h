// How the rings of an area lie in each other: depth and parent of each. A ring at an even depth is a shell, one at an
// odd depth a hole of its parent. Rings may touch in points and share edges.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vex/src/plangeom.h"

struct ShapeRing {
  std::size_t first = 0;  // its coordinates; the first may stand again at the end
  std::size_t count = 0;
  double area = 0.0;  // positive when it runs counter-clockwise
  std::uint32_t depth = 0;
  std::ptrdiff_t parent = -1;  // the smallest ring around it; -1: none

  bool isHole() const { return depth % 2 == 1; }
};

class ShapeRingOrder {
 public:
  // Sets depth and parent of every ring; area is set already. When that would take too long (many rings beside or
  // in many edges), false: then the direction decides, clockwise rings are shells and a hole goes with the shell
  // before it.
  bool order(VEXOrdinates xs, VEXOrdinates ys, std::vector<ShapeRing>& rings);

 private:
  // A place on an edge of each ring, just inside it.
  struct Probe {
    double x, y;
    std::size_t ring;
    bool isInsideRight;  // the inside of the ring lies toward larger x
  };
  void placeProbes(VEXOrdinates xs, VEXOrdinates ys, const std::vector<ShapeRing>& rings);
  bool countCrossings(VEXOrdinates xs, VEXOrdinates ys, std::vector<ShapeRing>& rings);

  std::vector<Probe> probes_;  // by y
  std::vector<std::uint8_t> isOdd_;
  std::vector<std::size_t> touched_;
};
