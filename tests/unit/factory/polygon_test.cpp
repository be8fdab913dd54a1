// The factories that form polygons: from lines, from boundaries with inside points, from polygons that touch.
#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <utility>

#include "tests/unit/factory/facttest.h"
#include "vex/inc/numtext.h"
#include "vex/src/vexline.h"

namespace {

TEST(PolygonFactory, FormsPolygonsOfLines) {
  const std::string outputs = " OUTPUT POLYGON FEATURE_TYPE area OUTPUT LINE FEATURE_TYPE open";
  const std::string end = "Completed polygon formation on all submodels: ";
  for (const std::string noding : {"END_NODED", "VERTEX_NODED", ""}) {
    check("PolygonFactory",
          {{noding + " GROUP_BY k" + outputs,
            {"a {k=x,n=1} line 0 0, 4 0", "a {k=y} line 4 4, 0 4, 0 0", "a {k=x} line 4 0, 4 4, 0 4, 0 0",
             "a {k=x,n=5} line 4 0, 9 0"},
            "area {k=x} polygon 4 0, 0 0, 0 4, 4 4, 4 0; open {k=x, n=5} line 4 0, 9 0; "
            "open {k=y} line 4 4, 0 4, 0 0",
            end + "4 input features, Formed 1 polygon, 2 line segments did not close and 0 were rejected"},
           {noding + outputs,
            {"b point 1 1", "c line 1 1", "d polygon 0 0, 1 0, 1 1, 0 0", "e line 0 0, nan 1", "f aggregate 2 9, 1 1",
             "g line 3 3, 3 3, 3 3"},
            "",
            end + "6 input features, Formed 0 polygons, 0 line segments did not close and 6 were rejected"},
           {noding + outputs, {}, "", end + "0 input features, Formed 0 polygons"}});
  }
  // A line that crosses itself where it was said not to is rejected, once; what is apart from it is formed.
  check("PolygonFactory", {{"END_NODED" + outputs,
                            {"a line 0 0, 4 4, 4 0, 0 4, 0 0", "b line 9 0, 9 4, 13 4, 9 0"},
                            "area polygon 9 0, 9 4, 13 4, 9 0",
                            end + "2 input features, Formed 1 polygon, 0 line segments did not close and 1 was"}});
  checkFaults("PolygonFactory", {{"OUTPUT AREA FEATURE_TYPE a", 47002},
                                 {"OUTPUT LINE FEATURE_TYPE a OUTPUT LINE FEATURE_TYPE b", 47003},
                                 {"OUTPUT LINE TYPE a", 47004},
                                 {"GROUP_BY a GROUP_BY b", 47008},
                                 {"VERTEX_NODED END_NODED", 47010},
                                 {"END_NODED VERTEX_NODED", 47012},
                                 {"FLUSH_AFTER_CURRENT_WHEN a ~ b", 47018},
                                 {"FLUSH_BEFORE_CURRENT_WHEN a == b", 47018},
                                 {"PRESERVE_ORIENTATION LEFT", 47028}});
}

// A first feature that fulfils the condition finds nothing to flush; one behind a flush begins a new submodel.
TEST(PolygonFactory, FlushesWhenAFeatureAsksForIt) {
  const std::string triangle = "a {n=1} line 0 0, 4 0, 4 4, 0 0";
  const std::string formed = "area polygon 4 4, 4 0, 0 0, 4 4; ";
  const std::string open = "open {n=3} line 0 0, 9 0";
  const std::string outputs = " END_NODED OUTPUT POLYGON FEATURE_TYPE area OUTPUT LINE FEATURE_TYPE open";
  for (const std::string trigger : {"FLUSH_BEFORE_CURRENT_WHEN n = 1", "FLUSH_AFTER_CURRENT_WHEN n < 2"}) {
    PipelineScope scope({"FACTORY_DEF K PolygonFactory " + trigger + outputs});
    EXPECT_EQ(scope.run({triangle, "b {n=3} line 0 0, 9 0", triangle}),
              trigger.starts_with("FLUSH_BEFORE") ? formed + open + "; " + formed.substr(0, formed.size() - 2)
                                                  : formed + formed + open);
  }
  check("PolygonFactory",
        {{"PRESERVE_ORIENTATION COUNTER_CLOCKWISE" + outputs,
          {triangle},
          "area polygon 4 4, 0 0, 4 0, 4 4",
          "Completed "},
         {"PRESERVE_ORIENTATION CLOCKWISE" + outputs, {triangle}, "area polygon 4 4, 4 0, 0 0, 4 4", "Completed "}});
}

// Lines that run anywhere along the edges and diagonals of a grid, crossing, overlapping and ending as they like. Each
// cell has four triangles around its centre; the regions that a flood over them finds are the polygons.
TEST(PolygonFactory, FormsTheRegionsThatAFloodFinds) {
  constexpr unsigned kSeed = 20261126;
  constexpr int kSide = 5;
  constexpr int kSteps[8][2] = {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};
  std::size_t numFormed = 0;
  for (unsigned round = 0; round < 2000; ++round) {
    SCOPED_TRACE("seed " + std::to_string(kSeed + round));
    std::mt19937 random(kSeed + round);
    auto below = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    const double scales[] = {1, 1e-6, 3e4, 0.7};
    const double offsets[] = {0, 1e-6, 1e7, -123.456};
    const int place = below(4);
    const auto moved = [&](double value) { return offsets[place] + scales[place] * value; };

    // Walls by their middles, in quarters of a cell.
    std::set<std::pair<int, int>> walls;
    PipelineScope scope({"FACTORY_DEF K PolygonFactory OUTPUT POLYGON FEATURE_TYPE area"});
    VEXPipeline pipeline;
    ASSERT_EQ(numberOf(pipeline.configure("K")), 0U);
    for (int line = 4 + below(22); line > 0; --line) {
      int x = below(kSide + 1), y = below(kSide + 1);
      std::string text = "a line " + realText(moved(x)) + " " + realText(moved(y));
      std::size_t numPoints = 1;
      for (int turns = 1 + below(4); turns > 0; --turns) {
        const auto [dx, dy] = kSteps[below(8)];
        int length = 0;
        for (const int most = 1 + below(kSide); length < most; ++length) {
          if (x + dx < 0 || x + dx > kSide || y + dy < 0 || y + dy > kSide) break;
          if (dx == 0 || dy == 0) walls.insert({4 * x + 2 * dx, 4 * y + 2 * dy});
          if (dx != 0 && dy != 0) walls.insert({{4 * x + dx, 4 * y + dy}, {4 * x + 3 * dx, 4 * y + 3 * dy}});
          x += dx;
          y += dy;
        }
        if (length == 0) continue;
        text += ", " + realText(moved(x)) + " " + realText(moved(y));
        ++numPoints;
      }
      if (numPoints == 1) continue;
      VEXFeaturePtr feature = makeFeature(text);
      ASSERT_EQ(numberOf(pipeline.processFeature(feature)), 0U);
    }
    ASSERT_EQ(numberOf(pipeline.allDone()), 0U);

    // Triangles: below, right, above, left of the centre; 0 is the outside.
    const auto triangle = [](int column, int row, int side) {
      return column < 0 || row < 0 || column >= kSide || row >= kSide ? 0 : 1 + 4 * (row * kSide + column) + side;
    };
    std::vector<int> region(1 + 4 * kSide * kSide);
    std::iota(region.begin(), region.end(), 0);
    const auto find = [&region](int at) {
      while (region[static_cast<std::size_t>(at)] != at) at = region[static_cast<std::size_t>(at)];
      return at;
    };
    const auto join = [&](int a, int b, int x, int y) {
      if (walls.contains({x, y})) return;
      a = find(a);
      b = find(b);
      region[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
    };
    for (int row = 0; row < kSide; ++row) {
      for (int column = 0; column < kSide; ++column) {
        const int x = 4 * column, y = 4 * row;
        join(triangle(column, row, 0), triangle(column, row - 1, 2), x + 2, y);
        join(triangle(column, row, 3), triangle(column - 1, row, 1), x, y + 2);
        join(triangle(column, row, 2), triangle(column, row + 1, 0), x + 2, y + 4);
        join(triangle(column, row, 1), triangle(column + 1, row, 3), x + 4, y + 2);
        join(triangle(column, row, 0), triangle(column, row, 3), x + 1, y + 1);
        join(triangle(column, row, 0), triangle(column, row, 1), x + 3, y + 1);
        join(triangle(column, row, 2), triangle(column, row, 1), x + 3, y + 3);
        join(triangle(column, row, 2), triangle(column, row, 3), x + 1, y + 3);
      }
    }
    std::map<int, double> areas;  // of the regions, in cells
    for (int at = 1; at <= 4 * kSide * kSide; ++at)
      if (find(at) != 0) areas[find(at)] += 0.25;

    std::map<int, int> seen;  // polygons by region
    std::vector<int> numHolders(region.size(), 0);
    while (VEXFeaturePtr feature = pipeline.getOutputFeature()) {
      const VEXLine polygon = VEXLine::viewOf(*feature);
      std::set<int> held;
      for (int at = 1; at <= 4 * kSide * kSide; ++at) {
        const int cell = (at - 1) / 4;
        const int side = (at - 1) % 4;
        const double x = cell % kSide + 0.5 + (side == 1 ? 0.3 : side == 3 ? -0.3 : 0.0);
        const double y = cell / kSide + 0.5 + (side == 2 ? 0.3 : side == 0 ? -0.3 : 0.0);
        bool isHeld = false;
        ASSERT_EQ(numberOf(polygon.containsPoint(moved(x), moved(y), isHeld)), 0U);
        if (!isHeld) continue;
        held.insert(find(at));
        ++numHolders[static_cast<std::size_t>(at)];
      }
      ASSERT_EQ(held.size(), 1U) << describe(*feature);
      ++seen[*held.begin()];
      double area = 0.0;
      ASSERT_EQ(numberOf(polygon.area(area)), 0U);
      ASSERT_NEAR(std::abs(area) / (scales[place] * scales[place]), areas[*held.begin()], 1e-4) << describe(*feature);
      ++numFormed;
    }
    ASSERT_EQ(seen.size(), areas.size());
    for (int at = 1; at <= 4 * kSide * kSide; ++at)
      ASSERT_EQ(numHolders[static_cast<std::size_t>(at)], find(at) == 0 ? 0 : 1) << "triangle " << at;
  }
  EXPECT_GT(numFormed, 10000U);
}

TEST(PolygonDissolveFactory, DissolvesPolygonsThatShareVertices) {
  const std::string outputs =
      " OUTPUT POLYGON FEATURE_TYPE area OUTPUT INTERIOR_LINE FEATURE_TYPE inner OUTPUT NON_POLYGON FEATURE_TYPE *";
  check(
      "PolygonDissolveFactory",
      {{"VERTEX_NODED SUM_FIELDS s AVERAGE_FIELDS a WEIGHTED_AVERAGE_FIELDS w DISSOLVE_COUNT_ATTRIBUTE c LIST_NAME m" +
            outputs,
        {"a {s=1,a=1,w=1} polygon 0 0, 0 4, 2 4, 2 0, 0 0", "a {s=2,a=2,w=2} polygon 2 0, 8 0, 8 4, 2 4, 2 0",
         "b {s=x} polygon 10 0, 11 0, 11 1, 10 0", "c point 1 1"},
        "c point 1 1; area {a=0, c=1, m{0}.orv_geometry=orv_polygon, m{0}.s=x, s=0, w=0} polygon 10 0, 11 1, 11 0, "
        "10 0; area {a=1.5, c=2, m{0}.a=1, m{0}.orv_geometry=orv_polygon, m{0}.s=1, m{0}.w=1, m{1}.a=2, "
        "m{1}.orv_geometry=orv_polygon, m{1}.s=2, m{1}.w=2, s=3, w=1.75} polygon 2 0, 0 0, 0 4, 2 4, 8 4, 8 0, 2 0; "
        "inner line 2 4, 2 0",
        "Dissolved 3 input polygons into 2 polygons, 1 feature was no polygon, 0 polygons were rejected"},
       // A hole that is filled, by group; the same polygon twice; two that touch in a point.
       {"VERTEX_NODED GROUP_BY k" + outputs,
        {"a {k=x} donut 0 0, 0 9, 9 9, 9 0, 0 0, 3 3, 6 3, 6 6, 3 6, 3 3", "a {k=x} polygon 3 3, 3 6, 6 6, 6 3, 3 3",
         "a {k=y} polygon 0 0, 1 0, 1 1, 0 0", "a {k=y} polygon 0 0, 1 0, 1 1, 0 0",
         "a {k=y} polygon 1 1, 2 1, 2 2, 1 1"},
        "area {k=x} polygon 0 0, 0 9, 9 9, 9 0, 0 0; inner {k=x} line 3 3, 6 3, 6 6, 3 6, 3 3; "
        "area {k=y} polygon 1 1, 1 0, 0 0, 1 1; area {k=y} polygon 1 1, 2 2, 2 1, 1 1",
        "Dissolved 5 input polygons into 3 polygons"},
       {"VERTEX_NODED" + outputs,
        {"a polygon 0 0, nan 0, 1 1, 0 0"},
        "",
        "Dissolved 1 input polygon into 0 polygons, "
        "0 features were no polygon, 1 polygon was rejected"}});
  checkFaults("PolygonDissolveFactory", {{"GROUP_BY", 866001},
                                         {"GROUP_BY a GROUP_BY b", 866002},
                                         {"SUM_FIELDS", 866010},
                                         {"LIST_NAME a LIST_NAME b", 866013},
                                         {"LIST_NAME {", 866014},
                                         {"VERTEX_NODED NOT_NODED", 866017}});
}

// Overlaps, a part of an edge shared, the same polygon twice, one inside another, one in a hole.
TEST(PolygonDissolveFactory, DissolvesPolygonsThatMeetInAnyWay) {
  const std::string outputs =
      " OUTPUT POLYGON FEATURE_TYPE area OUTPUT INTERIOR_LINE FEATURE_TYPE inner OUTPUT NON_POLYGON FEATURE_TYPE *";
  check(
      "PolygonDissolveFactory",
      {{"NOT_NODED SUM_FIELDS s DISSOLVE_COUNT_ATTRIBUTE c" + outputs,
        {"a {s=1} polygon 0 0, 0 4, 2 4, 2 0, 0 0", "a {s=2} polygon 2 1, 8 1, 8 3, 2 3, 2 1",
         "b {s=x} polygon 10 0, 11 0, 11 1, 10 0", "c point 1 1"},
        "c point 1 1; area {c=1, s=0} polygon 10 0, 11 1, 11 0, 10 0; area {c=2, s=3} polygon 2 1, 2 0, 0 0, 0 4, 2 4, "
        "2 3, 8 3, 8 1, 2 1; inner line 2 3, 2 1",
        "Dissolved 3 input polygons into 2 polygons"},
       {"GROUP_BY k DISSOLVE_COUNT_ATTRIBUTE c" + outputs,
        {"a {k=x} donut 0 0, 0 9, 9 9, 9 0, 0 0, 3 3, 6 3, 6 6, 3 6, 3 3", "a {k=x} polygon 4 4, 4 5, 5 5, 5 4, 4 4",
         "a {k=y} polygon 0 0, 4 0, 4 4, 0 4, 0 0", "a {k=y} polygon 0 0, 4 0, 4 4, 0 4, 0 0",
         "a {k=y} polygon 2 2, 6 2, 6 6, 2 6, 2 2", "a {k=z} polygon 0 0, 9 0, 9 9, 0 9, 0 0",
         "a {k=z} polygon 3 3, 4 3, 4 4, 3 3"},
        "area {c=1, k=x} donut 0 0, 0 9, 9 9, 9 0, 0 0, 3 3, 6 3, 6 6, 3 6, 3 3; area {c=1, k=x} polygon 4 4, 4 5, 5 "
        "5, "
        "5 4, 4 4; area {c=3, k=y} polygon 4 2, 4 0, 0 0, 0 4, 2 4, 2 6, 6 6, 6 2, 4 2; inner {k=y} line 2 4, 4 4, 4 "
        "2; "
        "inner {k=y} line 4 2, 2 2, 2 4; area {c=2, k=z} polygon 0 0, 0 9, 9 9, 9 0, 0 0; inner {k=z} line 3 3, 4 4; "
        "inner {k=z} line 4 4, 4 3, 3 3",
        "Dissolved 7 input polygons into 4 polygons"},
       // a ring that crosses itself: both loops
       {"DISSOLVE_COUNT_ATTRIBUTE c" + outputs,
        {"a polygon 0 0, 4 4, 4 0, 0 4, 0 0"},
        "area {c=1} polygon 2 2, 4 4, 4 0, 2 2; area {c=1} polygon 0 4, 2 2, 0 0, 0 4",
        "Dissolved 1 input polygon into 2 polygons"},
       // on top of others: its turned loop takes nothing away
       {"DISSOLVE_COUNT_ATTRIBUTE c OUTPUT POLYGON FEATURE_TYPE area",
        {"a polygon -1 -1, 9 -1, 9 9, -1 9, -1 -1", "a polygon 0 0, 4 4, 4 0, 0 4, 0 0"},
        "area {c=2} polygon -1 -1, -1 9, 9 9, 9 -1, -1 -1",
        "Dissolved 2 input polygons into 1 polygon"},
       // a hole outside of its shell, and what covers it; a polygon without area is a member of none
       {"DISSOLVE_COUNT_ATTRIBUTE c OUTPUT POLYGON FEATURE_TYPE area",
        {"a donut 0 0, 0 2, 2 2, 2 0, 0 0, 5 0, 7 0, 7 2, 5 2, 5 0", "a polygon 5 0, 7 0, 7 2, 5 2, 5 0",
         "a polygon 5 1, 6 1, 7 1, 5 1"},
        "area {c=2} polygon 5 1, 5 2, 7 2, 7 1, 7 0, 5 0, 5 1; area {c=1} polygon 0 0, 0 2, 2 2, 2 0, 0 0",
        "Dissolved 3 input polygons into 2 polygons"}});
}

// On a grid of small squares that are given in random sizes and places, dissolving finds the squares that are covered,
// each in one polygon, and both ways of noding agree where the polygons are noded.
TEST(PolygonDissolveFactory, CoversWhatItsMembersCover) {
  constexpr unsigned kSeed = 20261124;
  for (unsigned round = 0; round < 1000; ++round) {
    SCOPED_TRACE("seed " + std::to_string(kSeed + round));
    std::mt19937 random(kSeed + round);
    constexpr int kSide = 8;
    bool covered[kSide][kSide] = {};
    std::vector<std::string> raw;
    std::vector<std::string> noded;
    auto square = [](int x0, int y0, int x1, int y1) {
      return "a polygon " + std::to_string(x0) + " " + std::to_string(y0) + ", " + std::to_string(x1) + " " +
             std::to_string(y0) + ", " + std::to_string(x1) + " " + std::to_string(y1) + ", " + std::to_string(x0) +
             " " + std::to_string(y1) + ", " + std::to_string(x0) + " " + std::to_string(y0);
    };
    for (std::size_t count = 1 + random() % 9; raw.size() < count;) {
      const int x = static_cast<int>(random() % (kSide - 3));
      const int y = static_cast<int>(random() % (kSide - 3));
      const int width = 1 + static_cast<int>(random() % 3);
      const int height = 1 + static_cast<int>(random() % 3);
      raw.push_back(square(x, y, x + width, y + height));
      for (int column = x; column < x + width; ++column)
        for (int row = y; row < y + height; ++row)
          if (!std::exchange(covered[column][row], true)) noded.push_back(square(column, row, column + 1, row + 1));
    }
    for (const auto& [noding, features] :
         {std::pair("NOT_NODED", &raw), {"NOT_NODED", &noded}, {"VERTEX_NODED", &noded}}) {
      PipelineScope scope({std::string("FACTORY_DEF K PolygonDissolveFactory DISSOLVE_COUNT_ATTRIBUTE n ") + noding +
                           " OUTPUT POLYGON FEATURE_TYPE *"});
      VEXPipeline pipeline;
      ASSERT_EQ(numberOf(pipeline.configure("K")), 0U);
      for (const std::string& text : *features) {
        VEXFeaturePtr feature = makeFeature(text);
        ASSERT_EQ(numberOf(pipeline.processFeature(feature)), 0U);
      }
      ASSERT_EQ(numberOf(pipeline.allDone()), 0U);
      double area = 0.0;
      std::size_t members = 0;
      int numHolders[kSide][kSide] = {};
      while (VEXFeaturePtr feature = pipeline.getOutputFeature()) {
        double part = 0.0;
        std::int32_t n = 0;
        ASSERT_EQ(numberOf(VEXLine::viewOf(*feature).area(part)), 0U);
        ASSERT_TRUE(feature->getInteger("n", n));
        EXPECT_GT(std::abs(part), 0.0);
        for (int column = 0; column < kSide; ++column) {
          for (int row = 0; row < kSide; ++row) {
            bool isHeld = false;
            ASSERT_EQ(numberOf(VEXLine::viewOf(*feature).containsPoint(column + 0.5, row + 0.5, isHeld)), 0U);
            if (isHeld) ++numHolders[column][row];
          }
        }
        area += std::abs(part);
        members += static_cast<std::size_t>(n);
      }
      EXPECT_EQ(area, static_cast<double>(noded.size())) << noding;
      EXPECT_EQ(members, features->size()) << noding;
      for (int column = 0; column < kSide; ++column)
        for (int row = 0; row < kSide; ++row)
          ASSERT_EQ(numHolders[column][row], covered[column][row] ? 1 : 0) << noding << " " << column << " " << row;
    }
  }
}

TEST(CloseFactory, GivesPolygonsTheAttributesOfTheirPoints) {
  const std::string outputs = " OUTPUT POLYGON FEATURE_TYPE area OUTPUT LINE FEATURE_TYPE open";
  const std::string inputs =
      " INPUT INSIDE_POINT FEATURE_TYPE p INPUT BOUNDARY FEATURE_TYPE b INPUT SHARED_BOUNDARY FEATURE_TYPE s";
  for (const std::string noding : {"END_NODED", "VERTEX_NODED", ""}) {
    for (const std::string& rows : {noding + outputs, noding + inputs + outputs}) {
      PipelineScope scope({"FACTORY_DEF K CloseFactory " + rows});
      EXPECT_EQ(scope.run({"p {name=A} point 1 1", "p {name=C} point 9 9", "p {name=D} point 2 1",
                           "b {n=1} line 0 0, 4 0, 4 2", "s line 4 2, 0 2", "b line 0 2, 0 0",
                           "b line 0 2, 0 4, 4 4, 4 2", "b {n=2} line 4 2, 7 7"}),
                "area {name=A} polygon 4 2, 4 0, 0 0, 0 2, 4 2; area polygon 4 2, 0 2, 0 4, 4 4, 4 2; "
                "open {n=2} line 4 2, 7 7");
      EXPECT_EQ(scope.engine.logged("Received 3 input point features, "), 1U);
      EXPECT_EQ(scope.engine.logged("Output 2 polygon features, 2 unused point features, 1 unclosed line segment "
                                    "feature, 1 point-in-polygon feature, and 1 polygon containing no points"),
                1U);
    }
  }
  PipelineScope scope({"FACTORY_DEF K CloseFactory END_NODED GROUP_BY k" + inputs + outputs});
  EXPECT_EQ(scope.run({"p {k=1,n=A} point 3 2", "b {k=2} polygon 0 0, 4 0, 4 4, 0 0", "p {k=2,n=B} point 3 1",
                       "p {k=2} line 0 0, 1 1", "b {k=2} point 1 1", "p {k=3,n=C} point 0 0"}),
            "area {k=2, n=B} polygon 4 4, 4 0, 0 0, 4 4");
  EXPECT_EQ(scope.engine.logged("Encountered a 'POINT' feature with more than one coordinate"), 1U);
  EXPECT_EQ(scope.engine.logged("a boundary must be a line or an area"), 1U);
}

}  // namespace
