#include "vex/tables/sepvalot.h"

#include "vex/inc/numtext.h"
#include "vex/src/vexlog.h"
#include "vex/src/wordscan.h"
#include "vex/tables/sepvalin.h"

namespace {

constexpr std::size_t kLongestInPlace = std::size_t{1} << 16;  // longer rows go piece by piece

}  // namespace

VEXSeparatedOutput::~VEXSeparatedOutput() {
  if (VEXStatus failure = close()) logMessage(VEXSeverity::Error, 308001, {path(), failure->message()});
}

VEXStatus VEXSeparatedOutput::open() {
  if (!file_.open(path())) return makeStatus(308003, {path(), file_.errorText()});
  logMessage(VEXSeverity::Inform, 308004, {path()});
  return nullptr;
}

VEXStatus VEXSeparatedOutput::addField(std::string_view name, std::string_view typeSpec) {
  if (name == "CSV_SEPARATOR") {
    if (!parseSeparator(typeSpec, separator_)) return makeStatus(308005, {path(), typeSpec});
    return nullptr;
  }
  if (name == "CSV_OUTPUT_FIELDNAMES") {
    namesWanted_ = equalsIgnoringCase(typeSpec, "YES");
    return nullptr;
  }
  if (hasColumn(name)) return makeStatus(308006, {path(), name});
  VEXOutputFormat format;
  VEX_TRY(VEXOutputFormat::parse(typeSpec, format));
  if (format.kind() != VEXOutputFormat::Kind::Text)
    shaped_.push_back({.column = columnNames_.size(), .typeText = std::string(typeSpec), .format = format, .text = {}});
  columnNames_.emplace_back(name);
  return nullptr;
}

VEXStatus VEXSeparatedOutput::writeRow(VEXTableRow fields) {
  if (fields.size() != columnNames_.size())
    return makeStatus(308009, {path(), integerText(static_cast<std::int64_t>(fields.size())),
                               integerText(static_cast<std::int64_t>(columnNames_.size()))});
  if (!appendNames()) return makeStatus(308007, {path(), file_.errorText()});
  if (!shaped_.empty()) {
    row_.assign(fields.begin(), fields.end());
    for (Shaped& shaped : shaped_) {
      std::string_view& value = row_[shaped.column];
      std::string_view text;
      if (shaped.format.format(value, shaped.text, text)) [[likely]]
        value = text;
      else
        ++shaped.numUnsuited;
    }
    fields = row_;
  }
  if (!appendRow(fields)) return makeStatus(308008, {path(), file_.errorText()});
  return nullptr;
}

// The first row, once, when it was asked for.
bool VEXSeparatedOutput::appendNames() {
  if (!namesWanted_) return true;
  namesWanted_ = false;
  const std::vector<std::string_view> names(columnNames_.begin(), columnNames_.end());
  return appendRow(names);
}

bool VEXSeparatedOutput::appendRow(VEXTableRow fields) {
  std::size_t length = fields.empty() ? 1 : fields.size();  // separators and the line end
  for (const std::string_view field : fields) length += field.size();
  if (length <= kLongestInPlace) [[likely]] {
    char* at = file_.appendSpace(length);
    if (at == nullptr) return false;
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (i > 0) *at++ = separator_;
      wordscan::copyShort(at, fields[i].data(), fields[i].size());
      at += fields[i].size();
    }
    *at = '\n';
    return true;
  }
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (i > 0) file_.append(std::string_view(&separator_, 1));
    file_.append(fields[i]);
  }
  return file_.append("\n");
}

VEXStatus VEXSeparatedOutput::close() {
  if (!file_.isOpen()) return nullptr;
  appendNames();  // of a table without rows
  for (const Shaped& shaped : shaped_)
    if (shaped.numUnsuited > 0)
      logMessage(VEXSeverity::Warn, 308010,
                 {path(), columnNames_[shaped.column], integerText(shaped.numUnsuited), shaped.typeText});
  return extendStatus(finish(308002));
}
