// DynaReader: a reader whose work is done by a plug-in module, see vex/inc/orvplugin.h.
#pragma once

#include "vex/inc/orvplugin.h"
#include "vex/src/readrimp.h"

class DynaReader final : public VEXReaderImp {
 public:
  using VEXReaderImp::VEXReaderImp;
  ~DynaReader() override;
  VEXStatus loadModule();  // the module of the given type; 871008, 871009
  VEXStatus getGlobalMetaData(VEXFeaturePtr&) override { return nullptr; }
  VEXStatus readFeature(VEXFeaturePtr& out) override;          // 871010
  VEXStatus open(const VEXStringVector& parameters) override;  // 871009, 871010, 883001
  VEXStatus close() override;
  // The _DEF rows as they stand. 883003: a name without its type.
  VEXStatus readSchemaFeatures(const VEXStringVector& parameters, VEXFeatureVector& out) override;
  void abort() override { closeHandle(); }

 private:
  void closeHandle();

  const ORV_Plugin* plugin_ = nullptr;
  void* handle_ = nullptr;
};
