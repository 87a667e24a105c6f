#include "oxel/core/checked_call.h"

#include <sstream>

#include "oxel/core/exceptions.h"
#include "oxel/core/oxel_functions.h"
#include "oxel/core/return_codes.h"

namespace oxel::core {

void RaiseLastError() {
  constexpr const char* kQueryFailed = "Could not query the last error!";
  const auto getLastError = Api().OXEL_Library_GetLastError;
  OXEL_RETURN_CODE lastCode = 0;
  size_t size = 0;
  if (getLastError(&lastCode, nullptr, &size) != OXEL_RETURN_CODE_SUCCESS) {
    throw InternalErrorException(kQueryFailed);
  }
  std::string description(size, '\0');
  if (getLastError(&lastCode, size == 0 ? nullptr : description.data(), &size) !=
      OXEL_RETURN_CODE_SUCCESS) {
    throw InternalErrorException(kQueryFailed);
  }
  if (lastCode == OXEL_RETURN_CODE_SUCCESS) {
    return;  // the library says nothing failed: the call counts as a success
  }
  if (const size_t end = description.find('\0'); end != std::string::npos) {
    description.resize(end);
  }
  std::ostringstream message;
  message << "Error-Code: " << lastCode << " (" << ReturnCodeName(lastCode)
          << ") | Error-Description: " << description;
  ThrowExceptionForCode(lastCode, message.str());
}

}  // namespace oxel::core
