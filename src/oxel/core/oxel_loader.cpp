#include "oxel/core/oxel_loader.h"

#include <dlfcn.h>

#include <string>

#include "oxel/core/exceptions.h"

namespace oxel::core {
namespace {

std::string LoaderError() {
  const char* text = dlerror();
  return text != nullptr ? text : "no further detail";
}

// The directory of the module this code is linked into, with its slash;
// empty when it cannot be told.
std::string OwnDirectory() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<void*>(&OwnDirectory), &info) == 0 || info.dli_fname == nullptr) {
    return {};
  }
  const std::string path = info.dli_fname;
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// A bare file name is looked for as the dynamic loader does, then beside
// this module: a loader that resolves on behalf of another object (a
// sanitizer's interceptor, for one) does not apply this module's run path.
void* OpenLibrary(const std::string& file, std::string& error) {
  void* library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library != nullptr) return library;
  error = LoaderError();
  const std::string directory = OwnDirectory();
  if (file.find('/') != std::string::npos || directory.empty()) return nullptr;
  library = dlopen((directory + file).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) error += "; beside the plug-in: " + LoaderError();
  return library;
}

}  // namespace

OxelFunctions BindOxelLibrary(const char* file) {
  std::string error;
  void* library = OpenLibrary(file, error);
  if (library == nullptr) {
    throw NotFoundException(std::string("Could not load the Oxel library ") + file + ": " + error);
  }
  OxelFunctions table;
  const char* missing = nullptr;
  std::string detail;
  // dlerror() is cleared before each look-up so that a null result can be
  // told apart from a failure.
#define OXEL_CORE_RESOLVE(name)                                    \
  if (missing == nullptr) {                                        \
    dlerror();                                                     \
    void* symbol = dlsym(library, #name);                          \
    if (symbol == nullptr) {                                       \
      missing = #name;                                             \
      detail = LoaderError();                                      \
    } else {                                                       \
      table.name = reinterpret_cast<decltype(table.name)>(symbol); \
    }                                                              \
  }
  OXEL_FOR_EACH_FUNCTION(OXEL_CORE_RESOLVE)
#undef OXEL_CORE_RESOLVE
  if (missing != nullptr) {
    dlclose(library);
    throw NotFoundException(std::string("The Oxel library ") + file + " lacks the function " +
                            missing + ": " + detail);
  }
  return table;
}

}  // namespace oxel::core
