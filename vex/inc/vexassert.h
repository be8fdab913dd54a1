// Assertions are for mistakes of the engine itself, in every build. Nothing that a file, a mapping file
// or a caller of the exported interface can contain may reach one.
#pragma once

// Prints "Assertion failed: <condition> (<file>:<line>)" to standard error and stops the program.
[[noreturn]] void vexAssertionFailed(const char* condition, const char* file, int line) noexcept;

#define VEX_ASSERT(...) (static_cast<bool>(__VA_ARGS__) ? void(0) : vexAssertionFailed(#__VA_ARGS__, __FILE__, __LINE__))
