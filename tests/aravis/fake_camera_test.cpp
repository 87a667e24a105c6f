// The unchanged plug-in on the Oxel library over Aravis, with Aravis's fake
// camera drawing the test picture: single images grey and colour, with and
// without an AOI, live, detach and re-attach, each delivered image checked
// as a whole frame of the picture.
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

#include "oxel_sim.h"
#include "support/frame_check.h"
#include "support/plugin_host.h"

namespace tavro::testing {
namespace {

constexpr int32_t kSensor = 2048;

// The fake camera counts from 65401 and the library widens its 16-bit IDs.
constexpr uint64_t kFirstId = 65401;
constexpr uint64_t kSearched = uint64_t{1} << 21;

class FakeCamera : public PluginHost {
 protected:
  void SetUp() override {
    // Read when the plug-in first binds its camera library, in this process.
    setenv("TAVRO_OXEL_LIBRARY", TAVRO_BIN_DIR "/aravis/liboxel.so.1", 1);
    setenv("OXEL_ARAVIS_FAKE", "1", 1);
    PluginHost::SetUp();
    ASSERT_EQ(SetupFresh("Fake"), 0);
    ASSERT_EQ(system->iNumCams, 1) << "one fake camera";
  }
};

// The grey value the plug-in makes of the picture's colour pixel.
uint8_t GreyOf(uint32_t x, uint32_t y, uint64_t id) {
  return Luma(OxelSim_PatternBgr8(x, y, id, 2), OxelSim_PatternBgr8(x, y, id, 1),
              OxelSim_PatternBgr8(x, y, id, 0));
}

// Which frame the image's grey plane holds: the frame whose picture matches
// a row of 16 pixels (they name the whole ID), then the whole image.
std::optional<uint64_t> FrameOf(const HostImage& image, int32_t left, int32_t top) {
  const int32_t row = image.grey->info.iHeight / 2;
  for (uint64_t id = kFirstId; id < kFirstId + kSearched; ++id) {
    bool same = true;
    for (int32_t x = 0; x < 16 && same; ++x) {
      same = image.grey->At(x, row) == GreyOf(uint32_t(left + x), uint32_t(top + row), id);
    }
    if (same) return id;
  }
  return std::nullopt;
}

TEST_F(FakeCamera, SingleImagesHoldOneWholeFrameEachGreyColourAndInAnAoi) {
  EXPECT_STREQ(system->tCam[0].szCamKey, "Fake");
  struct Case {
    const char* what;
    bool colourPlanes;
    int32_t left, top, width, height;
  };
  const Case cases[] = {
      {"grey, whole sensor", false, 0, 0, kSensor, kSensor},
      {"colour planes, AOI", true, 64, 32, 320, 200},
      {"grey, AOI at the far corner", false, kSensor - 128, kSensor - 64, 128, 64},
  };
  uint64_t previous = 0;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    HostImage image(0, c.width, c.height, c.colourPlanes);
    if (c.width != kSensor) image.SetAoi(c.left, c.top, c.left + c.width, c.top + c.height);
    ASSERT_EQ(Acquire(image, 1, 0), 0);
    ASSERT_EQ(status, 0u);
    const std::optional<uint64_t> id = FrameOf(image, c.left, c.top);
    ASSERT_TRUE(id.has_value()) << "no frame of the picture in the image";
    EXPECT_TRUE(HoldsFrame(image, true, *id, c.left, c.top));
    EXPECT_GT(*id, previous) << "each acquisition brings a new frame";
    previous = *id;
    EXPECT_EQ(image.grey->At(c.width, c.height - 1), HostPlane::kFill);
  }
}

TEST_F(FakeCamera, LiveShowsWholeFramesAndStopsCleanlyAgainAndAgain) {
  LiveImage image(0, 512, 256, true);
  image.SetAoi(256, 128, 256 + 512, 128 + 256);
  for (int run = 0; run < 2; ++run) {
    ASSERT_EQ(Live(image, 1), 0);
    ASSERT_EQ(status, 0u);
    for (int frame = 0; frame < 5; ++frame) {
      ASSERT_TRUE(image.WaitForNewFrame()) << "frame " << frame;
      image.ClearNewFrameFlag();
    }
    ASSERT_EQ(Live(image, 0), 0);
    EXPECT_EQ(status, 0u);
    EXPECT_TRUE(finished.empty());
    const std::optional<uint64_t> id = FrameOf(image, 256, 128);
    ASSERT_TRUE(id.has_value());
    EXPECT_TRUE(HoldsFrame(image, true, *id, 256, 128));
  }
}

TEST_F(FakeCamera, ADetachedCameraReattachesAndAcquiresAgain) {
  HostImage image(0, 64, 32, false);
  image.SetAoi(0, 0, 64, 32);
  ASSERT_EQ(Acquire(image, 1, 0), 0);
  ASSERT_EQ(Detach(0), 0);
  EXPECT_EQ(system->tSlot[0].yAttached, 0u);
  ASSERT_EQ(Attach(0), 0);
  EXPECT_EQ(system->tSlot[0].yAttached, 1u);
  ASSERT_EQ(Acquire(image, 1, 0), 0);
  ASSERT_EQ(status, 0u);
  const std::optional<uint64_t> id = FrameOf(image, 0, 0);
  ASSERT_TRUE(id.has_value());
  EXPECT_TRUE(HoldsFrame(image, true, *id));
}

}  // namespace
}  // namespace tavro::testing
