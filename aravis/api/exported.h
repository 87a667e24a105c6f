// Every exported function of the library: the Oxel C interface, declared with
// default visibility (the rest of the library is hidden), and the objects
// behind it.
#pragma once

#pragma GCC visibility push(default)
#include "oxel/oxel_c.h"
#pragma GCC visibility pop

#include <mutex>

#include "core/library.h"
#include "nodes/node_map.h"
#include "transport/bus.h"
#include "transport/data_stream.h"
#include "transport/device.h"

namespace oxelarv {

// Fails with NOT_INITIALIZED unless a user has initialized the library.
inline void RequireStarted() {
  Library::Instance().RequireStarted();
}

// A node handle of any kind.
template <class Handle>
Ref<Node> FindNode(Handle handle, const char* what) {
  return Find<Node>(handle, Kind::Node, what);
}

// Guards the structure of opened modules while one closes.
inline std::unique_lock<std::recursive_mutex> LockStructure() {
  return std::unique_lock(Library::Instance().mutex);
}

}  // namespace oxelarv

// The objects behind the exported functions that every Oxel library shares.
namespace oxellib = oxelarv;
