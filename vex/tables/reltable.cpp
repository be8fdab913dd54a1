#include "vex/tables/reltable.h"

#include <algorithm>
#include <map>
#include <unordered_map>
#include <unordered_set>

#include "vex/inc/numtext.h"
#include "vex/src/platform/platform.h"
#include "vex/tables/filetab.h"

namespace {

// Values as one text by which they can be looked up; no two lists share one.
template <class Values>
std::string keyText(const Values& values) {
  std::string text;
  for (const auto& value : values) {
    appendInteger(text, static_cast<std::int64_t>(value.size()));
    (text += ':') += value;
  }
  return text;
}

class FileTable final : public VEXRelationTable {
 public:
  FileTable(VEXRelationTableDef definition, VEXRelationLocation& location)
      : VEXRelationTable(std::move(definition), location), path_(tablePath(location.directory, definition_.source)) {}

  VEXStatus find(const VEXStringVector& keyColumns, const VEXStringVector& keys,
                 std::vector<VEXRelationRecord>& records) override;
  VEXStatus prepareStore() override;
  VEXStatus store(std::span<const std::string_view> record, std::span<const std::size_t> uniqueColumns) override;
  VEXStatus close() override;

 private:
  using Index = std::unordered_map<std::string, std::vector<std::size_t>>;  // key to records
  VEXStatus load();

  std::string path_;
  bool isLoaded_ = false;
  std::vector<VEXStringVector> records_;
  std::map<std::string, Index> indexes_;  // by key columns
  std::unique_ptr<VEXTableOutput> output_;
  std::unordered_set<std::string> stored_;
};

class DatabaseTable final : public VEXRelationTable {
 public:
  DatabaseTable(VEXRelationTableDef definition, VEXRelationLocation& location)
      : VEXRelationTable(std::move(definition), location) {}

  VEXStatus find(const VEXStringVector& keyColumns, const VEXStringVector& keys,
                 std::vector<VEXRelationRecord>& records) override;
  VEXStatus prepareStore() override;
  VEXStatus store(std::span<const std::string_view> record, std::span<const std::size_t> uniqueColumns) override;
  VEXStatus close() override;

 private:
  VEXStatus takeColumns(VEXDatabase::Access access);
  VEXStatus lookUp(const VEXStringVector& keyColumns, const VEXStringVector& nullColumns,
                   const std::vector<VEXDatabaseValue>& keys, VEXDatabaseStatement*& statement);
  std::string_view storedKey(const std::string& column, std::string_view key, std::string& space) const;
  VEXStatus failure(std::uint32_t number, std::string_view reason);

  std::map<std::string, std::unique_ptr<VEXDatabaseStatement>> lookUps_;  // by key columns
  std::vector<VEXDatabaseColumn> described_;
  std::vector<std::string> spaces_;  // of keys in another form than they came
  std::unique_ptr<VEXDatabaseOutput> output_;
};

}  // namespace

VEXStatus VEXRelationLocation::connect(VEXDatabase::Access access) {
  if (session != nullptr) return nullptr;
  std::string reason;
  auto database = VEXDatabase::open(place, access, reason);
  if (database == nullptr) return makeStatus(837019, {place.serverType, place.databaseName, reason});
  session = std::make_shared<VEXDatabaseSession>(std::move(database));
  return nullptr;
}

VEXStatus VEXRelationLocation::finish() {
  if (session == nullptr) return nullptr;
  const std::shared_ptr<VEXDatabaseSession> ending = std::move(session);
  session.reset();
  if (!hasFailed && ending->commit()) return nullptr;
  const std::string reason = hasFailed ? "it had failed before" : ending->database().errorText();
  ending->rollback();
  return makeStatus(837024, {place.databaseName, reason});
}

VEXRelationTable::~VEXRelationTable() = default;

std::unique_ptr<VEXRelationTable> VEXRelationTable::make(VEXRelationTableDef definition,
                                                         VEXRelationLocation& location) {
  if (location.isDatabase) return std::make_unique<DatabaseTable>(std::move(definition), location);
  return std::make_unique<FileTable>(std::move(definition), location);
}

VEXStatus VEXRelationTable::checkColumns(const VEXStringVector& wanted) const {
  for (const std::string& column : wanted)
    if (std::find(columns_.begin(), columns_.end(), column) == columns_.end())
      return makeStatus(837022, {name(), column, joined(columns_, ", ")});
  return nullptr;
}

