#include "host_interface/camera_lookup.h"

#include "host_interface/shared_fields.h"

namespace tavro::host_interface {

int32_t FindCameraNumber(const SystemRecord& system, const CamImage& image) {
  // The host must give every image its camera object; one without counts as
  // having no camera rather than being read through.
  if (image.ptCamera == nullptr) return kNoCamera;
  const int32_t id = image.ptCamera->iCamId;  // sign-extended: -1 stays -1
  if (!IsCameraNumber(id)) return kNoCamera;
  const int32_t number = Load(system.aiCamIndex[id]);
  return IsCameraNumber(number) ? number : kNoCamera;
}

bool IsAttached(const SystemRecord& system, int32_t number) {
  return IsCameraNumber(number) && Load(system.tSlot[number].yAttached) != 0;
}

}  // namespace tavro::host_interface
