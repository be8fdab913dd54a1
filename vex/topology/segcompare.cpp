#include "vex/topology/segcompare.h"

#include <algorithm>

#include "vex/topology/spatialgridcore.h"

// True when a chain goes on from the one coordinate to the other without going anywhere.
bool VEXSegmentComparer::areNeighbours(std::uint32_t endCoord, std::uint32_t startCoord) const {
  if (endCoord == startCoord) return true;
  if (startCoord < endCoord) return false;
  const VEXOrdinates xs = chains_.xs(), ys = chains_.ys();
  for (std::uint32_t at = endCoord; at < startCoord; ++at)
    if (xs[at] != xs[at + 1] || ys[at] != ys[at + 1]) return false;
  return chains_.chainOf(endCoord) == chains_.chainOf(startCoord);
}

// True when a ring closes between the two segments.
bool VEXSegmentComparer::isRingJoint(std::uint32_t firstSegment, std::uint32_t lastSegment) const {
  const std::size_t number = chains_.chainOf(firstSegment);
  const std::uint32_t end = chains_.endOf(number);
  if (!chains_.chain(number).isRing || lastSegment >= end) return false;
  return areNeighbours(chains_.chain(number).first, firstSegment) && areNeighbours(lastSegment + 1, end - 1);
}

void VEXSegmentComparer::addCrossing(std::uint32_t one, std::uint32_t other, const VEXSegment& s, const VEXSegment& t,
                                     double tolerance, bool isNarrow) {
  double x, y;
  const double times = crossingOf(s, t, x, y);
  chains_.addCrossing(one, other, x, y, tolerance * times, isSingle_);
  if (isNarrow) {
    chains_.markDirty(one);
    chains_.markDirty(other);
  }
}

bool VEXSegmentComparer::compare(std::uint32_t one, std::uint32_t other) {
  if (other < one) std::swap(one, other);
  const VEXSegment s = chains_.segment(one), t = chains_.segment(other);
  if (other == one + 1 && goesOnClearly(s, t)) return true;
  const double sizeS = sizeOf(s), sizeT = sizeOf(t);
  // A piece knows its ends no better than they were computed, however small its own coordinates are.
  const double tolerance = takesAll_ ? kPlaceTolerance * std::min(sizeS, sizeT)
                                     : std::min(std::max(kPlaceTolerance * sizeS, chains_.toleranceOf(one)),
                                                std::max(kPlaceTolerance * sizeT, chains_.toleranceOf(other)));
  VEXEndPair pair;
  switch (quickMeeting(s, t, tolerance, pair)) {
    case VEXMeeting::None:
      return false;
    case VEXMeeting::Cross:
      // Points on the segment of larger coordinates are off by more than the other's tolerance.
      addCrossing(one, other, s, t, tolerance, pair.isNarrow || sizeS > 4.0 * sizeT || sizeT > 4.0 * sizeS);
      return true;
    case VEXMeeting::Ends: {
      const std::uint32_t first = one + pair.firstEnd, second = other + pair.secondEnd;
      if (chains_.nodeAt(first) != kNoNode && chains_.nodeAt(first) == chains_.nodeAt(second)) return true;
      if (pair.firstEnd && !pair.secondEnd && areNeighbours(first, second)) return true;
      if (!pair.firstEnd && pair.secondEnd && isRingJoint(one, other)) return true;
      chains_.link(first, second);
      return true;
    }
    case VEXMeeting::Near:
      compareNear(one, other, s, t, tolerance);
      return true;
  }
  return true;
}

void VEXSegmentComparer::compareNear(std::uint32_t one, std::uint32_t other, const VEXSegment& s, const VEXSegment& t,
                                     double tolerance) {
  VEXNearMeeting near = nearMeeting(s, t, tolerance);
  if (near.isCrossing) return addCrossing(one, other, s, t, tolerance, true);
  if (!near.any()) return;
  // Segments in succession share an end; that counts only when one folds back on the other.
  if (s.x2 == t.x1 && s.y2 == t.y1 && areNeighbours(one + 1, other) && !near.firstStart && !near.secondEnd) return;
  if (s.x1 == t.x2 && s.y1 == t.y2 && isRingJoint(one, other) && !near.firstEnd && !near.secondStart) return;
  auto thread = [&](bool isOn, std::uint32_t coord, std::uint32_t segment) {
    if (isOn)
      chains_.thread(chains_.makeNodeAt(coord), chains_.xs()[coord], chains_.ys()[coord], segment, tolerance,
                     isSingle_);
  };
  thread(near.firstStart, one, other);
  thread(near.firstEnd, one + 1, other);
  thread(near.secondStart, other, one);
  thread(near.secondEnd, other + 1, one);
  if (near.isInexact) {
    chains_.markDirty(one);
    chains_.markDirty(other);
  }
}
