// DatabaseReader: the reader of type DATABASE. A _DEF row names a table or view of the database and gives its rows a
// feature type; without such rows every table is read, under its own name. Calls are those of VEXReaderImp.
//
// Failures: 317002 no connection, 317003 the tables cannot be listed, 317004 no table to read, 317005 a _DEF row with a
// word left over; those of VEXDatabaseInput.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "vex/inc/vexname.h"
#include "vex/src/readrimp.h"
#include "vex/tables/dbtable.h"

// The database that a driver's keywords name.
VEXStatus databasePlaceOf(const VEXDriverKeywords& keywords, std::uint32_t noDataset, VEXDatabasePlace& place);

class DatabaseReader final : public VEXReaderImp {
 public:
  DatabaseReader(const std::string& type, const std::string& keyword);
  ~DatabaseReader() override;

  VEXStatus setup() override;
  VEXStatus getGlobalMetaData(VEXFeaturePtr& out) override;
  VEXStatus readFeature(VEXFeaturePtr& out) override;
  VEXStatus open(const VEXStringVector& parameters) override;
  VEXStatus close() override;
  VEXStatus readSchemaFeatures(const VEXStringVector& parameters, VEXFeatureVector& out) override;
  void abort() override;

 private:
  struct Table {
    std::string featureType;
    std::string name;
    std::string condition;
    VEXStringVector columns;  // wanted; empty: all
  };
  VEXStatus connect();
  VEXStatus addTable(const VEXStringVector& row);
  VEXStatus listTables();
  VEXStatus openTable(const Table& table);

  std::vector<Table> definitions_;
  std::vector<Table> tables_;  // to be read
  VEXStringVector ids_;
  std::string condition_;  // of all tables
  std::shared_ptr<VEXDatabase> database_;
  std::size_t nextTable_ = 0;
  std::unique_ptr<VEXDatabaseInput> input_;
  std::vector<VEXName> columns_;
};
