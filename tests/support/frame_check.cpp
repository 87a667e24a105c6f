#include "support/frame_check.h"

#include <optional>
#include <string>

#include "oxel_sim.h"

namespace tavro::testing {
namespace {

struct Mismatch {
  int32_t x, y;
  const char* plane;
};

std::optional<Mismatch> FirstMismatch(const HostImage& image, bool bgr, uint64_t frameId,
                                      int32_t left, int32_t top) {
  const bool colour = image.red && image.green && image.blue;
  for (int32_t y = 0; y < image.grey->info.iHeight; ++y) {
    for (int32_t x = 0; x < image.grey->info.iWidth; ++x) {
      const uint32_t sx = static_cast<uint32_t>(x + left);
      const uint32_t sy = static_cast<uint32_t>(y + top);
      uint8_t red, green, blue, grey;
      if (bgr) {
        red = OxelSim_PatternBgr8(sx, sy, frameId, 2);
        green = OxelSim_PatternBgr8(sx, sy, frameId, 1);
        blue = OxelSim_PatternBgr8(sx, sy, frameId, 0);
        grey = Luma(red, green, blue);
      } else {
        red = green = blue = grey = OxelSim_PatternMono8(sx, sy, frameId);
      }
      if (image.grey->At(x, y) != grey) return Mismatch{x, y, "grey"};
      if (!colour) continue;
      if (image.red->At(x, y) != red) return Mismatch{x, y, "red"};
      if (image.green->At(x, y) != green) return Mismatch{x, y, "green"};
      if (image.blue->At(x, y) != blue) return Mismatch{x, y, "blue"};
    }
  }
  return std::nullopt;
}

}  // namespace

uint8_t Luma(uint32_t red, uint32_t green, uint32_t blue) {
  return static_cast<uint8_t>((19595u * red + 38470u * green + 7471u * blue) >> 16);
}

::testing::AssertionResult HoldsFrame(const HostImage& image, bool bgr, uint64_t frameId,
                                      int32_t left, int32_t top) {
  const std::optional<Mismatch> first = FirstMismatch(image, bgr, frameId, left, top);
  if (!first) return ::testing::AssertionSuccess();
  auto failure = ::testing::AssertionFailure();
  failure << "not frame " << frameId << ": " << first->plane << " pixel " << first->x << ","
          << first->y << " differs";
  constexpr int kNearby = 8;
  for (int delta = -kNearby; delta <= kNearby; ++delta) {
    if (delta == 0) continue;
    if (!FirstMismatch(image, bgr, frameId + static_cast<uint64_t>(delta), left, top)) {
      return failure << "; it holds frame " << (delta > 0 ? "+" : "") << delta;
    }
  }
  return failure << "; no nearby frame matches";
}

}  // namespace tavro::testing
