// The answers of the entry points and of the work behind them: 0 or -1, and
// the status word that says why.
#pragma once

#include <cstdint>

namespace tavro::host_interface {

inline constexpr int32_t kSuccess = 0;
inline constexpr int32_t kFailure = -1;

// Leaves `bits` in the host's status word and answers failure.
inline int32_t Fail(uint32_t* status, uint32_t bits) {
  *status = bits;
  return kFailure;
}

}  // namespace tavro::host_interface
