// Where two lines meet each other and themselves: made of the two, it tells how often they do and gives their pieces.
#pragma once

#include "vex/topology/lineintersector.h"

class VEXIntersectionMap {
 public:
  // Does the work at once; look at takeStatus() before anything else. 329001: a coordinate that is no finite number.
  VEXIntersectionMap(const VEXLine& first, const VEXLine& second, const VEXIntersectorParms& parms = {});

  VEXStatus takeStatus() { return std::move(status_); }
  // Points in which pieces end that meet others.
  std::size_t numCrossings() const { return intersector_.numMeetings(); }
  // Chain 1 is the first line, chain 2 the second.
  bool nextPiece(VEXChainPiece& piece) { return intersector_.nextPiece(piece); }

 private:
  VEXLineIntersector intersector_;
  VEXStatus status_;
};
