#include "vex/factory/dissolve.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numeric>

#include "vex/inc/numtext.h"

namespace {

constexpr std::uint32_t kNoRoom = 329003;
constexpr std::uint32_t kNotFinite = 866011;
constexpr std::size_t kFirstTable = 1024;

std::uint64_t mixed(std::uint64_t a, std::uint64_t b) {
  std::uint64_t hash = a * 0x9E3779B97F4A7C15U ^ std::rotl(b * 0xC2B2AE3D27D4EB4FU, 31);
  hash ^= hash >> 32;
  hash *= 0xD6E8FEB86659FD93U;
  return hash ^ hash >> 29;
}

bool isRing(const VEXCoverPiece& piece) {
  return piece.xs.front() == piece.xs.back() && piece.ys.front() == piece.ys.back();
}

// One zero, not two.
double plain(double value) {
  return value == 0.0 ? 0.0 : value;
}

}  // namespace

VEXDissolver::VEXDissolver(bool isNoded, bool keepsInteriorLines)
    : isNoded_(isNoded), keepsInteriorLines_(keepsInteriorLines) {
  if (!isNoded) cover_ = std::make_unique<VEXFeatureCover>();
}

// ---- taking in ----

bool VEXDissolver::isArea(const VEXFeature& feature) {
  std::vector<VEXLineRange> ranges;
  if (VEXStatus failure = VEXLine::viewOf(feature).leaves(ranges)) return false;
  return !ranges.empty() && feature.numCoords() > 0 &&
         std::all_of(ranges.begin(), ranges.end(), [](const auto& range) { return isAreaCode(range.code); });
}

VEXStatus VEXDissolver::add(const VEXFeature& feature, std::int32_t number) {
  const VEXLine line = VEXLine::viewOf(feature);
  VEX_TRY(line.leaves(ranges_));
  const double largest = isNoded_ ? std::numeric_limits<double>::max() : VEXFeatureCover::kLargestCoord;
  for (const VEXLineRange& range : ranges_)
    for (std::size_t at = range.first; at < range.first + range.count; ++at)
      if (!(std::fabs(line.xs()[at]) <= largest) || !(std::fabs(line.ys()[at]) <= largest))
        return makeStatus(kNotFinite, {realText(line.xs()[at]), realText(line.ys()[at])});
  if (!isNoded_ && line.numCoords() > cover_->room() / 2)  // closing may add to them
    return makeStatus(kNoRoom, {integerText(static_cast<std::int64_t>(VEXChainStore::kMostCoords))});
  hasZ_ = hasZ_ || line.hasZ();
  for (const VEXLineRange& range : ranges_)
    if (range.count > 0)
      VEX_TRY(addArea(VEXLine::viewOf(line, range.first, range.first + range.count - 1, range.code), number));
  return nullptr;
}

VEXStatus VEXDissolver::addArea(const VEXLine& area, std::int32_t number) {
  area.rings(rings_);
  area.findHoles(rings_, isHole_);
  const std::size_t first = members_.size();
  std::vector<std::size_t> added;  // of the rings, in members_
  if (isNoded_ && rings_.size() > 1) added.assign(rings_.size(), SIZE_MAX);
  for (std::size_t at = 0; at < rings_.size(); ++at) {
    if (rings_[at].count < 3) continue;  // no area
    if (!added.empty()) added[at] = members_.size();
    VEX_TRY(addRing(area, rings_[at], isHole_[at], number));
  }
  if (isNoded_ && members_.size() - first > 1) joinRings(area, added);
  if (!isNoded_ && area.geomType() == VEX_GEOM_DONUT && !holdsItsHoles(area)) cover_->doubt(number);
  return nullptr;
}

// Rings that belong together are joined: a hole with the smallest shell around it.
void VEXDissolver::joinRings(const VEXLine& area, const std::vector<std::size_t>& added) {
  auto xs = [&](std::size_t at) { return area.xs().subspan(rings_[at].first, rings_[at].count); };
  auto ys = [&](std::size_t at) { return area.ys().subspan(rings_[at].first, rings_[at].count); };
  for (std::size_t hole = 0; hole < rings_.size(); ++hole) {
    if (!isHole_[hole] || added[hole] == SIZE_MAX) continue;
    std::size_t best = SIZE_MAX;
    double bestArea = 0.0;
    for (std::size_t shell = 0; shell < rings_.size(); ++shell) {
      if (isHole_[shell] || added[shell] == SIZE_MAX) continue;
      if (area.geomType() != VEX_GEOM_DONUT && !isPointInRing(xs(shell), ys(shell), xs(hole)[0], ys(hole)[0])) continue;
      const double size = ringArea(xs(shell), ys(shell));
      if (best == SIZE_MAX || size < bestArea) best = shell;
      if (best == shell) bestArea = size;
    }
    if (best != SIZE_MAX) join(static_cast<std::int32_t>(added[hole]), static_cast<std::int32_t>(added[best]));
  }
}

