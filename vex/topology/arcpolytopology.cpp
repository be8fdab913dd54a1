#include "vex/topology/arcpolytopology.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "vex/inc/numtext.h"
#include "vex/src/vexrcycl.h"
#include "vex/topology/facefind.h"

namespace {

constexpr std::uint32_t kNoNumber = 328003;
constexpr std::uint32_t kHasRun = 328006;

// Beyond this size places of meeting cannot be computed.
constexpr double kLargest = 1e75;

VEXStatus checkNumbers(const VEXFeature& feature) {
  for (std::size_t i = 0; i < feature.numCoords(); ++i)
    if (!(std::fabs(feature.xs()[i]) <= kLargest) || !(std::fabs(feature.ys()[i]) <= kLargest))
      return makeRejection(
          kNoNumber, {integerText(static_cast<std::int64_t>(i)), realText(feature.xs()[i]), realText(feature.ys()[i])});
  return nullptr;
}

// Areas in all its parts.
VEXStatus isArea(const VEXLine& line, bool& result) {
  result = isAreaCode(line.geomType());
  if (line.geomType() != VEX_GEOM_AGGREGATE) return nullptr;
  std::vector<VEXLineRange> ranges;
  VEX_TRY(line.leaves(ranges));
  result =
      !ranges.empty() && std::ranges::all_of(ranges, [](const VEXLineRange& range) { return isAreaCode(range.code); });
  return nullptr;
}

VEXFeaturePtr newFeature(int dimension) {
  if (VEXObjectRecycler::exists()) return VEXObjectRecycler::instance().getFeature(dimension);
  return VEXFeaturePtr(new VEXFeature(dimension));
}

}  // namespace

VEXArcPolyTopology::VEXArcPolyTopology(const VEXIntersectorParms& parms, std::size_t maxVertices)
    : maxVertices_(maxVertices), intersector_(parms) {}

// ---- loading ----

VEXStatus VEXArcPolyTopology::addFeature(VEXFeaturePtr& feature) {
  if (hasRun_) return makeStatus(kHasRun);
  VEX_TRY(checkNumbers(*feature));
  bool hasArea = false;
  VEX_TRY(isArea(VEXLine::viewOf(*feature), hasArea));
  if (hasArea)
    areas_.push_back({std::move(feature)});
  else
    lines_.push_back(std::move(feature));
  return nullptr;
}

VEXStatus VEXArcPolyTopology::loadArea(std::uint32_t at) {
  Area& area = areas_[at];
  const VEXLine whole = VEXLine::viewOf(*area.feature);
  VEX_TRY(whole.area(area.area));
  std::vector<VEXLineRange> leaves;
  VEX_TRY(whole.leaves(leaves));
  for (const VEXLineRange& leaf : leaves) {
    if (leaf.count == 0) continue;
    const VEXLine line = VEXLine::viewOf(whole, leaf.first, leaf.first + leaf.count - 1, leaf.code);
    std::vector<VEXLineRange> ranges;
    std::vector<bool> isHole;
    line.rings(ranges);
    line.findHoles(ranges, isHole);
    for (std::size_t i = 0; i < ranges.size(); ++i) {
      VEXLine ring = VEXLine::viewOf(line, ranges[i].first, ranges[i].first + ranges[i].count - 1, VEX_GEOM_POLYGON);
      if (!ring.isClosed()) {
        ring = ring.clone();
        ring.close();
      }
      area.perimeter += lengthOf(ring.xs(), ring.ys());
      VEX_TRY(intersector_.addLine(ring, 0));
      chains_.push_back({at, static_cast<std::uint32_t>(rings_.size())});
      rings_.push_back({at, isRingClockwise(ring.xs(), ring.ys()) != isHole[i]});
    }
  }
  area.feature->resetCoords();
  return nullptr;
}

VEXStatus VEXArcPolyTopology::loadLine(std::uint32_t at) {
  VEXFeature& feature = *lines_[at];
  std::vector<VEXLine> parts;
  const VEXLine whole = VEXLine::viewOf(feature);
  if (feature.geomType() == VEX_GEOM_LINE || feature.numCoords() == 0)
    parts.push_back(VEXLine::viewOf(feature));
  else
    VEX_TRY(whole.split(kEveryPartMask, parts, true));
  for (const VEXLine& part : parts) {
    VEX_TRY(intersector_.addLine(part, 0));
    chains_.push_back({at, kNone});
  }
  parts.clear();
  feature.resetCoords();
  return nullptr;
}

