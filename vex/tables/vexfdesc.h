// VEXFieldDescription: one column of a table as a _DEF row declares it, and its type text taken apart and put
// together: char(<width>), number(<width>,<decimals>), date, logical.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

enum class VEXFieldKind : std::uint8_t { Unknown, Char, Number, Date, Logical };

struct VEXFieldDescription {
  std::string name;
  VEXFieldKind kind = VEXFieldKind::Unknown;
  bool hasWidth = false;  // the text says it
  bool hasDecimals = false;
  std::uint32_t width = 0;     // bytes; at most kWidest, however many digits were there
  std::uint32_t decimals = 0;  // of a number

  static constexpr std::uint32_t kWidest = 1000000000;

  // Takes a type text apart. A word anywhere in it decides, looked for in the order date, logical, char, number.
  static VEXFieldDescription of(std::string_view name, std::string_view typeText);
  // The type text, such as "number(10,2)".
  std::string typeText() const;
};

// "char", "number", "date", "logical", "unknown".
const char* fieldKindName(VEXFieldKind kind);
