// One-time initialisation of lazily built parts. The step runs on first use;
// concurrent first users wait for it; a step that throws leaves the object
// uninitialised so that the next use runs it again.
#ifndef OXEL_CORE_INIT_ONCE_H
#define OXEL_CORE_INIT_ONCE_H

#include <atomic>
#include <mutex>

namespace oxel::core {

class InitOnce {
 public:
  virtual ~InitOnce() = default;
  InitOnce(const InitOnce&) = delete;
  InitOnce& operator=(const InitOnce&) = delete;

 protected:
  InitOnce() = default;
  // The class's initialisation step.
  virtual void InitializeOnce() = 0;
  // Runs the step unless it has succeeded before.
  void EnsureInitialized();

 private:
  std::mutex initMutex_;
  std::atomic<bool> initialized_{false};
};

}  // namespace oxel::core

#endif  // OXEL_CORE_INIT_ONCE_H
