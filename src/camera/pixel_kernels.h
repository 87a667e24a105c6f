// Row kernels behind frame delivery and the live display, compiled once per
// x86 instruction set (scalar, SSSE3, SSE4, AVX2, AVX-512)
// and chosen at run time from what the processor offers. Every set gives
// exactly the pixel-by-pixel result of GreyFromRgb and DisplayPixel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tavro::camera {

// Where one row goes. Colour planes are written only when `red` is set (then
// green and blue are too); the display row only when `display` is set, from
// the colour bytes when `colourDisplay`, else from grey. No output may share
// memory with the source or with another output.
struct RowOutput {
  uint8_t* grey = nullptr;
  uint8_t* red = nullptr;
  uint8_t* green = nullptr;
  uint8_t* blue = nullptr;
  uint32_t* display = nullptr;
  bool colourDisplay = false;
};

struct PixelKernels {
  const char* target;
  // "BGR8" (blue, green, red per pixel) or "Mono8" source row.
  void (*bgrRow)(const uint8_t* bgr, const RowOutput& out, size_t pixels);
  void (*monoRow)(const uint8_t* mono, const RowOutput& out, size_t pixels);
  // Display pixels from planes that the display row does not overlap.
  void (*greyDisplayRow)(const uint8_t* grey, uint32_t* display, size_t pixels);
  void (*colourDisplayRow)(const uint8_t* red, const uint8_t* green, const uint8_t* blue,
                           uint32_t* display, size_t pixels);
};

// Every compiled set this processor runs, widest first; the last one needs
// nothing beyond x86-64.
std::span<const PixelKernels> RunnableKernels();

// The widest runnable set; chosen once.
const PixelKernels& Kernels();

}  // namespace tavro::camera
