// Which frame belongs to which request. A camera numbers its frames in the
// order it is triggered, so the frames still owed to triggers of earlier
// requests (a frame that arrives after its request gave up on it) carry the
// IDs just above the newest frame taken. A request skips frames in that
// window and takes the first frame above it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <exception>
#include <optional>

#include "oxel/core/buffer.h"

namespace tavro::camera {

class FrameLedger {
 public:
  // A new request is about to be triggered: the frames owed so far are not
  // its own.
  void Arm() {
    staleFrom_ = newest_.value_or(0) + 1;
    staleCount_ = newest_ ? owed_ : 0;
  }
  // The stream was stopped and started afresh: frames of triggers fired
  // before it were discarded and can no longer arrive.
  void Restarted() {
    owed_ = 0;
    staleCount_ = 0;
  }
  // A trigger was fired; its frame is owed until a frame at or above its ID
  // is taken.
  void Fired() { ++owed_; }
  bool IsStale(uint64_t id) const { return id - staleFrom_ < staleCount_; }
  // A frame taken and given back undelivered.
  void Passed(uint64_t id) {
    if (!newest_) {
      // The first frame seen pays for the oldest trigger owed.
      newest_ = id;
      owed_ -= std::min<uint64_t>(owed_, 1);
      return;
    }
    const uint64_t ahead = id - *newest_;
    if (ahead == 0 || ahead > kLargestStep) return;  // older, or from before a numbering restart
    owed_ -= std::min(owed_, ahead);
    newest_ = id;
  }
  // The request's own frame: nothing earlier is owed any more.
  void Taken(uint64_t id) {
    newest_ = id;
    owed_ = 0;
    staleCount_ = 0;
  }
  // A request that skipped frames as earlier ones and then got nothing may
  // have skipped its own (a trigger the camera ignored takes no ID): the
  // next request owes nothing, so a miscount costs one request at most.
  void Forgive() { owed_ = 0; }

 private:
  // A step larger than this is a camera that numbered its frames afresh.
  static constexpr uint64_t kLargestStep = uint64_t{1} << 32;

  std::optional<uint64_t> newest_;
  uint64_t owed_ = 0;
  uint64_t staleFrom_ = 0;
  uint64_t staleCount_ = 0;
};

// The buffer's frame ID; none when the camera does not number its frames,
// and then every frame counts as the request's own.
inline std::optional<uint64_t> FrameIdOf(oxel::core::Buffer& buffer) {
  try {
    return buffer.FrameID();
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace tavro::camera
