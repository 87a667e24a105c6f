#include "oxel/core/exceptions.h"

namespace oxel::core {

void ThrowExceptionForCode(OXEL_RETURN_CODE code, const std::string& message) {
  switch (code) {
    case OXEL_RETURN_CODE_NOT_INITIALIZED:
      throw NotInitializedException(message);
    case OXEL_RETURN_CODE_ABORTED:
      throw AbortedException(message);
    case OXEL_RETURN_CODE_BAD_ACCESS:
      throw BadAccessException(message);
    case OXEL_RETURN_CODE_BAD_ALLOC:
      throw BadAllocException(message);
    case OXEL_RETURN_CODE_INVALID_ADDRESS:
      throw InvalidAddressException(message);
    case OXEL_RETURN_CODE_INVALID_ARGUMENT:
      throw InvalidArgumentException(message);
    case OXEL_RETURN_CODE_INVALID_CAST:
      throw InvalidCastException(message);
    case OXEL_RETURN_CODE_INVALID_HANDLE:
      throw InvalidInstanceException(message);
    case OXEL_RETURN_CODE_NOT_FOUND:
      throw NotFoundException(message);
    case OXEL_RETURN_CODE_OUT_OF_RANGE:
      throw OutOfRangeException(message);
    case OXEL_RETURN_CODE_TIMEOUT:
      throw TimeoutException(message);
    case OXEL_RETURN_CODE_NOT_AVAILABLE:
      throw NotAvailableException(message);
    case OXEL_RETURN_CODE_NOT_IMPLEMENTED:
      throw NotImplementedException(message);
    case OXEL_RETURN_CODE_CTI_LOADING_ERROR:
      throw CTILoadingException(message);
    default:  // ERROR, BUFFER_TOO_SMALL and codes the layer does not know
      throw InternalErrorException(message);
  }
}

}  // namespace oxel::core
