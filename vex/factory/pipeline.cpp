#include "vex/factory/pipeline.h"

#include <algorithm>

#include "vex/inc/numtext.h"
#include "vex/src/creator.h"
#include "vex/src/featout.h"
#include "vex/src/vexconf.h"

namespace {

constexpr std::uint32_t kFactoryMade = 53001;
constexpr std::uint32_t kShortRow = 53002;
constexpr std::uint32_t kNameTwice = 53003;
constexpr std::uint32_t kTooManyFactories = 53004;
constexpr std::uint32_t kOutputRefused = 231032;

}  // namespace

VEXStatus VEXPipeline::configure(const std::string& keyword, const std::string& name, std::int32_t number) {
  keyword_ = keyword;
  name_ = name;
  number_ = number;
  std::size_t index = 0;
  VEXStringVector row;
  for (VEXConfiguration::rewind(); VEXConfiguration::nextRow(row);) {
    if (row[0] != "FACTORY_DEF") continue;
    if (row.size() < 3) return makeStatus(kShortRow, {joined(row, " ")});
    if (row[1] == keyword_ || row[1] == "*") VEX_TRY(addFactory(row, index++));
  }
  return nullptr;
}

VEXStatus VEXPipeline::addFactory(const VEXStringVector& row, std::size_t index) {
  if (row.size() < 3) return makeStatus(kShortRow, {joined(row, " ")});
  if (factories_.size() >= kMostFactories)
    return makeStatus(kTooManyFactories, {integerText(kMostFactories), joined(row, " ")});
  std::unique_ptr<VEXFactory> factory;
  VEX_TRY(VEXCreator::createFactory(factory, row[2]));
  VEX_TRY(factory->configure(row, index));
  if (!namesInUse_.insert(factory->factoryName()).second) return makeStatus(kNameTwice, {factory->factoryName()});
  factory->setTrace(VEXConfiguration::debugWord("FACTORY_TRACE"));
  factory->setPipeline(this);
  if (VEXConfiguration::debugWord("FACTORY"))
    logMessage(VEXSeverity::Inform, kFactoryMade, {joined(row, " "), factory->factoryName(), factory->name()});
  if (!factories_.empty()) factories_.back()->setNext(factory.get());
  factories_.push_back(std::move(factory));
  return nullptr;
}

VEXStatus VEXPipeline::allDone() {
  return factories_.empty() ? nullptr : extendStatus(factories_.front()->finish());
}

// ---- detours ----

bool VEXPipeline::sendTo(VEXFactory& target, VEXFeaturePtr& feature, std::int64_t mostExpected) {
  if (isWalking_ && numDetours_ >= numBegun_ * std::max(kMostDetours, mostExpected)) return false;
  ++numDetours_;
  detours_.push_back({&target, std::move(feature)});
  return true;
}

VEXStatus VEXPipeline::walk() {
  if (detours_.empty()) return nullptr;
  isWalking_ = true;
  numBegun_ = static_cast<std::int64_t>(detours_.size());
  numDetours_ = 0;
  while (!detours_.empty()) {
    Detour detour = std::move(detours_.front());
    detours_.pop_front();
    if (VEXStatus failure = detour.target->processFeature(detour.feature)) {
      if (failure->severity() != kSeverityRejected) return extendStatus(std::move(failure));
      dropRefused(kOutputRefused, *failure, detour.feature);
    }
    if (!detours_.empty()) continue;
    for (const std::unique_ptr<VEXFactory>& factory : factories_)
      if (factory->takesLate()) VEX_TRY(factory->flush(std::string()));
  }
  isWalking_ = false;
  return nullptr;
}

VEXFeaturePtr VEXPipeline::getOutputFeature() {
  if (outputQueue_.empty()) return nullptr;
  VEXFeaturePtr feature = std::move(outputQueue_.front());
  outputQueue_.pop_front();
  return feature;
}

VEXFactory* VEXPipeline::find(const std::string& factoryName) const {
  for (const std::unique_ptr<VEXFactory>& factory : factories_)
    if (factory->factoryName() == factoryName) return factory.get();
  return nullptr;
}
