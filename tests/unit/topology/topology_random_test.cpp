// Random plane graphs against a plain answer: edges of a lattice of triangles, and the regions that a flood over the
// triangles finds. And random lines that are no plane graph at all.
#include <array>
#include <cmath>
#include <numeric>
#include <random>

#include "tests/unit/topology/topotest.h"
#include "vex/topology/arcpolytopology.h"

namespace {

using Random = std::mt19937_64;

std::size_t below(Random& random, std::size_t limit) {
  return static_cast<std::size_t>(random() % limit);
}

// A square of cells; each cell has four triangles around its centre. Corners and centres are vertices.
struct Lattice {
  std::size_t size;
  struct Edge {
    std::size_t from, to;     // vertices
    std::size_t left, right;  // triangles; 0 is the outside
  };
  std::vector<Edge> edges;

  explicit Lattice(std::size_t cells) : size(cells) {
    for (std::size_t y = 0; y <= size; ++y) {
      for (std::size_t x = 0; x <= size; ++x) {
        if (x < size) edges.push_back({corner(x, y), corner(x + 1, y), triangle(x, y, 0), triangle(x, y - 1, 2)});
        if (y < size) edges.push_back({corner(x, y), corner(x, y + 1), triangle(x - 1, y, 1), triangle(x, y, 3)});
        if (x == size || y == size) continue;
        const std::array<std::size_t, 4> corners = {corner(x, y), corner(x + 1, y), corner(x + 1, y + 1),
                                                    corner(x, y + 1)};
        for (std::size_t k = 0; k < 4; ++k)
          edges.push_back({corners[k], centre(x, y), triangle(x, y, (k + 3) % 4), triangle(x, y, k)});
      }
    }
  }
  std::size_t corner(std::size_t x, std::size_t y) const { return y * (size + 1) + x; }
  std::size_t centre(std::size_t x, std::size_t y) const { return (size + 1) * (size + 1) + y * size + x; }
  std::size_t numVertices() const { return (size + 1) * (size + 1) + size * size; }
  std::size_t numTriangles() const { return 1 + 4 * size * size; }
  std::size_t triangle(std::size_t x, std::size_t y, std::size_t side) const {  // 0 below, 1 right, 2 above, 3 left
    return x < size && y < size ? 1 + 4 * (y * size + x) + side : 0;            // -1 wraps around: outside
  }
  VEXPoint vertex(std::size_t at) const {
    const std::size_t numCorners = (size + 1) * (size + 1);
    if (at < numCorners) return {static_cast<double>(at % (size + 1)), static_cast<double>(at / (size + 1)), kNoZ};
    at -= numCorners;
    return {static_cast<double>(at % size) + 0.5, static_cast<double>(at / size) + 0.5, kNoZ};
  }
  // How far a corner is from the rim; a centre is on no level of its own.
  double level(std::size_t at) const {
    const VEXPoint p = vertex(at);
    const double n = static_cast<double>(size);
    return std::min({p.x, p.y, n - p.x, n - p.y});
  }
  VEXPoint inside(std::size_t triangle) const {
    const std::size_t cell = (triangle - 1) / 4;
    const VEXPoint middle = vertex((size + 1) * (size + 1) + cell);
    constexpr double kAway = 1.0 / 3.0;
    switch ((triangle - 1) % 4) {
      case 0:
        return {middle.x, middle.y - kAway, kNoZ};
      case 1:
        return {middle.x + kAway, middle.y, kNoZ};
      case 2:
        return {middle.x, middle.y + kAway, kNoZ};
      default:
        return {middle.x - kAway, middle.y, kNoZ};
    }
  }
};

struct Sets {
  std::vector<std::size_t> parent;
  explicit Sets(std::size_t count) : parent(count) { std::iota(parent.begin(), parent.end(), 0U); }
  std::size_t find(std::size_t at) {
    while (parent[at] != at) at = parent[at] = parent[parent[at]];
    return at;
  }
  void unite(std::size_t a, std::size_t b) { parent[find(a)] = find(b); }
};

// Where the lattice lies in the plane.
struct Placement {
  double scale, angle, dx, dy;
  VEXPoint operator()(const VEXPoint& p) const {
    const double c = std::cos(angle) * scale;
    const double s = std::sin(angle) * scale;
    return {c * p.x - s * p.y + dx, s * p.x + c * p.y + dy, kNoZ};
  }
};

bool holds(const VEXLine& polygon, const VEXPoint& p) {
  std::vector<VEXLineRange> rings;
  polygon.rings(rings);
  bool isInside = false;
  for (const VEXLineRange& ring : rings)
    if (isPointInRing(polygon.xs().subspan(ring.first, ring.count), polygon.ys().subspan(ring.first, ring.count), p.x,
                      p.y))
      isInside = !isInside;
  return isInside;
}

// The chosen edges as lines. A plain topology wants lines that meet in their ends: they go on over vertices of two
// edges only; else they go on anywhere.
void addChains(const Lattice& lattice, const std::vector<std::size_t>& chosen, const Placement& place, Random& random,
               bool anywhere, VEXTopology& topology) {
  std::vector<std::vector<std::size_t>> at(lattice.numVertices());
  for (std::size_t edge : chosen) {
    at[lattice.edges[edge].from].push_back(edge);
    at[lattice.edges[edge].to].push_back(edge);
  }
  std::vector<bool> isUsed(lattice.edges.size(), false);
  for (std::size_t first : chosen) {
    if (isUsed[first]) continue;
    isUsed[first] = true;
    std::size_t last = lattice.edges[first].to;
    std::vector<std::size_t> chain = {lattice.edges[first].from, last};
    while (below(random, 4) != 0 && (anywhere || at[last].size() == 2)) {
      const std::size_t edge = at[last][below(random, at[last].size())];
      if (isUsed[edge]) break;
      isUsed[edge] = true;
      last = lattice.edges[edge].from == last ? lattice.edges[edge].to : lattice.edges[edge].from;
      chain.push_back(last);
    }
    if (below(random, 2) == 0) std::reverse(chain.begin(), chain.end());
    std::vector<double> x, y;
    for (std::size_t vertex : chain) {
      const VEXPoint p = place(lattice.vertex(vertex));
      x.push_back(p.x);
      y.push_back(p.y);
    }
    ASSERT_EQ(topology.addLine(x, y, {}), nullptr);
  }
}

TEST(TopologyRandom, FacesAreTheRegionsThatAFloodFinds) {
  constexpr std::uint64_t kSeed = 20261123;
  constexpr int kRounds = 3000;
  Random random(kSeed);
  std::size_t numPolygons = 0;
  std::size_t numDonuts = 0;
  for (int round = 0; round < kRounds; ++round) {
    SCOPED_TRACE("seed " + std::to_string(kSeed) + " round " + std::to_string(round));
    const bool hasMoats = below(random, 2) == 0;  // nothing joins one square of corners to the next one inside
    const Lattice lattice(hasMoats ? 3 + below(random, 6) : 1 + below(random, 6));
    const std::size_t percent = hasMoats ? 60 + below(random, 41) : 20 + below(random, 81);
    std::vector<std::size_t> chosen;
    for (std::size_t edge = 0; edge < lattice.edges.size(); ++edge) {
      const bool isInMoat =
          hasMoats && lattice.level(lattice.edges[edge].from) != lattice.level(lattice.edges[edge].to);
      if (below(random, 100) < percent && !isInMoat) chosen.push_back(edge);
    }
    std::shuffle(chosen.begin(), chosen.end(), random);
    const Placement places[] = {{1, 0, 0, 0}, {1, 0.3, 1e7, -2e7}, {1e-6, 1.0, 1e-6, 3e-6}, {1e5, 2.5, 3e5, 5e6}};
    const Placement& place = places[below(random, 4)];
    const bool anywhere = below(random, 2) == 0;
    VEXTopology topology(anywhere ? VEXTopology::kSegments : VEXTopology::kPlain);
    addChains(lattice, chosen, place, random, anywhere, topology);
    const VEXPolygonOptions options{.pseudoNodes = below(random, 2) == 0 ? VEXPseudoNodes::Keep : VEXPseudoNodes::Merge,
                                    .removeDangles = below(random, 2) == 0,
                                    .removeSpikes = below(random, 2) == 0,
                                    .removeCorridors = below(random, 2) == 0};
    VEXTopologyResult result;
    ASSERT_EQ(topology.buildPolygons(result, options), nullptr);
    ASSERT_TRUE(result.faults.empty()) << summaryOf(result);

    Sets regions(lattice.numTriangles());
    std::vector<bool> isChosen(lattice.edges.size(), false);
    for (std::size_t edge : chosen) isChosen[edge] = true;
    for (std::size_t edge = 0; edge < lattice.edges.size(); ++edge)
      if (!isChosen[edge]) regions.unite(lattice.edges[edge].left, lattice.edges[edge].right);
    // Every region is one polygon, every polygon one region.
    std::vector<double> regionAreas(lattice.numTriangles(), 0.0);
    std::vector<std::size_t> polygonOf(lattice.numTriangles(), result.polygons.size());
    std::size_t numRegions = 0;
    for (std::size_t t = 1; t < lattice.numTriangles(); ++t) {
      const std::size_t region = regions.find(t);
      const bool isOutside = region == regions.find(0);
      std::size_t holder = result.polygons.size();
      std::size_t numHolders = 0;
      for (std::size_t i = 0; i < result.polygons.size(); ++i) {
        if (!holds(result.polygons[i].line, place(lattice.inside(t)))) continue;
        holder = i;
        ++numHolders;
      }
      ASSERT_EQ(numHolders, isOutside ? 0U : 1U) << "triangle " << t << ": " << summaryOf(result);
      if (isOutside) continue;
      if (regionAreas[region] == 0.0) {
        polygonOf[region] = holder;
        ++numRegions;
      }
      ASSERT_EQ(holder, polygonOf[region]) << "triangle " << t;
      regionAreas[region] += 0.25 * place.scale * place.scale;
    }
    ASSERT_EQ(result.polygons.size(), numRegions) << summaryOf(result);
    // Areas: of each, and of all beside the outer boundaries.
    const double tolerance = 1e-9 * place.scale * (place.scale + std::fabs(place.dx) + std::fabs(place.dy));
    double total = 0.0;
    for (std::size_t region = 0; region < regionAreas.size(); ++region) {
      if (regionAreas[region] == 0.0) continue;
      ASSERT_NEAR(areaOf(result.polygons[polygonOf[region]].line), regionAreas[region], tolerance);
      total += regionAreas[region];
    }
    double outside = 0.0;
    for (const VEXTopologyBoundary& boundary : result.outside)
      for (const VEXLine& ring : boundary.rings) outside += signedRingArea(ring.xs(), ring.ys());
    ASSERT_NEAR(outside, total, 100 * tolerance);
    // Euler: faces and components of what is left in the graph.
    Sets nodes(static_cast<std::size_t>(topology.numNodes()));
    std::vector<bool> isThere(nodes.parent.size(), false);
    std::size_t numArcs = 0;
    for (std::int32_t id = 1; id <= topology.numArcs(); ++id) {
      const VEXTopologyArc arc = topology.arc(id);
      if (arc.isRemoved()) continue;
      ++numArcs;
      nodes.unite(static_cast<std::size_t>(arc.startNode()), static_cast<std::size_t>(arc.endNode()));
      isThere[static_cast<std::size_t>(arc.startNode())] = isThere[static_cast<std::size_t>(arc.endNode())] = true;
    }
    std::size_t numNodes = 0;
    std::size_t numComponents = 0;
    for (std::size_t node = 0; node < isThere.size(); ++node) {
      if (!isThere[node]) continue;
      ++numNodes;
      if (nodes.find(node) == node) ++numComponents;
    }
    ASSERT_EQ(numNodes + result.polygons.size(), numArcs + numComponents);
    numPolygons += result.polygons.size();
    for (const VEXTopologyPolygon& polygon : result.polygons)
      numDonuts += polygon.line.geomType() == VEX_GEOM_DONUT ? 1 : 0;
  }
  EXPECT_GT(numPolygons, 10000U);  // the rounds are no empty ones
  EXPECT_GT(numDonuts, 200U);
}

// Everything that a build gives, to the last bit.
std::string everything(const VEXTopologyResult& result) {
  std::string text = summaryOf(result);
  for (const VEXTopologyPolygon& polygon : result.polygons) {
    for (std::int32_t id : polygon.arcs) text += " " + std::to_string(id);
    for (double x : polygon.line.xs()) text += " " + realText(x);
    for (double y : polygon.line.ys()) text += " " + realText(y);
  }
  for (const VEXTopologyFault& fault : result.faults) text += joinedIds("", fault.arcs);
  return text;
}

TEST(TopologyRandom, LinesThatCrossAnywhereEndInTheSameWayEachTime) {
  constexpr std::uint64_t kSeed = 77;
  Random random(kSeed);
  std::size_t numFaults = 0;
  for (int round = 0; round < 2000; ++round) {
    SCOPED_TRACE("seed " + std::to_string(kSeed) + " round " + std::to_string(round));
    // Few places, so that lines cross, overlap, repeat and turn back.
    const std::size_t numPlaces = 2 + below(random, 5);
    std::vector<std::vector<double>> xs, ys;
    for (std::size_t line = 1 + below(random, 12); line > 0; --line) {
      std::vector<double> x, y;
      for (std::size_t i = 1 + below(random, 8); i > 0; --i) {
        x.push_back(static_cast<double>(below(random, numPlaces)));
        y.push_back(static_cast<double>(below(random, numPlaces)));
      }
      xs.push_back(x);
      ys.push_back(y);
    }
    const VEXPolygonOptions options{.keepArcs = true,
                                    .pseudoNodes = below(random, 2) == 0 ? VEXPseudoNodes::Keep : VEXPseudoNodes::Merge,
                                    .removeDangles = below(random, 2) == 0,
                                    .removeSpikes = below(random, 2) == 0,
                                    .removeCorridors = below(random, 2) == 0};
    const int mode = below(random, 2) == 0 ? VEXTopology::kPlain : VEXTopology::kSegments;
    std::string first;
    for (int run = 0; run < 2; ++run) {
      VEXTopology topology(mode, run == 0 ? 0 : 1000);  // other sizes of the tables
      for (std::size_t i = 0; i < xs.size(); ++i) ASSERT_EQ(topology.addLine(xs[i], ys[i], {}), nullptr);
      VEXTopologyResult result;
      ASSERT_EQ(topology.buildPolygons(result, options), nullptr);
      numFaults += result.faults.size();
      for (const VEXTopologyPolygon& polygon : result.polygons) {
        EXPECT_GE(polygon.line.numCoords(), 4U);
        EXPECT_GT(areaOf(polygon.line), 0.0) << everything(result);
      }
      if (run == 0) first = everything(result);
      EXPECT_EQ(everything(result), first);
    }
  }
  EXPECT_GT(numFaults, 1000U);
}

// Some of the regions as areas: on each side of every arc lies the polygon that the arc tells, and every ring of a
// polygon's arc list closes.
TEST(TopologyRandom, ArcsTellWhatLiesOnTheirSides) {
  constexpr std::uint64_t kSeed = 4711;
  Random random(kSeed);
  std::size_t numArcs = 0;
  for (int round = 0; round < 300; ++round) {
    SCOPED_TRACE("seed " + std::to_string(kSeed) + " round " + std::to_string(round));
    const Lattice lattice(2 + below(random, 6));
    const bool hasMoats = below(random, 2) == 0;
    const std::size_t percent = hasMoats ? 90 : 40 + below(random, 61);
    std::vector<std::size_t> chosen;
    for (std::size_t edge = 0; edge < lattice.edges.size(); ++edge) {
      const bool isInMoat =
          hasMoats && lattice.level(lattice.edges[edge].from) != lattice.level(lattice.edges[edge].to);
      if (below(random, 100) < percent && !isInMoat) chosen.push_back(edge);
    }
    VEXTopology topology;
    addChains(lattice, chosen, {1, 0, 0, 0}, random, false, topology);
    VEXTopologyResult result;
    ASSERT_EQ(topology.buildPolygons(result, {.removeDangles = true, .removeCorridors = true}), nullptr);
    VEXArcPolyTopology model;
    std::vector<VEXLine> areas;
    for (const VEXTopologyPolygon& polygon : result.polygons) {
      if (below(random, 3) == 0) continue;
      VEXFeaturePtr feature(new VEXFeature(2));
      feature->loadFromLine(polygon.line.clone());
      ASSERT_EQ(model.addFeature(feature), nullptr);
      areas.push_back(polygon.line.clone());
    }
    VEXArcPolyNames names;
    names.leftPolygon = "left";
    names.rightPolygon = "right";
    names.arcList = "arcs";
    VEXFeatureVector arcs, polygons;
    VEXFeaturePtr universe;
    ASSERT_EQ(model.run(names, arcs, polygons, universe), nullptr);
    ASSERT_EQ(polygons.size(), areas.size());
    numArcs += arcs.size();
    auto areaAt = [&](double x, double y) {
      for (std::size_t i = 0; i < areas.size(); ++i)
        if (holds(areas[i], {x, y, kNoZ})) return std::to_string(i + 1);
      return std::string("0");
    };
    for (const VEXFeaturePtr& arc : arcs) {
      const double dx = arc->xs()[1] - arc->xs()[0];
      const double dy = arc->ys()[1] - arc->ys()[0];
      const double x = arc->xs()[0] + dx / 2;
      const double y = arc->ys()[0] + dy / 2;
      EXPECT_EQ(*arc->findAttribute(VEXName::intern("left")), areaAt(x - dy / 8, y + dx / 8));
      EXPECT_EQ(*arc->findAttribute(VEXName::intern("right")), areaAt(x + dy / 8, y - dx / 8));
    }
    if (universe) polygons.push_back(std::move(universe));
    for (std::size_t p = 0; p < polygons.size(); ++p) {
      double area = 0.0;
      std::vector<double> x, y;
      for (std::size_t i = 0;; ++i) {
        const VEXText* entry = polygons[p]->findAttribute(VEXName::intern("arcs{" + std::to_string(i) + "}"));
        const int id = entry == nullptr ? 0 : std::stoi(entry->c_str());
        if (id == 0) {
          ASSERT_GT(x.size(), 3U);
          ASSERT_TRUE(x.front() == x.back() && y.front() == y.back());
          area += signedRingArea(x, y);
          x.clear();
          y.clear();
          if (entry == nullptr) break;
          continue;
        }
        VEXLine line = arcs[static_cast<std::size_t>(std::abs(id)) - 1]->buildLine();
        if (id < 0) line.reverse(0, line.numCoords() - 1);
        ASSERT_TRUE(x.empty() || (x.back() == line.xs().front() && y.back() == line.ys().front()));
        x.insert(x.end(), line.xs().begin(), line.xs().end());
        y.insert(y.end(), line.ys().begin(), line.ys().end());
      }
      if (p < areas.size()) {
        EXPECT_EQ(area, -areaOf(areas[p]));  // clockwise
      } else {
        EXPECT_EQ(area, model.totalArea());
      }
    }
  }
  EXPECT_GT(numArcs, 5000U);
}

}  // namespace
