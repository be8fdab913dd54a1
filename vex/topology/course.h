// The rotational order of lines around a node: exact, whatever the size of the coordinates. The order begins behind the
// east and goes on counter-clockwise, so that the east itself comes last.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "vex/topology/orient.h"

// One end of a line as it is put in order around its node.
struct VEXLineEnd {
  std::uint32_t half = 0;  // half edge
  bool isLower = false;    // seen from the node at more than 180 degrees
  double x = 0.0;          // the first coordinate away from the node
  double y = 0.0;
};

// True for a direction in the second half of the order.
inline bool goesLower(double x, double y, double toX, double toY) {
  return toY < y || (toY == y && toX > x);
}

// Which of two courses that leave their node in the same direction comes first, counter-clockwise: they are followed
// until they part. Negative: a. 0: they never part. A course tells its `count` of coordinates, two or more, and them by
// xAt and yAt, from the node on.
template <class Course>
int compareCourses(const Course& a, const Course& b) {
  double fromX = a.xAt(0);
  double fromY = a.yAt(0);
  std::uint32_t i = 1;
  std::uint32_t j = 1;
  for (;;) {
    // Both go on from `from` in one direction; the nearer of the next two vertices is where they may part.
    const double ax = a.xAt(i), ay = a.yAt(i), bx = b.xAt(j), by = b.yAt(j);
    const bool isSame = ax == bx && ay == by;
    const bool aIsNearer = ax != bx ? (ax < bx) == (ax > fromX) : (ay < by) == (ay > fromY);
    const double x = isSame || aIsNearer ? ax : bx;
    const double y = isSame || aIsNearer ? ay : by;
    if (isSame || aIsNearer) ++i;
    if (isSame || !aIsNearer) ++j;
    if (i == a.count || j == b.count) return (i == a.count ? 0 : 1) - (j == b.count ? 0 : 1);  // what ends comes first
    if (a.xAt(i) == b.xAt(j) && a.yAt(i) == b.yAt(j)) {                                        // on they go
      fromX = x;
      fromY = y;
      continue;
    }
    // Counter-clockwise from the way back: the right side, straight on, the left side.
    auto rank = [&](double toX, double toY) {
      const int side = orientation(fromX, fromY, x, y, toX, toY);
      if (side != 0) return side < 0 ? 1 : 3;
      return inSameDirection(x, y, fromX, fromY, toX, toY) ? 0 : 2;
    };
    const int aRank = rank(a.xAt(i), a.yAt(i));
    const int bRank = rank(b.xAt(j), b.yAt(j));
    if (aRank != bRank) return aRank - bRank;
    const int side = orientation(x, y, a.xAt(i), a.yAt(i), b.xAt(j), b.yAt(j));
    if (side != 0) return -side;
    fromX = x;
    fromY = y;
  }
}

// Puts the ends around the node (x, y) in order. courseOf(half) gives the course of a half edge.
template <class CourseOf>
void sortEnds(double x, double y, VEXLineEnd* ends, std::size_t count, CourseOf&& courseOf) {
  auto comesFirst = [&](const VEXLineEnd& a, const VEXLineEnd& b) {
    if (a.isLower != b.isLower) return b.isLower;
    // The exact answer is asked for where rounding could tell otherwise.
    const double left = (a.x - x) * (b.y - y), right = (a.y - y) * (b.x - x);
    if (std::fabs(left - right) > 1e-15 * (std::fabs(left) + std::fabs(right)) + 1e-280) return left > right;
    const int side = orientation(x, y, a.x, a.y, b.x, b.y);
    if (side != 0) return side > 0;
    const int order = compareCourses(courseOf(a.half), courseOf(b.half));
    return order != 0 ? order < 0 : a.half < b.half;
  };
  constexpr std::size_t kFew = 16;
  if (count > kFew) return std::sort(ends, ends + count, comesFirst);
  for (std::size_t i = 1; i < count; ++i) {
    const VEXLineEnd moved = ends[i];
    std::size_t at = i;
    for (; at > 0 && comesFirst(moved, ends[at - 1]); --at) ends[at] = ends[at - 1];
    ends[at] = moved;
  }
}
