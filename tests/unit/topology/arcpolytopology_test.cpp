// Areas and lines taken apart into arcs that know their polygons, polygons that list their arcs, and the universe.
#include "vex/topology/arcpolytopology.h"
#include "tests/unit/topology/topotest.h"

namespace {

VEXArcPolyNames allNames() {
  VEXArcPolyNames names;
  names.arcType = "arc";
  names.arcNumber = "no";
  names.leftPolygon = "left";
  names.rightPolygon = "right";
  names.polygonNumber = "polygon";
  names.arcList = "arcs";
  names.perimeter = "perimeter";
  names.area = "area";
  names.universeMark = "kind";
  return names;
}

struct Model {
  VEXFeatureVector arcs, polygons;
  VEXFeaturePtr universe;

  explicit Model(std::initializer_list<const char*> features, std::size_t maxVertices = 0) {
    VEXArcPolyTopology topology({}, maxVertices);
    for (const char* text : features) {
      VEXFeaturePtr feature = makeFeature(text);
      EXPECT_EQ(topology.addFeature(feature), nullptr) << text;
      EXPECT_EQ(feature, nullptr);
    }
    EXPECT_EQ(topology.run(allNames(), arcs, polygons, universe), nullptr);
  }
};

std::string valueOf(const VEXFeature& feature, const std::string& name) {
  const VEXText* value = feature.findAttribute(VEXName::intern(name));
  return std::string(value == nullptr ? "-" : value->view());
}

std::string arcsOf(const VEXFeature& polygon) {
  std::string text;
  for (int i = 0;; ++i) {
    const std::string entry = valueOf(polygon, "arcs{" + std::to_string(i) + "}");
    if (entry == "-") return text;
    text += (i > 0 ? " " : "") + entry;
  }
}

// "1:arc left/right 2:... | polygon arcs area | universe arcs area"
std::string textOf(const Model& model) {
  std::string text;
  for (const VEXFeaturePtr& arc : model.arcs)
    text += valueOf(*arc, "no") + ":" + arc->featureType() + " " + valueOf(*arc, "left") + "/" +
            valueOf(*arc, "right") + " ";
  for (const VEXFeaturePtr& polygon : model.polygons)
    text += "| " + polygon->featureType() + valueOf(*polygon, "polygon") + ": " + arcsOf(*polygon) + ", " +
            valueOf(*polygon, "perimeter") + ", " + valueOf(*polygon, "area") + " ";
  if (model.universe)
    text += "| universe: " + arcsOf(*model.universe) + ", " + valueOf(*model.universe, "perimeter") + ", " +
            valueOf(*model.universe, "area");
  return text;
}

TEST(ArcPolyTopology, Pictures) {
  struct Row {
    std::initializer_list<const char*> features;
    const char* expected;
  };
  const char* const square = "p polygon 0 0, 0 10, 10 10, 10 0, 0 0";  // clockwise
  const char* const turned = "p polygon 0 0, 10 0, 10 10, 0 10, 0 0";
  const char* const donut = "d donut 0 0, 0 10, 10 10, 10 0, 0 0, 2 2, 4 2, 4 4, 2 4, 2 2";
  for (const Row& row : {
           // one polygon alone: one arc, and the universe has it the other way
           Row{{square}, "1:arc 0/1 | p1: 1, 40, 100 | universe: -1, 40, -100"},
           Row{{turned}, "1:arc 1/0 | p1: -1, 40, 100 | universe: 1, 40, -100"},
           // two that share an edge: three arcs
           Row{{square, "q polygon 10 0, 10 10, 20 10, 20 0, 10 0"},
               "1:arc 2/1 2:arc 0/1 3:arc 0/2 | p1: 1 2, 40, 100 | q2: -1 3, 40, 100 | universe: -2 -3, 60, -200"},
           // a hole, and a polygon in it
           Row{{donut}, "1:arc 0/1 2:arc 0/1 | d1: 1 0 2, 48, 96 | universe: -1 0 -2, 48, -96"},
           Row{{donut, "q polygon 2 2, 4 2, 4 4, 2 4, 2 2"},
               "1:arc 0/1 2:arc 2/1 | d1: 1 0 2, 48, 96 | q2: -2, 8, 4 | universe: -1, 40, -100"},
           // areas that overlap: the universe has their common outline; one within the other is no border
           Row{{square, "q polygon 5 0, 5 10, 15 10, 15 0, 5 0"},
               "1:arc 0/1 2:arc 0/1 3:arc 0/1 4:arc 0/1 5:arc 0/2 6:arc 0/2 | p1: 1 2 3 4, 40, 100 | q2: 1 6 3 5, 40, "
               "100 | "
               "universe: -1 -4 -3 -6, 50, -150"},
           Row{{square, "q polygon 2 2, 2 4, 4 4, 4 2, 2 2"},
               "1:arc 0/1 2:arc 0/2 | p1: 1, 40, 100 | q2: 2, 8, 4 | universe: -1, 40, -100"},
           // lines: within a polygon, outside, along the boundary, through it
           Row{{"l line 4 4, 6 6", square}, "1:arc 0/1 2:l 1/1 | p1: 1, 40, 100 | universe: -1, 40, -100"},
           Row{{"l line 14 4, 16 6", square}, "1:arc 0/1 2:l 0/0 | p1: 1, 40, 100 | universe: -1, 40, -100"},
           Row{{"l line 3 3, 3.5 3.5", donut},
               "1:arc 0/1 2:arc 0/1 3:l 0/0 | d1: 1 0 2, 48, 96 | universe: -1 0 -2, 48, -96"},
           // lines alone: no universe
           Row{{"l line 0 0, 10 10", "m line 0 10, 10 0"}, "1:l 0/0 2:l 0/0 3:m 0/0 4:m 0/0 "},
           Row{{"l line"}, ""},
           Row{{}, ""},
       })
    EXPECT_EQ(textOf(Model(row.features)), row.expected);
}

TEST(ArcPolyTopology, LinesKeepTheirAttributesAndAreasTheirs) {
  const Model model({"p {name=field} polygon 0 0, 0 10, 10 10, 10 0, 0 0", "l {width=4} line -5 5, 15 5"});
  ASSERT_EQ(model.arcs.size(), 5U);
  std::string lines;
  for (const VEXFeaturePtr& arc : model.arcs)
    if (arc->featureType() == "l") lines += describe(*arc) + "\n";
  EXPECT_EQ(lines,
            "l {left=0, no=3, right=0, width=4} line -5 5, 0 5\n"
            "l {left=1, no=4, right=1, width=4} line 0 5, 10 5\n"
            "l {left=0, no=5, right=0, width=4} line 10 5, 15 5\n");
  ASSERT_EQ(model.polygons.size(), 1U);
  EXPECT_EQ(valueOf(*model.polygons[0], "name"), "field");
  EXPECT_EQ(model.polygons[0]->numCoords(), 0U);
  EXPECT_EQ(valueOf(*model.universe, "kind"), "border segment");
}

TEST(ArcPolyTopology, RingsComeInOrderWhateverOrderTheirPiecesHaveBeenCut) {
  // A grid of squares: each polygon's arcs follow each other end to end.
  VEXArcPolyTopology topology;
  for (int i = 0; i < 25; ++i) {
    const int x = i * 7 % 25 % 5;
    const int y = i * 7 % 25 / 5;
    auto at = [](int px, int py) { return std::to_string(px) + " " + std::to_string(py); };
    std::string text =
        "s polygon " + at(x, y) + ", " + at(x, y + 1) + ", " + at(x + 1, y + 1) + ", " + at(x + 1, y) + ", " + at(x, y);
    VEXFeaturePtr feature = makeFeature(text);
    ASSERT_EQ(topology.addFeature(feature), nullptr);
  }
  VEXFeatureVector arcs, polygons;
  VEXFeaturePtr universe;
  ASSERT_EQ(topology.run(allNames(), arcs, polygons, universe), nullptr);
  EXPECT_EQ(topology.totalArea(), 25.0);
  EXPECT_EQ(arcs.size(), 56U);  // 60 edges; at each corner of the whole two are one arc
  polygons.push_back(std::move(universe));
  for (const VEXFeaturePtr& polygon : polygons) {
    std::vector<std::string> entries;
    splitAt(arcsOf(*polygon), ' ', entries);
    double area = 0.0;
    std::vector<double> x, y;
    for (const std::string& entry : entries) {
      const int id = std::stoi(entry);
      ASSERT_NE(id, 0);  // one ring each
      const VEXFeature& arc = *arcs[static_cast<std::size_t>(std::abs(id)) - 1];
      VEXLine line = arc.buildLine();
      if (id < 0) line.reverse(0, line.numCoords() - 1);
      if (!x.empty()) {
        EXPECT_EQ(line.xs().front(), x.back());
        EXPECT_EQ(line.ys().front(), y.back());
      }
      x.insert(x.end(), line.xs().begin(), line.xs().end());
      y.insert(y.end(), line.ys().begin(), line.ys().end());
    }
    EXPECT_EQ(x.front(), x.back());
    EXPECT_EQ(y.front(), y.back());
    area = signedRingArea(x, y);
    EXPECT_EQ(area, polygon == polygons.back() ? 25.0 : -1.0);  // with the polygon, or the universe, on the right
  }
}

TEST(ArcPolyTopology, LongArcsAreCutAndBadFeaturesStayWithTheCaller) {
  const Model model({"p polygon 0 0, 0 10, 10 10, 10 0, 0 0"}, 3);
  ASSERT_EQ(model.arcs.size(), 2U);
  EXPECT_EQ(arcsOf(*model.polygons.at(0)), "1 2");
  VEXArcPolyTopology topology;
  VEXFeaturePtr bad = makeFeature("p polygon 0 0, 0 10, nan 10, 0 0");
  EXPECT_EQ(numberOf(topology.addFeature(bad)), 328003U);
  EXPECT_NE(bad, nullptr);
  bad = makeFeature("l line 0 0, 1e80 10");
  EXPECT_EQ(numberOf(topology.addFeature(bad)), 328003U);
  bad = makeFeature("a aggregate 2 9, 1 1");
  EXPECT_EQ(numberOf(topology.addFeature(bad)), 244023U);
  EXPECT_NE(bad, nullptr);
  VEXFeatureVector arcs, polygons;
  VEXFeaturePtr universe;
  EXPECT_EQ(topology.run({}, arcs, polygons, universe), nullptr);
  EXPECT_EQ(numberOf(topology.run({}, arcs, polygons, universe)), 328006U);
  EXPECT_EQ(numberOf(topology.addFeature(bad)), 328006U);
}

}  // namespace
