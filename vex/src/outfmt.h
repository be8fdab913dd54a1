// VEXOutputFormat: shapes a value to the column type of a _DEF row, for writers of text that keeps declared types:
// number(<width>,<decimals>) is written with exactly so many decimals, integer types without any, text as it stands.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "vex/inc/statinfo.h"
#include "vex/src/plainnum.h"

class VEXOutputFormat {
 public:
  enum class Kind : std::uint8_t { Text, Number, Small, Integer };

  // A shaped text is the value itself or at most so many characters.
  static constexpr std::size_t kLongest = 99;

  // Takes a type text apart. 876002 to 876007 for a number type that is written wrongly.
  static VEXStatus parse(std::string_view typeText, VEXOutputFormat& format);

  // The text of a value, replacing `out`. False when it does not fit: longer than the width, or out of the integer
  // range.
  bool format(double value, std::string& out) const;
  // The same from text; `shaped` views the value itself, when that has the form already, or `buffer`. False, too,
  // for a text that is no number. An empty text gives an empty one, and a text column takes any text as it stands.
  bool format(std::string_view value, std::string& buffer, std::string_view& shaped) const;

  // True for a value of a number column that is written just as it stands, which most are: the decimals are right
  // and no zero stands in front. False says nothing.
  bool isInForm(std::string_view value) const {
    if (value.size() - 1 >= mostInForm_ || !hasDecimals(value, static_cast<std::size_t>(decimals_))) return false;
    const std::size_t start = value[0] == '-' ? 1 : 0;
    return value[start] != '0' || start + 1 == value.size() || value[start + 1] == '.';
  }

  Kind kind() const { return kind_; }
  std::int32_t width() const { return width_; }
  std::int32_t decimals() const { return decimals_; }

 private:
  bool padText(std::string_view value, std::string& buffer, std::string_view& shaped) const;

  Kind kind_ = Kind::Text;
  std::int32_t width_ = 0;
  std::int32_t decimals_ = 0;
  std::size_t mostInForm_ = 0;  // characters; 0 in other columns than numbers
};
