// Features, their recycling, and their spool.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

#include "tests/unit/support.h"
#include "vex/src/featfifo.h"
#include "vex/src/platform/platform.h"
#include "vex/src/tmpfilmn.h"
#include "vex/src/vexline.h"
#include "vex/src/vexrcycl.h"

namespace {

TEST(Feature, DimensionFillsAndDropsZ) {
  VEXFeature feature(2);
  feature.addCoord(1, 2, 3);
  feature.setDimension(3);
  feature.addCoord(4, 5, 6);
  ASSERT_EQ(feature.zs().size(), 2U);
  EXPECT_EQ(feature.zs()[0], 0.0);
  EXPECT_EQ(feature.zs()[1], 6.0);
  feature.setDimension(2);
  EXPECT_TRUE(feature.zs().empty());
}

TEST(Feature, GeometryCodeAndAttributeAgree) {
  VEXFeature feature;
  for (std::uint32_t code : {0U, 3U, 4U, 512U, 1024U}) {
    feature.setGeomType(code);
    EXPECT_EQ(*feature.findAttribute("orv_geometry"), VEXFeature::geomTypeName(feature.geomType()));
    EXPECT_EQ(feature.geomType(), VEXFeature::isKnownGeomType(code) ? code : 0U);
  }
}

TEST(Feature, CloneIsDeepAndLineGoesThereAndBack) {
  VEXFeaturePtr feature = makeFeature("road {lanes=2} line 0 0, 10 0");
  feature->setCoordSys("LL-83");
  VEXFeaturePtr copy = feature->clone();
  feature->setAttribute("lanes", "4");
  feature->resetCoords();
  EXPECT_EQ(describe(*copy), "road {lanes=2} line 0 0, 10 0");
  EXPECT_EQ(copy->coordSys(), "LL-83");
  VEXFeature other;
  other.loadFromLine(copy->buildLine());
  EXPECT_EQ(other.numCoords(), 2U);
  EXPECT_EQ(other.geomType(), static_cast<std::uint32_t>(VEX_GEOM_LINE));
}

TEST(Recycler, ReusesTheLastAndKeepsAHundred) {
  VEXObjectRecycler recycler;
  VEXFeature* raw = nullptr;
  {
    VEXFeaturePtr feature = recycler.getFeature(3, 1);
    feature->setAttribute("a", "1");
    feature->addCoord(1, 2, 3);
    raw = feature.get();
  }
  VEXFeaturePtr again = recycler.getFeature();
  EXPECT_EQ(again.get(), raw);
  EXPECT_EQ(again->numAttributes() + again->numCoords(), 0U);
  EXPECT_EQ(again->dimension(), 2);
  VEXFeatureVector many;
  for (int i = 0; i < 150; ++i) many.push_back(recycler.getFeature());
  many.clear();
  EXPECT_EQ(recycler.pooled(), 100U);
}

// A folder of its own for temporary files.
class Spool : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string name = ::testing::TempDir() + "spoolXXXXXX";
    folder_ = mkdtemp(name.data());
    setenv("ORV_TEMP", folder_.c_str(), 1);
  }
  void TearDown() override {
    unsetenv("ORV_TEMP");
    std::vector<std::string> left;
    platform::listDirectory(folder_, left);
    EXPECT_TRUE(left.empty()) << left[0];
    rmdir(folder_.c_str());
  }

  std::string folder_;
  VEXObjectRecycler recycler_;
};

TEST_F(Spool, MixesWritesAndReads) {
  VEXTempFileManager files;
  VEXFeatureFIFO fifo;
  ASSERT_EQ(fifo.open(), nullptr);
  VEXFeature out;
  bool got = true;
  ASSERT_EQ(fifo.read(out, got), nullptr);
  EXPECT_FALSE(got);
  int read = 0;
  for (int i = 0; i < 3000; ++i) {
    VEXFeaturePtr feature = makeFeature("t {n=" + std::to_string(i) + "} line 0 0, " + std::to_string(i) + " 1");
    ASSERT_EQ(fifo.write(*feature), nullptr);
    if (i % 3 != 0) continue;
    ASSERT_EQ(fifo.read(out, got), nullptr);
    ASSERT_TRUE(got);
    EXPECT_EQ(describe(out), "t {n=" + std::to_string(read) + "} line 0 0, " + std::to_string(read) + " 1");
    ++read;
  }
  for (; fifo.read(out, got) == nullptr && got; ++read) EXPECT_EQ(*out.findAttribute("n"), std::to_string(read));
  EXPECT_EQ(read, 3000);
}

