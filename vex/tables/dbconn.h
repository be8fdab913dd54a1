// VEXDatabase: one open database, whatever kind of server stands behind it. Statements are prepared, and values are
// bound to them and never become part of their text. SQLite is part of the program (dbsqlite); PostgreSQL is reached
// through libpq, which is bound at the first connection (dbpgsql).
//
// Calls give false when they fail, and errorText() is then the database's own text: the caller knows what it was
// about and gives the failure its number. One thread uses a database at a time.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vex/inc/stkdefs.h"

// Where a database is and who asks.
struct VEXDatabasePlace {
  std::string serverType = "SQLITE";  // or POSTGRESQL, in either case
  std::string serverName;             // PostgreSQL: host, "host:port", or the directory of a local socket
  std::string userName;
  std::string password;
  std::string databaseName;  // SQLite: the file, or a "file:" address
};

// A value of a row or of a parameter; none is the database's NULL.
using VEXDatabaseValue = std::optional<std::string_view>;
using VEXDatabaseRow = std::span<const VEXDatabaseValue>;

// A column as the database describes it: its name and its type in the words of _DEF rows.
struct VEXDatabaseColumn {
  std::string name;
  std::string type;
};

// One prepared statement. Ends before its database.
class VEXDatabaseStatement {
 public:
  virtual ~VEXDatabaseStatement();

  // The names of the parameters, ":name" in the text, in the order of their first use.
  const VEXStringVector& parameterNames() const { return parameterNames_; }
  // Runs the statement, once more if it has run before. `values`: one a parameter; they must stay as they are until
  // the last row has been fetched.
  virtual bool start(VEXDatabaseRow values) = 0;
  // The next row of the answer, valid until the next call; no row at the end, nor for a statement that answers none.
  virtual bool next(VEXDatabaseRow& row, bool& atEnd) = 0;
  // Drops what is left of the answer.
  virtual void reset() = 0;
  // Columns of the answer; known once start() has succeeded.
  virtual std::size_t numColumns() const = 0;

 protected:
  VEXStringVector parameterNames_;
};

// Rows on their way into one table.
class VEXDatabaseInsert {
 public:
  virtual ~VEXDatabaseInsert();
  virtual bool addRow(VEXDatabaseRow values) = 0;  // one value a column
  virtual bool flush() = 0;                        // what has been added is with the database afterwards
};

class VEXDatabase {
 public:
  enum class Access { Read, ReadWrite, Create };  // Create makes an SQLite file that is not there

  virtual ~VEXDatabase();
  VEXDatabase(const VEXDatabase&) = delete;
  VEXDatabase& operator=(const VEXDatabase&) = delete;

  // Null when there is no connection; `error` then says why.
  static std::unique_ptr<VEXDatabase> open(const VEXDatabasePlace& place, Access access, std::string& error);

  // Null on failure. `streamed`: rows come as they are asked for, however many they are, and no other statement runs
  // meanwhile.
  virtual std::unique_ptr<VEXDatabaseStatement> prepare(std::string_view text, bool streamed = false) = 0;
  virtual bool execute(const std::string& text) = 0;  // without parameters or answer
  virtual std::unique_ptr<VEXDatabaseInsert> insertInto(const std::string& table, const VEXStringVector& columns) = 0;
  // The names of tables and views, in their order by byte.
  virtual bool listTables(VEXStringVector& names) = 0;
  // Empty when there is no such table.
  virtual bool describe(const std::string& table, std::vector<VEXDatabaseColumn>& columns) = 0;

  bool begin();
  bool commit();
  void rollback();  // without a transaction nothing happens
  bool inTransaction() const { return inTransaction_; }
  const std::string& errorText() const { return errorText_; }
  const std::string& serverType() const { return serverType_; }

  // A table's name as it stands in a statement; PostgreSQL knows "schema.table".
  virtual std::string quotedTable(std::string_view name) const = 0;
  // A column type of a _DEF row as the database has it; empty when there is none of that name.
  virtual std::string columnType(std::string_view typeText) const = 0;

 protected:
  explicit VEXDatabase(std::string serverType) : serverType_(std::move(serverType)) {}
  bool failed(std::string_view text);  // keeps the text, gives false

 private:
  std::string serverType_;
  std::string errorText_;
  bool inTransaction_ = false;
};

// The backends.
std::unique_ptr<VEXDatabase> openSQLite(const VEXDatabasePlace& place, VEXDatabase::Access access, std::string& error);
std::unique_ptr<VEXDatabase> openPostgreSQL(const VEXDatabasePlace& place, std::string& error);
