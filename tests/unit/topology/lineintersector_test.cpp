// Noding: random cases against a plain comparison of all pairs, the cases with a name, and input that is out to break
// it.
#include <algorithm>
#include <cmath>
#include <random>

#include "tests/unit/support.h"
#include "tests/unit/topology/nodetest.h"
#include "vex/topology/fintxmap.h"
#include "vex/topology/intxmap.h"

namespace {

std::vector<Points> randomLines(std::mt19937& random, int numLines, int maxPoints, int grid, double scale,
                                double offset) {
  std::vector<Points> lines(static_cast<std::size_t>(numLines));
  for (Points& line : lines) {
    const int count = 2 + static_cast<int>(random() % static_cast<unsigned>(maxPoints - 1));
    for (int i = 0; i < count; ++i) {
      const double x = grid > 0 ? random() % static_cast<unsigned>(grid + 1) : random() / 4294967296.0;
      const double y = grid > 0 ? random() % static_cast<unsigned>(grid + 1) : random() / 4294967296.0;
      line.emplace_back(offset + scale * x, offset + scale * y);
    }
    if (random() % 4 == 0) line.push_back(line.front());
    if (random() % 8 == 0) line.insert(line.begin() + 1, line.front());
  }
  if (numLines > 1 && random() % 3 == 0) {
    lines[1] = lines[0];
    if (random() % 2 == 0) std::reverse(lines[1].begin(), lines[1].end());
  }
  return lines;
}

constexpr unsigned kSeed = 20260117;

}  // namespace

TEST(LineIntersector, AgreesWithAllPairs) {
  VEXIntersectorParms small;  // makes grids of grids of so few lines
  small.grid = {3, 2, 5, 2};
  small.subGrid = {2, 3, 5, 2};
  small.subGridBruteForce = 4;
  for (unsigned round = 0; round < 6000; ++round) {
    std::mt19937 random(kSeed + round);
    const int grid = round % 3 == 2 ? 0 : 2 + static_cast<int>(random() % 6);
    const std::vector<Points> lines = randomLines(random, 1 + static_cast<int>(random() % 6), 7, grid, 1.0, 0.0);
    const std::vector<Piece> pieces = node(lines, 0, round % 2 == 0 ? VEXIntersectorParms{} : small);
    SCOPED_TRACE("seed " + std::to_string(kSeed + round) + "\n" + describeLines(lines) + textOf(pieces));
    ASSERT_NO_FATAL_FAILURE(compareWithPlain(lines, pieces));
    ASSERT_NO_FATAL_FAILURE(checkNoded(pieces));
  }
}

// Crossings beside the borders of squares that are divided again, where the lines are entered along their course.
TEST(LineIntersector, FindsEveryCrossingOfManySmallLines) {
  constexpr int kCount = 700;
  for (std::uint32_t side = 2; side <= 7; ++side) {
    for (double step : {2.25, 3.0}) {
      std::vector<Points> lines;
      for (int i = 0; i < kCount; ++i) {
        const double x = step * i;
        lines.push_back({{x, 0}, {x + 2, 0}, {x, 1}, {x + 2, 1}, {x, 0}});
      }
      VEXIntersectorParms parms;
      parms.grid = {side, side, 12, 8};
      const std::vector<Piece> pieces = node(lines, 0, parms);
      EXPECT_EQ(2U * kCount, pieces.size()) << side << ' ' << step;  // each is crossed once, by itself
    }
  }
}

// Where coordinates are large, small or close, points are drawn together; what comes out is noded all the same, and
// noding it again changes nothing.
TEST(LineIntersector, IsNodedAtEveryScale) {
  struct Row {
    double scale, offset;
    int grid;
  };
  for (const Row& row :
       {Row{1e-6, 0, 0}, Row{1e-6, 0, 5}, Row{3e6, 1e7, 0}, Row{100, 1e7, 0}, Row{5, 1e7, 7}, Row{1, 5e6, 0},
        Row{1e-3, 4.5e6, 0}, Row{1e-7, 1e7, 9}, Row{1e-6, 180, 0}, Row{1e60, 0, 0}, Row{1e-9, 1, 0}}) {
    for (unsigned round = 0; round < 150; ++round) {
      std::mt19937 random(kSeed + round);
      const std::vector<Points> lines =
          randomLines(random, 2 + static_cast<int>(random() % 9), 8, row.grid, row.scale, row.offset);
      const std::vector<Piece> pieces = node(lines);
      SCOPED_TRACE("seed " + std::to_string(kSeed + round) + " scale " + std::to_string(row.scale) + " offset " +
                   std::to_string(row.offset) + "\n" + describeLines(lines));
      ASSERT_NO_FATAL_FAILURE(checkNoded(pieces));
      ASSERT_EQ(node(lines), pieces);
      std::vector<Points> cut;
      for (const Piece& piece : pieces) cut.push_back(piece.points);
      std::vector<Piece> expected = pieces;
      for (std::size_t i = 0; i < expected.size(); ++i) expected[i].ids = {static_cast<std::int32_t>(i + 1)};
      const std::vector<Piece> again = node(cut);
      ASSERT_EQ(textOf(again), textOf(expected));
      ASSERT_EQ(again, expected);
    }
  }
}

