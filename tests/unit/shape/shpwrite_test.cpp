// Writing Shape: bytes, refusals, rings in order, limits, and what is left behind.
#include <random>

#include "tests/unit/shape/shapetest.h"

namespace {

using namespace std::string_literals;

// The first content of s.shp, without its box where it has one.
std::string withoutBox(const std::string& content) {
  return content.substr(0, 4) + content.substr(36);
}

TEST_F(ShapeTest, WritesTheBytesOfOtherPrograms) {
  struct Row {
    const char* type;
    const char* feature;
    std::string content;  // behind its box
  };
  constexpr double kNoData = -1.7976931348623157e308;
  auto multi = [](std::uint32_t type, const Reals& values) {
    return little(type) + std::string(32, '\0') + little(2) + reals(values);
  };
  for (const Row& row :
       {Row{"shape_arc", "s line 100 0, 101 1, 101 1, 102 2, 103 3",
            parts(3, {0, 2}, {100, 0, 101, 1, 102, 2, 103, 3})},
        Row{"shape_polygon", "s polygon 100 0, 100 1, 101 1, 101 0, 100 0",
            parts(5, {0}, {100, 0, 100, 1, 101, 1, 101, 0, 100, 0})},
        Row{"shape_multipoint", "s 32 100 0, 100 0, 101 1, 101 1", multi(8, {100, 0, 101, 1})},
        Row{"shape_multipointz", "s 32 0 1 2, 0 1 2, 3 4 5, 3 4 5", multi(18, {0, 1, 3, 4, 2, 5, 2, 5})},
        Row{"shape_multipointm", "s line 0 1, 3 4", multi(28, {0, 1, 3, 4, kNoData, kNoData, kNoData, kNoData})},
        Row{"shape_polylinem", "s line 0 0 10, 1 1 20", parts(23, {0}, {0, 0, 1, 1}, {10, 20, 10, 20})},
        Row{"shape_polylinez", "s line 0 0 8, 1 1 7", parts(13, {0}, {0, 0, 1, 1}, {7, 8, 8, 7})},
        Row{"shape_polylinez", "s {SHAPE_MEASURES=2.5 -} line 0 0, 1 1",
            parts(13, {0}, {0, 0, 1, 1}, {0, 0, 0, 0, 2.5, 2.5, 2.5, kNoData})},
        Row{"shape_polylinez", "s {SHAPE_MEASURES=2.5} line 0 0, 1 1", parts(13, {0}, {0, 0, 1, 1}, {0, 0, 0, 0})}}) {
    EXPECT_EQ(writeAll(row.type, std::vector<std::string>{row.feature}), "");
    EXPECT_EQ(withoutBox(bytesOf("s.shp").substr(108)), withoutBox(row.content)) << row.feature;
  }
  for (const auto& [type, feature, content] : std::vector<std::tuple<const char*, const char*, std::string>>{
           {"shape_point", "s point 100 0", point(1, {100, 0})},
           {"shape_pointz", "s {SHAPE_MEASURES=4} point 1 2 3", point(11, {1, 2, 3, 4})},
           {"shape_pointz", "s point 1 2", point(11, {1, 2, 0, kNoData})},
           {"shape_pointm", "s point 1 2 3", point(21, {1, 2, 3})},
           {"shape_point", "s", little(0)},
           {"shape_polygon", "s polygon", little(0)},
           {"shape_null", "s", little(0)}}) {
    EXPECT_EQ(writeAll(type, std::vector<std::string>{feature}), "");
    EXPECT_EQ(bytesOf("s.shp").substr(108), content) << feature;
  }
  // The whole of both files: one point, one null shape; the box is that of the point.
  EXPECT_EQ(writeAll("shape_point", std::vector<std::string>{"s point 100 0 5", "s"}), "");
  const std::string head = "\0\0\x27\x0a"s + std::string(20, '\0');
  const std::string rest = "\xe8\x03\0\0\x01\0\0\0"s + reals({100, 0, 100, 0, 5, 5, 0, 0});
  EXPECT_EQ(bytesOf("s.shp"),
            head + big(70) + rest + big(1) + big(10) + point(1, {100, 0}) + big(2) + big(2) + little(0));
  EXPECT_EQ(bytesOf("s.shx"), head + big(58) + rest + big(50) + big(10) + big(64) + big(2));
  EXPECT_EQ(writeAll("shape_pointz", std::vector<std::string>{"s point 100 0 5"}), "");
  EXPECT_EQ(bytesOf("s.shp").substr(68, 16), std::string(16, '\0')) << "types with z have no z range in the header";
}

TEST_F(ShapeTest, RefusesWhatTheTypeCannotTake) {
  struct Row {
    const char* type;
    const char* feature;
    const char* result;
  };
  for (const Row& row :
       {Row{"shape_arc", "s point 1 1", "#204010"}, Row{"shape_polygonz", "s 32 1 1, 1 1, 2 2, 2 2", "#204010"},
        Row{"shape_arc", "s aggregate 2 2, 0 0, 1 1, 1 1, 5 5", "#204010"},
        Row{"shape_arc", "s 16 0 0, 1 1, 1 1, 5 5", "#204010"}, Row{"shape_point", "s line 1 1, 2 2", "#204011"},
        Row{"shape_polygon", "s line 0 0, 0 1, 1 1, 0 0", "#204011"},
        Row{"shape_point", "s polygon 0 0, 0 1, 1 1, 0 0", "#204008"},
        Row{"shape_point", "s 32 1 1, 1 1, 2 2, 2 2", "#204008"}, Row{"", "s point 1 1", "#204008"}, Row{"", "s", ""},
        Row{"shape_null", "s line 0 0, 1 1", "#204008"}, Row{"shape_arc", "s 0 0 0, 1 1", "#204008"},
        Row{"shape_polygon", "s polygon 0 0, 1 1", "#204018"},
        Row{"shape_polygon", "s polygon 0 0, 1 1, 0 0", "#204018"},
        Row{"shape_polygon", "s polygon 1 1, 1 1, 1 1", "#204018"},
        Row{"shape_polygon", "s aggregate 4 9, 0 0, 1 1", "#204020"},
        Row{"shape_point", "s aggregate 7 1, 0 0", "#204020"},
        Row{"shape_polygon", "s polygon 0 0, 0 nan, 1 1, 0 0", "#204022"},
        Row{"shape_arc", "s line 0 0, inf 1", "#204022"}, Row{"shape_multipatch", "s", "#204009"},
        Row{"shape_circle", "s", "#204009"},
        // What is taken, perhaps against expectation.
        Row{"shape_arc", "s polygon 0 0, 0 1, 1 1, 0 0", ""},
        Row{"shape_multipoint", "s polygon 0 0, 0 1, 1 1, 0 0", ""}, Row{"shape_point", "s 256 1 1", ""},
        Row{"shape_polygon", "s aggregate 2 4, 0 0, 0 1, 1 1, 0 0", ""}}) {
    EXPECT_EQ(writeAll(row.type, std::vector<std::string>{row.feature}), row.result) << row.type << " " << row.feature;
  }
  EXPECT_EQ(scope_.logged("its outline is taken for one"), 1u);
  EXPECT_EQ(scope_.logged("names no SHAPE_GEOMETRY"), 2u);
}

TEST_F(ShapeTest, PutsRingsInOrder) {
  for (const auto& [feature, result] : std::vector<std::pair<const char*, const char*>>{
           {"s polygon 0 0, 1 0, 1 1, 0 1", "0 0, 0 1, 1 1, 1 0, 0 0"},
           {"s polygon 0 0, 0 1, 0 1, 1 1, 1 0, 0 0", "0 0, 0 1, 1 1, 1 0, 0 0"},
           {"s polygon 0 0, 0 0, 0 1, 1 1, 0 0", "0 0, 0 1, 1 1, 0 0"},
           {"s polygon 5 5, 6 6, 5 5, 0 0, 0 1, 1 1, 0 0", "0 0, 0 1, 1 1, 0 0"},
           {"s donut 0 0, 0 9, 9 9, 9 0, 0 0, 1 1, 1 2, 2 2, 1 1", "0 0, 0 9, 9 9, 9 0, 0 0, 1 1, 2 2, 1 2, 1 1"},
           // A hole that touches its shell where both begin, and a shell that touches another there.
           {"s polygon 0 0, 0 9, 9 9, 9 0, 0 0, 0 0, 2 5, 5 2, 0 0", "0 0, 0 9, 9 9, 9 0, 0 0, 0 0, 5 2, 2 5, 0 0"},
           {"s polygon 0 0, 0 9, 9 9, 9 0, 0 0, 0 0, -2 -5, -5 -2, 0 0",
            "0 0, 0 9, 9 9, 9 0, 0 0, 0 0, -2 -5, -5 -2, 0 0"},
           // Neighbours that share an edge are two shells.
           {"s polygon 0 0, 0 4, 4 4, 4 0, 0 0, 4 0, 8 0, 8 4, 4 4, 4 0",
            "0 0, 0 4, 4 4, 4 0, 0 0, 4 0, 4 4, 8 4, 8 0, 4 0"},
           // An island in a hole.
           {"s aggregate 4 4, 3 3, 4 4, 4 3, 3 3, 8 10, 0 0, 0 9, 9 9, 9 0, 0 0, 1 1, 1 8, 8 8, 8 1, 1 1",
            "3 3, 4 4, 4 3, 3 3, 0 0, 0 9, 9 9, 9 0, 0 0, 1 1, 8 1, 8 8, 1 8, 1 1"}}) {
    EXPECT_EQ(writeAll("shape_polygon", std::vector<std::string>{feature}), "");
    EXPECT_EQ(readAll(), "s {N=} polygon "s + result) << feature;
  }
}

// Ring order held against the plain answer: a ring is a hole when an odd number of the others hold its middle.
TEST(ShapeRings, AgreeWithCountingOnRandomSquares) {
  std::mt19937 random(20260101);
  for (int round = 0; round < 200; ++round) {
    std::vector<double> xs, ys;
    std::vector<ShapeRing> rings;
    std::vector<std::array<double, 4>> boxes;  // of nested or separate squares: a square goes where it meets no edge
    for (int tries = 0; tries < 60; ++tries) {
      const double x = random() % 100, y = random() % 100, side = 1 + random() % 50;
      const std::array<double, 4> box = {x, y, x + side, y + side};
      auto isClear = [&](const auto& other) {
        const bool apart = box[0] > other[2] || other[0] > box[2] || box[1] > other[3] || other[1] > box[3];
        const bool within = box[0] > other[0] && box[1] > other[1] && box[2] < other[2] && box[3] < other[3];
        const bool around = box[0] < other[0] && box[1] < other[1] && box[2] > other[2] && box[3] > other[3];
        return apart || within || around;
      };
      if (!std::all_of(boxes.begin(), boxes.end(), isClear)) continue;
      boxes.push_back(box);
      const double sign = random() % 2 == 0 ? 1.0 : -1.0;
      rings.push_back({.first = xs.size(), .count = 5, .area = sign * side * side});
      for (const auto& [dx, dy] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}}) {
        xs.push_back(x + side * (sign > 0 ? dx : dy));
        ys.push_back(y + side * (sign > 0 ? dy : dx));
      }
    }
    ASSERT_TRUE(ShapeRingOrder().order(xs, ys, rings));
    for (std::size_t i = 0; i < rings.size(); ++i) {
      std::ptrdiff_t parent = -1;
      std::uint32_t depth = 0;
      for (std::size_t j = 0; j < rings.size(); ++j) {
        if (!(boxes[i][0] > boxes[j][0] && boxes[i][0] < boxes[j][2] && boxes[i][1] > boxes[j][1] &&
              boxes[i][1] < boxes[j][3]))
          continue;
        ++depth;
        if (parent < 0 || boxes[j][0] > boxes[static_cast<std::size_t>(parent)][0])
          parent = static_cast<std::ptrdiff_t>(j);
      }
      EXPECT_EQ(rings[i].depth, depth) << round;
      EXPECT_EQ(rings[i].parent, parent) << round;
    }
  }
}

