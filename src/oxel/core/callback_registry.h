// Callbacks registered with the C library. Each registration places the
// caller's function in a heap container, registers one plain trampoline with
// the container as its context and files the container under the callback
// handle that the C library returns.
//
// An exception thrown by a callback must not unwind through the C library:
// the trampoline keeps the first one, and the code that made the C call which
// delivered the notifications rethrows it with RethrowPending().
#ifndef OXEL_CORE_CALLBACK_REGISTRY_H
#define OXEL_CORE_CALLBACK_REGISTRY_H

#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "oxel/core/checked_call.h"
#include "oxel/oxel_c.h"

namespace oxel::core {

// CArgs: the arguments of the C callback before its context pointer.
template <typename... CArgs>
class CallbackRegistry {
 public:
  using Function = std::function<void(CArgs...)>;
  using Trampoline = void (*)(CArgs..., void*);

  // `registerCall(trampoline, context, OXEL_CALLBACK_HANDLE*)` makes the C call.
  template <typename RegisterCall>
  OXEL_CALLBACK_HANDLE Register(Function function, RegisterCall&& registerCall) {
    auto container = std::make_unique<Container>(Container{std::move(function), this});
    const auto handle = QueryValue<OXEL_CALLBACK_HANDLE>([&](OXEL_CALLBACK_HANDLE* out) {
      return registerCall(&CallbackRegistry::Invoke, container.get(), out);
    });
    std::lock_guard lock(mutex_);
    containers_[handle] = std::move(container);
    return handle;
  }

  // `unregisterCall(handle)` makes the C call; the container goes afterwards.
  template <typename UnregisterCall>
  void Unregister(OXEL_CALLBACK_HANDLE handle, UnregisterCall&& unregisterCall) {
    CallChecked([&] { return unregisterCall(handle); });
    std::lock_guard lock(mutex_);
    containers_.erase(handle);
  }

  // Forgets an exception left over from a C call that failed itself.
  void ClearPending() {
    std::lock_guard lock(mutex_);
    pending_ = nullptr;
  }

  // Rethrows (and forgets) the first exception a callback raised.
  void RethrowPending() {
    std::exception_ptr pending;
    {
      std::lock_guard lock(mutex_);
      pending = std::exchange(pending_, nullptr);
    }
    if (pending) {
      std::rethrow_exception(pending);
    }
  }

 private:
  struct Container {
    Function function;
    CallbackRegistry* owner;
  };

  static void Invoke(CArgs... args, void* context) {
    auto* container = static_cast<Container*>(context);
    try {
      container->function(args...);
    } catch (...) {
      std::lock_guard lock(container->owner->mutex_);
      if (!container->owner->pending_) {
        container->owner->pending_ = std::current_exception();
      }
    }
  }

  std::mutex mutex_;
  std::unordered_map<OXEL_CALLBACK_HANDLE, std::unique_ptr<Container>> containers_;
  std::exception_ptr pending_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_CALLBACK_REGISTRY_H
