// No exception may leave an entry point: a C host cannot unwind it, and one
// that escapes ends the host process. Each entry point runs its work inside
// this guard, which reports the exception on standard error and answers the
// entry point's failure value.
#pragma once

#include <cstdint>
#include <exception>

namespace tavro::host_interface {

// Writes the text as one line on standard error; never throws.
void ReportEscapedException(const char* entryPoint, const char* text) noexcept;

template <typename Work>
int32_t RunGuarded(const char* entryPoint, int32_t failure, Work&& work) noexcept {
  try {
    return work();
  } catch (const std::exception& error) {
    ReportEscapedException(entryPoint, error.what());
  } catch (...) {
    ReportEscapedException(entryPoint, "unknown exception");
  }
  return failure;
}

}  // namespace tavro::host_interface
