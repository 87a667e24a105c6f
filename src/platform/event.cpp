#include "platform/event.h"

namespace tavro::platform {

void Event::Set() {
  {
    std::lock_guard lock(mutex_);
    signalled_ = true;
  }
  // An auto-reset event releases one waiter; a manual one releases all.
  if (autoReset_) {
    changed_.notify_one();
  } else {
    changed_.notify_all();
  }
}

void Event::Reset() {
  std::lock_guard lock(mutex_);
  signalled_ = false;
}

void Event::Wait() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return signalled_; });
  if (autoReset_) signalled_ = false;
}

bool Event::WaitFor(std::chrono::milliseconds timeout) {
  std::unique_lock lock(mutex_);
  if (!changed_.wait_for(lock, timeout, [this] { return signalled_; })) return false;
  if (autoReset_) signalled_ = false;
  return true;
}

}  // namespace tavro::platform
