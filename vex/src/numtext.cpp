#include "vex/inc/numtext.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

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

void appendReal(std::string& out, double value) {
  std::array<char, 40> buffer;
  auto [end, error] =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, 15);
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
