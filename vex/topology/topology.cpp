#include "vex/topology/topology.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/topology/course.h"
#include "vex/topology/facewalk.h"
#include "vex/topology/orient.h"

namespace {

constexpr std::uint32_t kBadGeometry = 328001;
constexpr std::uint32_t kBadMode = 328002;
constexpr std::uint32_t kNoNumber = 328003;
constexpr std::uint32_t kFull = 328004;
constexpr std::uint32_t kEmptyNode = 323008;

// Lists of parts; everything else is one line or one ring.
bool hasParts(std::uint32_t code) {
  return code == VEX_GEOM_DONUT || code == VEX_GEOM_MULTI || code == VEX_GEOM_MULTI_LINE ||
         code == VEX_GEOM_MULTI_POLY || code == VEX_GEOM_AGGREGATE;
}

bool isLineCode(std::uint32_t code) {
  return code == VEX_GEOM_UNDEFINED || code == VEX_GEOM_LINE || code == VEX_GEOM_POLYGON;
}

VEXStatus checkNumbers(VEXOrdinates xs, VEXOrdinates ys) {
  for (std::size_t i = 0; i < xs.size(); ++i) {
    if (std::isfinite(xs[i]) && std::isfinite(ys[i])) [[likely]]
      continue;
    return makeRejection(kNoNumber, {integerText(static_cast<std::int64_t>(i)), realText(xs[i]), realText(ys[i])});
  }
  return nullptr;
}

// A half edge read from its start to its end.
struct Course {
  const double* x;
  const double* y;
  std::uint32_t count;
  bool isBackward;
  double xAt(std::uint32_t i) const { return x[isBackward ? count - 1 - i : i]; }
  double yAt(std::uint32_t i) const { return y[isBackward ? count - 1 - i : i]; }
};

Course courseOf(const VEXTopologyArcIndex& arcs, std::uint32_t half) {
  const VEXTopologyArcIndex::Record& record = arcs.record(static_cast<std::int32_t>(half / 2) + 1);
  return {arcs.xs(record), arcs.ys(record), record.count, half % 2 != 0};
}

}  // namespace

VEXStatus VEXTopologyFault::status() const {
  return makeRejection(number, {realText(x), realText(y), integerText(static_cast<std::int64_t>(arcs.size()))});
}

VEXTopology::VEXTopology(int mode, std::size_t sizeHint) : mode_(mode), sizeHint_(sizeHint) {}

VEXTopology::~VEXTopology() = default;

// ---- filling ----

VEXStatus VEXTopology::addLine(VEXLine&& newLine, std::int32_t userId, std::span<const std::int32_t> attributes,
                               VEXLineOutcome* outcome) {
  const VEXLine line = std::move(newLine);
  VEX_ASSERT(line.numCoords() > 0);
  const std::uint32_t code = line.geomType();
  if (!isLineCode(code) && !hasParts(code)) return makeStatus(kBadGeometry, {integerText(code)});
  std::vector<VEXLine> parts;
  if (hasParts(code)) {
    VEX_TRY(line.split(kEveryPartMask, parts, true));
  } else if (code == VEX_GEOM_POLYGON) {
    std::vector<VEXLineRange> ranges;
    line.rings(ranges);
    for (const VEXLineRange& range : ranges)
      parts.push_back(VEXLine::viewOf(line, range.first, range.first + range.count - 1, VEX_GEOM_POLYGON));
  } else {
    parts.push_back(VEXLine::viewOf(line, 0, line.numCoords() - 1, code));
  }
  VEX_TRY(prepare(line.numCoords(), line.hasZ()));
  for (const VEXLine& part : parts) VEX_TRY(checkNumbers(part.xs(), part.ys()));
  VEXLineOutcome result;
  for (const VEXLine& part : parts) addPart(part.xs(), part.ys(), part.zs(), userId, attributes, result);
  if (outcome != nullptr) *outcome = result;
  return nullptr;
}

VEXStatus VEXTopology::addLine(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t userId,
                               std::span<const std::int32_t> attributes, VEXLineOutcome* outcome) {
  VEX_TRY(checkNumbers(xs, ys));
  VEX_TRY(prepare(xs.size(), !zs.empty()));
  VEXLineOutcome result;
  addPart(xs, ys, zs, userId, attributes, result);
  if (outcome != nullptr) *outcome = result;
  return nullptr;
}

VEXStatus VEXTopology::prepare(std::size_t numCoords, bool hasZ) {
  if (mode_ != kPlain && mode_ != kSegments) return makeStatus(kBadMode, {integerText(mode_)});
  if (!arcs_.hasRoomFor(numCoords)) return makeStatus(kFull, {integerText(arcs_.count())});
  if (dimension_ != 0) return nullptr;
  dimension_ = hasZ ? 3 : 2;
  // Between two and three coordinates are an arc, and there are about as many nodes as two thirds of the arcs.
  const std::size_t numCoordsToCome = std::min<std::size_t>(sizeHint_, VEXTopologyArcIndex::kMostArcs);
  if (numCoordsToCome == 0) return nullptr;
  arcs_.reserve(numCoordsToCome / 2, numCoordsToCome, hasZ);
  nodes_.reserve(numCoordsToCome / 3);
  return nullptr;
}

