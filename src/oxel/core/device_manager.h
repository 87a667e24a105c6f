// The process-wide device manager: opens one system per producer library,
// asks every system for its interfaces and every interface for its devices,
// and keeps the resulting lists. It also remembers which devices were opened
// through its descriptors, so that it refuses to reset under them.
#ifndef OXEL_CORE_DEVICE_MANAGER_H
#define OXEL_CORE_DEVICE_MANAGER_H

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "oxel/core/callback_list.h"
#include "oxel/core/device_descriptor.h"
#include "oxel/core/interface.h"
#include "oxel/core/producer_library.h"
#include "oxel/core/system.h"

namespace oxel::core {

class DeviceManager {
 public:
  enum class UpdatePolicy { ScanEnvironment = 0, AddedPathsOnly = 1 };
  // May be called from several worker threads at once.
  using ErrorCallback = std::function<void(const std::string&)>;
  using SystemFoundCallback = std::function<void(const std::shared_ptr<System>&)>;
  using InterfaceFoundCallback = std::function<void(const std::shared_ptr<Interface>&)>;
  using DeviceFoundCallback = std::function<void(const std::shared_ptr<DeviceDescriptor>&)>;
  using LostCallback = std::function<void(const std::string& key)>;

  // Built on first use; NotInitializedException (and no instance) while the
  // library is not started, so that a later call can try again.
  static DeviceManager& Instance();

  DeviceManager(const DeviceManager&) = delete;
  DeviceManager& operator=(const DeviceManager&) = delete;

  // Remembered until the next update opens it.
  void AddProducerLibrary(const std::string& path);
  // Opens the new producer libraries and refreshes every system and interface.
  // Failures of single producer libraries, systems and interfaces go to
  // `onError` (may be empty) and do not stop the update.
  void Update(UpdatePolicy policy, const ErrorCallback& onError);
  std::vector<std::shared_ptr<System>> Systems() const;
  std::vector<std::shared_ptr<Interface>> Interfaces() const;
  std::vector<std::shared_ptr<DeviceDescriptor>> Devices() const;
  // Forgets everything. Unless `forced`, refuses (InternalErrorException)
  // while a device opened through the manager's descriptors still exists.
  void Reset(bool forced);

  uint64_t InterfaceUpdateTimeout() const { return interfaceUpdateTimeoutMs_; }
  void SetInterfaceUpdateTimeout(uint64_t timeoutMs) { interfaceUpdateTimeoutMs_ = timeoutMs; }
  uint64_t DeviceUpdateTimeout() const { return deviceUpdateTimeoutMs_; }
  void SetDeviceUpdateTimeout(uint64_t timeoutMs) { deviceUpdateTimeoutMs_ = timeoutMs; }

  CallbackHandle RegisterSystemFoundCallback(SystemFoundCallback callback);
  bool UnregisterSystemFoundCallback(CallbackHandle handle);
  CallbackHandle RegisterInterfaceFoundCallback(InterfaceFoundCallback callback);
  bool UnregisterInterfaceFoundCallback(CallbackHandle handle);
  CallbackHandle RegisterInterfaceLostCallback(LostCallback callback);
  bool UnregisterInterfaceLostCallback(CallbackHandle handle);
  CallbackHandle RegisterDeviceFoundCallback(DeviceFoundCallback callback);
  bool UnregisterDeviceFoundCallback(CallbackHandle handle);
  CallbackHandle RegisterDeviceLostCallback(LostCallback callback);
  bool UnregisterDeviceLostCallback(CallbackHandle handle);

 private:
  struct OpenDevice {
    std::weak_ptr<Device> device;
    std::string key;
  };

  DeviceManager();
  std::vector<std::shared_ptr<System>> OpenNewSystems(const std::vector<std::string>& paths,
                                                      const ErrorCallback& onError);
  void TrackOpenedDevice(const std::shared_ptr<Device>& device);

  std::mutex updateMutex_;
  std::atomic<uint64_t> interfaceUpdateTimeoutMs_{100};
  std::atomic<uint64_t> deviceUpdateTimeoutMs_{300};
  std::mutex pathMutex_;
  std::vector<std::string> pendingPaths_;
  std::unordered_map<std::string, std::shared_ptr<ProducerLibrary>> producerLibraries_;
  mutable std::mutex systemMutex_;
  std::vector<std::shared_ptr<System>> systems_;
  mutable std::mutex interfaceMutex_;
  std::vector<std::shared_ptr<Interface>> interfaces_;
  mutable std::mutex deviceMutex_;
  std::vector<std::shared_ptr<DeviceDescriptor>> devices_;
  std::mutex openDeviceMutex_;
  std::vector<OpenDevice> openDevices_;
  CallbackList<std::shared_ptr<System>> systemFound_;
  CallbackList<std::shared_ptr<Interface>> interfaceFound_;
  CallbackList<std::string> interfaceLost_;
  CallbackList<std::shared_ptr<DeviceDescriptor>> deviceFound_;
  CallbackList<std::string> deviceLost_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_DEVICE_MANAGER_H
