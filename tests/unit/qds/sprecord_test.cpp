// Stores with an index: searches held against a look at every feature, and indexes that do not fit.
#include <cmath>
#include <cstring>
#include <random>

#include "tests/unit/qds/qdstest.h"
#include "vex/src/plangeom.h"

namespace {

class SpatialStoreTest : public StoreTest {
 protected:
  std::string write(const std::string& name, const VEXStringVector& features, std::uint32_t maxFileSize = 0) const {
    VEXSpatialRecorder recorder(at(name), VEXRecorder::WRITE_RECORDING);
    if (maxFileSize > 0) recorder.store().setMaxFileSize(maxFileSize);
    VEXRecordAddress address;
    VEXStatus failure;
    for (const std::string& text : features)
      if (failure == nullptr) failure = recorder.write(*makeFeature(text), address);
    if (failure == nullptr) failure = recorder.close();
    return failure == nullptr ? "" : "#" + std::to_string(numberOf(failure));
  }
  std::string search(const std::string& name, const VEXBox& box) const {
    VEXSpatialRecorder recorder(at(name), VEXRecorder::READ_RECORDING);
    VEXSpatialQuery query;
    VEXStatus failure = recorder.search(box, query);
    return list(recorder, query, std::move(failure));
  }
  std::string closest(const std::string& name, double x, double y, double distance) const {
    VEXSpatialRecorder recorder(at(name), VEXRecorder::READ_RECORDING);
    VEXSpatialQuery query;
    VEXStatus failure = recorder.searchClosest(x, y, distance, query);
    return list(recorder, query, std::move(failure));
  }
  // Types of the features found, "#number" of a failure at the end.
  static std::string list(VEXSpatialRecorder& recorder, VEXSpatialQuery& query, VEXStatus failure) {
    VEXStringVector out;
    while (failure == nullptr) {
      VEXFeaturePtr feature;
      failure = recorder.read(query, feature);
      if (feature == nullptr) break;
      out.push_back(feature->featureType());
    }
    if (failure != nullptr) out.push_back("#" + std::to_string(numberOf(failure)));
    return joined(out, " ");
  }
  static VEXBox box(double minX, double minY, double maxX, double maxY) {
    return {.minX = minX, .minY = minY, .minZ = NAN, .maxX = maxX, .maxY = maxY, .maxZ = NAN};
  }
};

TEST_F(SpatialStoreTest, BoxesAreThoseOfALookAtEveryFeature) {
  std::mt19937 random(8);
  auto number = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
  struct Line {
    VEXBox bounds;
    std::string type;
  };
  std::vector<Line> lines;
  VEXStringVector features;
  for (int i = 0; i < 2000; ++i) {
    const int x = number(1000), y = number(1000), width = number(i % 50 == 0 ? 800 : 20), height = number(20);
    const std::string type = "t" + std::to_string(i);
    if (i % 17 == 0) {
      features.push_back(type);  // lies nowhere
      continue;
    }
    features.push_back(type + " line " + std::to_string(x) + " " + std::to_string(y) + ", " +
                       std::to_string(x + width) + " " + std::to_string(y + height));
    lines.push_back({box(x, y, x + width, y + height), type});
  }
  ASSERT_EQ(write("s.qds", features, 20000), "");
  ASSERT_EQ(names().substr(0, 20), "s.fsi s.qds s_1.qds ");
  for (int i = 0; i < 100; ++i) {
    const int x = number(1000), y = number(1000);
    const VEXBox wanted = box(x, y, x + number(100), y + number(100));
    VEXStringVector expected;
    for (const Line& line : lines)
      if (line.bounds.meets(wanted)) expected.push_back(line.type);
    ASSERT_EQ(search("s.qds", wanted), joined(expected, " ")) << "query " << i;
  }
  EXPECT_EQ(search("s.qds", box(5000, 0, 6000, 10)), "");
}

TEST_F(SpatialStoreTest, ClosestIsTakenBySegments) {
  ASSERT_EQ(write("s.qds", {"none", "line line 0 0, 10 0", "same line 0 0, 10 0", "point point 5 3",
                            "area polygon 20 20, 20 40, 40 40, 40 20, 20 20",
                            "donut donut 60 0, 60 40, 100 40, 100 0, 60 0, 70 10, 90 10, 90 30, 70 30, 70 10",
                            "parts aggregate 2 2, 0 80, 10 80, 1 1, 50 80"}),
            "");
  struct Row {
    double x, y, distance;
    const char* found;
  };
  for (const Row& row : {Row{5, 1, 10, "line"}, Row{5, 2.5, 10, "point"}, Row{30, 22, 10, "area"}, Row{30, 30, 5, ""},
                         Row{30, 30, 10, ""}, Row{30, 30, 10.5, "area"}, Row{80, 12, 5, "donut"}, Row{65, 5, 4.9, ""},
                         Row{51, 80, 5, "parts"}, Row{30, 80, 19, ""}, Row{5, 1, 0, ""}, Row{5, 1, -3, ""}})
    EXPECT_EQ(closest("s.qds", row.x, row.y, row.distance), row.found) << row.x << " " << row.y << " " << row.distance;
}

TEST_F(SpatialStoreTest, ReadersShareARecorderUntilTheFilesChange) {
  ASSERT_EQ(write("s.qds", {"a point 1 1", "b point 2 2", "c point 3 3"}), "");
  const auto first = VEXSpatialRecorder::shared(at("s.qds"));
  const auto second = VEXSpatialRecorder::shared(at("../store/s.qds"));
  EXPECT_EQ(first, second);
  VEXSpatialQuery one, other;
  ASSERT_EQ(first->search(box(0, 0, 9, 9), one), nullptr);
  VEXFeaturePtr feature;
  ASSERT_EQ(first->read(one, feature), nullptr);
  ASSERT_EQ(second->search(box(3, 3, 3, 3), other), nullptr);
  EXPECT_EQ(list(*second, other, nullptr), "c");
  EXPECT_EQ(list(*first, one, nullptr), "b c");
  ASSERT_EQ(write("s.qds", {"d point 1 1"}), "");
  const auto changed = VEXSpatialRecorder::shared(at("s.qds"));
  ASSERT_EQ(changed->search(box(0, 0, 9, 9), one), nullptr);
  EXPECT_EQ(list(*changed, one, nullptr), "d");
}

TEST_F(SpatialStoreTest, IndexesThatDoNotFit) {
  const VEXBox all = box(-1e9, -1e9, 1e9, 1e9);
  EXPECT_EQ(search("s.qds", all), "#395301");
  const VEXStringVector features = {"a {n=1} point 1 1", "b {n=2} line 2 2, 3 3", "c {n=3} point 4 4"};
  ASSERT_EQ(write("s.qds", features), "");
  const std::string index = bytesOf("s.fsi");
  EXPECT_EQ(search("s.qds", all), "a b c");
  // Cut, longer, any byte changed: nothing but what the store has, or a number.
  for (std::size_t length = 0; length < index.size(); ++length) {
    put("s.fsi", index.substr(0, length));
    EXPECT_EQ(search("s.qds", all), "#395303") << length;
  }
  put("s.fsi", index + "x");
  EXPECT_EQ(search("s.qds", all), "#395303");
  for (std::size_t place = 0; place < index.size(); ++place) {
    for (const char value : {'\0', '\1', '\177', '\377'}) {
      put("s.fsi", std::string(index).replace(place, 1, 1, value));
      EXPECT_LE(search("s.qds", all).size(), 13U) << place;
    }
  }
  std::filesystem::remove(at("s.fsi"));
  EXPECT_EQ(search("s.qds", all), "#395301");

  // Indexes of other stores: more records, as many of other lengths, as many of the same lengths elsewhere.
  for (const VEXStringVector& others :
       {VEXStringVector{"a {n=1} point 1 1", "b {n=2} line 2 2, 3 3", "c {n=3} point 4 4", "d"},
        VEXStringVector{"a {n=1} point 1 1", "bb {n=2} line 2 2, 3 3", "c {n=3} point 4 4"},
        VEXStringVector{"a {n=1} point 71 1", "b {n=2} line 72 2, 73 3", "c {n=3} point 74 4"}}) {
    ASSERT_EQ(write("o.qds", others), "");
    ASSERT_EQ(write("s.qds", features), "");
    std::filesystem::copy_file(at("o.fsi"), at("s.fsi"), std::filesystem::copy_options::overwrite_existing);
    const bool sameLengths = others[1][1] != 'b' && others.size() == 3;
    EXPECT_TRUE(search("s.qds", sameLengths ? box(70, 0, 80, 9) : all).ends_with("#395307"));
  }
  // Nothing in the store, no index.
  EXPECT_EQ(write("none.qds", {}), "");
  EXPECT_FALSE(isThere("none.fsi"));
  EXPECT_EQ(write("x/s.qds", {"a"}), "#393361");
  std::filesystem::create_symlink("/dev/full", at("full.fsi"));
  EXPECT_EQ(write("full.qds", {"a"}), "#395306");
  std::filesystem::create_directory(at("taken.fsi"));
  EXPECT_EQ(write("taken.qds", {"a"}), "#395305");
}

TEST_F(SpatialStoreTest, ReaderSearchesWithinItsStores) {
  ASSERT_EQ(write("a.qds", {"a {n=1} point 1 1", "a {n=2} point 9 9"}), "");
  ASSERT_EQ(write("b.qds", {"b {n=3} point 2 2", "b {n=4} line 0 5, 8 5"}), "");
  scope_->row("S_SEARCH_ENVELOPE 0 0 3 5");
  EXPECT_EQ(readDataset(directory_), "a {n=1} point 1 1; b {n=3} point 2 2; b {n=4} line 0 5, 8 5");
  {
    QDSReader reader("QDS", "S");
    VEXFeaturePtr feature;
    ASSERT_TRUE(reader.setup() == nullptr && reader.open({}) == nullptr && reader.read(feature) == nullptr);
    EXPECT_EQ(write("a.qds", {"a"}), "#393383");
    reader.abort();
    EXPECT_EQ(write("a.qds", {"a {n=1} point 1 1"}), "");
  }
  ASSERT_EQ(writeAll("c.qds", {"c point 1 1"}), "");
  EXPECT_EQ(readDataset(directory_), "a {n=1} point 1 1; b {n=3} point 2 2; b {n=4} line 0 5, 8 5; #395301");
}

}  // namespace
