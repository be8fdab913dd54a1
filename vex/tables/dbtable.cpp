#include "vex/tables/dbtable.h"

#include <algorithm>

#include "vex/inc/numtext.h"
#include "vex/src/vexlog.h"

bool setDatabasePlace(VEXDatabasePlace& place, std::string_view directive, std::string_view value) {
  struct Part {
    std::string_view name;
    std::string VEXDatabasePlace::*member;
  };
  for (const Part& part :
       {Part{"DATABASE_SERVER_TYPE", &VEXDatabasePlace::serverType},
        Part{"DATABASE_SERVER_NAME", &VEXDatabasePlace::serverName},
        Part{"DATABASE_USER_NAME", &VEXDatabasePlace::userName}, Part{"DATABASE_PASSWORD", &VEXDatabasePlace::password},
        Part{"DATABASE_NAME", &VEXDatabasePlace::databaseName}})
    if (part.name == directive) {
      (place.*part.member).assign(value);
      return true;
    }
  return false;
}

VEXDatabaseInsert* VEXDatabaseSession::insertInto(const std::string& table, const VEXStringVector& columns) {
  auto insert = database_->insertInto(table, columns);
  return insert == nullptr ? nullptr : inserts_.emplace_back(std::move(insert)).get();
}

bool VEXDatabaseSession::commit() {
  for (const auto& insert : inserts_)
    if (!insert->flush()) return false;
  if (!database_->commit()) return false;
  numCommitted_ += numRows_;
  numRows_ = 0;
  return true;
}

void VEXDatabaseSession::rollback() {
  numRows_ = 0;
  inserts_.clear();
  database_->rollback();
}

VEXStatus VEXDatabaseInput::addField(std::string_view name, std::string_view value) {
  if (database_ == nullptr && setDatabasePlace(place_, name, value)) return nullptr;
  if (name == "DATABASE_TABLE") {
    table_.assign(value);
    return nullptr;
  }
  if (name == "DATABASE_WHERE") {
    condition_.assign(value);
    return nullptr;
  }
  if (hasColumn(name)) return makeStatus(309004, {table_, name});
  columnNames_.emplace_back(name);
  return nullptr;
}

VEXStatus VEXDatabaseInput::startRows() {
  if (database_ == nullptr) {
    std::string reason;
    database_ = VEXDatabase::open(place_, VEXDatabase::Access::Read, reason);
    if (database_ == nullptr) return makeStatus(309001, {place_.serverType, place_.databaseName, reason});
  }
  if (columnNames_.empty()) {
    std::vector<VEXDatabaseColumn> columns;
    if (!database_->describe(table_, columns)) return makeStatus(309002, {table_, database_->errorText()});
    for (const VEXDatabaseColumn& column : columns) columnNames_.push_back(column.name);
    if (columns.empty()) return makeStatus(309002, {table_, "there is no such table"});
  }
  statement_ = database_->prepare(dbschema::select(*database_, table_, columnNames_, condition_), true);
  if (statement_ == nullptr || !statement_->start({})) return makeStatus(309002, {table_, database_->errorText()});
  fields_.assign(columnNames_.size(), {});
  return nullptr;
}

VEXStatus VEXDatabaseInput::getRow(VEXTableRow& row, bool& endOfFile) {
  VEXDatabaseRow values;
  row = {};
  if (!statement_->next(values, endOfFile)) return makeStatus(309003, {table_, database_->errorText()});
  if (endOfFile) return nullptr;
  for (std::size_t i = 0; i < fields_.size(); ++i) fields_[i] = values[i].value_or(std::string_view());
  row = fields_;
  return nullptr;
}

VEXStatus VEXDatabaseInput::close() {
  statement_.reset();
  database_.reset();
  return nullptr;
}

VEXDatabaseOutput::~VEXDatabaseOutput() {
  if (session_ != nullptr && ownsSession_) session_->rollback();
}

VEXStatus VEXDatabaseOutput::addField(std::string_view name, std::string_view typeSpec) {
  if (session_ == nullptr && setDatabasePlace(place_, name, typeSpec)) return nullptr;
  if (name == "DATABASE_TABLE") {
    table_.assign(typeSpec);
    return nullptr;
  }
  if (hasColumn(name)) return makeStatus(310007, {table_, name});
  columnNames_.emplace_back(name);
  typeTexts_.emplace_back(typeSpec);
  types_.push_back(dbschema::typeOf(typeSpec));
  return nullptr;
}

