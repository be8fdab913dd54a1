#include "vex/topology/vexchain.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

#include "vex/inc/vexassert.h"
#include "vex/topology/spatialgridcore.h"

namespace {

constexpr std::size_t kFewestToSettle = std::size_t{1} << 22;
// Pieces shorter than this part of their coordinates' size may be crossed by a neighbour at a narrow angle.
constexpr double kShortPiece = kPlaceTolerance / kNarrow * 2.0;

double sizeOf(double x, double y) {
  return std::max(std::fabs(x), std::fabs(y));
}

// As many digits as single precision has; beyond its range, too, where all values would be one.
double inSingle(double value) {
  constexpr double kMost = std::numeric_limits<float>::max(), kLeast = std::numeric_limits<float>::min();
  constexpr double kScale = 0x1p200;
  const double size = std::fabs(value);
  if (size < kMost && size >= kLeast) return static_cast<double>(static_cast<float>(value));
  if (size < kLeast) return static_cast<double>(static_cast<float>(value * kScale)) / kScale;
  return static_cast<double>(static_cast<float>(value / kScale)) * kScale;
}

bool isSameInSingle(double x1, double y1, double x2, double y2) {
  return inSingle(x1) == inSingle(x2) && inSingle(y1) == inSingle(y2);
}

}  // namespace

// ---- chains ----

void VEXChainStore::reserve(std::size_t numChains, std::size_t numCoords) {
  chains_.reserve(numChains);
  xs_.reserve(std::min(numCoords, kMostCoords));
  ys_.reserve(std::min(numCoords, kMostCoords));
}

void VEXChainStore::addChain(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t input) {
  const std::size_t count = xs.size();
  VEXChain chain;
  chain.first = static_cast<std::uint32_t>(xs_.size());
  chain.input = input;
  chain.hasZ = !zs.empty();
  chain.isRing = count > 2 && xs.front() == xs.back() && ys.front() == ys.back();
  chains_.push_back(chain);
  if (chain.hasZ && zs_.size() < xs_.size()) zs_.resize(xs_.size(), kNoZ);
  xs_.insert(xs_.end(), xs.begin(), xs.end());
  ys_.insert(ys_.end(), ys.begin(), ys.end());
  if (chain.hasZ)
    zs_.insert(zs_.end(), zs.begin(), zs.end());
  else if (!zs_.empty())
    zs_.resize(xs_.size(), kNoZ);
}

std::size_t VEXChainStore::chainOf(std::uint32_t coord) const {
  const auto after = std::upper_bound(chains_.begin(), chains_.end(), coord,
                                      [](std::uint32_t value, const VEXChain& chain) { return value < chain.first; });
  return static_cast<std::size_t>(after - chains_.begin()) - 1;  // chains without coordinates come before it
}

void VEXChainStore::scale(int exponent) {
  for (std::vector<double>* values : {&xs_, &ys_})
    for (double& value : *values) value = std::ldexp(value, exponent);
}

// ---- nodes ----

namespace {

// A place is where that of its crossings lies which is told most finely, of such the leftmost, or else the leftmost of
// its coordinates: whatever else is noded at the same time, and in which order meetings are found, does not matter. One
// at a narrow angle may be far off along its lines, and would bend all the others. What rounds before have settled
// stays: a place that goes on moving drags its segments over others, without end.
void moveTo(VEXChainNode& node, const VEXChainNode& to) {
  auto rankOf = [](const VEXChainNode& of) {
    return std::tuple(of.isCrossing == 0, of.isSettled == 0, of.ownTolerance, of.x, of.y);
  };
  if (rankOf(node) <= rankOf(to)) return;
  node.x = to.x;
  node.y = to.y;
  node.ownTolerance = to.ownTolerance;
  node.isCrossing = to.isCrossing;
  node.isSettled = to.isSettled;
}

VEXChainNode nodeOf(std::size_t number, double x, double y, double tolerance, bool isCrossing) {
  VEXChainNode node{};
  node.x = x;
  node.y = y;
  node.tolerance = VEXTolerance(tolerance);
  if (isCrossing) node.ownTolerance = node.tolerance;
  node.sameAs = number & 0x3fffffffU;
  node.isCrossing = isCrossing ? 1 : 0;
  node.isSettled = 0;
  return node;
}

}  // namespace

