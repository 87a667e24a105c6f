// The frame callback of a live acquisition: after each delivered frame it
// draws the host image into the host's live display buffer and tells the
// host's display that a new frame is there.
#pragma once

#include "camera/live_display.h"

namespace tavro::camera {

// What the callback draws for `entry` now; false when live acquisition has
// ended or moved to another image.
bool LiveDisplayOf(void* entry, LiveDisplaySource* source);

// Sets the host display's new-frame flag unless live acquisition has ended
// or moved to another image meanwhile.
void ReportLiveFrame(void* entry);

// `entry` is the camera's acquisition table entry: LiveDisplayOf, the
// drawing, then ReportLiveFrame. Draws nothing, and does not touch the
// new-frame flag, once live acquisition has ended or moved to another image.
void LiveDisplayCallback(void* entry);

}  // namespace tavro::camera
