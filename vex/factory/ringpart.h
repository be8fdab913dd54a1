// VEXRingParts: rings of one polygon that touch each other or themselves, made into rings of its parts: those that hang
// together by more than points. Which part is on which side is told by a cover graph of the polygon's own; so holes
// that touch their shell twice part it, loops that run the wrong way count as area, and what runs out and back as
// nothing. Calls: addRing for each, compute once, then the rings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "vex/src/plangeom.h"
#include "vex/topology/vexchain.h"

class VEXRingParts {
 public:
  struct Ring {
    std::uint32_t part;
    std::span<const std::uint32_t> points;  // the first one stands at the end once more
  };

  // A closed ring, clockwise if it is a shell, no point twice in succession. Points are told apart by their numbers.
  void addRing(std::span<const std::uint32_t> points, VEXOrdinates xs, VEXOrdinates ys);
  // False: the rings cross or overlap where they have no points, or coordinates are too large to tell.
  bool compute();
  // The parts' rings with the area on their right, by rising part. Lines with area on both sides are among them, run
  // out and back.
  std::size_t numRings() const { return rings_.size(); }
  Ring ring(std::size_t at) const {
    const std::size_t end = at + 1 < rings_.size() ? rings_[at + 1].first : ringPoints_.size();
    return {rings_[at].part, std::span(ringPoints_).subspan(rings_[at].first, end - rings_[at].first)};
  }

 private:
  struct Run {  // a piece of boundary with the area on its right, in runPoints_
    std::uint32_t part;
    std::uint32_t first, last;
  };
  struct Start {
    std::uint32_t part;
    std::size_t first;
  };
  void noteNodes();
  void formRings();

  VEXChainStore chains_;
  std::vector<std::uint32_t> points_;  // by coordinate of the chains
  std::vector<Run> runs_, seams_;
  std::vector<std::uint32_t> runPoints_;
  std::vector<Start> rings_;
  std::vector<std::uint32_t> ringPoints_;
};
