// A live frame's delivery into the host's planes together with its live
// display, reading the frame once where the display shows exactly the
// pixels being delivered.
#pragma once

#include "camera/live_display.h"
#include "camera/pixel_conversion.h"

namespace tavro::camera {

// The part of the display that can be drawn in the delivery's pass: where
// it shows the rows the delivery writes (the same plane memory and pitch)
// and shares no memory with the frame or the planes. Empty otherwise.
FusedDisplay FusableDisplay(const SourceFrame& frame, const HostPlanes& planes, CopyRegion region,
                            const LiveDisplayPlan& plan);

// The same planes and display as ConvertFrame followed by DrawLiveDisplay.
void DeliverLiveFrame(const SourceFrame& frame, const HostPlanes& planes, CopyRegion region,
                      LiveDisplayPlan plan);

}  // namespace tavro::camera
