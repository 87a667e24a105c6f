#include "lifecycle/open_camera.h"

#include <exception>

#include "camera/features.h"
#include "camera/oxel_camera.h"
#include "diagnostics/debug_output.h"
#include "oxel/core/data_stream.h"
#include "oxel/core/data_stream_descriptor.h"
#include "oxel/core/device.h"
#include "oxel/core/device_descriptor.h"
#include "oxel/core/remote_device.h"
#include "parameters/trigger_mode.h"

namespace tavro::lifecycle {
namespace {

enum class Connection { kOpened, kUnusable };

// Device, feature map, data stream and buffers. A failure part-way is not
// fatal: whether the camera is usable is decided by the pixel format and
// trigger steps that follow.
Connection Connect(camera::OxelCamera& camera) {
  using camera::ExecuteCommand;
  using camera::SelectEntry;
  using camera::WriteInteger;
  try {
    if (!camera.descriptor) throw std::runtime_error("Camera is not bound to a device");
    camera.device = camera.descriptor->OpenDevice(OXEL_DEVICE_ACCESS_TYPE_CONTROL);
    if (!camera.device || camera.device->DataStreams().empty()) return Connection::kUnusable;
    camera.nodeMap = camera.device->RemoteDevice()->NodeMaps().at(0);
    WriteInteger(camera.nodeMap, "TLParamsLocked", 0);
    camera.dataStream = camera.device->DataStreams().front()->OpenDataStream();
    const size_t count = camera.dataStream->NumBuffersAnnouncedMinRequired();
    if (camera.dataStream->DefinesPayloadSize()) {
      camera.payloadSize = camera.dataStream->PayloadSize();
    } else {
      camera.payloadSize = static_cast<uint64_t>(
          camera::Feature<oxel::core::nodes::IntegerNode>(camera.nodeMap, "PayloadSize")->Value());
    }
    SelectEntry(camera.nodeMap, "UserSetSelector", "Default");
    ExecuteCommand(camera.nodeMap, "UserSetLoad");
    SelectEntry(camera.nodeMap, "AcquisitionMode", "Continuous");
    SelectEntry(camera.nodeMap, "TriggerSelector", "ExposureStart");
    for (size_t k = 0; k < count; ++k) {
      camera.dataStream->QueueBuffer(
          camera.dataStream->AllocAndAnnounceBuffer(camera.payloadSize, nullptr));
    }
  } catch (const std::exception&) {
    // Deliberately quiet: the remaining set-up decides.
  }
  return Connection::kOpened;
}

}  // namespace

bool OpenCamera(camera::OxelCamera& camera) {
  if (Connect(camera) == Connection::kUnusable) return false;

  camera.widthMax = camera.ReadWidthMax();
  camera.heightMax = camera.ReadHeightMax();

  camera.isColour = camera.SupportsBgr8();
  if (!(camera.isColour ? camera.SetBgr8() : camera.SetMono8())) {
    diagnostics::StderrLine("OpenCamera: Cannot set correct color.");
    return false;
  }

  // The gain range is not known yet: this writes the gain's minimum.
  const int32_t gain = camera.GetGainDefault();
  camera.SetExposure(10.0);
  camera.SetGain(gain);
  camera.BuildFormatList();
  camera.ApplyFullAoi();

  if (!camera.SetTriggerMode(parameters::TriggerModeSoftware, true)) {
    diagnostics::StderrLine("OpenCamera: Cannot set trigger mode.");
    return false;
  }
  return true;
}

}  // namespace tavro::lifecycle
