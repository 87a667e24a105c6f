// Aravis's fake camera drawing the simulated cameras' test picture (see
// sim/oxel_sim.h) instead of its own ramp, frame ID included, so that frames
// through Aravis are checked as frames from the simulator are.
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
  // Installs the picture on `camera` until Remove; the camera must outlive it.
  void Install(ArvFakeCamera* camera);
  void Remove();
  ~TestPicture() { Remove(); }

 private:
  static void Fill(ArvBuffer* buffer, void* self, guint32 exposureUs, guint32 gain,
                   ArvPixelFormat format);

  ArvFakeCamera* camera_ = nullptr;
  std::mutex mutex_;
  FrameIdUnwrapper ids_;
  oxelc::FramePattern pattern_;
};

}  // namespace oxelarv
