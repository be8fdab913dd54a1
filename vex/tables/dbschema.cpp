#include "vex/tables/dbschema.h"

#include <algorithm>
#include <cmath>

#include "vex/inc/numtext.h"
#include "vex/src/plainnum.h"
#include "vex/tables/vexfdesc.h"

namespace {

bool isNameByte(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || (c & 0x80) != 0;
}

// The index behind a text between quotes that starts at `at`; two quotes in a row stand for one.
std::size_t behindQuotes(std::string_view text, std::size_t at) {
  const char quote = text[at];
  for (++at; at < text.size(); ++at)
    if (text[at] == quote) {
      if (at + 1 >= text.size() || text[at + 1] != quote) return at + 1;
      ++at;
    }
  return at;
}

// The index behind "$tag$ ... $tag$", or `at` when no such text starts here.
std::size_t behindDollars(std::string_view text, std::size_t at) {
  std::size_t end = at + 1;
  while (end < text.size() && isNameByte(text[end])) ++end;
  if (end >= text.size() || text[end] != '$') return at;
  const std::string_view tag = text.substr(at, end + 1 - at);
  const std::size_t close = text.find(tag, end + 1);
  return close == std::string_view::npos ? at : close + tag.size();
}

// The index behind what must not be looked into: quotes, comments. `at` when nothing of that kind starts here.
std::size_t behindVerbatim(std::string_view text, std::size_t at) {
  const auto behind = [&](std::string_view end) {
    const std::size_t found = text.find(end, at + 2);
    return found == std::string_view::npos ? text.size() : found + end.size();
  };
  if (text[at] == '\'' || text[at] == '"') return behindQuotes(text, at);
  if (text.substr(at, 2) == "--") return behind("\n");
  if (text.substr(at, 2) == "/*") return behind("*/");
  if (text[at] == '$' && (at == 0 || !isNameByte(text[at - 1]))) return behindDollars(text, at);
  return at;
}

std::size_t numCharacters(std::string_view utf8) {
  return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

bool suitsInteger(const dbschema::Type& type, std::string_view value, bool isWhole) {
  std::int64_t whole = 0;
  if (!isWhole || !textToInteger(value, whole)) return false;
  return type.isSmall ? whole >= -0x8000 && whole <= 0x7FFF : whole >= -0x80000000LL && whole <= 0x7FFFFFFFLL;
}

bool suitsNumber(const dbschema::Type& type, std::string_view value) {
  VEXPlainNumber number;
  const bool isPlain = splitPlainNumber(value, number);
  if (type.kind == dbschema::Kind::Integer)
    return suitsInteger(type, value, isPlain && number.numDecimals == 0 && value.back() != '.');
  const std::size_t wholeWidth = type.width - type.decimals;
  if (isPlain && number.wholeLength < 16) [[likely]] {
    const std::size_t numDigits = number.wholeLength - number.numSigns;
    if (type.width == 0 || numDigits < wholeWidth || (numDigits == wholeWidth && number.numDecimals <= type.decimals))
      return true;
  } else if (isPlain && type.width > 0 && number.numDecimals <= type.decimals) {
    // More digits than a double tells apart: their count decides.
    std::size_t first = number.numSigns;
    while (first < number.wholeLength && value[first] == '0') ++first;
    return number.wholeLength - first <= wholeWidth;
  }
  double real = 0.0;
  if (!textToReal(value, real) || !std::isfinite(real)) return false;
  // The database rounds to its decimals, which may carry into one digit more.
  return type.width == 0 || std::abs(real) + 0.5 * std::pow(10.0, -static_cast<double>(type.decimals)) <
                                std::pow(10.0, static_cast<double>(wholeWidth));
}

}  // namespace

namespace dbschema {

std::string quoted(std::string_view name) {
  return "\"" + replacedAll(std::string(name), "\"", "\"\"") + "\"";
}

std::string quotedList(const VEXStringVector& names) {
  std::string list;
  for (const std::string& name : names) list.append(list.empty() ? "" : ",").append(quoted(name));
  return list;
}

std::string numberParameters(std::string_view text, char mark, VEXStringVector& names) {
  std::string numbered;
  numbered.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    std::size_t end = behindVerbatim(text, at);
    if (end == at && text[at] == ':') {
      end = at + 1;
      while (end < text.size() && text[end] == ':') ++end;
      const bool isLone = end == at + 1 && (at == 0 || !isNameByte(text[at - 1]));
      std::size_t nameEnd = end;
      while (nameEnd < text.size() && isNameByte(text[nameEnd])) ++nameEnd;
      if (isLone && nameEnd > end) {
        const std::string_view name = text.substr(end, nameEnd - end);
        auto known = std::find(names.begin(), names.end(), name);
        if (known == names.end()) known = names.insert(known, std::string(name));
        numbered += mark;
        appendInteger(numbered, known - names.begin() + 1);
        at = nameEnd;
        continue;
      }
    }
    end = std::max(end, at + 1);
    numbered.append(text.substr(at, end - at));
    at = end;
  }
  return numbered;
}

Type typeOf(std::string_view typeText) {
  const std::string lower = [&] {
    std::string text(typeText);
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
  }();
  if (lower == "smallint") return {.kind = Kind::Integer, .isSmall = true};
  if (lower == "integer") return {.kind = Kind::Integer};
  if (lower == "float") return {.kind = Kind::Real, .isFloat = true};
  if (lower == "double") return {.kind = Kind::Real};
  const VEXFieldDescription field = VEXFieldDescription::of({}, lower);
  switch (field.kind) {
    case VEXFieldKind::Char:
      return {.kind = Kind::Text, .width = field.width};
    case VEXFieldKind::Number:
      if (field.decimals > field.width) return {};
      return {.kind = Kind::Number, .width = field.width, .decimals = field.decimals};
    case VEXFieldKind::Date:
      return {.kind = Kind::Date};
    case VEXFieldKind::Logical:
      return {.kind = Kind::Logical};
    case VEXFieldKind::Unknown:
      break;
  }
  return {};
}

std::string columnType(std::string_view typeText) {
  const Type type = typeOf(typeText);
  switch (type.kind) {
    case Kind::Text:
      return type.width == 0 ? "VARCHAR" : "VARCHAR(" + integerText(type.width) + ")";
    case Kind::Number:
      if (type.width == 0) return "NUMERIC";
      return "NUMERIC(" + integerText(type.width) + "," + integerText(type.decimals) + ")";
    case Kind::Integer:
      return type.isSmall ? "SMALLINT" : "INTEGER";
    case Kind::Real:
      return type.isFloat ? "FLOAT" : "DOUBLE PRECISION";
    case Kind::Date:
      return "DATE";
    case Kind::Logical:
      return "BOOLEAN";
    case Kind::Unknown:
      break;
  }
  return {};
}

std::string typeText(std::string_view columnType) {
  const std::string upper = upperCased(columnType);
  const auto says = [&upper](std::string_view word) { return upper.find(word) != std::string::npos; };
  const std::size_t open = columnType.find('(');
  std::string size(open == std::string_view::npos ? std::string_view() : columnType.substr(open));
  std::erase(size, ' ');
  if (says("CHAR") || says("TEXT") || says("CLOB")) return size.empty() ? "char(255)" : "char" + size;
  if (says("SMALLINT")) return "smallint";
  if (says("BIGINT")) return "number(19,0)";
  if (says("BOOL")) return "logical";
  if (says("INTERVAL") || says("POINT") || says("TIMESTAMP") || says("DATETIME")) return "char(255)";
  if (says("INT")) return "integer";
  if (says("DATE")) return "date";
  if (says("NUMERIC") || says("DECIMAL")) {
    if (size.empty()) return "number(31,15)";
    return "number" + (size.find(',') == std::string::npos ? size.substr(0, size.size() - 1) + ",0)" : size);
  }
  if (says("DOUB")) return "double";
  if (says("REAL") || says("FLOA")) return "float";
  return "char(255)";
}

bool suits(const Type& type, std::string_view value) {
  switch (type.kind) {
    case Kind::Text:
      return type.width == 0 || value.size() <= type.width || numCharacters(value) <= type.width;
    case Kind::Number:
    case Kind::Integer:
    case Kind::Real:
      return suitsNumber(type, value);
    case Kind::Logical:
      for (const std::string_view word : {"true", "false", "t", "f", "yes", "no", "y", "n", "1", "0"})
        if (equalsIgnoringCase(value, word)) return true;
      return false;
    case Kind::Date: {
      std::size_t numDigits = 0;
      for (const char c : value) {
        if (c >= '0' && c <= '9')
          ++numDigits;
        else if (c != '-' && c != '/' && c != '.')
          return false;
      }
      return numDigits == 8 && value.size() <= 10;
    }
    case Kind::Unknown:
      break;
  }
  return true;
}

std::string_view storedForm(const Type& type, std::string_view value, std::string& space) {
  if (value.empty()) return value;
  if (type.kind == Kind::Logical) return std::string_view("tTyY1").find(value[0]) == std::string_view::npos ? "0" : "1";
  if (type.kind != Kind::Date) return value;
  const auto isMark = [value](std::size_t at) { return value[at] < '0' || value[at] > '9'; };
  const bool hasMarks = value.size() == 10 && isMark(4) && isMark(7);
  if (!hasMarks && value.size() != 8) return value;
  space.assign(value, 0, 4);
  space += '-';
  space.append(value, hasMarks ? 5 : 4, 2);
  space += '-';
  space.append(value, hasMarks ? 8 : 6, 2);
  return space;
}

std::string createTable(const VEXDatabase& database, const std::string& table,
                        const std::vector<std::pair<std::string, std::string>>& columns, std::size_t& unknown) {
  std::string text = "CREATE TABLE " + database.quotedTable(table) + " (";
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const std::string type = database.columnType(columns[i].second);
    if (type.empty()) {
      unknown = i;
      return {};
    }
    text.append(i > 0 ? ", " : "").append(quoted(columns[i].first)).append(" ").append(type);
  }
  return text + ")";
}

std::string select(const VEXDatabase& database, const std::string& table, const VEXStringVector& columns,
                   std::string_view condition) {
  std::string text =
      "SELECT " + (columns.empty() ? std::string("*") : quotedList(columns)) + " FROM " + database.quotedTable(table);
  if (!condition.empty()) text.append(" WHERE ").append(condition);
  return text;
}

}  // namespace dbschema
