// Starting the camera's acquisition and firing its triggers.
#include <exception>

#include "camera/features.h"
#include "camera/oxel_camera.h"
#include "oxel/core/data_stream.h"
#include "parameters/trigger_mode.h"

namespace tavro::camera {

bool OxelCamera::Start() {
  if (destination.grey == nullptr) return false;
  if (acquisitionStarted) return true;
  try {
    WriteInteger(nodeMap, "TLParamsLocked", 1);
    if (!dataStream) throw std::runtime_error("Camera has no data stream");
    dataStream->StartAcquisition(OXEL_ACQUISITION_START_MODE_DEFAULT, OXEL_INFINITE_NUMBER);
    ExecuteCommand(nodeMap, "AcquisitionStart");
  } catch (const std::exception&) {
    // A partly done start may leave the parameters locked; the next Stop
    // only unlocks them once a start has succeeded.
    return false;
  }
  acquisitionStarted = true;
  return true;
}

bool OxelCamera::ArmSoftwareTrigger() {
  if (!SetTriggerMode(parameters::TriggerModeSoftware, !acquisitionStarted)) return false;
  return Start();
}

bool OxelCamera::ArmHardwareTrigger() {
  if (!SetTriggerMode(parameters::TriggerModeLine0Rising, false)) return false;
  return Start();
}

bool OxelCamera::FireSoftwareTrigger() {
  try {
    ExecuteCommand(nodeMap, "TriggerSoftware");
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

bool OxelCamera::IsResponding() {
  if (!nodeMap) return false;
  try {
    ReadFloat(nodeMap, "ExposureTime");
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace tavro::camera
