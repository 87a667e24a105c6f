// Aravis's fake camera drawing the simulated cameras' test picture (see
// sim/oxel_sim.h) instead of its own ramp, frame ID included, so that frames
// through Aravis are checked as frames from the simulator are.
//
// Aravis's in-process fake camera sends frames at a steady rate whatever its
// trigger settings. With the trigger on, the picture lets a frame through
// only for a software trigger (nothing is wired to the fake's line 0): the
// others are marked with frame ID 0, which no camera sends, and the data
// stream gives them back to Aravis unseen. The fake's rate in trigger mode
// is raised so that a trigger is answered within a few milliseconds.
#pragma once

#include <arv.h>

#include <cstdint>
#include <mutex>

#include "oxelc/frame_pattern.h"

namespace oxelarv {

// Widens the 16-bit block IDs of GigE Vision (and of the fake camera, which
// counts the same way) into IDs that keep counting past 65535. 0 is never a
// block ID, so a wrap goes from 65535 to 65537.
class FrameIdUnwrapper {
 public:
  uint64_t Next(uint64_t raw);

 private:
  uint64_t last_ = 0;
  bool any_ = false;
};

class TestPicture {
 public:
  // How often the fake camera looks for a trigger, in trigger mode.
  static constexpr double kTriggerPollHz = 200.0;
  // The frame ID of a frame that no trigger asked for.
  static constexpr uint64_t kUntriggered = 0;

  // Who answers software triggers: the in-process fake camera sends frames
  // regardless, so the picture lets through only those a trigger asked for;
  // the GigE Vision fake camera answers them itself.
  enum class Triggers { kPictureAnswers, kCameraAnswers };

  // Installs the picture on `camera` until Remove; the camera must outlive it.
  void Install(ArvFakeCamera* camera, Triggers triggers = Triggers::kPictureAnswers);
  void Remove();
  ~TestPicture() { Remove(); }

  // Called by whoever takes a finished buffer from Aravis before reading its
  // pixels: Aravis hands the buffer over through GLib's queues, which the
  // thread sanitizer cannot see into, so the drawing is published here too.
  static void SeeDrawnFrames();
  // Called before a buffer is given to Aravis: whatever its owner did with
  // it (read the last frame, wrote it) comes before the next drawing.
  static void HandOverBuffer();

 private:
  static void Fill(ArvBuffer* buffer, void* self, guint32 exposureUs, guint32 gain,
                   ArvPixelFormat format);

  ArvFakeCamera* camera_ = nullptr;
  Triggers triggers_ = Triggers::kPictureAnswers;
  std::mutex mutex_;
  FrameIdUnwrapper ids_;
  oxelc::FramePattern pattern_;
};

}  // namespace oxelarv
