// The four trigger configurations and the enumeration writes that select
// each of them on a camera (the trigger acts on exposure start).
#pragma once

#include <cstdint>
#include <span>

namespace tavro::parameters {

enum TriggerMode : int32_t {
  TriggerModeOff = 0,
  TriggerModeSoftware = 1,
  TriggerModeLine0Falling = 2,
  TriggerModeLine0Rising = 3,
};

struct EnumerationWrite {
  const char* feature;
  const char* entry;
};

// The writes for a mode, in the order they must reach the camera
// ("TriggerMode", "TriggerSource", "TriggerActivation"); empty for a value
// outside the four modes.
std::span<const EnumerationWrite> TriggerModeWrites(int32_t mode);

}  // namespace tavro::parameters
