// PostgreSQL behind VEXDatabase, through libpq, which is bound at the first connection: without it the rest of the
// engine works and connecting fails. Rows go in by COPY.
#include <algorithm>

#include "vex/inc/numtext.h"
#include "vex/src/platform/platform.h"
#include "vex/tables/dbconn.h"
#include "vex/tables/dbschema.h"

// The part of libpq's published interface that is used here.
struct pg_conn;
struct pg_result;
struct pg_cancel;

namespace {

constexpr int kConnectionOk = 0;
constexpr int kEmptyQuery = 0;
constexpr int kCommandOk = 1;
constexpr int kTuplesOk = 2;
constexpr int kCopyIn = 4;
constexpr int kSingleTuple = 9;
constexpr unsigned kBooleanType = 16;
constexpr std::size_t kCopyBytes = std::size_t{1} << 20;
constexpr const char* kConnectSeconds = "15";
constexpr const char* kSessionOptions = "-c lock_timeout=30s";  // a lock that lasts longer is a failure

struct PostgresLibrary {
  pg_conn* (*connectParams)(const char* const*, const char* const*, int) = nullptr;
  int (*status)(const pg_conn*) = nullptr;
  const char* (*errorMessage)(const pg_conn*) = nullptr;
  void (*finish)(pg_conn*) = nullptr;
  pg_result* (*exec)(pg_conn*, const char*) = nullptr;
  pg_result* (*prepare)(pg_conn*, const char*, const char*, int, const unsigned*) = nullptr;
  int (*sendPrepared)(pg_conn*, const char*, int, const char* const*, const int*, const int*, int) = nullptr;
  int (*setSingleRowMode)(pg_conn*) = nullptr;
  pg_result* (*getResult)(pg_conn*) = nullptr;
  int (*resultStatus)(const pg_result*) = nullptr;
  const char* (*resultErrorMessage)(const pg_result*) = nullptr;
  void (*clear)(pg_result*) = nullptr;
  int (*numTuples)(const pg_result*) = nullptr;
  int (*numFields)(const pg_result*) = nullptr;
  unsigned (*fieldType)(const pg_result*, int) = nullptr;
  char* (*getValue)(const pg_result*, int, int) = nullptr;
  int (*getIsNull)(const pg_result*, int, int) = nullptr;
  int (*getLength)(const pg_result*, int, int) = nullptr;
  int (*putCopyData)(pg_conn*, const char*, int) = nullptr;
  int (*putCopyEnd)(pg_conn*, const char*) = nullptr;
  pg_cancel* (*getCancel)(pg_conn*) = nullptr;
  int (*cancel)(pg_cancel*, char*, int) = nullptr;
  void (*freeCancel)(pg_cancel*) = nullptr;
  void* (*setNoticeProcessor)(pg_conn*, void (*)(void*, const char*), void*) = nullptr;
  bool isBound = false;

  PostgresLibrary() {
    platform::DynamicLibrary library;
    if (!library.open({"libpq.so.5", "libpq.so"})) return;
    isBound = true;
    bind(library, "PQconnectdbParams", connectParams);
    bind(library, "PQstatus", status);
    bind(library, "PQerrorMessage", errorMessage);
    bind(library, "PQfinish", finish);
    bind(library, "PQexec", exec);
    bind(library, "PQprepare", prepare);
    bind(library, "PQsendQueryPrepared", sendPrepared);
    bind(library, "PQsetSingleRowMode", setSingleRowMode);
    bind(library, "PQgetResult", getResult);
    bind(library, "PQresultStatus", resultStatus);
    bind(library, "PQresultErrorMessage", resultErrorMessage);
    bind(library, "PQclear", clear);
    bind(library, "PQntuples", numTuples);
    bind(library, "PQnfields", numFields);
    bind(library, "PQftype", fieldType);
    bind(library, "PQgetvalue", getValue);
    bind(library, "PQgetisnull", getIsNull);
    bind(library, "PQgetlength", getLength);
    bind(library, "PQputCopyData", putCopyData);
    bind(library, "PQputCopyEnd", putCopyEnd);
    bind(library, "PQgetCancel", getCancel);
    bind(library, "PQcancel", cancel);
    bind(library, "PQfreeCancel", freeCancel);
    bind(library, "PQsetNoticeProcessor", setNoticeProcessor);
  }

