// The table of factories.
#include <algorithm>

#include "vex/dynamic/dynafact.h"
#include "vex/factory/factory.h"
#include "vex/inc/vexassert.h"
#include "vex/src/creator.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kFactoryUnknown = 873001;

}  // namespace

// The makers of all factories, one in each fct file.
#define VEX_FACTORY(file, className) std::unique_ptr<VEXFactory> make_##file();
#include "vex/factory/fctlist.inc"
#undef VEX_FACTORY

void VEXCreator::registerFactories() {
  factoryCreator_.clear();
#define VEX_FACTORY(file, className) addFactory(className, &make_##file);
#include "vex/factory/fctlist.inc"
#undef VEX_FACTORY
}

void VEXCreator::addFactory(const std::string& className, FactoryMaker maker) {
  const bool isNew = factoryCreator_.emplace(className, maker).second;
  VEX_ASSERT(isNew);
}

VEXStatus VEXCreator::createFactory(std::unique_ptr<VEXFactory>& out, const std::string& className) {
  const auto& makers = instance().factoryCreator_;
  auto found = makers.find(className);
  if (found != makers.end()) {
    out = found->second();
    return nullptr;
  }
  auto dynamic = std::make_unique<DynamicFactory>();
  if (VEXStatus failure = dynamic->loadModule(className)) {
    logText(VEXSeverity::Warn, failure->message());
    return makeStatus(kFactoryUnknown, {className});
  }
  out = std::move(dynamic);
  return nullptr;
}

void VEXCreator::factoryNames(VEXStringVector& names) const {
  names.clear();
  for (const auto& entry : factoryCreator_) names.push_back(entry.first);
  std::sort(names.begin(), names.end());
}
