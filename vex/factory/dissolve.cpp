#include "vex/factory/dissolve.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numeric>

#include "vex/inc/numtext.h"

namespace {

constexpr std::uint32_t kNoRoom = 329003;
constexpr std::uint32_t kNotFinite = 866011;

}  // namespace

VEXDissolver::VEXDissolver(bool isNoded, bool keepsInteriorLines, std::size_t blockCoords)
    : isNoded_(isNoded), keepsInteriorLines_(keepsInteriorLines) {
  if (isNoded)
    noded_ = std::make_unique<VEXNodedRings>();
  else
    cover_ = std::make_unique<VEXBlockCover>(keepsInteriorLines, blockCoords);
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
  const double largest = isNoded_ ? std::numeric_limits<double>::max() : VEXBlockCover::kLargestCoord;
  for (const VEXLineRange& range : ranges_)
    for (std::size_t at = range.first; at < range.first + range.count; ++at)
      if (!(std::fabs(line.xs()[at]) <= largest) || !(std::fabs(line.ys()[at]) <= largest))
        return makeStatus(kNotFinite, {realText(line.xs()[at]), realText(line.ys()[at])});
  // Closing may add to the coordinates.
  if (isNoded_ ? !noded_->hasRoomFor(2 * line.numCoords()) : line.numCoords() > cover_->room() / 2)
    return makeStatus(kNoRoom, {integerText(static_cast<std::int64_t>(VEXChainStore::kMostCoords))});
  for (const VEXLineRange& range : ranges_)
    if (range.count > 0)
      VEX_TRY(addArea(VEXLine::viewOf(line, range.first, range.first + range.count - 1, range.code), number));
  return nullptr;
}

VEXStatus VEXDissolver::addArea(const VEXLine& area, std::int32_t number) {
  area.rings(rings_);
  area.findHoles(rings_, isHole_);
  const std::size_t first = isNoded_ ? noded_->numRings() : 0;
  std::vector<std::size_t> added;  // the numbers of the rings
  if (isNoded_ && rings_.size() > 1) added.assign(rings_.size(), SIZE_MAX);
  if (isNoded_) noded_->beginArea();
  for (std::size_t at = 0; at < rings_.size(); ++at) {
    if (rings_[at].count < 3) continue;  // no area
    if (!added.empty()) added[at] = noded_->numRings();
    VEX_TRY(addRing(area, rings_[at], isHole_[at], number));
  }
  if (isNoded_ && !noded_->endArea() && noded_->numRings() - first > 1) joinRings(area, added);
  if (!isNoded_ && area.geomType() == VEX_GEOM_DONUT && !holdsItsHoles(area)) cover_->doubt(number);
  return nullptr;
}

// Rings that belong together are joined: a hole with the smallest shell around it.
void VEXDissolver::joinRings(const VEXLine& area, const std::vector<std::size_t>& added) {
  auto xs = [&](std::size_t at) { return area.xs().subspan(rings_[at].first, rings_[at].count); };
  auto ys = [&](std::size_t at) { return area.ys().subspan(rings_[at].first, rings_[at].count); };
  struct Shell {
    std::size_t ring;
    double area;
  };
  std::vector<Shell> shells;
  for (std::size_t ring = 0; ring < rings_.size(); ++ring)
    if (!isHole_[ring] && added[ring] != SIZE_MAX) shells.push_back({ring, ringArea(xs(ring), ys(ring))});
  const bool isDonut = area.geomType() == VEX_GEOM_DONUT;
  for (std::size_t hole = 0; hole < rings_.size(); ++hole) {
    if (!isHole_[hole] || added[hole] == SIZE_MAX) continue;
    const Shell* best = nullptr;
    for (const Shell& shell : shells) {
      if (best != nullptr && shell.area >= best->area) continue;
      if (isDonut || isPointInRing(xs(shell.ring), ys(shell.ring), xs(hole)[0], ys(hole)[0])) best = &shell;
    }
    if (best != nullptr)
      noded_->join(static_cast<std::int32_t>(added[hole]), static_cast<std::int32_t>(added[best->ring]));
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
    for (std::size_t ring = 0; ring < rings_.size(); ++ring)
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
  if (isNoded_)
    noded_->addRing(ringX_, ringY_, ringZ_, number);
  else
    cover_->addRing(ringX_, ringY_, ringZ_, number);
  return nullptr;
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

VEXStatus VEXDissolver::dissolveNoded() {
  noded_->pair();
  VEXTopology outline(VEXTopology::kPlain, noded_->numOutlineSegments());
  VEX_TRY(noded_->emit(outline, keepsInteriorLines_ ? &interiorLines_ : nullptr, numInteriorLines_));
  std::vector<std::pair<std::int32_t, std::int32_t>> roots;
  roots.reserve(noded_->numRings());
  for (std::int32_t ring = 0; ring < static_cast<std::int32_t>(noded_->numRings()); ++ring)
    roots.emplace_back(noded_->find(ring), noded_->numberOf(ring));
  return extendStatus(formOutline(outline, roots));
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
  for (VEXKeptPiece piece; cover_->next(piece);) {
    const std::int32_t id = piece.coversRight ? piece.region + 1 : -piece.region - 1;
    if (piece.isInterior)
      addInteriorLines(piece);
    else
      VEX_TRY(outline.addLine(piece.xs, piece.ys, piece.zs, id, piece.chainIds));
  }
  numInteriorLines_ = keepsInteriorLines_ ? static_cast<std::int64_t>(interiorLines_.size()) : cover_->numInterior();
  std::vector<std::pair<std::int32_t, std::int32_t>> roots;
  cover_->members(roots);
  cover_->endReading();
  return extendStatus(formOutline(outline, roots));
}

// A ring comes in two, as an arc between two nodes would.
void VEXDissolver::addInteriorLines(const VEXKeptPiece& piece) {
  ringX_.clear();
  ringY_.clear();
  ringZ_.clear();
  for (std::size_t i = 0; i < piece.xs.size(); ++i) {
    if (i > 0 && piece.xs[i] == piece.xs[i - 1] && piece.ys[i] == piece.ys[i - 1]) continue;
    ringX_.push_back(piece.xs[i]);
    ringY_.push_back(piece.ys[i]);
    if (!piece.zs.empty()) ringZ_.push_back(piece.zs[i]);
  }
  auto add = [this](std::size_t first, std::size_t last) {
    auto take = [=](const std::vector<double>& from) {
      return std::vector<double>(from.begin() + static_cast<std::ptrdiff_t>(first),
                                 from.begin() + static_cast<std::ptrdiff_t>(last) + 1);
    };
    if (ringZ_.empty())
      interiorLines_.emplace_back(take(ringX_), take(ringY_), VEX_GEOM_LINE);
    else
      interiorLines_.emplace_back(take(ringX_), take(ringY_), take(ringZ_), VEX_GEOM_LINE);
  };
  const std::size_t last = ringX_.size() - 1;
  if (last == 0) return;
  if (ringX_[0] != ringX_[last] || ringY_[0] != ringY_[last]) return add(0, last);
  // In the same place whichever way it runs.
  const bool isAtEnd = ringY_[1] != ringY_[last - 1] ? ringY_[1] < ringY_[last - 1] : ringX_[1] < ringX_[last - 1];
  const std::size_t cut = isAtEnd ? last - 1 : 1;
  add(0, cut);
  add(cut, last);
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
    rootOf[static_cast<std::size_t>(polygon) - 1] = isNoded_ ? noded_->find(root) : root;
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
        for (const VEXArcUse& use : uses) faulty_.push_back(noded_->numberOf(use.userId - 1));
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
