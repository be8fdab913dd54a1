// JavaReader: the bridge to reader classes in a Java machine. No machine is bound to this build, so that no class is
// ever found and a type that is not registered goes on to the plug-ins.
#pragma once

#include "vex/src/readrimp.h"

class JavaReader final : public VEXReaderImp {
 public:
  using VEXReaderImp::VEXReaderImp;
  VEXStatus loadClass(const std::string& className);  // 871007
  VEXStatus getGlobalMetaData(VEXFeaturePtr&) override { return nullptr; }
  VEXStatus readFeature(VEXFeaturePtr& out) override;
  VEXStatus open(const VEXStringVector& parameters) override;
  VEXStatus close() override { return nullptr; }
  VEXStatus readSchemaFeatures(const VEXStringVector& parameters, VEXFeatureVector& out) override;
};
