// Short texts looked at and copied a word at a time: fields of tables are a few bytes long, and for those a call of a
// library routine, or a loop over bytes, costs more than the work. A mask has the high bit of each byte that is
// meant; the byte that comes first in memory is the lowest.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace wordscan {

static_assert(std::endian::native == std::endian::little, "the first byte in memory must be the lowest of a word");

inline constexpr std::uint64_t kEach = 0x0101010101010101;
inline constexpr std::uint64_t kHighBits = 0x80 * kEach;

// Eight bytes; they must be there.
inline std::uint64_t load(const char* at) {
  std::uint64_t word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

inline void store(char* at, std::uint64_t word) {
  std::memcpy(at, &word, sizeof word);
}

// At most eight bytes, the rest of the word zero; nothing behind them is touched.
inline std::uint64_t loadShort(const char* at, std::size_t count) {
  if (count >= 8) return load(at);
  if (count >= 4) {
    std::uint32_t first, last;
    std::memcpy(&first, at, sizeof first);
    std::memcpy(&last, at + count - 4, sizeof last);
    return first | static_cast<std::uint64_t>(last) << (8 * (count - 4));
  }
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < count; ++i)
    word |= static_cast<std::uint64_t>(static_cast<unsigned char>(at[i])) << (8 * i);
  return word;
}

inline std::uint64_t nonZeroBytes(std::uint64_t word) {
  return (((word & ~kHighBits) + 0x7F * kEach) | word) & kHighBits;
}
inline std::uint64_t nonBlankBytes(std::uint64_t word) {
  return nonZeroBytes(word ^ (0x20 * kEach));
}
inline std::uint64_t nonDigitBytes(std::uint64_t word) {
  const std::uint64_t value = word ^ (0x30 * kEach);
  return (((value & ~kHighBits) + 0x76 * kEach) | value) & kHighBits;
}
// Of a mask that is not zero: the index of its first and last byte.
inline std::size_t firstByte(std::uint64_t mask) {
  return static_cast<std::size_t>(std::countr_zero(mask)) / 8;
}
inline std::size_t lastByte(std::uint64_t mask) {
  return 7 - static_cast<std::size_t>(std::countl_zero(mask)) / 8;
}

// The length of a text without the blanks at its end.
inline std::size_t lengthWithoutBlanks(const char* text, std::size_t length) {
  for (; length >= 8; length -= 8)
    if (const std::uint64_t mask = nonBlankBytes(load(text + length - 8)); mask != 0)
      return length - 7 + lastByte(mask);
  while (length > 0 && text[length - 1] == ' ') --length;
  return length;
}

// How many blanks a text begins with.
inline std::size_t leadingBlanks(const char* text, std::size_t length) {
  std::size_t at = 0;
  for (; at + 8 <= length; at += 8)
    if (const std::uint64_t mask = nonBlankBytes(load(text + at)); mask != 0) return at + firstByte(mask);
  while (at < length && text[at] == ' ') ++at;
  return at;
}

// One bit a byte of a text, the first byte's the lowest.
struct ByteBits {
  std::uint64_t nonBlank = 0;
  std::uint64_t zero = 0;
};

// Of sixteen bytes; they must be there.
inline ByteBits bitsOfSixteen(const char* at) {
#if defined(__SSE2__)
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
  const auto bitsAt = [bytes](char c) {
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(c))));
  };
  return {bitsAt(' ') ^ 0xFFFFU, bitsAt('\0')};
#else
  // The high bits of eight bytes, brought together in the highest byte.
  const auto gathered = [](std::uint64_t mask) { return (mask >> 7) * 0x0102040810204080 >> 56; };
  const std::uint64_t low = load(at), high = load(at + 8);
  return {gathered(nonBlankBytes(low)) | gathered(nonBlankBytes(high)) << 8,
          gathered(~nonZeroBytes(low) & kHighBits) | gathered(~nonZeroBytes(high) & kHighBits) << 8};
#endif
}

// Of at most 64 bytes, looked at by whole sixteens: as many must be there, whatever they hold.
inline ByteBits bitsOf(const char* text, std::size_t length) {
  ByteBits bits = bitsOfSixteen(text);
  for (std::size_t at = 16; at < length; at += 16) {
    const ByteBits more = bitsOfSixteen(text + at);
    bits.nonBlank |= more.nonBlank << at;
    bits.zero |= more.zero << at;
  }
  return bits;
}

// Whether two texts of one length are the same.
inline bool isSame(const char* a, const char* b, std::size_t count) {
  if (count > 16) return std::memcmp(a, b, count) == 0;
  if (count >= 8) return ((load(a) ^ load(b)) | (load(a + count - 8) ^ load(b + count - 8))) == 0;
  return loadShort(a, count) == loadShort(b, count);
}
inline bool isSame(std::string_view a, std::string_view b) {
  return a.size() == b.size() && isSame(a.data(), b.data(), a.size());
}

// Copies the first and the last word of `count` bytes; both are read before one is written.
template <class Word>
inline void copyEnds(char* to, const char* from, std::size_t count) {
  Word first, last;
  std::memcpy(&first, from, sizeof first);
  std::memcpy(&last, from + count - sizeof last, sizeof last);
  std::memcpy(to, &first, sizeof first);
  std::memcpy(to + count - sizeof last, &last, sizeof last);
}

struct TwoWords {
  std::uint64_t first, last;
};

// Copies `count` bytes; up to 32 the places may overlap, more must not.
inline void copyShort(char* to, const char* from, std::size_t count) {
  if (count > 32) {
    std::memcpy(to, from, count);
  } else if (count >= 16) {
    copyEnds<TwoWords>(to, from, count);
  } else if (count >= 8) {
    copyEnds<std::uint64_t>(to, from, count);
  } else if (count >= 4) {
    copyEnds<std::uint32_t>(to, from, count);
  } else if (count > 0) {
    const char first = from[0], middle = from[count / 2], last = from[count - 1];
    to[0] = first;
    to[count / 2] = middle;
    to[count - 1] = last;
  }
}

}  // namespace wordscan
