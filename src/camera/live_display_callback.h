// The frame callback of a live acquisition: after each delivered frame it
// draws the host image into the host's live display buffer and tells the
// host's display that a new frame is there.
#pragma once

namespace tavro::camera {

// `entry` is the camera's acquisition table entry. Draws nothing, and does
// not touch the new-frame flag, once live acquisition has ended or moved to
// another image.
void LiveDisplayCallback(void* entry);

}  // namespace tavro::camera
