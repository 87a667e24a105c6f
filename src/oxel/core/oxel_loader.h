// Binding of the Oxel C library: opens the shared library and resolves every
// function of its interface by name.
#ifndef OXEL_CORE_OXEL_LOADER_H
#define OXEL_CORE_OXEL_LOADER_H

#include "oxel/core/oxel_functions.h"

namespace oxel::core {

// The file the plug-in binds; found beside the plug-in through its run path.
inline constexpr const char* kOxelLibraryFile = "liboxel.so.1";

// Opens `file` (kept open for the life of the process once bound) and resolves
// every function. A missing file or function raises NotFoundException naming
// it, with the loader's own explanation.
OxelFunctions BindOxelLibrary(const char* file);

}  // namespace oxel::core

#endif  // OXEL_CORE_OXEL_LOADER_H
