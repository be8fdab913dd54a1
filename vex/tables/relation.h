// VEXRelation: joins the records of a table to features by keys, and stores features as records. VEXRelationSet: the
// locations, tables and relations that the mapping file names, and their rows taken apart; docs/functions.md has the
// grammar. Everything is opened at its first use.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "vex/inc/vexfeat.h"
#include "vex/inc/vexname.h"
#include "vex/tables/reltable.h"

class VEXRelation {
 public:
  // Takes a RELATION_DEF row apart from its seventh token on. 837015 for a word that is none of those wanted, 837012
  // for words missing.
  static VEXStatus parse(const VEXStringVector& row, VEXRelationTable& table, VEXRelation& relation);

  // Supplies the columns of the feature's record, or records. 837017: a relation 1:1 without a record; 837018: more
  // than one where one at most may be.
  VEXStatus read(VEXFeature& feature);
  // Stores the feature's attributes as a record, or records.
  VEXStatus write(VEXFeature& feature);

 private:
  enum class Cardinality { OneToMany, OneToOne, OneToNone };
  VEXStatus parseOption(const std::string& option, const std::string& value);
  void sortRecords(std::vector<VEXRelationRecord>& records) const;
  bool isKeyColumn(const std::string& column) const;
  VEXName elementName(const std::string& column, std::size_t index);
  void supply(VEXFeature& feature);
  VEXStatus storeRecord(VEXFeature& feature, bool isList, std::size_t index, bool& isThere);
  void logRecords() const;

  std::string name_;
  VEXRelationTable* table_ = nullptr;
  bool isTransfer_ = false;
  Cardinality cardinality_ = Cardinality::OneToOne;
  bool isUnique_ = false;
  std::vector<VEXName> keyAttributes_;
  VEXStringVector keyColumns_;
  std::string sortColumn_;
  bool isDescending_ = false;
  bool isNumeric_ = false;
  bool logsRows_ = false;
  std::vector<VEXRelationRecord> records_;
  VEXStringVector keys_;
  std::vector<std::string_view> row_;
};

class VEXRelationSet {
 public:
  VEXStatus addLocation(const VEXStringVector& row);
  VEXStatus addTable(const VEXStringVector& row);
  VEXStatus addRelation(const VEXStringVector& row);
  VEXRelation* find(const std::string& name);
  // Ends what was written. The first failure stops; everything is forgotten in either case.
  VEXStatus close();

 private:
  VEXStatus closeAll();

  std::map<std::string, VEXRelationLocation> locations_;  // end last
  std::map<std::string, std::unique_ptr<VEXRelationTable>> tables_;
  std::map<std::string, VEXRelation> relations_;
};
