#include "oxel/core/device_access_status.h"

namespace oxel::core {

std::string DeviceAccessStatusText(OXEL_DEVICE_ACCESS_STATUS status) {
  switch (status) {
    case OXEL_DEVICE_ACCESS_STATUS_READ_WRITE:
      return "ReadWrite";
    case OXEL_DEVICE_ACCESS_STATUS_READ_ONLY:
      return "ReadOnly";
    case OXEL_DEVICE_ACCESS_STATUS_NO_ACCESS:
      return "NoAccess";
    case OXEL_DEVICE_ACCESS_STATUS_BUSY:
      return "Busy";
    case OXEL_DEVICE_ACCESS_STATUS_OPEN_READ_WRITE:
      return "OpenReadWrite";
    case OXEL_DEVICE_ACCESS_STATUS_OPEN_READ_ONLY:
      return "OpenReadOnly";
    default:
      return status >= OXEL_DEVICE_ACCESS_STATUS_CUSTOM ? "Custom" : "";
  }
}

}  // namespace oxel::core
