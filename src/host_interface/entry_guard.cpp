#include "host_interface/entry_guard.h"

#include "diagnostics/debug_output.h"

namespace tavro::host_interface {

void ReportEscapedException(const char* entryPoint, const char* text) noexcept {
  try {
    diagnostics::StderrLine(entryPoint, ": ", text);
  } catch (...) {
    // Standard error is unusable; the failure result still reaches the host.
  }
}

}  // namespace tavro::host_interface
