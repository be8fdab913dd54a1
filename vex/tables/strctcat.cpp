#include "vex/tables/strctcat.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

#include "vex/inc/numtext.h"

namespace {

using Kind = VEXCatalogueField::Kind;

constexpr std::int32_t kWidest = 65535;

// What stands between the parentheses of a kind.
enum class Size { None, Width, WidthAndDecimals, Bytes, Text };
struct KindWord {
  std::string_view word;
  Kind kind;
  Size size;
};
constexpr KindWord kKinds[] = {
    {"String", Kind::String, Size::Width},
    {"VarString", Kind::VarString, Size::None},
    {"Integer", Kind::Integer, Size::Width},
    {"Real", Kind::Real, Size::WidthAndDecimals},
    {"OptReal", Kind::OptReal, Size::WidthAndDecimals},
    {"ExpReal", Kind::ExpReal, Size::WidthAndDecimals},
    {"DMS", Kind::DMS, Size::WidthAndDecimals},
    {"XCoordinate", Kind::XCoordinate, Size::WidthAndDecimals},
    {"YCoordinate", Kind::YCoordinate, Size::WidthAndDecimals},
    {"ZCoordinate", Kind::ZCoordinate, Size::WidthAndDecimals},
    {"BigEndianInt", Kind::BigEndianInt, Size::Bytes},
    {"BigEndianReal", Kind::BigEndianReal, Size::Bytes},
    {"Constant", Kind::Constant, Size::Text},
};

bool parseSize(const KindWord& known, std::string_view size, VEXCatalogueField& field) {
  if (known.size == Size::None) return size.empty();
  if (size.size() < 3 || size.front() != '(' || size.back() != ')') return false;
  size = size.substr(1, size.size() - 2);
  if (known.size == Size::Text) {
    field.constant.assign(size);
    field.width = size.size();
    return size.find_first_of("\r\n") == std::string_view::npos;
  }
  const std::size_t comma = size.find(',');
  std::int32_t width = 0;
  std::int32_t decimals = 0;
  if (!textToInteger(size.substr(0, comma), width) || width < 1 || width > kWidest) return false;
  if ((comma != std::string_view::npos) != (known.size == Size::WidthAndDecimals)) return false;
  if (comma != std::string_view::npos &&
      (!textToInteger(size.substr(comma + 1), decimals) || decimals < 0 || decimals > 30))
    return false;
  field.width = static_cast<std::size_t>(width);
  field.decimals = decimals;
  if (known.kind == Kind::BigEndianInt) return width <= 8;
  if (known.kind == Kind::BigEndianReal) return width == 4 || width == 8;
  return true;
}

bool appendRight(std::string_view text, std::size_t width, std::string& record) {
  if (text.size() > width) return false;
  record.append(width - text.size(), ' ').append(text);
  return true;
}

// Degrees as DDDMMSS with decimals of a second.
bool spellDegrees(double degrees, int decimals, std::string& text) {
  if (!(std::abs(degrees) < 1e6)) return false;
  const double scale = std::pow(10.0, decimals);
  const double total = std::round(std::abs(degrees) * 3600.0 * scale);
  const auto units = static_cast<std::uint64_t>(scale);
  if (!(total < 9e18)) return false;
  const auto all = static_cast<std::uint64_t>(total);
  const std::uint64_t seconds = all / units;
  const auto padded = [&text](std::uint64_t number, std::size_t width) {
    const std::string digits = integerText(static_cast<std::int64_t>(number));
    if (digits.size() < width) text.append(width - digits.size(), '0');
    text += digits;
  };
  if (degrees < 0.0 && all > 0) text += '-';
  padded(seconds / 3600, 3);
  padded(seconds / 60 % 60, 2);
  padded(seconds % 60, 2);
  if (decimals > 0) {
    text += '.';
    padded(all % units, static_cast<std::size_t>(decimals));
  }
  return true;
}

bool readDegrees(std::string_view text, double& degrees) {
  text = trimmed(text);
  const bool isNegative = text.starts_with('-');
  if (isNegative) text.remove_prefix(1);
  const std::size_t whole = std::min(text.size(), text.find('.'));
  std::int32_t d = 0;
  std::int32_t m = 0;
  double s = 0.0;
  if (whole < 5 || text.find_first_not_of("0123456789.") != std::string_view::npos ||
      !textToInteger(text.substr(0, whole - 4), d) || !textToInteger(text.substr(whole - 4, 2), m) ||
      !textToReal(text.substr(whole - 2), s) || m > 59 || s >= 60.0)
    return false;
  degrees = (s / 60.0 + m) / 60.0 + d;
  if (isNegative) degrees = -degrees;
  return true;
}

bool encodeWhole(std::string_view value, std::size_t width, std::string& record) {
  std::int64_t number = 0;
  if (value.empty() || !textToInteger(value, number)) return false;
  if (width < 8) {
    const std::int64_t limit = std::int64_t{1} << (8 * width - 1);
    if (number < -limit || number >= limit) return false;
  }
  for (std::size_t i = width; i-- > 0;) record += static_cast<char>(static_cast<std::uint64_t>(number) >> (8 * i));
  return true;
}

std::uint64_t bigEndian(std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char c : bytes) number = number << 8 | static_cast<unsigned char>(c);
  return number;
}

bool encodeReal(double number, std::size_t width, std::string& record) {
  std::uint64_t bits = std::bit_cast<std::uint64_t>(number);
  if (width == 4) {
    const auto narrow = static_cast<float>(number);
    if (!std::isfinite(narrow)) return false;
    bits = std::bit_cast<std::uint32_t>(narrow);
  }
  for (std::size_t i = width; i-- > 0;) record += static_cast<char>(bits >> (8 * i));
  return true;
}

}  // namespace

