#include "vex/tables/fieldsub.h"

#include <algorithm>
#include <vector>

#include "vex/inc/numtext.h"
#include "vex/inc/stkdefs.h"

namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

std::size_t skipDigits(std::string_view text, std::size_t at) {
  while (at < text.size() && isDigit(text[at])) ++at;
  return at;
}

// "(a)" or "(a,b)" behind a word; -1 for what is not there. False when it is written wrongly.
bool parseSize(std::string_view text, std::int32_t& first, std::int32_t& second) {
  first = second = -1;
  if (text.empty()) return true;
  if (text.front() != '(' || text.back() != ')') return false;
  text = text.substr(1, text.size() - 2);
  const std::size_t comma = text.find(',');
  if (!textToInteger(text.substr(0, comma), first) || first < 1 || first > 65535) return false;
  if (comma == std::string_view::npos) return true;
  return textToInteger(text.substr(comma + 1), second) && second >= 0 && second < first;
}

bool isTwoDigitDate(std::string_view text) {
  return text.size() == 8 && isDigit(text[0]) && isDigit(text[1]) && text[2] == '/' && isDigit(text[3]) &&
         isDigit(text[4]) && text[5] == '/' && isDigit(text[6]) && isDigit(text[7]);
}

void appendPoint(std::string& text, double x, double y) {
  text += ' ';
  appendReal(text, x);
  text += ' ';
  appendReal(text, y);
}

// Where the parts of a feature end: one part, or the rings of a donut.
std::vector<std::size_t> partEnds(const VEXFeature& feature) {
  const auto xs = feature.xs();
  const auto ys = feature.ys();
  std::vector<std::size_t> ends;
  if (feature.geomType() == VEX_GEOM_DONUT) {
    std::size_t start = 0;
    for (std::size_t i = 1; i < xs.size(); ++i)
      if (i > start && xs[i] == xs[start] && ys[i] == ys[start]) {
        ends.push_back(i + 1);
        start = ++i;
      }
  }
  if (ends.empty() || ends.back() < xs.size()) ends.push_back(xs.size());
  return ends;
}

bool takes(std::string_view kind, std::uint32_t geometry) {
  const auto says = [kind](std::string_view word) { return kind.find(word) != std::string_view::npos; };
  switch (geometry) {
    case VEX_GEOM_POINT:
      return says("Point");
    case VEX_GEOM_LINE:
      return says("Line");
    case VEX_GEOM_POLYGON:
    case VEX_GEOM_DONUT:
      return says("Area");
    default:
      return false;
  }
}

// A point that stands for the feature: itself, the middle vertex of a line, a point inside of an area.
void insidePoint(const VEXFeature& feature, double& x, double& y) {
  const auto xs = feature.xs();
  const auto ys = feature.ys();
  const std::size_t count = xs.size();
  x = xs[count / 2];
  y = ys[count / 2];
  if (feature.geomType() != VEX_GEOM_POLYGON && feature.geomType() != VEX_GEOM_DONUT) return;
  // The middle of the longest stretch that a level line has inside; the level lies between two heights of vertices, so
  // that it meets none.
  const auto [low, high] = std::minmax_element(ys.begin(), ys.end());
  const double wanted = *low + (*high - *low) / 2;
  double below = *low;
  double above = *high;
  for (const double level : ys) {
    if (level <= wanted) below = std::max(below, level);
    if (level > wanted) above = std::min(above, level);
  }
  const double level = below + (above - below) / 2;
  std::vector<double> crossings;
  std::size_t start = 0;
  for (const std::size_t end : partEnds(feature)) {
    for (std::size_t i = start; i + 1 < end; ++i)
      if ((ys[i] < level) != (ys[i + 1] < level))
        crossings.push_back(xs[i] + (level - ys[i]) / (ys[i + 1] - ys[i]) * (xs[i + 1] - xs[i]));
    start = end;
  }
  std::sort(crossings.begin(), crossings.end());
  double longest = 0.0;
  for (std::size_t i = 0; i + 1 < crossings.size(); i += 2)
    if (crossings[i + 1] - crossings[i] > longest) {
      longest = crossings[i + 1] - crossings[i];
      x = crossings[i] + longest / 2;
      y = level;
    }
}

