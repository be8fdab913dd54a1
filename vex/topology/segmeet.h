// Where two segments meet. Free functions on plain coordinates: which ends lie on the other segment, and the point in
// which two segments cross, the same bit for bit whatever way the two run and whichever comes first.
#pragma once

#include <cmath>
#include <cstdint>

#include "vex/topology/orient.h"

struct VEXSegment {
  double x1, y1, x2, y2;
};

enum class VEXMeeting : std::uint8_t {
  None,   // with certainty: no end is near the other segment
  Cross,  // inside both, no end is near
  Ends,   // two ends are equal and the segments part there at a clear angle: firstEnd, secondEnd
  Near    // ends lie on or near the other segment: ask nearMeeting
};

struct VEXEndPair {
  bool firstEnd = false;  // false: x1, y1
  bool secondEnd = false;
  bool isNarrow = false;  // a crossing at less than a thousandth of a right angle, or so
};

// The point in which two segments cross that do. Gives how many times farther off it may be than a crossing at a clear
// angle: it lies on both segments, but along them it is told the worse the narrower their angle is.
double crossingOf(const VEXSegment& s, const VEXSegment& t, double& x, double& y);

// The full test for segments with ends near each other.
struct VEXNearMeeting {
  // Ends that lie within the tolerance of the other segment.
  bool firstStart = false, firstEnd = false, secondStart = false, secondEnd = false;
  bool isCrossing = false;  // no end is near, but they cross
  bool isInexact =
      false;  // an end is near only, or they run side by side: what is made of them must be looked at again
  bool any() const { return firstStart || firstEnd || secondStart || secondEnd; }
};
VEXNearMeeting nearMeeting(const VEXSegment& s, const VEXSegment& t, double tolerance);

inline double sizeOf(const VEXSegment& s) {
  const double x = std::fabs(s.x1) > std::fabs(s.x2) ? std::fabs(s.x1) : std::fabs(s.x2);
  const double y = std::fabs(s.y1) > std::fabs(s.y2) ? std::fabs(s.y1) : std::fabs(s.y2);
  return x > y ? x : y;
}

inline constexpr double kNarrow = 0x1p-10;  // sine of an angle below which a meeting is looked at again

// Two segments of a chain in succession that meet in their common end and nowhere else, as nearly all do.
inline bool goesOnClearly(const VEXSegment& s, const VEXSegment& t) {
  const double dsx = s.x2 - s.x1, dsy = s.y2 - s.y1, dtx = t.x2 - t.x1, dty = t.y2 - t.y1;
  const double reach = (std::fabs(dsx) + std::fabs(dsy)) * (std::fabs(dtx) + std::fabs(dty));
  return std::fabs(dsx * dty - dsy * dtx) > 2.0 * kNarrow * reach;
}

// The quick test, by signs of cross products relative to the first end. Products are off by no more than four units
// in their last place: within that, and within the tolerance, nothing is told here.
inline VEXMeeting quickMeeting(const VEXSegment& s, const VEXSegment& t, double tolerance, VEXEndPair& pair) {
  const double dsx = s.x2 - s.x1, dsy = s.y2 - s.y1, dtx = t.x2 - t.x1, dty = t.y2 - t.y1;
  const double reachS = std::fabs(dsx) + std::fabs(dsy), reachT = std::fabs(dtx) + std::fabs(dty);
  const double slack = tolerance + 0x1p-50 * (reachS + reachT);
  const double slackS = slack * reachS, slackT = slack * reachT;
  const double o1 = dsx * (t.y1 - s.y1) - dsy * (t.x1 - s.x1);
  const double o2 = dsx * (t.y2 - s.y1) - dsy * (t.x2 - s.x1);
  if ((o1 > slackS && o2 > slackS) || (o1 < -slackS && o2 < -slackS)) return VEXMeeting::None;
  const double o3 = dtx * (s.y1 - t.y1) - dty * (s.x1 - t.x1);
  const double o4 = dtx * (s.y2 - t.y1) - dty * (s.x2 - t.x1);
  if ((o3 > slackT && o4 > slackT) || (o3 < -slackT && o4 < -slackT)) return VEXMeeting::None;
  const double turn = dsx * dty - dsy * dtx;
  const bool isNarrow = std::fabs(turn) < kNarrow * reachS * reachT;
  if (std::fabs(o1) > slackS && std::fabs(o2) > slackS && std::fabs(o3) > slackT && std::fabs(o4) > slackT) {
    pair.isNarrow = isNarrow;
    return VEXMeeting::Cross;
  }
  if (s.x1 == t.x1 && s.y1 == t.y1) {
    pair.firstEnd = pair.secondEnd = false;
  } else if (s.x2 == t.x1 && s.y2 == t.y1) {
    pair.firstEnd = true, pair.secondEnd = false;
  } else if (s.x1 == t.x2 && s.y1 == t.y2) {
    pair.firstEnd = false, pair.secondEnd = true;
  } else if (s.x2 == t.x2 && s.y2 == t.y2) {
    pair.firstEnd = pair.secondEnd = true;
  } else {
    return VEXMeeting::Near;
  }
  if (isNarrow) {
    // Side by side from the shared end on, unless the one goes on where the other ends.
    const double dot = dsx * dtx + dsy * dty;
    if ((pair.firstEnd == pair.secondEnd) == (dot > 0.0)) return VEXMeeting::Near;
  }
  return VEXMeeting::Ends;
}
