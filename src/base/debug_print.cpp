#include "base/debug_print.h"

#include <cstdarg>
#include <cstdio>

namespace ipodctl {

std::atomic<uint8_t> debugFlag{0};

void debugPrint(const char* format, ...) {
  if (!isDebugging()) return;
  va_list arguments;
  va_start(arguments, format);
  // The analyzer overlooks va_start after a branch on an inline function.
  vprintf(format, arguments);  // NOLINT(clang-analyzer-valist.Uninitialized)
  va_end(arguments);
}

}  // namespace ipodctl
