#include "vex/funcs/onechar.h"

#include <charconv>
#include <cstdint>

namespace {

void appendUtf8(std::string& out, std::uint32_t code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
    return;
  }
  const int numMore = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  constexpr unsigned char kLeads[] = {0, 0xC0, 0xE0, 0xF0};
  out += static_cast<char>(kLeads[numMore] | (code >> (6 * numMore)));
  for (int i = numMore - 1; i >= 0; --i) out += static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3F));
}

// The whole text, of at most `most` digits, is a number of the base.
bool takeCode(std::string_view digits, std::size_t most, int base, std::uint32_t& code) {
  if (digits.empty() || digits.size() > most) return false;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code, base);
  return error == std::errc() && end == digits.data() + digits.size() && code <= 0x10FFFF;
}

}  // namespace

bool isOneCharacter(std::string_view text) {
  if (text.size() == 1) return true;
  if (text.empty() || static_cast<unsigned char>(text[0]) < 0xC0) return false;
  for (char c : text.substr(1))
    if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) return false;
  return text.size() <= 4;
}

bool decodeBackslash(std::string_view text, std::string& character) {
  character.clear();
  if (text.size() < 2 || text[0] != '\\') return false;
  const std::string_view rest = text.substr(2);
  std::uint32_t code = 0;
  if (text[1] >= '0' && text[1] <= '7') {
    if (!takeCode(text.substr(1), 3, 8, code)) return false;
    appendUtf8(character, code & 0xFF);
    return true;
  }
  const std::size_t numDigits = text[1] == 'x' ? 2 : text[1] == 'u' ? 4 : text[1] == 'U' ? 8 : 0;
  if (numDigits > 0 && !rest.empty()) {
    if (!takeCode(rest, numDigits, 16, code)) return false;
    appendUtf8(character, code);
    return true;
  }
  constexpr std::string_view kLetters = "abfnrtv";
  constexpr std::string_view kCodes = "\a\b\f\n\r\t\v";
  const std::size_t letter = kLetters.find(text[1]);
  character = letter != std::string_view::npos && rest.empty() ? kCodes.substr(letter, 1) : text.substr(1);
  return isOneCharacter(character);
}