TEST_F(ShapeTest, MovesASecondPartAwayFrom1498) {
  for (const std::uint32_t index : {1497u, 1498u, 1499u}) {
    for (const bool isClockwise : {true, false}) {
      std::string text = "s polygon ";
      for (std::uint32_t i = 0; i + 2 < index; ++i)
        text += (isClockwise ? std::to_string(i) + " 1000, " : std::to_string(index - i) + " 1000, ");
      text += isClockwise ? "9999 0, 0 1000, " : "-9 0, " + std::to_string(index) + " 1000, ";
      std::vector<VEXFeaturePtr> features;
      features.push_back(makeFeature(text + "0 -10, 0 -9, 1 -9, 0 -10"));
      ASSERT_EQ(writeAll("shape_polygon", features, true), "");
      const std::string content = bytesOf("s.shp").substr(108);
      EXPECT_EQ(content.substr(48, 4), little(index == 1498 ? 1499 : index));
      const Reals first =
          isClockwise ? Reals{0, 1000, 0.5, 1000, 1, 1000} : Reals{1498, 1000, (1498 - 9) / 2.0, 500, -9, 0};
      if (index == 1498) {
        EXPECT_EQ(content.substr(52, 48), reals(first));
      }
    }
  }
}

TEST_F(ShapeTest, WritesBackWhatItRead) {
  std::mt19937 random(19980812);
  auto number = [&] {
    return std::to_string(static_cast<int>(random() % 2000) - 1000) + "." + std::to_string(random() % 9 + 1);
  };
  for (const auto& [type, isArea, dimension] :
       std::vector<std::tuple<const char*, bool, int>>{{"shape_arc", false, 2},
                                                       {"shape_polylinez", false, 3},
                                                       {"shape_polylinem", false, 3},
                                                       {"shape_polygon", true, 2},
                                                       {"shape_polygonz", true, 3}}) {
    std::vector<std::string> texts;
    VEXStringVector wanted;
    for (int i = 0; i < 200; ++i) {
      std::string text = isArea ? "polygon " : "line ";
      for (std::uint32_t part = 0, numParts = 1 + random() % 4; part < numParts; ++part) {
        const double x = part * 5000.0;  // apart from each other, clockwise
        std::vector<std::string> coordinates;
        for (const auto& [dx, dy] : {std::pair{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}})
          coordinates.push_back(isArea ? std::to_string(x + dx) + " " + std::to_string(dy) : number() + " " + number());
        for (std::string& coordinate : coordinates)
          if (dimension == 3)
            coordinate += " " + std::to_string(&coordinate == &coordinates.back() && isArea ? 1 : i + 1);
        if (isArea && dimension == 3) coordinates[0] = coordinates.back();
        if (!isArea && part + 1 < numParts) coordinates.push_back(coordinates.back());
        for (const std::string& coordinate : coordinates) text += (text.back() == ' ' ? "" : ", ") + coordinate;
      }
      texts.push_back("s {N=" + std::to_string(i % 100) + "} " + text);
      wanted.push_back(describe(*makeFeature(texts.back())));
    }
    ASSERT_EQ(writeAll(type, texts), "");
    EXPECT_EQ(readAll(), joined(wanted, "; ")) << type;
  }
  // One record that is larger than any buffer.
  VEXFeaturePtr large = makeFeature("s {N=1} line");
  for (int i = 0; i < 400000; ++i) large->addCoord(i, -i);
  const std::string whole = describe(*large);
  std::vector<VEXFeaturePtr> features;
  features.push_back(std::move(large));
  features.push_back(makeFeature("s {N=2} line 0 0, 1 1"));
  ASSERT_EQ(writeAll("shape_arc", features), "");
  EXPECT_EQ(readAll(), whole + "; s {N=2} line 0 0, 1 1");
}