  template <class Function>
  void bind(const platform::DynamicLibrary& library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(library.symbol(name));
    isBound = isBound && function != nullptr;
  }
};

const PostgresLibrary& pq() {
  static const PostgresLibrary library;
  return library;
}

struct Clear {
  void operator()(pg_result* result) const { pq().clear(result); }
};
using Result = std::unique_ptr<pg_result, Clear>;

class PostgresDatabase;

class PostgresStatement final : public VEXDatabaseStatement {
 public:
  PostgresStatement(PostgresDatabase& database, std::string name, VEXStringVector parameters, bool streamed)
      : database_(database), name_(std::move(name)), isStreamed_(streamed) {
    parameterNames_ = std::move(parameters);
  }
  ~PostgresStatement() override;

  bool start(VEXDatabaseRow values) override;
  bool next(VEXDatabaseRow& row, bool& atEnd) override;
  void reset() override;
  std::size_t numColumns() const override { return row_.size(); }

 private:
  bool fetch();

  PostgresDatabase& database_;
  std::string name_;
  bool isStreamed_;
  Result result_;                   // null at the end
  int nextTuple_ = 0;               // of result_
  bool isBusy_ = false;             // more results are to be fetched
  std::vector<std::string> texts_;  // the values, each with a zero byte at its end
  std::vector<const char*> pointers_;
  std::vector<VEXDatabaseValue> row_;
};

class PostgresInsert final : public VEXDatabaseInsert {
 public:
  PostgresInsert(PostgresDatabase& database, std::string command) : database_(database), command_(std::move(command)) {}
  bool addRow(VEXDatabaseRow values) override;
  bool flush() override;

 private:
  PostgresDatabase& database_;
  std::string command_;
  std::string rows_;
};

class PostgresDatabase final : public VEXDatabase {
 public:
  PostgresDatabase() : VEXDatabase("POSTGRESQL") {}
  ~PostgresDatabase() override {
    rollback();
    if (handle_ != nullptr) pq().finish(handle_);
  }

  bool connect(const VEXDatabasePlace& place);
  std::unique_ptr<VEXDatabaseStatement> prepare(std::string_view text, bool streamed) override;
  bool execute(const std::string& text) override;
  std::unique_ptr<VEXDatabaseInsert> insertInto(const std::string& table, const VEXStringVector& columns) override;
  bool listTables(VEXStringVector& names) override;
  bool describe(const std::string& table, std::vector<VEXDatabaseColumn>& columns) override;
  std::string quotedTable(std::string_view name) const override;
  std::string columnType(std::string_view typeText) const override { return dbschema::columnType(typeText); }

  pg_conn* handle() { return handle_; }
  bool failedHere() { return failed(pq().errorMessage(handle_)); }
  bool failedIn(const pg_result* result) {
    const char* text = result == nullptr ? "" : pq().resultErrorMessage(result);
    return failed(*text == '\0' ? pq().errorMessage(handle_) : text);
  }
  bool refuse(std::string_view text) { return failed(text); }
  void drain();  // takes what is left of a command's answer

 private:
  pg_conn* handle_ = nullptr;
  std::size_t numStatements_ = 0;
};

bool isGood(const pg_result* result) {
  const int status = pq().resultStatus(result);
  return status == kEmptyQuery || status == kCommandOk || status == kTuplesOk || status == kSingleTuple;
}

PostgresStatement::~PostgresStatement() {
  reset();
  if (pq().status(database_.handle()) == kConnectionOk)
    Result(pq().exec(database_.handle(), ("DEALLOCATE " + name_).c_str())).reset();
}

bool PostgresStatement::start(VEXDatabaseRow values) {
  reset();
  if (values.size() != parameterNames_.size())
    return database_.refuse("the statement has " + integerText(static_cast<std::int64_t>(parameterNames_.size())) +
                            " parameters and was given " + integerText(static_cast<std::int64_t>(values.size())));
  texts_.resize(values.size());
  pointers_.assign(values.size(), nullptr);
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!values[i].has_value()) continue;
    if (values[i]->find('\0') != std::string_view::npos) return database_.refuse("a value holds a zero byte");
    texts_[i].assign(*values[i]);
    pointers_[i] = texts_[i].c_str();
  }
  if (pq().sendPrepared(database_.handle(), name_.c_str(), static_cast<int>(values.size()), pointers_.data(), nullptr,
                        nullptr, 0) == 0)
    return database_.failedHere();
  isBusy_ = true;
  if (isStreamed_) pq().setSingleRowMode(database_.handle());
  if (!fetch()) return false;
  row_.assign(result_ == nullptr ? 0 : static_cast<std::size_t>(std::max(0, pq().numFields(result_.get()))), {});
  return true;
}

