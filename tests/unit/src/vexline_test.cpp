// Lines: parts, measures, comparing, transforming; and geometry that comes broken from outside.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "tests/unit/support.h"
#include "vex/inc/numtext.h"
#include "vex/src/vexline.h"

namespace {

VEXLine lineOf(const std::string& geometry) {
  return makeFeature("t " + geometry)->buildLine();
}

std::string textOf(const VEXLine& line) {
  VEXFeature feature;
  feature.setFeatureType("t");
  feature.loadFromLine(line.clone());
  return describe(feature).substr(2);
}

std::uint32_t numberOf(const VEXStatus& status) {
  return status == nullptr ? 0 : status->messageNumber();
}

const char* const kSquare = "polygon 0 0, 10 0, 10 10, 0 10, 0 0";
const char* const kDonut = "donut 0 0, 10 0, 10 10, 0 10, 0 0, 2 2, 4 2, 4 4, 2 4, 2 2";

TEST(Line, PartsAndMeasures) {
  struct Row {
    const char* geometry;
    const char* kinds;
    double area, length;
  };
  for (const Row& row : {
           Row{"line 0 0, 3 4", "2", 0, 5},
           Row{"line 0 0, 3 4, 3 4, 9 9, 9 10", "2 2", 0, 6},  // the jump between the parts is no edge
           Row{"line 0 0, 2 0, 2 2, 0 0, 0 5", "2", 0, 4 + std::sqrt(8.0) + 5},  // a loop in a line is no end
           Row{"64 0 0, 1 0, 1 0, 5 5", "2 1", 0, 1},
           Row{"16 1 1, 1 1, 0 0, 3 4, 3 4", "1 2", 0, 5},
           Row{"16 0 0, 1 0, 0 0", "2", 0, 1},  // there and back spans two edges: a line
           Row{kSquare, "4", 100, 40},
           Row{"polygon 0 0, 10 0, 10 10, 0 10, 0 0, 2 2, 2 4, 4 4, 4 2, 2 2", "4 4", 96,
               48},  // a hole runs the other way
           Row{kDonut, "4 4", 96, 48},
           Row{"128 0 0, 1 0, 1 1, 0 0, 5 5, 6 5, 6 6, 5 5", "4 4", 1, 4 + 2 * std::sqrt(2.0)},
           Row{"polygon 0 0, 1 1, 0 0", "2", 0, 2 * std::sqrt(2.0)},
           Row{"point 1 2", "1", 0, 0},
           Row{"aggregate 2 2, 0 0, 3 4, 512 6, 4 5, 0 0, 2 0, 2 2, 0 2, 0 0", "2 512", 4, 13},
           Row{"donut 0 0, 0 0, 4 0, 4 4, 0 0, 1 0, 2 0, 2 1, 1 0", "1 2", 7.5,
               10 + std::sqrt(2.0) + std::sqrt(32.0)},
           Row{"line", "", 0, 0},
       }) {
    VEXLine line = lineOf(row.geometry);
    std::vector<VEXLine> parts;
    ASSERT_EQ(line.split(kEveryPartMask, parts), nullptr) << row.geometry;
    std::string kinds;
    for (const VEXLine& part : parts) kinds += (kinds.empty() ? "" : " ") + std::to_string(part.geomType());
    EXPECT_EQ(kinds, row.kinds) << row.geometry;
    double area = -1;
    double length = -1;
    EXPECT_EQ(line.area(area), nullptr);
    EXPECT_EQ(line.length2D(length), nullptr);
    EXPECT_DOUBLE_EQ(area, row.area) << row.geometry;
    EXPECT_DOUBLE_EQ(length, row.length) << row.geometry;
  }
}

TEST(Line, AggregatesThatLieFailAndAreLeftAlone) {
  for (const char* geometry :
       {"aggregate 2 5, 0 0", "aggregate 3 1, 0 0", "aggregate 2 -1, 0 0", "aggregate 2 nan, 0 0",
        "aggregate 1e300 1, 0 0", "aggregate 512 2, 2 9, 0 0", "aggregate 2 1e18"}) {
    VEXLine line = lineOf(geometry);
    VEXBox box;
    double value = 0;
    std::vector<VEXLine> parts;
    bool contained = false;
    std::array<std::uint32_t, 4> key;
    for (std::uint32_t number :
         {numberOf(line.boundingBox(box)), numberOf(line.area(value)), numberOf(line.length2D(value)),
          numberOf(line.offset(1, 1, 0)), numberOf(line.removeDuplicates()), numberOf(line.convertToMulti()),
          numberOf(line.simplifyDouglas(1)), numberOf(line.containsPoint(0, 0, contained)),
          numberOf(line.orientRings(true)), numberOf(line.addVerticesByCount(1)), numberOf(line.roundAxis(0, 1)),
          numberOf(line.reverseParts()), numberOf(line.collapseToCentre()), numberOf(line.gridKey(key))})
      EXPECT_EQ(number, 244023U) << geometry;
    EXPECT_EQ(textOf(line), textOf(lineOf(geometry))) << geometry;
  }
  std::vector<double> x(5000, VEX_GEOM_AGGREGATE);
  std::vector<double> y(5000);
  for (std::size_t i = 0; i < y.size(); ++i) y[i] = static_cast<double>(y.size() - 1 - i);
  VEXLine deep(std::move(x), std::move(y), VEX_GEOM_AGGREGATE);
  VEXBox box;
  EXPECT_EQ(numberOf(deep.boundingBox(box)), 244024U);
  EXPECT_EQ(numberOf(deep.simplifyDouglas(1)), 244024U);
}

TEST(Line, PartListClassifiesAndDropsRepeatedPoints) {
  struct Row {
    const char* geometry;
    const char* result;
    const char* starts;
  };
  for (const Row& row : {Row{"16 1 1, 1 1, 2 2, 2 2", "32 1 1, 2 2", "0 1"},
                         Row{"16 0 0, 1 0, 1 0, 5 5, 6 6", "64 0 0, 1 0, 1 0, 5 5, 6 6", "0 3"},
                         Row{"16 1 1, 1 1, 0 0, 5 5", "16 1 1, 0 0, 5 5", "0 1"},
                         Row{kDonut, "128 0 0, 10 0, 10 10, 0 10, 0 0, 2 2, 4 2, 4 4, 2 4, 2 2", "0 5"}}) {
    VEXLine line = lineOf(row.geometry);
    std::vector<std::size_t> starts;
    ASSERT_EQ(line.partList(starts), nullptr);
    std::string text;
    for (std::size_t start : starts) text += (text.empty() ? "" : " ") + std::to_string(start);
    EXPECT_EQ(textOf(line), row.result);
    EXPECT_EQ(text, row.starts);
  }
}

TEST(Line, Transformations) {
  struct Row {
    const char* geometry;
    VEXStatus (*work)(VEXLine&);
    const char* result;
  };
  for (const Row& row : {
           Row{"line 1 0, 0 1", [](VEXLine& l) { return l.rotate2D(0, 0, 90); }, "line 0 -1, 1 0"},
           Row{"line 1 2 3", [](VEXLine& l) { return l.scale(2, 3, NAN); }, "line 2 6 3"},
           Row{"aggregate 1 1, 5 5, 1 1, 6 6", [](VEXLine& l) { return l.offset(1, -1, 0); },
               "aggregate 1 1, 6 4, 1 1, 7 5"},
           Row{"line -0.7 0.5, -0.2 0.9", [](VEXLine& l) { return l.toIntegers(); }, "line -0 1"},
           Row{"line 1.25 0, 1.349 0, 5 0", [](VEXLine& l) { return l.roundAxis(0, 1); }, "line 1.3 0, 5 0"},
           Row{"line 1.26 0, 5 0, 5 0, 7 7", [](VEXLine& l) { return l.roundAxis(0, 1); }, "line 1.3 0, 5 0, 5 0, 7 7"},
           Row{"line 149 0", [](VEXLine& l) { return l.roundAxis(0, -2); }, "line 100 0"},
           Row{"line 0 0 1, 0 0 2, 1 1 3", [](VEXLine& l) { return l.removeDuplicates(); }, "line 0 0 2, 1 1 3"},
           Row{"aggregate 2 3, 0 0, 0 0, 1 1", [](VEXLine& l) { return l.removeDuplicates(); },
               "aggregate 2 2, 0 0, 1 1"},
           Row{kSquare, [](VEXLine& l) { return l.orientRings(false); }, "polygon 0 0, 0 10, 10 10, 10 0, 0 0"},
           Row{kDonut, [](VEXLine& l) { return l.orientRings(true); },
               "donut 0 0, 10 0, 10 10, 0 10, 0 0, 2 2, 2 4, 4 4, 4 2, 2 2"},
           Row{kDonut, [](VEXLine& l) { return l.dropHoles(); }, "polygon 0 0, 10 0, 10 10, 0 10, 0 0"},
           Row{kSquare, [](VEXLine& l) { return l.collapseToCentre(); }, "polygon 5 5"},
           Row{"polygon 0 0 1, 4 0 1, 4 4 1, 0 0 1",
               [](VEXLine& l) { return l.addHole(lineOf("polygon 1 1, 2 1, 2 2, 1 1")); },
               "donut 0 0 1, 4 0 1, 4 4 1, 0 0 1, 1 1 0, 2 1 0, 2 2 0, 1 1 0"},
           Row{"aggregate 1 1, 9 9, 2 2, 0 0, 1 0, 4 4, 0 0, 1 0, 1 1, 0 0",
               [](VEXLine& l) { return l.convertToMulti(); }, "16 9 9, 9 9, 0 0, 1 0, 1 0, 0 0, 1 0, 1 1, 0 0"},
           Row{"line 0 0, 5 0.1, 10 0, 15 5, 20 0", [](VEXLine& l) { return l.simplifyDouglas(1); },
               "line 0 0, 10 0, 15 5, 20 0"},
           Row{"line 0 0, 5 1, 10 0", [](VEXLine& l) { return l.simplifyDouglas(1); }, "line 0 0, 5 1, 10 0"},
           Row{"line 0 0, 5 0.1, 9 0, 9 0, 1 1, 2 1.1, 3 1", [](VEXLine& l) { return l.simplifyDouglas(1); },
               "line 0 0, 9 0, 9 0, 1 1, 3 1"},
           Row{"line 0 0, 5 5, 9 0, 0 0", [](VEXLine& l) { return l.simplifyDouglas(99); }, "line 0 0, 5 5, 9 0, 0 0"},
           Row{"polygon 7 7", [](VEXLine& l) { return l.simplifyDouglas(1); }, "polygon 7 7"},
           Row{"line 0 0, nan 1, 2 2, 9 0", [](VEXLine& l) { return l.simplifyDouglas(0.1); }, "line 0 0, 2 2, 9 0"},
           Row{"polygon 0 0, 5 -1, 10 0, 10 10, 0 10, 0 0", [](VEXLine& l) { return l.simplifyDouglas(99); },
               "polygon 0 0, 10 0, 10 10, 0 0"},
       }) {
    VEXLine line = lineOf(row.geometry);
    ASSERT_EQ(row.work(line), nullptr) << row.geometry;
    EXPECT_EQ(textOf(line), row.result) << row.geometry;
  }
  VEXLine line = lineOf("line 1.5 2.5, -3 4");
  ASSERT_EQ(line.affine(2, 1, 5, -1, 3, 7), nullptr);
  ASSERT_EQ(line.inverseAffine(2, 1, 5, -1, 3, 7), nullptr);
  EXPECT_NEAR(line.xs()[1], -3, 1e-12);
  EXPECT_NEAR(line.ys()[1], 4, 1e-12);
}

TEST(Line, RefusesWhatItCannotDo) {
  VEXPoint point;
  double value = 0;
  bool contained = false;
  VEXLine line = lineOf("line 0 0, 1 1");
  EXPECT_EQ(numberOf(line.insidePoint(true, point)), 244001U);
  EXPECT_EQ(numberOf(line.containsLine(lineOf("point 0 0"), contained)), 244002U);
  EXPECT_EQ(numberOf(lineOf(kSquare).containsLine(line, contained)), 244003U);
  EXPECT_EQ(numberOf(lineOf("donut 0 0, 9 0, 9 9, 0 0").containsLine(lineOf("line 5 1, 6 1"), contained)), 244002U);
  EXPECT_EQ(numberOf(lineOf("polygon 0 5, 0 0, 10 0, 1 0, 10 5, 0 5").insidePoint(false, point)), 244021U);
  EXPECT_EQ(numberOf(lineOf("polygon 0 0, 10 0, 10 5").insidePoint(false, point)), 244022U);
  EXPECT_EQ(numberOf(line.addHole(lineOf(kSquare))), 244012U);
  VEXLine square = lineOf(kSquare);
  EXPECT_EQ(numberOf(square.addHole(line)), 244013U);
  VEXLine open = lineOf("donut 0 0, 1 1, 2 2");
  EXPECT_EQ(numberOf(open.dropHoles()), 244004U);
  VEXLine empty;
  EXPECT_EQ(numberOf(empty.orientRings(true)), 244010U);
  VEXLinePart part;
  EXPECT_EQ(numberOf(lineOf("aggregate 1 1, 0 0").findPart(0, part)), 244008U);
  VEXLine pip = lineOf("aggregate 256 1, 0 0");
  EXPECT_EQ(numberOf(pip.convertToMulti()), 244009U);
  std::array<std::uint32_t, 4> key;
  EXPECT_EQ(numberOf(empty.gridKey(key)), 244014U);
  EXPECT_EQ(numberOf(line.arcThrough(point, value, value, value)), 244018U);
  EXPECT_EQ(numberOf(lineOf("line 0 0, 1 1, 2 2").arcThrough(point, value, value, value)), 244019U);
}

TEST(Line, EqualityAndContainment) {
  EXPECT_TRUE(lineOf(kSquare).equals(lineOf("polygon 10 10, 10 0, 0 0, 0 10, 10 10"), true));
  EXPECT_FALSE(lineOf(kSquare).equals(lineOf("polygon 10 10, 0 0, 10 0, 0 10, 10 10"), true));
  EXPECT_TRUE(lineOf("line 0 0, 1 1, 2 0").equals(lineOf("line 2 0, 1 1, 0 0"), false));
  EXPECT_FALSE(lineOf("line 0 0 1, 1 1 1").equals(lineOf("line 0 0 1, 1 1 2"), true));
  EXPECT_TRUE(lineOf("line 0 0 1, 1 1 1").equals(lineOf("line 0 0 1, 1 1 2"), false));
  struct Row {
    const char* outer;
    const char* inner;
    bool contained;
  };
  for (const Row& row : {
           Row{kSquare, "polygon 1 1, 2 1, 2 2, 1 1", true},
           Row{kSquare, kSquare, true},
           Row{kSquare, "polygon 1 1, 12 1, 2 2, 1 1", false},
           Row{kSquare, kDonut, true},
           Row{kDonut, "polygon 2.5 2.5, 3 2.5, 3 3, 2.5 2.5", false},
           Row{kDonut, "polygon 6 6, 8 6, 8 8, 6 6", true},
           Row{kDonut, "polygon 1 1, 8 1, 8 8, 1 8, 1 1", false},
           Row{kDonut, "polygon 3 3, 8 3, 8 3.5, 3 3.5, 3 3", false},
           Row{kSquare, "point 0 0", true},
           Row{kDonut, "point 3 3", false},
           Row{kDonut, kDonut, true},
           Row{kDonut, "donut 1 1, 5 1, 5 5, 1 5, 1 1, 1.5 1.5, 4.5 1.5, 4.5 4.5, 1.5 4.5, 1.5 1.5", true},
           Row{kDonut, "donut 1 1, 5 1, 5 5, 1 5, 1 1, 3 3, 3.5 3, 3.5 3.5, 3 3", false},
           Row{"polygon 0 0, 1 0, 1 1, 0 0, 5 5, 9 5, 9 9, 5 5", "polygon 7 6, 8 6, 8 7, 7 6",
               true},  // its second shell
           Row{"aggregate 1 1, 0 0, 4 4, 0 0, 4 0, 4 4, 0 0", "point 3 1", true},
           Row{"128 0 0, 1 0, 1 1, 0 0, 5 5, 9 5, 9 9, 5 5", "polygon 7 6, 8 6, 8 7, 7 6", true},
       }) {
    bool contained = !row.contained;
    ASSERT_EQ(lineOf(row.outer).containsLine(lineOf(row.inner), contained), nullptr) << row.outer;
    EXPECT_EQ(contained, row.contained) << row.outer << " / " << row.inner;
  }
}

// Rings that repeat one coordinate over and over are compared in linear time, and right.
TEST(Line, EqualityOfRingsThatRepeat) {
  const std::size_t n = 100000;
  std::vector<double> x(n, 1.0), y(n, 1.0), x2, y2;
  x[n - 2] = 2.0;
  x2 = x;
  std::rotate(x2.begin(), x2.begin() + 500, x2.end() - 1);
  x2.back() = x2.front();
  EXPECT_TRUE(VEXLine(x, y, VEX_GEOM_POLYGON).equals(VEXLine(x2, y, VEX_GEOM_POLYGON), false));
  x2[70] = 3.0;
  EXPECT_FALSE(VEXLine(x, y, VEX_GEOM_POLYGON).equals(VEXLine(x2, y, VEX_GEOM_POLYGON), false));
}

TEST(Line, MiddleLines) {
  struct Row {
    const char* geometry;
    double tolerance, spacing;
    const char* result;
  };
  for (const Row& row : {
           Row{"polygon 0 0, 12 0, 12 2, 0 2, 0 0", 0.1, 1, "line 0 1, 12 1"},
           Row{"polygon 0 0, 12 0, 12 2, 0 2, 0 0", 0, 6, "line 0 1, 6 1, 12 1"},
           Row{"polygon 0 0, 10 0, 10 2, 0 2, 0 0, 0 20, 2 20, 2 30, 0 30, 0 20", 0.1, 1,
               "line 0 1, 10 1, 10 1, 1 20, 1 30"},
           Row{"polygon 0 0, 8 0, 0 0", 0, 4, "line 0 0, 4 0, 8 0"},  // no width
           Row{"polygon 3 3", 1, 1, "0"},
           Row{"polygon", 1, 1, "0"},
           Row{"line 0 0, 1 1", 1, 1, "line 0 0, 1 1"},
       }) {
    VEXLine line = lineOf(row.geometry);
    ASSERT_EQ(line.middleLine(row.tolerance, row.spacing), nullptr) << row.geometry;
    if (line.geomType() == VEX_GEOM_UNDEFINED)
      EXPECT_EQ(line.numCoords(), 0U) << row.geometry;
    else
      EXPECT_EQ(textOf(line), row.result) << row.geometry;
  }
  // Along a bent strip the line stays inside, and ends at its ends.
  std::vector<double> x, y;
  for (int i = 0; i <= 60; ++i) x.push_back(i), y.push_back(5 * std::sin(i / 10.0));
  for (int i = 60; i >= 0; --i) x.push_back(i), y.push_back(3 + 5 * std::sin(i / 10.0));
  x.push_back(x[0]), y.push_back(y[0]);
  const VEXLine strip(x, y, VEX_GEOM_POLYGON);
  VEXLine middle = strip.clone();
  ASSERT_EQ(middle.middleLine(0.01, 0.5), nullptr);
  ASSERT_GT(middle.numCoords(), 10U);
  for (std::size_t i = 1; i + 1 < middle.numCoords(); ++i)
    EXPECT_TRUE(isPointInRing(strip.xs(), strip.ys(), middle.xs()[i], middle.ys()[i])) << i;
}

TEST(Line, GridKeysPlaceTheGeometry) {
  struct Row {
    const char* geometry;
    std::uint32_t high, low;
  };
  for (const Row& row :
       {Row{"point 0 0", 0, 0}, Row{"point 0.0000001 0.0000002", 0, 0x6}, Row{"line 0 0, 0.0000003 0.0000006", 0, 0x6},
        Row{"point -0.0000001 0", 0xAAAAAAAA, 0xAAAAAAAA}, Row{"aggregate 1 0, 2 2, 0 0.0065536, 0 0.0065536", 0x1, 0},
        Row{"point nan 1e9", 0xC0000000, 0}}) {
    std::array<std::uint32_t, 4> first{}, second{};
    ASSERT_EQ(lineOf(row.geometry).gridKey(first), nullptr);
    ASSERT_EQ(lineOf(row.geometry).gridKey(second), nullptr);
    EXPECT_EQ(first[0], row.high) << row.geometry;
    EXPECT_EQ(first[1], row.low) << row.geometry;
    EXPECT_EQ((second[3] >> 16) - (first[3] >> 16), 1U);
    EXPECT_EQ(first[3] & 0xFFU, 0U);
  }
}

TEST(Line, PrefixComparisonSkipsWithinTolerance) {
  VEXLine plain = lineOf("line 0 0, 10 0, 10 10");
  EXPECT_EQ(plain.comparePrefix(lineOf("line 0 0, 10 0, 10 11"), 2, 0), 2U);
  EXPECT_EQ(plain.comparePrefix(lineOf("line 0 0, 5 0.1, 10 0, 10 10"), 2, 0.5), 3U);
  EXPECT_EQ(plain.comparePrefix(lineOf("line 0 0, 5 2, 10 0, 10 10"), 2, 0.5), 1U);
  EXPECT_EQ(plain.comparePrefix(lineOf("line 0 0, 10.1 0, 10 10"), 2, 0.5), 3U);
}

TEST(Line, ArcThroughThreePoints) {
  struct Row {
    const char* geometry;
    double start, sweep;
  };
  for (const Row& row : {Row{"line 1 0, 0 1, -1 0", 0, 180}, Row{"line 1 0, 0 -1, -1 0", 0, -180},
                         Row{"line 0 -1, 1 0, 0 1", 270, 180}}) {
    VEXPoint centre;
    double radius = 0, start = 0, sweep = 0;
    ASSERT_EQ(lineOf(row.geometry).arcThrough(centre, radius, start, sweep), nullptr);
    EXPECT_NEAR(centre.x, 0, 1e-12);
    EXPECT_NEAR(radius, 1, 1e-12);
    EXPECT_NEAR(start, row.start, 1e-9);
    EXPECT_NEAR(sweep, row.sweep, 1e-9) << row.geometry;
  }
}

// Random stars with a hole: a generated point lies inside by the plain answer, in both ways.
TEST(Line, InsidePointsLieInside) {
  std::uint32_t state = 7;
  auto random = [&state] { return static_cast<double>((state = state * 1664525U + 1013904223U) >> 8) / 16777216.0; };
  for (int round = 0; round < 300; ++round) {
    VEXFeature feature;
    double shift = round % 2 == 0 ? 0.0 : 1e6;
    for (int ring = 0; ring < 1 + round % 2; ++ring) {
      int corners = 5 + round % 9;
      double x0 = 0, y0 = 0;
      for (int i = 0; i <= corners; ++i) {
        double radius = ring == 0 ? 10 + 90 * random() : 1 + 8 * random();
        double x = shift + radius * std::cos(i * 6.283185307179586 / corners);
        double y = shift + radius * std::sin(i * 6.283185307179586 / corners);
        if (i == 0) x0 = x, y0 = y;
        feature.addCoord(i == corners ? x0 : x, i == corners ? y0 : y);
      }
    }
    feature.setGeomType(round % 2 == 0 ? VEX_GEOM_POLYGON : VEX_GEOM_DONUT);
    VEXLine line = feature.buildLine();
    for (bool careful : {false, true}) {
      VEXPoint point;
      bool contained = false;
      ASSERT_EQ(line.insidePoint(careful, point), nullptr) << round;
      ASSERT_EQ(line.containsPoint(point.x, point.y, contained), nullptr);
      EXPECT_TRUE(contained) << round << (careful ? " careful" : " scan");
    }
  }
}

}  // namespace
