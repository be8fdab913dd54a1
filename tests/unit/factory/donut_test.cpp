// Donuts, hulls and the members of aggregates: each factory alone in its pipeline.
#include <algorithm>
#include <random>

#include "tests/unit/factory/facttest.h"
#include "vex/src/vexline.h"

namespace {

const char* const kOuter = "polygon 0 0, 9 0, 9 9, 0 9, 0 0";
const char* const kInner = "polygon 2 2, 6 2, 6 6, 2 6, 2 2";
const char* const kIsland = "polygon 3 3, 5 3, 5 5, 3 5, 3 3";
const std::string kDonut = "donut 0 0, 9 0, 9 9, 0 9, 0 0, 2 2, 6 2, 6 6, 2 6, 2 2";
const std::string kAll =
    " OUTPUT DONUT FEATURE_TYPE d OUTPUT POLYGON FEATURE_TYPE g OUTPUT LINE FEATURE_TYPE l OUTPUT POINT FEATURE_TYPE p";

std::string feature(const std::string& type, const std::string& geometry) {
  return type + " " + geometry;
}

TEST(DonutFactory, ShellsHolesIslandsPoints) {
  const std::vector<std::string> nested = {feature("a {n=3}", kIsland), feature("a {n=1}", kOuter),
                                           feature("a {n=2}", kInner)};
  const std::string hole = "2 2, 6 2, 6 6, 2 6, 2 2";
  check(
      "DonutFactory",
      {{kAll, nested, "g {n=3} " + std::string(kIsland) + "; d {n=1} " + kDonut,
        "Combined 3 input features into 0 point-in-polygon features, 1 donut polygon, 1 polygon, 0 lines, and 0 "
        "points"},
       {"DROP_HOLES" + kAll, nested, "g {n=3} " + std::string(kIsland) + "; g {n=1} " + kOuter, "Combined "},
       {"TAG_HOLES" + kAll, nested,
        "g {n=3} " + std::string(kIsland) + "; d {n=1} " + kDonut + "; g {n=2, tagged_hole=2} " + kInner, "Combined "},
       // a point joins the shell that it lies in, one in a hole or outside does not
       {kAll,
        {feature("a {n=1}", kOuter), feature("a {n=2}", kInner), "b {name=x} point 1 1", "b point 4 4", "b point 20 1"},
        "d {n=1, name=x} aggregate 1 1, 1 1, 8 10, 0 0, 9 0, 9 9, 0 9, 0 0, " + hole + "; p point 4 4; p point 20 1",
        "Combined 5 input features into 1 point-in-polygon feature, 0 donut polygons, 0 polygons, 0 lines, and 2 "
        "points"},
       // closed lines are rings, open ones leave; an aggregate is taken apart
       {kAll,
        {"a line 0 0, 1 1", "a line 0 0, 9 0, 9 9, 0 0", "a {k=7} aggregate 2 2, 5 5, 6 6, 1 1, 1 9"},
        "l line 0 0, 1 1; l {k=7} line 5 5, 6 6; g polygon 0 0, 9 0, 9 9, 0 0; p {k=7} point 1 9",
        "Combined "},
       // what is none of these is rejected
       {kAll,
        {"a", "a aggregate 4 90, 0 0", feature("a", kOuter)},
        "g " + std::string(kOuter),
        "Combined 3 input features into 0 point-in-polygon features, 0 donut polygons, 1 polygon, 0 lines, and 0 "
        "points. "
        "Rejected 2 features"},
       // groups and flushes are submodels of their own
       {"GROUP_BY n" + kAll, nested, "g {n=3} " + std::string(kIsland) + "; g {n=1} " + kOuter + "; g {n=2} " + kInner,
        "Combined "},
       {"FLUSH_BEFORE_CURRENT_WHEN n = 3" + kAll,
        {nested[1], nested[0]},
        "g {n=1} " + std::string(kOuter) + "; g {n=3} " + kIsland,
        "Combined 2 "},
       {"FLUSH_AFTER_CURRENT_WHEN n = 3" + kAll, nested, "g {n=3} " + std::string(kIsland) + "; d {n=1} " + kDonut,
        "Combined 3 "}});
}

// Boxes in boxes that touch each other and what they lie in, anywhere along an edge. A place is in one of the polygons
// that come out when an odd number of boxes holds it, and else in none.
TEST(DonutFactory, CoversWhatEvenOddTells) {
  constexpr unsigned kSeed = 20261125;
  constexpr int kSide = 24;
  struct Box {
    int left, bottom, right, top;
  };
  for (unsigned round = 0; round < 1500; ++round) {
    SCOPED_TRACE("seed " + std::to_string(kSeed + round));
    std::mt19937 random(kSeed + round);
    auto below = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
    std::vector<Box> open = {{0, 0, kSide, kSide}};
    std::vector<Box> boxes;
    while (!open.empty()) {
      Box box = open.back();
      open.pop_back();
      const int width = box.right - box.left, height = box.top - box.bottom;
      if (width > 2 && height > 2 && below(3) != 0) {  // two beside each other
        Box other = box;
        if (below(2) == 0)
          box.right = other.left = box.left + 1 + below(width - 1);
        else
          box.top = other.bottom = box.bottom + 1 + below(height - 1);
        open.push_back(box);
        open.push_back(other);
        continue;
      }
      if (below(4) == 0) continue;
      boxes.push_back(box);
      if (width < 3 || height < 3) continue;
      const Box inner = {box.left + below(2), box.bottom + below(2), box.right - below(2), box.top - below(2)};
      if (inner.right - inner.left < width || inner.top - inner.bottom < height) open.push_back(inner);
    }
    std::shuffle(boxes.begin(), boxes.end(), random);
    bool isOdd[kSide][kSide] = {};
    PipelineScope scope({"FACTORY_DEF K DonutFactory OUTPUT DONUT FEATURE_TYPE d OUTPUT POLYGON FEATURE_TYPE g"});
    VEXPipeline pipeline;
    ASSERT_EQ(numberOf(pipeline.configure("K")), 0U);
    for (const Box& box : boxes) {
      const auto point = [](int x, int y) { return std::to_string(x) + " " + std::to_string(y); };
      VEXFeaturePtr feature =
          makeFeature("a polygon " + point(box.left, box.bottom) + ", " + point(box.right, box.bottom) + ", " +
                      point(box.right, box.top) + ", " + point(box.left, box.top) + ", " + point(box.left, box.bottom));
      ASSERT_EQ(numberOf(pipeline.processFeature(feature)), 0U);
      for (int x = box.left; x < box.right; ++x)
        for (int y = box.bottom; y < box.top; ++y) isOdd[x][y] = !isOdd[x][y];
    }
    ASSERT_EQ(numberOf(pipeline.allDone()), 0U);
    int numHolders[kSide][kSide] = {};
    while (VEXFeaturePtr feature = pipeline.getOutputFeature()) {
      const VEXLine area = VEXLine::viewOf(*feature);
      for (int x = 0; x < kSide; ++x) {
        for (int y = 0; y < kSide; ++y) {
          bool isHeld = false;
          ASSERT_EQ(numberOf(area.containsPoint(x + 0.5, y + 0.5, isHeld)), 0U);
          if (isHeld) ++numHolders[x][y];
        }
      }
    }
    for (int x = 0; x < kSide; ++x)
      for (int y = 0; y < kSide; ++y) ASSERT_EQ(numHolders[x][y], isOdd[x][y] ? 1 : 0) << x << " " << y;
  }
}

// ORV_DEBUG tells of long searches, a line for every thousand features.
TEST(DonutFactory, TellsOfALongSearch) {
  for (const bool isTold : {true, false}) {
    PipelineScope scope({isTold ? "ORV_DEBUG DONUT_FACTORY" : "ORV_DEBUG FACTORY",
                         "FACTORY_DEF K DonutFactory OUTPUT POINT FEATURE_TYPE p"});
    scope.run(std::vector<std::string>(1500, "a point 1 1"));
    EXPECT_EQ(scope.engine.logged("Computing spatial closure of feature# 1"), isTold ? 2U : 0U);
  }
}

TEST(DonutHoleFactory, ShellAndHoles) {
  check("DonutHoleFactory", {{"OUTPUT OUTERSHELL FEATURE_TYPE s OUTPUT HOLE FEATURE_TYPE h",
                              {"a {n=1} " + kDonut, "a point 1 1"},
                              "s {n=1} " + std::string(kOuter) + "; h {n=1} " + kInner + "; s point 1 1",
                              "Split 1 hole from 2 input features"},
                             {"OUTPUT HOLE FEATURE_TYPE h", {"a " + kDonut}, "h " + std::string(kInner), "Split "}});
}

TEST(PIPComponentsFactory, SplitsPointAndPolygon) {
  const std::string outputs = "OUTPUT POINT FEATURE_TYPE p OUTPUT POLYGON FEATURE_TYPE g";
  check("PIPComponentsFactory",
        {{outputs,
          {"a {n=1} aggregate 1 1, 1 1, 4 5, 0 0, 9 0, 9 9, 0 9, 0 0"},
          "p {n=1} point 1 1; g {n=1} " + std::string(kOuter),
          "Split 1 point and polygon features into separate points"},
         {outputs,
          {"a aggregate 1 1, 1 1, 1 1, 2 2, 4 4, 0 0, 9 0, 9 9, 0 0", "a point 1 1", "a aggregate 4 99, 1 1"},
          "a aggregate 1 1, 1 1, 1 1, 2 2, 4 4, 0 0, 9 0, 9 9, 0 0; a point 1 1; a aggregate 4 99, 1 1",
          "Split 0 point and polygon features into separate points and polygons. Rejected 3 features"}});
}

TEST(ConvexHullFactory, HullOfAGroup) {
  const std::string outputs = " OUTPUT CONVEX_HULL FEATURE_TYPE h OUTPUT ORIGINAL FEATURE_TYPE o";
  check(
      "ConvexHullFactory",
      {{"GROUP_BY k" + outputs,
        {"a {k=1, n=1} point 0 0", "a {k=2} point 7 7", "a {k=1} line 4 0, 2 1, 4 4", "a {k=1} point 0 4"},
        "h {k=1, n=1} polygon 0 0, 4 0, 4 4, 0 4, 0 0; o {k=1, n=1} point 0 0; o {k=1} line 4 0, 2 1, 4 4; o {k=1} "
        "point "
        "0 4; "
        "h {k=2} point 7 7; o {k=2} point 7 7",
        "Enclosed 4 input features in 2 convex hulls"},
       {outputs, {"a line nan 0, 1 nan, nan 1"}, "o line nan 0, 1 nan, nan 1", "There is no convex hull of 1 feature"},
       {outputs,
        {"a aggregate 1 1, 5 5, 2 2, 0 0, 9 0"},
        "h polygon 0 0, 9 0, 5 5, 0 0; o aggregate 1 1, 5 5, 2 2, 0 0, 9 0",
        "Enclosed "},
       {"OUTPUT CONVEX_HULL FEATURE_TYPE h",
        {"a point 0 0 3", "a point 1 0", "a point 0 1"},
        "h polygon 0 0 3, 1 0 0, 0 1 0, 0 0 3",
        "Enclosed "}});
}

TEST(DeaggregateFactory, MembersByKind) {
  const std::string outputs = kAll + " OUTPUT AGGREGATE FEATURE_TYPE x";
  check("DeaggregateFactory", {{"LIST_NAME m" + outputs,
                                {"a {m{0}.n=one, m{1}.n=two, m{9}.n=ten} aggregate 1 1, 5 5, 2 2, 0 0, 9 0"},
                                "p {m{0}.n=one, m{1}.n=two, m{9}.n=ten, n=one} point 5 5; l {m{0}.n=one, m{1}.n=two, "
                                "m{9}.n=ten, n=two} line 0 0, 9 0",
                                "Split 1 input feature into 0 point-in-polygon features, 0 donut polygons, 0 polygons, "
                                "1 line, 1 point, and 0 aggregates"},
                               {outputs,
                                {"a aggregate", "a aggregate 4 90, 1 1", feature("a", kDonut), "a"},
                                feature("d", kDonut),
                                "Split 4 input features into 0 point-in-polygon features, 1 donut polygon, 0 polygons, "
                                "0 lines, 0 points, and 0 "
                                "aggregates. Rejected 3 features"},
                               {outputs,
                                {"a aggregate 512 4, 1 1, 1 1, 4 1, 2 2, 1 1, 0 0"},
                                "x aggregate 1 1, 1 1, 4 1, 2 2; p point 0 0",
                                "Split "}});
}

TEST(PolygonFactories, RefuseFaultyClauses) {
  checkFaults("DonutFactory", {{"FLUSH_BEFORE_CURRENT_WHEN n ~ 3", 41015},
                               {"FLUSH_AFTER_CURRENT_WHEN n", 41019},
                               {"OUTPUT HOLE FEATURE_TYPE a", 41002},
                               {"GROUP_BY a GROUP_BY b", 41006}});
  checkFaults("DonutHoleFactory", {{"OUTPUT FEATURE_TYPE a", 43002}, {"OUTPUT HOLES FEATURE_TYPE a", 43003}});
  checkFaults("PIPComponentsFactory", {{"OUTPUT POINT FEATURE_TYPE a OUTPUT POINT FEATURE_TYPE b", 46005}});
  checkFaults("ConvexHullFactory", {{"GROUP_BY a GROUP_BY b", 861514}, {"OUTPUT HULL FEATURE_TYPE a", 861510}});
  checkFaults("DeaggregateFactory", {{"LIST_NAME m{0}", 863006}, {"LIST_NAME m LIST_NAME n", 863005}});
}

}  // namespace
