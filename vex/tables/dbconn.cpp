#include "vex/tables/dbconn.h"

#include "vex/inc/numtext.h"

VEXDatabaseStatement::~VEXDatabaseStatement() = default;
VEXDatabaseInsert::~VEXDatabaseInsert() = default;
VEXDatabase::~VEXDatabase() = default;

std::unique_ptr<VEXDatabase> VEXDatabase::open(const VEXDatabasePlace& place, Access access, std::string& error) {
  if (place.serverType.empty() || equalsIgnoringCase(place.serverType, "SQLITE"))
    return openSQLite(place, access, error);
  if (equalsIgnoringCase(place.serverType, "POSTGRESQL")) return openPostgreSQL(place, error);
  error = "the server type '" + place.serverType + "' is none of SQLITE and POSTGRESQL";
  return nullptr;
}

bool VEXDatabase::begin() {
  inTransaction_ = inTransaction_ || execute("BEGIN");
  return inTransaction_;
}

bool VEXDatabase::commit() {
  if (!inTransaction_) return true;
  if (!execute("COMMIT")) return false;
  inTransaction_ = false;
  return true;
}

void VEXDatabase::rollback() {
  if (!inTransaction_) return;
  const std::string reason = errorText_;
  execute("ROLLBACK");  // a connection that is gone has rolled back already
  errorText_ = reason;
  inTransaction_ = false;
}

bool VEXDatabase::failed(std::string_view text) {
  errorText_ = trimmed(text, " \t\r\n");
  if (errorText_.empty()) errorText_ = "the database gave no reason";
  return false;
}
