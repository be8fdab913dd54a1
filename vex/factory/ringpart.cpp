#include "vex/factory/ringpart.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

#include "vex/topology/covergrf.h"
#include "vex/topology/lineintersector.h"
#include "vex/topology/piececut.h"

void VEXRingParts::addRing(std::span<const std::uint32_t> points, VEXOrdinates xs, VEXOrdinates ys) {
  chains_.addChain(xs, ys, {}, 1);
  points_.insert(points_.end(), points.begin(), points.end());
}

// Nodes are the points that stand twice, and those where a ring turns back.
void VEXRingParts::noteNodes() {
  std::vector<std::pair<std::uint32_t, std::uint32_t>> places;  // point, coordinate
  chains_.beginRounds();
  for (std::size_t chain = 0; chain < chains_.numChains(); ++chain) {
    const std::uint32_t first = chains_.chain(chain).first, last = chains_.endOf(chain) - 1;
    for (std::uint32_t at = first; at < last; ++at) {
      places.emplace_back(points_[at], at);
      if (points_[at == first ? last - 1 : at - 1] == points_[at + 1]) chains_.makeNodeAt(at);
    }
  }
  std::sort(places.begin(), places.end());
  for (std::size_t i = 1; i < places.size(); ++i)
    if (places[i].first == places[i - 1].first) chains_.link(places[i - 1].second, places[i].second);
  chains_.rebuild();  // moves and adds nothing: nodes lie in coordinates only
  chains_.endRounds();
}

bool VEXRingParts::compute() {
  if (points_.size() > VEXChainStore::kMostCoords) return false;
  auto isTooLarge = [](double value) { return std::fabs(value) > VEXLineIntersector::kLargestCoord; };
  if (std::any_of(chains_.xs().begin(), chains_.xs().end(), isTooLarge) ||
      std::any_of(chains_.ys().begin(), chains_.ys().end(), isTooLarge))
    return false;
  noteNodes();
  VEXCoverGraph graph(chains_);
  VEXPieceCutter cutter(chains_);
  for (VEXPieceCourse course; cutter.nextCourse(course);) graph.add(course);
  if (!graph.build()) return false;
  for (std::size_t piece = 0; piece < graph.numPieces(); ++piece)
    if (graph.leftCover(piece) != 0 && graph.rightCover(piece) != 0) graph.joinSides(piece);
  for (std::size_t piece = 0; piece < graph.numPieces(); ++piece) {
    const bool coversLeft = graph.leftCover(piece) != 0, coversRight = graph.rightCover(piece) != 0;
    if (!coversLeft && !coversRight) continue;
    const VEXPieceCourse& course = graph.course(piece);
    const auto first = static_cast<std::uint32_t>(runPoints_.size());
    auto take = [&](std::uint32_t from, std::uint32_t to) {
      for (std::uint32_t at = from; at <= to; ++at) runPoints_.push_back(points_[at]);
    };
    if (course.first < course.last) {
      take(course.first, course.last);
    } else {  // over the end of its ring
      const std::size_t chain = chains_.chainOf(course.first);
      take(course.first, chains_.endOf(chain) - 1);
      take(chains_.chain(chain).first + 1, course.last);
    }
    if (!coversRight) std::reverse(runPoints_.begin() + first, runPoints_.end());
    const std::uint32_t part = coversRight ? graph.rightRegion(piece) : graph.leftRegion(piece);
    const auto last = static_cast<std::uint32_t>(runPoints_.size() - 1);
    (coversLeft && coversRight ? seams_ : runs_).push_back({part, first, last});
  }
  formRings();
  return true;
}

// Around each node a part's runs come and go in turn, so whichever goes on from where one ended leads back to its
// start.
void VEXRingParts::formRings() {
  auto startOf = [this](const Run& run) { return std::pair(run.part, runPoints_[run.first]); };
  auto isBefore = [](const Run& a, const Run& b) { return a.part != b.part ? a.part < b.part : a.first < b.first; };
  std::sort(runs_.begin(), runs_.end(), [&](const Run& a, const Run& b) {
    return std::tuple(startOf(a), a.first) < std::tuple(startOf(b), b.first);
  });
  std::sort(seams_.begin(), seams_.end(), isBefore);
  std::vector<bool> isTaken(runs_.size());
  std::vector<std::size_t> nextOf(
      runs_.size());  // by the first run of those with one start: the first that may be free
  for (std::size_t i = 0; i < runs_.size(); ++i) nextOf[i] = i;
  std::size_t seam = 0;
  auto addSeams = [&](std::uint32_t before) {
    for (; seam < seams_.size() && seams_[seam].part < before; ++seam) {
      const Run& run = seams_[seam];
      rings_.push_back({run.part, ringPoints_.size()});
      for (std::uint32_t at = run.first; at <= run.last; ++at) ringPoints_.push_back(runPoints_[at]);
      for (std::uint32_t at = run.last; at-- > run.first;) ringPoints_.push_back(runPoints_[at]);
    }
  };
  for (std::size_t i = 0; i < runs_.size(); ++i) {
    if (isTaken[i]) continue;
    const auto [part, start] = startOf(runs_[i]);
    addSeams(part);
    rings_.push_back({part, ringPoints_.size()});
    ringPoints_.push_back(start);
    for (std::size_t at = i; at < runs_.size();) {
      isTaken[at] = true;
      for (std::uint32_t k = runs_[at].first + 1; k <= runs_[at].last; ++k) ringPoints_.push_back(runPoints_[k]);
      const std::pair end(part, ringPoints_.back());
      if (end.second == start) break;
      const auto found = std::lower_bound(runs_.begin(), runs_.end(), end,
                                          [&](const Run& run, const auto& value) { return startOf(run) < value; });
      const auto first = static_cast<std::size_t>(found - runs_.begin());
      if (first == runs_.size()) break;
      while (nextOf[first] < runs_.size() && isTaken[nextOf[first]]) ++nextOf[first];
      at = nextOf[first];
    }
  }
  addSeams(UINT32_MAX);
}
