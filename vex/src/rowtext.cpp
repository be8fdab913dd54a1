#include "vex/src/rowtext.h"

#include <cstddef>
#include <string_view>

namespace {

// What stands for a protected character until the line is split.
constexpr char kBlank = '\x01';
constexpr char kQuote = '\x02';
constexpr char kOpen = '\x03';
constexpr char kClose = '\x04';
constexpr char kTab = '\x05';

char protectedForm(char c) {
  switch (c) {
    case ' ':
      return kBlank;
    case '\t':
      return kTab;
    case '(':
      return kOpen;
    case ')':
      return kClose;
    default:
      return c;
  }
}

char restoredForm(char c) {
  switch (c) {
    case kBlank:
      return ' ';
    case kQuote:
      return '"';
    case kOpen:
      return '(';
    case kClose:
      return ')';
    case kTab:
      return '\t';
    default:
      return c;
  }
}

// Protects what quotes enclose and drops blanks in parentheses, in place.
RowFault protect(std::string& text) {
  bool inQuotes = false;
  bool closedTooOften = false;
  std::size_t depth = 0;
  std::size_t to = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    char c = text[at];
    if (c == '\\' && at + 1 < text.size() && text[at + 1] == '"') {
      c = kQuote;
      ++at;
    } else if (c == '"') {
      inQuotes = !inQuotes;
    } else if (inQuotes) {
      c = protectedForm(c);
    } else if (c == '(') {
      ++depth;
    } else if (c == ')') {
      if (depth == 0)
        closedTooOften = true;
      else
        --depth;
    } else if (c == ' ' && depth > 0) {
      continue;
    }
    text[to++] = c;
  }
  text.resize(to);
  if (inQuotes) return RowFault::Quote;
  if (closedTooOften) return RowFault::CloseParen;
  return depth > 0 ? RowFault::OpenParen : RowFault::None;
}

bool needsQuotes(std::string_view token) {
  if (token.empty() || token.find_first_of(" \t\"") != std::string_view::npos) return true;
  std::ptrdiff_t depth = 0;
  for (char c : token) {
    depth += c == '(' ? 1 : c == ')' ? -1 : 0;
    if (depth < 0) return true;
  }
  return depth != 0;
}

}  // namespace

VEXDelimiterSet delimiterSet(std::string_view characters) {
  VEXDelimiterSet set{};
  for (char c : characters) set[static_cast<unsigned char>(c)] = true;
  return set;
}

RowFault tokeniseRow(std::string& text, const VEXDelimiterSet& isDelimiter, VEXStringVector& row) {
  if (RowFault fault = protect(text); fault != RowFault::None) return fault;
  std::size_t at = 0;
  while (at < text.size()) {
    std::size_t end = at;
    while (end < text.size() && !isDelimiter[static_cast<unsigned char>(text[end])]) ++end;
    std::size_t length = 0;  // of the token, built in place at `at`
    for (std::size_t from = at; from < end; ++from)
      if (text[from] != '"') text[at + length++] = restoredForm(text[from]);
    if (length > 0) row.emplace_back(text, at, length);
    at = end + 1;
  }
  return RowFault::None;
}

std::string rowText(const VEXStringVector& row) {
  std::string text;
  for (const std::string& token : row) {
    if (!text.empty()) text += ' ';
    bool quoted = needsQuotes(token);
    if (quoted) text += '"';
    for (char c : token) {
      if (c == '"') text += '\\';
      text += c;
    }
    if (quoted) text += '"';
  }
  return text;
}
