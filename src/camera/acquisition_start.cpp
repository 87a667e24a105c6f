// Starting the camera's acquisition and firing its triggers.
#include <exception>
#include <stdexcept>

#include "camera/features.h"
#include "camera/oxel_camera.h"
#include "oxel/core/data_stream.h"
#include "parameters/trigger_mode.h"

namespace tavro::camera {
namespace {

bool IsGrabbing(oxel::core::DataStream* stream) {
  try {
    return stream != nullptr && stream->IsGrabbing();
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

bool OxelCamera::Start() {
  if (destination.grey == nullptr) return false;
  if (acquisitionStarted) {
    ReturnFinishedFrames();
    return true;
  }
  // What an earlier stop could not undo is undone first, so that the camera
  // starts from rest.
  if (restPending) restPending = !RestSteps(true, true, true);
  bool locked = false;
  bool streaming = false;
  try {
    if (!dataStream) throw std::runtime_error("Camera has no data stream");
    // Frames finished in an earlier run go back to the input pool.
    dataStream->Flush(OXEL_DATA_STREAM_FLUSH_MODE_ALL_TO_INPUT);
    WriteInteger(nodeMap, "TLParamsLocked", 1);
    locked = true;
    dataStream->StartAcquisition(OXEL_ACQUISITION_START_MODE_DEFAULT, OXEL_INFINITE_NUMBER);
    streaming = true;
    ExecuteCommand(nodeMap, "AcquisitionStart");
  } catch (const std::exception&) {
    // Undone, so that one refused step costs this acquisition only; a
    // stream an earlier stop could not end is stopped as well.
    restPending = !RestSteps(false, streaming || IsGrabbing(dataStream.get()), locked);
    return false;
  }
  acquisitionStarted = true;
  ledger.Restarted();
  ledger.Arm();
  return true;
}

void OxelCamera::ReturnFinishedFrames() {
  if (!dataStream) return;
  try {
    // Bounded by the buffers there are, so a camera that keeps filling them
    // cannot hold the request up.
    for (size_t left = dataStream->NumBuffersAnnounced();
         left > 0 && dataStream->NumBuffersAwaitDelivery() > 0; --left) {
      const auto buffer = dataStream->WaitForFinishedBuffer(0);
      if (const auto id = FrameIdOf(*buffer)) ledger.Passed(*id);
      dataStream->QueueBuffer(buffer);
    }
  } catch (const std::exception&) {
    // Whatever could not be taken back stays where it is; the wait that
    // follows reports a stream that no longer works.
  }
  ledger.Arm();
}

bool OxelCamera::ArmSoftwareTrigger() {
  if (!SetTriggerMode(parameters::TriggerModeSoftware, !acquisitionStarted)) return false;
  return Start();
}

bool OxelCamera::ArmHardwareTrigger() {
  if (!SetTriggerMode(parameters::TriggerModeLine0Rising, false)) return false;
  // Started afresh for every request: a pulse on the line before this point
  // must not give the frame, even one the camera is still reading out.
  Stop();
  return Start();
}

bool OxelCamera::FireSoftwareTrigger() {
  try {
    ExecuteCommand(nodeMap, "TriggerSoftware");
    ledger.Fired();
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
