#include "oxelc/buffer_pool.h"

#include <algorithm>
#include <chrono>

#include "oxelc/api_call.h"
#include "oxelc/handle_registry.h"

namespace oxelc {

PoolBuffer::PoolBuffer(const BufferPool* pool, std::mutex& guard, size_t size, void* userPtr)
    : pool_(pool),
      guard_(guard),
      memory_(std::make_unique_for_overwrite<uint8_t[]>(size)),
      size_(size),
      userPtr_(userPtr) {}

void BufferPool::FailHere(OXEL_RETURN_CODE code, const std::string& what) const {
  Fail(code, std::string(CurrentFunction()) + ": " + what + " (" + name_ + ")");
}

void BufferPool::CheckMine(const std::shared_ptr<PoolBuffer>& buffer) const {
  if (buffer->Pool() != this) {
    FailHere(OXEL_RETURN_CODE_INVALID_HANDLE,
             "buffer " + HandleText(buffer.get()) + " was announced on another data stream");
  }
}

std::shared_ptr<PoolBuffer> BufferPool::Announce(size_t size, void* userPtr) {
  if (size == 0) FailHere(OXEL_RETURN_CODE_INVALID_ARGUMENT, "a buffer size of 0 bytes");
  auto buffer = std::make_shared<PoolBuffer>(this, guard_, size, userPtr);
  announced_.push_back(buffer);
  return buffer;
}

void BufferPool::Queue(const std::shared_ptr<PoolBuffer>& buffer) {
  CheckMine(buffer);
  if (buffer->state == PoolBuffer::State::Queued) {
    FailHere(OXEL_RETURN_CODE_INVALID_ARGUMENT,
             "buffer " + HandleText(buffer.get()) + " is already queued in the input pool");
  }
  if (buffer->state == PoolBuffer::State::Filled) {
    FailHere(OXEL_RETURN_CODE_INVALID_ARGUMENT,
             "buffer " + HandleText(buffer.get()) +
                 " is in the output queue; take it with a wait before queueing it again");
  }
  buffer->state = PoolBuffer::State::Queued;
  input_.push_back(buffer);
}

void* BufferPool::Revoke(const std::shared_ptr<PoolBuffer>& buffer) {
  CheckMine(buffer);
  if (buffer->state != PoolBuffer::State::Announced && grabbing_) {
    FailHere(OXEL_RETURN_CODE_BAD_ACCESS,
             "buffer " + HandleText(buffer.get()) + " is still " +
                 (buffer->state == PoolBuffer::State::Queued ? "in the input pool"
                                                             : "in the output queue") +
                 " while the stream is acquiring; stop the acquisition or flush first");
  }
  std::erase(input_, buffer);
  std::erase(output_, buffer);
  std::erase(announced_, buffer);
  return buffer->UserPtr();
}

void BufferPool::Flush(OXEL_DATA_STREAM_FLUSH_MODE mode) {
  auto toState = [](std::deque<std::shared_ptr<PoolBuffer>>& queue, PoolBuffer::State state) {
    for (auto& buffer : queue) buffer->state = state;
    queue.clear();
  };
  switch (mode) {
    case OXEL_DATA_STREAM_FLUSH_MODE_INPUT_TO_OUTPUT:
      for (auto& buffer : input_) {
        buffer->state = PoolBuffer::State::Filled;
        buffer->hasFrame = false;
        buffer->incomplete = true;
        output_.push_back(buffer);
      }
      input_.clear();
      changed_.notify_all();
      return;
    case OXEL_DATA_STREAM_FLUSH_MODE_DISCARD_OUTPUT:
      toState(output_, PoolBuffer::State::Announced);
      return;
    case OXEL_DATA_STREAM_FLUSH_MODE_ALL_TO_INPUT:
      input_.clear();
      output_.clear();
      for (auto& buffer : announced_) {
        buffer->state = PoolBuffer::State::Queued;
        input_.push_back(buffer);
      }
      return;
    case OXEL_DATA_STREAM_FLUSH_MODE_UNQUEUED_TO_INPUT:
      for (auto& buffer : announced_) {
        if (buffer->state != PoolBuffer::State::Announced) continue;
        buffer->state = PoolBuffer::State::Queued;
        input_.push_back(buffer);
      }
      return;
    case OXEL_DATA_STREAM_FLUSH_MODE_DISCARD_ALL:
      toState(input_, PoolBuffer::State::Announced);
      toState(output_, PoolBuffer::State::Announced);
      return;
    default:
      FailHere(OXEL_RETURN_CODE_INVALID_ARGUMENT, "unknown flush mode " + std::to_string(mode));
  }
}

void BufferPool::Start(uint64_t framesToAcquire) {
  if (grabbing_) FailHere(OXEL_RETURN_CODE_BAD_ACCESS, "acquisition is already started");
  if (framesToAcquire == 0) {
    FailHere(OXEL_RETURN_CODE_INVALID_ARGUMENT,
             "0 frames to acquire (OXEL_INFINITE_NUMBER acquires without end)");
  }
  grabbing_ = true;
  framesToAcquire_ = framesToAcquire;
  acquired_ = 0;
}

void BufferPool::Stop() {
  grabbing_ = false;
}

std::shared_ptr<PoolBuffer> BufferPool::Wait(std::unique_lock<std::mutex>& lock,
                                             uint64_t timeoutMs) {
  const uint64_t generation = killGeneration_;
  if (closed_) FailHere(OXEL_RETURN_CODE_ABORTED, "the data stream is closed");
  if (killPending_) {
    // A kill with nobody waiting ends the next wait.
    killPending_ = false;
    FailHere(OXEL_RETURN_CODE_ABORTED, "the wait was killed by OXEL_DataStream_KillWait");
  }
  if (output_.empty()) {
    if (!grabbing_) {
      FailHere(OXEL_RETURN_CODE_NOT_AVAILABLE,
               "no finished buffer to wait for: acquisition is not started on the stream and "
               "its output queue is empty");
    }
    ++waiters_;
    const auto done = [&] {
      return !output_.empty() || closed_ || lost_ || killGeneration_ != generation;
    };
    bool ended = true;
    constexpr uint64_t kLongest = uint64_t{1} << 40;
    if (timeoutMs >= kLongest) {
      changed_.wait(lock, done);
    } else {
      ended = changed_.wait_for(lock, std::chrono::milliseconds(timeoutMs), done);
    }
    --waiters_;
    if (closed_) FailHere(OXEL_RETURN_CODE_ABORTED, "the data stream was closed during the wait");
    if (lost_) return nullptr;
    if (killGeneration_ != generation) {
      FailHere(OXEL_RETURN_CODE_ABORTED, "the wait was killed by OXEL_DataStream_KillWait");
    }
    if (!ended) {
      FailHere(OXEL_RETURN_CODE_TIMEOUT,
               "no buffer was finished within " + std::to_string(timeoutMs) + " ms");
    }
  }
  std::shared_ptr<PoolBuffer> buffer = output_.front();
  output_.pop_front();
  buffer->state = PoolBuffer::State::Announced;
  return buffer;
}

void BufferPool::KillWait() {
  if (waiters_ == 0) {
    killPending_ = true;
    return;
  }
  ++killGeneration_;
  changed_.notify_all();
}

void BufferPool::Lose() {
  lost_ = true;
  grabbing_ = false;
  changed_.notify_all();
}

void BufferPool::Close() {
  closed_ = true;
  grabbing_ = false;
  changed_.notify_all();
}

std::shared_ptr<PoolBuffer> BufferPool::TakeQueued() {
  if (input_.empty()) {
    ++underruns_;
    return nullptr;
  }
  std::shared_ptr<PoolBuffer> buffer = input_.front();
  input_.pop_front();
  return buffer;
}

void BufferPool::ReturnUnfilled(const std::vector<std::shared_ptr<PoolBuffer>>& buffers) {
  for (auto it = buffers.rbegin(); it != buffers.rend(); ++it) {
    (*it)->state = PoolBuffer::State::Queued;
    input_.push_front(*it);
  }
}

void BufferPool::Deliver(const std::shared_ptr<PoolBuffer>& buffer) {
  buffer->state = PoolBuffer::State::Filled;
  output_.push_back(buffer);
  ++delivered_;
  ++acquired_;
  if (framesToAcquire_ != OXEL_INFINITE_NUMBER && acquired_ >= framesToAcquire_) grabbing_ = false;
  changed_.notify_all();
}

}  // namespace oxelc