std::uint32_t VEXChainStore::rootOf(std::uint32_t node) {
  std::uint32_t root = node;
  while (nodes_[root].sameAs != root) root = nodes_[root].sameAs;
  while (nodes_[node].sameAs != root) {
    const std::uint32_t next = nodes_[node].sameAs;
    nodes_[node].sameAs = root & 0x3fffffffU;
    node = next;
  }
  return root;
}

void VEXChainStore::unite(std::uint32_t one, std::uint32_t other) {
  one = rootOf(one);
  other = rootOf(other);
  if (one == other) return;
  ++numChanges_;
  if (other < one) std::swap(one, other);
  nodes_[other].sameAs = one & 0x3fffffffU;
  moveTo(nodes_[one], nodes_[other]);
  nodes_[one].tolerance = std::max(nodes_[one].tolerance, nodes_[other].tolerance);
}

std::uint32_t VEXChainStore::makeNodeAt(std::uint32_t coord) {
  if (coordNodes_[coord] != kNoNode) return coordNodes_[coord];
  const auto made = static_cast<std::uint32_t>(nodes_.size());
  const double x = xs_[coord], y = ys_[coord];
  nodes_.push_back(nodeOf(made, x, y, sizeOf(x, y) * kPlaceTolerance, false));
  coordNodes_[coord] = made;
  ++numChanges_;
  return made;
}

bool VEXChainStore::isLastThreaded(std::uint32_t segment, double x, double y, double tolerance) {
  if (lastThreaded_[segment] == kNoNode) return false;
  const VEXChainNode& node = nodes_[rootOf(lastThreaded_[segment])];
  return sizeOf(node.x - x, node.y - y) <= tolerance;
}

void VEXChainStore::addCrossing(std::uint32_t one, std::uint32_t other, double x, double y, double tolerance,
                                bool single) {
  if (threadings_.size() >= settleAbove_) compact();
  // Where many lines pass one point, most pairs bring nothing new.
  const bool isOnOne = isLastThreaded(one, x, y, tolerance), isOnOther = isLastThreaded(other, x, y, tolerance);
  if (isOnOne || isOnOther) {
    const std::uint32_t node = lastThreaded_[isOnOne ? one : other];
    moveTo(nodes_[rootOf(node)], nodeOf(0, x, y, tolerance, true));
    if (isOnOne && isOnOther) return unite(node, lastThreaded_[other]);
    return thread(node, x, y, isOnOne ? other : one, tolerance, single);
  }
  const auto made = static_cast<std::uint32_t>(nodes_.size());
  nodes_.push_back(nodeOf(made, x, y, tolerance, true));
  thread(made, x, y, one, tolerance, single);
  thread(made, x, y, other, tolerance, single);
}

void VEXChainStore::attach(std::uint32_t coord, std::uint32_t node) {
  if (coordNodes_[coord] == node) return;
  if (coordNodes_[coord] != kNoNode) return unite(coordNodes_[coord], node);
  const double x = xs_[coord], y = ys_[coord];
  if (nodes_[rootOf(node)].x != x || nodes_[rootOf(node)].y != y) {
    // The coordinate brings its own position in, should the other not be a computed one.
    unite(makeNodeAt(coord), node);
    return;
  }
  coordNodes_[coord] = node;
  ++numChanges_;
}

void VEXChainStore::link(std::uint32_t coord, std::uint32_t other) {
  const std::uint32_t one = coordNodes_[coord];
  const std::uint32_t two = coordNodes_[other];
  if (one != kNoNode && one == two) return;
  if (one == kNoNode && two != kNoNode) return attach(coord, two);
  attach(other, makeNodeAt(coord));
}

