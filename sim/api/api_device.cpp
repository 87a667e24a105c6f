// Device descriptors of the simulated cameras.
#include "api/exported.h"
#include "transport/data_stream.h"
#include "transport/device.h"
#include "transport/interface.h"

using namespace oxelsim;

namespace {

Ref<DeviceDescriptor> FindDescriptor(OXEL_DEVICE_DESCRIPTOR descriptor) {
  return Find<DeviceDescriptor>(descriptor, Kind::DeviceDescriptor, "descriptor");
}

template <class Text>
OXEL_RETURN_CODE DescriptorText(const char* function, OXEL_DEVICE_DESCRIPTOR descriptor,
                                char* buffer, size_t* size, Text text) {
  return RunApiCall(function, [&] {
    auto origin = FindDescriptor(descriptor);
    WriteText(text(origin->Camera()), buffer, size);
  });
}

}  // namespace

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetID(OXEL_DEVICE_DESCRIPTOR descriptor, char* id,
                                             size_t* idSize) {
  return DescriptorText(__func__, descriptor, id, idSize,
                        [](SimCamera& camera) { return camera.Id(); });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetDisplayName(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                      char* displayName, size_t* displayNameSize) {
  return DescriptorText(__func__, descriptor, displayName, displayNameSize,
                        [](SimCamera& camera) { return camera.Description().displayName; });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetModelName(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                    char* modelName, size_t* modelNameSize) {
  return DescriptorText(__func__, descriptor, modelName, modelNameSize,
                        [](SimCamera& camera) { return camera.Description().model; });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetSerialNumber(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                       char* serialNumber,
                                                       size_t* serialNumberSize) {
  return DescriptorText(__func__, descriptor, serialNumber, serialNumberSize,
                        [](SimCamera& camera) { return camera.Description().serial; });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetUserDefinedName(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                          char* userDefinedName,
                                                          size_t* userDefinedNameSize) {
  return DescriptorText(__func__, descriptor, userDefinedName, userDefinedNameSize,
                        [](SimCamera& camera) { return camera.UserDefinedName(); });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetTLType(OXEL_DEVICE_DESCRIPTOR descriptor, char* tlType,
                                                 size_t* tlTypeSize) {
  return DescriptorText(__func__, descriptor, tlType, tlTypeSize,
                        [](SimCamera& camera) { return camera.Description().tlType; });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_GetAccessStatus(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                       OXEL_DEVICE_ACCESS_STATUS* accessStatus) {
  return RunApiCall(__func__, [&] {
    auto origin = FindDescriptor(descriptor);
    OXEL_DEVICE_ACCESS_STATUS& result = Out(accessStatus, "accessStatus");
    // A descriptor of an unplugged (or since replugged) camera no longer
    // reaches it.
    result = origin->Camera().Generation() == origin->Generation()
                 ? origin->Camera().AccessStatus()
                 : OXEL_DEVICE_ACCESS_STATUS_UNKNOWN;
  });
}

OXEL_RETURN_CODE OXEL_DeviceDescriptor_IsOpenable(OXEL_DEVICE_DESCRIPTOR descriptor,
                                                  OXEL_DEVICE_ACCESS_TYPE accessType,
                                                  OXEL_BOOL8* isOpenable) {
  return RunApiCall(__func__, [&] {
    auto origin = FindDescriptor(descriptor);
    OXEL_BOOL8& result = Out(isOpenable, "isOpenable");
    const bool openable = origin->Camera().IsOpenable(accessType);
    result = openable && origin->Camera().Generation() == origin->Generation() ? 1 : 0;
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
