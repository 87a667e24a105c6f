// Every exported function of the library: the Oxel C interface and the
// simulator's control functions, declared with default visibility (the rest
// of the library is hidden).
#pragma once

#pragma GCC visibility push(default)
#include "oxel/oxel_c.h"
#include "oxel_sim.h"
#pragma GCC visibility pop

#include <mutex>

#include "core/api.h"
#include "core/simulator.h"
#include "transport/data_stream.h"
#include "transport/device.h"
#include "transport/interface.h"
#include "transport/node_map.h"
#include "transport/producer_library.h"

namespace oxelsim {

// A handle of the given kind, after checking that the library is started.
template <class T, class Handle>
Ref<T> Find(Handle handle, Kind kind, const char* what) {
  Simulator& simulator = Simulator::Instance();
  simulator.RequireStarted();
  return simulator.handles.Find<T>(handle, kind, what);
}

// Fails with NOT_INITIALIZED unless a user has initialized the library.
inline void RequireStarted() {
  Simulator::Instance().RequireStarted();
}

// A node handle of any kind.
template <class Handle>
Ref<Node> FindNode(Handle handle, const char* what) {
  return Find<Node>(handle, Kind::Node, what);
}

// Guards the structure of opened modules while one closes.
inline std::unique_lock<std::mutex> LockStructure() {
  return std::unique_lock(Simulator::Instance().mutex);
}

}  // namespace oxelsim

// The objects behind the exported functions that every Oxel library shares.
namespace oxellib = oxelsim;
