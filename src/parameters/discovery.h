// Discovery of an opened camera at setup: the host's parameter table, the
// image-format descriptors and the geometry copy in the camera's record, the
// start-up trigger mode, and the slot marked attached.
#pragma once

#include <cstdint>

#include "tavro/tavro_host.h"

namespace tavro::camera {
class OxelCamera;
}

namespace tavro::parameters {

// Camera `number`'s slot already holds its opened camera object and its
// record the key. Answers 0; exceptions of the operations it calls pass on.
int32_t DiscoverParameters(SystemRecord& system, int32_t number);

// "ExposureAuto", "GainAuto", "BalanceWhiteAuto", "BlackLevelAuto" set to
// "Off", each on its own: a camera lacking one skips it.
void DisableAutoFeatures(camera::OxelCamera& camera);

// Strobe asked for once a camera is attached: on, no delay, this duration.
inline constexpr int32_t kStartupStrobeDuration = 5000;

// The slot values the plug-in writes at setup and at every attach but never
// reads: the five doubles from offset 16 and the 64-bit value at 136.
void WriteSlotHostValues(CameraSlot& slot);

// The record, slot and map values of a camera just attached, its camera
// object in the slot: colour flags, sensor size, attached and enabled, the
// slot's fixed host values, its own number in iCamNum and aiCamIndex.
void MarkCameraAttached(SystemRecord& system, int32_t number);

}  // namespace tavro::parameters