VEXStatus VEXDatabaseOutput::prepare() {
  if (insert_ != nullptr) return nullptr;
  if (columnNames_.empty()) return makeStatus(310010, {table_});
  if (session_ == nullptr) {
    std::string reason;
    auto database = VEXDatabase::open(place_, VEXDatabase::Access::Create, reason);
    if (database == nullptr) return makeStatus(310001, {place_.serverType, place_.databaseName, reason});
    session_ = std::make_shared<VEXDatabaseSession>(std::move(database));
    ownsSession_ = true;
  }
  if (!session_->start()) return makeStatus(310002, {table_, session_->database().errorText()});
  VEX_TRY(makeTable());
  insert_ = session_->insertInto(table_, columnNames_);
  if (insert_ == nullptr) return makeStatus(310005, {table_, session_->database().errorText()});
  values_.assign(columnNames_.size(), {});
  spaces_.resize(columnNames_.size());
  return nullptr;
}

VEXStatus VEXDatabaseOutput::makeTable() {
  VEXDatabase& database = session_->database();
  std::vector<VEXDatabaseColumn> present;
  if (!database.describe(table_, present)) return makeStatus(310002, {table_, database.errorText()});
  std::vector<std::pair<std::string, std::string>> columns;
  for (std::size_t i = 0; i < columnNames_.size(); ++i) columns.emplace_back(columnNames_[i], typeTexts_[i]);
  std::size_t unknown = 0;
  const std::string creation = dbschema::createTable(database, table_, columns, unknown);
  if (creation.empty()) return makeStatus(310003, {typeTexts_[unknown], table_, columnNames_[unknown]});
  if (!present.empty() && !isOverwriting_) {
    for (const std::string& name : columnNames_)
      if (std::none_of(present.begin(), present.end(), [&](const auto& column) { return column.name == name; }))
        return makeStatus(310004, {table_, name});
    return nullptr;
  }
  if (!present.empty() && !database.execute("DROP TABLE " + database.quotedTable(table_)))
    return makeStatus(310002, {table_, database.errorText()});
  if (!database.execute(creation)) return makeStatus(310002, {table_, database.errorText()});
  return nullptr;
}

VEXStatus VEXDatabaseOutput::refuse(std::size_t column, std::string_view value) const {
  return makeRejection(310008, {value, columnNames_[column], table_, typeTexts_[column]});
}

VEXStatus VEXDatabaseOutput::writeRow(VEXTableRow fields) {
  if (insert_ == nullptr) VEX_TRY(prepare());
  if (fields.size() != columnNames_.size())
    return makeStatus(310009, {table_, integerText(static_cast<std::int64_t>(fields.size())),
                               integerText(static_cast<std::int64_t>(columnNames_.size()))});
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const bool isText = types_[i].kind == dbschema::Kind::Text;
    if (fields[i].data() == nullptr || (fields[i].empty() && !isText)) {
      values_[i].reset();
      continue;
    }
    if (!dbschema::suits(types_[i], fields[i])) return extendStatus(refuse(i, fields[i]));
    values_[i] = storedForm(i, fields[i]);
  }
  if (!session_->start() || !insert_->addRow(values_))
    return makeStatus(310005, {table_, session_->database().errorText()});
  if (!session_->countRow()) return makeStatus(310006, {table_, session_->database().errorText()});
  return nullptr;
}

VEXStatus VEXDatabaseOutput::flush() {
  if (insert_ == nullptr || insert_->flush()) return nullptr;
  return makeStatus(310005, {table_, session_->database().errorText()});
}

VEXStatus VEXDatabaseOutput::close() {
  if (insert_ == nullptr || session_ == nullptr) return nullptr;
  VEX_TRY(flush());
  if (!ownsSession_) return nullptr;
  if (!session_->commit()) {
    VEXStatus failure = makeStatus(310006, {table_, session_->database().errorText()});
    abort();
    return failure;
  }
  insert_ = nullptr;
  session_.reset();
  return nullptr;
}

void VEXDatabaseOutput::abort() {
  insert_ = nullptr;
  if (session_ != nullptr && ownsSession_) session_->rollback();
  session_.reset();
}
