// DynaWriter: a writer whose work is done by a plug-in module, see vex/inc/orvplugin.h. Features reach the module in
// the order in which their groups are written.
#pragma once

#include "vex/inc/orvplugin.h"
#include "vex/src/writrimp.h"

class DynaWriter final : public VEXWriterImp {
 public:
  using VEXWriterImp::VEXWriterImp;
  ~DynaWriter() override;
  VEXStatus loadModule(const std::string& moduleName);  // 871008, 872004
  VEXStatus writeGlobalMetaData(VEXFeature&) override { return nullptr; }
  VEXStatus open(const VEXStringVector& parameters) override;  // 872004, 872005, 882006
  VEXStatus close() override;                                  // 872005
  int maxChannels() override { return 130; }
  VEXStatus createChannel(VEXGroup& group, std::unique_ptr<VEXChannel>& out) override;
  void abort() override;
  VEXStatus writeFeature(VEXFeature& feature);  // 872005; 872006 refuses the feature

 private:
  std::string moduleName_;
  const ORV_Plugin* plugin_ = nullptr;
  void* handle_ = nullptr;
};
