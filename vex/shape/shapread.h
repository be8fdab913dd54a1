// ShapeReader: the reader of type SHAPE. The dataset is a directory (or one .shp file); each base name in it is a
// feature type with its .shp, .shx and .dbf. The files are read one behind the other, in the order of their names.
//
// Failures: 203006 and 203007 a type that has no schema, 203009 not open, 207001 to 207004 no schema to tell, 207006
// nothing to read, 207008 the dataset cannot be listed, 207016 to 207018 keywords; those of VEXShapeInput and
// VEXDBFInput.
#pragma once

#include <memory>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "vex/inc/vexname.h"
#include "vex/shape/shapein.h"
#include "vex/src/readrimp.h"
#include "vex/tables/dbfin.h"

class ShapeReader final : public VEXReaderImp {
 public:
  ShapeReader(const std::string& type, const std::string& keyword);
  ~ShapeReader() override;

  VEXStatus setup() override;
  VEXStatus getGlobalMetaData(VEXFeaturePtr& out) override;
  VEXStatus readFeature(VEXFeaturePtr& out) override;
  VEXStatus open(const VEXStringVector& parameters) override;
  VEXStatus close() override;
  VEXStatus readSchemaFeatures(const VEXStringVector& parameters, VEXFeatureVector& out) override;
  void abort() override;

 private:
  struct Definition {
    std::string featureType;          // as the row has it
    const shp::Type* type = nullptr;  // null: not declared
    std::vector<std::pair<std::string, std::string>> columns;
  };
  // The files of one base name; a path is empty when the file is not there.
  struct Files {
    std::string baseName;
    std::string shp;
    std::string shx;
    std::string dbf;
  };
  VEXStatus addDefinition(const VEXStringVector& row);
  VEXStatus listFiles(const std::string& dataset);
  void selectFiles(const std::string& dataset);
  void skip(std::string_view name, std::string_view reason) const;
  const Definition* definitionOf(const std::string& baseName) const;
  VEXStatus openFiles(const Files& files);
  VEXStatus openTable(const Files& files, const Definition* definition);
  VEXStatus closeFiles();
  void reportRows() const;
  VEXStatus addAttributes(VEXFeature& feature, bool& isDeleted);
  VEXStatus findRow(std::uint64_t record, bool& isThere, bool& isDeleted);
  VEXStatus addSchema(const Files& files, VEXFeatureVector& out) const;

  std::vector<Definition> definitions_;
  std::unordered_set<std::string> wanted_;  // upper case; empty: all
  bool makesAggregates_ = false;
  bool readsWithoutIndex_ = false;
  bool isOpen_ = false;
  std::vector<Files> files_;  // to be read
  std::size_t nextFile_ = 0;

  std::unique_ptr<VEXShapeInput> input_;  // the dataset that is being read
  std::unique_ptr<VEXDBFInput> table_;    // null: it has none
  VEXName type_;                          // of its features
  std::vector<VEXName> columns_;
  VEXTableRow row_;              // of the table's record rowRecord_
  std::uint64_t rowRecord_ = 0;  // from 0; valid when hasRow_
  bool hasRow_ = false;
  bool isTableAtEnd_ = false;
  bool isFirstFeature_ = false;
  std::uint64_t numWithoutRow_ = 0;
  std::uint64_t numDeleted_ = 0;
};
