#include "vex/topology/segmeet.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace {

double smaller(double a, double b) {
  return a < b ? a : b;
}
double larger(double a, double b) {
  return a > b ? a : b;
}

// An end against a segment whose cross product with it is known.
bool liesOn(double x, double y, const VEXSegment& s, double cross, double tolerance) {
  const double dx = s.x2 - s.x1, dy = s.y2 - s.y1;
  const double along = (x - s.x1) * dx + (y - s.y1) * dy;
  const double square = dx * dx + dy * dy;
  if (along <= 0.0) return larger(std::fabs(x - s.x1), std::fabs(y - s.y1)) <= tolerance;
  if (along >= square) return larger(std::fabs(x - s.x2), std::fabs(y - s.y2)) <= tolerance;
  return std::fabs(cross) <= tolerance * std::sqrt(square);
}

}  // namespace

double crossingOf(const VEXSegment& s, const VEXSegment& t, double& x, double& y) {
  VEXSegment a = s, b = t;
  auto upward = [](VEXSegment& g) {
    if (std::tie(g.x2, g.y2) < std::tie(g.x1, g.y1)) {
      std::swap(g.x1, g.x2);
      std::swap(g.y1, g.y2);
    }
  };
  upward(a);
  upward(b);
  // The point is laid on the segment with the smaller coordinates, where it is told more finely.
  const double sizeA = sizeOf(a), sizeB = sizeOf(b);
  if (std::tie(sizeB, b.x1, b.y1, b.x2, b.y2) < std::tie(sizeA, a.x1, a.y1, a.x2, a.y2)) std::swap(a, b);
  const double dax = a.x2 - a.x1, day = a.y2 - a.y1, dbx = b.x2 - b.x1, dby = b.y2 - b.y1;
  const double turn = dax * dby - day * dbx;
  double part = turn == 0.0 ? 0.5 : ((b.x1 - a.x1) * dby - (b.y1 - a.y1) * dbx) / turn;
  if (!(part > 0.0)) part = 0.0;
  if (part > 1.0) part = 1.0;
  x = a.x1 + part * dax;
  y = a.y1 + part * day;
  // Rounding must not take it out of either box.
  x = smaller(larger(x, larger(smaller(a.x1, a.x2), smaller(b.x1, b.x2))),
              smaller(larger(a.x1, a.x2), larger(b.x1, b.x2)));
  y = smaller(larger(y, larger(smaller(a.y1, a.y2), smaller(b.y1, b.y2))),
              smaller(larger(a.y1, a.y2), larger(b.y1, b.y2)));
  constexpr double kMostTimes = 256.0;
  const double reach = (std::fabs(dax) + std::fabs(day)) * (std::fabs(dbx) + std::fabs(dby));
  return reach >= 4.0 * kMostTimes * std::fabs(turn) ? kMostTimes : larger(1.0, reach / (4.0 * std::fabs(turn)));
}

VEXNearMeeting nearMeeting(const VEXSegment& s, const VEXSegment& t, double tolerance) {
  VEXNearMeeting near;
  const double dsx = s.x2 - s.x1, dsy = s.y2 - s.y1, dtx = t.x2 - t.x1, dty = t.y2 - t.y1;
  const double o1 = dsx * (t.y1 - s.y1) - dsy * (t.x1 - s.x1);
  const double o2 = dsx * (t.y2 - s.y1) - dsy * (t.x2 - s.x1);
  const double o3 = dtx * (s.y1 - t.y1) - dty * (s.x1 - t.x1);
  const double o4 = dtx * (s.y2 - t.y1) - dty * (s.x2 - t.x1);
  near.secondStart = liesOn(t.x1, t.y1, s, o1, tolerance);
  near.secondEnd = liesOn(t.x2, t.y2, s, o2, tolerance);
  near.firstStart = liesOn(s.x1, s.y1, t, o3, tolerance);
  near.firstEnd = liesOn(s.x2, s.y2, t, o4, tolerance);
  const double turn = dsx * dty - dsy * dtx;
  const double reachS = std::fabs(dsx) + std::fabs(dsy), reachT = std::fabs(dtx) + std::fabs(dty);
  const bool isNarrow = std::fabs(turn) < kNarrow * reachS * reachT;
  if (near.any()) {
    const bool isCollinear = o1 == 0.0 && o2 == 0.0 && o3 == 0.0 && o4 == 0.0;
    const bool isExact = (!near.secondStart || o1 == 0.0) && (!near.secondEnd || o2 == 0.0) &&
                         (!near.firstStart || o3 == 0.0) && (!near.firstEnd || o4 == 0.0);
    near.isInexact = !isCollinear && (isNarrow || !isExact);
    return near;
  }
  const int s1 = orientation(s.x1, s.y1, s.x2, s.y2, t.x1, t.y1);
  const int s2 = orientation(s.x1, s.y1, s.x2, s.y2, t.x2, t.y2);
  if (s1 * s2 >= 0) return near;
  const int s3 = orientation(t.x1, t.y1, t.x2, t.y2, s.x1, s.y1);
  const int s4 = orientation(t.x1, t.y1, t.x2, t.y2, s.x2, s.y2);
  near.isCrossing = s3 * s4 < 0;
  near.isInexact = near.isCrossing;
  return near;
}
