#include "vex/tables/strascot.h"

VEXStatus VEXFixedAsciiOutput::open() {
  if (!file_.open(path())) return makeStatus(306001, {path(), file_.errorText()});
  return nullptr;
}

VEXStatus VEXFixedAsciiOutput::addField(std::string_view name, std::string_view typeSpec) {
  if (name == "ASCII_GEOMETRY") {
    if (!fieldsub::isGeometryKind(typeSpec)) return makeStatus(312005, {typeSpec, path()});
    geometryKind_.assign(typeSpec);
    return nullptr;
  }
  VEXFieldSubstitution field;
  VEX_TRY(VEXFieldSubstitution::parse(name, typeSpec, field));
  if (field.isColumn()) {
    columnNames_.push_back(field.attribute());
    roles_.push_back(field.role());
  }
  layout_.push_back(std::move(field));
  return nullptr;
}

VEXStatus VEXFixedAsciiOutput::writeRow(VEXTableRow fields) {
  if (columnNames_.empty()) return makeStatus(306003, {path()});
  record_.clear();
  std::size_t column = 0;
  for (const VEXFieldSubstitution& field : layout_)
    VEX_TRY(field.write(field.isColumn() ? fields[column++] : std::string_view(), record_));
  if (!file_.append(record_)) return makeStatus(306002, {path(), file_.errorText()});
  return nullptr;
}

VEXStatus VEXFixedAsciiOutput::close() {
  if (!file_.isOpen()) return nullptr;
  return extendStatus(finish(306002));
}
