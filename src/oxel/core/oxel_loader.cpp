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

}  // namespace

OxelFunctions BindOxelLibrary(const char* file) {
  void* library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    throw NotFoundException(std::string("Could not load the Oxel library ") + file + ": " +
                            LoaderError());
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
