// The buffers of one data stream and the GenTL queues they move through:
// announced (held by the user), the input pool (queued, waiting to be
// filled, oldest first) and the output queue (filled, waiting to be taken by
// a wait). Not locked: the camera's mutex is held by every caller, and a
// waiter releases it while it blocks.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "oxel/oxel_c.h"

namespace oxelc {

class BufferPool;

class PoolBuffer {
 public:
  enum class State { Announced, Queued, Filled };

  // `guard` is the stream owner's mutex, which guards the frame values below.
  PoolBuffer(const BufferPool* pool, std::mutex& guard, size_t size, void* userPtr);

  const BufferPool* Pool() const { return pool_; }
  uint8_t* Base() const { return memory_.get(); }
  size_t Size() const { return size_; }
  void* UserPtr() const { return userPtr_; }
  std::mutex& Guard() const { return guard_; }

  // What the last frame left in the buffer (camera mutex held).
  State state = State::Announced;
  bool hasFrame = false;
  bool incomplete = false;
  size_t width = 0;
  size_t height = 0;
  size_t xOffset = 0;
  size_t yOffset = 0;
  uint64_t pixelFormat = 0;
  uint64_t frameId = 0;
  uint64_t timestampNs = 0;

 private:
  const BufferPool* pool_;
  std::mutex& guard_;
  std::unique_ptr<uint8_t[]> memory_;
  size_t size_;
  void* userPtr_;
};

class BufferPool {
 public:
  // `guard` is the camera's mutex, held by every caller.
  BufferPool(std::string name, std::mutex& guard) : name_(std::move(name)), guard_(guard) {}

  std::shared_ptr<PoolBuffer> Announce(size_t size, void* userPtr);
  void Queue(const std::shared_ptr<PoolBuffer>& buffer);
  // Returns the buffer's user pointer.
  void* Revoke(const std::shared_ptr<PoolBuffer>& buffer);
  void Flush(OXEL_DATA_STREAM_FLUSH_MODE mode);

  void Start(uint64_t framesToAcquire);
  void Stop();
  bool Grabbing() const { return grabbing_; }

  // Blocks with `lock` released until a buffer is filled, the time passes,
  // KillWait or Close. A wait that starts on a stream that is not grabbing
  // and has no filled buffer fails at once. Returns null when the camera was
  // lost (the caller names why).
  std::shared_ptr<PoolBuffer> Wait(std::unique_lock<std::mutex>& lock, uint64_t timeoutMs);
  void KillWait();
  // Ends every wait with ABORTED and refuses later ones.
  void Close();
  // The camera is gone: grabbing ends and every wait returns null.
  void Lose();

  // The producer's side: the oldest queued buffer (null: an underrun, counted).
  std::shared_ptr<PoolBuffer> TakeQueued();
  // Buffers taken but not filled (an acquisition stopped under them) go back
  // to the front of the input pool, in the order given.
  void ReturnUnfilled(const std::vector<std::shared_ptr<PoolBuffer>>& buffers);
  void Deliver(const std::shared_ptr<PoolBuffer>& buffer);

  size_t AnnouncedCount() const { return announced_.size(); }
  size_t QueuedCount() const { return input_.size(); }
  size_t AwaitingDeliveryCount() const { return output_.size(); }
  uint64_t DeliveredCount() const { return delivered_; }
  uint64_t UnderrunCount() const { return underruns_; }
  const std::string& Name() const { return name_; }
  std::vector<std::shared_ptr<PoolBuffer>> Announced() const { return announced_; }

 private:
  [[noreturn]] void FailHere(OXEL_RETURN_CODE code, const std::string& what) const;
  void CheckMine(const std::shared_ptr<PoolBuffer>& buffer) const;

  std::string name_;
  std::mutex& guard_;
  std::vector<std::shared_ptr<PoolBuffer>> announced_;
  std::deque<std::shared_ptr<PoolBuffer>> input_;
  std::deque<std::shared_ptr<PoolBuffer>> output_;
  std::condition_variable changed_;
  bool grabbing_ = false;
  bool closed_ = false;
  bool lost_ = false;
  uint64_t framesToAcquire_ = 0;
  uint64_t acquired_ = 0;
  uint64_t delivered_ = 0;
  uint64_t underruns_ = 0;
  size_t waiters_ = 0;
  uint64_t killGeneration_ = 0;
  bool killPending_ = false;
};

}  // namespace oxelc
