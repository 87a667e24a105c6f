// Every exported function of the library: the Oxel C interface and the
// simulator's control functions, declared with default visibility (the rest
// of the library is hidden).
#pragma once

#pragma GCC visibility push(default)
#include "oxel/oxel_c.h"
#include "oxel_sim.h"
#pragma GCC visibility pop

#include "core/api.h"
#include "core/simulator.h"

namespace oxelsim {

// A handle of the given kind, after checking that the library is started.
template <class T, class Handle>
Ref<T> Find(Handle handle, Kind kind, const char* what) {
  Simulator& simulator = Simulator::Instance();
  simulator.RequireStarted();
  return simulator.handles.Find<T>(handle, kind, what);
}

}  // namespace oxelsim
