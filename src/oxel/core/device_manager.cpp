#include "oxel/core/device_manager.h"

#include <algorithm>
#include <future>
#include <optional>
#include <sstream>

#include "oxel/core/device.h"
#include "oxel/core/library.h"

namespace oxel::core {
namespace {

constexpr const char* kNotInitializedText =
    "Oxel API library not initialized. Call oxel::Library::Initialize() / OXEL_C_ABI_PREFIX "
    "OXEL_InitializeLibrary() before anything else.";

// What one system's or interface's update found and lost.
template <typename Found>
struct Discovery {
  std::vector<std::shared_ptr<Found>> found;
  std::vector<std::string> lostKeys;
};

// The system side of an update: interfaces are found and lost. A lost
// interface is known to the manager by the key of the interface opened from
// its descriptor.
struct SystemSide {
  using Owner = System;
  using Found = Interface;
  static constexpr const char* kErrorPrefix = "[System - ";

  static std::unordered_map<std::string, std::string> KnownKeys(System& system) {
    std::unordered_map<std::string, std::string> keys;
    for (const auto& descriptor : system.InterfaceDescriptors()) {
      if (auto opened = descriptor->OpenedInterface()) {
        keys.emplace(descriptor->ID(), opened->ID());
      }
    }
    return keys;
  }
  static OXEL_CALLBACK_HANDLE RegisterFound(System& system, auto callback) {
    return system.RegisterInterfaceFoundCallback(std::move(callback));
  }
  static OXEL_CALLBACK_HANDLE RegisterLost(System& system, auto callback) {
    return system.RegisterInterfaceLostCallback(std::move(callback));
  }
  static void UnregisterFound(System& system, OXEL_CALLBACK_HANDLE handle) {
    system.UnregisterInterfaceFoundCallback(handle);
  }
  static void UnregisterLost(System& system, OXEL_CALLBACK_HANDLE handle) {
    system.UnregisterInterfaceLostCallback(handle);
  }
  static void Update(System& system, uint64_t timeoutMs) { system.UpdateInterfaces(timeoutMs); }
};

// The interface side: devices are found and lost, known by descriptor key.
struct InterfaceSide {
  using Owner = Interface;
  using Found = DeviceDescriptor;
  static constexpr const char* kErrorPrefix = "[Interface - ";

