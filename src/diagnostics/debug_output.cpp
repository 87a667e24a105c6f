#include "diagnostics/debug_output.h"

#include <cstdarg>
#include <cstdio>

namespace tavro::diagnostics {

void DebugPrintf(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::vprintf(format, arguments);
  va_end(arguments);
}

void FlushStdout() {
  // Line output goes through std::cout and DebugPrintf through C stdio; both
  // are synchronised (the default), so flushing both keeps their order.
  std::cout.flush();
  std::fflush(stdout);
}

}  // namespace tavro::diagnostics
