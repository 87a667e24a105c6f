// The images this host hands to the plug-in: 8-bit planes with their own
// memory, the CamImage that ties them to a camera id, and PNG output.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tavro/tavro_host.h"

namespace tavro_host {

// One 8-bit plane owned by this host.
struct Plane {
  PlaneInfo info{};
  std::vector<uint8_t> memory;
  CamImage image{};  // the plane image a colour plane is handed in

  Plane(int32_t width, int32_t height);
  uint8_t At(int32_t x, int32_t y) const;
};

// A host image for camera id `cameraId`: a grey plane and three colour
// planes of one size. Stays at one address while the plug-in holds it.
struct HostImage {
  CameraInfo info{};
  Plane grey, red, green, blue;
  CamImage image{};
  const bool colour;

  HostImage(int16_t cameraId, int32_t width, int32_t height, bool colourPlanes);
  HostImage(const HostImage&) = delete;
  HostImage& operator=(const HostImage&) = delete;

  int32_t width() const { return grey.info.iWidth; }
  int32_t height() const { return grey.info.iHeight; }
  // The grey plane, or the red, green and blue planes of a colour image.
  std::vector<const Plane*> planes() const;
};

// A host image with a live display: the 32-bit buffer, as tall as the
// planes' memory since the display starts at their first row, and the view
// and display objects the plug-in reports new frames through.
struct LiveImage : HostImage {
  HostDisplay display{};
  HostView view{};
  LiveBuffer buffer{};
  std::vector<uint32_t> pixels;

  LiveImage(int16_t cameraId, int32_t width, int32_t height, bool colourDisplay);

  // Reads and clears the flag that the plug-in's worker sets.
  bool TakeNewFrame();

  uint32_t DisplayPixel(int32_t x, int32_t y) const {
    return pixels[static_cast<size_t>(buffer.iStride) * (grey.info.iFirstRow + y) + x];
  }
};

// Fills `row` (width pixels of 1 or 3 bytes) with image row `y`.
using RowFiller = std::function<void(int32_t y, uint8_t* row)>;

// Writes a grey or RGB 8-bit PNG; throws std::runtime_error on failure.
void WritePng(const std::string& path, int32_t width, int32_t height, bool rgb,
              const RowFiller& fill);

// The image's planes as a grey or RGB PNG.
void WritePlanesPng(const std::string& path, const HostImage& image);

}  // namespace tavro_host