TEST(LineIntersector, CutsTheCasesWithAName) {
  struct Row {
    const char* name;
    std::vector<Points> lines;
    const char* pieces;
  };
  const Row rows[] = {
      {"a crossing", {{{0, 0}, {2, 2}}, {{0, 2}, {2, 0}}}, "1: 0 0 1 1; 1: 1 1 2 2; 2: 0 2 1 1; 2: 1 1 2 0; "},
      {"a shared end", {{{0, 0}, {1, 1}}, {{1, 1}, {2, 0}}}, "1: 0 0 1 1; 2: 1 1 2 0; "},
      {"a touch", {{{0, 0}, {4, 0}}, {{2, 0}, {2, 3}}}, "1: 0 0 2 0; 1: 2 0 4 0; 2: 2 0 2 3; "},
      {"one vertical line", {{{0, 0}, {0, 5}}}, "1: 0 0 0 5; "},
      {"nothing meets", {{{0, 0}, {1, 0}, {1, 0}, {2, 5}}, {{9, 9}, {8, 9}}}, "1: 0 0 1 0 1 0 2 5; 2: 9 9 8 9; "},
      {"a ring alone", {{{0, 0}, {2, 0}, {2, 2}, {0, 0}}}, "1: 0 0 2 0 2 2 0 0; "},
      {"a ring that is cut wraps",
       {{{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}}, {{-1, 2}, {5, 2}}},
       "1: 4 2 4 4 0 4 0 2; 1: 0 2 0 0 4 0 4 2; 2: -1 2 0 2; 2: 0 2 4 2; 2: 4 2 5 2; "},
      {"a ring touched in one point",
       {{{0, 0}, {4, 0}, {4, 4}, {0, 0}}, {{4, 2}, {6, 2}}},
       "1: 4 2 4 4 0 0 4 0 4 2; 2: 4 2 6 2; "},
      {"a ring touched in its start",
       {{{0, 0}, {4, 0}, {4, 4}, {0, 0}}, {{0, 0}, {-1, -2}}},
       "1: 0 0 4 0 4 4 0 0; 2: 0 0 -1 -2; "},
      {"identical lines", {{{0, 0}, {1, 0}, {2, 3}}, {{0, 0}, {1, 0}, {2, 3}}}, "1,2: 0 0 1 0 2 3; "},
      {"a reversed twin", {{{0, 0}, {1, 0}, {2, 3}}, {{2, 3}, {1, 0}, {0, 0}}}, "1,-2: 0 0 1 0 2 3; "},
      {"three of one course",
       {{{0, 0}, {1, 0}, {2, 3}}, {{2, 3}, {1, 0}, {0, 0}}, {{0, 0}, {1, 0}, {2, 3}}},
       "1,-2,3: 0 0 1 0 2 3; "},
      {"others that change along one course",
       {{{0, 0}, {1, 0}, {2, 0}}, {{1, 0}, {0, 0}}, {{1, 0}, {2, 0}}, {{2, 0}, {1, 0}, {0, 0}}},
       "1,-2,-4: 0 0 1 0; 1,3,-4: 1 0 2 0; "},
      {"a partial overlap", {{{0, 0}, {4, 0}}, {{6, 0}, {2, 0}}}, "1: 0 0 2 0; 1,-2: 2 0 4 0; 2: 6 0 4 0; "},
      {"one inside the other", {{{0, 0}, {6, 0}}, {{2, 0}, {3, 0}}}, "1: 0 0 2 0; 1,2: 2 0 3 0; 1: 3 0 6 0; "},
      {"an overlap with fewer vertices",
       {{{0, 0}, {1, 0}, {2, 0}, {2, 1}}, {{0, 0}, {2, 0}, {2, 1}}},
       "1,2: 0 0 1 0 2 0 2 1; "},
      {"rings side by side",
       {{{0, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 0}}, {{2, 0}, {4, 0}, {4, 2}, {2, 2}, {2, 0}}},
       "1,-2: 2 0 2 2; 1: 2 2 0 2 0 0 2 0; 2: 2 0 4 0 4 2 2 2; "},
      {"equal rings from other starts",
       {{{0, 0}, {2, 0}, {2, 2}, {0, 0}}, {{2, 0}, {0, 0}, {2, 2}, {2, 0}}},
       "1,-2: 0 0 2 0 2 2 0 0; "},
      {"a line that crosses itself",
       {{{0, 0}, {4, 4}, {4, 0}, {0, 4}}},
       "1: 0 0 2 2; 1: 2 2 4 4 4 0 2 2; 1: 2 2 0 4; "},
      {"a figure eight in a vertex",
       {{{0, 0}, {2, 2}, {4, 0}, {4, 4}, {2, 2}, {0, 4}, {0, 0}}},
       "1: 2 2 4 0 4 4 2 2; 1: 2 2 0 4 0 0 2 2; "},
      {"a spike", {{{0, 0}, {4, 0}, {1, 0}, {1, 3}}}, "1: 0 0 1 0; 1,-1: 1 0 4 0; 1: 1 0 1 3; "},
      {"there and back", {{{0, 0}, {4, 0}, {0, 0}}}, "1,-1: 0 0 4 0; "},
      {"once round and round again",
       {{{0, 0}, {2, 0}, {2, 2}, {0, 0}, {2, 0}, {2, 2}, {0, 0}}},
       "1: 0 0 2 0 2 2 0 0; "},
      {"points and nothing", {{{1, 1}}, {}, {{0, 0}, {2, 2}}, {{5, 5}, {5, 5}}}, "1: 1 1; 3: 0 0 2 2; 4: 5 5 5 5; "},
      {"repeated coordinates in a meeting",
       {{{0, 0}, {1, 0}, {1, 0}, {2, 0}}, {{1, 0}, {1, 2}}},
       "1: 0 0 1 0; 1: 1 0 2 0; 2: 1 0 1 2; "},
  };
  for (const Row& row : rows) EXPECT_EQ(textOf(node(row.lines)), row.pieces) << row.name;
}

