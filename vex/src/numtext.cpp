#include "vex/inc/numtext.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "vex/src/wordscan.h"

namespace {

// Reads sign and digits; `rest` is what stands behind them.
bool readInteger(std::string_view text, std::int64_t& value, std::string_view& rest) {
  value = 0;
  if (!text.empty() && text[0] == '+' && text.size() > 1 && text[1] != '-') text.remove_prefix(1);
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  rest = text.substr(static_cast<std::size_t>(end - text.data()));
  return error == std::errc();
}

// "" or "." and then zeros and blanks only.
bool isWholeTail(std::string_view rest) {
  return rest.empty() || (rest[0] == '.' && rest.find_first_not_of("0 ", 1) == std::string_view::npos);
}

bool continuesCharacter(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

// How many bytes the UTF-8 character has that begins with this byte; 1 for what begins none.
std::size_t characterBytes(char lead) {
  const auto byte = static_cast<unsigned char>(lead);
  if (byte >= 0xC2 && byte <= 0xDF) return 2;
  if (byte >= 0xE0 && byte <= 0xEF) return 3;
  return byte >= 0xF0 && byte <= 0xF4 ? 4 : 1;
}

}  // namespace

void appendInteger(std::string& out, std::int64_t value) {
  std::array<char, 24> buffer;
  auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  out.append(buffer.data(), end);
}

std::string integerText(std::int64_t value) {
  std::string text;
  appendInteger(text, value);
  return text;
}

namespace {

constexpr int kDigits = 15;
constexpr double kLeastPlain = 1e-4;
constexpr double kPowers[] = {1e-4, 1e-3, 1e-2, 1e-1, 1e0,  1e1,  1e2,  1e3,  1e4,  1e5,
                              1e6,  1e7,  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
constexpr long double kScales[] = {1e0L,  1e1L,  1e2L,  1e3L,  1e4L,  1e5L,  1e6L,  1e7L,  1e8L, 1e9L,
                                   1e10L, 1e11L, 1e12L, 1e13L, 1e14L, 1e15L, 1e16L, 1e17L, 1e18L};

// Eight digits, leading zeros too: fours, twos and ones are parted side by side in one word, the first digit in its
// lowest byte. The multiplications divide by 100 and by 10.
void putDigits(std::uint32_t value, char* to) {
  const std::uint64_t fours = value / 10000 | std::uint64_t{value % 10000} << 32;
  const std::uint64_t upperTwos = (fours * 5243 >> 19) & 0x0000007F0000007F;
  const std::uint64_t twos = upperTwos | (fours - 100 * upperTwos) << 16;
  const std::uint64_t upperOnes = (twos * 103 >> 10) & 0x000F000F000F000F;
  const std::uint64_t ones = upperOnes | (twos - 10 * upperOnes) << 8;
  wordscan::store(to, ones | 0x30 * wordscan::kEach);
}

// The text of std::to_chars with fifteen digits for a value in plain notation, or null where it is not certain. The
// value times a power of ten below 2^64 is right to 64 bits; fifteen digits take fifty of them, so what is left over
// tells up or down unless it lies within 2^-13 of a half.
// `out` has room for 40 characters.
char* plainReal(char* out, double value) {
  const double size = value < 0.0 ? -value : value;
  if (std::numeric_limits<long double>::digits < 64 || !(size >= kLeastPlain && size < 1e15)) return nullptr;
  // Every power of ten lies above the power of two that this begins with.
  int exponent = ((static_cast<int>(std::bit_cast<std::uint64_t>(size) >> 52) - 1023) * 1233) >> 12;
  if (size >= kPowers[exponent + 5]) ++exponent;
  int decimals = kDigits - 1 - exponent;
  const long double scaled = static_cast<long double>(size) * kScales[decimals];
  auto whole = static_cast<std::int64_t>(scaled);
  const long double rest = scaled - static_cast<long double>(whole);
  if (rest > 0.5L - 0x1p-13L && rest < 0.5L + 0x1p-13L) return nullptr;
  if (rest > 0.5L) ++whole;
  if (whole == 1'000'000'000'000'000) {
    whole /= 10;
    if (--decimals < 0) return nullptr;
  }
  std::array<char, 64> digits;  // sixteen are used; copies take sixteen at a time
  putDigits(static_cast<std::uint32_t>(whole / 100'000'000), digits.data());  // begins with a zero
  putDigits(static_cast<std::uint32_t>(whole % 100'000'000), digits.data() + 8);
  int count = kDigits;
  while (decimals > 0 && count > 1 && digits[static_cast<std::size_t>(count)] == '0') {
    --count;
    --decimals;
  }
  if (value < 0.0) *out++ = '-';
  const auto copy = [&out](const char* from, int length) {
    std::memcpy(out, from, kDigits + 1);
    out += length;
  };
  const int before = std::max(count - decimals, 0);  // digits in front of the point
  if (before > 0)
    copy(digits.data() + 1, before);
  else
    *out++ = '0';
  if (decimals == 0) return out;
  *out++ = '.';
  for (int zeros = decimals - (count - before); zeros > 0; --zeros) *out++ = '0';
  copy(digits.data() + 1 + before, count - before);
  return out;
}

}  // namespace

void appendReal(std::string& out, double value) {
  std::array<char, 40> buffer;
  char* end = plainReal(buffer.data(), value);
  if (end == nullptr)
    end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, 15).ptr;
  out.append(buffer.data(), end);
}

std::string realText(double value) {
  std::string text;
  appendReal(text, value);
  return text;
}

void appendFixed(std::string& out, double value, int decimals) {
  std::array<char, 512> buffer;
  if (decimals > 100) decimals = 100;
  auto [end, error] =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, decimals);
  out.append(buffer.data(), end);
}

