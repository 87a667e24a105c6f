// Library start and stop, and the producer search: the one producer is this
// library's own file.
#include "api/exported.h"

using namespace oxelarv;

OXEL_RETURN_CODE OXEL_Library_Initialize(void) {
  return RunApiCall(__func__, [] { Library::Instance().Start(); });
}

OXEL_RETURN_CODE OXEL_Library_Close(void) {
  return RunApiCall(__func__, [] { Library::Instance().Stop(); });
}

OXEL_RETURN_CODE OXEL_Library_IsInitialized(OXEL_BOOL8* isInitialized) {
  return RunApiCall(__func__, [&] {
    Out(isInitialized, "isInitialized") = Library::Instance().Started() ? 1 : 0;
  });
}

OXEL_RETURN_CODE OXEL_ProducerSearch_Refresh(void) {
  return RunApiCall(__func__, [] {});
}

OXEL_RETURN_CODE OXEL_ProducerSearch_GetCount(size_t* count) {
  return RunApiCall(__func__, [&] { Out(count, "count") = 1; });
}

OXEL_RETURN_CODE OXEL_ProducerSearch_GetPath(size_t index, char* path, size_t* pathSize) {
  return RunApiCall(__func__, [&] {
    if (index != 0) {
      Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, std::string(__func__) + ": index " +
                                              std::to_string(index) +
                                              " but 1 producer (this library) was found");
    }
    WriteText(Library::OwnPath(), path, pathSize);
  });
}
