#include "vex/tables/scatout.h"

#include "vex/inc/numtext.h"

VEXStatus VEXStructuredOutput::open() {
  if (!file_.open(path())) return makeStatus(304001, {path(), file_.errorText()});
  return nullptr;
}

VEXStatus VEXStructuredOutput::addField(std::string_view name, std::string_view typeSpec) {
  if (name == "SCAT_LINE_TERMINATOR") return extendStatus(layout_.setTerminator(typeSpec));
  if (name == "SCAT_SUBTYPE" || name == "CAT_SUBTYPE") {
    subtype_.assign(typeSpec);
    return nullptr;
  }
  return extendStatus(layout_.addField(name, typeSpec, columnNames_));
}

VEXStatus VEXStructuredOutput::start() {
  if (isStarted_) return nullptr;
  VEX_TRY(layout_.check(path()));
  record_.clear();
  VEX_TRY(appendHeader(record_));
  isStarted_ = true;
  if (!file_.append(record_)) return makeStatus(304002, {path(), file_.errorText()});
  return nullptr;
}

VEXStatus VEXStructuredOutput::writeRow(VEXTableRow fields) {
  VEX_TRY(start());
  record_.clear();
  for (const VEXCatalogueField& field : layout_.fields()) {
    std::string_view value =
        field.kind == VEXCatalogueField::Kind::Constant ? std::string_view() : fields[field.column];
    if (field.isLength) {
      const std::string wanted = field.name.substr(0, field.name.rfind(VEXCatalogueField::kLengthSuffix));
      for (const VEXCatalogueField& other : layout_.fields())
        if (other.kind == VEXCatalogueField::Kind::VarString && other.name == wanted)
          length_ = integerText(static_cast<std::int64_t>(fields[other.column].size()));
      value = length_;
    }
    if (!field.encode(value, record_)) return makeRejection(304003, {value, field.name, path(), field.typeText});
  }
  record_ += layout_.terminator();
  if (!file_.append(record_)) return makeStatus(304002, {path(), file_.errorText()});
  return nullptr;
}

VEXStatus VEXStructuredOutput::close() {
  if (!file_.isOpen()) return nullptr;
  if (VEXStatus failure = start()) {
    abort();
    return failure;
  }
  return extendStatus(finish(304002));
}
