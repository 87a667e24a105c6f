// The exception family of the camera layer: every failed call into the Oxel
// C library surfaces as one of these, selected by the library's last error.
#ifndef OXEL_CORE_EXCEPTIONS_H
#define OXEL_CORE_EXCEPTIONS_H

#include <stdexcept>
#include <string>

#include "oxel/oxel_c.h"

namespace oxel::core {

class Exception : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

#define OXEL_CORE_DECLARE_EXCEPTION(Name) \
  class Name : public Exception {         \
   public:                                \
    using Exception::Exception;           \
  };

OXEL_CORE_DECLARE_EXCEPTION(AbortedException)
OXEL_CORE_DECLARE_EXCEPTION(BadAccessException)
OXEL_CORE_DECLARE_EXCEPTION(BadAllocException)
OXEL_CORE_DECLARE_EXCEPTION(CTILoadingException)
OXEL_CORE_DECLARE_EXCEPTION(InternalErrorException)
OXEL_CORE_DECLARE_EXCEPTION(InvalidAddressException)
OXEL_CORE_DECLARE_EXCEPTION(InvalidArgumentException)
OXEL_CORE_DECLARE_EXCEPTION(InvalidCastException)
OXEL_CORE_DECLARE_EXCEPTION(InvalidInstanceException)
OXEL_CORE_DECLARE_EXCEPTION(NotAvailableException)
OXEL_CORE_DECLARE_EXCEPTION(NotFoundException)
OXEL_CORE_DECLARE_EXCEPTION(NotImplementedException)
OXEL_CORE_DECLARE_EXCEPTION(NotInitializedException)
OXEL_CORE_DECLARE_EXCEPTION(OutOfRangeException)
OXEL_CORE_DECLARE_EXCEPTION(TimeoutException)

#undef OXEL_CORE_DECLARE_EXCEPTION

// Throws the class that `code` selects (codes without a class of their own,
// and unknown codes, give InternalErrorException).
[[noreturn]] void ThrowExceptionForCode(OXEL_RETURN_CODE code, const std::string& message);

// Texts the layer raises without a failed C call.
inline constexpr const char* kPointerExpiredText = "Pointer has expired!";
inline constexpr const char* kInvalidNodeCastText = "Invalid node cast!";

}  // namespace oxel::core

#endif  // OXEL_CORE_EXCEPTIONS_H
