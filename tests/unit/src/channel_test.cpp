// Channels and the writer that hands them out: refused features, sinks, coordinate systems, limits.
#include <gtest/gtest.h>

#include "tests/unit/drivers.h"
#include "vex/src/vexgroup.h"

namespace {

// Takes features and tells them; refuses or fails when the feature says so.
class TellingConsumer final : public VEXFeatureConsumer {
 public:
  TellingConsumer(std::string name, std::vector<std::string>& told) : name_(std::move(name)), told_(told) {}
  VEXStatus consume(const VEXFeature& feature) override {
    std::string what;
    if (feature.getString(name_, what))
      return what == "30" ? makeRejection(236101, {"no"}) : makeStatus(236101, {"broken"});
    told_.push_back(name_ + ":" + feature.featureType());
    return nullptr;
  }

 private:
  std::string name_;
  std::vector<std::string>& told_;
};

class InnerChannel final : public VEXChannel {
 public:
  explicit InnerChannel(std::vector<std::string>& told) : told_(told) {}
  VEXStatus writeFeatureImp(VEXFeature& feature) override {
    if (feature.attributeExists("inner")) return makeRejection(236101, {"no"});
    told_.push_back("inner:" + feature.featureType());
    return nullptr;
  }
  VEXStatus close() override {
    told_.push_back("inner closed");
    return nullptr;
  }

 private:
  std::vector<std::string>& told_;
};

class FanChannel final : public VEXChannel {
 public:
  explicit FanChannel(std::vector<std::string>& told) {
    addSink({nullptr, std::make_unique<TellingConsumer>("first", told)});
    addSink({std::make_unique<InnerChannel>(told), nullptr});
    addSink({nullptr, std::make_unique<TellingConsumer>("last", told)});
  }
};

TEST(Channel, FanOutToSinks) {
  struct Row {
    const char* feature;
    std::int32_t severity;  // of the failure, 0 for none
    std::vector<std::string> told;
    std::int64_t rejected;
  };
  for (const Row& row :
       {Row{"a", 0, {"first:a", "inner:a", "last:a"}, 0}, Row{"a {first=30}", 0, {}, 1}, Row{"a {first=16}", 16, {}, 0},
        Row{"a {inner=30}", 16, {"first:a"}, 0}, Row{"a {last=30}", 16, {"first:a", "inner:a"}, 0}}) {
    TranslationScope engine;
    std::vector<std::string> told;
    FanChannel channel(told);
    VEXFeaturePtr feature = makeFeature(row.feature);
    VEXStatus failure = channel.writeFeature(*feature);
    EXPECT_EQ(failure == nullptr ? 0 : failure->severity(), row.severity) << row.feature;
    EXPECT_EQ(told, row.told) << row.feature;
    EXPECT_EQ(channel.rejected(), row.rejected) << row.feature;
    EXPECT_EQ(engine.logged("rejected after a part"), row.told.size() == 1 || row.told.size() == 2 ? 1U : 0U)
        << row.feature;
    EXPECT_EQ(numberOf(channel.close()), 0U);
    EXPECT_EQ(told.back(), "inner closed");
    EXPECT_EQ(engine.logged("1 features were rejected"), static_cast<std::size_t>(row.rejected)) << row.feature;
  }
}

TEST(Channel, HasOneCoordinateSystem) {
  TranslationScope engine;
  std::vector<std::string> told;
  FanChannel channel(told);
  auto write = [&](const char* coordSys) {
    VEXFeaturePtr feature = makeFeature("a");
    feature->setCoordSys(coordSys);
    return numberOf(channel.writeFeature(*feature));
  };
  EXPECT_EQ(write(""), 0U);
  EXPECT_EQ(write("X"), 0U);
  EXPECT_EQ(write(""), 0U);
  EXPECT_EQ(write("X"), 0U);
  EXPECT_EQ(write("Y"), 235004U);
  EXPECT_EQ(channel.coordSys(), "X");
}

// Keeps a sequence in order for the driver: nothing of it is lost on the way in.
TEST(Channel, SequenceReachesTheDriver) {
  class Looking final : public VEXChannel {
   public:
    VEXStatus writeFeatureImp(VEXFeature& feature) override {
      EXPECT_EQ(feature.sequence().size(), 2U);
      EXPECT_TRUE(feature.reprojectionCommands().empty());
      return nullptr;
    }
  };
  TranslationScope engine;
  Looking channel;
  VEXFeaturePtr feature = makeFeature("a");
  feature->setSequenced("z", "1");
  feature->setSequenced("b", "2");
  feature->setReprojectionCommands({"@Count()"});
  EXPECT_EQ(numberOf(channel.writeFeature(*feature)), 0U);
}

// A writer whose channels are of the kind that a test wants.
class OddWriter final : public VEXWriterImp {
 public:
  enum class Makes { Default, Nothing, BadTag, Good, BadClose };
  explicit OddWriter(Makes makes) : VEXWriterImp("ODD", "ODD"), makes_(makes) {}
  VEXStatus writeGlobalMetaData(VEXFeature&) override { return nullptr; }
  VEXStatus open(const VEXStringVector&) override { return nullptr; }
  int maxChannels() override { return 2; }
  VEXStatus createChannel(VEXGroup& group, std::unique_ptr<VEXChannel>& out) override {
    class Odd final : public VEXChannel {
     public:
      explicit Odd(Makes makes) : VEXChannel(makes == Makes::BadTag ? 28 : kTag), makes_(makes) {}
      VEXStatus close() override {
        return makes_ == Makes::BadClose ? makeStatus(236101, {"broken"}) : VEXChannel::close();
      }

     private:
      Makes makes_;
    };
    if (makes_ == Makes::Default) return VEXWriterImp::createChannel(group, out);
    if (makes_ != Makes::Nothing) out = std::make_unique<Odd>(makes_);
    return nullptr;
  }

