// SQLite behind VEXDatabase. Values are bound as text without a copy; the column's own rules decide how they are
// stored.
#include <sqlite3.h>

#include <algorithm>
#include <limits>

#include "vex/inc/numtext.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexconf.h"
#include "vex/tables/dbconn.h"
#include "vex/tables/dbschema.h"

namespace {

constexpr int kBusyMilliseconds = 2000;  // a lock that lasts longer is a failure
constexpr std::size_t kLongestValue = 1000000000;

struct Finalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Prepared = std::unique_ptr<sqlite3_stmt, Finalize>;

class SQLiteDatabase;

class SQLiteStatement final : public VEXDatabaseStatement {
 public:
  SQLiteStatement(SQLiteDatabase& database, Prepared statement, VEXStringVector names)
      : database_(database), statement_(std::move(statement)) {
    parameterNames_ = std::move(names);
  }

  bool start(VEXDatabaseRow values) override;
  bool next(VEXDatabaseRow& row, bool& atEnd) override;
  void reset() override { sqlite3_reset(statement_.get()); }
  std::size_t numColumns() const override { return static_cast<std::size_t>(sqlite3_column_count(statement_.get())); }

 private:
  SQLiteDatabase& database_;
  Prepared statement_;
  std::vector<VEXDatabaseValue> row_;
  std::vector<std::string> reals_;  // the texts of real columns
  std::vector<char> isTruth_;       // by column: declared as a truth value, stored as 1 and 0
  bool isDone_ = false;
  bool hasFirst_ = false;  // start() stands on the first row
};

class SQLiteInsert final : public VEXDatabaseInsert {
 public:
  SQLiteInsert(SQLiteDatabase& database, Prepared statement) : database_(database), statement_(std::move(statement)) {}
  bool addRow(VEXDatabaseRow values) override;
  bool flush() override { return true; }

 private:
  SQLiteDatabase& database_;
  Prepared statement_;
};

class SQLiteDatabase final : public VEXDatabase {
 public:
  SQLiteDatabase() : VEXDatabase("SQLITE") {}
  ~SQLiteDatabase() override {
    rollback();
    sqlite3_close_v2(handle_);
  }

  bool connect(const VEXDatabasePlace& place, Access access);
  std::unique_ptr<VEXDatabaseStatement> prepare(std::string_view text, bool streamed) override;
  bool execute(const std::string& text) override;
  std::unique_ptr<VEXDatabaseInsert> insertInto(const std::string& table, const VEXStringVector& columns) override;
  bool listTables(VEXStringVector& names) override;
  bool describe(const std::string& table, std::vector<VEXDatabaseColumn>& columns) override;
  std::string quotedTable(std::string_view name) const override { return dbschema::quoted(name); }
  std::string columnType(std::string_view typeText) const override { return dbschema::columnType(typeText); }

  bool failedHere() { return failed(handle_ == nullptr ? "out of memory" : sqlite3_errmsg(handle_)); }
  bool refuse(std::string_view text) { return failed(text); }

 private:
  Prepared prepared(std::string_view text);

