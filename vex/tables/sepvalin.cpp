#include "vex/tables/sepvalin.h"

#include <algorithm>
#include <cstring>

#include "vex/inc/numtext.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kMostColumns = 16384;  // that a file can name by itself
constexpr std::size_t kMostOfALine = 200;    // of a skipped line that the log shows

}  // namespace

bool parseSeparator(std::string_view value, char& separator) {
  if (value.size() != 3 || value.front() != '(' || value.back() != ')') return false;
  separator = value[1];
  return true;
}

VEXStatus VEXSeparatedInput::open() {
  if (!file_.open(path())) return makeStatus(307002, {path(), file_.errorText()});
  logMessage(VEXSeverity::Inform, 307003, {path()});
  return nullptr;
}

VEXStatus VEXSeparatedInput::close() {
  file_.close();
  return nullptr;
}

VEXStatus VEXSeparatedInput::addField(std::string_view name, std::string_view value) {
  if (name == "CSV_SEPARATOR") {
    if (!parseSeparator(value, separator_)) return makeStatus(307004, {path(), value});
    logMessage(VEXSeverity::Inform, 307005, {path(), std::string_view(&separator_, 1)});
    return nullptr;
  }
  if (name == "CSV_STRIP_QUOTES") {
    stripQuotes_ = equalsIgnoringCase(value, "YES");
    if (stripQuotes_)
      logMessage(VEXSeverity::Inform, 307011, {path()});
    else
      logMessage(VEXSeverity::Inform, 307012, {path()});
    return nullptr;
  }
  if (name == "CSV_SKIP_LINES") return extendStatus(skipLines(value));
  return extendStatus(addColumn(name));
}

VEXStatus VEXSeparatedInput::addColumn(std::string_view name) {
  if (!known_.emplace(name).second) return makeStatus(307008, {path(), name});
  columnNames_.emplace_back(name);
  return nullptr;
}

VEXStatus VEXSeparatedInput::skipLines(std::string_view count) {
  std::int64_t numLines = 0;
  if (count.find_first_not_of("0123456789") != std::string_view::npos || !textToInteger(count, numLines))
    return makeStatus(307006, {path(), count});
  hasHeader_ = false;
  for (std::int64_t i = 0; i < numLines; ++i) {
    std::string_view line;
    bool endOfFile = false;
    VEX_TRY(readLine(line, endOfFile));
    if (endOfFile) return nullptr;
    hasHeader_ = lineNumber_ == 1 && numLines == 1;
    if (hasHeader_) header_.assign(line);
    logMessage(VEXSeverity::Warn, 307007,
               {path(), integerText(static_cast<std::int64_t>(lineNumber_)), line.substr(0, kMostOfALine)});
  }
  return nullptr;
}

VEXStatus VEXSeparatedInput::readLine(std::string_view& line, bool& endOfFile) {
  const VEXInputFile::Line result = file_.readLine(line);
  endOfFile = result == VEXInputFile::Line::End;
  if (endOfFile) return nullptr;
  ++lineNumber_;
  if (result == VEXInputFile::Line::Ok) [[likely]] {
    if (lineNumber_ == 1 && line.starts_with(kByteOrderMark)) line.remove_prefix(kByteOrderMark.size());
    return nullptr;
  }
  const std::string number = integerText(static_cast<std::int64_t>(lineNumber_));
  if (result == VEXInputFile::Line::TooLong)
    return makeStatus(307010, {path(), number, integerText(VEXInputFile::kLongestLine)});
  return makeStatus(307009, {path(), number, file_.errorText()});
}

VEXStatus VEXSeparatedInput::startRows() {
  if (columnNames_.empty()) VEX_TRY(nameColumns());
  fields_.assign(columnNames_.size(), {});
  return nullptr;
}

