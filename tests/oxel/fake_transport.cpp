#include "oxel/fake_transport.h"

#include <memory>
#include <mutex>
#include <utility>

namespace fake_oxel {
namespace {

struct Registration {
  std::string owner;
  bool forLost;
  void* function;
  void* context;
};

// Shared by every task thread of an update.
struct World {
  std::mutex mutex;
  std::map<std::string, uintptr_t> producers;  // path -> system number
  std::map<uintptr_t, std::string> openedPaths;
  std::map<std::string, int> openCounts;
  std::map<std::string, std::vector<Event>> scripts;
  std::map<std::string, OXEL_RETURN_CODE> failures;
  std::map<uintptr_t, Registration> callbacks;
  uintptr_t lastCallback = 0;
  std::vector<uint64_t> timeouts;
  std::vector<std::string> releases;
};
std::unique_ptr<World> g_world;

std::string Name(const char* prefix, uintptr_t number) {
  return prefix + std::to_string(number);
}

OXEL_RETURN_CODE Fail(OXEL_RETURN_CODE code, const std::string& text) {
  SetLastError(code, text);
  return code;
}

OXEL_RETURN_CODE Released(const std::string& what) {
  std::lock_guard lock(g_world->mutex);
  g_world->releases.push_back(what);
  return OXEL_RETURN_CODE_SUCCESS;
}

template <const char* Prefix, typename Handle>
OXEL_RETURN_CODE WriteName(Handle handle, char* text, size_t* size) {
  return WriteText(Name(Prefix, HandleNumber(handle)), text, size);
}

template <const char* Prefix, typename Handle>
OXEL_RETURN_CODE Close(Handle handle) {
  return Released("Close " + Name(Prefix, HandleNumber(handle)));
}

// The same number serves as descriptor and opened object.
template <typename From, typename To>
OXEL_RETURN_CODE Open(From descriptor, To* out) {
  *out = MakeHandle<To>(HandleNumber(descriptor));
  return OXEL_RETURN_CODE_SUCCESS;
}

template <const char* Prefix, bool ForLost, typename Handle, typename Function>
OXEL_RETURN_CODE Register(Handle owner, Function function, void* context,
                          OXEL_CALLBACK_HANDLE* out) {
  std::lock_guard lock(g_world->mutex);
  const uintptr_t handle = ++g_world->lastCallback;
  g_world->callbacks[handle] = {Name(Prefix, HandleNumber(owner)), ForLost,
                                reinterpret_cast<void*>(function), context};
  *out = MakeHandle<OXEL_CALLBACK_HANDLE>(handle);
  return OXEL_RETURN_CODE_SUCCESS;
}

template <typename Handle>
OXEL_RETURN_CODE Unregister(Handle, OXEL_CALLBACK_HANDLE handle) {
  std::lock_guard lock(g_world->mutex);
  g_world->callbacks.erase(HandleNumber(handle));
  return OXEL_RETURN_CODE_SUCCESS;
}

// Delivers the owner's scripted events to its callbacks, outside the lock
// (the callbacks call back into the library).
template <const char* Prefix, typename Handle, typename FoundFunction, typename Descriptor>
OXEL_RETURN_CODE Update(Handle ownerHandle, uint64_t timeoutMs) {
  const std::string owner = Name(Prefix, HandleNumber(ownerHandle));
  std::vector<Event> events;
  std::vector<Registration> registrations;
  {
    std::lock_guard lock(g_world->mutex);
    g_world->timeouts.push_back(timeoutMs);
    if (const auto failure = g_world->failures.find(owner); failure != g_world->failures.end()) {
      const OXEL_RETURN_CODE code = failure->second;
      g_world->failures.erase(failure);
      return Fail(code, owner + " did not answer");
    }
    events = std::exchange(g_world->scripts[owner], {});
    for (const auto& [handle, registration] : g_world->callbacks) {
      if (registration.owner == owner) {
        registrations.push_back(registration);
      }
    }
  }
  for (const auto& event : events) {
    for (const auto& registration : registrations) {
      if (registration.forLost == event.found) {
        continue;
      }
      if (event.found) {
        reinterpret_cast<FoundFunction>(registration.function)(MakeHandle<Descriptor>(event.number),
                                                               registration.context);
      } else {
        reinterpret_cast<OXEL_InterfaceLostCallback>(registration.function)(
            event.lostKey.c_str(), event.lostKey.size() + 1, registration.context);
      }
    }
  }
  return OXEL_RETURN_CODE_SUCCESS;
}

constexpr char kSys[] = "Sys";
constexpr char kIf[] = "If";
constexpr char kDev[] = "Dev";

}  // namespace

FakeTransport::FakeTransport() {
  g_world = std::make_unique<World>();
  auto& t = fake_.table;
  t.OXEL_Library_IsInitialized = [](OXEL_BOOL8* out) -> OXEL_RETURN_CODE {
    *out = 1;
    return OXEL_RETURN_CODE_SUCCESS;
  };
  t.OXEL_ProducerLibrary_Open = [](const char* path, size_t,
                                   OXEL_PRODUCER_LIBRARY* out) -> OXEL_RETURN_CODE {
    std::lock_guard lock(g_world->mutex);
    const auto producer = g_world->producers.find(path);
    if (producer == g_world->producers.end()) {
      return Fail(OXEL_RETURN_CODE_CTI_LOADING_ERROR, std::string(path) + " is not a producer");
    }
    ++g_world->openCounts[path];
    g_world->openedPaths[producer->second] = path;
    *out = MakeHandle<OXEL_PRODUCER_LIBRARY>(producer->second);
    return OXEL_RETURN_CODE_SUCCESS;
  };
  t.OXEL_ProducerLibrary_Release = [](OXEL_PRODUCER_LIBRARY library) {
    std::string path;
    {
      std::lock_guard lock(g_world->mutex);
      path = g_world->openedPaths[HandleNumber(library)];
    }
    return Released("Release " + path);
  };
  t.OXEL_ProducerLibrary_GetSystem = &Open<OXEL_PRODUCER_LIBRARY, OXEL_SYSTEM_DESCRIPTOR>;
  t.OXEL_SystemDescriptor_GetID = &WriteName<kSys, OXEL_SYSTEM_DESCRIPTOR>;
  t.OXEL_SystemDescriptor_OpenSystem = &Open<OXEL_SYSTEM_DESCRIPTOR, OXEL_SYSTEM>;
  t.OXEL_System_GetID = &WriteName<kSys, OXEL_SYSTEM>;
  t.OXEL_System_Close = &Close<kSys, OXEL_SYSTEM>;
  t.OXEL_System_RegisterInterfaceFoundCallback =
      &Register<kSys, false, OXEL_SYSTEM, OXEL_InterfaceFoundCallback>;
  t.OXEL_System_RegisterInterfaceLostCallback =
      &Register<kSys, true, OXEL_SYSTEM, OXEL_InterfaceLostCallback>;
  t.OXEL_System_UnregisterInterfaceFoundCallback = &Unregister<OXEL_SYSTEM>;
  t.OXEL_System_UnregisterInterfaceLostCallback = &Unregister<OXEL_SYSTEM>;
  t.OXEL_System_UpdateInterfaces =
      &Update<kSys, OXEL_SYSTEM, OXEL_InterfaceFoundCallback, OXEL_INTERFACE_DESCRIPTOR>;
  t.OXEL_InterfaceDescriptor_GetID = &WriteName<kIf, OXEL_INTERFACE_DESCRIPTOR>;
  t.OXEL_InterfaceDescriptor_OpenInterface = &Open<OXEL_INTERFACE_DESCRIPTOR, OXEL_INTERFACE>;
  t.OXEL_Interface_GetID = &WriteName<kIf, OXEL_INTERFACE>;
  t.OXEL_Interface_Close = &Close<kIf, OXEL_INTERFACE>;
  t.OXEL_Interface_RegisterDeviceFoundCallback =
      &Register<kIf, false, OXEL_INTERFACE, OXEL_DeviceFoundCallback>;
  t.OXEL_Interface_RegisterDeviceLostCallback =
      &Register<kIf, true, OXEL_INTERFACE, OXEL_DeviceLostCallback>;
  t.OXEL_Interface_UnregisterDeviceFoundCallback = &Unregister<OXEL_INTERFACE>;
  t.OXEL_Interface_UnregisterDeviceLostCallback = &Unregister<OXEL_INTERFACE>;
  t.OXEL_Interface_UpdateDevices =
      &Update<kIf, OXEL_INTERFACE, OXEL_DeviceFoundCallback, OXEL_DEVICE_DESCRIPTOR>;
  t.OXEL_DeviceDescriptor_GetID = &WriteName<kDev, OXEL_DEVICE_DESCRIPTOR>;
  t.OXEL_DeviceDescriptor_OpenDevice = [](OXEL_DEVICE_DESCRIPTOR descriptor,
                                          OXEL_DEVICE_ACCESS_TYPE,
                                          OXEL_DEVICE* out) { return Open(descriptor, out); };
  t.OXEL_Device_GetID = &WriteName<kDev, OXEL_DEVICE>;
  t.OXEL_Device_Close = &Close<kDev, OXEL_DEVICE>;
}

FakeTransport::~FakeTransport() {
  g_world.reset();
}

void FakeTransport::AddProducer(const std::string& path, uintptr_t systemNumber) {
  std::lock_guard lock(g_world->mutex);
  g_world->producers[path] = systemNumber;
}

void FakeTransport::Script(const std::string& owner, std::vector<Event> events) {
  std::lock_guard lock(g_world->mutex);
  auto& script = g_world->scripts[owner];
  script.insert(script.end(), events.begin(), events.end());
}

void FakeTransport::FailNextUpdate(const std::string& owner, OXEL_RETURN_CODE code) {
  std::lock_guard lock(g_world->mutex);
  g_world->failures[owner] = code;
}

int FakeTransport::OpenCount(const std::string& path) const {
  std::lock_guard lock(g_world->mutex);
  const auto count = g_world->openCounts.find(path);
  return count == g_world->openCounts.end() ? 0 : count->second;
}

std::vector<uint64_t> FakeTransport::UpdateTimeouts() const {
  std::lock_guard lock(g_world->mutex);
  return g_world->timeouts;
}

std::vector<std::string> FakeTransport::Releases() const {
  std::lock_guard lock(g_world->mutex);
  return g_world->releases;
}

}  // namespace fake_oxel