// ---- arcs ----

VEXStatus VEXArcPolyTopology::readPieces() {
  VEXChainPiece piece;
  std::vector<std::pair<std::uint32_t, std::uint32_t>> lineArcs;
  while (intersector_.nextPiece(piece, maxVertices_)) {
    if (piece.numCoords() < 2) continue;
    VEX_TRY(graph_.prepare(piece.numCoords(), !piece.zs.empty()));
    VEXOrdinates zs = piece.zs;
    if (graph_.dimension_ == 2) zs = {};
    std::vector<double> noHeights;
    if (graph_.dimension_ == 3 && zs.empty()) {
      noHeights.assign(piece.numCoords(), 0.0);
      zs = noHeights;
    }
    VEXTopologyNodeIndex& nodes = graph_.nodes_;
    const std::int32_t startNode = nodes.findOrAdd(piece.xs.front(), piece.ys.front());
    const std::int32_t endNode = nodes.findOrAdd(piece.xs.back(), piece.ys.back());
    bool wasThere = false;
    bool isReversed = false;
    const std::int32_t id = graph_.arcs_.findOrAdd(piece.xs, piece.ys, zs, startNode, endNode, wasThere, isReversed);
    if (!wasThere) lineOf_.push_back(kNone);
    for (std::int32_t chainId : piece.chainIds) {
      const Chain& chain = chains_[static_cast<std::size_t>(std::abs(chainId)) - 1];
      if (chain.ring == kNone) {
        std::uint32_t& line = lineOf_[static_cast<std::size_t>(id) - 1];
        if (line == kNone) line = chain.feature;
        continue;
      }
      const bool runsBack = (chainId < 0) != isReversed;
      const bool isForward = rings_[chain.ring].hasPolygonOnRight != runsBack;
      entries_.push_back({chain.ring, static_cast<std::uint32_t>(id - 1) * 2 + (isForward ? 0 : 1)});
    }
  }
  graph_.isOrdered_ = false;
  std::stable_sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) { return a.ring < b.ring; });
  return nullptr;
}

// The first of several areas on one side of an arc is told.
void VEXArcPolyTopology::setSides() {
  for (const Entry& entry : entries_) {
    VEXTopologyArcIndex::Record& arc = graph_.arcs_.record(static_cast<std::int32_t>(entry.half / 2) + 1);
    std::int32_t& side = entry.half % 2 == 0 ? arc.right : arc.left;
    if (side == 0) side = static_cast<std::int32_t>(rings_[entry.ring].area) + 1;
  }
}

// A piece of a line that no area runs along has on both sides what lies around the middle of its longest segment.
void VEXArcPolyTopology::findLinesInPolygons() {
  std::vector<VEXFaceFinder::Point> points;
  std::vector<std::int32_t> asked;
  for (std::int32_t id = 1; id <= graph_.numArcs(); ++id) {
    const VEXTopologyArc arc = graph_.arc(id);
    if (arc.leftPolygon() != 0 || arc.rightPolygon() != 0) {
      lineOf_[static_cast<std::size_t>(id) - 1] = kNone;
      continue;
    }
    if (lineOf_[static_cast<std::size_t>(id) - 1] == kNone) continue;
    std::size_t longest = 0;
    double length = -1.0;
    for (std::size_t i = 0; i + 1 < arc.numCoords(); ++i) {
      const double here = std::hypot(arc.xs()[i + 1] - arc.xs()[i], arc.ys()[i + 1] - arc.ys()[i]);
      if (!(here > length)) continue;
      longest = i;
      length = here;
    }
    points.push_back({arc.xs()[longest] + (arc.xs()[longest + 1] - arc.xs()[longest]) / 2.0,
                      arc.ys()[longest] + (arc.ys()[longest + 1] - arc.ys()[longest]) / 2.0, 1});
    asked.push_back(id);
  }
  if (points.empty() || areas_.empty()) return;
  VEXFaceFinder finder(std::move(points));
  for (std::int32_t id = 1; id <= graph_.numArcs(); ++id) {
    const VEXTopologyArc arc = graph_.arc(id);
    if (arc.leftPolygon() == arc.rightPolygon()) continue;
    for (std::size_t i = 0; i + 1 < arc.numCoords(); ++i)
      finder.addEdge(arc.xs()[i], arc.ys()[i], arc.xs()[i + 1], arc.ys()[i + 1], 0,
                     static_cast<std::uint32_t>(arc.leftPolygon()), static_cast<std::uint32_t>(arc.rightPolygon()));
  }
  const std::vector<std::uint32_t> found = finder.find();
  for (std::size_t i = 0; i < asked.size(); ++i) {
    if (found[i] == VEXFaceFinder::kNothing) continue;
    VEXTopologyArcIndex::Record& arc = graph_.arcs_.record(asked[i]);
    arc.left = arc.right = static_cast<std::int32_t>(found[i]);
  }
}

