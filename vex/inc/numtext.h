// Numbers to text and back, never through the locale, nothing thrown.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Decimal text of an integer, appended.
void appendInteger(std::string& out, std::int64_t value);
std::string integerText(std::int64_t value);

// A real in the engine's default form: up to 15 significant digits, shortest notation, appended.
// NaN is "nan", infinities "inf" and "-inf".
void appendReal(std::string& out, double value);
std::string realText(double value);
// A real with exactly this many decimals, appended.
void appendFixed(std::string& out, double value, int decimals);

// Strict integer: decimal digits with an optional sign; behind them only "." followed by "0" and " ".
// On failure `value` holds what was read so far (0 for an empty text). Out of range fails.
bool textToInteger(std::string_view text, std::int64_t& value);
bool textToInteger(std::string_view text, std::int32_t& value);
// A real: the whole text, blanks around it allowed. An empty text fails.
bool textToReal(std::string_view text, double& value);

bool equalsIgnoringCase(std::string_view a, std::string_view b);
std::string upperCased(std::string_view text);  // ASCII letters only
std::string joined(const std::vector<std::string>& pieces, std::string_view separator);
std::string replacedAll(std::string text, std::string_view what, std::string_view with);
std::string_view trimmed(std::string_view text, std::string_view characters = " \t");
// The pieces between separators; an empty text gives one empty piece.
void splitAt(std::string_view text, char separator, std::vector<std::string>& pieces);
// The first `most` bytes of a text, fewer when the cut would fall into a UTF-8 character: half of one is never left.
// Bytes that are no UTF-8 are cut where they stand.
std::string_view cutToBytes(std::string_view text, std::size_t most);
// "1 feature", "2 features": count and noun, plural by "s".
std::string countText(std::int64_t count, std::string_view noun);