TEST_F(ShapeTest, LeavesWholeDatasetsOnly) {
  std::vector<VEXFeaturePtr> features;
  for (int i = 0; i < 9; ++i) features.push_back(makeFeature("s {N=" + std::to_string(i) + "} point 1 1"));
  EXPECT_EQ(writeAll("shape_point", features, false, 100 + 3 * 28 + 27), "#204021");
  EXPECT_EQ(readAll(), "s {N=0} point 1 1; s {N=1} point 1 1; s {N=2} point 1 1") << "a full dataset can be read";
  for (const char* name : {"s.shp", "s.shx", "s.dbf"}) std::filesystem::remove(at(name));

  VEXGroup group("s", "", "");
  group.setSequenced("SHAPE_GEOMETRY", "shape_point");
  group.setSequenced("N", "char(2)");
  {
    ShapeWriteChannel channel(at("s"), group, false);
    ASSERT_EQ(numberOf(channel.writeFeatureImp(*features[0])), 0u);
    EXPECT_EQ(bytesOf("s.shp").substr(24, 4), big(50)) << "until it is closed it tells of nothing";
    channel.abort();
    EXPECT_TRUE(namesThere().empty());
  }
  for (const auto& [name, number] : std::vector<std::pair<const char*, std::string>>{
           {"s.shp", "#204002"}, {"s.shx", "#204003"}, {"s.dbf", "#301003"}}) {
    std::filesystem::create_directory(at(name));
    EXPECT_EQ(writeAll("shape_point", std::vector<std::string>{"s point 1 1"}), number);
    EXPECT_EQ(namesThere(), VEXStringVector{name});
    std::filesystem::remove(at(name));
  }
  group.setSequenced("lower", "char(2)");
  ShapeWriteChannel channel(at("s"), group, false);
  EXPECT_EQ(numberOf(channel.writeFeatureImp(*features[0])), 301007u);
  channel.abort();
  EXPECT_TRUE(namesThere().empty());
}

