#include "vex/tables/scatin.h"

#include "vex/inc/numtext.h"

namespace {

constexpr const char* kSubtypeColumn = "scat_subtype";

}  // namespace

VEXStatus VEXStructuredInput::open() {
  if (!file_.open(path())) return makeStatus(303001, {path(), file_.errorText()});
  return nullptr;
}

VEXStatus VEXStructuredInput::close() {
  file_.close();
  return nullptr;
}

VEXStatus VEXStructuredInput::addField(std::string_view name, std::string_view value) {
  if (name == "SCAT_LINE_TERMINATOR") return extendStatus(layout_.setTerminator(value));
  if (name == "SCAT_SUBTYPE" || name == "CAT_SUBTYPE") {
    subtype_.assign(value);
    return nullptr;
  }
  return extendStatus(layout_.addField(name, value, columnNames_));
}

VEXStatus VEXStructuredInput::startRows() {
  VEX_TRY(layout_.check(path()));
  columnNames_.emplace_back(kSubtypeColumn);
  values_.assign(columnNames_.size(), {});
  values_.back() = subtype_;
  fields_.assign(columnNames_.size(), {});
  return nullptr;
}

VEXStatus VEXStructuredInput::readField(const VEXCatalogueField& field, bool isFirst, bool& endOfFile) {
  const std::string number = integerText(static_cast<std::int64_t>(recordNumber_));
  std::size_t width = field.width;
  if (field.kind == VEXCatalogueField::Kind::VarString) {
    std::int64_t length = -1;
    if (!textToInteger(values_[field.lengthColumn], length) || length < 0 ||
        length > static_cast<std::int64_t>(VEXInputFile::kLongestLine))
      return makeStatus(303003, {path(), number, field.name, values_[field.lengthColumn], field.typeText});
    width = static_cast<std::size_t>(length);
  }
  std::string_view bytes;
  if (!file_.readBytes(width, bytes)) {
    endOfFile = isFirst && !file_.failed() && !file_.readBytes(1, bytes);
    if (endOfFile) return nullptr;
    return makeStatus(303002, {path(), number, field.name});
  }
  const bool isConstant = field.kind == VEXCatalogueField::Kind::Constant;
  if (!field.decode(bytes, isConstant ? constant_ : values_[field.column]))
    return makeStatus(303003, {path(), number, field.name, bytes.substr(0, 80), field.typeText});
  return nullptr;
}

VEXStatus VEXStructuredInput::getRow(VEXTableRow& row, bool& endOfFile) {
  row = {};
  endOfFile = false;
  ++recordNumber_;
  bool isFirst = true;
  for (const VEXCatalogueField& field : layout_.fields()) {
    VEX_TRY(readField(field, isFirst, endOfFile));
    if (endOfFile) return nullptr;
    isFirst = false;
  }
  std::string_view bytes;
  const std::string& terminator = layout_.terminator();
  if (!terminator.empty() && (!file_.readBytes(terminator.size(), bytes) || bytes != terminator))
    return makeStatus(303004,
                      {path(), integerText(static_cast<std::int64_t>(recordNumber_)), layout_.terminatorWord()});
  for (std::size_t i = 0; i < values_.size(); ++i) fields_[i] = values_[i];
  row = fields_;
  return nullptr;
}
