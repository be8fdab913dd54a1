#include "vex/shape/shprings.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr std::uint64_t kMostSteps = std::uint64_t{1} << 28;
constexpr double kFraction = 0.6180339887498949;  // where on its edge a probe stands: seldom where another ring touches

struct Edge {
  double lowX, lowY, highX, highY;
};

// The edge with its lower end first: a shared edge gives the same crossing to the last bit from either ring.
Edge edgeAt(VEXOrdinates xs, VEXOrdinates ys, const ShapeRing& ring, std::size_t i) {
  const std::size_t a = ring.first + i;
  const std::size_t b = i + 1 < ring.count ? a + 1 : ring.first;
  if (ys[a] <= ys[b]) return {xs[a], ys[a], xs[b], ys[b]};
  return {xs[b], ys[b], xs[a], ys[a]};
}

double crossingAt(const Edge& edge, double y) {
  return edge.lowX + (y - edge.lowY) * (edge.highX - edge.lowX) / (edge.highY - edge.lowY);
}

void orderByDirection(std::vector<ShapeRing>& rings) {
  std::ptrdiff_t shell = -1;
  for (std::size_t i = 0; i < rings.size(); ++i) {
    const bool isHole = shell >= 0 && rings[i].area > 0.0;
    rings[i].depth = isHole ? 1 : 0;
    rings[i].parent = isHole ? shell : -1;
    if (!isHole) shell = static_cast<std::ptrdiff_t>(i);
  }
}

}  // namespace

bool ShapeRingOrder::order(VEXOrdinates xs, VEXOrdinates ys, std::vector<ShapeRing>& rings) {
  for (ShapeRing& ring : rings) {
    ring.depth = 0;
    ring.parent = -1;
  }
  if (rings.size() < 2) return true;
  placeProbes(xs, ys, rings);
  if (countCrossings(xs, ys, rings)) return true;
  orderByDirection(rings);
  return false;
}

void ShapeRingOrder::placeProbes(VEXOrdinates xs, VEXOrdinates ys, const std::vector<ShapeRing>& rings) {
  probes_.clear();
  for (std::size_t r = 0; r < rings.size(); ++r) {
    const ShapeRing& ring = rings[r];
    double rise = 0.0;
    std::size_t steepest = 0;
    for (std::size_t i = 0; i < ring.count; ++i) {
      const Edge edge = edgeAt(xs, ys, ring, i);
      if (edge.highY - edge.lowY <= rise) continue;
      rise = edge.highY - edge.lowY;
      steepest = i;
    }
    if (rise == 0.0) continue;  // a flat ring is in nothing
    const Edge edge = edgeAt(xs, ys, ring, steepest);
    const double y = edge.lowY + kFraction * rise;
    const bool goesUp = edge.lowX == xs[ring.first + steepest] && edge.lowY == ys[ring.first + steepest];
    probes_.push_back({crossingAt(edge, y), y, r, (ring.area > 0.0) != goesUp});
  }
  std::sort(probes_.begin(), probes_.end(), [](const Probe& a, const Probe& b) { return a.y < b.y; });
  isOdd_.assign(probes_.size(), 0);
}

// A probe lies in a ring when the ring's edges to its left are odd in number.
bool ShapeRingOrder::countCrossings(VEXOrdinates xs, VEXOrdinates ys, std::vector<ShapeRing>& rings) {
  std::uint64_t steps = 0;
  const auto isBelow = [](const Probe& probe, double y) { return probe.y < y; };
  for (std::size_t r = 0; r < rings.size(); ++r) {
    touched_.clear();
    for (std::size_t i = 0; i < rings[r].count; ++i) {
      const Edge edge = edgeAt(xs, ys, rings[r], i);
      auto at = std::lower_bound(probes_.begin(), probes_.end(), edge.lowY, isBelow);
      for (; at != probes_.end() && at->y < edge.highY; ++at) {
        if (++steps > kMostSteps) return false;
        if (at->ring == r) continue;
        const double x = crossingAt(edge, at->y);
        if (!(x < at->x || (x == at->x && at->isInsideRight))) continue;
        const auto index = static_cast<std::size_t>(at - probes_.begin());
        isOdd_[index] ^= 1;
        touched_.push_back(index);
      }
    }
    for (const std::size_t index : touched_) {
      if (isOdd_[index] == 0) continue;
      isOdd_[index] = 0;
      ShapeRing& inner = rings[probes_[index].ring];
      ++inner.depth;
      if (inner.parent < 0 || std::fabs(rings[r].area) < std::fabs(rings[static_cast<std::size_t>(inner.parent)].area))
        inner.parent = static_cast<std::ptrdiff_t>(r);
    }
  }
  return true;
}
