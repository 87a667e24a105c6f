// Drawing host planes into a 32-bit live display buffer: one 0x00RRGGBB
// value per pixel, from the grey plane through a 256-entry table or from the
// three colour planes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavro::camera {

inline uint32_t DisplayPixel(uint8_t red, uint8_t green, uint8_t blue) {
  return uint32_t{red} << 16 | uint32_t{green} << 8 | uint32_t{blue};
}

// Entry i is the display pixel of grey value i; built once per process.
const std::array<uint32_t, 256>& GreyDisplayTable();

// Row pitches in bytes for planes, in pixels for the display. The block of
// `drawnColumns` x `drawnRows` at the top left was drawn already (in the
// same pass as the frame's delivery) and is left as it is.
struct DisplayArea {
  uint32_t* pixels = nullptr;
  ptrdiff_t stride = 0;
  int32_t columns = 0;
  int32_t rows = 0;
  int32_t drawnColumns = 0;
  int32_t drawnRows = 0;
};

void DrawGrey(const uint8_t* grey, ptrdiff_t pitch, const DisplayArea& area);

void DrawColour(const uint8_t* red, const uint8_t* green, const uint8_t* blue, ptrdiff_t pitch,
                const DisplayArea& area);

}  // namespace tavro::camera
