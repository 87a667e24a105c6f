// Systems and interfaces, with their descriptors and found/lost callbacks: the
// exported functions every Oxel library shares, over the objects of the one
// being built (api/exported.h of that library).
#include "api/exported.h"

using namespace oxellib;

namespace {

// Structural changes take the library's structure lock; the update calls do it
// themselves so that their callbacks run without it.
template <class Work>
void Locked(Work&& work) {
  auto lock = LockStructure();
  work();
}

// Registers `callback` in the list `member` of the module behind `handle`.
template <class Module, class Handle, class Function>
OXEL_RETURN_CODE Register(const char* function, Handle handle, Kind kind,
                          CallbackList<Function> Module::*member, Function callback, void* context,
                          OXEL_CALLBACK_HANDLE* callbackHandle) {
  return RunApiCall(function, [&] {
    auto opened = Find<Module>(handle, kind, "module");
    OXEL_CALLBACK_HANDLE& result = Out(callbackHandle, "callbackHandle");
    result = ((*opened).*member).Add(callback, context);
  });
}

template <class Module, class Handle, class Function>
OXEL_RETURN_CODE Unregister(const char* function, Handle handle, Kind kind,
                            CallbackList<Function> Module::*member,
                            OXEL_CALLBACK_HANDLE callbackHandle) {
  return RunApiCall(function, [&] {
    auto opened = Find<Module>(handle, kind, "module");
    ((*opened).*member).Remove(callbackHandle);
  });
}

}  // namespace

OXEL_RETURN_CODE OXEL_SystemDescriptor_GetID(OXEL_SYSTEM_DESCRIPTOR descriptor, char* id,
                                             size_t* idSize) {
  return RunApiCall(__func__, [&] {
    auto system = Find<SystemDescriptor>(descriptor, Kind::SystemDescriptor, "descriptor");
    WriteText(system->Description().id, id, idSize);
  });
}

OXEL_RETURN_CODE OXEL_SystemDescriptor_GetDisplayName(OXEL_SYSTEM_DESCRIPTOR descriptor,
                                                      char* displayName, size_t* displayNameSize) {
  return RunApiCall(__func__, [&] {
    auto system = Find<SystemDescriptor>(descriptor, Kind::SystemDescriptor, "descriptor");
    WriteText(system->Description().displayName, displayName, displayNameSize);
  });
}

OXEL_RETURN_CODE OXEL_SystemDescriptor_OpenSystem(OXEL_SYSTEM_DESCRIPTOR descriptor,
                                                  OXEL_SYSTEM* system) {
  return RunApiCall(__func__, [&] {
    auto origin = Find<SystemDescriptor>(descriptor, Kind::SystemDescriptor, "descriptor");
    OXEL_SYSTEM& result = Out(system, "system");
    result = reinterpret_cast<OXEL_SYSTEM>(origin->Open().get());
  });
}

OXEL_RETURN_CODE OXEL_System_GetID(OXEL_SYSTEM system, char* id, size_t* idSize) {
  return RunApiCall(__func__, [&] {
    auto opened = Find<System>(system, Kind::System, "system");
    WriteText(opened->Description().id, id, idSize);
  });
}

OXEL_RETURN_CODE OXEL_System_ToModule(OXEL_SYSTEM system, OXEL_MODULE* module) {
  return RunApiCall(__func__, [&] {
    Find<System>(system, Kind::System, "system");
    Out(module, "module") = reinterpret_cast<OXEL_MODULE>(system);
  });
}

OXEL_RETURN_CODE OXEL_System_RegisterInterfaceFoundCallback(OXEL_SYSTEM system,
                                                            OXEL_InterfaceFoundCallback callback,
                                                            void* context,
                                                            OXEL_CALLBACK_HANDLE* callbackHandle) {
  return Register(__func__, system, Kind::System, &System::found, callback, context,
                  callbackHandle);
}

OXEL_RETURN_CODE OXEL_System_UnregisterInterfaceFoundCallback(OXEL_SYSTEM system,
                                                              OXEL_CALLBACK_HANDLE callbackHandle) {
  return Unregister(__func__, system, Kind::System, &System::found, callbackHandle);
}

OXEL_RETURN_CODE OXEL_System_RegisterInterfaceLostCallback(OXEL_SYSTEM system,
                                                           OXEL_InterfaceLostCallback callback,
                                                           void* context,
                                                           OXEL_CALLBACK_HANDLE* callbackHandle) {
  return Register(__func__, system, Kind::System, &System::lost, callback, context, callbackHandle);
}

OXEL_RETURN_CODE OXEL_System_UnregisterInterfaceLostCallback(OXEL_SYSTEM system,
                                                             OXEL_CALLBACK_HANDLE callbackHandle) {
  return Unregister(__func__, system, Kind::System, &System::lost, callbackHandle);
}

OXEL_RETURN_CODE OXEL_System_UpdateInterfaces(OXEL_SYSTEM system, uint64_t timeoutMs) {
  (void)timeoutMs;  // discovery has a time limit of its own
  return RunApiCall(__func__,
                    [&] { Find<System>(system, Kind::System, "system")->UpdateInterfaces(); });
}

