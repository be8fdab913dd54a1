#include "vex/dynamic/dynafact.h"

#include "vex/dynamic/plugmod.h"

namespace {

constexpr std::uint32_t kNotAFactory = 873002;
constexpr std::uint32_t kFactoryFailed = 873003;

}  // namespace

DynamicFactory::~DynamicFactory() {
  if (handle_ != nullptr && plugin_->closeFactory != nullptr) plugin_->closeFactory(handle_);
}

VEXStatus DynamicFactory::loadModule(const std::string& className) {
  setClassName(className);
  VEX_TRY(loadPlugin(className, plugin_));
  if (plugin_->openFactory == nullptr || plugin_->processFeature == nullptr)
    return makeStatus(kNotAFactory, {className});
  handle_ = plugin_->openFactory(className.c_str());
  if (handle_ == nullptr) return makeStatus(kFactoryFailed, {className, pluginError(*plugin_)});
  return nullptr;
}

VEXStatus DynamicFactory::parseClause(const VEXStringVector& tokens, std::size_t start, std::size_t end) {
  const std::string& keyword = tokens[start];
  const bool isOfEveryFactory = keyword == "INPUT" || keyword == "OUTPUT" || keyword == "FACTORY_NAME";
  if (isOfEveryFactory || plugin_->configureFactory == nullptr)
    return extendStatus(VEXFactory::parseClause(tokens, start, end));
  std::vector<const char*> words;
  for (std::size_t at = start; at <= end; ++at) words.push_back(tokens[at].c_str());
  if (plugin_->configureFactory(handle_, static_cast<std::int32_t>(words.size()), words.data()) < 0)
    return makeStatus(kFactoryFailed, {name(), pluginError(*plugin_)});
  return nullptr;
}

VEXStatus DynamicFactory::process(VEXFeaturePtr& feature) {
  const std::int32_t result = plugin_->processFeature(handle_, pluginHandle(*feature));
  if (result < 0) return makeStatus(kFactoryFailed, {name(), pluginError(*plugin_)});
  if (result == 0) return extendStatus(sendOn(feature));
  feature.reset();
  return nullptr;
}
