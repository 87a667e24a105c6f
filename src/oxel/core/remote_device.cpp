#include "oxel/core/remote_device.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core {

RemoteDevice::RemoteDevice(CreationKey, OXEL_REMOTE_DEVICE handle, std::weak_ptr<Device> parent)
    : handle_(handle), parent_(std::move(parent)) {}

OXEL_MODULE RemoteDevice::ModuleHandle() const {
  return QueryValue<OXEL_MODULE>(
      [this](OXEL_MODULE* out) { return Api().OXEL_RemoteDevice_ToModule(handle_, out); });
}

}  // namespace oxel::core