TEST(LineIntersector, VertexMovesToACrossingThatIsEqualInSinglePrecision) {
  // Near 2^23 a single has steps of 1: the crossing at ...8.25 is the vertex at ...8 there, and its neighbour keeps up.
  const double x = 8388708.0, y = 8388708.0;
  const std::vector<Piece> pieces =
      node({{{x - 50, y}, {x, y}, {x + 50, y}}, {{x + 0.25, y - 9}, {x + 0.25, y + 9}}, {{x, y}, {x - 20, y - 20}}});
  ASSERT_EQ(pieces.size(), 5U);
  for (const Piece& piece : pieces) {
    const auto at = std::pair(x + 0.25, y);
    EXPECT_TRUE(piece.points.front() == at || piece.points.back() == at) << textOf(pieces);
  }
}

TEST(LineIntersector, KeepsAVertexLimit) {
  Points line;
  for (int i = 0; i < 11; ++i) line.emplace_back(i, i % 2);
  for (std::size_t limit : {1U, 2U, 3U, 4U, 5U, 10U, 11U, 12U}) {
    const std::vector<Piece> pieces = node({line, {{20, 20}, {21, 21}}}, limit);
    Points joined = {line.front()};
    for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
      EXPECT_GE(pieces[i].points.size(), 2U);
      EXPECT_LE(pieces[i].points.size(), std::max<std::size_t>(limit, 2));
      EXPECT_EQ(pieces[i].points.front(), joined.back());
      joined.insert(joined.end(), pieces[i].points.begin() + 1, pieces[i].points.end());
    }
    EXPECT_EQ(joined, line) << limit;
  }
}

