#include "vex/tables/dbfcodec.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ctime>

#include "vex/inc/numtext.h"
#include "vex/src/bytecur.h"
#include "vex/src/plainnum.h"

namespace dbf {

namespace {

// The first byte of a two-byte character in the code pages that have them.
bool leadsPair(unsigned char c) {
  return (c >= 129 && c <= 175) || (c >= 224 && c <= 252);
}

// Calls visit(character, isPair) for each byte, both bytes of a pair marked.
template <class Visit>
void walkName(std::string_view name, Visit&& visit) {
  for (std::size_t i = 0; i < name.size(); ++i) {
    const bool isPair = leadsPair(static_cast<unsigned char>(name[i])) && i + 1 < name.size();
    visit(name[i], isPair);
    if (isPair) visit(name[++i], true);
  }
}

void putInteger(std::string& bytes, std::size_t base, Place place, std::uint64_t value) {
  for (std::size_t i = 0; i < place.width; ++i) bytes[base + place.offset + i] = static_cast<char>(value >> (8 * i));
}

bool putPlainNumber(char* place, std::size_t width, std::size_t decimals, std::string_view text,
                    const VEXPlainNumber& number) {
  const std::size_t length = number.wholeLength + (decimals == 0 ? 0 : 1 + decimals);
  char* at = place;
  if (length <= width)
    at += width - length;
  else if (decimals == 0 || number.wholeLength >= width)
    return false;
  char* const end = at + std::min(length, width);
  const std::size_t copied = std::min(text.size(), static_cast<std::size_t>(end - at));
  wordscan::copyShort(at, text.data(), copied);
  at += copied;
  if (at < end && number.wholeLength == text.size()) *at++ = '.';
  while (at < end) *at++ = '0';
  return true;
}

// A number with an exponent is spelled out: its decimals cannot be cut or padded as they stand. One that is
// too long spelled out is stored as it came.
bool putScaledNumber(char* place, std::size_t width, std::size_t decimals, std::string_view text) {
  double value = 0.0;
  if (text.find_first_of("eE") == std::string_view::npos || !textToReal(text, value) || !std::isfinite(value))
    return false;
  std::string spelled;
  appendFixed(spelled, value, static_cast<int>(decimals));
  VEXPlainNumber number;
  if (splitPlainNumber(spelled, number) && spelled.size() <= width)
    return putPlainNumber(place, width, decimals, spelled, number);
  if (text.size() > width) return false;
  std::memcpy(place + width - text.size(), text.data(), text.size());
  return true;
}

}  // namespace

bool decodeHeader(std::string_view bytes, Header& header) {
  if (bytes.size() < kHeaderBytes) return false;
  VEXByteCursor cursor(bytes);
  header.version = cursor.u8();
  header.year = cursor.u8();
  header.month = cursor.u8();
  header.day = cursor.u8();
  header.numRecords = cursor.u32le();
  header.headerLength = cursor.u16le();
  header.recordLength = cursor.u16le();
  cursor.moveTo(kLanguage.offset);
  header.language = cursor.u8();
  return true;
}

void encodeHeader(const Header& header, std::string& out) {
  const std::size_t base = out.size();
  out.append(kHeaderBytes, '\0');
  putInteger(out, base, kVersion, header.version);
  putInteger(out, base, kYear, header.year);
  putInteger(out, base, kMonth, header.month);
  putInteger(out, base, kDay, header.day);
  putInteger(out, base, kNumRecords, header.numRecords);
  putInteger(out, base, kHeaderLength, header.headerLength);
  putInteger(out, base, kRecordLength, header.recordLength);
  putInteger(out, base, kLanguage, header.language);
}

void encodeField(const Field& field, std::string& out) {
  const std::size_t base = out.size();
  out.append(kFieldBytes, '\0');
  out.replace(base + kFieldName.offset, std::min(field.name.size(), kFieldName.width), field.name, 0, kFieldName.width);
  out[base + kFieldType.offset] = field.type;
  putInteger(out, base, kFieldLength, field.length);
  putInteger(out, base, kFieldDecimals, field.decimals);
}

void setToday(Header& header) {
  const std::time_t now = std::time(nullptr);
  std::tm today{};
  if (now == static_cast<std::time_t>(-1) || localtime_r(&now, &today) == nullptr) return;
  header.year = static_cast<std::uint8_t>(today.tm_year);
  header.month = static_cast<std::uint8_t>(today.tm_mon + 1);
  header.day = static_cast<std::uint8_t>(today.tm_mday);
}

void decodeFields(std::string_view headerBytes, const Header& header, std::vector<Field>& fields,
                  std::vector<std::string>& beyond) {
  fields.clear();
  beyond.clear();
  std::uint32_t total = 1;
  std::uint32_t wideTotal = 1;
  for (std::size_t at = kHeaderBytes; at + kFieldBytes <= headerBytes.size(); at += kFieldBytes) {
    const std::string_view bytes = headerBytes.substr(at, kFieldBytes);
    // No name begins with a control character; 0x0A is seen in place of the terminator, zeros behind it.
    if (static_cast<unsigned char>(bytes[0]) < ' ') break;
    Field& field = fields.emplace_back();
    field.name = textValue(cutAtZero(bytes.substr(kFieldName.offset, kFieldName.width)));
    field.type = bytes[kFieldType.offset];
    field.length = static_cast<unsigned char>(bytes[kFieldLength.offset]);
    field.decimals = static_cast<unsigned char>(bytes[kFieldDecimals.offset]);
    total += field.length;
    wideTotal += field.length + (field.type == 'C' ? 256 * field.decimals : 0);
  }
  const bool isWide = total != header.recordLength && wideTotal == header.recordLength;
  std::uint32_t offset = 1;
  std::size_t numFitting = 0;
  for (Field& field : fields) {
    if (isWide && field.type == 'C') {
      field.length += 256 * field.decimals;
      field.decimals = 0;
    }
    field.offset = offset;
    offset += field.length;
    if (offset <= header.recordLength)
      ++numFitting;
    else
      beyond.push_back(field.name);
  }
  fields.resize(numFitting);
}

std::string nameForm(std::string_view name) {
  std::string bare(name);
  std::erase(bare, '-');
  std::string form;
  walkName(bare,
           [&form](char c, bool isPair) { form += !isPair && c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
  return form;
}

bool hasLowerCase(std::string_view name) {
  bool found = false;
  walkName(name, [&found](char c, bool isPair) { found = found || (!isPair && c >= 'a' && c <= 'z'); });
  return found;
}

std::string_view cutAtZero(std::string_view bytes) {
  return bytes.substr(0, bytes.find('\0'));
}

std::string_view withoutSpareZeros(std::string_view number) {
  std::size_t point = number.size();
  for (std::size_t at = 0; at < number.size(); ++at) {
    if (number[at] == 'e' || number[at] == 'E') return number;
    if (number[at] == '.' && point == number.size()) point = at;
  }
  if (point == number.size()) return number;
  while (number.back() == '0' && number.size() > point + 1) number.remove_suffix(1);
  if (number.back() == '.') number.remove_suffix(1);
  return number.empty() ? std::string_view("0") : number;
}

std::string_view logicalValue(std::string_view bytes) {
  switch (bytes.empty() ? ' ' : bytes.front()) {
    case 'T':
    case 't':
    case 'Y':
    case 'y':
      return "true";
    case 'F':
    case 'f':
    case 'N':
    case 'n':
      return "false";
    default:
      return {};
  }
}

void putText(char* place, std::size_t width, std::string_view text) {
  if (text.size() > width) [[unlikely]]
    text = cutToBytes(text, width);
  wordscan::copyShort(place, text.data(), text.size());
}

bool putNumber(char* place, std::size_t width, std::size_t decimals, std::string_view text) {
  if (text.size() <= width && hasDecimals(text, decimals)) [[likely]] {
    wordscan::copyShort(place + width - text.size(), text.data(), text.size());
    return true;
  }
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  if (text.empty()) return true;
  VEXPlainNumber number;
  if (splitPlainNumber(text, number)) [[likely]]
    return putPlainNumber(place, width, decimals, text, number);
  return putScaledNumber(place, width, decimals, text);
}

}  // namespace dbf
