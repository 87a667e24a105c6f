// Host images as a host lays them out: planes with their own memory, colour
// plane images when asked for, and a live display with the host's view and
// display objects.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#include "tavro/tavro_host.h"

namespace tavro::testing {

// One 8-bit plane with its memory: `firstRow` rows above the image, then
// `height` rows of `pitch` bytes, filled with kFill. Nothing more, so a
// write past the plane is caught by the address sanitizer.
struct HostPlane {
  static constexpr uint8_t kFill = 0xA5;
  PlaneInfo info{};
  std::vector<uint8_t> memory;

  HostPlane(int32_t width, int32_t height, int32_t pitch, int32_t firstRow = 0);
  uint8_t At(int32_t x, int32_t y) const {
    return memory[static_cast<size_t>(info.iPitch) * (info.iFirstRow + y) + x];
  }
};

// A host image: a grey plane, and colour plane images when asked for.
struct HostImage {
  CameraInfo info{};
  CamImage image{};
  std::unique_ptr<HostPlane> grey, red, green, blue;
  CamImage redImage{}, greenImage{}, blueImage{};

  HostImage(int16_t cameraId, int32_t width, int32_t height, bool colourPlanes);
  void SetAoi(int32_t left, int32_t top, int32_t right, int32_t bottom);
};

// A host image that also has a live display: its 32-bit buffer and the
// view and display objects the host draws it with.
struct LiveImage : HostImage {
  static constexpr uint32_t kDisplayFill = 0xDEADBEEF;
  static constexpr uint64_t kDisplayTag = 0x1122334455667788;
  HostDisplay display{};
  HostView view{};
  LiveBuffer live{};
  std::vector<uint32_t> livePixels;

  LiveImage(int16_t cameraId, int32_t width, int32_t height, bool colour);

  // The flag as the host reads and clears it, beside the plug-in's worker.
  uint32_t NewFrameFlag();
  void ClearNewFrameFlag();
  // Waits, within a generous bound, until the plug-in sets the flag.
  bool WaitForNewFrame(std::chrono::seconds bound = std::chrono::seconds(20));
  uint32_t LivePixel(int32_t x, int32_t y) const {
    return livePixels[static_cast<size_t>(live.iStride) * (grey->info.iFirstRow + y) + x];
  }
};

}  // namespace tavro::testing
