// Texts of the device access status.
#ifndef OXEL_CORE_DEVICE_ACCESS_STATUS_H
#define OXEL_CORE_DEVICE_ACCESS_STATUS_H

#include <string>

#include "oxel/oxel_c.h"

namespace oxel::core {

// "ReadWrite" for 1 ... "OpenReadOnly" for 6, "Custom" from 1000 on, "" else.
std::string DeviceAccessStatusText(OXEL_DEVICE_ACCESS_STATUS status);

}  // namespace oxel::core

#endif  // OXEL_CORE_DEVICE_ACCESS_STATUS_H