// More feature types than files can be open: the last ones wait and are written behind the others.
TEST_F(ShapeTest, WritesMoreTypesThanItKeepsOpen) {
  for (const char* row : {"READER_TYPE FAKE", "READER_KEYWORD R", "WRITER_TYPE SHAPE", "WRITER_KEYWORD S"})
    scope_.row(row);
  for (int i = 0; i < 135; ++i) {
    const std::string name = "t." + std::to_string(i);
    scope_.row("S_DEF " + name + " SHAPE_GEOMETRY shape_point N char(2)");
    scope_.row("R " + name + " N %n");
    scope_.row("S " + name + " N %n");
  }
  for (int i = 0; i < 270; ++i)
    scope_.fake.source.push_back("t." + std::to_string(i % 135) + " {N=x} point 1 " + std::to_string(i));
  EXPECT_EQ(scope_.translate(), 0u);
  EXPECT_EQ(namesThere().size(), 3u * 135);
  VEXConfiguration::setValue("S_DATASET", at("t_134.shp"));
  scope_.row("S_IDs t_134");
  EXPECT_EQ(readAll(), "t_134 {N=x} point 1 134; t_134 {N=x} point 1 269");
  VEXConfiguration::setValue("S_DATASET", directory_);
  scope_.row("S_DEF t_1 SHAPE_GEOMETRY shape_point");
  scope_.row("R q");
  scope_.row("S t_1");
  scope_.fake.source = {"t.1 point 1 1", "q point 1 1"};
  EXPECT_EQ(scope_.translate(), 206004u) << "two names, one file";
}

}  // namespace