  static std::unordered_map<std::string, std::string> KnownKeys(Interface& interfaceObject) {
    std::unordered_map<std::string, std::string> keys;
    for (const auto& descriptor : interfaceObject.DeviceDescriptors()) {
      keys.emplace(descriptor->ID(), descriptor->ID());
    }
    return keys;
  }
  static OXEL_CALLBACK_HANDLE RegisterFound(Interface& interfaceObject, auto callback) {
    return interfaceObject.RegisterDeviceFoundCallback(std::move(callback));
  }
  static OXEL_CALLBACK_HANDLE RegisterLost(Interface& interfaceObject, auto callback) {
    return interfaceObject.RegisterDeviceLostCallback(std::move(callback));
  }
  static void UnregisterFound(Interface& interfaceObject, OXEL_CALLBACK_HANDLE handle) {
    interfaceObject.UnregisterDeviceFoundCallback(handle);
  }
  static void UnregisterLost(Interface& interfaceObject, OXEL_CALLBACK_HANDLE handle) {
    interfaceObject.UnregisterDeviceLostCallback(handle);
  }
  static void Update(Interface& interfaceObject, uint64_t timeoutMs) {
    interfaceObject.UpdateDevices(timeoutMs);
  }
};

// One update task: temporary found and lost callbacks around the C update
// call. Failures of the family are reported from this thread and end the task
// with what it collected; anything else travels to the waiting update.
template <typename Side, typename OnFound>
Discovery<typename Side::Found> Discover(const std::shared_ptr<typename Side::Owner>& owner,
                                         uint64_t timeoutMs, OnFound onFound,
                                         const DeviceManager::ErrorCallback& onError) {
  // Shared with the callbacks, so that a notification arriving after a failed
  // unregistration lands here rather than in a finished task's frame.
  struct Collected {
    std::mutex mutex;
    Discovery<typename Side::Found> result;
  };
  auto collected = std::make_shared<Collected>();
  try {
    // Only what was known before this update can be lost by it.
    auto knownKeys = Side::KnownKeys(*owner);
    const auto foundHandle = Side::RegisterFound(*owner, [collected, onFound](const auto& found) {
      auto opened = onFound(found);
      std::lock_guard lock(collected->mutex);
      collected->result.found.push_back(std::move(opened));
    });
    std::optional<OXEL_CALLBACK_HANDLE> lostHandle;
    const auto unregister = [&] {
      try {
        Side::UnregisterFound(*owner, foundHandle);
      } catch (const Exception&) {  // the update's own outcome is what counts
      }
      try {
        if (lostHandle) {
          Side::UnregisterLost(*owner, *lostHandle);
        }
      } catch (const Exception&) {
      }
    };
    try {
      lostHandle = Side::RegisterLost(
          *owner, [collected, knownKeys = std::move(knownKeys)](const std::string& key) {
            if (const auto known = knownKeys.find(key); known != knownKeys.end()) {
              std::lock_guard lock(collected->mutex);
              collected->result.lostKeys.push_back(known->second);
            }
          });
      Side::Update(*owner, timeoutMs);
    } catch (...) {
      unregister();
      throw;
    }
    unregister();
  } catch (const Exception& error) {
    if (onError) {
      onError(Side::kErrorPrefix + owner->ID() + "]: " + error.what());
    }
  }
  std::lock_guard lock(collected->mutex);
  return collected->result;
}

// Starts one task per owner and gathers the results in start order.
template <typename Side, typename OnFound>
Discovery<typename Side::Found> DiscoverAll(
    const std::vector<std::shared_ptr<typename Side::Owner>>& owners, uint64_t timeoutMs,
    const OnFound& onFound, const DeviceManager::ErrorCallback& onError) {
  std::vector<std::future<Discovery<typename Side::Found>>> tasks;
  tasks.reserve(owners.size());
  for (const auto& owner : owners) {
    tasks.push_back(std::async(std::launch::async, [&onFound, &onError, owner, timeoutMs] {
      return Discover<Side>(owner, timeoutMs, onFound, onError);
    }));
  }
  Discovery<typename Side::Found> all;
  for (auto& task : tasks) {
    auto result = task.get();
    all.found.insert(all.found.end(), result.found.begin(), result.found.end());
    all.lostKeys.insert(all.lostKeys.end(), result.lostKeys.begin(), result.lostKeys.end());
  }
  return all;
}

template <typename T>
std::vector<T> Concat(std::vector<T> first, const std::vector<T>& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

bool Contains(const std::vector<std::string>& keys, const std::string& key) {
  return std::find(keys.begin(), keys.end(), key) != keys.end();
}

// Removes the first entry with each lost key, then appends the new ones.
template <typename T>
void Merge(std::vector<std::shared_ptr<T>>& list, const std::vector<std::string>& lostKeys,
           const std::vector<std::shared_ptr<T>>& added) {
  for (const auto& key : lostKeys) {
    const auto entry =
        std::find_if(list.begin(), list.end(), [&](const auto& item) { return item->ID() == key; });
    if (entry != list.end()) {
      list.erase(entry);
    }
  }
  list.insert(list.end(), added.begin(), added.end());
}

}  // namespace

DeviceManager& DeviceManager::Instance() {
  static DeviceManager instance;
  return instance;
}

DeviceManager::DeviceManager() {
  if (!Library::IsInitialized()) {
    throw NotInitializedException(kNotInitializedText);
  }
}

void DeviceManager::AddProducerLibrary(const std::string& path) {
  std::lock_guard lock(pathMutex_);
  pendingPaths_.push_back(path);
}

std::vector<std::shared_ptr<System>> DeviceManager::OpenNewSystems(
    const std::vector<std::string>& paths, const ErrorCallback& onError) {
  std::vector<std::shared_ptr<System>> opened;
  for (const auto& path : paths) {
    if (producerLibraries_.contains(path)) {
      continue;
    }
    try {
      auto library = ProducerLibrary::Open(path);
      auto system = library->System();
      producerLibraries_.emplace(path, std::move(library));
      opened.push_back(std::move(system));
    } catch (const Exception& error) {
      if (onError) {
        onError("[CTI - " + path + "]: " + error.what());
      }
    }
  }
  return opened;
}

void DeviceManager::Update(UpdatePolicy policy, const ErrorCallback& onError) {
  std::lock_guard updateLock(updateMutex_);

  std::vector<std::string> paths;
  if (policy == UpdatePolicy::ScanEnvironment) {
    paths = FindProducerLibraries();
  }
  {
    std::lock_guard lock(pathMutex_);
    paths.insert(paths.end(), pendingPaths_.begin(), pendingPaths_.end());
    pendingPaths_.clear();
  }
  const auto newSystems = OpenNewSystems(paths, onError);

  const auto interfaces = DiscoverAll<SystemSide>(
      Concat(Systems(), newSystems), interfaceUpdateTimeoutMs_,
      [](const std::shared_ptr<InterfaceDescriptor>& descriptor) {
        return descriptor->OpenInterface();
      },
      onError);

  auto devices = DiscoverAll<InterfaceSide>(
      Concat(Interfaces(), interfaces.found), deviceUpdateTimeoutMs_,
      [this](const std::shared_ptr<DeviceDescriptor>& descriptor) {
        descriptor->RegisterDeviceOpenedCallback(
            [this](const std::shared_ptr<Device>& device) { TrackOpenedDevice(device); });
        return descriptor;
      },
      onError);

  for (const auto& system : newSystems) {
    systemFound_.Invoke(system);
  }
  for (const auto& interfaceObject : interfaces.found) {
    interfaceFound_.Invoke(interfaceObject);
  }
  for (const auto& key : interfaces.lostKeys) {
    interfaceLost_.Invoke(key);
  }
  for (const auto& descriptor : devices.found) {
    deviceFound_.Invoke(descriptor);
  }

  if (!interfaces.lostKeys.empty()) {
    std::lock_guard lock(deviceMutex_);
    for (const auto& descriptor : devices_) {
      const std::string key = descriptor->ID();
      if (Contains(interfaces.lostKeys, descriptor->ParentInterface()->ID()) &&
          !Contains(devices.lostKeys, key)) {
        devices.lostKeys.push_back(key);
      }
    }
  }
  for (const auto& key : devices.lostKeys) {
    deviceLost_.Invoke(key);
  }

  std::lock_guard systemLock(systemMutex_);
  std::lock_guard interfaceLock(interfaceMutex_);
  std::lock_guard deviceLock(deviceMutex_);
  systems_.insert(systems_.end(), newSystems.begin(), newSystems.end());
  Merge(interfaces_, interfaces.lostKeys, interfaces.found);
  Merge(devices_, devices.lostKeys, devices.found);
}

std::vector<std::shared_ptr<System>> DeviceManager::Systems() const {
  std::lock_guard lock(systemMutex_);
  return systems_;
}

std::vector<std::shared_ptr<Interface>> DeviceManager::Interfaces() const {
  std::lock_guard lock(interfaceMutex_);
  return interfaces_;
}

std::vector<std::shared_ptr<DeviceDescriptor>> DeviceManager::Devices() const {
  std::lock_guard lock(deviceMutex_);
  return devices_;
}

void DeviceManager::Reset(bool forced) {
  std::lock_guard updateLock(updateMutex_);
  if (!forced) {
    std::lock_guard lock(openDeviceMutex_);
    size_t count = 0;
    std::string keys;
    for (const auto& entry : openDevices_) {
      if (!entry.device.expired()) {
        ++count;
        keys += entry.key + " ";
      }
    }
    if (count != 0) {
      throw InternalErrorException(
          "Can't reset the device manager while there are devices open. The following devices (" +
          std::to_string(count) + ") are open: " + keys);
    }
  }
  {
    std::lock_guard systemLock(systemMutex_);
    std::lock_guard interfaceLock(interfaceMutex_);
    std::lock_guard deviceLock(deviceMutex_);
    for (const auto& descriptor : devices_) {
      deviceLost_.Invoke(descriptor->ID());
    }
    devices_.clear();
    for (const auto& interfaceObject : interfaces_) {
      interfaceLost_.Invoke(interfaceObject->ID());
    }
    interfaces_.clear();
    systems_.clear();
    producerLibraries_.clear();
  }
  std::lock_guard lock(pathMutex_);
  pendingPaths_.clear();
}

void DeviceManager::TrackOpenedDevice(const std::shared_ptr<Device>& device) {
  std::lock_guard lock(openDeviceMutex_);
  std::erase_if(openDevices_, [&](const OpenDevice& entry) {
    // A descriptor found twice carries the manager's callback twice.
    return entry.device.expired() || entry.device.lock() == device;
  });
  openDevices_.push_back({device, device->ID()});
}

CallbackHandle DeviceManager::RegisterSystemFoundCallback(SystemFoundCallback callback) {
  return systemFound_.Register(std::move(callback));
}
bool DeviceManager::UnregisterSystemFoundCallback(CallbackHandle handle) {
  return systemFound_.Unregister(handle);
}
CallbackHandle DeviceManager::RegisterInterfaceFoundCallback(InterfaceFoundCallback callback) {
  return interfaceFound_.Register(std::move(callback));
}
bool DeviceManager::UnregisterInterfaceFoundCallback(CallbackHandle handle) {
  return interfaceFound_.Unregister(handle);
}
CallbackHandle DeviceManager::RegisterInterfaceLostCallback(LostCallback callback) {
  return interfaceLost_.Register(std::move(callback));
}
bool DeviceManager::UnregisterInterfaceLostCallback(CallbackHandle handle) {
  return interfaceLost_.Unregister(handle);
}
CallbackHandle DeviceManager::RegisterDeviceFoundCallback(DeviceFoundCallback callback) {
  return deviceFound_.Register(std::move(callback));
}
bool DeviceManager::UnregisterDeviceFoundCallback(CallbackHandle handle) {
  return deviceFound_.Unregister(handle);
}
CallbackHandle DeviceManager::RegisterDeviceLostCallback(LostCallback callback) {
  return deviceLost_.Register(std::move(callback));
}
bool DeviceManager::UnregisterDeviceLostCallback(CallbackHandle handle) {
  return deviceLost_.Unregister(handle);
}

}  // namespace oxel::core
