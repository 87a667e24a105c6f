#include "camera/display_drawing.h"

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

void DrawGrey(const uint8_t* grey, ptrdiff_t pitch, const DisplayArea& area) {
  if (grey == nullptr || area.pixels == nullptr || area.columns <= 0) return;
  const uint32_t* table = GreyDisplayTable().data();
  const auto draw = Kernels().greyDisplayRow;
  const auto pixels = static_cast<size_t>(area.columns);
  for (int32_t y = 0; y < area.rows; ++y) {
    const uint8_t* source = grey + pitch * y;
    uint32_t* display = area.pixels + area.stride * y;
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
  const auto pixels = static_cast<size_t>(area.columns);
  for (int32_t y = 0; y < area.rows; ++y) {
    const ptrdiff_t offset = pitch * y;
    const uint8_t *r = red + offset, *g = green + offset, *b = blue + offset;
    uint32_t* display = area.pixels + area.stride * y;
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