void VEXChainStore::thread(std::uint32_t node, double x, double y, std::uint32_t segment, double tolerance,
                           bool single) {
  const VEXSegment s = this->segment(segment);
  if (x == s.x1 && y == s.y1) return attach(segment, node);
  if (x == s.x2 && y == s.y2) return attach(segment + 1, node);
  const double fromStart = sizeOf(x - s.x1, y - s.y1), fromEnd = sizeOf(x - s.x2, y - s.y2);
  const bool isStart = fromStart <= tolerance || (single && isSameInSingle(x, y, s.x1, s.y1));
  const bool isEnd = fromEnd <= tolerance || (single && isSameInSingle(x, y, s.x2, s.y2));
  if (isStart && (!isEnd || fromStart <= fromEnd)) return attach(segment, node);
  if (isEnd) return attach(segment + 1, node);
  threadings_.push_back({segment, node});
  lastThreaded_[segment] = node;
  ++numChanges_;
}

// ---- rounds ----

void VEXChainStore::beginRounds() {
  coordNodes_.assign(xs_.size(), kNoNode);
  dirty_.assign(xs_.size(), 0);
  lastThreaded_.assign(xs_.size(), kNoNode);
  settleAbove_ = kFewestToSettle;
}

void VEXChainStore::endRounds() {
  numNodes_ = nodes_.size();
  nodes_ = std::vector<VEXChainNode>();
  dirty_ = std::vector<std::uint8_t>();
  threadings_ = std::vector<Threading>();
  lastThreaded_ = std::vector<std::uint32_t>();
}

void VEXChainStore::sortThreadings() {
  auto isBefore = [](const Threading& a, const Threading& b) {
    return a.segment != b.segment ? a.segment < b.segment : a.node < b.node;
  };
  if (threadings_.size() < xs_.size() / 16) {
    std::sort(threadings_.begin(), threadings_.end(), isBefore);
    return;
  }
  std::vector<std::uint32_t> next(xs_.size() + 1, 0);
  for (const Threading& threading : threadings_) ++next[threading.segment + 1];
  for (std::size_t i = 1; i < next.size(); ++i) next[i] += next[i - 1];
  std::vector<Threading> sorted(threadings_.size());
  for (const Threading& threading : threadings_) sorted[next[threading.segment]++] = threading;
  threadings_ = std::move(sorted);
}

// The nodes of one segment in order from its start, each root once.
void VEXChainStore::stopsOf(std::size_t first, std::size_t last) {
  const VEXSegment s = segment(threadings_[first].segment);
  const double dx = s.x2 - s.x1, dy = s.y2 - s.y1;
  stops_.clear();
  for (std::size_t i = first; i < last; ++i) {
    const std::uint32_t root = rootOf(threadings_[i].node);
    stops_.push_back({(nodes_[root].x - s.x1) * dx + (nodes_[root].y - s.y1) * dy, root});
  }
  if (stops_.size() == 1) return;
  std::sort(stops_.begin(), stops_.end(),
            [](const Stop& a, const Stop& b) { return a.along != b.along ? a.along < b.along : a.node < b.node; });
  stops_.erase(std::unique(stops_.begin(), stops_.end(), [](const Stop& a, const Stop& b) { return a.node == b.node; }),
               stops_.end());
}

void VEXChainStore::uniteNearStops() {
  for (std::size_t i = 1; i < stops_.size(); ++i) {
    const VEXChainNode& before = nodes_[stops_[i - 1].node];
    const VEXChainNode& here = nodes_[stops_[i].node];
    const double tolerance = std::max(before.tolerance, here.tolerance).value();
    if (sizeOf(here.x - before.x, here.y - before.y) <= tolerance) unite(stops_[i - 1].node, stops_[i].node);
  }
}

// Brings the threadings of a segment together and unites nodes that are one within the tolerance.
void VEXChainStore::settle() {
  sortThreadings();
  for (std::size_t first = 0, last; first < threadings_.size(); first = last) {
    for (last = first + 1; last < threadings_.size() && threadings_[last].segment == threadings_[first].segment;)
      ++last;
    if (last == first + 1) continue;
    stopsOf(first, last);
    uniteNearStops();
  }
}

