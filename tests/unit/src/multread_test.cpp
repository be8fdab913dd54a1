// The reader of several datasets, where a translation does not show it: coordinate systems, failures, the end.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/unit/drivers.h"

namespace {

class MultiReader : public ::testing::Test {
 protected:
  MultiReader() {
    std::filesystem::create_directories(directory_);
    engine_.row("TABLE_DEF item CSV any.csv CSV_SKIP_LINES 1");
  }
  ~MultiReader() override { std::filesystem::remove_all(directory_); }

  void put(const std::string& name, const std::string& text) const { std::ofstream(directory_ + name) << text; }
  std::uint32_t setup() {
    VEXStatus failure = VEXCreator::createReader(reader_, "MULTI_READER", "IN", "MULTI_READER");
    return numberOf(failure == nullptr ? reader_->setup() : std::move(failure));
  }
  // The features up to the end or a failure, joined by "; ".
  std::string readAll() {
    std::string text;
    VEXStatus failure = reader_->open({});
    for (VEXFeaturePtr feature; failure == nullptr;) {
      failure = reader_->read(feature);
      if (failure != nullptr || feature == nullptr) break;
      for (const char* name : {"pathname", "basename", "filename", "extension"})
        feature->removeAttribute("multi_reader_" + std::string(name));
      text += describe(*feature) + " in " + feature->coordSys() + "; ";
    }
    return failure == nullptr ? text : text + "#" + std::to_string(numberOf(failure));
  }

  const std::string directory_ = scratchDirectory() + "multi/";
  TranslationScope engine_;
  std::unique_ptr<VEXReaderImp> reader_;
};

TEST_F(MultiReader, GivesItsCoordinateSystemToReadersWithoutOne) {
  put("a.csv", "id\n1\n");
  put("b.csv", "id\n2\n");
  engine_.row("IN_COORDINATE_SYSTEM LL-83");
  for (const char* name : {"A", "B"})
    engine_.row(std::string(name) + "_DATASET " + directory_ + (*name == 'A' ? "a.csv" : "b.csv"));
  engine_.row("B_COORDINATE_SYSTEM UTM-10");
  for (const char* row : {"IN_TYPE{0} TABLE", "IN_KEYWORD{0} A", "IN_TYPE{1} TABLE", "IN_KEYWORD{1} B"})
    engine_.row(row);
  ASSERT_EQ(setup(), 0U);
  EXPECT_EQ(readAll(), "item {id=1, multi_reader_id=0} in LL-83; item {id=2, multi_reader_id=1} in UTM-10; ");
  VEXFeaturePtr feature;
  EXPECT_EQ(reader_->read(feature), nullptr);  // behind the end
  EXPECT_EQ(feature, nullptr);
  VEXFeatureVector schema;
  EXPECT_EQ(numberOf(reader_->readSchema({}, schema)), 224004U);
  EXPECT_EQ(reader_->close(), nullptr);
}

TEST_F(MultiReader, EmptyDatasetsAreReadToTheEnd) {
  for (int i = 0; i < 300; ++i) put("e" + std::to_string(i) + ".csv", "id\n");
  engine_.row("IN_DATASET " + directory_ + "e*.csv");
  engine_.row("IN_TYPE{*} TABLE");
  ASSERT_EQ(setup(), 0U);
  EXPECT_EQ(readAll(), "");
  EXPECT_EQ(reader_->close(), nullptr);
}

TEST_F(MultiReader, AFailureOfOneDatasetPassesThrough) {
  put("a.csv", "id\n1\n");
  put("b.csv", "id\n\"open\n");
  engine_.row("IN_DATASET " + directory_ + "[ab].csv");
  engine_.row("IN_TYPE{*} TABLE");
  ASSERT_EQ(setup(), 0U);
  std::filesystem::remove(directory_ + "b.csv");
  EXPECT_EQ(readAll(), "item {id=1, multi_reader_id=0} in ; #315002");
  reader_->abort();
  reader_->abort();
}

}  // namespace
