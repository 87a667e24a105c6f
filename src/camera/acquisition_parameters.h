// Bringing a camera up to date with the host before an acquisition (single
// or live): the image's area of interest and every host parameter that
// changed since it was last written.
#pragma once

#include <cstdint>

#include "tavro/tavro_host.h"

namespace tavro::camera {

// Writes the requested AOI (or the full sensor when the image asks for
// none) and the changed parameters of camera `number`, all of them while
// the slot's yReapply is set. Requested values outside their range are
// clamped and written back into the parameter table. Failures do not stop
// anything: they leave -1 in the record's lError.
void ApplyAcquisitionParameters(CamImage* image, SystemRecord* system, int32_t number);

}  // namespace tavro::camera
