// The camera object of a slot. The host record holds it as a plain pointer
// (CameraSlot.pCamera); the plug-in owns it, so ownership passes through
// that pointer: adopted when a camera is attached, taken back when it is
// destroyed.
#pragma once

#include <memory>
#include <mutex>
#include <unordered_set>

#include "camera/oxel_camera.h"
#include "tavro/tavro_host.h"

namespace tavro::host_interface {

namespace detail {
// Every camera object the plug-in has put into a slot and not taken back.
struct OwnedCameras {
  std::mutex lock;
  std::unordered_set<const void*> cameras;
};
inline OwnedCameras& Owned() {
  static OwnedCameras owned;
  return owned;
}
}  // namespace detail

inline camera::OxelCamera* CameraOf(const CameraSlot& slot) {
  return static_cast<camera::OxelCamera*>(slot.pCamera);
}

// The slot must hold no camera, or one that something else still owns.
inline void AdoptCamera(CameraSlot& slot, std::unique_ptr<camera::OxelCamera> camera) {
  if (camera) {
    std::lock_guard lock(detail::Owned().lock);
    detail::Owned().cameras.insert(camera.get());
  }
  slot.pCamera = camera.release();
}

// Empties the slot; the caller owns the camera (null when there was none).
inline std::unique_ptr<camera::OxelCamera> TakeCamera(CameraSlot& slot) {
  std::unique_ptr<camera::OxelCamera> camera(CameraOf(slot));
  slot.pCamera = nullptr;
  std::lock_guard lock(detail::Owned().lock);
  detail::Owned().cameras.erase(camera.get());
  return camera;
}

// True when the slot holds a camera object that the plug-in put there and
// still owns. A record a host hands in may hold anything in pCamera.
inline bool HoldsOwnedCamera(const CameraSlot& slot) {
  std::lock_guard lock(detail::Owned().lock);
  return slot.pCamera != nullptr && detail::Owned().cameras.contains(slot.pCamera);
}

// True while any camera object the plug-in put into a slot still exists.
inline bool AnyOwnedCamera() {
  std::lock_guard lock(detail::Owned().lock);
  return !detail::Owned().cameras.empty();
}

}  // namespace tavro::host_interface