VEXStatus VEXSeparatedInput::nameColumns() {
  std::string_view line = header_;
  if (!hasHeader_) {
    VEX_TRY(readLine(firstLine_, atEnd_));
    if (atEnd_) return nullptr;
    hasFirstLine_ = true;
    line = firstLine_;
  }
  const auto numSeparators = static_cast<std::size_t>(std::count(line.begin(), line.end(), separator_));
  if (numSeparators >= kMostColumns)
    return makeStatus(307013, {path(), integerText(static_cast<std::int64_t>(lineNumber_)), integerText(kMostColumns)});
  fields_.assign(numSeparators + 1, {});
  stripQuotes_ ? splitQuoted(line) : splitPlain(line);
  // Separators inside quotes made room for more fields than there are.
  while (fields_.size() > 1 && fields_.back().data() == nullptr) fields_.pop_back();
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    const bool isNamed = hasHeader_ && !fields_[i].empty();
    VEX_TRY(addColumn(isNamed ? std::string(fields_[i]) : "COL" + integerText(static_cast<std::int64_t>(i))));
  }
  return nullptr;
}

VEXStatus VEXSeparatedInput::getRow(VEXTableRow& row, bool& endOfFile) {
  std::string_view line = firstLine_;
  row = {};
  endOfFile = atEnd_;
  if (atEnd_) return nullptr;
  if (!hasFirstLine_) VEX_TRY(readLine(line, endOfFile));
  hasFirstLine_ = false;
  atEnd_ = endOfFile;
  if (endOfFile) return nullptr;
  if (stripQuotes_ && line.find('"') != std::string_view::npos)
    splitQuoted(line);
  else
    splitPlain(line);
  row = fields_;
  return nullptr;
}

// Fills the fields from the left; surplus text is dropped, missing fields are left empty.
void VEXSeparatedInput::splitPlain(std::string_view line) {
  const char* at = line.data();
  const char* const end = at + line.size();
  const std::size_t count = fields_.size();
  std::size_t i = 0;
  while (i < count) {
    const auto left = static_cast<std::size_t>(end - at);
    const char* const stop = left == 0 ? nullptr : static_cast<const char*>(std::memchr(at, separator_, left));
    if (stop == nullptr) {
      fields_[i++] = std::string_view(at, left);
      break;
    }
    fields_[i++] = std::string_view(at, static_cast<std::size_t>(stop - at));
    at = stop + 1;
  }
  for (; i < count; ++i) fields_[i] = std::string_view();
}

// The same with quotes: each one switches between inside and outside, a separator inside is text. Only a field that
// begins with a quote loses its quotes.
void VEXSeparatedInput::splitQuoted(std::string_view line) {
  // Views into bare_ must stay valid while it grows to at most the line's length.
  bare_.clear();
  bare_.reserve(line.size());
  const std::size_t count = fields_.size();
  std::size_t i = 0;
  std::size_t start = 0;
  bool inQuotes = false;
  for (std::size_t at = 0; at <= line.size() && i < count; ++at) {
    if (at < line.size()) {
      if (line[at] == '"') inQuotes = !inQuotes;
      if (line[at] != separator_ || inQuotes) continue;
    }
    const std::string_view field = line.substr(start, at - start);
    fields_[i++] = field.starts_with('"') ? unquoted(field) : field;
    start = at + 1;
  }
  for (; i < count; ++i) fields_[i] = std::string_view();
}

// The text of a field that begins with a quote: behind that one, two quotes in a row are one and single ones go.
std::string_view VEXSeparatedInput::unquoted(std::string_view field) {
  std::string_view inner = field.substr(1);
  if (const std::size_t quote = inner.find('"'); quote == std::string_view::npos || quote + 1 == inner.size())
    return inner.substr(0, quote);
  const std::size_t start = bare_.size();
  for (std::size_t at = 0; at < inner.size(); ++at) {
    if (inner[at] != '"') {
      bare_ += inner[at];
    } else if (at + 1 < inner.size() && inner[at + 1] == '"') {
      bare_ += '"';
      ++at;
    }
  }
  return std::string_view(bare_).substr(start);
}