// The next number of a text of numbers and blanks.
bool nextNumber(std::string_view& text, double& value) {
  const std::size_t start = text.find_first_not_of(" \t");
  if (start == std::string_view::npos) return false;
  const std::size_t end = std::min(text.size(), text.find_first_of(" \t", start));
  const bool isNumber = textToReal(text.substr(start, end - start), value);
  text.remove_prefix(end);
  return isNumber;
}

bool nextCount(std::string_view& text, std::size_t& count) {
  double value = 0.0;
  // Each thing counted takes two bytes at least.
  if (!nextNumber(text, value) || value < 0.0 || value > static_cast<double>(text.size() / 2 + 1)) return false;
  count = static_cast<std::size_t>(value);
  return static_cast<double>(count) == value;
}

}  // namespace

VEXStatus VEXFieldSubstitution::parse(std::string_view name, std::string_view spec, VEXFieldSubstitution& field) {
  field = {};
  field.name_.assign(name);
  field.attribute_.assign(name);
  const std::size_t open = std::min(spec.size(), spec.find('('));
  const std::string word = upperCased(spec.substr(0, open));
  const std::string_view size = spec.substr(open);
  if (word == "AS_CONSTANT") {
    field.kind_ = Kind::Constant;
    if (size.size() < 3 || size.back() != ')') return makeStatus(312002, {spec, name});
    field.constant_.assign(size.substr(1, size.size() - 2));
    field.width_ = field.constant_.size();
    return nullptr;
  }
  struct Word {
    std::string_view text;
    Kind kind;
    std::int32_t width;  // 0: none may be told, -1: one must be
  };
  for (const Word& known : {Word{"AS_LINEEND", Kind::LineEnd, 0}, Word{"AS_COORDINATELIST", Kind::CoordinateList, 0},
                            Word{"AS_COMPLEX_GEOMETRY", Kind::ComplexGeometry, 0}, Word{"CHAR", Kind::Char, -1},
                            Word{"INTEGER", Kind::Integer, -1}, Word{"FLOAT", Kind::Float, -1},
                            Word{"DATE", Kind::Date, 0}, Word{"STRINGLIST", Kind::StringList, -1}}) {
    if (word != known.text) continue;
    std::int32_t width = -1;
    std::int32_t decimals = -1;
    if (!parseSize(size, width, decimals) || (known.width == 0) != (width < 0) ||
        (known.kind == Kind::Float) != (decimals >= 0))
      return makeStatus(312002, {spec, name});
    field.kind_ = known.kind;
    field.width_ = static_cast<std::size_t>(std::max(0, width));
    field.decimals_ = std::max(0, decimals);
    if (known.kind == Kind::CoordinateList) field.role_ = VEXColumnRole::CoordinateList;
    if (known.kind == Kind::ComplexGeometry) field.role_ = VEXColumnRole::ComplexGeometry;
    if (known.kind == Kind::Float && name.ends_with(".INSIDEX")) field.role_ = VEXColumnRole::InsideX;
    if (known.kind == Kind::Float && name.ends_with(".INSIDEY")) field.role_ = VEXColumnRole::InsideY;
    if (known.kind == Kind::Date) {
      field.width_ = 8;
      for (const std::string_view part : {"yyyy", "yy", "mm", "dd"})
        if (name.size() > part.size() + 1 && name.ends_with(part) && name[name.size() - part.size() - 1] == '.') {
          field.part_.assign(part);
          field.width_ = part.size();
          field.attribute_.assign(name.substr(0, name.size() - part.size() - 1));
          break;
        }
    }
    return nullptr;
  }
  return makeStatus(312001, {spec, name});
}