// Each hole of a donut begins inside the shell and in no other hole. That is not looked into where it takes long.
bool VEXDissolver::holdsItsHoles(const VEXLine& donut) const {
  constexpr std::size_t kMostWork = 100000;
  if (rings_.size() < 2) return true;
  if ((rings_.size() - 1) * donut.numCoords() > kMostWork) return false;
  auto holds = [&](std::size_t ring, std::size_t hole) {
    return isPointInRing(donut.xs().subspan(rings_[ring].first, rings_[ring].count),
                         donut.ys().subspan(rings_[ring].first, rings_[ring].count), donut.xs()[rings_[hole].first],
                         donut.ys()[rings_[hole].first]);
  };
  for (std::size_t hole = 1; hole < rings_.size(); ++hole)
    for (std::size_t ring = 0; ring < members_.size(); ++ring)
      if (ring != hole && holds(ring, hole) != (ring == 0)) return false;
  return true;
}

// Closed, shells clockwise, holes the other way.
VEXStatus VEXDissolver::addRing(const VEXLine& area, const VEXLineRange& range, bool isHole, std::int32_t number) {
  const std::size_t last = range.first + range.count - 1;
  const bool isClosed = area.xs()[range.first] == area.xs()[last] && area.ys()[range.first] == area.ys()[last];
  auto take = [&](VEXOrdinates from, std::vector<double>& to) {
    const auto first = from.begin() + static_cast<std::ptrdiff_t>(range.first);
    to.assign(first, first + static_cast<std::ptrdiff_t>(range.count));
    if (!isClosed) to.push_back(to.front());
  };
  take(area.xs(), ringX_);
  take(area.ys(), ringY_);
  ringZ_.clear();
  if (area.hasZ()) take(area.zs(), ringZ_);
  if ((signedRingArea(ringX_, ringY_) > 0.0) != isHole) {
    std::reverse(ringX_.begin(), ringX_.end());
    std::reverse(ringY_.begin(), ringY_.end());
    std::reverse(ringZ_.begin(), ringZ_.end());
  }
  if (!isNoded_) return extendStatus(cover_->addRing(ringX_, ringY_, ringZ_, number));
  parents_.push_back(static_cast<std::int32_t>(parents_.size()));
  const std::size_t start = ringPoints_.size();
  for (std::size_t at = 0; at + 1 < ringX_.size(); ++at) {
    const std::uint32_t point = pointOf(plain(ringX_[at]), plain(ringY_[at]), ringZ_.empty() ? 0.0 : ringZ_[at]);
    if (ringPoints_.size() == start || ringPoints_.back() != point) ringPoints_.push_back(point);
  }
  while (ringPoints_.size() > start + 1 && ringPoints_.back() == ringPoints_[start]) ringPoints_.pop_back();
  members_.push_back({number, start, ringPoints_.size() - start});
  return nullptr;
}

// ---- tables ----

std::uint32_t VEXDissolver::pointOf(double x, double y, double z) {
  if (pointTable_.size() < 2 * (pointX_.size() + 1)) growPoints();
  const std::size_t mask = pointTable_.size() - 1;
  std::size_t slot = mixed(std::bit_cast<std::uint64_t>(x), std::bit_cast<std::uint64_t>(y)) & mask;
  for (; pointTable_[slot] != 0; slot = (slot + 1) & mask) {
    const std::uint32_t point = pointTable_[slot] - 1;
    if (pointX_[point] == x && pointY_[point] == y) return point;
  }
  pointX_.push_back(x);
  pointY_.push_back(y);
  if (hasZ_) {
    pointZ_.resize(pointX_.size());
    pointZ_.back() = z;
  }
  pointTable_[slot] = static_cast<std::uint32_t>(pointX_.size());
  return pointTable_[slot] - 1;
}

