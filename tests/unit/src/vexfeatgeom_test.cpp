// The geometry operations of features, and the conversion between the Danish grids.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "tests/unit/support.h"
#include "vex/inc/numtext.h"
#include "vex/src/dangrid.h"
#include "vex/src/vexline.h"

namespace {

std::uint32_t numberOf(const VEXStatus& status) {
  return status == nullptr ? 0 : status->messageNumber();
}

class FeatureGeometry : public ::testing::Test {
 protected:
  EngineScope engine_;
};

TEST_F(FeatureGeometry, SingleCoordinates) {
  VEXFeaturePtr feature = makeFeature("t line 1 2, 3 4");
  double x = 0, y = 0, z = 7;
  ASSERT_EQ(feature->coordAt(1, x, y, z), nullptr);
  EXPECT_EQ(x + y + z, 7);
  EXPECT_EQ(numberOf(feature->coordAt(2, x, y, z)), 395701U);
  for (double value : {x, y, z}) EXPECT_EQ(value, -999999.9999999);
}

TEST_F(FeatureGeometry, BoxesAndOrientation) {
  VEXFeaturePtr feature =
      makeFeature("t aggregate 1 1 0, 9 9 9, 8 8 0, 0 0 1, 0 5 2, 5 5 3, 0 0 1, 1 2 4, 2 3 4, 1 3 4, 1 2 4");
  VEXBox box;
  ASSERT_EQ(feature->boundingCube(box), nullptr);
  EXPECT_EQ(box.minX + box.maxX * 10 + box.minZ * 100 + box.maxZ * 1000, 9190);
  bool isCounterClockwise = true;
  ASSERT_EQ(feature->getOrientation(isCounterClockwise), nullptr);
  EXPECT_FALSE(isCounterClockwise);
  ASSERT_EQ(feature->setOrientation(true), nullptr);
  ASSERT_EQ(feature->getOrientation(isCounterClockwise), nullptr);
  EXPECT_TRUE(isCounterClockwise);
  EXPECT_EQ(numberOf(makeFeature("t line 0 0, 1 1")->getOrientation(isCounterClockwise)), 244010U);
  ASSERT_EQ(makeFeature("t")->boundingBox(box), nullptr);
  EXPECT_TRUE(box.isEmpty());
}

TEST_F(FeatureGeometry, Chop) {
  struct Row {
    const char* feature;
    std::size_t limit;
    const char* after;
    bool wasCut;
  };
  for (const Row& row : {
           Row{"t line 0 0, 1 0, 2 0", 3, "t line 0 0, 1 0, 2 0", false},
           Row{"t line 0 0, 1 0, 2 0, 3 0", 3, "t aggregate 2 3, 0 0, 1 0, 2 0, 2 2, 2 0, 3 0", true},
           Row{"t line 0 0, 1 0", 1, "t aggregate 1 1, 0 0, 1 1, 1 0", true},
           Row{"t line 0 0, 1 0, 1 0, 5 5, 6 6, 7 7", 2, "t aggregate 2 2, 5 5, 6 6, 2 2, 6 6, 7 7, 2 2, 0 0, 1 0",
               true},
           Row{"t aggregate 1 1, 9 9, 4 4, 0 0, 1 0, 1 1, 0 0", 4, "t aggregate 4 4, 0 0, 1 0, 1 1, 0 0, 1 1, 9 9",
               false},
           Row{"t aggregate 1 0, 1 0", 1, "t aggregate 1 0, 1 0", false},
       }) {
    VEXFeaturePtr feature = makeFeature(row.feature);
    bool wasCut = !row.wasCut;
    ASSERT_EQ(feature->chop(row.limit, wasCut), nullptr) << row.feature;
    EXPECT_EQ(describe(*feature), row.after);
    EXPECT_EQ(wasCut, row.wasCut) << row.feature;
  }
  bool wasCut = false;
  EXPECT_EQ(numberOf(makeFeature("t line 0 0")->chop(0, wasCut)), 878004U);
  VEXFeaturePtr lying = makeFeature("t aggregate 2 5, 0 0");
  EXPECT_EQ(numberOf(lying->chop(1, wasCut)), 244023U);
  EXPECT_EQ(describe(*lying), "t aggregate 2 5, 0 0");
}

TEST_F(FeatureGeometry, AggregatesAreBuiltAndSplit) {
  VEXFeatureVector parts;
  for (const char* text : {"a point 1 2", "b line 0 0 5, 1 1 6", "c aggregate 1 1, 3 3"})
    parts.push_back(makeFeature(text));
  VEXFeaturePtr whole = makeFeature("t {n=1} line 7 7");
  whole->setCoordSys("LL");
  ASSERT_EQ(whole->buildAggregate(parts), nullptr);
  EXPECT_TRUE(parts.empty());
  EXPECT_EQ(describe(*whole), "t {n=1} aggregate 1 1 0, 1 2 0, 2 2 0, 0 0 5, 1 1 6, 512 2 0, 1 1 0, 3 3 0");
  auto split = [&](bool recursive) {
    parts.clear();
    EXPECT_EQ(whole->splitAggregate(recursive, parts), nullptr);
    std::string text;
    for (const VEXFeaturePtr& part : parts) text += describe(*part) + part->coordSys() + "; ";
    return text;
  };
  EXPECT_EQ(split(false), "t {n=1} point 1 2 0LL; t {n=1} line 0 0 5, 1 1 6LL; t {n=1} aggregate 1 1 0, 3 3 0LL; ");
  EXPECT_EQ(split(true), "t {n=1} point 1 2 0LL; t {n=1} line 0 0 5, 1 1 6LL; t {n=1} point 3 3 0LL; ");
  parts.clear();
  EXPECT_EQ(numberOf(makeFeature("t line 0 0")->splitAggregate(false, parts)), 878001U);
  EXPECT_EQ(numberOf(makeFeature("t aggregate 1 1")->splitAggregate(false, parts)), 244023U);
  ASSERT_EQ(whole->buildAggregate(parts), nullptr);
  EXPECT_EQ(describe(*whole), "t {n=1} aggregate");
}

TEST_F(FeatureGeometry, Splines) {
  struct Row {
    const char* feature;
    std::size_t perSegment;
    bool extrapolate;
    const char* after;
    std::uint32_t message = 0;
  };
  for (const Row& row : {
           Row{"t line 0 0 1, 4 0 3", 2, true, "t line 0 0 1, 2 0 2, 4 0 3"},
           Row{"t line 0 0, 2 0, 2 0, 4 0, 6 0", 2, true, "t line 0 0, 1 0, 2 0, 3 0, 4 0, 5 0, 6 0"},
           Row{"t line -2 0, -1 0, 0 0, 2 0, 3 0, 4 0", 4, false, "t line 0 0, 0.5 0, 1 0, 1.5 0, 2 0"},
           Row{"t line 0 0, 1 1", 2, false, nullptr, 878005},
           Row{"t line 5 5, 5 5", 2, true, nullptr, 878005},
           Row{"t", 2, true, nullptr, 878005},
           Row{"t line 0 0, 1 1", 0, true, nullptr, 878006},
           Row{"t line 0 0, 1 1", ~std::size_t{0}, true, nullptr, 878006},
       }) {
    VEXFeaturePtr feature = makeFeature(row.feature);
    EXPECT_EQ(numberOf(feature->interpolateSpline(row.perSegment, row.extrapolate)), row.message) << row.feature;
    EXPECT_EQ(describe(*feature), row.after != nullptr ? row.after : row.feature);
  }
  // Through points of a circle the curve stays near it, everywhere.
  VEXFeature circle;
  for (int i = 0; i <= 16; ++i) circle.addCoord(std::cos(i * 0.392699), std::sin(i * 0.392699));
  ASSERT_EQ(circle.interpolateSpline(8, true), nullptr);
  EXPECT_EQ(circle.numCoords(), 16U * 8 + 1);
  for (std::size_t i = 0; i < circle.numCoords(); ++i)
    EXPECT_NEAR(std::hypot(circle.xs()[i], circle.ys()[i]), 1.0, 0.01) << i;
}

// Made-up polynomials: S34J moves by 6,000,000 north and turns its westing round; those of S45B are no inverses.
TEST(DanishGrids, ConvertByTheTablesOfAFile) {
  const std::string path = ::testing::TempDir() + "orv_danishgrids.txt";
  auto write = [&path](const std::string& text) { std::ofstream(path) << text; };
  const std::string j =
      "# made up\nS34J UTM32-ED50 N 1 0 0  6000000 1 0\nS34J UTM32-ED50 E 1 0 0  500000 0 -1  # degree 1: three\n"
      "UTM32-ED50 S34J N 2 6000000 500000  0 1 0 0 0 0\nUTM32-ED50 S34J E 1 6000000 500000  0 0 -1\n";
  const std::string s =
      "S34S UTM32-ED50 N 1 0 0 6000000 1 0\nS34S UTM32-ED50 E 1 0 0 0 0 -1\n"
      "UTM32-ED50 S34S N 1 0 0 -6000000 1 0\nUTM32-ED50 S34S E 1 0 0 0 0 -1\n";
  const std::string b =
      "S45B UTM33-ED50 N 0 0 0 6100000\nS45B UTM33-ED50 E 0 0 0 1\n"
      "UTM33-ED50 S45B N 0 0 0 7\nUTM33-ED50 S45B E 0 0 0 8\n";
  VEXDanishGrids grids;
  EXPECT_EQ(numberOf(grids.load(path + ".none")), 244027U);
  for (const char* bad : {"S34J", "S34J UTM33-ED50 N 0 0 0 1", "S34J UTM32-ED50 X 0 0 0 1",
                          "S34J UTM32-ED50 N 1 0 0 1 2", "S34J UTM32-ED50 N 0 0 0 1 2", "S34J UTM32-ED50 N 0 0 0 one",
                          "S34J UTM32-ED50 N 1e9 0 0", "S34J UTM32-ED50 N -1 0 0", "S34J S34S N 0 0 0 1",
                          "S34J UTM32-ED50 N 0 0 0 nan", "S34J UTM32-ED50 N 0 0 0 1\nS34J UTM32-ED50 N 0 0 0 1"}) {
    write(bad);
    EXPECT_EQ(numberOf(grids.load(path)), 244028U) << bad;
  }
  write(j);
  ASSERT_EQ(grids.load(path), nullptr);
  struct Row {
    const char* from;
    const char* to;
    const char* before;
    const char* after;
    std::uint32_t message = 0;
    std::size_t numInexact = 0;
  };
  auto check = [&grids](const Row& row) {
    VEXFeaturePtr feature = makeFeature(std::string("t ") + row.before);
    VEXLine line = feature->buildLine();
    std::size_t numInexact = 99;
    EXPECT_EQ(numberOf(grids.convert(line, row.from, row.to, numInexact)), row.message) << row.before;
    feature->loadFromLine(std::move(line));
    EXPECT_EQ(describe(*feature), std::string("t ") + row.after);
    EXPECT_EQ(row.message == 0 ? numInexact : 0, row.numInexact) << row.before;
  };
  check({"S34J", "UTM32-ED50", "line -1000 200000 5", "line 499000 6200000 5"});
  check({"UTM32-ED50", "S34J", "aggregate 1 1, 499000 6200000", "aggregate 1 1, -1000 200000"});
  check({"S34J", "UTM32-ED50", "line 0 1, 0 900000", "line 0 1, 0 900000", 244030});
  check({"S34J", "UTM32-ED50", "line 0 nan", "line 0 nan", 244030});
  check({"S34J", "UTM32-ED50", "aggregate 2 9, 0 1", "aggregate 2 9, 0 1", 244023});
  check({"S34J", "S34S", "line 1 1", "line 1 1", 244029});  // no polynomials for S34S
  check({"S34J", "UTM33-ED50", "line 1 1", "line 1 1", 244029});
  check({"UTM32-ED50", "UTM32-ED50", "line 1 1", "line 1 1", 244029});
  check({"S34J", "S34J", "line 1 1", "line 1 1"});
  write(j + s + b);
  ASSERT_EQ(grids.load(path), nullptr);
  check({"S34J", "S34S", "line -1000 200000", "line 499000 200000"});
  check({"S45B", "UTM33-ED50", "line 8 3, -8 7", "line 1 6100000, 1 6100000", 0, 1});
  std::remove(path.c_str());
}

}  // namespace
