// Compares pairs of segments and tells the chains where they meet. Owned by what goes through the pairs, for one round
// of noding.
#pragma once

#include <cstdint>

#include "vex/topology/segmeet.h"
#include "vex/topology/vexchain.h"

class VEXSegmentComparer {
 public:
  // takesAll: the first round, in which no piece is better known than its coordinates are. isSingle: points that are
  // equal in single precision are one.
  VEXSegmentComparer(VEXChainStore& chains, bool takesAll, bool isSingle)
      : chains_(chains), takesAll_(takesAll), isSingle_(isSingle) {}

  // False when they are apart with certainty, which depends on their coordinates and tolerances only.
  bool compare(std::uint32_t one, std::uint32_t other);

 private:
  void compareNear(std::uint32_t one, std::uint32_t other, const VEXSegment& s, const VEXSegment& t, double tolerance);
  void addCrossing(std::uint32_t one, std::uint32_t other, const VEXSegment& s, const VEXSegment& t, double tolerance,
                   bool isNarrow);
  bool areNeighbours(std::uint32_t endCoord, std::uint32_t startCoord) const;
  bool isRingJoint(std::uint32_t firstSegment, std::uint32_t lastSegment) const;

  VEXChainStore& chains_;
  bool takesAll_;
  bool isSingle_;
};
