// The camera object of a slot. The host record holds it as a plain pointer
// (CameraSlot.pCamera); the plug-in owns it, so ownership passes through
// that pointer: adopted when a camera is attached, taken back when it is
// destroyed.
#pragma once

#include <memory>

#include "camera/oxel_camera.h"
#include "tavro/tavro_host.h"

namespace tavro::host_interface {

inline camera::OxelCamera* CameraOf(const CameraSlot& slot) {
  return static_cast<camera::OxelCamera*>(slot.pCamera);
}

// The slot must hold no camera, or one that something else still owns.
inline void AdoptCamera(CameraSlot& slot, std::unique_ptr<camera::OxelCamera> camera) {
  slot.pCamera = camera.release();
}

// Empties the slot; the caller owns the camera (null when there was none).
inline std::unique_ptr<camera::OxelCamera> TakeCamera(CameraSlot& slot) {
  std::unique_ptr<camera::OxelCamera> camera(CameraOf(slot));
  slot.pCamera = nullptr;
  return camera;
}

}  // namespace tavro::host_interface
