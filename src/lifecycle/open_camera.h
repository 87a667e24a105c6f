// Opening a bound camera: device, feature map, data stream with its queued
// buffers, the default user set, continuous acquisition triggered on exposure
// start, then the plug-in's defaults (pixel format, exposure, gain, format
// list, full-sensor AOI, software trigger).
#pragma once

namespace tavro::camera {
class OxelCamera;
}

namespace tavro::lifecycle {

// The camera's descriptor must be bound. False when the camera cannot be
// used; the caller then destroys the object.
bool OpenCamera(camera::OxelCamera& camera);

}  // namespace tavro::lifecycle