void VEXDissolver::growPoints() {
  pointTable_.assign(std::max(kFirstTable, 2 * pointTable_.size()), 0);
  const std::size_t mask = pointTable_.size() - 1;
  for (std::size_t point = 0; point < pointX_.size(); ++point) {
    std::size_t slot =
        mixed(std::bit_cast<std::uint64_t>(pointX_[point]), std::bit_cast<std::uint64_t>(pointY_[point])) & mask;
    while (pointTable_[slot] != 0) slot = (slot + 1) & mask;
    pointTable_[slot] = static_cast<std::uint32_t>(point + 1);
  }
}

// Nearly every point has few segments to higher ones: they stand beside each other, where the ring before has just
// looked. Those of a point with many go to a hash table.
VEXDissolver::Segment& VEXDissolver::segmentOf(std::uint32_t a, std::uint32_t b) {
  if (a > b) std::swap(a, b);
  std::uint32_t* near = nearSegments_.data() + std::size_t{kNear} * a;
  for (std::size_t at = 0; at < kNear; ++at) {
    if (near[at] == 0) {
      segments_.push_back({a, b, 0, 0});
      near[at] = static_cast<std::uint32_t>(segments_.size());
      return segments_.back();
    }
    Segment& segment = segments_[near[at] - 1];
    if (segment.b == b) return segment;
  }
  const auto [found, isNew] = farSegments_.try_emplace(std::uint64_t{a} << 32 | b, 0U);
  if (isNew) {
    segments_.push_back({a, b, 0, 0});
    found->second = static_cast<std::uint32_t>(segments_.size());
  }
  return segments_[found->second - 1];
}

std::int32_t VEXDissolver::find(std::int32_t element) {
  auto parent = [this](std::int32_t of) -> std::int32_t& { return parents_[static_cast<std::size_t>(of)]; };
  while (parent(element) != element) element = parent(element) = parent(parent(element));
  return element;
}