TEST_F(Spool, FeaturesComeBackBitForBitAndBadPlacesFail) {
  VEXTempFileManager files;
  VEXFeatureStore store;
  VEXFeaturePtr feature = recycler_.getFeature(3, 2);
  feature->setFeatureType("pipe");
  feature->setSequenced("part{0}", std::string("a\0b", 3));
  feature->setCoordSys("UTM");
  feature->setReprojectionCommands({"@One(", "@Two("});
  feature->addCoord(-0.0, std::numeric_limits<double>::denorm_min(), std::nan(""));
  feature->setGeomType(VEX_GEOM_POINT);
  std::uint64_t id = 0;
  ASSERT_EQ(store.store(feature, id), nullptr);
  EXPECT_EQ(feature, nullptr);
  ASSERT_EQ(store.fetch(feature, id), nullptr);
  EXPECT_EQ(feature->sequence().size(), 1U);
  EXPECT_EQ(*feature->findAttribute("part{0}"), std::string("a\0b", 3));
  EXPECT_EQ(feature->reprojectionCommands().back(), "@Two(");
  EXPECT_TRUE(std::signbit(feature->xs()[0]));
  EXPECT_TRUE(std::isnan(feature->zs()[0]));
  EXPECT_EQ(feature->coordSys(), "UTM");
  VEXStatus failure = store.fetch(feature, 1000000);
  ASSERT_NE(failure, nullptr);
  EXPECT_EQ(failure->messageNumber(), 218003U);
}

TEST_F(Spool, StoredFormCutAnywhereFails) {
  VEXNameDictionary names;
  std::string bytes;
  VEXFeaturePtr feature = makeFeature("t {a=1, b=two} line 0 0, 1 1, 2 2");
  feature->setReprojectionCommands({"@X("});
  appendStoredFeature(bytes, *feature, names);
  VEXFeature out;
  std::size_t used = 0;
  ASSERT_EQ(readStoredFeature(bytes, names, out, used), nullptr);
  EXPECT_EQ(used, bytes.size());
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    VEXStatus failure = readStoredFeature(std::string_view(bytes).substr(0, length), names, out, used);
    ASSERT_NE(failure, nullptr) << length;
    EXPECT_TRUE(failure->messageNumber() == 879010 || failure->messageNumber() == 879011);
  }
  VEXNameDictionary other;
  VEXStatus failure = readStoredFeature(bytes, other, out, used);
  ASSERT_NE(failure, nullptr);
  EXPECT_EQ(failure->messageNumber(), 879010U);
}

TEST_F(Spool, StartRemovesWhatKilledRunsLeft) {
  // The end of a process closes its files; who is alive keeps his open.
  std::unique_ptr<VEXFile> alive = VEXTempFileManager::createFile(folder_);
  const std::string left = VEXTempFileManager::createFile(folder_)->path();
  const std::string other = VEXTempFileManager::createFile(folder_, "ORV_XXXXXX", ".txt")->path();
  ASSERT_TRUE(platform::fileExists(left) && alive != nullptr);
  {
    VEXTempFileManager files;
    EXPECT_FALSE(platform::fileExists(left));
    EXPECT_TRUE(platform::fileExists(alive->path()) && platform::fileExists(other));
  }
  const std::string path = alive->path();
  alive.reset();
  VEXTempFileManager files;
  EXPECT_FALSE(platform::fileExists(path));
  platform::removeFile(other);
}

TEST_F(Spool, TemporaryFolderFallsThroughWhatIsNoDirectory) {
  std::string file = folder_ + "/plain";
  setenv("TEMP", folder_.c_str(), 1);
  {
    VEXOutputFile out;
    ASSERT_TRUE(out.open(file));
  }
  setenv("ORV_TEMP", file.c_str(), 1);
  EXPECT_EQ(VEXTempFileManager::folder(), folder_);
  unsetenv("TEMP");
  platform::removeFile(file);
}

}  // namespace
