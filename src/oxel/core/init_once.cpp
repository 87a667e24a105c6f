#include "oxel/core/init_once.h"

namespace oxel::core {

// std::call_once would also retry after an exception, but some standard
// libraries hang in that case; a mutex and a flag have no such trap.
void InitOnce::EnsureInitialized() {
  if (initialized_.load(std::memory_order_acquire)) {
    return;
  }
  std::lock_guard lock(initMutex_);
  if (initialized_.load(std::memory_order_relaxed)) {
    return;
  }
  InitializeOnce();
  initialized_.store(true, std::memory_order_release);
}

}  // namespace oxel::core
