#include "oxel/core/library.h"

#include <cstdlib>
#include <mutex>
#include <optional>

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"
#include "oxel/core/oxel_loader.h"

namespace oxel {
namespace {

void BindOnce() {
  static std::mutex mutex;
  static std::optional<core::OxelFunctions> bound;
  std::lock_guard lock(mutex);
  if (core::IsApiBound()) {
    return;
  }
  if (!bound) {
    // TAVRO_OXEL_LIBRARY names another camera library (the one over Aravis,
    // for real cameras); unset or empty, the one beside the plug-in.
    const char* chosen = std::getenv("TAVRO_OXEL_LIBRARY");
    bound = core::BindOxelLibrary(chosen != nullptr && *chosen != '\0' ? chosen
                                                                       : core::kOxelLibraryFile);
  }
  core::InstallFunctionTable(&*bound);
}

}  // namespace

void Library::Initialize() {
  BindOnce();
  core::CallChecked([] { return core::Api().OXEL_Library_Initialize(); });
}

void Library::Close() {
  core::CallChecked([] { return core::Api().OXEL_Library_Close(); });
}

bool Library::IsInitialized() {
  if (!core::IsApiBound()) {
    return false;
  }
  return core::QueryValue<OXEL_BOOL8>(
             [](OXEL_BOOL8* out) { return core::Api().OXEL_Library_IsInitialized(out); }) != 0;
}

namespace core {

std::vector<std::string> FindProducerLibraries() {
  CallChecked([] { return Api().OXEL_ProducerSearch_Refresh(); });
  return QueryTextList([](size_t* count) { return Api().OXEL_ProducerSearch_GetCount(count); },
                       [](size_t index, char* path, size_t* size) {
                         return Api().OXEL_ProducerSearch_GetPath(index, path, size);
                       });
}

}  // namespace core
}  // namespace oxel
