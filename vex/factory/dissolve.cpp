#include "vex/factory/dissolve.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <numeric>

#include "vex/inc/numtext.h"

namespace {

constexpr std::uint32_t kNotFinite = 866011;
constexpr std::size_t kFirstTable = 1024;

std::uint64_t mixed(std::uint64_t a, std::uint64_t b) {
  std::uint64_t hash = a * 0x9E3779B97F4A7C15U ^ std::rotl(b * 0xC2B2AE3D27D4EB4FU, 31);
  hash ^= hash >> 32;
  hash *= 0xD6E8FEB86659FD93U;
  return hash ^ hash >> 29;
}

// One zero, not two.
double plain(double value) {
  return value == 0.0 ? 0.0 : value;
}

}  // namespace

VEXDissolver::VEXDissolver(bool isNoded, bool keepsInteriorLines)
    : isNoded_(isNoded), keepsInteriorLines_(keepsInteriorLines) {
  if (!isNoded) intersector_ = std::make_unique<VEXLineIntersector>();
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
  std::vector<VEXLineRange> ranges;
  VEX_TRY(line.leaves(ranges));
  for (const VEXLineRange& range : ranges)
    for (std::size_t at = range.first; at < range.first + range.count; ++at)
      if (!std::isfinite(line.xs()[at]) || !std::isfinite(line.ys()[at]))
        return makeStatus(kNotFinite, {realText(line.xs()[at]), realText(line.ys()[at])});
  hasZ_ = hasZ_ || line.hasZ();
  for (const VEXLineRange& range : ranges)
    if (range.count > 0) addArea(VEXLine::viewOf(line, range.first, range.first + range.count - 1, range.code), number);
  return nullptr;
}

// Rings that belong together are joined: a hole with the smallest shell around it.
void VEXDissolver::addArea(const VEXLine& area, std::int32_t number) {
  std::vector<VEXLineRange> ranges;
  area.rings(ranges);
  std::vector<bool> isHole;
  area.findHoles(ranges, isHole);
  const std::size_t first = rings_.size();
  std::vector<std::size_t> added(ranges.size(), SIZE_MAX);
  for (std::size_t at = 0; at < ranges.size(); ++at) {
    if (ranges[at].count < 3) continue;  // no area
    added[at] = rings_.size();
    addRing(area, ranges[at], isHole[at], number);
  }
  if (rings_.size() - first < 2) return;
  auto xs = [&](std::size_t at) { return area.xs().subspan(ranges[at].first, ranges[at].count); };
  auto ys = [&](std::size_t at) { return area.ys().subspan(ranges[at].first, ranges[at].count); };
  for (std::size_t hole = 0; hole < ranges.size(); ++hole) {
    if (!isHole[hole] || added[hole] == SIZE_MAX) continue;
    std::size_t best = SIZE_MAX;
    double bestArea = 0.0;
    for (std::size_t shell = 0; shell < ranges.size(); ++shell) {
      if (isHole[shell] || added[shell] == SIZE_MAX) continue;
      if (area.geomType() != VEX_GEOM_DONUT && !isPointInRing(xs(shell), ys(shell), xs(hole)[0], ys(hole)[0])) continue;
      const double size = ringArea(xs(shell), ys(shell));
      if (best == SIZE_MAX || size < bestArea) best = shell;
      if (best == shell) bestArea = size;
    }
    if (best != SIZE_MAX) join(static_cast<std::int32_t>(added[hole]), static_cast<std::int32_t>(added[best]));
  }
}

