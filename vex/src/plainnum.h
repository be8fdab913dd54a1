// A number in plain notation, told by its text alone: where the whole part ends and how many decimals follow.
// Writers that cut and pad decimals as characters use it and convert nothing.
#pragma once

#include <cstdint>
#include <string_view>

#include "vex/src/wordscan.h"

struct VEXPlainNumber {
  std::size_t numSigns = 0;     // 0 or 1
  std::size_t wholeLength = 0;  // with the sign
  std::size_t numDecimals = 0;
};

// The same for any length.
bool splitLongPlainNumber(std::string_view text, VEXPlainNumber& number);

// Which of the first and the second eight of at most sixteen characters, one or more, are no digits: a mask each, see
// wordscan.
struct VEXNonDigits {
  std::uint64_t low;
  std::uint64_t high;
};

inline VEXNonDigits nonDigitsOf(std::string_view text) {
  const std::size_t length = text.size();
  VEXNonDigits found{wordscan::nonDigitBytes(wordscan::loadShort(text.data(), length)), 0};
  if (length < 8)
    found.low &= (std::uint64_t{1} << (8 * length)) - 1;
  else if (length > 8)
    found.high = wordscan::nonDigitBytes(wordscan::load(text.data() + length - 8)) >> (8 * (16 - length));
  return found;
}

// False when the text is anything but an optional sign, digits, and perhaps a point among or around them.
inline bool splitPlainNumber(std::string_view text, VEXPlainNumber& number) {
  const std::size_t length = text.size();
  if (length > 16 || length == 0) return splitLongPlainNumber(text, number);
  number.numSigns = text[0] == '-' || text[0] == '+' ? 1 : 0;
  // What is no digit may be the sign, and one point.
  auto [low, high] = nonDigitsOf(text);
  if (number.numSigns != 0) low &= low - 1;
  if ((low | high) == 0) {
    number.wholeLength = length;
    number.numDecimals = 0;
    return length > number.numSigns;
  }
  const bool isOne = low != 0 ? (low & (low - 1)) == 0 && high == 0 : (high & (high - 1)) == 0;
  number.wholeLength = low != 0 ? wordscan::firstByte(low) : 8 + wordscan::firstByte(high);
  number.numDecimals = length - number.wholeLength - 1;
  return isOne && text[number.wholeLength] == '.' && length > number.numSigns + 1;
}

// True for at most sixteen characters that are a number with just so many decimals: perhaps a minus, a digit or more,
// and the decimals behind a point. Other texts of the kind may be longer.
inline bool hasDecimals(std::string_view text, std::size_t decimals) {
  if (text.empty() || text.size() > 16) return false;
  const std::size_t start = text[0] == '-' ? 1 : 0;
  // A point in front of the text wraps around and lies behind it.
  const std::size_t point = decimals == 0 ? text.size() : text.size() - decimals - 1;
  if (point > text.size() || point <= start) return false;
  VEXNonDigits expected{start == 0 ? 0U : std::uint64_t{0x80}, 0};
  if (decimals != 0) (point < 8 ? expected.low : expected.high) |= std::uint64_t{0x80} << (8 * (point % 8));
  const VEXNonDigits found = nonDigitsOf(text);
  return found.low == expected.low && found.high == expected.high && (decimals == 0 || text[point] == '.');
}