bool textToInteger(std::string_view text, std::int64_t& value) {
  std::string_view rest;
  return readInteger(text, value, rest) && isWholeTail(rest);
}

bool textToInteger(std::string_view text, std::int32_t& value) {
  std::int64_t wide = 0;
  bool isInteger = textToInteger(text, wide);
  bool fits = wide >= std::numeric_limits<std::int32_t>::min() && wide <= std::numeric_limits<std::int32_t>::max();
  value = fits ? static_cast<std::int32_t>(wide) : 0;
  return isInteger && fits;
}

bool textToReal(std::string_view text, double& value) {
  text = trimmed(text);
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  double read = 0.0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return false;
  value = read;
  return true;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  auto upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (upper(a[i]) != upper(b[i])) return false;
  return true;
}

std::string upperCased(std::string_view text) {
  std::string upper(text);
  for (char& c : upper)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return upper;
}

std::string joined(const std::vector<std::string>& pieces, std::string_view separator) {
  std::string text;
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    if (i > 0) text += separator;
    text += pieces[i];
  }
  return text;
}

std::string replacedAll(std::string text, std::string_view what, std::string_view with) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
    text.replace(at, what.size(), with);
  return text;
}

std::string_view trimmed(std::string_view text, std::string_view characters) {
  std::size_t first = text.find_first_not_of(characters);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(characters) - first + 1);
}

std::string_view cutToBytes(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text;
  std::size_t start = most;  // of the character that the cut would fall into
  while (start > 0 && most - start < 3 && continuesCharacter(text[start])) --start;
  const std::size_t end = start + characterBytes(text[start]);
  if (end <= most || end > text.size()) return text.substr(0, most);
  for (std::size_t i = start + 1; i < end; ++i)
    if (!continuesCharacter(text[i])) return text.substr(0, most);
  return text.substr(0, start);
}

void splitAt(std::string_view text, char separator, std::vector<std::string>& pieces) {
  pieces.clear();
  for (;;) {
    std::size_t cut = text.find(separator);
    pieces.emplace_back(text.substr(0, cut));
    if (cut == std::string_view::npos) return;
    text.remove_prefix(cut + 1);
  }
}

std::string countText(std::int64_t count, std::string_view noun) {
  std::string text = integerText(count) + " " + std::string(noun);
  if (count != 1) text += 's';
  return text;
}