// The next result that holds rows; result_ is null when there is none.
bool PostgresStatement::fetch() {
  nextTuple_ = 0;
  for (;;) {
    result_.reset(pq().getResult(database_.handle()));
    if (result_ == nullptr) {
      isBusy_ = false;
      return true;
    }
    if (!isGood(result_.get())) {
      database_.failedIn(result_.get());
      result_.reset();
      database_.drain();
      isBusy_ = false;
      return false;
    }
    if (pq().numFields(result_.get()) > 0) return true;
  }
}

bool PostgresStatement::next(VEXDatabaseRow& row, bool& atEnd) {
  row = {};
  while (result_ != nullptr && nextTuple_ >= pq().numTuples(result_.get()))
    if (!fetch()) return false;
  atEnd = result_ == nullptr;
  if (atEnd) return true;
  const int tuple = nextTuple_++;
  for (std::size_t i = 0; i < row_.size(); ++i) {
    const auto at = static_cast<int>(i);
    if (pq().getIsNull(result_.get(), tuple, at) != 0) {
      row_[i].reset();
      continue;
    }
    const std::string_view text(pq().getValue(result_.get(), tuple, at),
                                static_cast<std::size_t>(pq().getLength(result_.get(), tuple, at)));
    row_[i] = pq().fieldType(result_.get(), at) == kBooleanType ? (text == "t" ? "true" : "false") : text;
  }
  row = row_;
  return true;
}

void PostgresStatement::reset() {
  result_.reset();
  if (!isBusy_) return;
  if (isStreamed_)
    if (pg_cancel* cancel = pq().getCancel(database_.handle()); cancel != nullptr) {
      char reason[256];
      pq().cancel(cancel, reason, sizeof reason);
      pq().freeCancel(cancel);
    }
  database_.drain();
  isBusy_ = false;
}

bool PostgresInsert::addRow(VEXDatabaseRow values) {
  const std::size_t start = rows_.size();
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) rows_ += '\t';
    if (!values[i].has_value()) {
      rows_ += "\\N";
      continue;
    }
    for (const char c : *values[i]) {
      switch (c) {
        case '\\':
          rows_ += "\\\\";
          break;
        case '\n':
          rows_ += "\\n";
          break;
        case '\r':
          rows_ += "\\r";
          break;
        case '\t':
          rows_ += "\\t";
          break;
        case '\0':
          rows_.resize(start);
          return database_.refuse("a value holds a zero byte");
        default:
          rows_ += c;
      }
    }
  }
  rows_ += '\n';
  return rows_.size() < kCopyBytes || flush();
}

bool PostgresInsert::flush() {
  if (rows_.empty()) return true;
  const std::string rows = std::move(rows_);
  rows_.clear();
  rows_.reserve(kCopyBytes + 4096);
  {
    const Result started(pq().exec(database_.handle(), command_.c_str()));
    if (pq().resultStatus(started.get()) != kCopyIn) return database_.failedIn(started.get());
  }
  constexpr std::size_t kPiece = std::size_t{1} << 26;
  bool isSent = true;
  for (std::size_t at = 0; isSent && at < rows.size(); at += kPiece)
    isSent = pq().putCopyData(database_.handle(), rows.data() + at,
                              static_cast<int>(std::min(kPiece, rows.size() - at))) == 1;
  isSent = isSent && pq().putCopyEnd(database_.handle(), nullptr) == 1;
  if (!isSent) database_.failedHere();
  while (const Result result{pq().getResult(database_.handle())}) {
    if (pq().resultStatus(result.get()) == kCopyIn) break;  // the connection is gone
    if (isGood(result.get()) || !isSent) continue;
    database_.failedIn(result.get());
    isSent = false;
  }
  return isSent;
}

bool PostgresDatabase::connect(const VEXDatabasePlace& place) {
  if (!pq().isBound) return failed("the library libpq.so.5 is not there");
  std::string host = place.serverName;
  std::string port;
  if (const std::size_t colon = host.rfind(':'); colon != std::string::npos && host.find(':') == colon) {
    port = host.substr(colon + 1);
    host.erase(colon);
  }
  std::vector<const char*> keywords;
  std::vector<const char*> values;
  const auto add = [&](const char* keyword, const char* value) {
    if (*value == '\0') return;
    keywords.push_back(keyword);
    values.push_back(value);
  };
  add("host", host.c_str());
  add("port", port.c_str());
  add("user", place.userName.c_str());
  add("password", place.password.c_str());
  add("dbname", place.databaseName.c_str());
  add("connect_timeout", kConnectSeconds);
  std::string own;
  if (!platform::environment("PGOPTIONS", own)) add("options", kSessionOptions);
  add("fallback_application_name", "orvane");
  keywords.push_back(nullptr);
  values.push_back(nullptr);
  handle_ = pq().connectParams(keywords.data(), values.data(), 0);
  if (handle_ == nullptr) return failed("out of memory");
  if (pq().status(handle_) != kConnectionOk) return failedHere();
  pq().setNoticeProcessor(
      handle_, [](void*, const char*) {}, nullptr);
  return true;
}

