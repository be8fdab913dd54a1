// VEXShapeOutput: writes features of one geometry type to a .shp and its .shx. Both headers tell of an empty set until
// close(); what is not closed is removed.
//
// Failures: those of ShapeFileWriter, 204009 a type that cannot be written, 204021 the file is full. One feature
// refused: 204008 its geometry does not suit the type, 204010 points, 204011 lines, 204018 too few points for an area,
// 204020 an aggregate that is not sound, 204022 coordinates that are no numbers.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "vex/inc/vexfeat.h"
#include "vex/shape/shpfile.h"
#include "vex/shape/shpparts.h"

class VEXShapeOutput {
 public:
  // The path has no ending.
  explicit VEXShapeOutput(std::string basePath, std::uint64_t longestFile = shp::kLongestFile)
      : basePath_(std::move(basePath)), file_(longestFile) {}

  // An empty name: no type, which takes features without coordinates only.
  VEXStatus open(std::string_view typeName);
  VEXStatus write(const VEXFeature& feature);
  VEXStatus close();
  void abort() { file_.abort(); }
  // Inserts a point where the second part of an area would begin at the index 1498, which a consumer cannot read.
  void setAiFix(bool isOn) { aiFix_ = isOn; }

  const std::string& basePath() const { return basePath_; }
  bool isOpen() const { return file_.isOpen(); }
  std::uint64_t numRecords() const { return file_.numRecords(); }

 private:
  VEXStatus collect(const VEXFeature& feature);
  VEXStatus collectPoints(const VEXFeature& feature);
  VEXStatus collectLines(const VEXFeature& feature);
  VEXStatus collectRings(const VEXFeature& feature);
  VEXStatus collectMixture(const VEXFeature& feature, const VEXLineRange& range, std::uint32_t mask,
                           std::size_t (&numOfKind)[5]);
  VEXStatus collectLeaves(const VEXFeature& feature, std::vector<VEXLineRange>& ranges) const;
  VEXStatus settleArea(const VEXFeature& feature);
  VEXStatus refuse(std::uint32_t number, const VEXFeature& feature) const;
  void findMeasures(const VEXFeature& feature);
  VEXStatus writeNull();
  bool writeSingleRing(const VEXFeature& feature, VEXStatus& failure);
  VEXStatus writeParts();
  char* encodePoints(char* at) const;
  char* encodeBlock(char* at, const double* values, double missing, bool isMeasure) const;
  void growBox(const VEXFeature& feature);

  std::string basePath_;
  ShapeFileWriter file_;
  ShapeParts parts_;
  const shp::Type* type_ = nullptr;  // null: no type
  bool aiFix_ = false;
  bool writesM_ = false;  // the record at hand
  ShapeExtent extent_;    // of all records
  VEXBox heights_;        // of all records, z in the place of x
};
