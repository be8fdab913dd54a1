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
  if (!appendRow(fields)) return makeStatus(308008, {path(), file_.errorText()});
  return nullptr;
}

// The first row, once, when it was asked for.
bool VEXSeparatedOutput::appendNames() {
  if (!namesWanted_) return true;
  namesWanted_ = false;
  return file_.append(joined(columnNames_, std::string_view(&separator_, 1)) + "\n");
}

std::string_view VEXSeparatedOutput::shape(Shaped& shaped, std::string_view value) {
  std::string_view text;
  if (shaped.format.format(value, shaped.text, text)) return text;
  ++shaped.numUnsuited;
  return value;
}

bool VEXSeparatedOutput::appendRow(VEXTableRow fields) {
  std::size_t most = fields.size() + 1 + VEXOutputFormat::kLongest * shaped_.size();
  for (const std::string_view field : fields) most += field.size();
  if (most > kLongestInPlace) [[unlikely]]
    return appendLongRow(fields);
  char* at = file_.openSpace(most);
  if (at == nullptr) return false;
  auto shaped = shaped_.begin();
  for (std::size_t i = 0; i < fields.size(); ++i) {
    std::string_view value = fields[i];
    if (shaped != shaped_.end() && shaped->column == i) {
      if (!shaped->format.isInForm(value)) value = shape(*shaped, value);
      ++shaped;
    }
    if (i > 0) *at++ = separator_;
    wordscan::copyShort(at, value.data(), value.size());
    at += value.size();
  }
  *at++ = '\n';
  file_.closeSpace(at);
  return true;
}

bool VEXSeparatedOutput::appendLongRow(VEXTableRow fields) {
  auto shaped = shaped_.begin();
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const bool isShaped = shaped != shaped_.end() && shaped->column == i;
    if (i > 0) file_.append(std::string_view(&separator_, 1));
    file_.append(isShaped ? shape(*shaped++, fields[i]) : fields[i]);
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