// Dates come as YYYYMMDD, with or without marks between, or as yy/mm/dd.
bool VEXFieldSubstitution::spellDate(std::string_view value, std::string& text) const {
  std::string digits;
  for (const char c : value)
    if (isDigit(c)) digits += c;
  const bool isShort = isTwoDigitDate(value);
  if (!isShort && (digits.size() != 8 || value.size() > 10)) return false;
  const std::string_view day = std::string_view(digits).substr(digits.size() - 2);
  const std::string_view month = std::string_view(digits).substr(digits.size() - 4, 2);
  const std::string_view year = std::string_view(digits).substr(0, digits.size() - 4);
  const std::string_view shortYear = year.substr(year.size() - 2);
  if (part_ == "yyyy") {
    if (isShort) return false;  // nobody knows the century
    text.append(year);
  } else if (part_ == "yy") {
    text.append(shortYear);
  } else if (part_ == "mm") {
    text.append(month);
  } else if (part_ == "dd") {
    text.append(day);
  } else {
    text.append(shortYear).append("/").append(month).append("/").append(day);
  }
  return true;
}

bool VEXFieldSubstitution::spell(std::string_view value, std::string& text) const {
  switch (kind_) {
    case Kind::Integer:
      text.assign(value);
      return fieldsub::isInteger(value);
    case Kind::Float: {
      double number = 0.0;
      if (!fieldsub::isReal(value) || !textToReal(value, number)) return false;
      appendFixed(text, number, decimals_);
      return true;
    }
    case Kind::Date:
      return spellDate(value, text);
    case Kind::StringList:
      text.assign(value);
      std::replace(text.begin(), text.end(), kListSeparator, ';');
      return true;
    default:
      text.assign(value);
      return true;
  }
}

VEXStatus VEXFieldSubstitution::write(std::string_view value, std::string& record) const {
  if (kind_ == Kind::Constant) record += constant_;
  if (kind_ == Kind::LineEnd) record += '\n';
  if (!isColumn()) return nullptr;
  if (kind_ == Kind::CoordinateList || kind_ == Kind::ComplexGeometry) {
    if (value.find_first_of("\r\n") != std::string_view::npos) return makeRejection(312003, {value, name_});
    record.append(value.empty() ? "0" : value) += '\n';
    return nullptr;
  }
  std::string text;
  const bool isText = kind_ == Kind::Char || kind_ == Kind::StringList;
  if (!value.empty() && (!spell(value, text) || text.size() > width_)) return makeRejection(312003, {value, name_});
  if (isText) record += text;
  record.append(width_ - text.size(), ' ');
  if (!isText) record += text;
  return nullptr;
}

void VEXFieldSubstitution::read(std::string_view bytes, std::string& value) const {
  const bool isText = kind_ == Kind::Char || kind_ == Kind::StringList;
  if (isText)
    bytes = bytes.substr(0, bytes.find_last_not_of(' ') + 1);
  else
    bytes = trimmed(bytes);
  value.assign(bytes);
  if (kind_ == Kind::StringList) std::replace(value.begin(), value.end(), ';', kListSeparator);
}

