// Library start and stop, and the producer-library search.
#include "api/exported.h"
#include "producer/producer_search.h"

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