void VEXTopology::addPart(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t userId,
                          std::span<const std::int32_t> attributes, VEXLineOutcome& outcome) {
  isOrdered_ = false;
  bool isClean = dimension_ == 2 ? true : zs.size() == xs.size();
  for (std::size_t i = 1; i < xs.size() && isClean; ++i) isClean = xs[i] != xs[i - 1] || ys[i] != ys[i - 1];
  if (!isClean) {
    partX_.clear();
    partY_.clear();
    partZ_.clear();
    for (std::size_t i = 0; i < xs.size(); ++i) {
      if (i > 0 && xs[i] == xs[i - 1] && ys[i] == ys[i - 1]) continue;
      partX_.push_back(xs[i]);
      partY_.push_back(ys[i]);
      if (dimension_ == 3) partZ_.push_back(zs.empty() ? 0.0 : zs[i]);
    }
    xs = partX_;
    ys = partY_;
    zs = partZ_;
  }
  if (dimension_ == 2) zs = {};
  auto addRun = [&](std::size_t first, std::size_t count) {
    const VEXOrdinates runZ = zs.empty() ? zs : zs.subspan(first, count);
    addArc(xs.subspan(first, count), ys.subspan(first, count), runZ, userId, attributes, outcome);
  };
  const std::size_t count = xs.size();
  if (count < 2) {
    ++outcome.numDegenerate;
  } else if (mode_ == kSegments) {
    for (std::size_t i = 0; i + 1 < count; ++i) addRun(i, 2);
  } else if (xs[0] == xs[count - 1] && ys[0] == ys[count - 1]) {
    // A ring becomes two arcs, so that each has two nodes; cut in the same place whichever way it runs.
    const std::size_t beforeLast = count - 2;
    const bool atBeforeLast = ys[1] != ys[beforeLast] ? ys[1] < ys[beforeLast] : xs[1] < xs[beforeLast];
    const std::size_t cut = atBeforeLast ? beforeLast : 1;
    addRun(0, cut + 1);
    addRun(cut, count - cut);
  } else {
    addRun(0, count);
  }
}

void VEXTopology::addArc(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs, std::int32_t userId,
                         std::span<const std::int32_t> attributes, VEXLineOutcome& outcome) {
  // Pieces of one line come one after the other.
  const bool goesOn = lastNode_ >= 0 && nodes_.x(lastNode_) == xs.front() && nodes_.y(lastNode_) == ys.front();
  const std::int32_t startNode = goesOn ? lastNode_ : nodes_.findOrAdd(xs.front(), ys.front());
  const std::int32_t endNode = nodes_.findOrAdd(xs.back(), ys.back());
  lastNode_ = endNode;
  bool wasThere = false;
  bool isReversed = false;
  const std::int32_t id = arcs_.findOrAdd(xs, ys, zs, startNode, endNode, wasThere, isReversed);
  if (userId != 0) arcs_.addUse(id, userId, isReversed);
  if (wasThere) {
    ++outcome.numDuplicates;
    return;
  }
  arcs_.setAttributes(id, attributes);
  if (outcome.numArcs++ == 0) outcome.firstArc = id;
}

VEXStatus VEXTopology::removeArc(std::int32_t id) {
  isOrdered_ = false;
  return extendStatus(arcs_.remove(id));
}

// ---- rotational order ----

// Arcs are read in the order in which they lie, and each end is put down in its node's run together with the coordinate
// that its order depends on: sorting looks at nothing else, but for ends that leave in the same direction.
void VEXTopology::orderEnds() {
  if (isOrdered_) return;
  const std::size_t numNodes = static_cast<std::size_t>(nodes_.count());
  endStart_.assign(numNodes + 1, 0);
  for (std::int32_t id = 1; id <= arcs_.count(); ++id) {
    const VEXTopologyArcIndex::Record& arc = arcs_.record(id);
    if (arc.isRemoved) continue;
    ++endStart_[static_cast<std::size_t>(arc.startNode)];
    ++endStart_[static_cast<std::size_t>(arc.endNode)];
  }
  std::uint32_t sum = 0;
  for (std::uint32_t& start : endStart_) start = sum += start;  // where runs end; filling moves it to where they begin
  std::vector<VEXLineEnd> list(sum);
  for (std::int32_t id = arcs_.count(); id >= 1; --id) {
    const VEXTopologyArcIndex::Record& arc = arcs_.record(id);
    if (arc.isRemoved) continue;
    const std::uint32_t half = static_cast<std::uint32_t>(id - 1) * 2;
    const double* x = arcs_.xs(arc);
    const double* y = arcs_.ys(arc);
    const std::uint32_t last = arc.count - 1;
    list[--endStart_[static_cast<std::size_t>(arc.endNode)]] = {
        half + 1, goesLower(x[last], y[last], x[last - 1], y[last - 1]), x[last - 1], y[last - 1]};
    list[--endStart_[static_cast<std::size_t>(arc.startNode)]] = {half, goesLower(x[0], y[0], x[1], y[1]), x[1], y[1]};
  }
  ends_.resize(sum);
  next_.resize(static_cast<std::size_t>(arcs_.count()) * 2);
  for (std::size_t node = 0; node < numNodes; ++node) {
    VEXLineEnd* const first = list.data() + endStart_[node];
    const std::size_t count = endStart_[node + 1] - endStart_[node];
    sortEnds(nodes_.x(static_cast<std::int32_t>(node)), nodes_.y(static_cast<std::int32_t>(node)), first, count,
             [this](std::uint32_t half) { return courseOf(arcs_, half); });
    for (std::size_t i = 0; i < count; ++i) ends_[endStart_[node] + i] = first[i].half;
  }
  linkEnds();
}

