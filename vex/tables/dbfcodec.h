// The bytes of a dBase III file: header, field descriptors, and the text forms of a field's value. It knows
// nothing of files or features. All numbers of the header are little-endian.
//
//   header 32 | descriptor 32 * fields | 0x0D | records | 0x1A        record: deletion byte, fields back to back
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vex/src/wordscan.h"

namespace dbf {

// A place in a fixed layout.
struct Place {
  std::size_t offset;
  std::size_t width;
};

inline constexpr std::size_t kHeaderBytes = 32;
inline constexpr Place kVersion{0, 1};
inline constexpr Place kYear{1, 1};   // less 1900
inline constexpr Place kMonth{2, 1};  // 1 to 12
inline constexpr Place kDay{3, 1};
inline constexpr Place kNumRecords{4, 4};     // deleted ones included
inline constexpr Place kHeaderLength{8, 2};   // offset of the first record
inline constexpr Place kRecordLength{10, 2};  // with the deletion byte
inline constexpr Place kLanguage{29, 1};      // code page

inline constexpr std::size_t kFieldBytes = 32;
inline constexpr Place kFieldName{0, 11};  // filled with zero bytes
inline constexpr Place kFieldType{11, 1};
inline constexpr Place kFieldLength{16, 1};
inline constexpr Place kFieldDecimals{17, 1};

inline constexpr char kHeaderEnd = 0x0D;
inline constexpr char kFileEnd = 0x1A;
inline constexpr char kLive = ' ';
inline constexpr char kDeleted = '*';

inline constexpr std::size_t kMostFields = 1024;
inline constexpr std::uint32_t kWidestField = 255;
inline constexpr std::uint32_t kLongestRecord = 65535;
inline constexpr std::uint32_t kMostRecords = 0x7FFFFFFF;  // readers keep the count in a signed number
inline constexpr std::size_t kLongestName = 10;

struct Header {
  std::uint8_t version = 3;
  std::uint8_t year = 0x5F;  // what stands in the file when the clock cannot be read
  std::uint8_t month = 10;
  std::uint8_t day = 16;
  std::uint32_t numRecords = 0;
  std::uint16_t headerLength = 33;
  std::uint16_t recordLength = 1;
  std::uint8_t language = 0;
};

struct Field {
  std::string name;  // as it stands in the file, or in readable form: see nameForm
  char type = 'C';
  std::uint32_t length = 0;  // above 255 only in a C field, whose decimals byte is the high byte then
  std::uint32_t decimals = 0;
  std::uint32_t offset = 0;  // in the record, the deletion byte counted
};

// False when fewer than kHeaderBytes are there.
bool decodeHeader(std::string_view bytes, Header& header);
void encodeHeader(const Header& header, std::string& out);
void encodeField(const Field& field, std::string& out);
// Puts today's date, local time, into the header.
void setToday(Header& header);
// The descriptors in the bytes of the header, up to the terminator or the end. Offsets are set. Trailing
// fields that reach beyond the record are not in `fields`; their names go to `beyond`.
void decodeFields(std::string_view headerBytes, const Header& header, std::vector<Field>& fields,
                  std::vector<std::string>& beyond);

// A field name as it is used: without hyphens, upper case, with two-byte characters left as they are.
std::string nameForm(std::string_view name);
// True when a lower-case letter stands outside the two-byte characters.
bool hasLowerCase(std::string_view name);

// ---- values: a view into the field's bytes, or a constant text ----
// A field ends at its first zero byte. Readers ask for a whole record first whether it holds any.
std::string_view cutAtZero(std::string_view bytes);
// Without the blanks at its end.
inline std::string_view textValue(std::string_view bytes) {
  return bytes.substr(0, wordscan::lengthWithoutBlanks(bytes.data(), bytes.size()));
}
// Without the zeros behind the point, and without a point that stands last; numbers with an exponent stay.
std::string_view withoutSpareZeros(std::string_view number);
// Without blanks on both sides and spare zeros; empty: "0".
inline std::string_view numberValue(std::string_view bytes) {
  bytes.remove_prefix(wordscan::leadingBlanks(bytes.data(), bytes.size()));
  bytes = textValue(bytes);
  if (bytes.empty()) return "0";
  return bytes.back() == '0' || bytes.back() == '.' ? withoutSpareZeros(bytes) : bytes;
}
std::string_view logicalValue(std::string_view bytes);  // "true", "false", or empty when unknown

// Writes a text to a place that is filled with blanks; it is cut at its end, in front of a UTF-8 character that does
// not fit whole.
void putText(char* place, std::size_t width, std::string_view text);
// Writes a number right-aligned with exactly `decimals` decimals: more are cut, fewer padded with zeros. What is
// too wide is cut at its end when the point lies within the width. False, with the place left blank, when the
// value is no number or its whole part does not fit. Nothing but blanks is no value and succeeds.
bool putNumber(char* place, std::size_t width, std::size_t decimals, std::string_view text);

}  // namespace dbf
