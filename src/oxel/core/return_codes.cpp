#include "oxel/core/return_codes.h"

#include <array>

namespace oxel::core {

std::string ReturnCodeName(OXEL_RETURN_CODE code) {
  static constexpr std::array<const char*, 17> kNames = {
      "OXEL_RETURN_CODE_SUCCESS",           "OXEL_RETURN_CODE_ERROR",
      "OXEL_RETURN_CODE_NOT_INITIALIZED",   "OXEL_RETURN_CODE_ABORTED",
      "OXEL_RETURN_CODE_BAD_ACCESS",        "OXEL_RETURN_CODE_BAD_ALLOC",
      "OXEL_RETURN_CODE_BUFFER_TOO_SMALL",  "OXEL_RETURN_CODE_INVALID_ADDRESS",
      "OXEL_RETURN_CODE_INVALID_ARGUMENT",  "OXEL_RETURN_CODE_INVALID_CAST",
      "OXEL_RETURN_CODE_INVALID_HANDLE",    "OXEL_RETURN_CODE_NOT_FOUND",
      "OXEL_RETURN_CODE_OUT_OF_RANGE",      "OXEL_RETURN_CODE_TIMEOUT",
      "OXEL_RETURN_CODE_NOT_AVAILABLE",     "OXEL_RETURN_CODE_NOT_IMPLEMENTED",
      "OXEL_RETURN_CODE_CTI_LOADING_ERROR",
  };
  if (code < 0 || static_cast<size_t>(code) >= kNames.size()) {
    return {};
  }
  return kNames[static_cast<size_t>(code)];
}

}  // namespace oxel::core
