#include "camera/display_drawing.h"

#include <algorithm>

#include "camera/pixel_kernels.h"

namespace tavro::camera {
namespace {

// Whether two byte ranges share memory; compared as integers because the
// planes and the display are unrelated allocations.
bool Overlap(const void* a, size_t aBytes, const void* b, size_t bBytes) {
  const auto first = reinterpret_cast<uintptr_t>(a);
  const auto second = reinterpret_cast<uintptr_t>(b);
  return first < second + bBytes && second < first + aBytes;
}

}  // namespace

const std::array<uint32_t, 256>& GreyDisplayTable() {
  static const std::array<uint32_t, 256> table = [] {
    std::array<uint32_t, 256> entries{};
    for (uint32_t i = 0; i < entries.size(); ++i) entries[i] = i * 65536 + i * 256 + i;
    return entries;
  }();
  return table;
}

namespace {

// The part of row y still to draw: from `first`, `count` pixels.
struct RowPart {
  size_t first;
  size_t count;
};

RowPart ToDraw(const DisplayArea& area, int32_t y) {
  const int32_t first = y < area.drawnRows ? std::clamp(area.drawnColumns, 0, area.columns) : 0;
  return {static_cast<size_t>(first), static_cast<size_t>(area.columns - first)};
}

}  // namespace

void DrawGrey(const uint8_t* grey, ptrdiff_t pitch, const DisplayArea& area) {
  if (grey == nullptr || area.pixels == nullptr || area.columns <= 0) return;
  const uint32_t* table = GreyDisplayTable().data();
  const auto draw = Kernels().greyDisplayRow;
  for (int32_t y = 0; y < area.rows; ++y) {
    const auto [first, pixels] = ToDraw(area, y);
    const uint8_t* source = grey + pitch * y + first;
    uint32_t* display = area.pixels + area.stride * y + first;
    // The wide steps read ahead of what they write; a display row over its
    // own source must go pixel by pixel to give the sequential result.
    if (!Overlap(display, pixels * sizeof(uint32_t), source, pixels)) {
      draw(source, display, pixels);
      continue;
    }
    for (size_t x = 0; x < pixels; ++x) display[x] = table[source[x]];
  }
}

void DrawColour(const uint8_t* red, const uint8_t* green, const uint8_t* blue, ptrdiff_t pitch,
                const DisplayArea& area) {
  if (!red || !green || !blue || area.pixels == nullptr || area.columns <= 0) return;
  const auto draw = Kernels().colourDisplayRow;
  for (int32_t y = 0; y < area.rows; ++y) {
    const auto [first, pixels] = ToDraw(area, y);
    const ptrdiff_t offset = pitch * y + static_cast<ptrdiff_t>(first);
    const uint8_t *r = red + offset, *g = green + offset, *b = blue + offset;
    uint32_t* display = area.pixels + area.stride * y + first;
    const size_t displayBytes = pixels * sizeof(uint32_t);
    if (!Overlap(display, displayBytes, r, pixels) && !Overlap(display, displayBytes, g, pixels) &&
        !Overlap(display, displayBytes, b, pixels)) {
      draw(r, g, b, display, pixels);
      continue;
    }
    for (size_t x = 0; x < pixels; ++x) display[x] = DisplayPixel(r[x], g[x], b[x]);
  }
}

}  // namespace tavro::camera
