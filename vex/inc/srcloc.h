// The place of a call in the source, as failures record it in their trace. The one alias for
// std::source_location: it also serves compilers that lack the original, and it cuts a place down to
// what is the same on every machine.
#pragma once

#include <cstdint>
#include <string>

class VEXSourceLocation {
 public:
#if defined(__clang__)
  static constexpr VEXSourceLocation current(const char* function = __builtin_FUNCTION(),
                                             const char* file = __builtin_FILE(),
                                             std::uint32_t line = __builtin_LINE()) {
#else
  static constexpr VEXSourceLocation current(const char* function = __builtin_FUNCTION(),
                                             const char* file = __builtin_FILE(),
                                             std::uint32_t line = static_cast<std::uint32_t>(__builtin_LINE())) {
#endif
    return VEXSourceLocation(function, file, line);
  }

  // "attachGroup(writer.cpp:88)": function, the file's name without its directory, line.
  std::string text() const;

 private:
  constexpr VEXSourceLocation(const char* function, const char* file, std::uint32_t line)
      : function_(function), file_(file), line_(line) {}

  const char* function_;
  const char* file_;
  std::uint32_t line_;
};