  sqlite3* handle_ = nullptr;
};

// SQLITE_OK, or the code of what went wrong.
int bindAll(sqlite3_stmt* statement, VEXDatabaseRow values) {
  int index = 0;
  for (const VEXDatabaseValue& value : values) {
    ++index;
    int code;
    if (!value.has_value())
      code = sqlite3_bind_null(statement, index);
    else if (value->size() > kLongestValue)
      code = SQLITE_TOOBIG;
    else
      code = sqlite3_bind_text(statement, index, value->data() == nullptr ? "" : value->data(),
                               static_cast<int>(value->size()), SQLITE_STATIC);
    if (code != SQLITE_OK) return code;
  }
  return SQLITE_OK;
}

bool SQLiteStatement::start(VEXDatabaseRow values) {
  sqlite3_reset(statement_.get());
  isDone_ = false;
  hasFirst_ = false;
  const auto wanted = static_cast<std::size_t>(sqlite3_bind_parameter_count(statement_.get()));
  if (values.size() != wanted)
    return database_.refuse("the statement has " + integerText(static_cast<std::int64_t>(wanted)) +
                            " parameters and was given " + integerText(static_cast<std::int64_t>(values.size())));
  if (const int code = bindAll(statement_.get(), values); code != SQLITE_OK)
    return database_.refuse(sqlite3_errstr(code));
  const int code = sqlite3_step(statement_.get());
  if (code != SQLITE_ROW && code != SQLITE_DONE) {
    database_.failedHere();
    sqlite3_reset(statement_.get());
    return false;
  }
  isDone_ = code == SQLITE_DONE;
  hasFirst_ = !isDone_;
  if (isDone_) sqlite3_reset(statement_.get());
  row_.assign(numColumns(), {});
  reals_.resize(numColumns());
  for (std::size_t i = isTruth_.size(); i < numColumns(); ++i) {
    const char* declared = sqlite3_column_decltype(statement_.get(), static_cast<int>(i));
    isTruth_.push_back(declared != nullptr && upperCased(declared).find("BOOL") != std::string::npos ? 1 : 0);
  }
  return true;
}

bool SQLiteStatement::next(VEXDatabaseRow& row, bool& atEnd) {
  row = {};
  if (!isDone_ && !hasFirst_) {
    const int code = sqlite3_step(statement_.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
      database_.failedHere();
      sqlite3_reset(statement_.get());
      isDone_ = true;
      return false;
    }
    isDone_ = code == SQLITE_DONE;
    if (isDone_) sqlite3_reset(statement_.get());
  }
  hasFirst_ = false;
  atEnd = isDone_;
  if (isDone_) return true;
  for (std::size_t i = 0; i < row_.size(); ++i) {
    const auto at = static_cast<int>(i);
    const int type = sqlite3_column_type(statement_.get(), at);
    if (type == SQLITE_NULL) {
      row_[i].reset();
    } else if (type == SQLITE_FLOAT) {
      reals_[i].clear();
      appendReal(reals_[i], sqlite3_column_double(statement_.get(), at));
      row_[i] = reals_[i];
    } else if (type == SQLITE_INTEGER) {
      const std::int64_t number = sqlite3_column_int64(statement_.get(), at);
      if (isTruth_[i] != 0 && (number == 0 || number == 1)) {
        row_[i] = number == 1 ? "true" : "false";
        continue;
      }
      reals_[i].clear();
      appendInteger(reals_[i], number);
      row_[i] = reals_[i];
    } else {
      const char* text = static_cast<const char*>(sqlite3_column_blob(statement_.get(), at));
      const auto length = static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), at));
      row_[i] = text == nullptr ? std::string_view("", 0) : std::string_view(text, length);
    }
  }
  row = row_;
  return true;
}

bool SQLiteInsert::addRow(VEXDatabaseRow values) {
  if (const int code = bindAll(statement_.get(), values); code != SQLITE_OK)
    return database_.refuse(sqlite3_errstr(code));
  const int code = sqlite3_step(statement_.get());
  if (code != SQLITE_DONE) database_.failedHere();
  sqlite3_reset(statement_.get());
  return code == SQLITE_DONE;
}

bool SQLiteDatabase::connect(const VEXDatabasePlace& place, Access access) {
  const bool isAddress = place.databaseName.starts_with("file:");
  const std::string path = isAddress ? place.databaseName : VEXConfiguration::normalisePath(place.databaseName);
  if (path.empty()) return failed("no file is named");
  int flags = SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX;
  flags |= access == Access::Read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
  if (access == Access::Create) flags |= SQLITE_OPEN_CREATE;
  if (!isAddress && access != Access::Create && !platform::fileExists(path))
    return failed("there is no file '" + path + "'");
  if (sqlite3_open_v2(path.c_str(), &handle_, flags, nullptr) != SQLITE_OK) return failedHere();
  sqlite3_busy_timeout(handle_, kBusyMilliseconds);
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);  // "x" is a column, never a text
  return execute("SELECT count(*) FROM sqlite_master");             // shows a file that is no database, and a lock
}

