#include "vex/tables/sqlldrot.h"

#include <array>
#include <ctime>

#include "vex/inc/numtext.h"
#include "vex/tables/dbschema.h"

namespace {

std::string today() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  std::array<char, 64> text{};
  if (localtime_r(&now, &parts) == nullptr) return "at an unknown time";
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts)};
}

}  // namespace

VEXStatus VEXBulkLoaderOutput::open() {
  if (!file_.open(path())) return makeStatus(311001, {path(), file_.errorText()});
  return nullptr;
}

VEXStatus VEXBulkLoaderOutput::addField(std::string_view name, std::string_view typeSpec) {
  if (name == "SQL_DEST_TABLE") {
    table_.assign(typeSpec);
    return nullptr;
  }
  if (hasColumn(name)) return makeStatus(311005, {path(), name});
  Type type;
  const std::string upper = upperCased(typeSpec);
  const dbschema::Type known = dbschema::typeOf(typeSpec);
  if (upper == "INT" || known.kind == dbschema::Kind::Integer)
    type = {"INTEGER EXTERNAL", "INTEGER"};
  else if (upper == "DOUBLE")
    type = {"DOUBLE EXTERNAL", "DOUBLE PRECISION"};
  else if (upper == "FLOAT" || known.kind == dbschema::Kind::Number)
    type = {"FLOAT EXTERNAL", upper == "FLOAT" ? "FLOAT" : dbschema::columnType(typeSpec)};
  else if (known.kind == dbschema::Kind::Text && known.width > 0)
    type = {"CHAR(" + integerText(known.width) + ")", "CHAR(" + integerText(known.width) + ")"};
  else if (known.kind == dbschema::Kind::Text || known.kind == dbschema::Kind::Logical ||
           known.kind == dbschema::Kind::Date)
    type = {"CHAR", "CHAR(255)"};
  else
    return makeStatus(311004, {typeSpec, path(), name});
  columnNames_.emplace_back(name);
  types_.push_back(std::move(type));
  return nullptr;
}

VEXStatus VEXBulkLoaderOutput::start() {
  if (isStarted_) return nullptr;
  if (table_.empty()) return makeStatus(311003, {path()});
  text_ = "-- Oracle bulk loader file created " + today() +
          " by ORV.\n"
          "-- Load into Oracle with this command line:\n"
          "--     sqlldr80 user/password control=" +
          path() +
          "\n-- \n"
          "-- To create the table to hold this data, use SQLPLUS to execute: \n"
          "--     CREATE TABLE " +
          table_ + " (";
  for (std::size_t i = 0; i < types_.size(); ++i)
    text_.append(i > 0 ? ", " : "").append(columnNames_[i]).append(" ").append(types_[i].table);
  text_ += ");\nLOAD DATA\nINFILE *\nAPPEND\nINTO TABLE " + table_ +
           "\nFIELDS TERMINATED BY ',' OPTIONALLY ENCLOSED BY '\"'\nTRAILING NULLCOLS\n(";
  for (std::size_t i = 0; i < types_.size(); ++i)
    text_.append(i > 0 ? ",\n " : "").append(columnNames_[i]).append(" ").append(types_[i].loader);
  text_ += ")\nBEGINDATA\n";
  isStarted_ = true;
  if (!file_.append(text_)) return makeStatus(311002, {path(), file_.errorText()});
  return nullptr;
}

// A value that holds a separator or a quote stands between quotes; a line end becomes a blank, for a line is a row.
VEXStatus VEXBulkLoaderOutput::writeRow(VEXTableRow fields) {
  VEX_TRY(start());
  text_.clear();
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (i > 0) text_ += ',';
    const bool isQuoted = fields[i].find_first_of(",\"\r\n") != std::string_view::npos;
    if (!isQuoted) {
      text_ += fields[i];
      continue;
    }
    text_ += '"';
    for (const char c : fields[i]) {
      if (c == '"') text_ += '"';
      text_ += c == '\n' || c == '\r' ? ' ' : c;
    }
    text_ += '"';
  }
  text_ += '\n';
  if (!file_.append(text_)) return makeStatus(311002, {path(), file_.errorText()});
  return nullptr;
}

VEXStatus VEXBulkLoaderOutput::close() {
  if (!file_.isOpen()) return nullptr;
  if (VEXStatus failure = start()) {
    abort();
    return failure;
  }
  return extendStatus(finish(311002));
}
