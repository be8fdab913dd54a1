#include "vex/tables/catin.h"

#include <algorithm>

#include "vex/inc/numtext.h"

namespace {

constexpr std::size_t kMostFields = 16384;
constexpr std::size_t kLongestHeadLine = 65536;

}  // namespace

VEXStatus VEXCatalogueInput::open() {
  VEX_TRY(VEXStructuredInput::open());
  return extendStatus(readHead());
}

// "CAT 1 <subtype> <terminator>", a line "<name> <type>" for each field, an empty line.
VEXStatus VEXCatalogueInput::readHead() {
  std::string_view line;
  VEXStringVector words;
  if (file_.readLine(line, kLongestHeadLine) != VEXInputFile::Line::Ok)
    return makeStatus(303005, {path(), "1", "a line 'CAT 1 <subtype> <terminator>'"});
  splitAt(line, ' ', words);
  if (words.size() != 4 || words[0] != "CAT" || words[1] != "1")
    return makeStatus(303005, {path(), "1", "a line 'CAT 1 <subtype> <terminator>'"});
  subtype_ = words[2];
  VEX_TRY(layout_.setTerminator(words[3]));
  for (std::size_t number = 2; number < kMostFields + 3; ++number) {
    if (file_.readLine(line, kLongestHeadLine) != VEXInputFile::Line::Ok)
      return makeStatus(303005, {path(), integerText(static_cast<std::int64_t>(number)), "an empty line at its end"});
    if (line.empty()) return nullptr;
    const std::size_t blank = line.find(' ');
    if (blank == std::string_view::npos || blank == 0)
      return makeStatus(303005, {path(), integerText(static_cast<std::int64_t>(number)), "a name and a type"});
    VEX_TRY(layout_.addField(line.substr(0, blank), line.substr(blank + 1), columnNames_));
  }
  return makeStatus(303005, {path(), integerText(kMostFields), "fewer fields"});
}

VEXStatus VEXCatalogueInput::addField(std::string_view name, std::string_view value) {
  if (name == "SCAT_LINE_TERMINATOR") return nullptr;  // the head tells
  if (name == "SCAT_SUBTYPE" || name == "CAT_SUBTYPE") {
    if (value != subtype_) return makeStatus(303007, {path(), subtype_, value});
    return nullptr;
  }
  for (const VEXCatalogueField& field : layout_.fields())
    if (field.name == name && equalsIgnoringCase(field.typeText, value)) return nullptr;
  return makeStatus(303006, {path(), name, value});
}
