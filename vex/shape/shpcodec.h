// The bytes of a Shape dataset's .shp and .shx: headers, index entries, records. It knows nothing of files or features.
// Lengths and offsets that the files store count words of two bytes; here everything is in bytes.
//
//   .shp: header 100 | records: number, length, content ...        .shx: header 100 | entries: offset, length ...
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

namespace shp {

enum class Order : std::uint8_t { Big, Little };

// A place in a fixed layout: `count` numbers of `width` bytes each.
struct Place {
  std::size_t offset;
  std::size_t width;
  Order order;
  std::size_t count = 1;
};

inline constexpr std::size_t kHeaderBytes = 100;  // of either file
inline constexpr Place kFileCode{0, 4, Order::Big};
inline constexpr Place kFileWords{24, 4, Order::Big};  // of the whole file
inline constexpr Place kVersion{28, 4, Order::Little};
inline constexpr Place kFileType{32, 4, Order::Little};
inline constexpr Place kFileBox{36, 8, Order::Little, 8};  // min x, min y, max x, max y, min z, max z, min m, max m

inline constexpr std::size_t kEntryBytes = 8;  // of the .shx
inline constexpr Place kEntryOffset{0, 4, Order::Big};
inline constexpr Place kEntryWords{4, 4, Order::Big};  // of the content

inline constexpr std::size_t kRecordHeaderBytes = 8;
inline constexpr Place kRecordNumber{0, 4, Order::Big};  // from 1
inline constexpr Place kRecordWords{4, 4, Order::Big};   // of the content

// Content of a record. A point has its ordinates at kPoint; a multipoint its count at kMultiCount, a line or an area
// its counts at kPartCount and kPointCount. Behind the points stands the z block, then the m block: range, values.
inline constexpr Place kShapeType{0, 4, Order::Little};
inline constexpr Place kPoint{4, 8, Order::Little, 2};
inline constexpr Place kRecordBox{4, 8, Order::Little, 4};
inline constexpr Place kMultiCount{36, 4, Order::Little};
inline constexpr std::size_t kMultiPoints = 40;
inline constexpr Place kPartCount{36, 4, Order::Little};
inline constexpr Place kPointCount{40, 4, Order::Little};
inline constexpr std::size_t kParts = 44;  // index of the first point of each part, then the points
inline constexpr std::size_t kPartBytes = 4;
inline constexpr std::size_t kPointBytes = 16;
inline constexpr std::size_t kRangeBytes = 16;
inline constexpr std::size_t kValueBytes = 8;

inline constexpr std::uint32_t kCode = 9994;
inline constexpr std::uint32_t kVersionNumber = 1000;
// Readers keep lengths in signed words: what ends the format at 4 GB.
inline constexpr std::uint64_t kLongestFile = 2 * static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max());
inline constexpr std::int32_t kPlainAreaType = 5;  // without z and measures
inline constexpr double kLeastMeasure = -1e38;     // below: there is no measure
inline constexpr double kNoMeasure = -std::numeric_limits<double>::max();

enum class Family : std::uint8_t { None, Point, Line, Area, MultiPoint, Patch };

struct Type {
  std::int32_t code;
  Family family;
  bool hasZ;
  bool hasM;             // by its name; a z type may carry measures, too
  const char* name;      // in a definition
  const char* readName;  // on features that are read
};

// Null when there is no type of the code.
const Type* findType(std::int32_t code);
// The type of a name in a definition, ignoring case; null when there is none.
const Type* findType(std::string_view name);
std::string typeNames();  // of all that can be written

// ---- numbers ----
inline std::uint32_t getBig(const char* at) {
  std::uint32_t value;
  std::memcpy(&value, at, sizeof value);
  return __builtin_bswap32(value);
}
inline std::uint32_t getLittle(const char* at) {
  std::uint32_t value;
  std::memcpy(&value, at, sizeof value);
  return value;
}
inline double getReal(const char* at) {
  double value;
  std::memcpy(&value, at, sizeof value);
  return value;
}
inline void putBig(char* at, std::uint32_t value) {
  value = __builtin_bswap32(value);
  std::memcpy(at, &value, sizeof value);
}
inline void putLittle(char* at, std::uint32_t value) {
  std::memcpy(at, &value, sizeof value);
}
inline void putReal(char* at, double value) {
  std::memcpy(at, &value, sizeof value);
}

// ---- headers ----
struct Header {
  std::int32_t type = 0;
  std::uint64_t fileBytes = kHeaderBytes;
  std::array<double, 8> box{};  // as kFileBox
};

enum class HeaderFault : std::uint8_t { None, TooShort, NoShape };
HeaderFault decodeHeader(std::string_view bytes, Header& header);
void encodeHeader(const Header& header, std::array<char, kHeaderBytes>& bytes);

// ---- records ----
// The pieces of a record's content; every count has been held against the length.
struct Record {
  std::int32_t type = 0;
  Family family = Family::None;
  std::uint32_t numParts = 0;  // of lines and areas
  std::uint32_t numPoints = 0;
  const char* parts = nullptr;
  const char* points = nullptr;
  const char* zs = nullptr;  // null: there are none
  const char* ms = nullptr;  // null: there are none
};

enum class RecordFault : std::uint8_t { None, TooShort, UnknownType, Counts, Parts };
// `content` starts with the shape type. Null shapes have no points. Counts: points or parts do not fit the length.
// Parts: the part indexes do not rise, or lie beyond the points.
RecordFault decodeRecord(std::string_view content, Record& record);

// A run of points as they are stored.
struct Points {
  const char* at = nullptr;
  std::size_t count = 0;
};
// The points of what nearly every area is: a record of kPlainAreaType with one ring that has all of them. False:
// anything else, for decodeRecord() to look at.
inline bool findSingleRing(std::string_view content, Points& points) {
  constexpr std::size_t kFirstPoint = kParts + kPartBytes;
  if (content.size() < kFirstPoint || getLittle(content.data()) != kPlainAreaType ||
      getLittle(content.data() + kPartCount.offset) != 1 || getLittle(content.data() + kParts) != 0)
    return false;
  points = {content.data() + kFirstPoint, getLittle(content.data() + kPointCount.offset)};
  return points.count <= (content.size() - kFirstPoint) / kPointBytes;
}

// Length of a content, or more than any file when the counts are that large.
std::uint64_t contentBytes(const Type& type, std::uint64_t numParts, std::uint64_t numPoints, bool hasM);

}  // namespace shp
