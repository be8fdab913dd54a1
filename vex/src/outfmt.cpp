#include "vex/src/outfmt.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "vex/inc/numtext.h"

namespace {

constexpr std::size_t kMostExactDigits = 15;  // a text of so many digits is the same text again behind a double

bool contains(std::string_view text, std::string_view word) {
  return text.find(word) != std::string_view::npos;
}

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
  format.mostInForm_ = std::min<std::size_t>(kMostExactDigits, static_cast<std::size_t>(format.width_));
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
  const std::size_t room = kind_ == Kind::Number ? static_cast<std::size_t>(width_) : kLongest;
  const bool isTooLong = decimals_ > static_cast<std::int32_t>(kLongest) || std::fabs(value) >= 1e99;
  if (isTooLong) {
    appendReal(out, value);
    return false;
  }
  appendFixed(out, value, decimals_);
  switch (kind_) {
    case Kind::Small:
      return isWithin<std::int16_t>(std::round(value));
    case Kind::Integer:
      return isWithin<std::int32_t>(std::round(value));
    default:
      return out.size() <= room && out.size() <= kLongest;
  }
}

bool VEXOutputFormat::format(std::string_view value, std::string& buffer, std::string_view& shaped) const {
  shaped = value;
  if (kind_ == Kind::Text || value.empty() || isInForm(value)) return true;
  if (kind_ == Kind::Number && padText(value, buffer, shaped)) return true;
  double number = 0.0;
  if (!textToReal(value, number) || !format(number, buffer)) return false;
  shaped = buffer;
  return true;
}

// Most others need nothing but zeros at their end: then no conversion is made.
bool VEXOutputFormat::padText(std::string_view value, std::string& buffer, std::string_view& shaped) const {
  VEXPlainNumber number;
  if (value.size() > kMostExactDigits || !splitPlainNumber(value, number)) return false;
  const std::size_t numWhole = number.wholeLength - number.numSigns;
  const auto decimals = static_cast<std::size_t>(decimals_);
  const bool hasPoint = number.wholeLength < value.size();
  if (value[0] == '+' || numWhole == 0 || (numWhole > 1 && value[number.numSigns] == '0')) return false;
  if (number.numDecimals > decimals || (hasPoint && number.numDecimals == 0)) return false;
  const std::size_t length = number.wholeLength + (decimals == 0 ? 0 : 1 + decimals);
  if (length > static_cast<std::size_t>(width_) || length > kLongest) return false;
  if (length == value.size()) return true;
  buffer.assign(value);
  if (!hasPoint) buffer += '.';
  buffer.append(length - buffer.size(), '0');
  shaped = buffer;
  return true;
}
