#include "vex/factory/nodedrng.h"

#include <algorithm>
#include <bit>

#include "vex/factory/ringpart.h"
#include "vex/src/letgo.h"

namespace {

constexpr std::size_t kFirstTable = 1024;
constexpr std::uint32_t kNone = UINT32_MAX;
// Points are worked off in turns, so that lists are held for a part of them only.
constexpr std::size_t kTurns = 16;
constexpr std::size_t kFewestPoints = 1 << 14;

std::uint64_t mixed(std::uint64_t a, std::uint64_t b) {
  std::uint64_t hash = a * 0x9E3779B97F4A7C15U ^ std::rotl(b * 0xC2B2AE3D27D4EB4FU, 31);
  hash ^= hash >> 32;
  hash *= 0xD6E8FEB86659FD93U;
  return hash ^ hash >> 29;
}

std::uint64_t hashOf(double x, double y) {
  return mixed(std::bit_cast<std::uint64_t>(x), std::bit_cast<std::uint64_t>(y));
}

// Tells most points apart without a look at them; 0 is left for a free slot.
std::uint8_t tagOf(std::uint64_t hash) {
  return static_cast<std::uint8_t>((hash >> 57) + 1);
}

// One zero, not two.
double plain(double value) {
  return value == 0.0 ? 0.0 : value;
}

}  // namespace

// ---- rings ----

void VEXNodedRings::beginArea() {
  firstOfArea_ = rings_.size();
  startOfArea_ = static_cast<std::uint32_t>(ringPoints_.size());
  isTouching_ = false;
}

// A ring beside one that came before runs along its points, mostly backward: the next point is looked for there first.
void VEXNodedRings::addRing(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t number) {
  hasZ_ = hasZ_ || !zs.empty();
  const auto start = static_cast<std::uint32_t>(ringPoints_.size());
  // The table is too large for caches: all of the ring's slots are asked for before the first one is looked at.
  while (pointTable_.size() * 7 < 10 * (points_.size() + xs.size())) growPoints();
  hashes_.clear();
  for (std::size_t i = 0; i + 1 < xs.size(); ++i) {
    hashes_.push_back(hashOf(plain(xs[i]), plain(ys[i])));
    __builtin_prefetch(&tags_[hashes_[i] & (tags_.size() - 1)]);
    __builtin_prefetch(&pointTable_[hashes_[i] & (pointTable_.size() - 1)]);
  }
  std::uint32_t beside = kNone;  // where an earlier ring has the point before
  auto isAt = [&](std::uint32_t at, double x, double y) {
    if (at >= start) return false;
    const Point& point = points_[ringPoints_[at]];
    return point.x == x && point.y == y;
  };
  for (std::size_t i = 0; i + 1 < xs.size(); ++i) {
    const double x = plain(xs[i]), y = plain(ys[i]);
    std::uint32_t point = kNone;
    if (beside != kNone && isAt(beside - 1, x, y))
      point = ringPoints_[beside - 1];
    else if (beside != kNone && isAt(beside + 1, x, y))
      point = ringPoints_[beside + 1];
    else
      point = pointOf(x, y, zs.empty() ? 0.0 : zs[i], hashes_[i]);
    if (ringPoints_.size() > start && ringPoints_.back() == point) continue;
    beside = lastAt_[point];
    isTouching_ = isTouching_ || beside + 1 > startOfArea_;  // kNone and 1 is 0
    lastAt_[point] = static_cast<std::uint32_t>(ringPoints_.size());
    ringPoints_.push_back(point);
  }
  while (ringPoints_.size() > start + 1 && ringPoints_.back() == ringPoints_[start]) ringPoints_.pop_back();
  isTouching_ = isTouching_ || ringPoints_.size() < start + 3;  // no area
  endRing(number, start);
}

void VEXNodedRings::endRing(std::int32_t number, std::uint32_t start) {
  const auto end = static_cast<std::uint32_t>(ringPoints_.size());
  std::uint32_t lowest = kNone;
  for (std::uint32_t at = start; at < end; ++at) lowest = std::min(lowest, ringPoints_[at]);
  parents_.push_back(static_cast<std::int32_t>(parents_.size()));
  rings_.push_back({number, start, end - start, lowest});
  ringPoints_.push_back(ringPoints_[start]);
}

bool VEXNodedRings::endArea() {
  if (!isTouching_) return false;
  const std::int32_t number = rings_.back().number;
  std::vector<std::uint32_t> points;
  VEXRingParts parts;
  for (std::size_t at = firstOfArea_; at < rings_.size(); ++at) {
    if (rings_[at].numPoints < 2) continue;
    points.clear();
    gather(rings_[at], rings_[at].firstPoint, rings_[at].numPoints);
    for (std::uint32_t i = 0; i <= rings_[at].numPoints; ++i) points.push_back(ringPoints_[rings_[at].firstPoint + i]);
    parts.addRing(points, runX_, runY_);
  }
  if (!parts.compute()) return false;
  for (; ringPoints_.size() > startOfArea_; ringPoints_.pop_back()) lastAt_[ringPoints_.back()] = kNone;
  rings_.resize(firstOfArea_);
  parents_.resize(firstOfArea_);
  for (std::size_t at = 0; at < parts.numRings(); ++at) {
    const VEXRingParts::Ring ring = parts.ring(at);
    const auto start = static_cast<std::uint32_t>(ringPoints_.size());
    for (std::uint32_t point : ring.points.first(ring.points.size() - 1)) {
      lastAt_[point] = static_cast<std::uint32_t>(ringPoints_.size());
      ringPoints_.push_back(point);
    }
    endRing(number, start);
    if (at > 0 && parts.ring(at - 1).part == ring.part)
      parents_.back() = parents_[parents_.size() - 2];  // the first ring of the part
  }
  return true;
}

