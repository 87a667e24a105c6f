#include "lifecycle/camera_list.h"

#include <cstdio>
#include <cstring>
#include <vector>

#include "camera/oxel_camera.h"
#include "diagnostics/debug_output.h"
#include "oxel/core/device_descriptor.h"
#include "oxel/core/device_manager.h"
#include "oxel/core/library.h"
#include "platform/annotated_mutex.h"

namespace tavro::lifecycle {
namespace {

using oxel::core::DeviceDescriptor;
using oxel::core::DeviceManager;
using Descriptors = std::vector<std::shared_ptr<DeviceDescriptor>>;
using Snapshot = std::shared_ptr<const Descriptors>;

// The listed cameras and the device list copy. Re-attaches on several host
// threads rebuild them at once while others look cameras up: each rebuild
// makes new lists and swaps them in, so a reader keeps the lists it took
// and nobody frees what another thread walks.
class CameraLists {
 public:
  Snapshot Listed() TAVRO_EXCLUDES(mutex_) {
    platform::MutexLock lock(mutex_);
    return listed_;
  }
  Snapshot Devices() TAVRO_EXCLUDES(mutex_) {
    platform::MutexLock lock(mutex_);
    return devices_;
  }
  void SetListed(Descriptors listed) TAVRO_EXCLUDES(mutex_) {
    auto snapshot = std::make_shared<const Descriptors>(std::move(listed));
    platform::MutexLock lock(mutex_);
    listed_.swap(snapshot);
    // The old list goes when `snapshot` does, after the lock.
  }
  void SetDevices(Snapshot devices) TAVRO_EXCLUDES(mutex_) {
    platform::MutexLock lock(mutex_);
    devices_.swap(devices);
  }

 private:
  platform::Mutex mutex_;
  Snapshot listed_ TAVRO_GUARDED_BY(mutex_) = std::make_shared<const Descriptors>();
  Snapshot devices_ TAVRO_GUARDED_BY(mutex_) = std::make_shared<const Descriptors>();
};

CameraLists& Lists() {
  static CameraLists lists;
  return lists;
}

platform::Mutex& ListingMutex() {
  static platform::Mutex mutex;
  return mutex;
}

bool IsUsable(const DeviceDescriptor& descriptor) {
  return descriptor.AccessStatus() == OXEL_DEVICE_ACCESS_STATUS_READ_WRITE &&
         descriptor.TLType() == "U3V" && descriptor.IsOpenable(OXEL_DEVICE_ACCESS_TYPE_CONTROL);
}

bool IsSelected(const std::shared_ptr<DeviceDescriptor>& descriptor, const char* selection) {
  const CameraKey key = MakeCameraKey(descriptor);
  return std::strstr(selection, key.get()) != nullptr;
}

// A fresh device update; its list becomes the device list copy and is
// answered as well, so that the caller lists from its own update even when
// another thread's update lands meanwhile.
Snapshot UpdateDevices() {
  const std::vector<std::string> paths = oxel::core::FindProducerLibraries();
  if (paths.empty()) {
    auto none = std::make_shared<const Descriptors>();
    Lists().SetDevices(none);
    return none;
  }
  DeviceManager& manager = DeviceManager::Instance();
  for (const auto& path : paths) manager.AddProducerLibrary(path);
  manager.Update(DeviceManager::UpdatePolicy::AddedPathsOnly, ReportUpdateError);
  auto devices = std::make_shared<const Descriptors>(manager.Devices());
  Lists().SetDevices(devices);
  return devices;
}

}  // namespace

ListingLock::ListingLock() {
  ListingMutex().lock();
}
ListingLock::~ListingLock() {
  ListingMutex().unlock();
}

int32_t MakeListOfAllCameras(const char* selection) {
  const bool selecting = selection != nullptr && selection[0] != '\0';
  Descriptors listed;
  // Held here: a range over the temporary's list would outlive it.
  const Snapshot devices = UpdateDevices();
  for (const auto& descriptor : *devices) {
    if (!IsUsable(*descriptor)) continue;
    if (selecting && !IsSelected(descriptor, selection)) continue;
    listed.push_back(descriptor);
  }
  const auto count = static_cast<int32_t>(listed.size());
  // Replaced whole, never emptied first: another thread's re-attach may be
  // looking its camera up in the list at this moment.
  Lists().SetListed(std::move(listed));
  return count;
}

int32_t UpdateDeviceList() {
  return static_cast<int32_t>(UpdateDevices()->size());
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
  const Snapshot listed = Lists().Listed();
  if (index < 0 || static_cast<size_t>(index) >= listed->size()) return nullptr;
  return MakeCameraKey((*listed)[static_cast<size_t>(index)]);
}

int32_t BindCamera(camera::OxelCamera* camera, const char* key) {
  const Snapshot listed = Lists().Listed();
  for (const auto& descriptor : *listed) {
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
  Lists().SetListed({});
  Lists().SetDevices(std::make_shared<const Descriptors>());
}

}  // namespace tavro::lifecycle
