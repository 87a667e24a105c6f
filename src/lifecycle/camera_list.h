// The usable cameras: USB3 Vision devices that can be opened with control
// access, optionally only those whose key occurs in the host's selection
// text. Setup opens cameras from this list by index; re-attach looks one up
// again by its key. The list lives until the next rebuild.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace oxel::core {
class DeviceDescriptor;
}

namespace tavro::camera {
class OxelCamera;
}

namespace tavro::lifecycle {

// A key text owned by whoever asked for it.
using CameraKey = std::unique_ptr<char[]>;

// Held from a rebuild of the listed cameras until the camera wanted is bound
// to one of them, so that another thread's rebuild (from an update made
// before this caller's own detach, say) does not replace the list between.
class ListingLock {
 public:
  ListingLock();
  ~ListingLock();
  ListingLock(const ListingLock&) = delete;
  ListingLock& operator=(const ListingLock&) = delete;
};

// Rebuilds the listed cameras from a fresh device update; the number listed.
// The selection is in force when it is neither null nor empty.
int32_t MakeListOfAllCameras(const char* selection);

// Hands every producer library found to the device manager, updates it and
// takes a copy of its device list; the number of devices in the copy.
int32_t UpdateDeviceList();

// The model name, then "-" and the user-defined name when that is not empty.
CameraKey MakeCameraKey(const std::shared_ptr<oxel::core::DeviceDescriptor>& descriptor);

// The key of listed camera `index`; null when there is no such camera.
CameraKey GetListedCameraKey(int32_t index);

// Points the camera at the listed camera whose key equals `key` and gives it
// that key: 0, or -1 (camera unchanged) when no listed camera has it.
int32_t BindCamera(camera::OxelCamera* camera, const char* key);

// The device update's error report; may run on several threads at once.
void ReportUpdateError(const std::string& text);

// Lets go of both lists, so that no descriptor outlives the camera library.
void ReleaseCameraLists();

}  // namespace tavro::lifecycle
