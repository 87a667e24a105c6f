#include "core/gerror.h"

#include <arv.h>

#include "core/library.h"

namespace oxelarv {

OXEL_RETURN_CODE CodeOfError(const GError* error) {
  if (error->domain == ARV_DEVICE_ERROR) {
    switch (error->code) {
      case ARV_DEVICE_ERROR_NOT_FOUND:
      case ARV_DEVICE_ERROR_FEATURE_NOT_FOUND:
        return OXEL_RETURN_CODE_NOT_FOUND;
      case ARV_DEVICE_ERROR_TIMEOUT:
        return OXEL_RETURN_CODE_TIMEOUT;
      case ARV_DEVICE_ERROR_WRONG_FEATURE:
        return OXEL_RETURN_CODE_INVALID_CAST;
      case ARV_DEVICE_ERROR_NOT_CONNECTED:
        return OXEL_RETURN_CODE_NOT_AVAILABLE;
      case ARV_DEVICE_ERROR_NOT_CONTROLLER:
        return OXEL_RETURN_CODE_BAD_ACCESS;
      default:
        return OXEL_RETURN_CODE_ERROR;
    }
  }
  if (error->domain == ARV_GC_ERROR) {
    switch (error->code) {
      case ARV_GC_ERROR_OUT_OF_RANGE:
        return OXEL_RETURN_CODE_OUT_OF_RANGE;
      case ARV_GC_ERROR_READ_ONLY:
        return OXEL_RETURN_CODE_BAD_ACCESS;
      case ARV_GC_ERROR_ENUM_ENTRY_NOT_FOUND:
      case ARV_GC_ERROR_NODE_NOT_FOUND:
        return OXEL_RETURN_CODE_NOT_FOUND;
      case ARV_GC_ERROR_INVALID_LENGTH:
        return OXEL_RETURN_CODE_INVALID_ARGUMENT;
      case ARV_GC_ERROR_NO_DEVICE_SET:
      case ARV_GC_ERROR_NO_EVENT_IMPLEMENTATION:
        return OXEL_RETURN_CODE_NOT_AVAILABLE;
      default:
        return OXEL_RETURN_CODE_ERROR;
    }
  }
  return OXEL_RETURN_CODE_ERROR;
}

void FailOnError(GError*& error, OXEL_RETURN_CODE code, const std::string& what) {
  if (error == nullptr) return;
  std::string message = error->message != nullptr ? error->message : "unknown failure";
  g_clear_error(&error);
  Fail(code, std::string(CurrentFunction()) + ": " + what + ": " + message);
}

}  // namespace oxelarv
