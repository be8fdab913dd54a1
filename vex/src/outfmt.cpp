#include "vex/src/outfmt.h"

#include <cmath>
#include <limits>

#include "vex/inc/numtext.h"

namespace {

constexpr std::size_t kMostCharacters = 99;    // of a formatted number
constexpr std::size_t kMostExactDigits = 15;   // a text of so many digits is the same text again behind a double

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool contains(std::string_view text, std::string_view word) { return text.find(word) != std::string_view::npos; }

template <class Integer>
bool isWithin(double value) {
  return value >= std::numeric_limits<Integer>::min() && value <= std::numeric_limits<Integer>::max();
}

}  // namespace

VEXStatus VEXOutputFormat::parse(std::string_view typeText, VEXOutputFormat& format) {
  constexpr std::string_view kNumber = "number";
  const std::string_view type = trimmed(typeText);
  format = VEXOutputFormat();
  if (!type.starts_with(kNumber)) {
    if (contains(type, "char")) return nullptr;
    if (contains(type, "small"))
      format.kind_ = Kind::Small;
    else if (contains(type, "int"))
      format.kind_ = Kind::Integer;
    return nullptr;
  }
  std::string_view rest = type.substr(kNumber.size());
  if (!rest.starts_with('(')) return makeStatus(876002, {type});
  rest.remove_prefix(1);
  const std::size_t comma = rest.find(',');
  if (comma == std::string_view::npos) return makeStatus(876003, {type});
  if (!textToInteger(trimmed(rest.substr(0, comma)), format.width_)) return makeStatus(876004, {type});
  rest.remove_prefix(comma + 1);
  if (!rest.ends_with(')')) return makeStatus(876005, {type});
  rest.remove_suffix(1);
  if (!textToInteger(trimmed(rest), format.decimals_) || format.decimals_ < 0) return makeStatus(876006, {type});
  if (format.decimals_ >= format.width_) return makeStatus(876007, {type});
  format.kind_ = Kind::Number;
  return nullptr;
}

bool VEXOutputFormat::format(double value, std::string& out) const {
  out.clear();
  if (kind_ == Kind::Text) {
    appendReal(out, value);
    return true;
  }
  if (!std::isfinite(value)) {
    appendReal(out, value);
    return false;
  }
  const std::size_t room = kind_ == Kind::Number ? static_cast<std::size_t>(width_) : kMostCharacters;
  const bool isTooLong = decimals_ > static_cast<std::int32_t>(kMostCharacters) || std::fabs(value) >= 1e99;
  if (isTooLong) {
    appendReal(out, value);
    return false;
  }
  appendFixed(out, value, decimals_);
  switch (kind_) {
    case Kind::Small: return isWithin<std::int16_t>(std::round(value));
    case Kind::Integer: return isWithin<std::int32_t>(std::round(value));
    default: return out.size() <= room && out.size() <= kMostCharacters;
  }
}

bool VEXOutputFormat::format(std::string_view value, std::string& out) const {
  if (kind_ == Kind::Text || value.empty()) {
    out.assign(value);
    return true;
  }
  if (kind_ == Kind::Number && keepsText(value, out)) return true;
  double number = 0.0;
  if (textToReal(value, number)) return format(number, out);
  out.assign(value);
  return false;
}

// Most values need nothing but zeros at their end: then no conversion is made.
bool VEXOutputFormat::keepsText(std::string_view value, std::string& out) const {
  std::size_t at = value[0] == '-' ? 1 : 0;
  const std::size_t whole = at;
  while (at < value.size() && isDigit(value[at])) ++at;
  std::size_t numDigits = at - whole;
  if (numDigits == 0 || (numDigits > 1 && value[whole] == '0')) return false;
  std::size_t numDecimals = 0;
  if (at < value.size()) {
    if (value[at++] != '.') return false;
    const std::size_t fraction = at;
    while (at < value.size() && isDigit(value[at])) ++at;
    numDecimals = at - fraction;
    numDigits += numDecimals;
  }
  const auto decimals = static_cast<std::size_t>(decimals_);
  if (at < value.size() || numDecimals > decimals || numDigits > kMostExactDigits) return false;
  const bool hasPoint = value.size() > whole && value.find('.') != std::string_view::npos;
  if (hasPoint && numDecimals == 0) return false;
  const std::size_t length = value.size() + (hasPoint || decimals == 0 ? 0 : 1) + decimals - numDecimals;
  if (length > static_cast<std::size_t>(width_) || length > kMostCharacters) return false;
  out.assign(value);
  if (!hasPoint && decimals > 0) out += '.';
  out.append(decimals - numDecimals, '0');
  return true;
}
