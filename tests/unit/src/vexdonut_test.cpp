// Donuts out of rings: rows of rings with what becomes of them, and random rings against asking every pair.
#include "vex/src/vexdonut.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/unit/support.h"
#include "vex/src/ringband.h"

namespace {

VEXLine square(double x, double y, double side) {
  return VEXLine::fromBox({x, y, kNoZ, x + side, y + side, kNoZ});
}

std::vector<VEXLine> squares(std::initializer_list<std::array<double, 3>> rows) {
  std::vector<VEXLine> lines;
  for (const auto& row : rows) lines.push_back(square(row[0], row[1], row[2]));
  return lines;
}

// "donut 200/3" for a donut of area 200 with three rings, a word a line.
std::string told(const std::vector<VEXLine>& lines) {
  std::string text;
  for (const VEXLine& line : lines) {
    double area = 0.0;
    EXPECT_EQ(line.area(area), nullptr);
    std::vector<VEXLineRange> rings;
    line.rings(rings);
    const char* kind = line.geomType() == VEX_GEOM_DONUT   ? "donut"
                       : line.geomType() == VEX_GEOM_POINT ? "point"
                                                           : "polygon";
    if (!text.empty()) text += ", ";
    text += kind;
    if (line.geomType() != VEX_GEOM_POINT) {
      text += " " + std::to_string(static_cast<long>(std::lround(area))) + "/" + std::to_string(rings.size());
    }
  }
  return text;
}

std::string made(std::vector<VEXLine> lines, bool keepAll = false) {
  EXPECT_EQ(makeDonuts(lines, keepAll), nullptr);
  return told(lines);
}

TEST(Donuts, HolesAndIslands) {
  EXPECT_EQ(made(squares({{0, 0, 10}})), "polygon 100/1");
  EXPECT_EQ(made(squares({{0, 0, 10}, {2, 2, 6}, {4, 4, 2}})), "polygon 4/1, donut 64/2");
  EXPECT_EQ(made(squares({{0, 0, 10}, {2, 2, 6}, {4, 4, 2}}), true), "polygon 4/1, donut 32/2, donut 64/2");
  EXPECT_EQ(made(squares({{0, 0, 10}, {20, 0, 10}})), "polygon 100/1, polygon 100/1");
  EXPECT_EQ(made(squares({{0, 0, 10}, {10, 0, 5}})), "polygon 25/1, polygon 100/1");  // beside it, an edge in common
  EXPECT_EQ(made(squares({{0, 0, 10}, {1, 1, 2}, {6, 6, 2}})), "donut 92/3");
  // Holes with an edge in common become one, those that meet in a point do not.
  EXPECT_EQ(made(squares({{0, 0, 10}, {1, 1, 2}, {3, 1, 2}})), "donut 92/2");
  EXPECT_EQ(made(squares({{0, 0, 10}, {1, 1, 2}, {3, 3, 2}})), "donut 92/3");
  // Eight holes around a piece of the shell keep it.
  EXPECT_EQ(made(squares(
                {{0, 0, 10}, {2, 2, 2}, {4, 2, 2}, {6, 2, 2}, {2, 4, 2}, {6, 4, 2}, {2, 6, 2}, {4, 6, 2}, {6, 6, 2}})),
            "donut 68/9");
  std::vector<VEXLine> withPoint = squares({{0, 0, 10}, {2, 2, 6}});
  withPoint.push_back(VEXLine::fromPoint({1, 1, kNoZ}));
  EXPECT_EQ(made(std::move(withPoint)), "point, donut 64/2");
  // What has no area or no numbers is no trouble.
  std::vector<VEXLine> odd = squares({{0, 0, 10}, {2, 2, 6}});
  odd.push_back(VEXLine({kNoZ, 1, 2, kNoZ}, {1, 1, kNoZ, 1}, VEX_GEOM_POLYGON));
  odd.push_back(VEXLine({50, 50, 50}, {50, 50, 50}, VEX_GEOM_POLYGON));
  odd.push_back(VEXLine({}, {}, VEX_GEOM_POLYGON));
  EXPECT_EQ(odd.size(), 5u);
  ASSERT_EQ(makeDonuts(odd, false), nullptr);
  EXPECT_EQ(odd.size(), 4u);
}

TEST(Donuts, MergedHolesOfAGrid) {
  // 144 cells of a shell, each a hole with four vertices: one hole comes of them, whatever way they run.
  std::vector<VEXLine> lines = squares({{-1, -1, 14}});
  for (int i = 0; i < 12; ++i) {
    for (int j = 0; j < 12; ++j) {
      VEXLine cell = square(i, j, 1);
      if ((i + j) % 3 == 0) cell.reverse(0, cell.numCoords() - 1);
      lines.push_back(std::move(cell));
    }
  }
  EXPECT_EQ(made(std::move(lines)), "donut 52/2");
}

// Holes that share a part of an edge, in all ways; what overlaps or leaves a piece of the shell between stays apart.
TEST(Donuts, HolesThatShareAPartOfAnEdge) {
  EXPECT_EQ(made(squares({{0, 0, 10}, {1, 1, 2}, {3, 2, 2}})), "donut 92/2");
  EXPECT_EQ(made(squares({{0, 0, 10}, {1, 1, 4}, {5, 2, 1}})), "donut 83/2");
  EXPECT_EQ(made(squares({{0, 0, 10}, {1, 1, 4}, {5, 2, 1}, {5, 3, 1}, {5, 5, 2}})), "donut 78/3");
  EXPECT_EQ(made(squares({{0, 0, 10}, {1, 1, 4}, {5, 1, 1}, {5, 5, 1}})), "donut 82/3");  // one touches in a point
  // four around a gap, one with an island that the holes hold
  EXPECT_EQ(made(squares({{0, 0, 10}, {1, 1, 3}, {4, 1, 3}, {1, 5, 3}, {4, 4, 4}, {1, 4, 1}})), "donut 56/6");
  EXPECT_EQ(made(squares({{0, 0, 10}, {1, 1, 4}, {5, 2, 4}, {6, 3, 1}})), "polygon 1/1, donut 68/2");
  // Courses of bricks, every other one shifted by half a brick: more holes than are looked at without an index.
  std::vector<VEXLine> bricks = squares({{-1, -1, 40}});
  std::vector<VEXLine> joints = squares({{-1, -1, 40}});
  for (int course = 0; course < 15; ++course) {
    for (int i = 0; i < 10; ++i) {
      const double x = 3.0 * i + (course % 2 == 0 ? 0.0 : 1.5);
      bricks.push_back(VEXLine::fromBox({x, 1.0 * course, kNoZ, x + 3.0, course + 1.0, kNoZ}));
      joints.push_back(VEXLine::fromBox({x, 2.0 * course, kNoZ, x + 3.0, 2.0 * course + 1.0, kNoZ}));
    }
  }
  EXPECT_EQ(made(std::move(bricks)), "donut 1150/2");
  EXPECT_EQ(made(std::move(joints)), "donut 1150/16");
}

TEST(Donuts, HeightsOfHoles) {
  std::vector<VEXLine> lines;
  lines.push_back(VEXLine({0, 9, 9, 0, 0}, {0, 0, 9, 9, 0}, {5, 5, 5, 5, 5}, VEX_GEOM_POLYGON));
  lines.push_back(square(2, 2, 2));
  ASSERT_EQ(makeDonuts(lines, false), nullptr);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].point(4).z, 5.0);
  EXPECT_EQ(lines[0].point(5).z, 0.0);
}