bool VEXCatalogueField::encode(std::string_view value, std::string& record) const {
  double number = 0.0;
  std::string text;
  switch (kind) {
    case Kind::Constant:
      record += constant;
      return true;
    case Kind::VarString:
      record += value;
      return true;
    case Kind::String:
      if (value.size() > width) return false;
      record.append(value).append(width - value.size(), ' ');
      return true;
    case Kind::Integer: {
      std::int64_t whole = 0;
      return !value.empty() && textToInteger(value, whole) && appendRight(integerText(whole), width, record);
    }
    case Kind::BigEndianInt:
      return encodeWhole(value, width, record);
    case Kind::OptReal:
      if (value.empty()) return appendRight({}, width, record);
      break;
    default:
      break;
  }
  if (!textToReal(value, number) || !std::isfinite(number)) return false;
  switch (kind) {
    case Kind::BigEndianReal:
      return encodeReal(number, width, record);
    case Kind::DMS:
      return spellDegrees(number, decimals, text) && appendRight(text, width, record);
    case Kind::ExpReal: {
      char digits[64];
      const auto end = std::to_chars(digits, digits + sizeof digits, number, std::chars_format::scientific, decimals);
      return end.ec == std::errc() && appendRight({digits, static_cast<std::size_t>(end.ptr - digits)}, width, record);
    }
    default:
      if (std::abs(number) > 1e30) return false;
      appendFixed(text, number, decimals);
      return appendRight(text, width, record);
  }
}

bool VEXCatalogueField::decode(std::string_view bytes, std::string& value) const {
  value.clear();
  const std::string_view text = trimmed(bytes);
  double number = 0.0;
  switch (kind) {
    case Kind::Constant:
      return bytes == constant;
    case Kind::VarString:
      value.assign(bytes);
      return true;
    case Kind::String:
      value.assign(bytes.substr(0, bytes.find_last_not_of(' ') + 1));
      return true;
    case Kind::Integer: {
      std::int64_t whole = 0;
      value.assign(text);
      return !text.empty() && textToInteger(text, whole);
    }
    case Kind::OptReal:
      value.assign(text);
      return text.empty() || textToReal(text, number);
    case Kind::DMS:
      if (!readDegrees(bytes, number)) return false;
      appendReal(value, number);
      return true;
    case Kind::BigEndianInt: {
      const std::size_t unused = 64 - 8 * bytes.size();
      appendInteger(value, static_cast<std::int64_t>(bigEndian(bytes) << unused) >> unused);
      return true;
    }
    case Kind::BigEndianReal:
      if (bytes.size() == 4)
        number = static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bigEndian(bytes))));
      else
        number = std::bit_cast<double>(bigEndian(bytes));
      appendReal(value, number);
      return std::isfinite(number);
    default:
      value.assign(text);
      return textToReal(text, number);
  }
}

VEXStatus VEXCatalogueLayout::setTerminator(std::string_view word) {
  struct Word {
    std::string_view word;
    std::string_view bytes;
  };
  for (const Word& known : {Word{"LF", "\n"}, Word{"CRLF", "\r\n"}, Word{"CR", "\r"}, Word{"NONE", ""}})
    if (equalsIgnoringCase(word, known.word)) {
      terminator_.assign(known.bytes);
      terminatorWord_.assign(known.word);
      return nullptr;
    }
  return makeStatus(302005, {word});
}

VEXStatus VEXCatalogueLayout::addField(std::string_view name, std::string_view typeText, VEXStringVector& columns) {
  const std::size_t open = std::min(typeText.size(), typeText.find('('));
  const auto known = std::find_if(std::begin(kKinds), std::end(kKinds), [&](const KindWord& kind) {
    return equalsIgnoringCase(kind.word, typeText.substr(0, open));
  });
  if (known == std::end(kKinds)) return makeStatus(302001, {typeText, name});
  VEXCatalogueField field;
  field.name.assign(name);
  field.typeText.assign(known->word).append(typeText.substr(open));
  field.kind = known->kind;
  if (!parseSize(*known, typeText.substr(open), field)) return makeStatus(302002, {typeText, name});
  if (field.kind == Kind::Constant) {
    fields_.push_back(std::move(field));
    return nullptr;
  }
  if (std::find(columns.begin(), columns.end(), name) != columns.end()) return makeStatus(302004, {name});
  if (field.kind == Kind::VarString) {
    const std::string wanted = field.name + VEXCatalogueField::kLengthSuffix;
    const auto length = std::find_if(fields_.begin(), fields_.end(), [&](const VEXCatalogueField& other) {
      return other.name == wanted && (other.kind == Kind::Integer || other.kind == Kind::BigEndianInt);
    });
    if (length == fields_.end()) return makeStatus(302003, {name, wanted});
    length->isLength = true;
    field.lengthColumn = length->column;
  }
  field.column = columns.size();
  columns.emplace_back(name);
  fields_.push_back(std::move(field));
  return nullptr;
}

VEXStatus VEXCatalogueLayout::check(std::string_view path) const {
  const bool hasBytes = std::any_of(fields_.begin(), fields_.end(), [](const auto& field) { return field.width > 0; });
  if (hasBytes) return nullptr;
  return makeStatus(302006, {path});
}

VEXColumnRole VEXCatalogueLayout::roleOf(std::size_t column) const {
  for (const VEXCatalogueField& field : fields_) {
    if (field.kind == Kind::Constant || field.column != column) continue;
    if (field.kind == Kind::XCoordinate) return VEXColumnRole::X;
    if (field.kind == Kind::YCoordinate) return VEXColumnRole::Y;
    if (field.kind == Kind::ZCoordinate) return VEXColumnRole::Z;
  }
  return VEXColumnRole::Attribute;
}
