#include "tests/unit/drivers.h"

#include <algorithm>

#include "vex/inc/numtext.h"
#include "vex/src/simptran.h"
#include "vex/src/stpdgrpr.h"

namespace {

FakeDrivers* current = nullptr;
std::vector<std::string> logLines;

VEXStatus step(const std::string& name) {
  current->calls.push_back(name);
  if (name == current->failAt) return makeStatus(236101, {"fake"});
  return nullptr;
}

class FakeReader final : public VEXReaderImp {
 public:
  using VEXReaderImp::VEXReaderImp;
  VEXStatus setup() override { return step("reader.setup"); }
  VEXStatus getGlobalMetaData(VEXFeaturePtr& out) override {
    if (current->givesMetaData) out = makeFeature("meta");
    return step("reader.meta");
  }
  VEXStatus readFeature(VEXFeaturePtr& out) override {
    if (next_ == current->source.size()) return nullptr;
    const std::string& text = current->source[next_++];
    if (text == "!30") return makeRejection(236101, {"refused"});
    if (text == "!16") return makeStatus(236101, {"broken"});
    out = makeFeature(text);
    std::string coordSys;
    if (out->getString("cs", coordSys)) out->setCoordSys(coordSys);
    return nullptr;
  }
  VEXStatus open(const VEXStringVector&) override { return step("reader.open"); }
  VEXStatus close() override { return step("reader.close"); }
  VEXStatus readSchemaFeatures(const VEXStringVector&, VEXFeatureVector&) override { return nullptr; }
  void abort() override { ignoreStatus(step("reader.abort")); }

 private:
  std::size_t next_ = 0;
};

class FakeChannel final : public VEXChannel {
 public:
  ~FakeChannel() override { current->calls.push_back("gone " + group_); }
  VEXStatus writeFeatureImp(VEXFeature& feature) override {
    if (feature.attributeExists("refuse")) return makeRejection(236101, {"refused"});
    return step("write " + group_ + ": " + describe(feature));
  }
  VEXStatus startGroup(VEXGroup& group) override {
    group_ = group.featureType();
    return step("start " + group_);
  }
  VEXStatus endGroup(VEXGroup& group) override { return step("end " + group.featureType()); }
  VEXStatus close() override {
    VEX_TRY(step("close " + group_));
    return VEXChannel::close();
  }
  void abort() override { ignoreStatus(step("abort " + group_)); }

 private:
  std::string group_;
};

class FakeWriter final : public VEXWriterImp {
 public:
  using VEXWriterImp::VEXWriterImp;
  std::unique_ptr<VEXGrouper> createGrouper(VEXWriter& front) override {
    if (!current->givesGrouper) return nullptr;
    if (current->hasOneStream) return std::make_unique<VEXStupidGrouper>(front);
    return VEXWriterImp::createGrouper(front);
  }
  VEXStatus setup() override { return step("writer.setup"); }
  VEXStatus writeGlobalMetaData(VEXFeature&) override { return step("writer.meta"); }
  VEXStatus open(const VEXStringVector&) override { return step("writer.open"); }
  VEXStatus close() override {
    VEX_TRY(step("writer.close"));
    return VEXWriterImp::close();
  }
  int maxChannels() override { return current->maxChannels; }
  VEXStatus createChannel(VEXGroup& group, std::unique_ptr<VEXChannel>& out) override {
    out = std::make_unique<FakeChannel>();
    return step("channel " + group.featureType());
  }
  void abort() override {
    ignoreStatus(step("writer.abort"));
    VEXWriterImp::abort();
  }
};

}  // namespace

std::string FakeDrivers::callText() const {
  return joined(calls, "; ");
}

std::uint32_t numberOf(const VEXStatus& failure) {
  return failure == nullptr ? 0 : failure->messageNumber();
}

TranslationScope::TranslationScope(const std::vector<std::string>& rows) {
  current = &fake;
  logLines.clear();
  ignoreStatus(logFile_.reopen("/dev/null", true));
  logFile_.setCallback([](ORV_Int32, const char* text) { logLines.emplace_back(text); });
  creator_.readers().addInstantiator("FAKE", std::make_unique<DriverInstantiator<VEXReaderImp, FakeReader>>());
  creator_.writers().addInstantiator("FAKE", std::make_unique<DriverInstantiator<VEXWriterImp, FakeWriter>>());
  for (const std::string& text : rows) row(text);
}

TranslationScope::~TranslationScope() {
  current = nullptr;
}

std::uint32_t TranslationScope::translate() {
  VEXSimpleTranslator translator;
  VEXStatus failure = translator.initialize();
  if (failure == nullptr) failure = translator.translate({}, {});
  featuresOutput = translator.featuresOutput();
  coordinatesOutput = translator.coordinatesOutput();
  return numberOf(failure);
}

const std::vector<std::string>& TranslationScope::log() const {
  return logLines;
}

std::size_t TranslationScope::logged(std::string_view text) const {
  return static_cast<std::size_t>(std::count_if(
      logLines.begin(), logLines.end(), [&](const std::string& line) { return line.find(text) != std::string::npos; }));
}

PipelineScope::PipelineScope(const std::vector<std::string>& rows) : engine(rows) {
  pipeline_ = std::make_unique<VEXPipeline>();
  definitionFailure_ = numberOf(pipeline_->configure("K"));
}

std::string PipelineScope::run(const std::vector<std::string>& features) {
  VEXStringVector out;
  VEXStatus failure;
  for (const std::string& text : features) {
    VEXFeaturePtr feature = makeFeature(text);
    if (failure == nullptr) failure = pipeline_->processFeature(feature);
  }
  if (failure == nullptr) failure = pipeline_->allDone();
  while (VEXFeaturePtr feature = pipeline_->getOutputFeature()) out.push_back(describe(*feature));
  if (failure != nullptr) out.push_back("#" + std::to_string(failure->messageNumber()));
  return joined(out, "; ");
}
