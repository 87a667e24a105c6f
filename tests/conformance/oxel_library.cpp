#include "oxel_library.h"

#include <dlfcn.h>

#include <cstdlib>
#include <stdexcept>

namespace conformance {

namespace {

void* Handle() {
  static void* const library = [] {
    const char* path = std::getenv("OXEL_LIBRARY_UNDER_TEST");
    if (path == nullptr) throw std::runtime_error("OXEL_LIBRARY_UNDER_TEST is not set");
    void* opened = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (opened == nullptr) throw std::runtime_error(std::string("cannot load ") + path);
    return opened;
  }();
  return library;
}

struct Found {
  std::vector<OXEL_INTERFACE_DESCRIPTOR> interfaces;
  std::vector<OXEL_DEVICE_DESCRIPTOR> devices;
};

void InterfaceFound(OXEL_INTERFACE_DESCRIPTOR found, void* context) {
  static_cast<Found*>(context)->interfaces.push_back(found);
}

void DeviceFound(OXEL_DEVICE_DESCRIPTOR found, void* context) {
  static_cast<Found*>(context)->devices.push_back(found);
}

void Require(OXEL_RETURN_CODE code, const char* what) {
  if (code != OXEL_RETURN_CODE_SUCCESS) {
    throw std::runtime_error(std::string(what) + " failed: " + LastErrorText());
  }
}

}  // namespace

const Functions& Oxel() {
  static const Functions functions = [] {
    Functions table;
#define CONFORMANCE_RESOLVE(name)                                              \
  table.name = reinterpret_cast<decltype(table.name)>(dlsym(Handle(), #name)); \
  if (table.name == nullptr) throw std::runtime_error("missing function " #name);
    OXEL_FOR_EACH_FUNCTION(CONFORMANCE_RESOLVE)
#undef CONFORMANCE_RESOLVE
    return table;
  }();
  return functions;
}

bool IsSimulator() {
  return dlsym(Handle(), "OxelSim_ResetAll") != nullptr;
}

std::string LastErrorText() {
  OXEL_RETURN_CODE code = 0;
  return Text([&](char* text, size_t* size) {
    return Oxel().OXEL_Library_GetLastError(&code, text, size);
  });
}

OpenedCamera::OpenedCamera() {
  const Functions& oxel = Oxel();
  Require(oxel.OXEL_Library_Initialize(), "Initialize");
  Require(oxel.OXEL_ProducerSearch_Refresh(), "ProducerSearch_Refresh");
  size_t producers = 0;
  Require(oxel.OXEL_ProducerSearch_GetCount(&producers), "ProducerSearch_GetCount");
  Found found;
  for (size_t p = 0; p < producers; ++p) {
    const std::string path = Text(
        [&](char* text, size_t* size) { return oxel.OXEL_ProducerSearch_GetPath(p, text, size); });
    OXEL_PRODUCER_LIBRARY producer = nullptr;
    Require(oxel.OXEL_ProducerLibrary_Open(path.c_str(), path.size() + 1, &producer),
            "ProducerLibrary_Open");
    producers_.push_back(producer);
    OXEL_SYSTEM_DESCRIPTOR systemDescriptor = nullptr;
    Require(oxel.OXEL_ProducerLibrary_GetSystem(producer, &systemDescriptor), "GetSystem");
    OXEL_SYSTEM system = nullptr;
    Require(oxel.OXEL_SystemDescriptor_OpenSystem(systemDescriptor, &system), "OpenSystem");
    systems_.push_back(system);
    OXEL_CALLBACK_HANDLE interfaceCallback = nullptr;
    Require(oxel.OXEL_System_RegisterInterfaceFoundCallback(system, InterfaceFound, &found,
                                                            &interfaceCallback),
            "RegisterInterfaceFoundCallback");
    found.interfaces.clear();
    Require(oxel.OXEL_System_UpdateInterfaces(system, 1000), "UpdateInterfaces");
    for (OXEL_INTERFACE_DESCRIPTOR descriptor : found.interfaces) {
      OXEL_INTERFACE opened = nullptr;
      Require(oxel.OXEL_InterfaceDescriptor_OpenInterface(descriptor, &opened), "OpenInterface");
      interfaces_.push_back(opened);
      OXEL_CALLBACK_HANDLE deviceCallback = nullptr;
      Require(oxel.OXEL_Interface_RegisterDeviceFoundCallback(opened, DeviceFound, &found,
                                                              &deviceCallback),
              "RegisterDeviceFoundCallback");
      Require(oxel.OXEL_Interface_UpdateDevices(opened, 1000), "UpdateDevices");
    }
  }
  for (OXEL_DEVICE_DESCRIPTOR candidate : found.devices) {
    const std::string tlType = Text([&](char* text, size_t* size) {
      return oxel.OXEL_DeviceDescriptor_GetTLType(candidate, text, size);
    });
    if (tlType == "U3V") {
      descriptor = candidate;
      break;
    }
  }
  if (descriptor == nullptr) throw std::runtime_error("the library lists no USB3 Vision camera");
  id = Text([&](char* text, size_t* size) {
    return oxel.OXEL_DeviceDescriptor_GetID(descriptor, text, size);
  });
  Require(
      oxel.OXEL_DeviceDescriptor_OpenDevice(descriptor, OXEL_DEVICE_ACCESS_TYPE_EXCLUSIVE, &device),
      "OpenDevice");
  OXEL_REMOTE_DEVICE remote = nullptr;
  Require(oxel.OXEL_Device_GetRemoteDevice(device, &remote), "GetRemoteDevice");
  OXEL_MODULE module = nullptr;
  Require(oxel.OXEL_RemoteDevice_ToModule(remote, &module), "RemoteDevice_ToModule");
  Require(oxel.OXEL_Module_GetNodeMap(module, 0, &nodeMap), "GetNodeMap");
  OXEL_DATA_STREAM_DESCRIPTOR streamDescriptor = nullptr;
  Require(oxel.OXEL_Device_GetDataStreamDescriptor(device, 0, &streamDescriptor),
          "GetDataStreamDescriptor");
  Require(oxel.OXEL_DataStreamDescriptor_OpenDataStream(streamDescriptor, &stream),
          "OpenDataStream");
  // A known state: whole sensor, Mono8, trigger off, parameters unlocked.
  SetInteger("TLParamsLocked", 0);
  SetInteger("OffsetX", 0);
  SetInteger("OffsetY", 0);
  SetInteger("Width", Integer("WidthMax"));
  SetInteger("Height", Integer("HeightMax"));
  SetEntry("PixelFormat", "Mono8");
}

OpenedCamera::~OpenedCamera() {
  const Functions& oxel = Oxel();
  if (stream != nullptr) {
    oxel.OXEL_DataStream_StopAcquisition(stream, OXEL_ACQUISITION_STOP_MODE_KILL);
    oxel.OXEL_DataStream_Close(stream);
  }
  if (device != nullptr) oxel.OXEL_Device_Close(device);
  for (OXEL_INTERFACE opened : interfaces_) oxel.OXEL_Interface_Close(opened);
  for (OXEL_SYSTEM system : systems_) oxel.OXEL_System_Close(system);
  for (OXEL_PRODUCER_LIBRARY producer : producers_) oxel.OXEL_ProducerLibrary_Release(producer);
  oxel.OXEL_Library_Close();
}

OXEL_NODE OpenedCamera::Node(const std::string& name) const {
  OXEL_NODE node = nullptr;
  if (Oxel().OXEL_NodeMap_FindNode(nodeMap, name.c_str(), name.size() + 1, &node) !=
      OXEL_RETURN_CODE_SUCCESS) {
    throw std::runtime_error("no feature " + name + ": " + LastErrorText());
  }
  return node;
}

int64_t OpenedCamera::Integer(const std::string& name) const {
  OXEL_INTEGER_NODE node = nullptr;
  int64_t value = 0;
  if (Oxel().OXEL_Node_ToIntegerNode(Node(name), &node) != OXEL_RETURN_CODE_SUCCESS ||
      Oxel().OXEL_IntegerNode_GetValue(node, OXEL_NODE_CACHE_POLICY_USE_CACHE, &value) !=
          OXEL_RETURN_CODE_SUCCESS) {
    throw std::runtime_error("cannot read " + name + ": " + LastErrorText());
  }
  return value;
}

OXEL_RETURN_CODE OpenedCamera::SetInteger(const std::string& name, int64_t value) const {
  OXEL_INTEGER_NODE node = nullptr;
  const OXEL_RETURN_CODE cast = Oxel().OXEL_Node_ToIntegerNode(Node(name), &node);
  return cast != OXEL_RETURN_CODE_SUCCESS ? cast : Oxel().OXEL_IntegerNode_SetValue(node, value);
}

OXEL_RETURN_CODE OpenedCamera::SetEntry(const std::string& name, const std::string& entry) const {
  OXEL_ENUMERATION_NODE node = nullptr;
  const OXEL_RETURN_CODE cast = Oxel().OXEL_Node_ToEnumerationNode(Node(name), &node);
  return cast != OXEL_RETURN_CODE_SUCCESS
             ? cast
             : Oxel().OXEL_EnumerationNode_SetCurrentEntry(node, entry.c_str(), entry.size() + 1);
}

OXEL_RETURN_CODE OpenedCamera::Execute(const std::string& name) const {
  OXEL_COMMAND_NODE node = nullptr;
  const OXEL_RETURN_CODE cast = Oxel().OXEL_Node_ToCommandNode(Node(name), &node);
  return cast != OXEL_RETURN_CODE_SUCCESS ? cast : Oxel().OXEL_CommandNode_Execute(node);
}

void OpenedCamera::StartTriggered() const {
  Require(SetEntry("TriggerSelector", "ExposureStart"), "TriggerSelector");
  Require(SetEntry("TriggerMode", "On"), "TriggerMode");
  Require(SetEntry("TriggerSource", "Software"), "TriggerSource");
  Require(SetInteger("TLParamsLocked", 1), "TLParamsLocked");
  Require(Execute("AcquisitionStart"), "AcquisitionStart");
}

void OpenedCamera::StopCamera() const {
  Execute("AcquisitionStop");
  SetInteger("TLParamsLocked", 0);
}

}  // namespace conformance