TEST(Donuts, SortMovesFeaturesToo) {
  EngineScope engine;
  std::vector<VEXLine> lines = squares({{0, 0, 10}, {0, 0, 2}});
  lines.push_back(VEXLine::fromPoint({1, 1, kNoZ}));
  std::vector<VEXFeaturePtr> features;
  for (const char* text : {"large", "small", "point"}) features.push_back(makeFeature(text));
  ASSERT_EQ(sortRings(lines, &features), nullptr);
  EXPECT_EQ(features[0]->featureType() + features[1]->featureType() + features[2]->featureType(), "pointsmalllarge");
}

TEST(Donuts, ParentsAsEveryPairTells) {
  constexpr unsigned kSeed = 99;
  std::printf("seed %u\n", kSeed);
  std::mt19937 random(kSeed);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int round = 0; round < 20; ++round) {
    // Rings in rings: each box is filled with a few smaller ones.
    std::vector<VEXLine> lines;
    std::vector<std::array<double, 3>> boxes = {{0, 0, 1000}};
    for (std::size_t at = 0; at < boxes.size() && boxes.size() < 400; ++at) {
      const auto [x, y, side] = boxes[at];
      for (int quarter = 0; quarter < 4; ++quarter) {
        if (unit(random) < 0.3 && at > 0) continue;
        const double inner = side * (0.2 + 0.25 * unit(random));
        boxes.push_back({x + side * (0.02 + 0.5 * (quarter % 2)), y + side * (0.02 + 0.5 * (quarter / 2)), inner});
      }
    }
    const std::size_t numCoords = round % 2 == 0 ? 12 : 200;
    for (const auto& [x, y, side] : boxes) {
      std::vector<double> xs, ys;
      for (std::size_t i = 0; i < numCoords; ++i) {
        const double turn = i + 1 == numCoords ? 0.0 : 6.283185307179586 * static_cast<double>(i) / (numCoords - 1.0);
        xs.push_back(x + side / 2 + side / 2 * std::cos(turn));
        ys.push_back(y + side / 2 + side / 2 * std::sin(turn));
      }
      lines.emplace_back(std::move(xs), std::move(ys), VEX_GEOM_POLYGON);
    }
    std::shuffle(lines.begin(), lines.end(), random);
    ASSERT_EQ(sortRings(lines, nullptr), nullptr);
    std::vector<std::size_t> parents;
    ASSERT_EQ(findParents(lines, parents), nullptr);
    for (std::size_t at = 0; at < lines.size(); ++at) {
      std::size_t expected = kNoParent;
      VEXPoint inside;
      ASSERT_EQ(lines[at].insidePoint(true, inside), nullptr);
      for (std::size_t outer = lines.size() - 1; outer > at; --outer) {
        bool isHeld = false;
        ASSERT_EQ(lines[outer].containsPoint(inside.x, inside.y, isHeld), nullptr);
        if (isHeld) expected = outer;
      }
      ASSERT_EQ(parents[at], expected) << "round " << round << " ring " << at;
    }
  }
}

