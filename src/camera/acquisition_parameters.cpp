#include "camera/acquisition_parameters.h"

#include <array>

#include "camera/oxel_camera.h"
#include "host_interface/acquisition_table.h"
#include "host_interface/shared_fields.h"
#include "host_interface/slot_camera.h"

namespace tavro::camera {
namespace {

// A row's camera operation: true when the camera took the value.
using Setter = bool (*)(OxelCamera& camera, int32_t value);

bool Sharpness(OxelCamera& c, int32_t v) {
  return c.SetSharpness(v);
}
bool Gamma(OxelCamera& c, int32_t v) {
  return c.SetGamma(v);
}
bool BlackLevel(OxelCamera& c, int32_t v) {
  return c.SetBlackLevel(v);
}
bool Gain(OxelCamera& c, int32_t v) {
  return c.SetGain(v);
}
bool PixelClock(OxelCamera& c, int32_t v) {
  return c.SetPixelClock(v);
}
bool Exposure(OxelCamera& c, int32_t v) {
  return c.SetExposure(v);
}
bool Focus(OxelCamera& c, int32_t v) {
  return c.SetFocus(v);
}
bool Zoom(OxelCamera& c, int32_t v) {
  return c.SetZoom(v);
}
bool Throughput(OxelCamera& c, int32_t v) {
  return c.SetThroughputLimit(v);
}

// Indexed by parameter row; null: the camera has no such control, and the
// value counts as applied.
constexpr std::array<Setter, TAVRO_NUM_PARAMS> kSetters = {
    nullptr, nullptr, nullptr, nullptr, Sharpness,  Gamma,    nullptr, nullptr, BlackLevel, nullptr,
    Gain,    nullptr, nullptr, nullptr, PixelClock, Exposure, Focus,   Zoom,    Throughput};

int32_t Clamp(const ParameterEntry& entry) {
  int32_t value = entry.iCurrent;
  if (value < entry.iMinimum) value = entry.iMinimum;
  if (value > entry.iMaximum) value = entry.iMaximum;
  return value;
}

void ApplyAoi(const CamImage& image, OxelCamera& camera, SystemRecord& system) {
  bool applied;
  if (image.yAoi != 0) {
    // The fitting rounds, clamps and cuts the rectangle to the sensor, so an
    // empty, inverted or outside rectangle reaches the camera as a valid one.
    applied = camera.ApplyRequestedAoi(
        {image.iAoiLeft, image.iAoiTop, image.iAoiRight, image.iAoiBottom});
  } else {
    applied = camera.ApplyFullAoi();
  }
  if (!applied) system.lError = -1;
}

}  // namespace

void ApplyAcquisitionParameters(CamImage* image, SystemRecord* system, int32_t number) {
  CameraRecord& record = system->tCam[number];
  CameraSlot& slot = system->tSlot[number];
  OxelCamera* camera = host_interface::CameraOf(slot);
  if (camera == nullptr) {
    system->lError = -1;
  } else {
    ApplyAoi(*image, *camera, *system);
  }

  bool exposureTouched = false;
  for (int32_t row = 0; row < TAVRO_NUM_PARAMS; ++row) {
    ParameterEntry& entry = record.tParam[row];
    if (entry.ySupported == 0) continue;
    if (entry.iCurrent == slot.aiApplied[row] && slot.yReapply == 0) continue;
    const int32_t value = Clamp(entry);
    entry.iCurrent = value;
    // Recorded before the camera is asked, so that a refused value is not
    // sent again and again.
    slot.aiApplied[row] = value;
    const Setter setter = kSetters[row];
    if (row == TAVRO_PARAM_PIXEL_CLOCK || row == TAVRO_PARAM_EXPOSURE) exposureTouched = true;
    if (setter == nullptr) continue;
    const bool taken = camera != nullptr && setter(*camera, value);
    if (!taken) {
      system->lError = -1;
    } else if (row == TAVRO_PARAM_EXPOSURE) {
      slot.dExposure = value;
    }
  }

  // Live is running on this camera only while its live start applies the
  // parameters; a single acquisition stopped live first, and another
  // camera's live run (another host thread's) is not this camera's.
  const bool live = host_interface::Load(system->yLive) != 0 &&
                    host_interface::Load(system->iLiveCamNum) == number;
  if (live) slot.dExposure = slot.aiApplied[TAVRO_PARAM_EXPOSURE];
  if (exposureTouched || live) {
    // A new pixel clock changes the exposure the camera can give; writing
    // the exposure last keeps it what the host asked for.
    if (camera != nullptr) camera->SetExposure(slot.dExposure);
    if (live) slot.dExposure = -1.0;
  }

  const CameraInfo* info = image->ptCamera;
  host_interface::tTavroCamAcq[number].yHwTrigger = info != nullptr ? info->yHwTrigger : 0;
  slot.yReapply = 0;
}

}  // namespace tavro::camera
