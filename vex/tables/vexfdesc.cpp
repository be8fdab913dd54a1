#include "vex/tables/vexfdesc.h"

#include <algorithm>

#include "vex/inc/numtext.h"

namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// Reads digits from `at` on; false when there are none.
bool readDigits(std::string_view text, std::size_t& at, std::uint32_t& value) {
  const std::size_t start = at;
  std::uint64_t number = 0;
  for (; at < text.size() && isDigit(text[at]); ++at)
    number =
        std::min<std::uint64_t>(number * 10 + static_cast<std::uint64_t>(text[at] - '0'), VEXFieldDescription::kWidest);
  value = static_cast<std::uint32_t>(number);
  return at > start;
}

// Finds "(digits)", or "(digits,digits)" when `decimals` is not null, anywhere in the text.
bool findSize(std::string_view text, std::uint32_t& width, std::uint32_t* decimals) {
  for (std::size_t open = text.find('('); open != std::string_view::npos; open = text.find('(', open + 1)) {
    std::size_t at = open + 1;
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    if (!readDigits(text, at, first)) continue;
    if (decimals != nullptr && (at >= text.size() || text[at++] != ',' || !readDigits(text, at, second))) continue;
    if (at >= text.size() || text[at] != ')') continue;
    width = first;
    if (decimals != nullptr) *decimals = second;
    return true;
  }
  return false;
}

}  // namespace

VEXFieldDescription VEXFieldDescription::of(std::string_view name, std::string_view typeText) {
  VEXFieldDescription field;
  field.name.assign(name);
  const auto says = [typeText](std::string_view word) { return typeText.find(word) != std::string_view::npos; };
  if (says("date")) {
    field.kind = VEXFieldKind::Date;
    field.width = 8;
  } else if (says("logical")) {
    field.kind = VEXFieldKind::Logical;
    field.width = 1;
  } else if (says("char")) {
    field.kind = VEXFieldKind::Char;
    field.hasWidth = findSize(typeText, field.width, nullptr);
  } else if (says("number")) {
    field.kind = VEXFieldKind::Number;
    field.hasDecimals = findSize(typeText, field.width, &field.decimals);
    field.hasWidth = field.hasDecimals || findSize(typeText, field.width, nullptr);
  }
  return field;
}

std::string VEXFieldDescription::typeText() const {
  std::string text = fieldKindName(kind);
  if (kind != VEXFieldKind::Char && kind != VEXFieldKind::Number) return text;
  text += '(';
  appendInteger(text, width);
  if (kind == VEXFieldKind::Number) {
    text += ',';
    appendInteger(text, decimals);
  }
  text += ')';
  return text;
}

const char* fieldKindName(VEXFieldKind kind) {
  switch (kind) {
    case VEXFieldKind::Char:
      return "char";
    case VEXFieldKind::Number:
      return "number";
    case VEXFieldKind::Date:
      return "date";
    case VEXFieldKind::Logical:
      return "logical";
    case VEXFieldKind::Unknown:
      break;
  }
  return "unknown";
}
