// What a system knows of its interfaces, or an interface of its devices: the
// descriptors the C library reported found (and not lost since), and the
// found and lost callbacks through which they are reported.
#ifndef OXEL_CORE_DISCOVERY_LIST_H
#define OXEL_CORE_DISCOVERY_LIST_H

#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "oxel/core/callback_registry.h"
#include "oxel/core/class_creator.h"

namespace oxel::core {

// Owner: System or Interface; Descriptor: what it finds, built from a
// DescriptorHandle with the owner as its weak parent.
template <typename Owner, typename Descriptor, typename DescriptorHandle>
class DiscoveryList {
 public:
  using FoundCallback = std::function<void(const std::shared_ptr<Descriptor>&)>;
  using LostCallback = std::function<void(const std::string& key)>;

  // The wrappers hold the owner only weakly; once it is gone they do nothing.
  template <typename RegisterCall>
  OXEL_CALLBACK_HANDLE RegisterFound(std::weak_ptr<Owner> owner, FoundCallback callback,
                                     RegisterCall&& registerCall) {
    return found_.Register(
        [this, owner = std::move(owner), callback = std::move(callback)](DescriptorHandle handle) {
          if (auto alive = owner.lock()) {
            auto descriptor = Adopt(handle, owner);
            if (callback) {
              callback(descriptor);
            }
          }
        },
        std::forward<RegisterCall>(registerCall));
  }

  template <typename RegisterCall>
  OXEL_CALLBACK_HANDLE RegisterLost(std::weak_ptr<Owner> owner, LostCallback callback,
                                    RegisterCall&& registerCall) {
    return lost_.Register(
        [this, owner = std::move(owner), callback = std::move(callback)](const char* key,
                                                                         size_t keySize) {
          if (auto alive = owner.lock()) {
            // The size may or may not count the terminator; stop at either.
            std::string text = key != nullptr ? std::string(key, strnlen(key, keySize)) : "";
            Forget(text);
            if (callback) {
              callback(text);
            }
          }
        },
        std::forward<RegisterCall>(registerCall));
  }

  template <typename UnregisterCall>
  void UnregisterFound(OXEL_CALLBACK_HANDLE handle, UnregisterCall&& unregisterCall) {
    found_.Unregister(handle, std::forward<UnregisterCall>(unregisterCall));
  }

  template <typename UnregisterCall>
  void UnregisterLost(OXEL_CALLBACK_HANDLE handle, UnregisterCall&& unregisterCall) {
    lost_.Unregister(handle, std::forward<UnregisterCall>(unregisterCall));
  }

  // Runs the C update call that delivers the notifications, then rethrows
  // the first exception a callback raised during it.
  template <typename UpdateCall>
  void Update(UpdateCall&& updateCall) {
    DiscardPending();
    CallChecked(std::forward<UpdateCall>(updateCall));
    found_.RethrowPending();
    lost_.RethrowPending();
  }

  std::vector<std::shared_ptr<Descriptor>> Known() const {
    std::lock_guard lock(mutex_);
    return known_;
  }

 private:
  std::shared_ptr<Descriptor> Adopt(DescriptorHandle handle, const std::weak_ptr<Owner>& owner) {
    std::lock_guard lock(mutex_);
    for (const auto& descriptor : known_) {
      if (descriptor->Handle() == handle) {
        return descriptor;
      }
    }
    known_.push_back(ClassCreator<Descriptor>::Create(handle, owner));
    return known_.back();
  }

  void Forget(const std::string& key) {
    std::lock_guard lock(mutex_);
    std::erase_if(known_, [&](const auto& descriptor) { return descriptor->ID() == key; });
  }

  void DiscardPending() {
    found_.ClearPending();
    lost_.ClearPending();
  }

  mutable std::mutex mutex_;
  std::vector<std::shared_ptr<Descriptor>> known_;
  CallbackRegistry<DescriptorHandle> found_;
  CallbackRegistry<const char*, size_t> lost_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_DISCOVERY_LIST_H