VEXStatus VEXArcPolyTopology::writeArcs(const VEXArcPolyNames& names, const ArcSink& arcs) {
  auto setNumber = [](VEXFeature& feature, const std::string& name, std::int64_t value) {
    if (!name.empty()) feature.setInteger(name, value);
  };
  for (std::int32_t id = 1; id <= graph_.numArcs(); ++id) {
    const VEXTopologyArc arc = graph_.arc(id);
    VEXFeaturePtr feature = newFeature(graph_.dimension());
    const std::uint32_t line = lineOf_[static_cast<std::size_t>(id) - 1];
    if (line != kNone)
      feature->cloneFrom(*lines_[line]);
    else
      feature->setFeatureType(names.arcType);
    feature->loadFromLine(arc.line());
    setNumber(*feature, names.arcNumber, id);
    setNumber(*feature, names.fromNode, std::int64_t{arc.startNode()} + 1);
    setNumber(*feature, names.toNode, std::int64_t{arc.endNode()} + 1);
    setNumber(*feature, names.leftPolygon, arc.leftPolygon());
    setNumber(*feature, names.rightPolygon, arc.rightPolygon());
    VEX_TRY(arcs(std::move(feature)));
  }
  return nullptr;
}

// ---- polygons ----

// Puts the arcs of one ring, entries first to last, into the order in which they follow each other. Where the ring
// meets itself in a node it goes on into the sector that it came from.
void VEXArcPolyTopology::traceRing(std::uint32_t ring, std::size_t first, std::size_t last,
                                   std::vector<std::int32_t>& list) {
  for (std::size_t i = first; i < last; ++i) insideRing_[entries_[i].half] = ring;
  for (std::size_t i = first; i < last; ++i) {
    std::uint32_t half = entries_[i].half;
    if (insideRing_[half] != ring) continue;  // walked already
    if (!list.empty()) list.push_back(0);
    while (insideRing_[half] == ring) {
      insideRing_[half] = kNone;
      const std::int32_t id = static_cast<std::int32_t>(half / 2) + 1;
      list.push_back(half % 2 == 0 ? id : -id);
      const std::uint32_t back = half ^ 1U;
      for (half = graph_.next_[half]; half != back && insideRing_[half] != ring;) half = graph_.next_[half ^ 1U];
    }
  }
}

void VEXArcPolyTopology::setResults(VEXFeature& feature, const VEXArcPolyNames& names, std::int64_t number,
                                    double perimeter, double area, const std::vector<std::int32_t>& list) const {
  if (!names.polygonNumber.empty()) feature.setInteger(names.polygonNumber, number);
  if (!names.perimeter.empty()) feature.setReal(names.perimeter, perimeter);
  if (!names.area.empty()) feature.setReal(names.area, area);
  if (names.arcList.empty()) return;
  std::string name;
  for (std::size_t i = 0; i < list.size(); ++i) {
    name.assign(names.arcList).append("{");
    appendInteger(name, static_cast<std::int64_t>(i));
    feature.setInteger(name.append("}"), list[i]);
  }
}

