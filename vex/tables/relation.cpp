#include "vex/tables/relation.h"

#include <algorithm>

#include "vex/inc/numtext.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexlog.h"
#include "vex/tables/filetab.h"

namespace {

constexpr std::size_t kFirstKey = 7;  // of a RELATION_DEF row

bool pickWord(const std::string& word, std::string_view yes, std::string_view no, bool& picked) {
  picked = equalsIgnoringCase(word, yes);
  return picked || equalsIgnoringCase(word, no);
}

VEXStatus badWord(const std::string& word, std::string_view wanted, const VEXStringVector& row) {
  return makeStatus(837015, {word, wanted, joined(row, " ")});
}

}  // namespace

// Relate RELATION_DEF <relation> <kind> <cardinality> <uniqueness> <table> then pairs.
VEXStatus VEXRelation::parse(const VEXStringVector& row, VEXRelationTable& table, VEXRelation& relation) {
  relation.name_ = row[2];
  relation.table_ = &table;
  if (!pickWord(row[3], "TRANSFER", "JOIN", relation.isTransfer_)) return badWord(row[3], "JOIN or TRANSFER", row);
  if (equalsIgnoringCase(row[4], "1:M"))
    relation.cardinality_ = Cardinality::OneToMany;
  else if (row[4] == "1:1")
    relation.cardinality_ = Cardinality::OneToOne;
  else if (row[4] == "1:0..1")
    relation.cardinality_ = Cardinality::OneToNone;
  else
    return badWord(row[4], "1:M, 1:1 or 1:0..1", row);
  if (!pickWord(row[5], "UNIQUE", "NOTUNIQUE", relation.isUnique_)) return badWord(row[5], "UNIQUE or NOTUNIQUE", row);
  for (std::size_t i = kFirstKey; i < row.size(); i += 2) {
    if (row[i] == "SORT_BY") {
      relation.sortColumn_ = row[i + 1];
    } else if (row[i] == "SORT_DIRECTION") {
      if (!pickWord(row[i + 1], "DESCENDING", "ASCENDING", relation.isDescending_))
        return badWord(row[i + 1], "ASCENDING or DESCENDING", row);
    } else if (row[i] == "SORTED") {
      if (!pickWord(row[i + 1], "NUMERIC", "ALPHA", relation.isNumeric_))
        return badWord(row[i + 1], "ALPHA or NUMERIC", row);
    } else if (row[i] == "LOG_ROWS") {
      if (!pickWord(row[i + 1], "YES", "NO", relation.logsRows_)) return badWord(row[i + 1], "YES or NO", row);
    } else {
      relation.keyAttributes_.push_back(VEXName::intern(row[i]));
      relation.keyColumns_.push_back(row[i + 1]);
    }
  }
  if (relation.keyColumns_.empty()) return makeStatus(837012, {joined(row, " ")});
  return nullptr;
}

bool VEXRelation::isKeyColumn(const std::string& column) const {
  return std::find(keyColumns_.begin(), keyColumns_.end(), column) != keyColumns_.end();
}

VEXName VEXRelation::elementName(const std::string& column, std::size_t index) {
  return VEXName::intern(column + "{" + integerText(static_cast<std::int64_t>(index)) + "}");
}

void VEXRelation::sortRecords(std::vector<VEXRelationRecord>& records) const {
  const VEXStringVector& columns = table_->columns();
  const auto found = std::find(columns.begin(), columns.end(), sortColumn_);
  if (found == columns.end()) return;
  const auto at = static_cast<std::size_t>(found - columns.begin());
  const auto numberAt = [at](const VEXRelationRecord& record) {
    double number = 0.0;
    return record[at].has_value() && textToReal(*record[at], number) ? number : 0.0;
  };
  std::stable_sort(records.begin(), records.end(), [&](const VEXRelationRecord& a, const VEXRelationRecord& b) {
    const VEXRelationRecord& first = isDescending_ ? b : a;
    const VEXRelationRecord& second = isDescending_ ? a : b;
    return isNumeric_ ? numberAt(first) < numberAt(second) : first[at] < second[at];
  });
}

void VEXRelation::logRecords() const {
  for (const VEXRelationRecord& record : records_) {
    std::string text;
    for (std::size_t i = 0; i < record.size(); ++i)
      text.append(i > 0 ? ", " : "").append(table_->columns()[i]).append("=").append(record[i].value_or("NULL"));
    logMessage(VEXSeverity::Inform, 837025, {name_, text});
  }
}

VEXStatus VEXRelation::read(VEXFeature& feature) {
  keys_.clear();
  for (const VEXName name : keyAttributes_)
    if (const VEXText* value = feature.findAttribute(name); value != nullptr) keys_.emplace_back(*value);
  records_.clear();
  if (keys_.size() == keyAttributes_.size()) VEX_TRY(table_->find(keyColumns_, keys_, records_));
  if (isUnique_ && cardinality_ == Cardinality::OneToMany) {
    std::vector<VEXRelationRecord> once;
    for (VEXRelationRecord& record : records_)
      if (std::find(once.begin(), once.end(), record) == once.end()) once.push_back(std::move(record));
    records_ = std::move(once);
  }
  if (!sortColumn_.empty()) sortRecords(records_);
  if (logsRows_) logRecords();
  if (cardinality_ != Cardinality::OneToMany) {
    if (records_.empty() && cardinality_ == Cardinality::OneToOne)
      return makeStatus(837017, {name_, joined(keys_, ", ")});
    if (records_.size() > 1 && isUnique_)
      return makeStatus(837018, {name_, joined(keys_, ", "), integerText(static_cast<std::int64_t>(records_.size()))});
  }
  supply(feature);
  return nullptr;
}

