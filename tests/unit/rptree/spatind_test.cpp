// The index over lines against asking every line, with the grid of cells and without.
#include "vex/rptree/spatind.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/unit/support.h"

namespace {

constexpr unsigned kSeed = 4711;

// A star-shaped polygon with a wavy rim and, as a donut, a hole in its middle.
VEXLine wavyPolygon(std::size_t numCoords, bool withHole) {
  std::vector<double> x, y;
  const auto ring = [&](double radius, double wave) {
    for (std::size_t i = 0; i < numCoords; ++i) {
      const double turn = i + 1 == numCoords ? 0.0 : 6.283185307179586 * static_cast<double>(i) / (numCoords - 1.0);
      const double r = radius + wave * std::sin(turn * 7.0);
      x.push_back(500.0 + r * std::cos(turn));
      y.push_back(500.0 + r * std::sin(turn));
    }
  };
  ring(350.0, 90.0);
  if (withHole) ring(100.0, 30.0);
  return VEXLine(std::move(x), std::move(y), withHole ? VEX_GEOM_DONUT : VEX_GEOM_POLYGON);
}

TEST(SpatialIndex, AnswersAsAskingEveryLineDoes) {
  std::printf("seed %u\n", kSeed);
  std::mt19937 random(kSeed);
  std::uniform_real_distribution<double> place(0.0, 1000.0), size(0.5, 20.0);
  VEXSpatialIndex index;
  for (int i = 0; i < 4000; ++i) {
    const double x = place(random), y = place(random);
    if (i % 3 == 0) {
      EXPECT_EQ(index.add(VEXLine::fromBox({x, y, kNoZ, x + size(random), y + size(random), kNoZ})), i);
    } else if (i % 50 == 1) {  // a set of points
      EXPECT_EQ(index.add(VEXLine({x, y, 500}, {y, x, 300}, VEX_GEOM_POINT)), i);
    } else {
      EXPECT_EQ(index.add(VEXLine::fromPoint({x, y, kNoZ})), i);
    }
  }
  index.add(VEXLine({}, {}, VEX_GEOM_POLYGON));
  index.add(VEXLine::fromPoint({kNoZ, 3.0, kNoZ}));
  for (int round = 0; round < 2; ++round) {
    for (const std::size_t numCoords : {40u, 5000u}) {
      for (const bool withHole : {false, true}) {
        const VEXLine polygon = wavyPolygon(numCoords, withHole);
        RpHits found, expected;
        ASSERT_EQ(index.searchContained(polygon, found), nullptr);
        for (std::uint32_t number = 0; number < 4000; ++number) {
          if (round == 1 && number % 10 == 0) continue;
          const VEXLine& line = index.line(number);
          bool isContained = true;
          if (line.geomType() == VEX_GEOM_POINT) {
            for (std::size_t at = 0; at < line.numCoords() && isContained; ++at) {
              ASSERT_EQ(polygon.containsPoint(line.xs()[at], line.ys()[at], isContained), nullptr);
            }
          } else {
            ASSERT_EQ(polygon.containsLine(line, isContained), nullptr);
          }
          if (isContained) expected.push_back(number);
        }
        EXPECT_EQ(found, expected) << numCoords << " coordinates, round " << round;
        EXPECT_GT(found.size(), 500u);
      }
    }
    if (round == 0) {
      for (std::uint32_t number = 0; number < 4000; number += 10) EXPECT_EQ(index.remove(number), nullptr);
    }
  }
  EXPECT_EQ(index.verify(3602), nullptr);
  EXPECT_EQ(index.verify(4002)->messageNumber(), 322101u);
  EXPECT_EQ(index.remove(10)->messageNumber(), 322102u);
  EXPECT_EQ(index.remove(99999)->messageNumber(), 322102u);
}

TEST(SpatialIndex, WidensBoxes) {
  VEXSpatialIndex index;
  index.add(VEXLine::fromBox({0, 0, kNoZ, 10, 10, kNoZ}));
  index.add(VEXLine({20, 20}, {0, 10}, VEX_GEOM_LINE));  // no width: half a unit on either side
  const auto at = [&](double x, double y) {
    RpHits found;
    EXPECT_EQ(index.search({x, y, kNoZ, x, y, kNoZ}, found), nullptr);
    return found;
  };
  EXPECT_EQ(at(10.004, -0.004), RpHits{0});
  EXPECT_EQ(at(10.006, 5), RpHits{});
  EXPECT_EQ(at(19.5, 10.005), RpHits{1});
  EXPECT_EQ(at(19.4, 5), RpHits{});
}

}  // namespace