std::uint32_t VEXNodedRings::pointOf(double x, double y, double z, std::uint64_t hash) {
  const std::size_t mask = pointTable_.size() - 1;
  std::size_t slot = hash & mask;
  for (; tags_[slot] != 0; slot = (slot + 1) & mask) {
    if (tags_[slot] != tagOf(hash)) continue;
    const std::uint32_t point = pointTable_[slot];
    if (points_[point].x == x && points_[point].y == y) return point;
  }
  points_.push_back({x, y});
  lastAt_.push_back(kNone);
  if (hasZ_) {
    pointZs_.resize(points_.size());
    pointZs_.back() = z;
  }
  tags_[slot] = tagOf(hash);
  pointTable_[slot] = static_cast<std::uint32_t>(points_.size() - 1);
  return pointTable_[slot];
}

void VEXNodedRings::growPoints() {
  const std::size_t size = std::max(kFirstTable, 2 * pointTable_.size());
  letGo(pointTable_);
  pointTable_.resize(size);
  tags_.assign(size, 0);
  auto place = [&](std::size_t point, std::uint64_t hash) {
    std::size_t slot = hash & (size - 1);
    while (tags_[slot] != 0) slot = (slot + 1) & (size - 1);
    tags_[slot] = tagOf(hash);
    pointTable_[slot] = static_cast<std::uint32_t>(point);
  };
  constexpr std::size_t kAhead = 16;  // slots are asked for that much earlier than they are written
  std::uint64_t hashes[kAhead] = {};
  for (std::size_t at = 0; at < points_.size() + kAhead; ++at) {
    if (at >= kAhead) place(at - kAhead, hashes[at % kAhead]);
    if (at >= points_.size()) continue;
    hashes[at % kAhead] = hashOf(points_[at].x, points_[at].y);
    __builtin_prefetch(&tags_[hashes[at % kAhead] & (size - 1)]);
    __builtin_prefetch(&pointTable_[hashes[at % kAhead] & (size - 1)]);
  }
}

std::int32_t VEXNodedRings::find(std::int32_t ring) {
  auto parent = [this](std::int32_t of) -> std::int32_t& { return parents_[static_cast<std::size_t>(of)]; };
  while (parent(ring) != ring) ring = parent(ring) = parent(parent(ring));
  return ring;
}

