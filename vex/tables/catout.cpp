#include "vex/tables/catout.h"

VEXStatus VEXCatalogueOutput::appendHeader(std::string& text) {
  const auto isWord = [](std::string_view name) {
    return !name.empty() && name.find_first_of(" \t\r\n") == std::string_view::npos;
  };
  if (!isWord(subtype_)) return makeStatus(304004, {path(), subtype_});
  text.append("CAT 1 ").append(subtype_).append(" ").append(layout_.terminatorWord()).append("\n");
  for (const VEXCatalogueField& field : layout_.fields()) {
    if (!isWord(field.name)) return makeStatus(304004, {path(), field.name});
    text.append(field.name).append(" ").append(field.typeText).append("\n");
  }
  text += '\n';
  return nullptr;
}
