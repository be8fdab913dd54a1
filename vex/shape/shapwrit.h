// ShapeWriter: the writer of type SHAPE. The dataset is a directory, made when it is missing; each group becomes a
// .shp, .shx and .dbf of its name in it.
//
// Failures: 206004 two groups whose names make one file.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>

#include "vex/src/writrimp.h"

class ShapeWriter final : public VEXWriterImp {
 public:
  ShapeWriter(const std::string& type, const std::string& keyword);
  ~ShapeWriter() override;

  VEXStatus setup() override;
  VEXStatus writeGlobalMetaData(VEXFeature& feature) override;
  VEXStatus open(const VEXStringVector& parameters) override;
  int maxChannels() override { return 130; }
  VEXStatus createChannel(VEXGroup& group, std::unique_ptr<VEXChannel>& out) override;

 private:
  std::string directory_;
  bool aiFix_ = false;
  std::unordered_map<std::string, std::string> groupOfFile_;  // by base path
};
