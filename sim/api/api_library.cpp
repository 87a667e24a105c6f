// Library start and stop, last error, producer-library search and producer
// libraries.
#include "api/exported.h"
#include "producer/producer_search.h"
#include "transport/producer_library.h"

using namespace oxelsim;

OXEL_RETURN_CODE OXEL_Library_Initialize(void) {
  return RunApiCall(__func__, [] { Simulator::Instance().Start(); });
}

OXEL_RETURN_CODE OXEL_Library_Close(void) {
  return RunApiCall(__func__, [] { Simulator::Instance().Stop(); });
}

OXEL_RETURN_CODE OXEL_Library_IsInitialized(OXEL_BOOL8* isInitialized) {
  return RunApiCall(__func__, [&] {
    Out(isInitialized, "isInitialized") = Simulator::Instance().Started() ? 1 : 0;
  });
}

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

OXEL_RETURN_CODE OXEL_ProducerSearch_Refresh(void) {
  return RunApiCall(__func__, [] {
    std::vector<std::string> paths = SearchProducerFiles();
    Simulator& simulator = Simulator::Instance();
    std::lock_guard lock(simulator.mutex);
    simulator.searchResults = std::move(paths);
    simulator.searched = true;
  });
}

namespace {

std::vector<std::string> SearchResults() {
  Simulator& simulator = Simulator::Instance();
  {
    std::lock_guard lock(simulator.mutex);
    if (simulator.searched) return simulator.searchResults;
  }
  OXEL_ProducerSearch_Refresh();
  std::lock_guard lock(simulator.mutex);
  return simulator.searchResults;
}

}  // namespace

OXEL_RETURN_CODE OXEL_ProducerSearch_GetCount(size_t* count) {
  return RunApiCall(__func__, [&] { Out(count, "count") = SearchResults().size(); });
}

OXEL_RETURN_CODE OXEL_ProducerSearch_GetPath(size_t index, char* path, size_t* pathSize) {
  return RunApiCall(__func__, [&] {
    const std::vector<std::string> paths = SearchResults();
    if (index >= paths.size()) {
      Fail(OXEL_RETURN_CODE_OUT_OF_RANGE,
           std::string(__func__) + ": index " + std::to_string(index) + " but " +
               std::to_string(paths.size()) + " producer files were found");
    }
    WriteText(paths[index], path, pathSize);
  });
}

OXEL_RETURN_CODE OXEL_ProducerLibrary_Open(const char* path, size_t pathSize,
                                           OXEL_PRODUCER_LIBRARY* producerLibrary) {
  return RunApiCall(__func__, [&] {
    Simulator::Instance().RequireStarted();
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
