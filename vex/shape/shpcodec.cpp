#include "vex/shape/shpcodec.h"

#include <bit>

#include "vex/inc/numtext.h"

namespace shp {

static_assert(std::endian::native == std::endian::little, "another byte order needs its own reads here");

namespace {

constexpr Type kTypes[] = {
    {0, Family::None, false, false, "shape_null", ""},
    {1, Family::Point, false, false, "shape_point", "shape_point"},
    {3, Family::Line, false, false, "shape_polyline", "shape_arc"},
    {3, Family::Line, false, false, "shape_arc", "shape_arc"},
    {5, Family::Area, false, false, "shape_polygon", "shape_polygon"},
    {8, Family::MultiPoint, false, false, "shape_multipoint", "shape_multipoint"},
    {11, Family::Point, true, false, "shape_pointz", "shape_pointz"},
    {13, Family::Line, true, false, "shape_polylinez", "shape_polylinez"},
    {15, Family::Area, true, false, "shape_polygonz", "shape_polygonz"},
    {18, Family::MultiPoint, true, false, "shape_multipointz", "shape_pointz"},  // as code 11, on purpose
    {21, Family::Point, false, true, "shape_pointm", "shape_pointm"},
    {23, Family::Line, false, true, "shape_polylinem", "shape_polylinem"},
    {25, Family::Area, false, true, "shape_polygonm", "shape_polygonm"},
    {28, Family::MultiPoint, false, true, "shape_multipointm", "shape_multipointm"},
    {31, Family::Patch, true, false, "shape_multipatch", ""},
};

// Where in the table each code stands first.
constexpr std::int32_t kLastCode = 31;
constexpr std::uint8_t kNoPlace = 0xFF;
constexpr auto kPlaces = [] {
  std::array<std::uint8_t, kLastCode + 1> places{};
  places.fill(kNoPlace);
  for (std::size_t i = std::size(kTypes); i-- > 0;) places[kTypes[i].code] = static_cast<std::uint8_t>(i);
  return places;
}();

bool partsRise(const Record& record) {
  std::uint32_t last = 0;
  for (std::uint32_t i = 0; i < record.numParts; ++i) {
    const std::uint32_t start = getLittle(record.parts + kPartBytes * i);
    if (start < last || start > record.numPoints) return false;
    last = start;
  }
  return true;
}

// Looks for the z and m blocks in what is left of the content behind the points.
RecordFault findBlocks(const Type& type, const char* at, std::uint64_t left, Record& record) {
  const std::uint64_t block = kRangeBytes + kValueBytes * static_cast<std::uint64_t>(record.numPoints);
  if (type.hasZ) {
    if (left < block) return RecordFault::Counts;
    record.zs = at + kRangeBytes;
    at += block;
    left -= block;
  }
  if ((type.hasZ || type.hasM) && left >= block) record.ms = at + kRangeBytes;
  return RecordFault::None;
}

RecordFault decodePoint(const Type& type, std::string_view content, Record& record) {
  std::size_t end = kPoint.offset + kPointBytes;
  if (content.size() < end + (type.hasZ ? kValueBytes : 0)) return RecordFault::TooShort;
  record.numPoints = 1;
  record.points = content.data() + kPoint.offset;
  if (type.hasZ) {
    record.zs = content.data() + end;
    end += kValueBytes;
  }
  if ((type.hasZ || type.hasM) && content.size() >= end + kValueBytes) record.ms = content.data() + end;
  return RecordFault::None;
}

}  // namespace

const Type* findType(std::int32_t code) {
  const std::uint8_t place = code >= 0 && code <= kLastCode ? kPlaces[code] : kNoPlace;
  return place == kNoPlace ? nullptr : &kTypes[place];
}

const Type* findType(std::string_view name) {
  for (const Type& type : kTypes)
    if (equalsIgnoringCase(type.name, name)) return &type;
  return nullptr;
}

std::string typeNames() {
  std::string names;
  for (const Type& type : kTypes)
    if (type.family != Family::Patch) names.append(names.empty() ? "" : ", ").append(type.name);
  return names;
}

HeaderFault decodeHeader(std::string_view bytes, Header& header) {
  if (bytes.size() < kHeaderBytes) return HeaderFault::TooShort;
  if (getBig(bytes.data() + kFileCode.offset) != kCode) return HeaderFault::NoShape;
  header.type = static_cast<std::int32_t>(getLittle(bytes.data() + kFileType.offset));
  header.fileBytes = 2 * static_cast<std::uint64_t>(getBig(bytes.data() + kFileWords.offset));
  for (std::size_t i = 0; i < kFileBox.count; ++i)
    header.box[i] = getReal(bytes.data() + kFileBox.offset + kFileBox.width * i);
  return HeaderFault::None;
}

void encodeHeader(const Header& header, std::array<char, kHeaderBytes>& bytes) {
  bytes.fill('\0');
  putBig(bytes.data() + kFileCode.offset, kCode);
  putBig(bytes.data() + kFileWords.offset, static_cast<std::uint32_t>(header.fileBytes / 2));
  putLittle(bytes.data() + kVersion.offset, kVersionNumber);
  putLittle(bytes.data() + kFileType.offset, static_cast<std::uint32_t>(header.type));
  for (std::size_t i = 0; i < kFileBox.count; ++i)
    putReal(bytes.data() + kFileBox.offset + kFileBox.width * i, header.box[i]);
}

RecordFault decodeRecord(std::string_view content, Record& record) {
  record = Record();
  if (content.size() < kShapeType.width) return RecordFault::TooShort;
  record.type = static_cast<std::int32_t>(getLittle(content.data()));
  const Type* type = findType(record.type);
  if (type == nullptr || type->family == Family::Patch) return RecordFault::UnknownType;
  record.family = type->family;
  if (type->family == Family::None) return RecordFault::None;
  if (type->family == Family::Point) return decodePoint(*type, content, record);

  const bool hasParts = type->family != Family::MultiPoint;
  const std::size_t fixed = hasParts ? kParts : kMultiPoints;
  if (content.size() < fixed) return RecordFault::TooShort;
  record.numParts = hasParts ? getLittle(content.data() + kPartCount.offset) : 0;
  record.numPoints = getLittle(content.data() + (hasParts ? kPointCount : kMultiCount).offset);
  const std::uint64_t partBytes = kPartBytes * static_cast<std::uint64_t>(record.numParts);
  const std::uint64_t pointBytes = kPointBytes * static_cast<std::uint64_t>(record.numPoints);
  std::uint64_t left = content.size() - fixed;
  if (partBytes > left || pointBytes > left - partBytes) return RecordFault::Counts;
  record.parts = content.data() + fixed;
  record.points = record.parts + partBytes;
  if (hasParts && !partsRise(record)) return RecordFault::Parts;
  left -= partBytes + pointBytes;
  return findBlocks(*type, record.points + pointBytes, left, record);
}

std::uint64_t contentBytes(const Type& type, std::uint64_t numParts, std::uint64_t numPoints, bool hasM) {
  const std::uint64_t numBlocks = (type.hasZ ? 1 : 0) + (hasM ? 1 : 0);
  switch (type.family) {
    case Family::Point:
      return kPoint.offset + kPointBytes + kValueBytes * numBlocks;
    case Family::MultiPoint:
      return kMultiPoints + kPointBytes * numPoints + numBlocks * (kRangeBytes + kValueBytes * numPoints);
    case Family::Line:
    case Family::Area:
      return kParts + kPartBytes * numParts + kPointBytes * numPoints +
             numBlocks * (kRangeBytes + kValueBytes * numPoints);
    case Family::None:
    case Family::Patch:
      break;
  }
  return kShapeType.width;
}

}  // namespace shp
