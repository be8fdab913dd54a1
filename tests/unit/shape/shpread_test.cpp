// Reading Shape: geometry of every type, and files that are broken on purpose.
#include <cmath>

#include "tests/unit/shape/shapetest.h"

namespace {

constexpr double kNoData = -1.7976931348623157e308;

const Reals kSquare = {0, 0, 0, 9, 9, 9, 9, 0, 0, 0};
const Reals kHole = {2, 2, 4, 2, 4, 4, 2, 4, 2, 2};

Reals operator+(Reals a, const Reals& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

TEST_F(ShapeTest, ReadsEveryType) {
  struct Row {
    std::uint32_t type;
    std::string content, feature;
    std::string aggregate = {};  // with _MULTI_PART AGGREGATE, where that is different
  };
  const std::string null = little(0);
  for (const Row& row : {
           Row{1, point(1, {3, 4}), "s point 3 4"},
           Row{1, null, "s"},
           Row{1, point(1, {NAN, 4}), "s"},
           Row{11, point(11, {1, 2, 3}), "s point 1 2 3"},
           Row{11, point(11, {1, 2, 3, 4.25}), "s {SHAPE_MEASURES=4.25} point 1 2 3"},
           Row{11, point(11, {1, 2, 3, kNoData}), "s point 1 2 3"},
           Row{21, point(21, {1, 2, 3}), "s point 1 2 3"},
           Row{21, point(21, {1, 2, kNoData}), "s point 1 2"},
           Row{21, point(21, {1, 2}), "s point 1 2"},
           // Lines: the break stands twice, repeated points do not.
           Row{3, parts(3, {0}, {1, 1, 1, 1, 2, 2, 2, 2}), "s line 1 1, 2 2"},
           Row{3, parts(3, {0, 2}, {1, 1, 2, 2, 2, 2, 3, 3}), "s line 1 1, 2 2, 2 2, 2 2, 3 3",
               "s aggregate 2 2, 1 1, 2 2, 2 2, 2 2, 3 3"},
           Row{3, parts(3, {0, 2, 2}, {1, 1, 2, 2, 3, 3, 4, 4}), "s line 1 1, 2 2, 2 2, 3 3, 4 4",
               "s aggregate 2 2, 1 1, 2 2, 2 2, 3 3, 4 4"},
           Row{3, parts(3, {}, {1, 1, 2, 2}), "s"},
           Row{13, parts(13, {0}, {1, 1, 2, 2}, {0, 0, 7, 8}), "s line 1 1 7, 2 2 8"},
           Row{13, parts(13, {0, 2}, {1, 1, 2, 2, 3, 3}, {0, 0, 7, 8, 9, 0, 0, 5, kNoData, 0.1}),
               "s {SHAPE_MEASURES=5 - - 0.1} line 1 1 7, 2 2 8, 2 2 8, 3 3 9",
               "s {SHAPE_MEASURES=- 5 - - 0.1} aggregate 2 2 0, 1 1 7, 2 2 8, 2 1 0, 3 3 9"},
           Row{23, parts(23, {0}, {1, 1, 2, 2}, {0, 0, 7, 8}), "s line 1 1 7, 2 2 8"},
           Row{23, parts(23, {0}, {1, 1, 2, 2}), "s line 1 1, 2 2"},
           // Areas: closed, degenerate rings gone, a point in the middle equal to the first stands twice.
           Row{5, parts(5, {0}, {0, 0, 0, 9, 9, 9}), "s polygon 0 0, 0 9, 9 9, 0 0"},
           Row{5, parts(5, {0, 3}, Reals{1, 1, 2, 2, 1, 1} + kSquare), "s polygon 0 0, 0 9, 9 9, 9 0, 0 0"},
           Row{5, parts(5, {0}, {1, 1, 1, 1, 2, 2, 1, 1}), "s"},
           Row{5, parts(5, {0}, {0, 0, 0, 1, 1, 0, 0, 0, 0, -1, -1, 0, 0, 0}),
               "s polygon 0 0, 0 1, 1 0, 0 0, 0 0, 0 -1, -1 0, 0 0"},
           Row{5, parts(5, {0}, {0, 0, 0, 1, 1, 0, 0, 0, 0, 0}), "s polygon 0 0, 0 1, 1 0, 0 0"},
           Row{5, parts(5, {0, 5}, kHole + kSquare), "s polygon 2 2, 4 2, 4 4, 2 4, 2 2, 0 0, 0 9, 9 9, 9 0, 0 0",
               "s donut 0 0, 0 9, 9 9, 9 0, 0 0, 2 2, 4 2, 4 4, 2 4, 2 2"},
           Row{5, parts(5, {0, 5, 10}, kSquare + kHole + Reals{3, 3, 3, 3.5, 3.5, 3, 3, 3}),
               "s polygon 0 0, 0 9, 9 9, 9 0, 0 0, 2 2, 4 2, 4 4, 2 4, 2 2, 3 3, 3 3.5, 3.5 3, 3 3",
               "s aggregate 8 10, 0 0, 0 9, 9 9, 9 0, 0 0, 2 2, 4 2, 4 4, 2 4, 2 2, 4 4, 3 3, 3 3.5, 3.5 3, 3 3"},
           Row{15, parts(15, {0}, {0, 0, 0, 9, 9, 9}, {0, 0, 1, 2, 3}), "s polygon 0 0 1, 0 9 2, 9 9 3, 0 0 1"},
           Row{8, little(8) + std::string(32, '\0') + little(2) + reals({1, 2, 3, 4}), "s 32 1 2, 1 2, 3 4, 3 4",
               "s aggregate 1 1, 1 2, 1 1, 3 4"},
           Row{18, little(18) + std::string(32, '\0') + little(1) + reals({1, 2, 0, 0, 5}), "s 32 1 2 5, 1 2 5",
               "s point 1 2 5"},
           Row{28, little(28) + std::string(32, '\0') + little(1) + reals({1, 2, 0, 0, 5}), "s 32 1 2 5, 1 2 5",
               "s point 1 2 5"},
       }) {
    EXPECT_EQ(readAll(row.type, {row.content}), row.feature);
    scope_.row("S_MULTI_PART AGGREGATE");
    EXPECT_EQ(readAll(), row.aggregate.empty() ? row.feature : row.aggregate);
    VEXConfiguration::setValue("S_MULTI_PART", "");
  }
  EXPECT_GT(scope_.logged("is no area and was left out"), 0u);
}

TEST_F(ShapeTest, RefusesOneRecordAndGoesOn) {
  const std::string good = parts(5, {0}, kSquare);
  const std::string fine = "s polygon 0 0, 0 9, 9 9, 9 0, 0 0";
  auto with = [&](std::size_t place, std::uint32_t value) {
    return std::string(good).replace(place, 4, little(value));
  };
  for (const auto& [content, number] :
       std::vector<std::pair<std::string, std::string>>{{with(0, 3), "#203012"},
                                                        {with(0, 31), "#203018"},
                                                        {with(0, 77), "#203018"},
                                                        {with(36, 2), "#203013"},
                                                        {with(36, 0xFFFFFFFF), "#203013"},
                                                        {with(40, 6), "#203013"},
                                                        {with(40, 0xFFFFFFFF), "#203013"},
                                                        {with(40, 0x10000005), "#203013"},
                                                        {with(44, 6), "#203014"},
                                                        {good.substr(0, 42), "#203013"},
                                                        {"", "#203013"},
                                                        {parts(5, {0, 4, 2}, kSquare), "#203014"},
                                                        {parts(5, {0}, {0, 0, NAN, 1, 1, 1, 0, 0}), "#203015"},
                                                        {parts(5, {0}, {0, 0, 0, 1, INFINITY, 1, 0, 0}), "#203015"}})
    EXPECT_EQ(readAll(5, {good, content, good}), fine + "; " + number + "; " + fine) << number;
  EXPECT_EQ(readAll(1, {point(1, {INFINITY, 0}), point(1, {1, 2})}), "#203015; s point 1 2");
  EXPECT_EQ(readAll(15, {parts(15, {0}, kSquare, {0, 0, 1, 2, 3, 4})}), "#203013");
  EXPECT_GT(scope_.logged("that were refused: 1"), 0u);
}

TEST_F(ShapeTest, TakesNoIndexAtItsWord) {
  const std::string a = point(1, {1, 1}), b = point(1, {2, 2}), c = point(1, {3, 3});
  putShapes(1, {a, b, c});
  struct Row {
    const char* what;
    Ints entries;  // offset and length, in words
    std::string features;
  };
  for (const Row& row :
       {Row{"another order", {78, 10, 50, 10, 64, 10}, "s point 3 3; s point 1 1; s point 2 2"},
        Row{"with the header's length", {50, 14, 64, 14, 78, 14}, "s point 1 1; s point 2 2; s point 3 3"},
        Row{"too short", {50, 9, 64, 9, 78, 0}, "s point 1 1; s point 2 2; s point 3 3"},
        Row{"gaps", {50, 10, 78, 10}, "s point 1 1; s point 3 3"}, Row{"too long", {50, 0x7FFFFFFF}, "s point 1 1"},
        Row{"behind the end", {92, 10, 0xFFFFFFFF, 10, 88, 10, 64, 10}, "#203012; #203012; #203012; s point 2 2"},
        Row{"in the header", {0, 10, 49, 10, 64, 10}, "#203012; #203012; s point 2 2"},
        Row{"one twice", {50, 10, 50, 10, 64, 10}, "s point 1 1; #203016; s point 2 2"},
        Row{"all of it over and over",
            {50, 10, 64, 10, 50, 10, 64, 10, 50, 10},
            "s point 1 1; s point 2 2; s point 1 1; #203016; #203016"}}) {
    std::string entries;
    for (const std::uint32_t word : row.entries) entries += big(word);
    put("s.shx", header(1, 100 + entries.size()) + entries);
    EXPECT_EQ(readAll(), row.features) << row.what;
  }
  put("s.shx", header(1, 112) + big(50) + big(10) + big(64));
  EXPECT_EQ(readAll(), "s point 1 1; #203012") << "an entry cut off";

  std::filesystem::remove(at("s.shx"));
  EXPECT_EQ(readAll(), "#203003");
  scope_.row("S_WITHOUT_INDEX YES");
  EXPECT_EQ(readAll(), "s point 1 1; s point 2 2; s point 3 3");
  const std::string shp = bytesOf("s.shp");
  put("s.shp", std::string(shp).replace(132, 4, big(11)));
  EXPECT_EQ(readAll(), "s point 1 1; s point 2 2; #203012") << "a length that leads astray";
  for (std::size_t length = 100; length < shp.size(); ++length) {
    put("s.shp", shp.substr(0, length));
    std::string wanted;
    for (std::size_t i = 0; i < 3; ++i) {
      const std::string feature = "s point " + std::to_string(i + 1) + " " + std::to_string(i + 1);
      const std::size_t start = 100 + 28 * i;
      if (length >= start + 8)
        wanted += (wanted.empty() ? "" : "; ") + (length >= start + 28 ? feature : std::string("#203012"));
    }
    EXPECT_EQ(readAll(), wanted) << "cut at " << length;
  }
}

TEST_F(ShapeTest, RefusesHeadersCutAnywhere) {
  putShapes(1, {point(1, {1, 1})});
  const std::string shp = bytesOf("s.shp"), shx = bytesOf("s.shx");
  for (std::size_t length = 0; length < 100; ++length) {
    put("s.shp", shp.substr(0, length));
    EXPECT_EQ(readAll(), "#203005") << length;
    put("s.shp", shp);
    put("s.shx", shx.substr(0, length));
    EXPECT_EQ(readAll(), "#203005") << length;
    put("s.shx", shx);
  }
  put("s.shp", "x" + shp.substr(1));
  EXPECT_EQ(readAll(), "#203025");
  // Lengths in either header that cannot be are not believed.
  for (const std::uint32_t words : {0u, 10u, 64u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    put("s.shp", std::string(shp).replace(24, 4, big(words)));
    put("s.shx", std::string(shx).replace(24, 4, big(words)));
    EXPECT_EQ(readAll(), "s point 1 1") << words;
  }
}

TEST_F(ShapeTest, HoldsTheDeclaredTypeAgainstTheFile) {
  struct Row {
    std::uint32_t type;
    const char* declared;
    const char* result;
  };
  for (const Row& row :
       {Row{3, "shape_arc", ""}, Row{3, "shape_polyline", ""}, Row{18, "shape_pointz", ""},
        Row{18, "shape_multipointz", ""}, Row{0, "shape_polygon", ""}, Row{5, "SHAPE_POLYGON", ""},
        Row{1, "shape_pointz", "#207009"}, Row{11, "shape_multipointz", "#207009"},
        Row{13, "shape_polyline", "#207010"}, Row{5, "shape_arc", "#207011"}, Row{8, "shape_point", "#207012"},
        Row{31, "shape_multipatch", "#207013"}, Row{7, "shape_point", "#207013"}, Row{1, "point", "#207016"}}) {
    VEXConfiguration::setValue("S_DEF", "");
    scope_.row("S_DEF s SHAPE_GEOMETRY " + std::string(row.declared) + " SHAPE_COLUMN_DEFS TRUE");
    EXPECT_EQ(readAll(row.type, {}), row.result) << row.type << row.declared;
  }
}

TEST_F(ShapeTest, JoinsTheTableRowByRow) {
  putShapes(1, {point(1, {1, 1}), point(1, {2, 2}), point(1, {3, 3}), point(3, {}), point(1, {5, 5})});
  const std::string all = "s {N=a} point 1 1; s {N=b} point 2 2; s {N=c} point 3 3; #203013; s {N=e} point 5 5";
  putTable({" a ", " b ", " c ", " d ", " e "});
  EXPECT_EQ(readAll(), all);
  putTable({" a ", "*b ", "*c ", " d ", " e "});
  EXPECT_EQ(readAll(), "s {N=a} point 1 1; #203013; s {N=e} point 5 5") << "deleted rows take their shapes along";
  putTable({" a ", " b ", " c ", " d ", "*e "});
  EXPECT_EQ(readAll(), "s {N=a} point 1 1; s {N=b} point 2 2; s {N=c} point 3 3; #203013");
  EXPECT_EQ(scope_.logged("records for"), 0u);
  putTable({" a "});
  EXPECT_EQ(readAll(), "s {N=a} point 1 1; s {N=} point 2 2; s {N=} point 3 3; #203013; s {N=} point 5 5");
  EXPECT_EQ(scope_.logged("has 1 records for 5 shapes"), 1u);
  putTable({" a ", " b ", " c ", " d ", " e ", " f "});
  EXPECT_EQ(readAll().substr(0, 21), "s {N=a} point 1 1; s ");
  EXPECT_EQ(scope_.logged("has 6 records for 5 shapes"), 1u);
  scope_.row("S_DEF S SHAPE_GEOMETRY shape_point N number(2,0)");
  EXPECT_EQ(readAll(), "#300006");
}

TEST_F(ShapeTest, ChoosesFilesByName) {
  for (const char* name : {"Roads", "rivers", "x.y"}) {
    putShapes(1, {point(1, {1, 1})});
    std::filesystem::rename(at("s.shp"), at(name + std::string(".SHP")));
    std::filesystem::rename(at("s.shx"), at(name + std::string(".Shx")));
  }
  put("Roads.shp.xml", "");
  EXPECT_EQ(readAll(), "Roads point 1 1; rivers point 1 1; x.y point 1 1");
  scope_.row("S_DEF ROADS SHAPE_GEOMETRY shape_point");
  EXPECT_EQ(readAll(), "Roads point 1 1");
  scope_.row("S_IDs RIVERS lakes");
  EXPECT_EQ(readAll(), "rivers point 1 1");
  EXPECT_EQ(scope_.logged("Shape File 'Roads' skipped -- was not requested for translation"), 1u);
  EXPECT_EQ(scope_.logged("Shape File 'LAKES' skipped -- was not present in directory"), 1u);
  VEXConfiguration::setValue("S_IDs", "lakes");
  EXPECT_EQ(readAll(), "#207006");
  VEXConfiguration::setValue("S_IDs", "ROADS");
  VEXConfiguration::setValue("S_DATASET", at("Roads.SHP"));
  EXPECT_EQ(readAll(), "Roads point 1 1");
  for (const auto& [key, value, number] :
       std::vector<std::tuple<const char*, std::string, const char*>>{{"S_DATASET", at("none"), "#207008"},
                                                                      {"S_WITHOUT_INDEX", "perhaps", "#207017"},
                                                                      {"S_MULTI_PART", "LIST", "#207017"},
                                                                      {"S_DEF", "odd SHAPE_GEOMETRY", "#207018"}}) {
    scope_.row(key + (" " + value));
    EXPECT_EQ(readAll(), number) << key;
    VEXConfiguration::setValue(key, key == std::string("S_DATASET") ? directory_ : "");
  }
}

TEST_F(ShapeTest, TellsFeatureAndSchema) {
  putShapes(18, {little(0), little(0)});
  putTable({" a ", " b "});
  ShapeReader reader("SHAPE", "S");
  VEXFeaturePtr feature;
  EXPECT_EQ(numberOf(reader.read(feature)), 203009u);
  ASSERT_EQ(numberOf(reader.open({})), 0u);
  for (const char* wanted : {"s {N=a, ORV_IDENTIFIERS=1, SHAPE_GEOMETRY=shape_pointz, orv_global_bounding_box_max_x=3, "
                             "orv_global_bounding_box_max_y=4, "
                             "orv_global_bounding_box_min_x=1, orv_global_bounding_box_min_y=2}",
                             "s {N=b, ORV_IDENTIFIERS=2, SHAPE_GEOMETRY=shape_pointz}"}) {
    ASSERT_EQ(numberOf(reader.read(feature)), 0u);
    EXPECT_EQ(describe(*feature), wanted);
  }
  VEXFeatureVector schema;
  ASSERT_EQ(numberOf(reader.readSchema({}, schema)), 0u);
  ASSERT_EQ(schema.size(), 1u);
  VEXStringVector names, values;
  schema[0]->orderedAttributes(names, values);
  EXPECT_EQ(joined(names, " ") + " " + joined(values, " "), "SHAPE_GEOMETRY N shape_pointz char(2)");
  for (const auto& [type, number] :
       std::vector<std::pair<std::uint32_t, std::uint32_t>>{{0, 203006}, {31, 203007}, {9, 203007}}) {
    putShapes(type, {});
    EXPECT_EQ(numberOf(reader.readSchema({}, schema)), number);
  }
  scope_.row("ID t");
  EXPECT_EQ(numberOf(reader.readSchema({}, schema)), 207004u);
  std::filesystem::remove(at("s.shp"));
  EXPECT_EQ(numberOf(reader.readSchema({}, schema)), 207003u);
  VEXConfiguration::setValue("S_DATASET", at("none"));
  EXPECT_EQ(numberOf(reader.readSchema({}, schema)), 207002u);
  VEXConfiguration::setValue("S_DATASET", "");
  EXPECT_EQ(numberOf(reader.readSchema({}, schema)), 207001u);
  EXPECT_EQ(numberOf(VEXShapeInput("s", at("s.shp"), "", false).read(feature)), 203008u);
}

// A hole in the file, so that the test needs no disk: the record lies beyond what 32 signed bits can count.
TEST_F(ShapeTest, ReadsBehindTwoGigabytes) {
  constexpr std::uint64_t kFar = 4200000000;
  putShapes(1, {});
  std::filesystem::resize_file(at("s.shp"), kFar);
  std::ofstream(at("s.shp"), std::ios::binary | std::ios::app) << big(1) << big(10) << point(1, {7, 8});
  std::fstream(at("s.shp"), std::ios::binary | std::ios::in | std::ios::out).seekp(24) << big((kFar + 28) / 2);
  put("s.shx", header(1, 108) + big(kFar / 2) + big(10));
  EXPECT_EQ(readAll(), "s point 7 8");
}

}  // namespace
