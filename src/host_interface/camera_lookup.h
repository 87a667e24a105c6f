// Turning a host image into the camera number that takes it, and the
// questions every entry point asks about a camera number.
#pragma once

#include <cstdint>

#include "tavro/tavro_host.h"

namespace tavro::host_interface {

inline constexpr int32_t kNoCamera = -1;

// The camera number (0 to 15) that the image's host camera id maps to
// through aiCamIndex, or kNoCamera: for an id outside 0 to 15, a map entry
// outside 0 to 15 (-1 in particular), or an image without a camera object.
int32_t FindCameraNumber(const SystemRecord& system, const CamImage& image);

inline bool IsCameraNumber(int32_t number) {
  return number >= 0 && number < TAVRO_MAX_CAMERAS;
}

// A number outside 0 to 15 counts as not attached.
bool IsAttached(const SystemRecord& system, int32_t number);

// True for a record that setup has completed.
inline bool HasSystemMagic(const SystemRecord* system) {
  return system != nullptr && system->lMagic == TAVRO_SYSTEM_MAGIC;
}

inline bool HasImageMagic(const CamImage* image) {
  return image != nullptr && image->lMagic == TAVRO_IMAGE_MAGIC;
}

}  // namespace tavro::host_interface
