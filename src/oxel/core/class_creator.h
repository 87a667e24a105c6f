// Factories of the layer's objects: every object is built inside a shared
// reference, so callers never own a raw object. A constructor that takes a
// CreationKey can only be reached through ClassCreator.
#ifndef OXEL_CORE_CLASS_CREATOR_H
#define OXEL_CORE_CLASS_CREATOR_H

#include <memory>
#include <utility>

#include "oxel/core/exceptions.h"

namespace oxel::core {

template <typename T>
struct ClassCreator;

class CreationKey {
  CreationKey() = default;
  template <typename T>
  friend struct ClassCreator;
};

template <typename T>
struct ClassCreator {
  template <typename... Args>
  static std::shared_ptr<T> Create(Args&&... args) {
    return std::make_shared<T>(CreationKey{}, std::forward<Args>(args)...);
  }
};

// Builds an object that takes over the C handle `handle`; when building fails
// (its constructor queries the C library), `release(handle)` gives it back.
template <typename T, typename Handle, typename Release, typename... Args>
std::shared_ptr<T> CreateOwner(Handle handle, Release&& release, Args&&... args) {
  try {
    return ClassCreator<T>::Create(handle, std::forward<Args>(args)...);
  } catch (...) {
    release(handle);
    throw;
  }
}

// The parent behind a weak reference; InternalErrorException "Pointer has
// expired!" when it is gone.
template <typename T>
std::shared_ptr<T> LockParent(const std::weak_ptr<T>& parent) {
  std::shared_ptr<T> locked = parent.lock();
  if (!locked) {
    throw InternalErrorException(kPointerExpiredText);
  }
  return locked;
}

}  // namespace oxel::core

#endif  // OXEL_CORE_CLASS_CREATOR_H
