// Writes the simulator's frame pattern (see oxel_sim.h) into a buffer. Each
// row of the pattern is a window of one precomputed ramp, so a frame costs one
// row copy per row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace oxelsim {

struct FrameGeometry {
  uint32_t width = 0;
  uint32_t height = 0;
  uint32_t offsetX = 0;
  uint32_t offsetY = 0;
  uint32_t bytesPerPixel = 1;  // 1 Mono8, 3 BGR8
};

class FramePattern {
 public:
  // Fills at most `capacity` bytes of `destination` with the frame; returns
  // the number of bytes written (the whole frame when it fits).
  size_t Fill(const FrameGeometry& geometry, uint64_t frameId, uint8_t* destination,
              size_t capacity);

 private:
  void Prepare(uint32_t width, uint32_t bytesPerPixel);

  std::vector<uint8_t> ramp_;
  uint32_t rampWidth_ = 0;
  uint32_t rampBytesPerPixel_ = 0;
};

}  // namespace oxelsim
