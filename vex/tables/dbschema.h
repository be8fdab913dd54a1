// Statements put together and taken apart: names in quotes, tables created from _DEF rows, parameters by name.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vex/inc/stkdefs.h"
#include "vex/tables/dbconn.h"

namespace dbschema {

// The name between double quotes, with those inside doubled.
std::string quoted(std::string_view name);
std::string quotedList(const VEXStringVector& names);  // "a","b"

// The text with each ":name" outside of quotes and comments replaced by `mark` and its number ("?1", "$1"). A name
// twice is one parameter. "::" and a colon behind a letter or digit are left as they are.
std::string numberParameters(std::string_view text, char mark, VEXStringVector& names);

// What a type of a _DEF row says.
enum class Kind { Text, Number, Integer, Real, Date, Logical, Unknown };
struct Type {
  Kind kind = Kind::Unknown;
  std::uint32_t width = 0;  // Text, Number: 0 when none is told
  std::uint32_t decimals = 0;
  bool isSmall = false;  // Integer of 16 bits
  bool isFloat = false;  // Real written as "float"
};
// char(<n>), number(<w>,<d>), date, logical, smallint, integer, float, double.
Type typeOf(std::string_view typeText);
// The column type as the SQL standard spells it, which both backends take; empty for an unknown one.
std::string columnType(std::string_view typeText);
// The words of _DEF rows for a column type as a database tells it, such as "VARCHAR(20)"; without a word for it,
// "char(255)".
std::string typeText(std::string_view columnType);
// True when the value can stand in a column of the type: numbers are numbers, texts not longer (in characters) than
// the column, integers within their range.
bool suits(const Type& type, std::string_view value);

// A value that suits, as it is stored: truth values as 1 and 0, dates as 2020-02-29 unless their marks tell another
// order. The view is of the value, of `space`, or of a constant.
std::string_view storedForm(const Type& type, std::string_view value, std::string& space);

// CREATE TABLE; columns are name and type of a _DEF row. Empty, with the column in `unknown`, when a type has no
// counterpart.
std::string createTable(const VEXDatabase& database, const std::string& table,
                        const std::vector<std::pair<std::string, std::string>>& columns, std::size_t& unknown);
// SELECT of these columns, all when there are none, with a condition when it is not empty.
std::string select(const VEXDatabase& database, const std::string& table, const VEXStringVector& columns,
                   std::string_view condition);

}  // namespace dbschema
