// Attaching and detaching a camera number. A camera keeps its number, its
// camera record (key, formats, parameters) and its map entry across a
// detach; only its camera object goes. Re-attach finds the camera again by
// its key and opens a new camera object for it.
#pragma once

#include <cstdint>

#include "tavro/tavro_host.h"

namespace tavro::lifecycle {

// -1 for a number outside 0 to 15, a null record or a slot that is not
// attached (nothing printed); otherwise destroys the camera object, marks
// the slot detached and answers 0. Leaves the record's live fields, the
// acquisition table and aiCamIndex alone.
int32_t DetachCamera(SystemRecord* system, int32_t number);

// -1 for a number outside 0 to 15, a null record or a slot that is already
// attached; otherwise the result of re-attaching the camera.
int32_t AttachCamera(SystemRecord* system, int32_t number);

// The caller has checked that the number is in 0 to 15 and the slot is not
// attached. 0 once the camera is open and the slot attached, else -1.
int32_t _kxTavroReattachAndInit(SystemRecord* system, int32_t number);

}  // namespace tavro::lifecycle
