// DatabaseWriter: the writer of type DATABASE. A _DEF row names a feature type, its table and the columns; the table is
// created when it is not there. All tables share one connection and one transaction, which is ended every _BATCH_ROWS
// rows and at the end: a run that fails leaves the batches that were complete.
//
// Failures: 318002 no connection, 318003 a _DEF row with a word left over or without columns, 318004 _BATCH_ROWS is no
// count, 318005 the last transaction cannot be ended, 318006 two feature types with one table; those of
// VEXDatabaseOutput.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "vex/src/writrimp.h"
#include "vex/tables/dbtable.h"

class DatabaseWriter final : public VEXWriterImp {
 public:
  DatabaseWriter(const std::string& type, const std::string& keyword);
  ~DatabaseWriter() override;

  VEXStatus writeGlobalMetaData(VEXFeature& feature) override;
  VEXStatus open(const VEXStringVector& parameters) override;
  VEXStatus close() override;
  void abort() override;
  int maxChannels() override { return 460; }
  VEXStatus createChannel(VEXGroup& group, std::unique_ptr<VEXChannel>& out) override;

 private:
  VEXStatus addDefinition(const VEXStringVector& row);

  struct Definition {
    std::string table;
    std::vector<std::pair<std::string, std::string>> columns;
  };
  std::shared_ptr<VEXDatabaseSession> session_;
  bool isOverwriting_ = false;
  std::unordered_map<std::string, Definition> definitions_;  // by feature type
  std::unordered_map<std::string, std::string> typeOfTable_;
};
