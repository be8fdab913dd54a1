// VEXRelationTable: a table that relations look records up in and add records to. A file is read whole at the first
// look-up and kept by its keys; a database is asked for each key.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/tables/dbtable.h"

// A TABLE_LOCATION row: a directory of files, or a database, which is connected at its first use.
struct VEXRelationLocation {
  std::string directory;
  bool isDatabase = false;
  VEXDatabasePlace place;
  std::shared_ptr<VEXDatabaseSession> session;
  bool hasFailed = false;  // what is not committed is not going to be

  VEXStatus connect(VEXDatabase::Access access);  // 837019
  VEXStatus finish();                             // commits, or rolls back after a failure: 837024
};

// What stands in a TABLE_DEF row behind the name of the table.
struct VEXRelationTableDef {
  std::string name;
  std::string kind;                                         // DATABASE, or a kind of table file
  std::string source;                                       // file, or table of the database
  std::vector<std::pair<std::string, std::string>> fields;  // directives and columns
};

using VEXRelationRecord = std::vector<std::optional<std::string>>;

class VEXRelationTable {
 public:
  virtual ~VEXRelationTable();
  static std::unique_ptr<VEXRelationTable> make(VEXRelationTableDef definition, VEXRelationLocation& location);

  const std::string& name() const { return definition_.name; }
  // The columns of the records, known after find() or prepareStore().
  const VEXStringVector& columns() const { return columns_; }

  // The records whose key columns hold these values, in the table's order. 837022: a key column that is not there.
  virtual VEXStatus find(const VEXStringVector& keyColumns, const VEXStringVector& keys,
                         std::vector<VEXRelationRecord>& records) = 0;
  virtual VEXStatus prepareStore() = 0;
  // Adds a record, one value a column; none is NULL. With `uniqueColumns` (indices) nothing happens when there is a
  // record with the same values in them.
  virtual VEXStatus store(std::span<const std::string_view> record, std::span<const std::size_t> uniqueColumns) = 0;
  virtual VEXStatus close() { return nullptr; }

 protected:
  VEXRelationTable(VEXRelationTableDef definition, VEXRelationLocation& location)
      : definition_(std::move(definition)), location_(location) {}
  VEXStatus checkColumns(const VEXStringVector& wanted) const;

  VEXRelationTableDef definition_;
  VEXRelationLocation& location_;
  VEXStringVector columns_;
};