void VEXDissolver::addRing(const VEXLine& area, const VEXLineRange& range, bool isHole, std::int32_t number) {
  std::vector<double> x(area.xs().begin() + static_cast<std::ptrdiff_t>(range.first),
                        area.xs().begin() + static_cast<std::ptrdiff_t>(range.first + range.count));
  std::vector<double> y(area.ys().begin() + static_cast<std::ptrdiff_t>(range.first),
                        area.ys().begin() + static_cast<std::ptrdiff_t>(range.first + range.count));
  std::vector<double> z;
  if (area.hasZ())
    z.assign(area.zs().begin() + static_cast<std::ptrdiff_t>(range.first),
             area.zs().begin() + static_cast<std::ptrdiff_t>(range.first + range.count));
  if (x.front() != x.back() || y.front() != y.back()) {
    x.push_back(x.front());
    y.push_back(y.front());
    if (!z.empty()) z.push_back(z.front());
  }
  if ((signedRingArea(x, y) > 0.0) != isHole) {
    std::reverse(x.begin(), x.end());
    std::reverse(y.begin(), y.end());
    std::reverse(z.begin(), z.end());
  }
  parents_.push_back(static_cast<std::int32_t>(parents_.size()));
  if (isNoded_) {
    const std::size_t start = ringPoints_.size();
    for (std::size_t at = 0; at + 1 < x.size(); ++at) {
      const std::uint32_t point = pointOf(plain(x[at]), plain(y[at]), z.empty() ? 0.0 : z[at]);
      if (ringPoints_.size() == start || ringPoints_.back() != point) ringPoints_.push_back(point);
    }
    while (ringPoints_.size() > start + 1 && ringPoints_.back() == ringPoints_[start]) ringPoints_.pop_back();
    rings_.push_back({number, start, ringPoints_.size() - start});
  } else {
    rings_.push_back({number, 0, 0});
    numCoords_ += x.size();
    // Finite coordinates of one run are not refused; a chain that is lost all the same would only be missing.
    ignoreStatus(intersector_->addLine(z.empty() ? VEXLine(std::move(x), std::move(y), VEX_GEOM_POLYGON)
                                                 : VEXLine(std::move(x), std::move(y), std::move(z), VEX_GEOM_POLYGON),
                                       0));
  }
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
  for (std::size_t ring = 0; ring < rings_.size(); ++ring) {
    const auto id = static_cast<std::int32_t>(ring) + 1;
    const std::uint32_t* points = ringPoints_.data() + rings_[ring].firstPoint;
    const std::size_t count = rings_[ring].numPoints;
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
  for (std::size_t ring = 0; ring < rings_.size(); ++ring) VEX_TRY(emitRuns(ring, outline));
  std::vector<std::pair<std::int32_t, std::int32_t>> roots;
  for (std::size_t ring = 0; ring < rings_.size(); ++ring)
    roots.emplace_back(find(static_cast<std::int32_t>(ring)), rings_[ring].number);
  return extendStatus(formOutline(outline, roots));
}

// Cuts a ring into runs of the outline, which end where more of it meets, and runs along one other ring.
VEXStatus VEXDissolver::emitRuns(std::size_t ring, VEXTopology& outline) {
  constexpr std::int32_t kOutline = -1;
  constexpr std::int32_t kNothing = 0;  // another ring tells it
  const auto id = static_cast<std::int32_t>(ring) + 1;
  const std::uint32_t* points = ringPoints_.data() + rings_[ring].firstPoint;
  const std::size_t count = rings_[ring].numPoints;
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
  VEX_TRY(intersector_->computeIntersections());
  VEXTopology faces(VEXTopology::kPlain, 2 * numCoords_);  // pieces share their ends
  for (VEXChainPiece piece; intersector_->nextPiece(piece);)
    VEX_TRY(faces.addLine(piece.xs, piece.ys, piece.zs, 0, piece.chainIds));
  intersector_.reset();
  VEXTopologyResult result;
  VEXPolygonOptions options;
  options.keepLines = false;
  VEX_TRY(faces.buildPolygons(result, options));
  noteFaults(faces, result);
  if (!faults_.empty()) return nullptr;
  std::vector<std::int64_t> cover;
  coverFaces(faces, static_cast<std::size_t>(result.numPolygons) + 1, cover);

  // From here on faces are joined, not rings: face f is the element f.
  parents_.resize(cover.size());
  std::iota(parents_.begin(), parents_.end(), 0);
  auto isCovered = [&cover](std::int32_t face) { return cover[static_cast<std::size_t>(face)] != 0; };
  VEXTopology outline(VEXTopology::kPlain);
  std::vector<std::pair<std::int32_t, std::int32_t>> roots;
  for (std::int32_t id = 1; id <= faces.numArcs(); ++id) {
    const VEXTopologyArc arc = faces.arc(id);
    if (arc.isRemoved()) continue;
    const std::int32_t left = arc.leftPolygon();
    const std::int32_t right = arc.rightPolygon();
    if (isCovered(left) && isCovered(right)) {
      join(left, right);
      ++numInteriorLines_;
      if (keepsInteriorLines_) interiorLines_.push_back(arc.line());
    } else if (isCovered(left) != isCovered(right)) {
      VEX_TRY(outline.addLine(arc.xs(), arc.ys(), arc.zs(), isCovered(right) ? right : -left));
    }
  }
  // Covered faces on both sides are one by now. Of a ring that crosses itself a loop may lie on the left.
  for (std::int32_t id = 1; id <= faces.numArcs(); ++id) {
    const VEXTopologyArc arc = faces.arc(id);
    const std::int32_t face = isCovered(arc.rightPolygon()) ? arc.rightPolygon() : arc.leftPolygon();
    if (!isCovered(face)) continue;
    for (std::int32_t chain : arc.attributes())
      roots.emplace_back(find(face), rings_[static_cast<std::size_t>(std::abs(chain)) - 1].number);
  }
  std::sort(roots.begin(), roots.end());
  roots.erase(std::unique(roots.begin(), roots.end()), roots.end());
  return extendStatus(formOutline(outline, roots));
}

// How many rings have each face inside, less those that have it outside in the same turn: what is not 0 is covered.
// A step over an arc changes the count by the rings along it; the outside of everything, face 0, has 0.
void VEXDissolver::coverFaces(VEXTopology& faces, std::size_t count, std::vector<std::int64_t>& cover) {
  struct Step {
    std::int32_t to;
    std::int32_t change;
  };
  std::vector<std::size_t> starts(count + 1, 0);
  auto forEachArc = [&faces](auto&& visit) {
    for (std::int32_t id = 1; id <= faces.numArcs(); ++id) {
      const VEXTopologyArc arc = faces.arc(id);
      if (!arc.isRemoved() && arc.leftPolygon() != arc.rightPolygon()) visit(id, arc);
    }
  };
  forEachArc([&](std::int32_t, const VEXTopologyArc& arc) {
    ++starts[static_cast<std::size_t>(arc.leftPolygon()) + 1];
    ++starts[static_cast<std::size_t>(arc.rightPolygon()) + 1];
  });
  std::partial_sum(starts.begin(), starts.end(), starts.begin());
  std::vector<Step> steps(starts.back());
  std::vector<std::size_t> next(starts.begin(), starts.end() - 1);
  std::vector<VEXArcUse> uses;
  forEachArc([&](std::int32_t id, const VEXTopologyArc& arc) {
    std::int32_t change = 0;  // from left to right
    for (std::int32_t chain : arc.attributes()) change += chain > 0 ? 1 : -1;
    faces.uses(id, uses);
    if (!uses.empty() && uses[0].isReversed) change = -change;
    steps[next[static_cast<std::size_t>(arc.leftPolygon())]++] = {arc.rightPolygon(), change};
    steps[next[static_cast<std::size_t>(arc.rightPolygon())]++] = {arc.leftPolygon(), -change};
  });
  cover.assign(count, 0);
  std::vector<bool> isKnown(count, false);
  std::vector<std::size_t> waiting = {0};
  isKnown[0] = true;
  while (!waiting.empty()) {
    const std::size_t face = waiting.back();
    waiting.pop_back();
    for (std::size_t at = starts[face]; at < starts[face + 1]; ++at) {
      const auto to = static_cast<std::size_t>(steps[at].to);
      if (isKnown[to]) continue;
      isKnown[to] = true;
      cover[to] = cover[face] + steps[at].change;
      waiting.push_back(to);
    }
  }
}

// ---- the outline ----

VEXStatus VEXDissolver::formOutline(VEXTopology& outline,
                                    const std::vector<std::pair<std::int32_t, std::int32_t>>& roots) {
  VEXTopologyResult result;
  VEXPolygonOptions options;
  options.removeDangles = true;
  options.removeSpikes = true;
  VEX_TRY(outline.buildPolygons(result, options));
  if (isNoded_) noteFaults(outline, result);
  if (!faults_.empty()) return nullptr;
  const std::int32_t base = isNoded_ ? 1 : 0;  // of the user ids
  std::vector<std::int32_t> rootOf(result.polygons.size(), -1);
  std::vector<VEXArcUse> uses;
  for (std::int32_t id = 1; id <= outline.numArcs(); ++id) {
    const VEXTopologyArc arc = outline.arc(id);
    outline.uses(id, uses);
    if (arc.isRemoved() || uses.empty()) continue;
    const bool isRight = (uses[0].userId > 0) != uses[0].isReversed;
    const std::int32_t polygon = isRight ? arc.rightPolygon() : arc.leftPolygon();
    if (polygon > 0) rootOf[static_cast<std::size_t>(polygon) - 1] = find(std::abs(uses[0].userId) - base);
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
        for (const VEXArcUse& use : uses) faulty_.push_back(rings_[static_cast<std::size_t>(use.userId) - 1].number);
      } else {
        for (std::int32_t chain : topology.arc(id).attributes())
          faulty_.push_back(rings_[static_cast<std::size_t>(std::abs(chain)) - 1].number);
      }
    }
  }
  faults_ = std::move(result.faults);
}
