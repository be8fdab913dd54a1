#include "vex/tables/dbread.h"

#include <algorithm>

#include "vex/inc/numtext.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexlog.h"
#include "vex/src/vexrcycl.h"

namespace {

constexpr std::uint32_t kNoReaderDataset = 883001;

}  // namespace

VEXStatus databasePlaceOf(const VEXDriverKeywords& keywords, std::uint32_t noDataset, VEXDatabasePlace& place) {
  keywords.getString("_SERVER_TYPE", place.serverType, "SQLITE");
  keywords.getString("_SERVER_NAME", place.serverName, "");
  keywords.getString("_USER_NAME", place.userName, "");
  keywords.getString("_PASSWORD", place.password, "");
  if (keywords.getString("_DB_NAME", place.databaseName)) return nullptr;
  return extendStatus(keywords.getDataset(place.databaseName, noDataset));
}

DatabaseReader::DatabaseReader(const std::string& type, const std::string& keyword) : VEXReaderImp(type, keyword) {}

DatabaseReader::~DatabaseReader() = default;

VEXStatus DatabaseReader::setup() {
  VEXLineVector rows;
  VEX_TRY(getDefLines(rows));
  definitions_.clear();
  for (const VEXStringVector& row : rows) VEX_TRY(addTable(row));
  getIDs(ids_);
  condition_.clear();
  for (const std::string& prefix : {keyword(), readerType()})
    if (VEXConfiguration::joinedValue(prefix + "_WHERE", condition_)) break;
  return nullptr;
}

// keyword, feature type, then pairs: DATABASE_TABLE, DATABASE_WHERE, or a column and its type.
VEXStatus DatabaseReader::addTable(const VEXStringVector& row) {
  if (row.size() % 2 != 0) return makeStatus(317005, {joined(row, " ")});
  Table table{.featureType = row[1], .name = row[1], .condition = {}, .columns = {}};
  for (std::size_t i = 2; i < row.size(); i += 2) {
    if (row[i] == "DATABASE_TABLE")
      table.name = row[i + 1];
    else if (row[i] == "DATABASE_WHERE")
      table.condition = row[i + 1];
    else
      table.columns.push_back(row[i]);
  }
  definitions_.push_back(std::move(table));
  return nullptr;
}

VEXStatus DatabaseReader::connect() {
  VEXDatabasePlace place;
  VEX_TRY(databasePlaceOf(keywords(), kNoReaderDataset, place));
  std::string reason;
  database_ = VEXDatabase::open(place, VEXDatabase::Access::Read, reason);
  if (database_ == nullptr) return makeStatus(317002, {place.serverType, place.databaseName, reason});
  return nullptr;
}

VEXStatus DatabaseReader::listTables() {
  tables_ = definitions_;
  if (definitions_.empty()) {
    VEXStringVector names;
    if (!database_->listTables(names)) return makeStatus(317003, {database_->errorText()});
    for (const std::string& name : names)
      tables_.push_back({.featureType = name, .name = name, .condition = {}, .columns = {}});
  }
  std::erase_if(tables_, [this](const Table& table) {
    return !ids_.empty() && std::none_of(ids_.begin(), ids_.end(), [&](const std::string& id) {
      return id == table.featureType || id == table.name;
    });
  });
  return nullptr;
}

VEXStatus DatabaseReader::open(const VEXStringVector&) {
  logMessage(VEXSeverity::Inform, 317001);
  VEX_TRY(connect());
  VEX_TRY(listTables());
  nextTable_ = 0;
  if (tables_.empty()) return makeStatus(317004, {readerType()});
  return nullptr;
}

VEXStatus DatabaseReader::openTable(const Table& table) {
  input_ = std::make_unique<VEXDatabaseInput>(database_, table.name);
  for (const std::string& column : table.columns) VEX_TRY(input_->addField(column, {}));
  std::string condition = condition_;
  if (condition.empty())
    condition = table.condition;
  else if (!table.condition.empty())
    condition = "(" + condition + ") AND (" + table.condition + ")";
  VEX_TRY(input_->addField("DATABASE_WHERE", condition));
  VEX_TRY(input_->startRows());
  columns_.clear();
  for (const std::string& name : input_->columnNames()) columns_.push_back(VEXName::intern(name));
  return nullptr;
}

VEXStatus DatabaseReader::getGlobalMetaData(VEXFeaturePtr& out) {
  out.reset();
  return nullptr;
}

VEXStatus DatabaseReader::readFeature(VEXFeaturePtr& out) {
  out.reset();
  for (;;) {
    if (input_ == nullptr) {
      if (nextTable_ >= tables_.size()) return nullptr;
      VEX_TRY(openTable(tables_[nextTable_++]));
    }
    VEXTableRow row;
    bool atEnd = false;
    VEX_TRY(input_->getRow(row, atEnd));
    if (!atEnd) {
      out = VEXObjectRecycler::instance().getFeature();
      out->setFeatureType(tables_[nextTable_ - 1].featureType);
      for (std::size_t i = 0; i < row.size(); ++i)
        if (row[i].data() != nullptr) out->setAttribute(columns_[i], row[i]);
      return nullptr;
    }
    input_.reset();
  }
}

VEXStatus DatabaseReader::readSchemaFeatures(const VEXStringVector&, VEXFeatureVector& out) {
  if (database_ == nullptr) VEX_TRY(connect());
  VEX_TRY(listTables());
  VEXStringVector names;
  for (const Table& table : tables_) names.push_back(table.name);
  keepListedIDs(names);
  for (const Table& table : tables_) {
    if (std::find(names.begin(), names.end(), table.name) == names.end()) continue;
    std::vector<VEXDatabaseColumn> columns;
    if (!database_->describe(table.name, columns)) return makeStatus(309002, {table.name, database_->errorText()});
    VEXFeaturePtr feature = VEXObjectRecycler::instance().getFeature();
    feature->setFeatureType(table.featureType);
    for (const VEXDatabaseColumn& column : columns)
      if (table.columns.empty() ||
          std::find(table.columns.begin(), table.columns.end(), column.name) != table.columns.end())
        feature->setSequenced(column.name, column.type);
    out.push_back(std::move(feature));
  }
  return nullptr;
}

VEXStatus DatabaseReader::close() {
  input_.reset();
  database_.reset();
  return nullptr;
}

void DatabaseReader::abort() {
  input_.reset();
  database_.reset();
}
