// The last error and producer libraries: the exported functions every Oxel
// library shares, over the objects of the one being built (api/exported.h of
// that library).
#include "api/exported.h"

using namespace oxellib;

OXEL_RETURN_CODE OXEL_Library_GetLastError(OXEL_RETURN_CODE* lastErrorCode, char* description,
                                           size_t* descriptionSize) {
  // A failure of this call must not replace the error it reports.
  const LastError saved = ThreadLastError();
  const OXEL_RETURN_CODE result = RunApiCall(__func__, [&] {
    Out(lastErrorCode, "lastErrorCode") = saved.code;
    WriteText(saved.Description(), description, descriptionSize);
  });
  ThreadLastError() = saved;
  return result;
}

OXEL_RETURN_CODE OXEL_ProducerLibrary_Open(const char* path, size_t pathSize,
                                           OXEL_PRODUCER_LIBRARY* producerLibrary) {
  return RunApiCall(__func__, [&] {
    RequireStarted();
    OXEL_PRODUCER_LIBRARY& result = Out(producerLibrary, "producerLibrary");
    auto library = ProducerLibrary::Open(ReadText(path, pathSize, "path"));
    result = reinterpret_cast<OXEL_PRODUCER_LIBRARY>(library.get());
  });
}

OXEL_RETURN_CODE OXEL_ProducerLibrary_GetPath(OXEL_PRODUCER_LIBRARY producerLibrary, char* path,
                                              size_t* pathSize) {
  return RunApiCall(__func__, [&] {
    auto library = Find<ProducerLibrary>(producerLibrary, Kind::ProducerLibrary, "producerLibrary");
    WriteText(library->Path(), path, pathSize);
  });
}

OXEL_RETURN_CODE OXEL_ProducerLibrary_GetVendor(OXEL_PRODUCER_LIBRARY producerLibrary, char* vendor,
                                                size_t* vendorSize) {
  return RunApiCall(__func__, [&] {
    auto library = Find<ProducerLibrary>(producerLibrary, Kind::ProducerLibrary, "producerLibrary");
    WriteText(library->Vendor(), vendor, vendorSize);
  });
}

OXEL_RETURN_CODE OXEL_ProducerLibrary_GetSystem(OXEL_PRODUCER_LIBRARY producerLibrary,
                                                OXEL_SYSTEM_DESCRIPTOR* systemDescriptor) {
  return RunApiCall(__func__, [&] {
    auto library = Find<ProducerLibrary>(producerLibrary, Kind::ProducerLibrary, "producerLibrary");
    Out(systemDescriptor, "systemDescriptor") =
        reinterpret_cast<OXEL_SYSTEM_DESCRIPTOR>(library->SystemHandle().get());
  });
}

OXEL_RETURN_CODE OXEL_ProducerLibrary_Release(OXEL_PRODUCER_LIBRARY producerLibrary) {
  return RunApiCall(__func__, [&] {
    auto library = Find<ProducerLibrary>(producerLibrary, Kind::ProducerLibrary, "producerLibrary");
    library->Release();
  });
}