bool SQLiteDatabase::execute(const std::string& text) {
  if (sqlite3_exec(handle_, text.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) return true;
  return failedHere();
}

Prepared SQLiteDatabase::prepared(std::string_view text) {
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    failed("the statement is too long");
    return nullptr;
  }
  sqlite3_stmt* statement = nullptr;
  const char* tail = nullptr;
  const int code = sqlite3_prepare_v3(handle_, text.data(), static_cast<int>(text.size()), SQLITE_PREPARE_PERSISTENT,
                                      &statement, &tail);
  Prepared result(statement);
  if (code != SQLITE_OK) {
    failedHere();
    return nullptr;
  }
  const std::string_view rest(tail, static_cast<std::size_t>(text.data() + text.size() - tail));
  if (result == nullptr || rest.find_first_not_of(" \t\r\n;") != std::string_view::npos) {
    failed(result == nullptr ? "there is no statement" : "there is more than one statement");
    return nullptr;
  }
  return result;
}

std::unique_ptr<VEXDatabaseStatement> SQLiteDatabase::prepare(std::string_view text, bool) {
  VEXStringVector names;
  Prepared statement = prepared(dbschema::numberParameters(text, '?', names));
  if (statement == nullptr) return nullptr;
  return std::make_unique<SQLiteStatement>(*this, std::move(statement), std::move(names));
}

std::unique_ptr<VEXDatabaseInsert> SQLiteDatabase::insertInto(const std::string& table,
                                                              const VEXStringVector& columns) {
  std::string marks;
  for (std::size_t i = 0; i < columns.size(); ++i) marks += i > 0 ? ",?" : "?";
  Prepared statement =
      prepared("INSERT INTO " + quotedTable(table) + " (" + dbschema::quotedList(columns) + ") VALUES (" + marks + ")");
  if (statement == nullptr) return nullptr;
  return std::make_unique<SQLiteInsert>(*this, std::move(statement));
}

bool SQLiteDatabase::listTables(VEXStringVector& names) {
  names.clear();
  const Prepared statement = prepared(
      "SELECT name FROM sqlite_master WHERE type IN ('table', 'view') AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' "
      "ORDER BY name COLLATE BINARY");
  if (statement == nullptr) return false;
  int code;
  while ((code = sqlite3_step(statement.get())) == SQLITE_ROW)
    if (const auto* name = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 0)); name != nullptr)
      names.emplace_back(name);
  return code == SQLITE_DONE || failedHere();
}

bool SQLiteDatabase::describe(const std::string& table, std::vector<VEXDatabaseColumn>& columns) {
  columns.clear();
  const Prepared statement = prepared("SELECT name, type FROM pragma_table_xinfo(?1) WHERE hidden <> 1");
  if (statement == nullptr) return false;
  sqlite3_bind_text(statement.get(), 1, table.data(), static_cast<int>(table.size()), SQLITE_STATIC);
  int code;
  while ((code = sqlite3_step(statement.get())) == SQLITE_ROW) {
    const auto* name = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 0));
    const auto* type = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 1));
    if (name != nullptr) columns.push_back({name, dbschema::typeText(type == nullptr ? "" : type)});
  }
  return code == SQLITE_DONE || failedHere();
}

}  // namespace

std::unique_ptr<VEXDatabase> openSQLite(const VEXDatabasePlace& place, VEXDatabase::Access access, std::string& error) {
  auto database = std::make_unique<SQLiteDatabase>();
  if (database->connect(place, access)) return database;
  error = database->errorText();
  return nullptr;
}
