#include "vex/src/plainnum.h"

namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

}  // namespace

bool splitLongPlainNumber(std::string_view text, VEXPlainNumber& number) {
  number.numSigns = text.starts_with('-') || text.starts_with('+') ? 1 : 0;
  std::size_t at = number.numSigns;
  while (at < text.size() && isDigit(text[at])) ++at;
  number.wholeLength = at;
  number.numDecimals = 0;
  if (at < text.size() && text[at] == '.') {
    const std::size_t firstDecimal = ++at;
    while (at < text.size() && isDigit(text[at])) ++at;
    number.numDecimals = at - firstDecimal;
  }
  return at == text.size() && number.wholeLength + number.numDecimals > number.numSigns;
}