TEST(LineIntersector, InterpolatesHeights) {
  VEXLineIntersector intersector;
  ASSERT_EQ(intersector.addLine(lineOf({{0, 5}, {10, 5}}), 0), nullptr);
  ASSERT_EQ(intersector.addLine(VEXLine({4, 4}, {0, 20}, {100, 200}, VEX_GEOM_LINE), 0), nullptr);
  ASSERT_EQ(intersector.computeIntersections(), nullptr);
  VEXChainPiece piece;
  std::string text;
  while (intersector.nextPiece(piece)) {
    const VEXPoint last = piece.last();
    text += std::to_string(piece.chainIds[0]) + (piece.zs.empty() ? " flat" : " " + std::to_string(last.z)) + ";";
    EXPECT_EQ(piece.toLine().hasZ(), !piece.zs.empty());
  }
  EXPECT_EQ(text, "1 flat;1 flat;2 125.000000;2 200.000000;");
}

TEST(LineIntersector, NumbersPartsByTheirInput) {
  VEXLineIntersector intersector;
  const VEXLine line = lineOf({{9, 9}, {8, 9}});
  const VEXLine donut = lineOf({{0, 0}, {6, 0}, {6, 6}, {0, 0}, {2, 1}, {4, 2}, {4, 1}, {2, 1}}, VEX_GEOM_DONUT);
  ASSERT_EQ(intersector.addLine(line, 1), nullptr);
  ASSERT_EQ(intersector.addLine(donut, 1), nullptr);
  std::vector<VEXLine> both;
  both.push_back(line.clone());
  both.push_back(donut.clone());
  ASSERT_EQ(intersector.addLine(VEXLine::aggregateOf(both), 1), nullptr);
  ASSERT_EQ(intersector.addLine(donut, 0), nullptr);
  std::vector<std::int32_t> inputs;
  for (std::size_t i = 1; i <= intersector.numChains(); ++i)
    inputs.push_back(intersector.inputOf(static_cast<std::int32_t>(i)));
  EXPECT_EQ(inputs, (std::vector<std::int32_t>{1, 2, -2, 3, 3, -3, 4}));
  EXPECT_EQ(intersector.numInputs(), 4U);
}

TEST(LineIntersector, RefusesWhatHasNoPlace) {
  VEXLineIntersector intersector;
  for (double bad : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1e300}) {
    VEXStatus status = intersector.addLine(lineOf({{0, 0}, {bad, 1}}), 0);
    ASSERT_NE(status, nullptr);
    EXPECT_EQ(status->messageNumber(), 329001U);
    EXPECT_EQ(status->severity(), kSeverityRejected);
    status = intersector.addLine(lineOf({{0, bad}, {1, 1}}), 1);
    EXPECT_NE(status, nullptr);
  }
  EXPECT_EQ(intersector.numChains(), 0U);
  EXPECT_EQ(intersector.computeIntersections(), nullptr);
  VEXStatus late = intersector.addLine(lineOf({{0, 0}, {1, 1}}), 0);
  ASSERT_NE(late, nullptr);
  EXPECT_EQ(late->messageNumber(), 329002U);
  VEXStatus twice = intersector.computeIntersections();
  EXPECT_NE(twice, nullptr);
  VEXChainPiece piece;
  EXPECT_FALSE(intersector.nextPiece(piece));
}

TEST(LineIntersector, MeetsInOnePointThousandsOfTimes) {
  for (double centre : {0.0, 0.3, 1e6 + 0.1}) {
    std::vector<Points> lines;
    for (int i = 0; i < 1500; ++i) {
      const double angle = 3.14159265358979 * i / 1500;
      const double dx = 70 * std::cos(angle), dy = 70 * std::sin(angle);
      lines.push_back({{centre - dx, centre - dy}, {centre + dx, centre + dy}});
    }
    const std::vector<Piece> pieces = node(lines);
    ASSERT_EQ(pieces.size(), 3000U) << centre;
    for (const Piece& piece : pieces) ASSERT_EQ(piece.points.size(), 2U);
    for (std::size_t i = 0; i < pieces.size(); i += 2) ASSERT_EQ(pieces[i].points.back(), pieces[0].points.back());
  }
}

