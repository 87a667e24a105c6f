#include "oxelc/frame_pattern.h"

#include <algorithm>
#include <cstring>

#include <emmintrin.h>

#include "oxel_sim.h"

namespace oxelc {
namespace {

// Enough for a few changes of the tens digit; each entry is one row.
constexpr size_t kFrameRowsKept = 80;

// destination = picture + tag, 16 bytes at a time (SSE2 is part of x86-64).
// Levels stay below 240 and tags below 16, so no byte wraps.
void AddRows(uint8_t* destination, const uint8_t* picture, const uint8_t* tags, size_t count) {
  size_t k = 0;
  for (; k + 16 <= count; k += 16) {
    const __m128i sum = _mm_add_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(picture + k)),
                                     _mm_loadu_si128(reinterpret_cast<const __m128i*>(tags + k)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(destination + k), sum);
  }
  for (; k < count; ++k) destination[k] = static_cast<uint8_t>(picture[k] + tags[k]);
}

}  // namespace

void FramePattern::Prepare(const FrameGeometry& geometry, uint64_t frameId) {
  const uint64_t upper = static_cast<uint32_t>(frameId) >> 4;
  if (geometry.offsetX != offsetX_ || geometry.width != width_ ||
      geometry.bytesPerPixel != bytesPerPixel_) {
    offsetX_ = geometry.offsetX;
    width_ = geometry.width;
    bytesPerPixel_ = geometry.bytesPerPixel;
    steadyRows_.clear();
    frameRows_.clear();
    tagsFor_ = UINT64_MAX;
  }
  if (upper == tagsFor_) return;
  tagsFor_ = upper;
  const size_t rowBytes = static_cast<size_t>(width_) * bytesPerPixel_;
  tags_.resize(16 * rowBytes);
  for (uint32_t phase = 0; phase < 16; ++phase) {
    for (uint32_t k = 0; k < width_; ++k) {
      // Phase p at y 0 is the frame ID with low nibble p.
      const uint8_t tag = OxelSim_PatternTag(offsetX_ + k, 0, upper << 4 | phase);
      std::memset(&tags_[phase * rowBytes + static_cast<size_t>(k) * bytesPerPixel_], tag,
                  bytesPerPixel_);
    }
  }
}

const uint8_t* FramePattern::PictureRow(uint64_t rowKey) {
  const bool changes = (rowKey & OXEL_SIM_PATTERN_FRAME_ROW) != 0;
  auto& rows = changes ? frameRows_ : steadyRows_;
  if (auto found = rows.find(rowKey); found != rows.end()) return found->second.data();
  if (changes && frameRows_.size() >= kFrameRowsKept) frameRows_.clear();
  std::vector<uint8_t> row(static_cast<size_t>(width_) * bytesPerPixel_);
  for (uint32_t k = 0; k < width_; ++k) {
    const uint32_t colour = OxelSim_PatternColour(offsetX_ + k, rowKey);
    uint8_t* pixel = &row[static_cast<size_t>(k) * bytesPerPixel_];
    if (bytesPerPixel_ == 3) {
      pixel[0] = static_cast<uint8_t>(colour);
      pixel[1] = static_cast<uint8_t>(colour >> 8);
      pixel[2] = static_cast<uint8_t>(colour >> 16);
    } else {
      pixel[0] = OxelSim_PatternLuma(colour);
    }
  }
  return rows.emplace(rowKey, std::move(row)).first->second.data();
}

size_t FramePattern::Fill(const FrameGeometry& geometry, uint64_t frameId, uint8_t* destination,
                          size_t capacity) {
  Prepare(geometry, frameId);
  const size_t rowBytes = static_cast<size_t>(geometry.width) * geometry.bytesPerPixel;
  size_t written = 0;
  uint64_t lastKey = 0;
  const uint8_t* picture = nullptr;
  for (uint32_t row = 0; row < geometry.height && written < capacity; ++row) {
    const uint32_t y = geometry.offsetY + row;
    const uint64_t key = OxelSim_PatternRowKey(y, frameId);
    if (picture == nullptr || key != lastKey) {
      picture = PictureRow(key);
      lastKey = key;
    }
    const uint32_t phase = OxelSim_PatternTag(0, y, frameId);
    const size_t count = std::min(rowBytes, capacity - written);
    AddRows(destination + written, picture, tags_.data() + phase * rowBytes, count);
    written += count;
  }
  return written;
}

}  // namespace oxelc