void VEXRelation::supply(VEXFeature& feature) {
  const bool isMany = cardinality_ == Cardinality::OneToMany;
  const std::size_t numRecords = isMany ? records_.size() : std::min<std::size_t>(1, records_.size());
  const VEXStringVector& columns = table_->columns();
  for (std::size_t r = 0; r < numRecords; ++r)
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (isKeyColumn(columns[i])) continue;
      const VEXName name = isMany ? elementName(columns[i], r) : VEXName::intern(columns[i]);
      if (records_[r][i].has_value())
        feature.setAttribute(name, *records_[r][i]);
      else
        feature.removeAttribute(name);
    }
  if (!isTransfer_ || numRecords == 0) return;
  for (const VEXName name : keyAttributes_) feature.removeAttribute(name);
}

VEXStatus VEXRelation::storeRecord(VEXFeature& feature, bool isList, std::size_t index, bool& isThere) {
  const VEXStringVector& columns = table_->columns();
  row_.assign(columns.size(), {});
  isThere = !isList;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const auto key = std::find(keyColumns_.begin(), keyColumns_.end(), columns[i]);
    VEXName name;
    if (key != keyColumns_.end())
      name = keyAttributes_[static_cast<std::size_t>(key - keyColumns_.begin())];
    else
      name = isList ? elementName(columns[i], index) : VEXName::intern(columns[i]);
    const VEXText* value = feature.findAttribute(name);
    if (value == nullptr) continue;
    row_[i] = *value;
    if (key == keyColumns_.end()) isThere = true;
  }
  if (!isThere) return nullptr;
  std::vector<std::size_t> uniqueColumns;
  if (isUnique_)
    for (std::size_t i = 0; i < columns.size(); ++i)
      if (isList || isKeyColumn(columns[i])) uniqueColumns.push_back(i);
  VEX_TRY(table_->store(row_, uniqueColumns));
  if (!isTransfer_) return nullptr;
  for (const std::string& column : columns)
    if (!isKeyColumn(column)) feature.removeAttribute(isList ? elementName(column, index) : VEXName::intern(column));
  return nullptr;
}

VEXStatus VEXRelation::write(VEXFeature& feature) {
  VEX_TRY(table_->prepareStore());
  for (const std::string& column : keyColumns_)
    if (std::find(table_->columns().begin(), table_->columns().end(), column) == table_->columns().end())
      return makeStatus(837022, {table_->name(), column, joined(table_->columns(), ", ")});
  bool isThere = true;
  if (cardinality_ != Cardinality::OneToMany) return extendStatus(storeRecord(feature, false, 0, isThere));
  for (std::size_t i = 0; isThere; ++i) VEX_TRY(storeRecord(feature, true, i, isThere));
  return nullptr;
}

// Relate TABLE_LOCATION <location> <directory>, or pairs of DATABASE_... and value in place of the directory.
VEXStatus VEXRelationSet::addLocation(const VEXStringVector& row) {
  if (row.size() < 4) return makeStatus(837010, {joined(row, " ")});
  VEXRelationLocation location;
  location.isDatabase = row.size() > 4;
  if (!location.isDatabase) location.directory = VEXConfiguration::normalisePath(row[3]);
  for (std::size_t i = 3; location.isDatabase && i < row.size(); i += 2)
    if (i + 1 == row.size() || !setDatabasePlace(location.place, row[i], row[i + 1]))
      return makeStatus(837010, {joined(row, " ")});
  if (!locations_.emplace(row[2], std::move(location)).second) return makeStatus(837011, {row[2]});
  return nullptr;
}

// Relate TABLE_DEF <table> <kind> <location> <file or table> then pairs of column or directive and type or value.
VEXStatus VEXRelationSet::addTable(const VEXStringVector& row) {
  if (row.size() < 6 || row.size() % 2 != 0) return makeStatus(837006, {joined(row, " ")});
  if (tables_.contains(row[2])) return makeStatus(837007, {row[2]});
  const auto location = locations_.find(row[4]);
  if (location == locations_.end()) return makeStatus(837009, {row[4], row[2]});
  VEXRelationTableDef definition{.name = row[2], .kind = row[3], .source = row[5], .fields = {}};
  const bool isDatabase = definition.kind == "DATABASE";
  if (isDatabase != location->second.isDatabase || (!isDatabase && findTableKind(definition.kind) == nullptr))
    return makeStatus(837008, {row[3], row[2], row[4]});
  for (std::size_t i = 6; i < row.size(); i += 2) definition.fields.emplace_back(row[i], row[i + 1]);
  tables_.emplace(row[2], VEXRelationTable::make(std::move(definition), location->second));
  return nullptr;
}

VEXStatus VEXRelationSet::addRelation(const VEXStringVector& row) {
  if (row.size() < kFirstKey + 2 || row.size() % 2 == 0) return makeStatus(837012, {joined(row, " ")});
  if (relations_.contains(row[2])) return makeStatus(837013, {row[2]});
  const auto table = tables_.find(row[6]);
  if (table == tables_.end()) return makeStatus(837014, {row[6], row[2]});
  VEXRelation relation;
  VEX_TRY(VEXRelation::parse(row, *table->second, relation));
  relations_.emplace(row[2], std::move(relation));
  return nullptr;
}

VEXRelation* VEXRelationSet::find(const std::string& name) {
  const auto found = relations_.find(name);
  return found == relations_.end() ? nullptr : &found->second;
}

VEXStatus VEXRelationSet::closeAll() {
  for (auto& [name, table] : tables_) VEX_TRY(table->close());
  for (auto& [name, location] : locations_) VEX_TRY(location.finish());
  return nullptr;
}

VEXStatus VEXRelationSet::close() {
  VEXStatus failure = closeAll();
  relations_.clear();
  tables_.clear();
  locations_.clear();
  return extendStatus(std::move(failure));
}