namespace fieldsub {

bool isInteger(std::string_view text) {
  const std::size_t start = !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0;
  return text.size() > start && skipDigits(text, start) == text.size();
}

bool isReal(std::string_view text) {
  const std::size_t start = !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0;
  std::size_t at = skipDigits(text, start);
  if (at == start) return false;
  if (at < text.size() && text[at] == '.') at = skipDigits(text, at + 1);
  if (at == text.size()) return true;
  return (text[at] == 'e' || text[at] == 'E') && isInteger(text.substr(at + 1));
}

bool isGeometryKind(std::string_view kind) {
  for (const std::string_view known : {"Point", "Line", "Area", "PointAndLine", "PointAndArea", "LineAndArea"})
    if (kind == known) return true;
  return false;
}

VEXStatus geometryText(const VEXFeature& feature, VEXColumnRole role, std::string_view kind, std::string& text) {
  text.clear();
  if (feature.numCoords() == 0) {
    if (kind.empty()) return nullptr;
    return makeRejection(312004, {VEXFeature::geomTypeName(feature.geomType())});
  }
  if (!kind.empty() && !takes(kind, feature.geomType()))
    return makeRejection(312004, {VEXFeature::geomTypeName(feature.geomType())});
  const auto xs = feature.xs();
  const auto ys = feature.ys();
  double x = xs[0];
  double y = ys[0];
  switch (role) {
    case VEXColumnRole::X:
      appendReal(text, x);
      break;
    case VEXColumnRole::Y:
      appendReal(text, y);
      break;
    case VEXColumnRole::Z:
      if (feature.dimension() == 3) appendReal(text, feature.zs()[0]);
      break;
    case VEXColumnRole::InsideX:
    case VEXColumnRole::InsideY:
      insidePoint(feature, x, y);
      appendReal(text, role == VEXColumnRole::InsideX ? x : y);
      break;
    case VEXColumnRole::CoordinateList:
      if (feature.geomType() == VEX_GEOM_DONUT) return makeRejection(312004, {"orv_donut"});
      appendInteger(text, static_cast<std::int64_t>(xs.size()));
      for (std::size_t i = 0; i < xs.size(); ++i) appendPoint(text, xs[i], ys[i]);
      break;
    case VEXColumnRole::ComplexGeometry: {
      const std::vector<std::size_t> ends = partEnds(feature);
      appendInteger(text, static_cast<std::int64_t>(ends.size()));
      std::size_t start = 0;
      for (const std::size_t end : ends) {
        text += ' ';
        appendInteger(text, static_cast<std::int64_t>(end - start));
        for (std::size_t i = start; i < end; ++i) appendPoint(text, xs[i], ys[i]);
        start = end;
      }
      break;
    }
    case VEXColumnRole::Attribute:
      break;
  }
  return nullptr;
}

VEXStatus buildGeometry(std::string_view text, VEXColumnRole role, std::string_view kind, VEXFeature& feature) {
  const std::string_view whole = text;
  std::size_t numParts = 1;
  if (role == VEXColumnRole::ComplexGeometry && !nextCount(text, numParts)) return makeStatus(312006, {whole});
  feature.resetCoords();
  for (std::size_t part = 0; part < numParts; ++part) {
    std::size_t count = 0;
    if (!nextCount(text, count)) return makeStatus(312006, {whole});
    for (std::size_t i = 0; i < count; ++i) {
      double x = 0.0;
      double y = 0.0;
      if (!nextNumber(text, x) || !nextNumber(text, y)) return makeStatus(312006, {whole});
      feature.addCoord(x, y);
    }
  }
  if (text.find_first_not_of(" \t") != std::string_view::npos) return makeStatus(312006, {whole});
  const std::size_t count = feature.numCoords();
  if (count == 0) return nullptr;
  const bool isClosed =
      count > 3 && feature.xs()[0] == feature.xs()[count - 1] && feature.ys()[0] == feature.ys()[count - 1];
  std::uint32_t geometry = VEX_GEOM_UNDEFINED;
  if (count == 1 && kind.starts_with("Point"))
    geometry = VEX_GEOM_POINT;
  else if (numParts > 1 && kind.ends_with("Area"))
    geometry = VEX_GEOM_DONUT;
  else if (isClosed && kind.ends_with("Area"))
    geometry = VEX_GEOM_POLYGON;
  else if (count > 1 && numParts == 1 && kind.find("Line") != std::string_view::npos)
    geometry = VEX_GEOM_LINE;
  if (geometry == VEX_GEOM_UNDEFINED) return makeStatus(312005, {kind, whole.substr(0, 80)});
  feature.setGeomType(geometry);
  return nullptr;
}

}  // namespace fieldsub