TEST(Donuts, DeepNestingAndEqualRings) {
  std::vector<VEXLine> nested, equal;
  for (int i = 0; i < 5000; ++i) {
    nested.push_back(square(i, i, 20000 - 2 * i));
    equal.push_back(square(0, 0, 10));
  }
  ASSERT_EQ(makeDonuts(nested, false), nullptr);
  EXPECT_EQ(nested.size(), 2500u);
  ASSERT_EQ(makeDonuts(equal, false), nullptr);
  EXPECT_EQ(equal.size(), 2500u);
}

TEST(RingBands, TellWhatTheRingTells) {
  std::mt19937 random(5);
  for (const std::size_t numCoords : {2u, 5u, 64u, 3000u}) {
    std::vector<double> x, y;
    for (std::size_t i = 0; i + 1 < numCoords; ++i) {
      x.push_back(static_cast<double>(random() % 50));
      y.push_back(static_cast<double>(random() % 50));
    }
    if (numCoords == 64) x[7] = kNoZ, y[9] = kNoZ, y[11] = INFINITY;
    x.push_back(x[0]);
    y.push_back(y[0]);
    const VEXRingBands bands(x, y);
    for (int i = 0; i < 3000; ++i) {
      const double px = static_cast<double>(random() % 104) / 2.0 - 1.0,
                   py = static_cast<double>(random() % 104) / 2.0 - 1.0;
      ASSERT_EQ(bands.holds(px, py), isPointInRing(x, y, px, py)) << px << " " << py;
    }
  }
}

}  // namespace
