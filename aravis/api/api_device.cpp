// Device descriptors of the cameras Aravis finds.
#include <arv.h>

#include "api/exported.h"

using namespace oxelarv;

namespace {

Ref<DeviceDescriptor> FindDescriptor(OXEL_DEVICE_DESCRIPTOR descriptor) {
  return Find<DeviceDescriptor>(descriptor, Kind::DeviceDescriptor, "descriptor");
}

template <class Text>
OXEL_RETURN_CODE DescriptorText(const char* function, OXEL_DEVICE_DESCRIPTOR descriptor,
                                char* buffer, size_t* size, Text text) {
  return RunApiCall(function, [&] {
    auto origin = FindDescriptor(descriptor);
    WriteText(text(origin->Info()), buffer, size);
  });
}

// Whether Aravis can open the device now: the only test it offers. A device
// another process holds refuses (USB3 Vision claims the interface, GigE
// Vision grants control to one application).
bool CanOpenNow(const DeviceInfo& info) {
  GError* error = nullptr;
  GRef<ArvDevice> probe(arv_open_device(info.id.c_str(), &error));
  g_clear_error(&error);
  return static_cast<bool>(probe);
}

}  // namespace

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetID(OXEL_DEVICE_DESCRIPTOR descriptor, char* id,
                                             size_t* idSize) {
  return DescriptorText(__func__, descriptor, id, idSize,
                        [](const DeviceInfo& info) { return info.id; });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetDisplayName(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                      char* displayName, size_t* displayNameSize) {
  return DescriptorText(__func__, descriptor, displayName, displayNameSize,
                        [](const DeviceInfo& info) { return info.vendor + " " + info.model; });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetModelName(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                    char* modelName, size_t* modelNameSize) {
  return DescriptorText(__func__, descriptor, modelName, modelNameSize,
                        [](const DeviceInfo& info) { return info.model; });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetSerialNumber(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                       char* serialNumber,
                                                       size_t* serialNumberSize) {
  return DescriptorText(__func__, descriptor, serialNumber, serialNumberSize,
                        [](const DeviceInfo& info) { return info.serial; });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetUserDefinedName(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                          char* userDefinedName,
                                                          size_t* userDefinedNameSize) {
  // Aravis's discovery does not read DeviceUserID; an opened camera's
  // feature holds it.
  return DescriptorText(__func__, descriptor, userDefinedName, userDefinedNameSize,
                        [](const DeviceInfo&) { return std::string(); });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetTLType(OXEL_DEVICE_DESCRIPTOR descriptor, char* tlType,
                                                 size_t* tlTypeSize) {
  return DescriptorText(__func__, descriptor, tlType, tlTypeSize,
                        [](const DeviceInfo& info) { return info.tlType; });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetAccessStatus(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                       OXEL_DEVICE_ACCESS_STATUS* accessStatus) {
  return RunApiCall(__func__, [&] {
    auto origin = FindDescriptor(descriptor);
    OXEL_DEVICE_ACCESS_STATUS& result = Out(accessStatus, "accessStatus");
    std::lock_guard lock(Library::Instance().mutex);
    // Aravis cannot tell whether another process holds a device without
    // trying to open it; IsOpenable tries.
    result = !origin->Present() ? OXEL_DEVICE_ACCESS_STATUS_UNKNOWN
             : origin->IsOpen() ? OXEL_DEVICE_ACCESS_STATUS_OPEN_READ_WRITE
                                : OXEL_DEVICE_ACCESS_STATUS_READ_WRITE;
  });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_IsOpenable(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                  OXEL_DEVICE_ACCESS_TYPE accessType,
                                                  OXEL_BOOL8* isOpenable) {
  return RunApiCall(__func__, [&] {
    auto origin = FindDescriptor(descriptor);
    OXEL_BOOL8& result = Out(isOpenable, "isOpenable");
    (void)accessType;  // Aravis opens every device one way
    bool openable = false;
    {
      std::lock_guard lock(Library::Instance().mutex);
      openable = origin->Present() && !origin->IsOpen();
    }
    result = openable && CanOpenNow(origin->Info()) ? 1 : 0;
  });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_OpenDevice(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                  OXEL_DEVICE_ACCESS_TYPE accessType,
                                                  OXEL_DEVICE* device) {
  return RunApiCall(__func__, [&] {
    auto origin = FindDescriptor(descriptor);
    OXEL_DEVICE& result = Out(device, "device");
    result = reinterpret_cast<OXEL_DEVICE>(origin->Open(accessType).get());
  });
}
