// Re-mapping the host's camera ids and bringing the attached cameras in
// line with a wanted configuration.
#pragma once

#include "tavro/tavro_host.h"

namespace tavro::lifecycle {

// `wanted` holds 16 records of which only szCamKey, iCamNum and yEnabled
// are read: record i wants camera i attached (yEnabled) and host id i mapped
// to camera iCamNum. Running live and single acquisitions are ended first.
// Any failure ends the work at once, keeping what was done before it; the
// host is told nothing either way.
void OrderCameras(SystemRecord& system, const CameraRecord* wanted);

}  // namespace tavro::lifecycle
