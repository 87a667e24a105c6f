// Operating-system style events: a manual-reset event stays signalled until
// it is reset; an auto-reset event releases one waiter and resets itself.
// Closing an event is destroying it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace tavro::platform {

class Event {
 public:
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  void Set();
  void Reset();
  // Waits without a time limit.
  void Wait();
  // False when the time passed without the event being signalled.
  bool WaitFor(std::chrono::milliseconds timeout);

 protected:
  Event(bool autoReset, bool initiallySet) : autoReset_(autoReset), signalled_(initiallySet) {}
  ~Event() = default;

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  const bool autoReset_;
  bool signalled_;
};

class ManualResetEvent : public Event {
 public:
  explicit ManualResetEvent(bool initiallySet = false) : Event(false, initiallySet) {}
};

class AutoResetEvent : public Event {
 public:
  explicit AutoResetEvent(bool initiallySet = false) : Event(true, initiallySet) {}
};

}  // namespace tavro::platform