void VEXArcPolyTopology::writePolygons(const VEXArcPolyNames& names, VEXFeatureVector& polygons) {
  insideRing_.assign(graph_.next_.size(), kNone);
  std::vector<std::int32_t> list;
  std::size_t entry = 0;
  for (std::size_t at = 0; at < areas_.size(); ++at) {
    Area& area = areas_[at];
    list.clear();
    while (entry < entries_.size() && rings_[entries_[entry].ring].area == at) {
      const std::uint32_t ring = entries_[entry].ring;
      const std::size_t first = entry;
      while (entry < entries_.size() && entries_[entry].ring == ring) ++entry;
      traceRing(ring, first, entry, list);
    }
    if (list.empty()) continue;  // without arcs the area goes
    totalArea_ += area.area;
    setResults(*area.feature, names, static_cast<std::int64_t>(at) + 1, area.perimeter, area.area, list);
    polygons.push_back(std::move(area.feature));
  }
}

// How many areas lie on the right of each half edge. Next to an arc, an area that overlaps it is not told by the arc's
// own polygons: it is counted over the faces of the plane, from the outside, where there is none.
void VEXArcPolyTopology::countCover(std::vector<std::int32_t>& cover) {
  cover.assign(graph_.next_.size(), 0);
  std::vector<std::int32_t> more(static_cast<std::size_t>(graph_.numArcs()), 0);  // right of the arc than left of it
  for (const Entry& entry : entries_) {
    cover[entry.half] += 1;
    more[entry.half / 2] += entry.half % 2 == 0 ? 1 : -1;
  }
  VEXTopology boundaries;
  std::vector<std::uint32_t> halfOf;  // per arc of `boundaries`: its forward half edge in the whole
  bool wasThere = false;
  bool isReversed = false;
  for (std::int32_t id = 1; id <= graph_.numArcs(); ++id) {
    const VEXTopologyArc arc = graph_.arc(id);
    if (arc.leftPolygon() == arc.rightPolygon()) continue;  // a line, or run along both ways
    boundaries.arcs_.findOrAdd(arc.xs(), arc.ys(), {}, boundaries.nodes_.findOrAdd(arc.xs().front(), arc.ys().front()),
                               boundaries.nodes_.findOrAdd(arc.xs().back(), arc.ys().back()), wasThere, isReversed);
    halfOf.push_back(static_cast<std::uint32_t>(id - 1) * 2);
  }
  VEXTopologyResult faces;
  ignoreStatus(boundaries.buildPolygons(faces));  // fails only in merging arcs
  if (!faces.faults.empty()) return;              // not plane: what the arcs themselves tell has to do
  const std::size_t numFaces = faces.polygons.size() + 1;
  faces = VEXTopologyResult{};
  auto faceOf = [&](std::size_t half) {
    const VEXTopologyArcIndex::Record& arc = boundaries.arcs_.record(static_cast<std::int32_t>(half / 2) + 1);
    return static_cast<std::size_t>(half % 2 == 0 ? arc.right : arc.left);
  };
  std::vector<std::uint32_t> starts(numFaces + 1, 0);
  std::vector<std::uint32_t> halves(halfOf.size() * 2);
  for (std::size_t half = 0; half < halves.size(); ++half) ++starts[faceOf(half)];
  std::partial_sum(starts.begin(), starts.end(), starts.begin());
  for (std::size_t half = halves.size(); half-- > 0;) halves[--starts[faceOf(half)]] = static_cast<std::uint32_t>(half);
  std::vector<std::int32_t> onFace(numFaces, -1);
  std::vector<std::size_t> reached = {0};
  onFace[0] = 0;
  for (std::size_t i = 0; i < reached.size(); ++i) {
    const std::size_t face = reached[i];
    for (std::uint32_t k = starts[face]; k < starts[face + 1]; ++k) {
      const std::uint32_t half = halves[k];
      const std::uint32_t wholeHalf = halfOf[half / 2] + half % 2;
      cover[wholeHalf] = onFace[face];
      const std::size_t other = faceOf(half ^ 1U);
      if (onFace[other] >= 0) continue;
      const std::int32_t difference = more[wholeHalf / 2];
      onFace[other] = onFace[face] - (half % 2 == 0 ? difference : -difference);
      reached.push_back(other);
    }
  }
}

