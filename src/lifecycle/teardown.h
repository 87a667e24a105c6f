// Teardown: every camera detached, the acquisition table's events closed,
// the selection copy freed, the camera library closed. The magic, iNumCams,
// aiCamIndex and the camera records stay as they are.
#pragma once

#include <cstdint>

#include "tavro/tavro_host.h"

namespace tavro::lifecycle {

// The record must not be null. Answers 0.
int32_t TearDown(SystemRecord& system);

}  // namespace tavro::lifecycle
