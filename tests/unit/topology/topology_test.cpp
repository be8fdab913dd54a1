// The planar graph and the polygons formed from it: small pictures, arcs and nodes, and input that is no plane graph.
#include <cmath>
#include <limits>

#include "tests/unit/topology/topotest.h"
#include "vex/topology/orient.h"

namespace {

const char* const kBox = "0 0, 10 0, 10 10, 0 10, 0 0";

std::string formed(const std::string& lines, const VEXPolygonOptions& options = {}, int mode = VEXTopology::kPlain) {
  VEXTopology topology(mode);
  addLines(topology, lines);
  VEXTopologyResult result;
  EXPECT_EQ(topology.buildPolygons(result, options), nullptr);
  return summaryOf(result);
}

std::string box(double x, double y, double size) {
  auto at = [](double px, double py) { return realText(px) + " " + realText(py); };
  return at(x, y) + ", " + at(x + size, y) + ", " + at(x + size, y + size) + ", " + at(x, y + size) + ", " + at(x, y);
}

TEST(Topology, Pictures) {
  const std::string outer = kBox;
  for (const auto& [lines, expected] : std::initializer_list<std::pair<std::string, std::string>>{
           {outer, "100 out:1"},
           {"0 0, 10 0, 10 10; 10 10, 0 10; 0 10, 0 0", "100 out:1"},
           {"10 10, 10 0, 0 0; 0 10, 10 10; 0 10, 0 0", "100 out:1"},     // any direction
           {outer + "; 20 0, 30 0, 30 5, 20 5, 20 0", "50 100 out:1,1"},  // the lowest point farther right is first
           {outer + "; " + box(2, 2, 3), "91-1 9 out:1"},                 // donut and its filling
           {outer + "; " + box(2, 2, 3) + "; " + box(3, 3, 1), "91-1 8-1 1 out:1"},
           {outer + "; " + box(1, 1, 2) + "; " + box(5, 1, 2), "92-2 4 4 out:1"},
           {"10 10, 0 10, 0 0, 10 0, 10 10; " + box(10, 10, 2), "100 4 out:2"},  // figure eight: two rings, one outline
           {"0 0, 10 0, 10 10, 12 10, 12 12, 10 12, 10 10, 0 10, 0 0", "104 out:1"},  // the same as one line: not noded
           {"0 0, 4 0, 4 4, 0 0; 4 4, 8 4, 8 8, 4 4", "8 8 out:2"},
           // a hole touches its shell in a point and along an edge
           {"0 0, 5 0; 5 0, 10 0, 10 10, 0 10, 0 0; 5 0, 7 3, 3 3, 5 0", "94-1 6 out:1"},
           {"0 0, 4 0; 4 0, 6 0; 6 0, 10 0, 10 10, 0 10, 0 0; 4 0, 4 2, 6 2, 6 0", "96 4 out:1"},
           // two holes that touch each other, and three that close in a region between them
           {outer + "; 2 2, 4 4, 2 6, 2 2; 4 4, 6 2, 6 6, 4 4", "92-2 4 4 out:1"},
           {"0 0, 12 0, 12 12, 0 12, 0 0; 2 2, 6 2; 6 2, 4 5; 4 5, 2 2; 6 2, 10 2; 10 2, 8 5; 8 5, 6 2; 4 5, 8 5; 8 5, "
            "6 8; 6 8, 4 5",
            "120-1 6 6 6 6 out:1"},
           {"0 0, 10 0, 10 5; 10 5, 10 10, 0 10; 0 10, 0 0; 10 5, 12 5", "100 out:1 lines:4"},  // a dangle stays
           {"0 0, 10 0, 10 5; 10 5, 10 10, 0 10; 0 10, 0 0; 10 5, 5 5", "100 out:1"},           // inside the ring
           {outer + "; 3 3, 4 4", "100 out:1 lines:3"},
           {outer + "; " + outer + "; 0 0, 0 10, 10 10, 10 0, 0 0", "100 out:1"},  // duplicates
           {"0 0, 0 0, 10 0, 10 0, 10 10, 10 10, 0 10, 0 0, 0 0", "100 out:1"},
           {"5 5, 5 5; 1 1", " out:"},
           {"0 0, 5 5, 0 0", " out: lines:1"},
           {"polygon " + outer + ", 2 2, 2 4, 4 4, 4 2, 2 2", "96-1 4 out:1"},
           {"donut " + outer + ", 2 2, 4 2, 4 4, 2 4, 2 2", "96-1 4 out:1"},
           {"multi 0 0, 10 0, 10 10, 10 10, 10 10, 0 10; 0 10, 0 0", "100 out:1"},
           {"aggregate 4 5, " + outer + ", 512 3, 2 2, 20 0, 30 0", "100 out:1 lines:3"},
           {"", " out:"},
       })
    EXPECT_EQ(formed(lines), expected) << lines;
}

TEST(Topology, WhatIsTakenOutWhenAsked) {
  const std::string outer = kBox;
  const std::string halves = "0 0, 10 0, 10 5; 10 5, 10 10, 0 10, 0 0; ";  // arcs 1 and 2
  const VEXPolygonOptions dangles{.removeDangles = true};
  const VEXPolygonOptions spikes{.removeSpikes = true};
  const VEXPolygonOptions corridors{.removeCorridors = true};
  const VEXPolygonOptions all{.removeDangles = true, .removeSpikes = true, .removeCorridors = true};
  struct Row {
    std::string lines;
    VEXPolygonOptions options;
    std::string expected;
  };
  for (const Row& row : {
           Row{halves + "10 5, 12 5; 12 5, 13 6; 12 5, 13 4", dangles, "100 out:1 dangles:4 5 3"},
           Row{halves + "10 5, 5 5; 5 5, 4 4", dangles, "100 out:1 dangles:4 3"},
           Row{"0 0, 1 1; 1 1, 2 2; 2 2, 3 3", dangles, " out: dangles:1 2 3"},
           // a line runs out and back: within an arc, at the ring's first point, along an edge of the ring
           Row{"0 0, 10 0, 10 5, 15 5, 10 5, 10 10, 0 10, 0 0", {}, "100 out:1"},
           Row{"0 0, 10 0, 10 5, 15 5, 10 5, 10 10, 0 10, 0 0", spikes, "100 out:1"},
           Row{"15 5, 10 5, 10 10, 0 10, 0 0, 10 0, 10 5, 15 5", spikes, "100 out:1"},
           Row{"0 0, 10 0, 10 5, 10 2, 10 10, 0 10, 0 0", spikes, "100 out:1"},
           Row{"0 0, 5 5, 2 2, 0 0", spikes, " out: lines:1 2"},
           Row{"0 0, 5 5; 5 5, 2 2, 0 0",
               {.pseudoNodes = VEXPseudoNodes::Merge, .removeSpikes = true},
               " out: spikes:1"},
           // a bridge between a ring and a ring within it, and between two rings
           Row{halves + "10 5, 7 5; 7 5, 4 8, 4 2, 7 5", {}, "91 9 out:1"},
           Row{halves + "10 5, 7 5; 7 5, 4 8, 4 2, 7 5", corridors, "91-1 9 out:1 corridors:3"},
           Row{halves + "10 5, 17 5; 17 5, 24 8, 24 2, 17 5", {}, "100 21 out:1 lines:3"},
           Row{halves + "10 5, 17 5; 17 5, 24 8, 24 2, 17 5", corridors, "100 21 out:1,1 corridors:3"},
           Row{halves + "10 5, 17 5; 17 5, 24 8, 24 2, 17 5; 10 5, 5 5", corridors, "100 21 out:1,1 corridors:3"},
           Row{halves + "10 5, 17 5; 17 5, 24 8, 24 2, 17 5; 10 5, 5 5", all, "100 21 out:1,1 dangles:6 corridors:3"},
       })
    EXPECT_EQ(formed(row.lines, row.options), row.expected) << row.lines;
  // A spike leaves no coordinates behind.
  VEXTopology topology;
  addLines(topology, "15 5, 10 5, 10 10, 0 10, 0 0, 10 0, 10 5, 15 5");
  VEXTopologyResult result;
  ASSERT_EQ(topology.buildPolygons(result, spikes), nullptr);
  ASSERT_EQ(result.polygons.size(), 1U);
  EXPECT_EQ(result.polygons[0].line.numCoords(), 6U);
}

TEST(Topology, PseudoNodesBecomeOneArc) {
  VEXTopology topology;
  addLines(topology, "5 0, 10 0; 10 0, 10 10; 0 10, 10 10; 0 10, 0 0; 0 0, 5 0; 5 0, 5 10");
  EXPECT_EQ(topology.node(topology.getNode({10, 0})).numEnds(), 2U);
  VEXTopologyResult result;
  topology.setNodeFlag(topology.getNode({0, 10}), true);
  ASSERT_EQ(topology.buildPolygons(result, {.keepArcs = true, .pseudoNodes = VEXPseudoNodes::Merge}), nullptr);
  // The flagged node stays; the joined arcs keep the lowest id and its direction.
  std::vector<VEXArcUse> uses;
  topology.uses(1, uses);
  ASSERT_EQ(uses.size(), 3U);
  EXPECT_EQ(uses[2].userId, 3);
  EXPECT_TRUE(uses[2].isReversed);
  EXPECT_EQ(topology.arc(1).numCoords(), 4U);
  EXPECT_TRUE(topology.arc(1).firstPointIs({5, 0}));
  EXPECT_TRUE(topology.arc(1).lastPointIs({0, 10}));
  EXPECT_TRUE(topology.arc(3).isRemoved());
  ASSERT_EQ(result.polygons.size(), 1U);  // 5 10 is the end of a dangle: the line does not meet the others there
  EXPECT_EQ(summaryOf(result), "100 out:1");

  for (const VEXPseudoNodes rule : {VEXPseudoNodes::Merge, VEXPseudoNodes::MergeSameAttributes}) {
    VEXTopology ring;
    const std::int32_t red[] = {7};
    const std::int32_t blue[] = {7, 8};
    ASSERT_EQ(ring.addLine(lineOf("line 0 0, 4 0"), 1, red), nullptr);
    ASSERT_EQ(ring.addLine(lineOf("line 4 0, 4 4"), 2, red), nullptr);
    ASSERT_EQ(ring.addLine(lineOf("line 4 4, 0 0"), 3, blue), nullptr);
    ASSERT_EQ(ring.buildPolygons(result, {.keepArcs = true, .pseudoNodes = rule}), nullptr);
    ASSERT_EQ(result.polygons.size(), 1U);
    EXPECT_EQ(result.polygons[0].arcs.size(), rule == VEXPseudoNodes::Merge ? 1U : 2U);  // a loop, or two arcs
    EXPECT_EQ(areaOf(result.polygons[0].line), 8.0);
  }
}

TEST(Topology, ArcsTellTheirPolygonsAndPolygonsTheirArcs) {
  VEXTopology topology;
  // Two rooms with a wall between, a closet that touches nothing in the second.
  addLines(topology, "5 0, 0 0, 0 10, 5 10; 5 0, 5 10; 5 0, 10 0, 10 10, 5 10; 7 4, 8 4, 8 5, 7 5, 7 4");
  VEXTopologyResult result;
  ASSERT_EQ(topology.buildPolygons(result, {.keepArcs = true}), nullptr);
  ASSERT_EQ(summaryOf(result), "50 49-1 1 out:1");
  EXPECT_EQ(result.polygons[0].arcs, (VEXArcList{1, -2}));
  EXPECT_EQ(result.polygons[1].arcs, (VEXArcList{2, -3, 0, 4, 5}));
  EXPECT_EQ(result.polygons[2].arcs, (VEXArcList{-4, -5}));
  EXPECT_EQ(result.outside[0].arcs, (VEXArcList{-1, 3}));
  struct Row {
    std::int32_t arc, left, right;
  };
  for (const Row& row : {Row{1, 0, 1}, Row{2, 1, 2}, Row{3, 2, 0}, Row{4, 3, 2}, Row{5, 3, 2}}) {
    EXPECT_EQ(topology.arc(row.arc).leftPolygon(), row.left) << row.arc;
    EXPECT_EQ(topology.arc(row.arc).rightPolygon(), row.right) << row.arc;
  }
  // The wall goes: one room is left.
  ASSERT_EQ(topology.removeArc(2), nullptr);
  ASSERT_EQ(topology.buildPolygons(result), nullptr);
  EXPECT_EQ(summaryOf(result), "99-1 1 out:1");
  EXPECT_EQ(numberOf(topology.removeArc(2)), 320002U);
  EXPECT_EQ(numberOf(topology.removeArc(6)), 320001U);
  EXPECT_EQ(numberOf(topology.removeArc(0)), 320001U);
}

TEST(Topology, NodesKeepTheirArcsInRotationalOrder) {
  VEXTopology topology;
  addLines(topology, "0 0, 5 -1; -5 5, 0 0; 0 0, 5 0; 0 0, 0 5; 0 0, -5 0; 0 -5, 0 0; 0 0, 5 5");
  const VEXTopologyNode node = topology.node(topology.getNode({0, 0}));
  std::string order;
  for (std::size_t i = 0; i < node.numEnds(); ++i)
    order += std::to_string(node.end(i).arc) + (node.end(i).isStart ? "s " : "e ");
  EXPECT_EQ(order, "7s 4s 2e 5s 6e 1s 3s ");
  EXPECT_EQ(topology.getNode({0, 1}), -1);
  std::size_t at = 99;
  EXPECT_EQ(node.positionOf({2, false}, at), nullptr);
  EXPECT_EQ(at, 2U);
  EXPECT_EQ(numberOf(node.positionOf({2, true}, at)), 323007U);
  struct Row {
    double x, y;
    std::size_t position;
  };
  for (const Row& row : {Row{5, 1, 6}, Row{1, 2, 0}, Row{-1, 9, 1}, Row{-9, -1, 3}, Row{1, -9, 4}, Row{9, -1, 5}}) {
    ASSERT_EQ(topology.sectorOf(node.id(), row.x, row.y, at), nullptr);
    EXPECT_EQ(at, row.position) << row.x << " " << row.y;
  }
  std::int32_t other = -1;
  EXPECT_EQ(topology.arc(2).otherNode(node.id(), other), nullptr);
  EXPECT_EQ(other, topology.getNode({-5, 5}));
  EXPECT_EQ(numberOf(topology.arc(2).otherNode(topology.getNode({5, 5}), other)), 319001U);
  std::int32_t next = 0;
  ASSERT_EQ(topology.nextArc(2, next), nullptr);
  EXPECT_EQ(next, 5);
  ASSERT_EQ(topology.nextArc(-3, next), nullptr);
  EXPECT_EQ(next, 7);
  ASSERT_EQ(topology.nextArc(3, next), nullptr);  // the arc's end is no one else's
  EXPECT_EQ(next, -3);
  EXPECT_EQ(numberOf(topology.nextArc(8, next)), 320001U);
  EXPECT_EQ(numberOf(topology.nextArc(std::numeric_limits<std::int32_t>::min(), next)), 320001U);
}

TEST(Topology, ArcsThatBeginTogetherAreFollowedUntilTheyPart) {
  // All leave 0 0 to the east; what parts to the right comes first.
  VEXTopology topology;
  addLines(topology, "0 0, 4 0, 6 3; 0 0, 2 0, 4 0, 6 1; 0 0, 3 0, 3 -1; 0 0, 1 0; 0 0, 5 0, 8 0; 0 0, 3 0, 2 2");
  const VEXTopologyNode node = topology.node(0);
  std::string order;
  for (std::size_t i = 0; i < node.numEnds(); ++i) order += std::to_string(node.end(i).arc);
  EXPECT_EQ(order, "435216");
}

TEST(Topology, WhatAddLineSays) {
  VEXTopology topology;
  VEXLineOutcome outcome;
  ASSERT_EQ(topology.addLine(lineOf("line 0 0, 10 0, 10 10, 0 0"), 1, {}, &outcome), nullptr);
  EXPECT_EQ(outcome.numArcs, 2);  // a ring becomes two arcs
  ASSERT_EQ(topology.addLine(lineOf("line 10 10, 20 20"), 2, {}, &outcome), nullptr);
  EXPECT_EQ(outcome.firstArc, 3);
  ASSERT_EQ(topology.addLine(lineOf("line 20 20, 10 10"), 3, {}, &outcome), nullptr);
  EXPECT_EQ(outcome.numArcs, 0);
  EXPECT_EQ(outcome.numDuplicates, 1);
  std::vector<VEXArcUse> uses;
  topology.uses(3, uses);
  ASSERT_EQ(uses.size(), 2U);
  EXPECT_EQ(uses[1].userId, 3);
  EXPECT_TRUE(uses[1].isReversed);
  ASSERT_EQ(topology.addLine(lineOf("line 1 1, 1 1"), 4, {}, &outcome), nullptr);
  EXPECT_EQ(outcome.numDegenerate, 1);
  const std::int32_t numArcs = topology.numArcs();
  const std::int32_t numNodes = topology.numNodes();
  EXPECT_EQ(numberOf(topology.addLine(lineOf("point 1 1"))), 328001U);
  EXPECT_EQ(numberOf(topology.addLine(lineOf("256 1 1, 2 2"))), 328001U);
  EXPECT_EQ(numberOf(topology.addLine(lineOf("line 1 1, 2 2, nan 3"))), 328003U);
  EXPECT_EQ(numberOf(topology.addLine(lineOf("64 1 1, 2 2, 2 2, 5 5, 6 inf"))), 328003U);
  EXPECT_EQ(numberOf(topology.addLine(lineOf("aggregate 2 9, 1 1"))), 244023U);
  EXPECT_EQ(topology.numArcs(), numArcs);
  EXPECT_EQ(topology.numNodes(), numNodes);
  VEXTopology wrong(1);
  EXPECT_EQ(numberOf(wrong.addLine(lineOf("line 1 1, 2 2"))), 328002U);
}

TEST(Topology, VertexNodedLinesMeetInTheirVertices) {
  const std::string lines = "0 0, 5 0, 10 0, 10 10, 5 10, 0 10, 0 0; 5 0, 5 5, 5 10; 5 5, 10 0";
  EXPECT_EQ(formed(lines, {}, VEXTopology::kSegments), "50 12.5 37.5 out:1");
  VEXTopology topology(VEXTopology::kSegments);
  addLines(topology, lines);
  EXPECT_EQ(topology.numArcs(), 9);
}

TEST(Topology, HeightsTravelAlong) {
  VEXTopology topology;
  ASSERT_EQ(topology.addLine(lineOf("line 0 0 1, 4 0 2, 4 4 3")), nullptr);
  ASSERT_EQ(topology.addLine(lineOf("line 4 4, 0 0")), nullptr);  // gets 0
  EXPECT_EQ(topology.dimension(), 3);
  VEXTopologyResult result;
  ASSERT_EQ(topology.buildPolygons(result), nullptr);
  ASSERT_EQ(result.polygons.size(), 1U);
  const VEXLine& line = result.polygons[0].line;
  ASSERT_TRUE(line.hasZ());
  EXPECT_EQ(std::vector<double>(line.zs().begin(), line.zs().end()), (std::vector<double>{3, 2, 0, 3}));
  VEXTopology flat;
  ASSERT_EQ(flat.addLine(lineOf("line 0 0, 4 0")), nullptr);
  ASSERT_EQ(flat.addLine(lineOf("line 4 0 7, 4 4 3, 0 0 1")), nullptr);
  ASSERT_EQ(flat.buildPolygons(result), nullptr);
  EXPECT_FALSE(result.polygons.at(0).line.hasZ());
}

TEST(Topology, OrientationIsExact) {
  const double tiny = std::numeric_limits<double>::epsilon();
  struct Row {
    double ax, ay, bx, by, cx, cy;
    int side;
  };
  for (const Row& row : {
           Row{0, 0, 1, 0, 0, 1, 1},
           Row{0, 0, 1, 0, 0, -1, -1},
           Row{12, 12, 24, 24, 0.5, 0.5, 0},
           Row{12, 12, 24, 24, 0.5, 0.5 + tiny, 1},
           Row{12, 12, 24, 24, 0.5 + tiny, 0.5, -1},
           Row{1e7, 1e7, 1e7 + 2, 1e7 + 2, 1e7 + 1, 1e7 + 1, 0},
           Row{-1e300, -1e300, 1e300, 1e300, 1e300, -1e300, -1},
           Row{-1e308, -1e308, 1e308, 1e308, 0, 0, 0},
           Row{0, 0, 1e-200, 1e-200, 3e-200, 2e-200, -1},
           Row{0.1, 0.1, 0.2, 0.2, 0.3, 0.3, 0},  // 0.1, 0.2 and 0.3 as they are in binary, on the diagonal
           Row{0, 0, 0.1, 0.3, 0.2, 0.6, 0},
       }) {
    EXPECT_EQ(orientation(row.ax, row.ay, row.bx, row.by, row.cx, row.cy), row.side) << row.cx << " " << row.cy;
    EXPECT_EQ(orientation(row.bx, row.by, row.ax, row.ay, row.cx, row.cy), -row.side) << row.cx << " " << row.cy;
  }
}

TEST(Topology, RingsNestedDeepAndManyArcsAtOneNode) {
  // A ring in a ring in a ring; each is a hole of the one around it.
  std::string lines;
  for (int i = 0; i < 20; ++i) lines += box(i, i, 100 - 2 * i) + ";";
  VEXTopology nested;
  addLines(nested, lines);
  VEXTopologyResult result;
  ASSERT_EQ(nested.buildPolygons(result), nullptr);
  ASSERT_EQ(result.polygons.size(), 20U);
  for (int i = 0; i < 20; ++i) {
    const double size = 100 - 2 * i;
    EXPECT_EQ(areaOf(result.polygons[static_cast<std::size_t>(i)].line),
              i < 19 ? size * size - (size - 2) * (size - 2) : size * size);
  }
  // A wheel: spokes and rim.
  constexpr int kSpokes = 20000;
  VEXTopology wheel;
  std::vector<VEXPoint> rim;
  for (int i = 0; i < kSpokes; ++i) {
    const double angle = 6.283185307179586 * i / kSpokes;
    rim.push_back({1000 * std::cos(angle), 1000 * std::sin(angle), kNoZ});
  }
  for (int i = 0; i < kSpokes; ++i) {
    const std::size_t at = static_cast<std::size_t>(i) * 7919 % kSpokes;  // not in the order of their angles
    const VEXPoint& a = rim[at];
    const VEXPoint& b = rim[(at + 1) % kSpokes];
    const double spokeX[] = {a.x, 0.0};
    const double spokeY[] = {a.y, 0.0};
    const double rimX[] = {a.x, b.x};
    const double rimY[] = {a.y, b.y};
    ASSERT_EQ(wheel.addLine(spokeX, spokeY, {}), nullptr);
    ASSERT_EQ(wheel.addLine(rimX, rimY, {}), nullptr);
  }
  ASSERT_EQ(wheel.buildPolygons(result), nullptr);
  EXPECT_EQ(result.polygons.size(), static_cast<std::size_t>(kSpokes));
  EXPECT_TRUE(result.faults.empty());
  double total = 0.0;
  for (const VEXTopologyPolygon& polygon : result.polygons) total += areaOf(polygon.line);
  EXPECT_NEAR(total, areaOf(result.outside.at(0).rings.at(0)), 1e-6);
}

TEST(Topology, LinesThatCrossAreReportedAndTheRestIsFormed) {
  struct Row {
    const char* lines;
    const char* expected;
  };
  for (const Row& row : {
           Row{"0 0, 10 10, 10 0, 0 10, 0 0", " out: fault 328005 at 10,0 fault 328005 at 10,0"},  // a bow tie
           // a fan of triangles, one of them folded over
           Row{"0 0, 4 0; 4 0, 2 4; 2 4, 0 0; 4 0, 8 0; 8 0, 6 4; 6 4, 4 0; 8 0, 12 4, 12 0, 8 4, 8 0",
               "8 8 out: fault 328005 at 12,0 fault 328005 at 12,0"},
           // the four corners of a square and both diagonals, not noded
           Row{"0 0, 4 0; 4 0, 4 4; 4 4, 0 4; 0 4, 0 0; 0 0, 4 4; 4 0, 0 4", "out: fault"},
       }) {
    const std::string result = formed(row.lines);
    if (std::string(row.expected).substr(0, 3) == "out") {
      EXPECT_NE(result.find("fault 328005"), std::string::npos) << row.lines << ": " << result;
    } else {
      EXPECT_EQ(result, row.expected) << row.lines;
    }
  }
  VEXTopology topology;
  addLines(topology, "0 0, 10 10; 10 10, 10 0, 0 10, 0 0");
  VEXTopologyResult result;
  ASSERT_EQ(topology.buildPolygons(result), nullptr);
  ASSERT_FALSE(result.faults.empty());
  EXPECT_EQ(result.faults[0].arcs, (std::vector<std::int32_t>{1, 2}));
  EXPECT_EQ(result.faults[0].status()->severity(), kSeverityRejected);
}

}  // namespace
