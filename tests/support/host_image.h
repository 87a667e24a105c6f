// Host images as a host lays them out: planes with their own memory, colour
// plane images when asked for, and a live display with the host's view and
// display objects.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "tavro/tavro_host.h"

namespace tavro::testing {

// Host memory of exactly `count` elements between two guard zones. Under
// the address sanitizer the guards are poisoned, so any read or write beside
// the memory is reported at once; elsewhere GuardsIntact finds the writes.
template <typename T>
class GuardedMemory {
 public:
  GuardedMemory() = default;
  GuardedMemory(size_t count, T fill) { Reset(count, fill); }
  ~GuardedMemory();
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;

  void Reset(size_t count, T fill);
  bool GuardsIntact() const;
  T* data() { return storage_.data() + kGuard; }
  const T* data() const { return storage_.data() + kGuard; }
  size_t size() const { return count_; }
  T& operator[](size_t i) { return data()[i]; }
  const T& operator[](size_t i) const { return data()[i]; }
  std::span<const T> view() const { return {data(), count_}; }

 private:
  static constexpr size_t kGuard = 64;
  static constexpr T kGuardValue = static_cast<T>(0x5A5A5A5A5A5A5A5Au);
  void Poison(bool poisoned);
  std::vector<T> storage_;
  size_t count_ = 0;
};

// One 8-bit plane with its memory: `firstRow` rows above the image, then
// `height` rows of `pitch` bytes, filled with kFill. Nothing more (the size
// the host guide asks for), so a touch beside the plane is caught.
struct HostPlane {
  static constexpr uint8_t kFill = 0xA5;
  PlaneInfo info{};
  GuardedMemory<uint8_t> memory;

  HostPlane(int32_t width, int32_t height, int32_t pitch, int32_t firstRow = 0);
  // Memory of `bytes` bytes described as the given plane.
  HostPlane(size_t bytes, int32_t width, int32_t height, int32_t pitch, int32_t firstRow);
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
  // Replaces a plane (grey 0, red 1, green 2, blue 3) and points the image at it.
  void SetPlane(int index, std::unique_ptr<HostPlane> plane);
  // No write beside any plane's memory.
  bool GuardsIntact() const;
};

// A host image that also has a live display: its 32-bit buffer and the
// view and display objects the host draws it with.
struct LiveImage : HostImage {
  static constexpr uint32_t kDisplayFill = 0xDEADBEEF;
  static constexpr uint64_t kDisplayTag = 0x1122334455667788;
  HostDisplay display{};
  HostView view{};
  LiveBuffer live{};
  GuardedMemory<uint32_t> livePixels;

  LiveImage(int16_t cameraId, int32_t width, int32_t height, bool colour);
  // A live buffer of exactly `pixels` pixels, described with `stride`.
  void SetLiveBuffer(size_t pixels, int32_t stride);
  bool GuardsIntact() const;

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
