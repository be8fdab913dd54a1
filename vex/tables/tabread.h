// TabularReader: the reader of type TABLE. A _DEF row names a table file of the dataset directory; its rows are the
// features of the row's feature type, its columns their attributes. The files are read one behind the other, in the
// order of the rows. The dataset may also be one file: see docs/formats/table.md.
//
// Failures: 315002 no table to read, 315004 a schema is asked for, 315005 an unknown kind of table, 315006 a _DEF row
// with words missing.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "vex/inc/vexname.h"
#include "vex/src/readrimp.h"
#include "vex/tables/filetab.h"

class TabularReader final : public VEXReaderImp {
 public:
  TabularReader(const std::string& type, const std::string& keyword);
  ~TabularReader() override;

  VEXStatus setup() override;
  VEXStatus getGlobalMetaData(VEXFeaturePtr& out) override;
  VEXStatus readFeature(VEXFeaturePtr& out) override;
  VEXStatus open(const VEXStringVector& parameters) override;
  VEXStatus close() override;
  VEXStatus readSchemaFeatures(const VEXStringVector& parameters, VEXFeatureVector& out) override;
  void abort() override;

 private:
  struct Table {
    VEXTableDefinition definition;
    std::string path;
  };
  void listTablesOfFile(const std::string& file);
  bool isWanted(const VEXTableDefinition& definition) const;
  void skip(const Table& table, std::string_view reason) const;
  VEXStatus openTable(const Table& table);
  VEXStatus takeRow(VEXTableRow row, VEXFeature& feature) const;

  std::vector<VEXTableDefinition> definitions_;
  VEXStringVector ids_;
  std::vector<Table> tables_;  // that are there and wanted
  std::size_t nextTable_ = 0;
  std::unique_ptr<VEXTableInput> input_;  // the table that is being read
  std::vector<VEXName> columns_;          // of that table
  bool hasGeometry_ = false;              // some of them are parts of the geometry
};