// Ends of arcs that have gone leave their places; the order of the others stays.
void VEXTopology::dropRemovedEnds() {
  std::uint32_t kept = 0;
  std::uint32_t from = 0;
  for (std::size_t node = 0; node + 1 < endStart_.size(); ++node) {
    const std::uint32_t until = endStart_[node + 1];
    endStart_[node] = kept;
    for (; from < until; ++from)
      if (!arcs_.record(static_cast<std::int32_t>(ends_[from] / 2) + 1).isRemoved) ends_[kept++] = ends_[from];
  }
  endStart_.back() = kept;
  ends_.resize(kept);
  linkEnds();
}

void VEXTopology::linkEnds() {
  for (std::size_t node = 0; node + 1 < endStart_.size(); ++node) {
    const std::uint32_t first = endStart_[node];
    const std::uint32_t last = endStart_[node + 1];
    for (std::uint32_t i = first; i < last; ++i) next_[ends_[i] ^ 1U] = ends_[i + 1 == last ? first : i + 1];
  }
  isOrdered_ = true;
}

// ---- asking ----

VEXTopologyNode VEXTopology::node(std::int32_t id) {
  orderEnds();
  VEXTopologyNode view;
  view.id_ = id;
  view.flag_ = nodes_.flag(id);
  const std::size_t at = static_cast<std::size_t>(id);
  view.ends_ = std::span<const std::uint32_t>(ends_).subspan(endStart_[at], endStart_[at + 1] - endStart_[at]);
  view.point_ = VEXPoint{nodes_.x(id), nodes_.y(id), kNoZ};
  if (dimension_ == 3 && view.numEnds() > 0) {
    const VEXArcEnd end = view.end(0);
    const VEXTopologyArc of = arc(end.arc);
    view.point_.z = end.isStart ? of.zs().front() : of.zs().back();
  }
  return view;
}

VEXStatus VEXTopology::sectorOf(std::int32_t id, double px, double py, std::size_t& position) {
  const VEXTopologyNode around = node(id);
  const std::size_t count = around.numEnds();
  if (count == 0) return makeStatus(kEmptyNode, {integerText(id)});
  const double x = around.point().x;
  const double y = around.point().y;
  const bool isLower = goesLower(x, y, px, py);
  position = count - 1;  // before the first one: the sector that goes over the start
  for (std::size_t i = 0; i < count; ++i) {
    const Course course = courseOf(arcs_, ends_[endStart_[static_cast<std::size_t>(id)] + i]);
    const bool endIsLower = goesLower(x, y, course.xAt(1), course.yAt(1));
    if (endIsLower != isLower ? endIsLower : orientation(x, y, course.xAt(1), course.yAt(1), px, py) < 0) break;
    position = i;
  }
  return nullptr;
}

VEXStatus VEXTopology::nextArc(std::int32_t signedArc, std::int32_t& next) {
  if (signedArc == 0 || signedArc > numArcs() || signedArc < -numArcs())
    return makeStatus(320001, {integerText(signedArc)});
  const std::int32_t id = std::abs(signedArc);
  if (arcs_.record(id).isRemoved) return makeStatus(320002, {integerText(id)});
  orderEnds();
  const std::uint32_t half = next_[static_cast<std::size_t>(id - 1) * 2 + (signedArc < 0 ? 1 : 0)];
  next = static_cast<std::int32_t>(half / 2) + 1;
  if (half % 2 != 0) next = -next;
  return nullptr;
}

// ---- building ----

VEXStatus VEXTopology::buildPolygons(VEXTopologyResult& output, const VEXPolygonOptions& options) {
  if (options.pseudoNodes != VEXPseudoNodes::Keep && !arcs_.hasRoomToJoin())
    return makeStatus(kFull, {integerText(arcs_.count())});
  VEXFaceWalk walk(*this, options, output);
  walk.run();
  return nullptr;
}