void VEXDissolver::join(std::int32_t a, std::int32_t b) {
  a = find(a);
  b = find(b);
  if (a != b) parents_[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
}

// ---- polygons that share their vertices ----

VEXStatus VEXDissolver::dissolve() {
  VEX_TRY(isNoded_ ? dissolveNoded() : dissolveRaw());
  std::sort(memberships_.begin(), memberships_.end());
  memberships_.erase(std::unique(memberships_.begin(), memberships_.end()), memberships_.end());
  std::sort(faulty_.begin(), faulty_.end());
  faulty_.erase(std::unique(faulty_.begin(), faulty_.end()), faulty_.end());
  return nullptr;
}

// A segment that rings run along both ways lies between areas. Rings that run along it the same way overlap: the
// first one stands for all.
void VEXDissolver::enterSegments() {
  pointTable_ = {};
  segments_.reserve(pointX_.size() + pointX_.size() / 4);
  nearSegments_.assign(kNear * pointX_.size(), 0);
  for (std::size_t ring = 0; ring < members_.size(); ++ring) {
    const auto id = static_cast<std::int32_t>(ring) + 1;
    const std::uint32_t* points = ringPoints_.data() + members_[ring].firstPoint;
    const std::size_t count = members_[ring].numPoints;
    for (std::size_t at = 0; count > 1 && at < count; ++at) {
      const std::uint32_t from = points[at];
      const std::uint32_t to = points[at + 1 < count ? at + 1 : 0];
      Segment& segment = segmentOf(from, to);
      std::int32_t& same = from < to ? segment.forward : segment.backward;
      const std::int32_t other = from < to ? segment.backward : segment.forward;
      if (other != 0) join(other - 1, id - 1);
      if (same != 0)
        join(same - 1, id - 1);
      else
        same = id;
    }
  }
  outlineEnds_.assign(pointX_.size(), 0);
  for (const Segment& segment : segments_) {
    if ((segment.forward != 0) == (segment.backward != 0)) continue;
    for (std::uint32_t point : {segment.a, segment.b})
      outlineEnds_[point] = static_cast<std::uint8_t>(std::min(outlineEnds_[point] + 1, 3));
  }
}

VEXStatus VEXDissolver::dissolveNoded() {
  enterSegments();
  VEXTopology outline(VEXTopology::kPlain, pointX_.size() / 4);
  for (std::size_t ring = 0; ring < members_.size(); ++ring) VEX_TRY(emitRuns(ring, outline));
  std::vector<std::pair<std::int32_t, std::int32_t>> roots;
  for (std::size_t ring = 0; ring < members_.size(); ++ring)
    roots.emplace_back(find(static_cast<std::int32_t>(ring)), members_[ring].number);
  return extendStatus(formOutline(outline, roots));
}

// Cuts a ring into runs of the outline, which end where more of it meets, and runs along one other ring.
VEXStatus VEXDissolver::emitRuns(std::size_t ring, VEXTopology& outline) {
  constexpr std::int32_t kOutline = -1;
  constexpr std::int32_t kNothing = 0;  // another ring tells it
  const auto id = static_cast<std::int32_t>(ring) + 1;
  const std::uint32_t* points = ringPoints_.data() + members_[ring].firstPoint;
  const std::size_t count = members_[ring].numPoints;
  if (count < 2) return nullptr;
  std::vector<std::int32_t> kinds(count);  // of the segment behind each point: above 0 the ring on its other side
  for (std::size_t at = 0; at < count; ++at) {
    const std::uint32_t from = points[at];
    const std::uint32_t to = points[at + 1 < count ? at + 1 : 0];
    const Segment& segment = segmentOf(from, to);
    const std::int32_t same = from < to ? segment.forward : segment.backward;
    const std::int32_t other = from < to ? segment.backward : segment.forward;
    if (same != id)
      kinds[at] = kNothing;
    else if (other == 0)
      kinds[at] = kOutline;
    else
      kinds[at] = id < other || (id == other && from < to) ? other : kNothing;
  }
  auto isBreak = [&](std::size_t at) {  // between the segments in front of a point and behind it
    const std::int32_t before = kinds[at > 0 ? at - 1 : count - 1];
    return before != kinds[at] || (before == kOutline && outlineEnds_[points[at]] != 2);
  };
  std::size_t start = 0;
  while (start < count && !isBreak(start)) ++start;
  const bool isWhole = start == count;
  if (isWhole) start = 0;
  std::vector<std::uint32_t> run;
  for (std::size_t step = 0; step < count; ++step) {
    const std::size_t at = (start + step) % count;
    if (run.empty()) run.push_back(points[at]);
    run.push_back(points[at + 1 < count ? at + 1 : 0]);
    const bool isEnd = step + 1 == count || isBreak((at + 1) % count);
    if (!isEnd) continue;
    if (kinds[at] != kNothing) VEX_TRY(emitRun(run, ring, kinds[at] == kOutline, outline));
    run.clear();
  }
  return nullptr;
}

VEXStatus VEXDissolver::emitRun(const std::vector<std::uint32_t>& points, std::size_t ring, bool isOutline,
                                VEXTopology& outline) {
  if (!isOutline) ++numInteriorLines_;
  if (!isOutline && !keepsInteriorLines_) return nullptr;
  std::vector<double> x;
  std::vector<double> y;
  std::vector<double> z;
  for (std::uint32_t point : points) {
    x.push_back(pointX_[point]);
    y.push_back(pointY_[point]);
    if (!pointZ_.empty()) z.push_back(point < pointZ_.size() ? pointZ_[point] : 0.0);
  }
  if (isOutline) return extendStatus(outline.addLine(x, y, z, static_cast<std::int32_t>(ring) + 1));
  interiorLines_.push_back(z.empty() ? VEXLine(std::move(x), std::move(y), VEX_GEOM_LINE)
                                     : VEXLine(std::move(x), std::move(y), std::move(z), VEX_GEOM_LINE));
  return nullptr;
}

// ---- polygons that meet in any way ----

VEXStatus VEXDissolver::dissolveRaw() {
  VEX_TRY(cover_->compute());
  if (!cover_->faults().empty()) {
    keepFaults(cover_->faults());
    faulty_ = std::move(cover_->faulty());
    return nullptr;
  }
  VEXTopology outline(VEXTopology::kPlain);
  VEXTopology interior(VEXTopology::kPlain);
  for (VEXCoverPiece piece; cover_->next(piece);) {
    if (piece.coversLeft && piece.coversRight) {
      if (keepsInteriorLines_)
        VEX_TRY(interior.addLine(piece.xs, piece.ys, piece.zs));
      else
        numInteriorLines_ += isRing(piece) ? 2 : 1;  // a graph cuts rings in two
    } else if (piece.coversLeft || piece.coversRight) {
      const std::int32_t id = piece.coversRight ? piece.rightRegion + 1 : -piece.leftRegion - 1;
      VEX_TRY(outline.addLine(piece.xs, piece.ys, piece.zs, id, piece.chainIds));
    }
  }
  for (std::int32_t id = 1; id <= interior.numArcs(); ++id) interiorLines_.push_back(interior.arc(id).line());
  if (keepsInteriorLines_) numInteriorLines_ = interior.numArcs();
  std::vector<std::pair<std::int32_t, std::int32_t>> roots = std::move(cover_->members());
  cover_->endReading();
  return extendStatus(formOutline(outline, roots));
}

// ---- the outline ----

VEXStatus VEXDissolver::formOutline(VEXTopology& outline,
                                    const std::vector<std::pair<std::int32_t, std::int32_t>>& roots) {
  VEXTopologyResult result;
  VEXPolygonOptions options;
  options.removeDangles = true;
  options.removeSpikes = true;
  VEX_TRY(outline.buildPolygons(result, options));
  noteFaults(outline, result);
  if (!faults_.empty()) return nullptr;
  std::vector<std::int32_t> rootOf(result.polygons.size(), -1);
  std::vector<VEXArcUse> uses;
  for (std::int32_t id = 1; id <= outline.numArcs(); ++id) {
    const VEXTopologyArc arc = outline.arc(id);
    outline.uses(id, uses);
    if (arc.isRemoved() || uses.empty()) continue;
    const bool isRight = (uses[0].userId > 0) != uses[0].isReversed;
    const std::int32_t polygon = isRight ? arc.rightPolygon() : arc.leftPolygon();
    if (polygon <= 0) continue;
    const std::int32_t root = std::abs(uses[0].userId) - 1;
    rootOf[static_cast<std::size_t>(polygon) - 1] = isNoded_ ? find(root) : root;
  }
  std::vector<std::pair<std::int32_t, std::size_t>> polygonsOf;  // root, polygon
  for (std::size_t at = 0; at < result.polygons.size(); ++at) {
    if (rootOf[at] < 0) continue;  // a hole
    polygonsOf.emplace_back(rootOf[at], polygons_.size());
    polygons_.push_back(std::move(result.polygons[at].line));
  }
  std::sort(polygonsOf.begin(), polygonsOf.end());
  for (const auto& [root, number] : roots) {
    auto found = std::lower_bound(polygonsOf.begin(), polygonsOf.end(), std::pair(root, std::size_t{0}));
    for (; found != polygonsOf.end() && found->first == root; ++found) memberships_.emplace_back(number, found->second);
  }
  return nullptr;
}

void VEXDissolver::noteFaults(const VEXTopology& topology, VEXTopologyResult& result) {
  std::vector<VEXArcUse> uses;
  for (const VEXTopologyFault& fault : result.faults) {
    for (std::int32_t id : fault.arcs) {
      if (isNoded_) {
        topology.uses(id, uses);
        for (const VEXArcUse& use : uses) faulty_.push_back(members_[static_cast<std::size_t>(use.userId) - 1].number);
      } else {
        for (std::int32_t chain : topology.arc(id).attributes()) faulty_.push_back(cover_->featureOf(chain));
      }
    }
  }
  keepFaults(result.faults);
}

// Lines that cross spoil the faces on either side of them: faults that have an arc in common are one.
void VEXDissolver::keepFaults(std::vector<VEXTopologyFault>& faults) {
  std::vector<std::pair<std::int32_t, std::size_t>> arcs;  // and the faults that have them
  for (std::size_t at = 0; at < faults.size(); ++at)
    for (std::int32_t arc : faults[at].arcs) arcs.emplace_back(arc, at);
  std::sort(arcs.begin(), arcs.end());
  std::vector<std::size_t> firsts(faults.size());
  std::iota(firsts.begin(), firsts.end(), std::size_t{0});
  auto firstOf = [&firsts](std::size_t at) {
    while (firsts[at] != at) at = firsts[at] = firsts[firsts[at]];
    return at;
  };
  for (std::size_t i = 1; i < arcs.size(); ++i) {
    if (arcs[i].first != arcs[i - 1].first) continue;
    const std::size_t a = firstOf(arcs[i - 1].second), b = firstOf(arcs[i].second);
    firsts[std::max(a, b)] = std::min(a, b);
  }
  for (std::size_t at = 0; at < faults.size(); ++at) {
    const std::size_t first = firstOf(at);
    if (first == at) continue;
    faults[first].arcs.insert(faults[first].arcs.end(), faults[at].arcs.begin(), faults[at].arcs.end());
  }
  for (std::size_t at = 0; at < faults.size(); ++at) {
    if (firstOf(at) != at) continue;
    std::vector<std::int32_t>& all = faults[at].arcs;
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    faults_.push_back(std::move(faults[at]));
  }
}
