// DynamicFactory: a factory whose work is done by a plug-in module, see vex/inc/orvplugin.h. Clauses that are not
// those of every factory go to the module.
#pragma once

#include "vex/factory/factory.h"
#include "vex/inc/orvplugin.h"

class DynamicFactory final : public VEXFactory {
 public:
  DynamicFactory() : VEXFactory("DynamicFactory") {}
  ~DynamicFactory() override;
  VEXStatus loadModule(const std::string& className);  // 871008, 873002, 873003
  VEXStatus parseClause(const VEXStringVector& tokens, std::size_t start, std::size_t end) override;

 private:
  VEXStatus process(VEXFeaturePtr& feature) override;  // 873003

  const ORV_Plugin* plugin_ = nullptr;
  void* handle_ = nullptr;
};