// Where thousands of lines pass one point, each pair of them threads it. Settling in between keeps what is held in
// proportion to the nodes that there are, not to the pairs.
void VEXChainStore::compact() {
  settle();
  std::size_t kept = 0;
  for (std::size_t first = 0, last; first < threadings_.size(); first = last) {
    const std::uint32_t at = threadings_[first].segment;
    for (last = first + 1; last < threadings_.size() && threadings_[last].segment == at;) ++last;
    stopsOf(first, last);
    for (const Stop& stop : stops_) threadings_[kept++] = {at, stop.node};
  }
  threadings_.resize(kept);
  std::vector<std::uint32_t> renumbered(nodes_.size(), kNoNode);
  auto mark = [&](std::uint32_t& node) {
    node = rootOf(node);
    renumbered[node] = 0;
  };
  for (Threading& threading : threadings_) mark(threading.node);
  for (std::uint32_t& node : coordNodes_)
    if (node != kNoNode) mark(node);
  std::uint32_t count = 0;
  for (std::size_t at = 0; at < nodes_.size(); ++at) {
    if (renumbered[at] == kNoNode) continue;
    renumbered[at] = count;
    nodes_[count] = nodes_[at];
    nodes_[count].sameAs = count & 0x3fffffffU;
    ++count;
  }
  nodes_.resize(count);
  for (Threading& threading : threadings_) threading.node = renumbered[threading.node];
  for (std::uint32_t& node : coordNodes_)
    if (node != kNoNode) node = renumbered[node];
  lastThreaded_.assign(xs_.size(), kNoNode);
  settleAbove_ = std::max(kFewestToSettle, 2 * threadings_.size());
}

// Coordinates that stand twice in succession, and the start and end of a ring, are one place.
void VEXChainStore::uniteRepeated() {
  for (std::size_t c = 0; c < chains_.size(); ++c) {
    const std::uint32_t first = chains_[c].first, end = endOf(c);
    for (std::uint32_t at = first; at + 1 < end; ++at)
      if (xs_[at] == xs_[at + 1] && ys_[at] == ys_[at + 1] && coordNodes_[at] != coordNodes_[at + 1]) link(at, at + 1);
    // Backwards as well: the node may have been at the last one only.
    for (std::uint32_t at = end; at > first + 1; --at)
      if (xs_[at - 1] == xs_[at - 2] && ys_[at - 1] == ys_[at - 2] && coordNodes_[at - 1] != coordNodes_[at - 2])
        link(at - 1, at - 2);
    if (chains_[c].isRing && coordNodes_[first] != coordNodes_[end - 1]) link(first, end - 1);
  }
}

