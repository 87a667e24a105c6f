// Callbacks registered by a C caller, each under the handle it was given.
// Calls are made on a snapshot, with no lock held, so a callback may call the
// library again.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "oxel/oxel_c.h"
#include "oxelc/api_call.h"

namespace oxelc {

template <class Function>
class CallbackList {
 public:
  struct Entry {
    Function function;
    void* context;
  };

  OXEL_CALLBACK_HANDLE Add(Function function, void* context) {
    if (function == nullptr) {
      Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT,
           std::string(CurrentFunction()) + ": null callback function");
    }
    auto entry = std::make_shared<Entry>(Entry{function, context});
    std::lock_guard lock(mutex_);
    entries_.push_back(entry);
    return reinterpret_cast<OXEL_CALLBACK_HANDLE>(entry.get());
  }

  void Remove(OXEL_CALLBACK_HANDLE handle) {
    std::lock_guard lock(mutex_);
    for (auto it = entries_.begin(); it != entries_.end(); ++it) {
      if (reinterpret_cast<OXEL_CALLBACK_HANDLE>(it->get()) == handle) {
        entries_.erase(it);
        return;
      }
    }
    Fail(OXEL_RETURN_CODE_INVALID_HANDLE,
         std::string(CurrentFunction()) +
             ": the callback handle was not registered here (or was unregistered already)");
  }

  std::vector<std::shared_ptr<Entry>> Snapshot() const {
    std::lock_guard lock(mutex_);
    return entries_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::shared_ptr<Entry>> entries_;
};

// Tells the callbacks of `lost` of every key that went away, then those of
// `found` of every new descriptor (as the handle type `Handle`). Called with
// no lock held: a callback may call the library again.
template <class Handle, class Descriptor, class LostFunction, class FoundFunction>
void ReportLostAndFound(const std::vector<std::string>& lostKeys,
                        const std::vector<std::shared_ptr<Descriptor>>& found,
                        const CallbackList<LostFunction>& lost,
                        const CallbackList<FoundFunction>& foundList) {
  for (const std::string& key : lostKeys) {
    for (const auto& entry : lost.Snapshot()) {
      entry->function(key.c_str(), key.size() + 1, entry->context);
    }
  }
  for (const auto& descriptor : found) {
    for (const auto& entry : foundList.Snapshot()) {
      entry->function(reinterpret_cast<Handle>(descriptor.get()), entry->context);
    }
  }
}

}  // namespace oxelc
