// Telling a camera where its next frames go: the acquisition entry takes the
// image's user value and starts acquiring, and the camera object learns the
// host's plane pointers, sizes and pitch.
#pragma once

#include <cstdint>

#include "camera/oxel_camera.h"
#include "tavro/tavro_host.h"

namespace tavro::camera {

// The entry of camera `number` becomes acquiring (its event reset) with the
// user value; the slot's camera object gets the image's planes.
void BindDestination(CamImage* image, SystemRecord* system, int32_t number, uint32_t userValue);

// The planes of the image as a destination, or one whose grey pointer is
// null when the primary plane is missing or unusable. Sizes are cut so that
// no write leaves a plane: a width above the pitch (rows would overlap and
// the last one overrun) is cut to the pitch; colour planes are dropped
// unless all three are present, with memory and a pitch at least the
// primary one (every plane advances by the primary pitch).
Destination DestinationOf(const CamImage& image);

}  // namespace tavro::camera