OXEL_RETURN_CODE OXEL_System_Close(OXEL_SYSTEM system) {
  return RunApiCall(__func__, [&] {
    auto opened = Find<System>(system, Kind::System, "system");
    Locked([&] { opened->CloseLocked(); });
  });
}

OXEL_RETURN_CODE OXEL_InterfaceDescriptor_GetID(OXEL_INTERFACE_DESCRIPTOR descriptor, char* id,
                                                size_t* idSize) {
  return RunApiCall(__func__, [&] {
    auto origin = Find<InterfaceDescriptor>(descriptor, Kind::InterfaceDescriptor, "descriptor");
    WriteText(origin->Description().id, id, idSize);
  });
}

OXEL_RETURN_CODE OXEL_InterfaceDescriptor_GetDisplayName(OXEL_INTERFACE_DESCRIPTOR descriptor,
                                                         char* displayName,
                                                         size_t* displayNameSize) {
  return RunApiCall(__func__, [&] {
    auto origin = Find<InterfaceDescriptor>(descriptor, Kind::InterfaceDescriptor, "descriptor");
    WriteText(origin->Description().displayName, displayName, displayNameSize);
  });
}

OXEL_RETURN_CODE OXEL_InterfaceDescriptor_OpenInterface(OXEL_INTERFACE_DESCRIPTOR descriptor,
                                                        OXEL_INTERFACE* interfaceHandle) {
  return RunApiCall(__func__, [&] {
    auto origin = Find<InterfaceDescriptor>(descriptor, Kind::InterfaceDescriptor, "descriptor");
    OXEL_INTERFACE& result = Out(interfaceHandle, "interfaceHandle");
    result = reinterpret_cast<OXEL_INTERFACE>(origin->Open().get());
  });
}

OXEL_RETURN_CODE OXEL_Interface_GetID(OXEL_INTERFACE interfaceHandle, char* id, size_t* idSize) {
  return RunApiCall(__func__, [&] {
    auto opened = Find<Interface>(interfaceHandle, Kind::Interface, "interfaceHandle");
    WriteText(opened->Description().id, id, idSize);
  });
}

OXEL_RETURN_CODE OXEL_Interface_GetDisplayName(OXEL_INTERFACE interfaceHandle, char* displayName,
                                               size_t* displayNameSize) {
  return RunApiCall(__func__, [&] {
    auto opened = Find<Interface>(interfaceHandle, Kind::Interface, "interfaceHandle");
    WriteText(opened->Description().displayName, displayName, displayNameSize);
  });
}

OXEL_RETURN_CODE OXEL_Interface_ToModule(OXEL_INTERFACE interfaceHandle, OXEL_MODULE* module) {
  return RunApiCall(__func__, [&] {
    Find<Interface>(interfaceHandle, Kind::Interface, "interfaceHandle");
    Out(module, "module") = reinterpret_cast<OXEL_MODULE>(interfaceHandle);
  });
}

OXEL_RETURN_CODE OXEL_Interface_RegisterDeviceFoundCallback(OXEL_INTERFACE interfaceHandle,
                                                            OXEL_DeviceFoundCallback callback,
                                                            void* context,
                                                            OXEL_CALLBACK_HANDLE* callbackHandle) {
  return Register(__func__, interfaceHandle, Kind::Interface, &Interface::found, callback, context,
                  callbackHandle);
}

OXEL_RETURN_CODE OXEL_Interface_UnregisterDeviceFoundCallback(OXEL_INTERFACE interfaceHandle,
                                                              OXEL_CALLBACK_HANDLE callbackHandle) {
  return Unregister(__func__, interfaceHandle, Kind::Interface, &Interface::found, callbackHandle);
}

OXEL_RETURN_CODE OXEL_Interface_RegisterDeviceLostCallback(OXEL_INTERFACE interfaceHandle,
                                                           OXEL_DeviceLostCallback callback,
                                                           void* context,
                                                           OXEL_CALLBACK_HANDLE* callbackHandle) {
  return Register(__func__, interfaceHandle, Kind::Interface, &Interface::lost, callback, context,
                  callbackHandle);
}

OXEL_RETURN_CODE OXEL_Interface_UnregisterDeviceLostCallback(OXEL_INTERFACE interfaceHandle,
                                                             OXEL_CALLBACK_HANDLE callbackHandle) {
  return Unregister(__func__, interfaceHandle, Kind::Interface, &Interface::lost, callbackHandle);
}

OXEL_RETURN_CODE OXEL_Interface_UpdateDevices(OXEL_INTERFACE interfaceHandle, uint64_t timeoutMs) {
  (void)timeoutMs;  // discovery has a time limit of its own
  return RunApiCall(__func__, [&] {
    Find<Interface>(interfaceHandle, Kind::Interface, "interfaceHandle")->UpdateDevices();
  });
}

OXEL_RETURN_CODE OXEL_Interface_Close(OXEL_INTERFACE interfaceHandle) {
  return RunApiCall(__func__, [&] {
    auto opened = Find<Interface>(interfaceHandle, Kind::Interface, "interfaceHandle");
    Locked([&] { opened->CloseLocked(); });
  });
}