// Arcs with areas on one side only are the universe's boundary. In a graph of these alone the walk with the universe on
// the right gives its rings.
void VEXArcPolyTopology::writeUniverse(const VEXArcPolyNames& names, VEXFeaturePtr& universe) {
  std::vector<std::int32_t> cover;
  countCover(cover);
  VEXTopology borders;
  std::vector<std::int32_t> arcOf;  // per arc of `borders`: its number in the whole
  double perimeter = 0.0;
  for (std::int32_t id = 1; id <= graph_.numArcs(); ++id) {
    const std::size_t half = static_cast<std::size_t>(id - 1) * 2;
    if ((cover[half] == 0) == (cover[half + 1] == 0)) continue;
    const VEXTopologyArc arc = graph_.arc(id);
    bool wasThere = false;
    bool isReversed = false;
    borders.arcs_.findOrAdd(arc.xs(), arc.ys(), {}, borders.nodes_.findOrAdd(arc.xs().front(), arc.ys().front()),
                            borders.nodes_.findOrAdd(arc.xs().back(), arc.ys().back()), wasThere, isReversed);
    arcOf.push_back(id);
    perimeter += lengthOf(arc.xs(), arc.ys());
  }
  if (arcOf.empty()) return;
  borders.orderEnds();
  std::vector<bool> isWalked(borders.next_.size(), false);
  std::vector<std::int32_t> list;
  std::vector<double> x, y;
  double area = 0.0;
  for (std::uint32_t start = 0; start < isWalked.size(); ++start) {
    const bool hasUniverseOnRight = cover[static_cast<std::size_t>(arcOf[start / 2] - 1) * 2 + start % 2] == 0;
    if (isWalked[start] || !hasUniverseOnRight) continue;
    if (!list.empty()) list.push_back(0);
    x.clear();
    y.clear();
    for (std::uint32_t half = start; !isWalked[half]; half = borders.next_[half]) {
      isWalked[half] = true;
      const std::int32_t id = arcOf[half / 2];
      const VEXTopologyArc arc = graph_.arc(id);
      list.push_back(half % 2 == 0 ? id : -id);
      for (std::size_t i = 0; i < arc.numCoords(); ++i) {
        const std::size_t at = half % 2 == 0 ? i : arc.numCoords() - 1 - i;
        x.push_back(arc.xs()[at]);
        y.push_back(arc.ys()[at]);
      }
    }
    x.push_back(x.front());
    y.push_back(y.front());
    area -= signedRingArea(x, y);
  }
  universe = newFeature(2);
  if (!names.universeMark.empty()) universe->setAttribute(names.universeMark, "border segment");
  setResults(*universe, names, 0, perimeter, area, list);
}

VEXStatus VEXArcPolyTopology::run(const VEXArcPolyNames& names, const ArcSink& arcs, VEXFeatureVector& polygons,
                                  VEXFeaturePtr& universe, const VEXProgress& progress) {
  if (hasRun_) return makeStatus(kHasRun);
  hasRun_ = true;
  // Areas first, so that arcs run as their boundaries do.
  for (std::uint32_t at = 0; at < areas_.size(); ++at) VEX_TRY(loadArea(at));
  for (std::uint32_t at = 0; at < lines_.size(); ++at) VEX_TRY(loadLine(at));
  VEX_TRY(intersector_.computeIntersections(progress));
  VEX_TRY(readPieces());
  setSides();
  findLinesInPolygons();
  VEX_TRY(writeArcs(names, arcs));
  graph_.orderEnds();
  writePolygons(names, polygons);
  writeUniverse(names, universe);
  return nullptr;
}

VEXStatus VEXArcPolyTopology::run(const VEXArcPolyNames& names, VEXFeatureVector& arcs, VEXFeatureVector& polygons,
                                  VEXFeaturePtr& universe, const VEXProgress& progress) {
  const ArcSink append = [&arcs](VEXFeaturePtr arc) -> VEXStatus {
    arcs.push_back(std::move(arc));
    return nullptr;
  };
  return extendStatus(run(names, append, polygons, universe, progress));
}
