// Tables of databases behind the interfaces of table files, and the session that their writers share: rows go in by
// large transactions, and what a failed run leaves is whole batches.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vex/tables/dbconn.h"
#include "vex/tables/dbschema.h"
#include "vex/tables/vextabio.h"

// Takes the directives DATABASE_SERVER_TYPE, DATABASE_SERVER_NAME, DATABASE_USER_NAME, DATABASE_PASSWORD and
// DATABASE_NAME; false for any other name.
bool setDatabasePlace(VEXDatabasePlace& place, std::string_view directive, std::string_view value);

// One database and the transaction that all its writers share. Its calls give false when they fail; the database has
// the reason.
class VEXDatabaseSession {
 public:
  explicit VEXDatabaseSession(std::unique_ptr<VEXDatabase> database, std::uint64_t batchRows = kBatchRows)
      : database_(std::move(database)), batchRows_(batchRows) {}

  VEXDatabase& database() { return *database_; }
  bool start() { return database_->inTransaction() || database_->begin(); }
  // Null on failure; stays with the session.
  VEXDatabaseInsert* insertInto(const std::string& table, const VEXStringVector& columns);
  // A row went in: ends the transaction when it is large enough.
  bool countRow() { return ++numRows_ < batchRows_ || commit(); }
  bool commit();    // of all that was added
  void rollback();  // to the last commit; the inserts take no further rows
  std::uint64_t numCommitted() const { return numCommitted_; }

  static constexpr std::uint64_t kBatchRows = 200 * 1000;

 private:
  std::unique_ptr<VEXDatabase> database_;
  std::vector<std::unique_ptr<VEXDatabaseInsert>> inserts_;  // end before the database
  std::uint64_t batchRows_;
  std::uint64_t numRows_ = 0;  // since the last commit
  std::uint64_t numCommitted_ = 0;
};

// The rows of a table or view. Directives: the five above, DATABASE_TABLE, DATABASE_WHERE; other names are columns that
// are wanted, without any all are. A value that is NULL is a view without data.
//
// Failures: 309001 no connection, 309002 no such table, or the statement cannot be prepared or run, 309003 reading
// breaks off, 309004 a column twice.
class VEXDatabaseInput final : public VEXTableInput {
 public:
  explicit VEXDatabaseInput(std::string_view path) : VEXTableInput(path) { place_.databaseName.assign(path); }
  // Over a connection that others use, too.
  VEXDatabaseInput(std::shared_ptr<VEXDatabase> database, const std::string& table)
      : VEXTableInput(table), database_(std::move(database)), table_(table) {}

  VEXStatus open() override { return nullptr; }  // the directives tell where to connect
  VEXStatus close() override;
  VEXStatus addField(std::string_view name, std::string_view value) override;
  VEXStatus startRows() override;
  VEXStatus getRow(VEXTableRow& row, bool& endOfFile) override;

 private:
  VEXDatabasePlace place_;
  std::shared_ptr<VEXDatabase> database_;
  std::unique_ptr<VEXDatabaseStatement> statement_;
  std::string table_;
  std::string condition_;
};

// Rows into a table, which is created when it is not there. Directives: the five above, DATABASE_TABLE; other names
// are columns. A value that does not suit its column refuses its row.
//
// Failures: 310001 no connection, 310002 the table cannot be made, 310003 a type without a counterpart, 310004 a column
// that the table lacks, 310005 a row cannot be written, 310006 the transaction cannot be ended, 310007 a column twice,
// 310008 (refusal) a value of another type, 310009 a row of another length, 310010 no columns.
class VEXDatabaseOutput final : public VEXTableOutput {
 public:
  explicit VEXDatabaseOutput(std::string_view path) : VEXTableOutput(path) { place_.databaseName.assign(path); }
  // Over a session that others use, too, and that its owner commits.
  VEXDatabaseOutput(std::shared_ptr<VEXDatabaseSession> session, const std::string& table)
      : VEXTableOutput(table), session_(std::move(session)), table_(table) {}
  ~VEXDatabaseOutput() override;

  VEXStatus open() override { return nullptr; }
  VEXStatus close() override;
  VEXStatus addField(std::string_view name, std::string_view typeSpec) override;
  VEXStatus writeRow(VEXTableRow fields) override;
  void abort() override;

  void setOverwrite() { isOverwriting_ = true; }  // a table that is there is dropped first
  // Makes the table ready for rows; the first row calls it.
  VEXStatus prepare();
  // The rows written so far are with the database afterwards, seen by other statements of the session.
  VEXStatus flush();
  // A value as its column stores it, valid until the next call for the column; the table must be ready.
  std::string_view storedForm(std::size_t column, std::string_view value) {
    return dbschema::storedForm(types_[column], value, spaces_[column]);
  }

 private:
  VEXStatus makeTable();
  VEXStatus refuse(std::size_t column, std::string_view value) const;

  VEXDatabasePlace place_;
  std::shared_ptr<VEXDatabaseSession> session_;
  VEXDatabaseInsert* insert_ = nullptr;  // of the session
  bool ownsSession_ = false;
  bool isOverwriting_ = false;
  std::string table_;
  std::vector<std::string> typeTexts_;
  std::vector<dbschema::Type> types_;
  std::vector<VEXDatabaseValue> values_;
  std::vector<std::string> spaces_;  // of values in another form than they came
};
