// VEXShapeInput: the geometry of one Shape dataset's records, one after the other. Attributes are the reader's matter.
//
// Failures: those of ShapeFileReader, 203008 not open, 207009 to 207013 the file's type is not the declared one or
// cannot be read. One record refused: 203012 its type is not the file's, 203018 its type is unknown, 203013 counts that
// do not fit, 203014 part indexes, 203015 infinite coordinates. 203019 tells how many were refused.
#pragma once

#include <cstdint>
#include <string>

#include "vex/inc/vexfeat.h"
#include "vex/shape/shpfile.h"
#include "vex/shape/shpgeom.h"

class VEXShapeInput {
 public:
  // The index path is empty when there is none to be used.
  VEXShapeInput(std::string featureType, std::string shpPath, std::string shxPath, bool makesAggregates);

  VEXStatus open(const shp::Type* declared);  // null: any type will do
  VEXStatus close();
  // A feature with its geometry; null at the end. After a status of kSeverityRejected the next record may be read.
  VEXStatus read(VEXFeaturePtr& out);

  const shp::Header& header() const { return file_.header(); }
  std::uint64_t recordNumber() const { return file_.recordNumber(); }  // of the last read(), from 1
  std::uint64_t numEntries() const { return file_.numEntries(); }
  // What SHAPE_GEOMETRY says on a feature; empty for a file of null shapes.
  const char* typeName() const { return type_->readName; }

 private:
  VEXStatus checkType(const shp::Type* declared);
  VEXStatus refuseRecord(shp::RecordFault fault, const shp::Record& record, std::size_t contentBytes) const;
  VEXStatus refuse(std::uint32_t number) const;

  std::string featureType_;
  std::string shpPath_;
  std::string shxPath_;
  ShapeFileReader file_;
  ShapeDecoder decoder_;
  const shp::Type* type_ = nullptr;
  std::uint64_t numRefused_ = 0;
  bool isReported_ = false;  // 203004 has been logged
};