void VEXNodedRings::join(std::int32_t a, std::int32_t b) {
  a = find(a);
  b = find(b);
  if (a != b) parents_[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
}

// ---- segments ----

void VEXNodedRings::pair() {
  letGo(pointTable_, tags_);
  lastAt_.release();
  for (std::size_t ring = 0; ring < rings_.size(); ++ring)
    for (std::uint32_t at = 0; at <= rings_[ring].numPoints; ++at)
      kinds_.push_back(static_cast<std::int32_t>(ring) + 1);
  outlineEnds_.assign(points_.size(), 0);
  const std::size_t perTurn = std::max(kFewestPoints, points_.size() / kTurns + 1);
  std::vector<std::uint32_t> heads;
  VEXBlockVector<Side> sides;
  std::size_t firstRing = 0;  // with a point of this turn: points are numbered as rings first have them
  for (std::size_t begin = 0; begin < points_.size(); begin += perTurn) {
    const std::size_t end = std::min(begin + perTurn, points_.size());
    heads.assign(end - begin, kNone);
    sides.clear();
    std::size_t nextRing = rings_.size();
    for (std::size_t number = firstRing; number < rings_.size(); ++number) {
      const Ring& ring = rings_[number];
      if (ring.lowest >= end) {
        nextRing = std::min(nextRing, number);
        continue;
      }
      if (ring.numPoints < 2) continue;
      std::uint32_t from = ringPoints_[ring.firstPoint];
      for (std::uint32_t at = ring.firstPoint; at < ring.firstPoint + ring.numPoints; ++at) {
        const std::uint32_t to = ringPoints_[at + 1];
        const std::uint32_t low = std::min(from, to);
        from = to;
        if (low >= end) nextRing = std::min(nextRing, number);
        if (low < begin || low >= end) continue;
        sides.push_back({at, heads[low - begin]});
        heads[low - begin] = static_cast<std::uint32_t>(sides.size() - 1);
      }
    }
    firstRing = nextRing;
    for (std::size_t low = begin; low < end; ++low) {
      sharers_.clear();
      for (std::uint32_t side = heads[low - begin]; side != kNone; side = sides[side].next) {
        const std::uint32_t at = sides[side].at;
        sharers_.push_back({std::max(ringPoints_[at], ringPoints_[at + 1]), at});
      }
      pairAround(static_cast<std::uint32_t>(low));
    }
  }
}

// The segments from a point to higher ones: those to the same one are the same.
void VEXNodedRings::pairAround(std::uint32_t low) {
  if (sharers_.size() > 2 || (sharers_.size() == 2 && sharers_[0].high > sharers_[1].high))
    std::sort(sharers_.begin(), sharers_.end(), [](const Sharer& a, const Sharer& b) { return a.high < b.high; });
  for (std::size_t first = 0, last; first < sharers_.size(); first = last) {
    std::int32_t forward = 0, backward = 0;  // the first rings that run from the lower point, and to it
    for (last = first; last < sharers_.size() && sharers_[last].high == sharers_[first].high; ++last) {
      const std::uint32_t at = sharers_[last].at;
      std::int32_t& same = ringPoints_[at] == low ? forward : backward;
      same = same == 0 ? kinds_[at] : std::min(same, kinds_[at]);
      if (last > first) join(kinds_[sharers_[first].at] - 1, kinds_[at] - 1);
    }
    const bool isOutline = forward == 0 || backward == 0;
    for (std::size_t i = first; i < last; ++i) {
      const bool isForward = ringPoints_[sharers_[i].at] == low;
      const std::int32_t other = isForward ? backward : forward;
      std::int32_t& kind = kinds_[sharers_[i].at];
      if (kind != (isForward ? forward : backward))
        kind = kNothing;
      else if (isOutline)
        kind = kOutline;
      else
        kind = kind < other || (kind == other && isForward) ? other : kNothing;
    }
    if (!isOutline) continue;
    ++numOutlineSegments_;
    for (std::uint32_t point : {low, sharers_[first].high})
      outlineEnds_[point] = static_cast<std::uint8_t>(std::min(outlineEnds_[point] + 1, 3));
  }
}

// ---- stretches ----

VEXStatus VEXNodedRings::emit(VEXTopology& outline, std::vector<VEXLine>* interior, std::int64_t& numInterior) {
  for (std::size_t ring = 0; ring < rings_.size(); ++ring)
    if (rings_[ring].numPoints > 1) VEX_TRY(emitRing(ring, outline, interior, numInterior));
  points_.release();
  letGo(pointZs_);
  ringPoints_.release();
  kinds_.release();
  letGo(outlineEnds_);
  return nullptr;
}

// Between the segments in front of a point and behind it: where more of the outline meets, or another ring begins.
bool VEXNodedRings::isBreak(const Ring& ring, std::uint32_t at) const {
  const std::int32_t before = kinds_[(at > ring.firstPoint ? at : ring.firstPoint + ring.numPoints) - 1];
  return before != kinds_[at] || (before == kOutline && outlineEnds_[ringPoints_[at]] != 2);
}

VEXStatus VEXNodedRings::emitRing(std::size_t number, VEXTopology& outline, std::vector<VEXLine>* interior,
                                  std::int64_t& numInterior) {
  const Ring& ring = rings_[number];
  const std::uint32_t end = ring.firstPoint + ring.numPoints;
  std::uint32_t at = ring.firstPoint;
  while (at < end && !isBreak(ring, at)) ++at;
  if (at == end) at = ring.firstPoint;
  for (std::uint32_t done = 0; done < ring.numPoints;) {
    const std::uint32_t start = at;
    std::uint32_t length = 0;
    do {
      ++length;
      at = at + 1 < end ? at + 1 : ring.firstPoint;
    } while (done + length < ring.numPoints && !isBreak(ring, at));
    done += length;
    const std::int32_t kind = kinds_[start];
    if (kind == kNothing) continue;
    if (kind != kOutline) ++numInterior;
    if (kind != kOutline && interior == nullptr) continue;
    gather(ring, start, length);
    if (kind == kOutline)
      VEX_TRY(outline.addLine(runX_, runY_, runZ_, static_cast<std::int32_t>(number) + 1));
    else
      interior->push_back(runZ_.empty()
                              ? VEXLine(std::vector(runX_), std::vector(runY_), VEX_GEOM_LINE)
                              : VEXLine(std::vector(runX_), std::vector(runY_), std::vector(runZ_), VEX_GEOM_LINE));
  }
  return nullptr;
}

void VEXNodedRings::gather(const Ring& ring, std::uint32_t at, std::uint32_t length) {
  runX_.clear();
  runY_.clear();
  runZ_.clear();
  for (std::uint32_t i = 0; i <= length; ++i) {
    const std::uint32_t point = ringPoints_[at];
    runX_.push_back(points_[point].x);
    runY_.push_back(points_[point].y);
    if (!pointZs_.empty()) runZ_.push_back(point < pointZs_.size() ? pointZs_[point] : 0.0);
    at = at + 1 < ring.firstPoint + ring.numPoints ? at + 1 : ring.firstPoint;
  }
}