void PostgresDatabase::drain() {
  while (const Result left{pq().getResult(handle_)})
    if (pq().resultStatus(left.get()) == kCopyIn) pq().putCopyEnd(handle_, "given up");
}

bool PostgresDatabase::execute(const std::string& text) {
  const Result result(pq().exec(handle_, text.c_str()));
  return isGood(result.get()) || failedIn(result.get());
}

std::unique_ptr<VEXDatabaseStatement> PostgresDatabase::prepare(std::string_view text, bool streamed) {
  VEXStringVector names;
  const std::string numbered = dbschema::numberParameters(text, '$', names);
  std::string name = "orv_" + integerText(static_cast<std::int64_t>(++numStatements_));
  const Result result(pq().prepare(handle_, name.c_str(), numbered.c_str(), 0, nullptr));
  if (!isGood(result.get())) {
    failedIn(result.get());
    return nullptr;
  }
  return std::make_unique<PostgresStatement>(*this, std::move(name), std::move(names), streamed);
}

std::unique_ptr<VEXDatabaseInsert> PostgresDatabase::insertInto(const std::string& table,
                                                                const VEXStringVector& columns) {
  // COPY would tell of a missing table or column with the first rows only.
  if (prepare("SELECT " + dbschema::quotedList(columns) + " FROM " + quotedTable(table) + " WHERE false", false) ==
      nullptr)
    return nullptr;
  return std::make_unique<PostgresInsert>(
      *this, "COPY " + quotedTable(table) + " (" + dbschema::quotedList(columns) + ") FROM STDIN");
}

bool PostgresDatabase::listTables(VEXStringVector& names) {
  names.clear();
  const auto statement = prepare(
      "SELECT c.relname FROM pg_catalog.pg_class c JOIN pg_catalog.pg_namespace n ON n.oid = c.relnamespace "
      "WHERE c.relkind IN ('r', 'p', 'v', 'm', 'f') AND n.nspname NOT IN ('pg_catalog', 'information_schema') "
      "AND pg_catalog.pg_table_is_visible(c.oid) ORDER BY c.relname COLLATE \"C\"",
      false);
  if (statement == nullptr || !statement->start({})) return false;
  for (;;) {
    VEXDatabaseRow row;
    bool atEnd = false;
    if (!statement->next(row, atEnd)) return false;
    if (atEnd) return true;
    names.emplace_back(row[0].value_or(""));
  }
}

bool PostgresDatabase::describe(const std::string& table, std::vector<VEXDatabaseColumn>& columns) {
  columns.clear();
  const auto statement = prepare(
      "SELECT a.attname, pg_catalog.format_type(a.atttypid, a.atttypmod) FROM pg_catalog.pg_attribute a "
      "WHERE a.attrelid = pg_catalog.to_regclass(:name) AND a.attnum > 0 AND NOT a.attisdropped ORDER BY a.attnum",
      false);
  const std::string name = quotedTable(table);
  const VEXDatabaseValue values[] = {name};
  if (statement == nullptr || !statement->start(values)) return false;
  for (;;) {
    VEXDatabaseRow row;
    bool atEnd = false;
    if (!statement->next(row, atEnd)) return false;
    if (atEnd) return true;
    columns.push_back({std::string(row[0].value_or("")), dbschema::typeText(row[1].value_or(""))});
  }
}

std::string PostgresDatabase::quotedTable(std::string_view name) const {
  const std::size_t point = name.find('.');
  if (point == std::string_view::npos || point == 0 || point + 1 == name.size()) return dbschema::quoted(name);
  return dbschema::quoted(name.substr(0, point)) + "." + dbschema::quoted(name.substr(point + 1));
}

}  // namespace

std::unique_ptr<VEXDatabase> openPostgreSQL(const VEXDatabasePlace& place, std::string& error) {
  auto database = std::make_unique<PostgresDatabase>();
  if (database->connect(place)) return database;
  error = database->errorText();
  return nullptr;
}
