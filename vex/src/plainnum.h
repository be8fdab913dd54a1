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

// False when the text is anything but an optional sign, digits, and perhaps a point among or around them.
inline bool splitPlainNumber(std::string_view text, VEXPlainNumber& number) {
  const std::size_t length = text.size();
  if (length > 16 || length == 0) return splitLongPlainNumber(text, number);
  number.numSigns = text[0] == '-' || text[0] == '+' ? 1 : 0;
  // What is no digit, as two words of one text: it may be the sign, and one point.
  std::uint64_t low = wordscan::nonDigitBytes(wordscan::loadShort(text.data(), length));
  std::uint64_t high = 0;
  if (length < 8)
    low &= (std::uint64_t{1} << (8 * length)) - 1;
  else if (length > 8)
    high = wordscan::nonDigitBytes(wordscan::load(text.data() + length - 8)) >> (8 * (16 - length));
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
