#include "lifecycle/camera_list.h"

#include <cstdio>
#include <cstring>
#include <vector>

#include "camera/oxel_camera.h"
#include "diagnostics/debug_output.h"
#include "oxel/core/device_descriptor.h"
#include "oxel/core/device_manager.h"
#include "oxel/core/library.h"

namespace tavro::lifecycle {
namespace {

using oxel::core::DeviceDescriptor;
using oxel::core::DeviceManager;
using Descriptors = std::vector<std::shared_ptr<DeviceDescriptor>>;

// Only the host's calling thread rebuilds or reads these.
Descriptors& ListedCameras() {
  static Descriptors listed;
  return listed;
}

Descriptors& DeviceListCopy() {
  static Descriptors devices;
  return devices;
}

bool IsUsable(const DeviceDescriptor& descriptor) {
  return descriptor.AccessStatus() == OXEL_DEVICE_ACCESS_STATUS_READ_WRITE &&
         descriptor.TLType() == "U3V" && descriptor.IsOpenable(OXEL_DEVICE_ACCESS_TYPE_CONTROL);
}

bool IsSelected(const std::shared_ptr<DeviceDescriptor>& descriptor, const char* selection) {
  const CameraKey key = MakeCameraKey(descriptor);
  return std::strstr(selection, key.get()) != nullptr;
}

}  // namespace

int32_t MakeListOfAllCameras(const char* selection) {
  Descriptors& listed = ListedCameras();
  listed.clear();
  UpdateDeviceList();
  const bool selecting = selection != nullptr && selection[0] != '\0';
  for (const auto& descriptor : DeviceListCopy()) {
    if (!IsUsable(*descriptor)) continue;
    if (selecting && !IsSelected(descriptor, selection)) continue;
    listed.push_back(descriptor);
  }
  return static_cast<int32_t>(listed.size());
}

int32_t UpdateDeviceList() {
  const std::vector<std::string> paths = oxel::core::FindProducerLibraries();
  Descriptors& devices = DeviceListCopy();
  devices.clear();
  if (paths.empty()) return 0;
  DeviceManager& manager = DeviceManager::Instance();
  for (const auto& path : paths) manager.AddProducerLibrary(path);
  manager.Update(DeviceManager::UpdatePolicy::AddedPathsOnly, ReportUpdateError);
  devices = manager.Devices();
  return static_cast<int32_t>(devices.size());
}

CameraKey MakeCameraKey(const std::shared_ptr<DeviceDescriptor>& descriptor) {
  const std::string model = descriptor->ModelName();
  const std::string user = descriptor->UserDefinedName();
  const char* separator = user.empty() ? "" : "-";
  const size_t size = model.size() + (user.empty() ? 0 : user.size() + 1) + 1;
  CameraKey key = std::make_unique<char[]>(size);
  std::snprintf(key.get(), size, "%s%s%s", model.c_str(), separator, user.c_str());
  return key;
}

CameraKey GetListedCameraKey(int32_t index) {
  const Descriptors& listed = ListedCameras();
  if (index < 0 || static_cast<size_t>(index) >= listed.size()) return nullptr;
  return MakeCameraKey(listed[static_cast<size_t>(index)]);
}

int32_t BindCamera(camera::OxelCamera* camera, const char* key) {
  for (const auto& descriptor : ListedCameras()) {
    CameraKey candidate = MakeCameraKey(descriptor);
    if (std::strcmp(candidate.get(), key) != 0) continue;
    camera->descriptor = descriptor;
    camera->cameraKey = candidate.get();
    return 0;
  }
  return -1;
}

void ReportUpdateError(const std::string& text) {
  diagnostics::StdoutLine("MakeListOfAllCameras: Update failed.");
  diagnostics::StdoutLine("  Error: ", text);
}

void ReleaseCameraLists() {
  ListedCameras().clear();
  DeviceListCopy().clear();
}

}  // namespace tavro::lifecycle