// ---- files ----

VEXStatus FileTable::load() {
  if (isLoaded_) return nullptr;
  if (output_ != nullptr) return makeStatus(837023, {name()});
  const auto input = findTableKind(definition_.kind)->makeInput(path_);
  VEX_TRY(input->open());
  for (const auto& [field, value] : definition_.fields) VEX_TRY(input->addField(field, value));
  VEX_TRY(input->startRows());
  columns_ = input->columnNames();
  for (;;) {
    VEXTableRow row;
    bool atEnd = false;
    VEX_TRY(input->getRow(row, atEnd));
    if (atEnd) break;
    records_.emplace_back(row.begin(), row.end());
  }
  isLoaded_ = true;
  return extendStatus(input->close());
}

VEXStatus FileTable::find(const VEXStringVector& keyColumns, const VEXStringVector& keys,
                          std::vector<VEXRelationRecord>& records) {
  records.clear();
  VEX_TRY(load());
  const auto [entry, isNew] = indexes_.try_emplace(keyText(keyColumns));
  Index& index = entry->second;
  if (isNew) {
    VEX_TRY(checkColumns(keyColumns));
    std::vector<std::size_t> at;
    for (const std::string& column : keyColumns)
      at.push_back(static_cast<std::size_t>(std::find(columns_.begin(), columns_.end(), column) - columns_.begin()));
    VEXStringVector values(at.size());
    for (std::size_t i = 0; i < records_.size(); ++i) {
      for (std::size_t k = 0; k < at.size(); ++k) values[k] = records_[i][at[k]];
      index[keyText(values)].push_back(i);
    }
  }
  if (const auto found = index.find(keyText(keys)); found != index.end())
    for (const std::size_t i : found->second) records.emplace_back(records_[i].begin(), records_[i].end());
  return nullptr;
}

VEXStatus FileTable::prepareStore() {
  if (output_ != nullptr) return nullptr;
  if (isLoaded_) return makeStatus(837023, {name()});
  if (!location_.directory.empty()) platform::makeDirectories(location_.directory);
  output_ = findTableKind(definition_.kind)->makeOutput(path_);
  VEX_TRY(output_->open());
  for (const auto& [field, value] : definition_.fields) VEX_TRY(output_->addField(field, value));
  columns_ = output_->columnNames();
  return nullptr;
}

VEXStatus FileTable::store(std::span<const std::string_view> record, std::span<const std::size_t> uniqueColumns) {
  if (!uniqueColumns.empty()) {
    std::vector<std::string_view> values;
    for (const std::size_t i : uniqueColumns) values.push_back(record[i]);
    if (!stored_.insert(keyText(values)).second) return nullptr;
  }
  return extendStatus(output_->writeRow(record));
}

VEXStatus FileTable::close() {
  const auto ending = std::move(output_);
  return ending == nullptr ? nullptr : extendStatus(ending->close());
}

// ---- databases ----

// A failure after which nothing more is committed.
VEXStatus DatabaseTable::failure(std::uint32_t number, std::string_view reason) {
  location_.hasFailed = true;
  return makeStatus(number, {name(), reason});
}

// The declared columns, or those that the table has.
VEXStatus DatabaseTable::takeColumns(VEXDatabase::Access access) {
  if (!columns_.empty()) return nullptr;
  VEX_TRY(location_.connect(access));
  VEXDatabase& database = location_.session->database();
  VEXStringVector names;
  for (const auto& field : definition_.fields) names.push_back(field.first);
  if (names.empty()) {
    if (!database.describe(definition_.source, described_)) return failure(837020, database.errorText());
    for (const VEXDatabaseColumn& column : described_) names.push_back(column.name);
    if (names.empty()) return failure(837020, "there is no table '" + definition_.source + "'");
  }
  columns_ = std::move(names);
  return nullptr;
}

