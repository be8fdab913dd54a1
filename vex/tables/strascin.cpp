#include "vex/tables/strascin.h"

#include "vex/inc/numtext.h"

VEXStatus VEXFixedAsciiInput::open() {
  if (!file_.open(path())) return makeStatus(305001, {path(), file_.errorText()});
  return nullptr;
}

VEXStatus VEXFixedAsciiInput::close() {
  file_.close();
  return nullptr;
}

VEXStatus VEXFixedAsciiInput::addField(std::string_view name, std::string_view value) {
  if (name == "ASCII_GEOMETRY") {
    if (!fieldsub::isGeometryKind(value)) return makeStatus(312005, {value, path()});
    geometryKind_.assign(value);
    return nullptr;
  }
  VEXFieldSubstitution field;
  VEX_TRY(VEXFieldSubstitution::parse(name, value, field));
  if (field.isColumn()) {
    columnNames_.emplace_back(name);
    roles_.push_back(field.role());
  }
  layout_.push_back(std::move(field));
  return nullptr;
}

VEXStatus VEXFixedAsciiInput::startRows() {
  if (columnNames_.empty()) return makeStatus(305004, {path()});
  values_.assign(columnNames_.size(), {});
  fields_.assign(columnNames_.size(), {});
  return nullptr;
}

VEXStatus VEXFixedAsciiInput::readField(const VEXFieldSubstitution& field, std::size_t column, bool isFirst,
                                        bool& endOfFile) {
  const std::string number = integerText(static_cast<std::int64_t>(recordNumber_));
  std::string_view bytes;
  bool isRead;
  if (field.width() == 0)
    isRead = file_.readLine(bytes) == VEXInputFile::Line::Ok;
  else
    isRead = file_.readBytes(field.width(), bytes);
  if (!isRead) {
    endOfFile = isFirst && !file_.failed() && !file_.readBytes(1, bytes);
    if (endOfFile) return nullptr;
    return makeStatus(305002, {path(), number});
  }
  if (field.isColumn()) {
    field.read(bytes, values_[column]);
    return nullptr;
  }
  const std::string_view wanted =
      field.kind() == VEXFieldSubstitution::Kind::Constant ? std::string_view(field.constant()) : std::string_view();
  if (bytes != wanted) return makeStatus(305003, {path(), number, wanted, bytes.substr(0, 80)});
  return nullptr;
}

VEXStatus VEXFixedAsciiInput::getRow(VEXTableRow& row, bool& endOfFile) {
  row = {};
  endOfFile = false;
  ++recordNumber_;
  std::size_t column = 0;
  for (std::size_t i = 0; i < layout_.size(); ++i) {
    VEX_TRY(readField(layout_[i], column, i == 0, endOfFile));
    if (endOfFile) return nullptr;
    if (layout_[i].isColumn()) ++column;
  }
  for (std::size_t i = 0; i < values_.size(); ++i) fields_[i] = values_[i];
  row = fields_;
  return nullptr;
}
