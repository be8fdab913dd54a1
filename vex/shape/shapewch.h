// ShapeWriteChannel: writes the features of one group to one .shp, .shx and .dbf, made when the first feature comes.
// Each feature goes to the shape output first, which may refuse it, then to the table.
//
// Failures: 205001 close in the destructor (logged), those of VEXShapeOutput and VEXDBFOutput. A dataset that is full
// (204021) is finished with what it has before the failure goes up.
#pragma once

#include <cstdint>
#include <string>

#include "vex/shape/shapeout.h"
#include "vex/src/vexchan.h"
#include "vex/tables/dbfout.h"

class ShapeWriteChannel final : public VEXChannel {
 public:
  // The path has no ending; `schema` is the group, whose columns are taken at once.
  ShapeWriteChannel(const std::string& basePath, const VEXFeature& schema, bool aiFix,
                    std::uint64_t longestFile = shp::kLongestFile);
  ~ShapeWriteChannel() override;

  VEXStatus writeFeatureImp(VEXFeature& feature) override;
  VEXStatus close() override;
  void abort() override;

 private:
  class ShapeSink;
  class TableSink;
  VEXStatus startFeature();
  VEXStatus setupDBF();
  VEXStatus finish();

  VEXShapeOutput shape_;
  VEXDBFOutput table_;
  std::string typeName_;  // empty: not declared
  bool hasTypeName_ = false;
  std::vector<std::pair<std::string, std::string>> columns_;  // name, type text
  bool isStarted_ = false;
};
