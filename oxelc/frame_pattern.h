// Writes the test picture of the simulated cameras (see sim/oxel_sim.h) into a buffer. The
// picture is made of few distinct rows: each is drawn once and kept, and a
// frame costs one add of a row and a precomputed frame-tag row per row. The
// tag rows change with the frame ID's upper nibbles, once every 16 frames.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace oxelc {

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
  void Prepare(const FrameGeometry& geometry, uint64_t frameId);
  const uint8_t* PictureRow(uint64_t rowKey);

  uint32_t offsetX_ = 0;
  uint32_t width_ = 0;
  uint32_t bytesPerPixel_ = 0;
  // Tag rows for the 16 phases of (frame ID + 7 y), one after the other,
  // for frame IDs whose low 32 bits shifted right by 4 are `tagsFor_`.
  std::vector<uint8_t> tags_;
  uint64_t tagsFor_ = UINT64_MAX;
  // Picture rows by key; those that change with the frame are dropped now
  // and then, the others kept until the geometry changes.
  std::unordered_map<uint64_t, std::vector<uint8_t>> steadyRows_;
  std::unordered_map<uint64_t, std::vector<uint8_t>> frameRows_;
};

}  // namespace oxelc