 private:
  Makes makes_;
};

TEST(Channel, WriterChecksWhatItHandsOut) {
  struct Row {
    OddWriter::Makes makes;
    std::uint32_t number;
  };
  using Makes = OddWriter::Makes;
  for (const Row& row :
       {Row{Makes::Default, 882004}, Row{Makes::Nothing, 882003}, Row{Makes::BadTag, 882003}, Row{Makes::Good, 0}}) {
    TranslationScope engine;
    OddWriter writer(row.makes);
    VEXGroup group("a", "", "");
    VEXChannel* channel = nullptr;
    EXPECT_EQ(numberOf(writer.getChannel(group, channel)), row.number);
    EXPECT_EQ(writer.openChannels(), row.number == 0 ? 1U : 0U);
  }
}

TEST(Channel, WriterCountsAndClosesItsChannels) {
  TranslationScope engine;
  {
    OddWriter writer(OddWriter::Makes::Good);
    VEXGroup group("a", "", "");
    VEXChannel* first = nullptr;
    VEXChannel* second = nullptr;
    VEXChannel* third = nullptr;
    EXPECT_EQ(numberOf(writer.getChannel(group, first)), 0U);
    EXPECT_EQ(numberOf(writer.getChannel(group, second)), 0U);
    EXPECT_EQ(numberOf(writer.getChannel(group, third)), 882002U);
    EXPECT_EQ(numberOf(writer.closeChannel(first)), 0U);
    EXPECT_EQ(numberOf(writer.getChannel(group, third)), 0U);
    EXPECT_EQ(numberOf(writer.close()), 0U);
    EXPECT_EQ(writer.openChannels(), 0U);
  }
  {
    OddWriter writer(OddWriter::Makes::BadClose);
    VEXGroup group("a", "", "");
    VEXChannel* channel = nullptr;
    EXPECT_EQ(numberOf(writer.getChannel(group, channel)), 0U);
    EXPECT_EQ(numberOf(writer.getChannel(group, channel)), 0U);
    EXPECT_EQ(numberOf(writer.closeChannel(channel)), 236101U);
    EXPECT_EQ(writer.openChannels(), 2U);
  }
  EXPECT_EQ(engine.logged("A channel could not be closed"), 1U);
}

}  // namespace
