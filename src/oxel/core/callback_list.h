// A registry of the layer's own callbacks (not registered with the C library):
// each registration gets a handle, and all callbacks are called under the
// registry's lock.
#ifndef OXEL_CORE_CALLBACK_LIST_H
#define OXEL_CORE_CALLBACK_LIST_H

#include <cstdint>
#include <functional>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace oxel::core {

using CallbackHandle = uint64_t;

template <typename... Args>
class CallbackList {
 public:
  using Callback = std::function<void(Args...)>;

  CallbackHandle Register(Callback callback) {
    std::lock_guard lock(mutex_);
    const CallbackHandle handle = ++lastHandle_;
    callbacks_.emplace(handle, std::move(callback));
    return handle;
  }

  // False when the handle is not registered.
  bool Unregister(CallbackHandle handle) {
    std::lock_guard lock(mutex_);
    return callbacks_.erase(handle) != 0;
  }

  void Invoke(const Args&... args) const {
    std::lock_guard lock(mutex_);
    for (const auto& [handle, callback] : callbacks_) {
      if (callback) {
        callback(args...);
      }
    }
  }

 private:
  mutable std::mutex mutex_;
  CallbackHandle lastHandle_ = 0;
  std::unordered_map<CallbackHandle, Callback> callbacks_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_CALLBACK_LIST_H