VEXStatus DatabaseTable::lookUp(const VEXStringVector& keyColumns, const VEXStringVector& nullColumns,
                                const std::vector<VEXDatabaseValue>& keys, VEXDatabaseStatement*& statement) {
  VEX_TRY(takeColumns(VEXDatabase::Access::ReadWrite));  // a look-up makes no file that is not there
  if (output_ != nullptr) VEX_TRY(output_->flush());
  VEXDatabase& database = location_.session->database();
  auto& prepared = lookUps_[keyText(keyColumns) + "|" + keyText(nullColumns)];
  if (prepared == nullptr) {
    VEX_TRY(checkColumns(keyColumns));
    std::string condition;
    for (std::size_t i = 0; i < keyColumns.size(); ++i)
      condition += (i > 0 ? " AND " : "") + dbschema::quoted(keyColumns[i]) + " = :key" +
                   integerText(static_cast<std::int64_t>(i));
    for (const std::string& column : nullColumns)
      condition += (condition.empty() ? "" : " AND ") + dbschema::quoted(column) + " IS NULL";
    prepared = database.prepare(dbschema::select(database, definition_.source, columns_, condition));
    if (prepared == nullptr) return failure(837020, database.errorText());
  }
  if (!prepared->start(keys)) return failure(837020, database.errorText());
  statement = prepared.get();
  return nullptr;
}

// The key as its column has it, if it suits the column at all.
std::string_view DatabaseTable::storedKey(const std::string& column, std::string_view key, std::string& space) const {
  std::string_view typeText;
  for (const auto& [name, type] : definition_.fields)
    if (name == column) typeText = type;
  for (const VEXDatabaseColumn& described : described_)
    if (described.name == column) typeText = described.type;
  const dbschema::Type type = dbschema::typeOf(typeText);
  return dbschema::suits(type, key) ? dbschema::storedForm(type, key, space) : key;
}

VEXStatus DatabaseTable::find(const VEXStringVector& keyColumns, const VEXStringVector& keys,
                              std::vector<VEXRelationRecord>& records) {
  records.clear();
  VEX_TRY(takeColumns(VEXDatabase::Access::ReadWrite));
  std::vector<VEXDatabaseValue> values;
  spaces_.resize(keys.size());
  for (std::size_t i = 0; i < keys.size(); ++i) values.emplace_back(storedKey(keyColumns[i], keys[i], spaces_[i]));
  VEXDatabaseStatement* statement = nullptr;
  VEX_TRY(lookUp(keyColumns, {}, values, statement));
  for (;;) {
    VEXDatabaseRow row;
    bool atEnd = false;
    if (!statement->next(row, atEnd)) return failure(837020, location_.session->database().errorText());
    if (atEnd) return nullptr;
    records.emplace_back(row.begin(), row.end());
  }
}

VEXStatus DatabaseTable::prepareStore() {
  if (output_ != nullptr) return nullptr;
  VEX_TRY(takeColumns(VEXDatabase::Access::Create));
  auto output = std::make_unique<VEXDatabaseOutput>(location_.session, definition_.source);
  for (const auto& [name, type] : definition_.fields) VEX_TRY(output->addField(name, type));
  for (const VEXDatabaseColumn& column : described_) VEX_TRY(output->addField(column.name, column.type));
  if (VEXStatus refused = output->prepare()) return failure(837021, refused->message());
  output_ = std::move(output);
  return nullptr;
}

VEXStatus DatabaseTable::store(std::span<const std::string_view> record, std::span<const std::size_t> uniqueColumns) {
  if (!uniqueColumns.empty()) {
    VEXStringVector columns;
    VEXStringVector nullColumns;
    std::vector<VEXDatabaseValue> values;
    for (const std::size_t i : uniqueColumns) {
      if (record[i].data() == nullptr) {
        nullColumns.push_back(columns_[i]);
        continue;
      }
      columns.push_back(columns_[i]);
      values.emplace_back(output_->storedForm(i, record[i]));
    }
    VEXDatabaseStatement* statement = nullptr;
    VEX_TRY(lookUp(columns, nullColumns, values, statement));
    VEXDatabaseRow row;
    bool atEnd = false;
    const bool isRead = statement->next(row, atEnd);
    statement->reset();
    if (!isRead) return failure(837021, location_.session->database().errorText());
    if (!atEnd) return nullptr;
  }
  if (VEXStatus refused = output_->writeRow(record)) return failure(837021, refused->message());
  return nullptr;
}

VEXStatus DatabaseTable::close() {
  lookUps_.clear();
  const auto ending = std::move(output_);
  if (ending == nullptr || location_.hasFailed) return nullptr;
  if (VEXStatus refused = ending->close()) return failure(837021, refused->message());
  return nullptr;
}
