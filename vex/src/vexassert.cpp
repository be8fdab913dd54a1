#include "vex/inc/vexassert.h"

#include <cstdio>
#include <cstdlib>

void vexAssertionFailed(const char* condition, const char* file, int line) noexcept {
  std::fprintf(stderr, "Assertion failed: %s (%s:%d)\n", condition, file, line);
  std::fflush(nullptr);
  std::abort();
}