TEST(LineIntersector, LivesWithExtremes) {
  // A line from one end of the world to the other beside details a thousandth wide.
  std::vector<Points> lines = {{{-1e15, 3e14}, {1e15, -2e14}}};
  std::mt19937 random(kSeed);
  for (int i = 0; i < 300; ++i) {
    const double x = random() / 4294967296.0, y = random() / 4294967296.0;
    lines.push_back({{x, y}, {x + 0.001, y + 0.0005}, {x + 0.1 * (random() / 4294967296.0), y - 0.002}});
  }
  checkNoded(node(lines));
  // A long line of many turns, in itself and across another.
  Points walk = {{0, 0}};
  double heading = 0;
  while (walk.size() < 20000) {
    heading += random() / 4294967296.0 - 0.5;
    walk.emplace_back(walk.back().first + std::cos(heading), walk.back().second + std::sin(heading));
  }
  Points zigzag;
  for (int i = 0; i < 2000; ++i) zigzag.emplace_back(i * 0.1 - 100, i % 2 == 0 ? -100 : 100);
  EXPECT_GT(node({walk, zigzag}).size(), 4000U);
  // Hundreds of equal lines, and of lines on one line.
  std::vector<Points> equal(500, {{0, 0}, {3, 1}, {5, 5}});
  EXPECT_EQ(node(equal).size(), 1U);
  std::vector<Points> stacked;
  for (int i = 0; i < 300; ++i) stacked.push_back({{i, i}, {i + 150, i + 150}});
  EXPECT_EQ(node(stacked).size(), 449U);
}

TEST(LineIntersector, TellsProgressAndMeetings) {
  VEXLineIntersector intersector;
  std::vector<VEXLine> lines;
  for (int i = 0; i < 40; ++i) {
    lines.push_back(lineOf({{i + 0.5, -1}, {i + 0.5, 41}}));
    lines.push_back(lineOf({{-1, i + 0.5}, {41, i + 0.5}}));
  }
  ASSERT_EQ(intersector.addLines(lines, 0), nullptr);
  std::vector<double> told;
  ASSERT_EQ(intersector.computeIntersections([&](double percent) { told.push_back(percent); }), nullptr);
  ASSERT_FALSE(told.empty());
  EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
  EXPECT_EQ(told.back(), 100.0);
  EXPECT_EQ(intersector.numMeetings(), 1600U);
  std::size_t numEntries = 0, numSquares = 0;
  intersector.visitGrid([&](const VEXGridSquare& square) {
    ++numSquares;
    numEntries += square.numEntries;
    EXPECT_GT(square.extent.maxX, square.extent.minX);
  });
  EXPECT_GT(numSquares, 100U);
  EXPECT_GT(numEntries, 1600U);
}

TEST(IntersectionMap, CountsCrossingsOfTwoLines) {
  VEXIntersectionMap map(lineOf({{0, 0}, {4, 0}, {4, 4}}), lineOf({{2, -1}, {2, 2}, {6, 2}}));
  EXPECT_EQ(map.takeStatus(), nullptr);
  EXPECT_EQ(map.numCrossings(), 2U);
  VEXChainPiece piece;
  int numOfSecond = 0, numPieces = 0;
  for (; map.nextPiece(piece); ++numPieces) numOfSecond += piece.chainIds[0] == 2;
  EXPECT_EQ(numPieces, 6);
  EXPECT_EQ(numOfSecond, 3);
}

TEST(IntersectionMap, PartsCutFeaturesFromUntouchedOnes) {
  VEXFeatureIntersectionMap map;
  for (const char* text : {"a {n=1} line 0 0, 4 0", "b line 9 9, 10 10", "c line 2 -1, 2 1", "d line 9 9, 10 10",
                           "e {n=5} line 20 20, 21 21, 21 21, 22 20"}) {
    VEXFeaturePtr feature = makeFeature(text);
    ASSERT_EQ(map.add(feature), nullptr);
    ASSERT_EQ(feature, nullptr);
  }
  VEXFeaturePtr bad = makeFeature("f line 0 0, 1 1");
  bad->mutableXs()[0] = std::nan("");
  VEXStatus refused = map.add(bad);
  ASSERT_NE(refused, nullptr);
  EXPECT_NE(bad, nullptr);
  ASSERT_EQ(map.compute(), nullptr);
  VEXFeatureVector untouched;
  map.takeUntouched(untouched);
  ASSERT_EQ(untouched.size(), 1U);
  EXPECT_EQ(describe(*untouched[0]), "e {n=5} line 20 20, 21 21, 21 21, 22 20");
  std::string pieces;
  VEXChainPiece piece;
  while (map.nextCut(piece))
    for (std::int32_t id : piece.chainIds)
      pieces += map.feature(map.featureOf(id))->featureType() + std::to_string(id) + " ";
  EXPECT_EQ(pieces, "a1 a1 b2 d4 c3 c3 ");
}