void VEXChainStore::rebuild() {
  lastThreaded_ = std::vector<std::uint32_t>();
  settle();
  uniteRepeated();
  std::vector<double> newXs, newYs, newZs;
  std::vector<std::uint32_t> newNodes;
  std::vector<std::uint8_t> newDirty;
  const std::size_t most = xs_.size() + threadings_.size();
  newXs.reserve(most);
  newYs.reserve(most);
  newNodes.reserve(most);
  newDirty.reserve(most);
  const bool anyZ = !zs_.empty();
  if (anyZ) newZs.reserve(most);
  std::size_t threaded = 0;  // the first threading of the segments to come
  numDirty_ = 0;
  for (std::size_t c = 0; c < chains_.size(); ++c) {
    VEXChain& chain = chains_[c];
    const std::uint32_t first = chain.first, end = endOf(c);
    const std::size_t newFirst = newXs.size();
    const std::size_t lastThreaded = threaded;
    bool isTouched = threaded < threadings_.size() && threadings_[threaded].segment < end;
    for (std::uint32_t at = first; at < end && !isTouched; ++at) isTouched = coordNodes_[at] != kNoNode;
    chain.first = static_cast<std::uint32_t>(newFirst);
    if (!isTouched) {
      newXs.insert(newXs.end(), xs_.begin() + first, xs_.begin() + end);
      newYs.insert(newYs.end(), ys_.begin() + first, ys_.begin() + end);
      if (anyZ) newZs.insert(newZs.end(), zs_.begin() + first, zs_.begin() + end);
      newNodes.insert(newNodes.end(), end - first, kNoNode);
      newDirty.insert(newDirty.end(), end - first, 0);
      continue;
    }
    VEX_ASSERT(lastThreaded == threaded);
    auto put = [&](double x, double y, double z, std::uint32_t node) {
      if (newXs.size() > newFirst && newXs.back() == x && newYs.back() == y) {
        if (newNodes.back() == kNoNode) newNodes.back() = node;
        return;
      }
      newXs.push_back(x);
      newYs.push_back(y);
      if (anyZ) newZs.push_back(z);
      newNodes.push_back(node);
      newDirty.push_back(0);
    };
    bool startMoved = false;
    for (std::uint32_t at = first; at < end; ++at) {
      // The end of the segment before, and the start of the next.
      double x = xs_[at], y = ys_[at];
      std::uint32_t node = coordNodes_[at];
      bool isMoved = false;
      if (node != kNoNode) {
        node = rootOf(node);
        isMoved = sizeOf(nodes_[node].x - x, nodes_[node].y - y) > 0.25 * kPlaceTolerance * sizeOf(x, y);
        x = nodes_[node].x;
        y = nodes_[node].y;
      }
      const std::size_t before = newXs.size();
      put(x, y, anyZ ? zs_[at] : kNoZ, node);
      if (isMoved && before > newFirst) newDirty[before - 1] = 1;
      startMoved = isMoved;
      if (at + 1 == end) break;
      const std::size_t pieces = newXs.size() - 1;
      std::size_t last = threaded;
      while (last < threadings_.size() && threadings_[last].segment == at) ++last;
      bool isBent = (dirty_[at] & kMarked) != 0 || startMoved;
      if (last > threaded) {
        stopsOf(threaded, last);
        const VEXSegment s = segment(at);
        const double dx = s.x2 - s.x1, dy = s.y2 - s.y1;
        const double length = std::sqrt(dx * dx + dy * dy);
        const double allowed = 0.25 * kPlaceTolerance * sizeOf(s);
        for (const Stop& stop : stops_) {
          const VEXChainNode& place = nodes_[stop.node];
          const double px = place.x - s.x1, py = place.y - s.y1;
          if (std::fabs(px * dy - py * dx) > allowed * length) isBent = true;
          const double z = anyZ ? zs_[at] + (zs_[at + 1] - zs_[at]) * (std::sqrt(px * px + py * py) / length) : kNoZ;
          put(place.x, place.y, z, stop.node);
        }
        threaded = last;
      }
      // Each piece of a bent segment is dirty; the last one's flag lies at its first coordinate.
      if (isBent)
        for (std::size_t piece = pieces; piece < newXs.size(); ++piece) newDirty[piece] = 1;
    }
    newDirty.back() = 0;
    for (std::size_t at = newFirst; at + 1 < newXs.size(); ++at) {
      const double length = sizeOf(newXs[at + 1] - newXs[at], newYs[at + 1] - newYs[at]);
      if (length > kShortPiece * sizeOf(newXs[at], newYs[at])) continue;
      newDirty[at] = 1;
      if (at > newFirst) newDirty[at - 1] = 1;
      if (at + 2 < newXs.size()) newDirty[at + 1] = 1;
    }
  }
  VEX_ASSERT(threaded == threadings_.size());
  for (std::uint8_t dirty : newDirty) numDirty_ += dirty;
  xs_ = std::move(newXs);
  ys_ = std::move(newYs);
  zs_ = std::move(newZs);
  coordNodes_ = std::move(newNodes);
  dirty_ = std::move(newDirty);
  for (VEXChainNode& node : nodes_) node.isSettled = 1;
  threadings_.clear();
  lastThreaded_.assign(xs_.size(), kNoNode);
  numChanges_ = 0;
}
