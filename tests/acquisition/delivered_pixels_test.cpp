// Every delivered pixel against the simulator's pattern, grey and colour,
// full sensor and AOI; host planes that are odd or broken get no write
// outside their memory.
#include <string>

#include "oxel_sim.h"
#include "support/frame_check.h"
#include "support/plugin_host.h"

namespace tavro::testing {
namespace {

using DeliveredPixels = PluginHost;

struct PixelCase {
  const char* what;
  const SimCamera* camera;
  bool colourPlanes;
  bool aoi;
  int32_t left, top, width, height;  // the AOI, or the host plane's size
};

TEST_F(DeliveredPixels, EveryPixelMatchesThePattern) {
  const PixelCase cases[] = {
      {"mono, full sensor", &kMono, false, false, 0, 0, 1280, 1024},
      {"mono AOI", &kMono, false, true, 40, 10, 256, 100},
      {"mono into colour planes", &kMono, true, true, 4, 2, 64, 30},
      {"colour to grey, full sensor", &kColour, false, false, 0, 0, 1936, 1216},
      {"colour planes, AOI", &kColour, true, true, 64, 32, 320, 200},
  };
  for (const PixelCase& c : cases) {
    SCOPED_TRACE(c.what);
    SetupOn({*c.camera});
    HostImage image(0, c.width, c.height, c.colourPlanes);
    if (c.aoi) image.SetAoi(c.left, c.top, c.left + c.width, c.top + c.height);
    ASSERT_EQ(Acquire(image, 1, 0), 0);
    ASSERT_EQ(status, 0u);
    EXPECT_TRUE(HoldsFrame(image, c.camera == &kColour, LastFrameId(*c.camera), c.aoi ? c.left : 0,
                           c.aoi ? c.top : 0));
    // The bytes beyond the width and the rows above the image stay the host's.
    EXPECT_EQ(image.grey->At(c.width, c.height - 1), HostPlane::kFill);
    EXPECT_EQ(image.grey->memory[0], HostPlane::kFill);
  }
}

TEST_F(DeliveredPixels, ClampedParametersAreWrittenBackAndSentOnce) {
  SetupOn({kMono});
  HostImage image(0, 16, 2, false);
  CameraRecord& record = system->tCam[0];
  ParameterEntry& gain = record.tParam[TAVRO_PARAM_MASTER_GAIN];
  ParameterEntry& exposure = record.tParam[TAVRO_PARAM_EXPOSURE];
  ParameterEntry& offset = record.tParam[TAVRO_PARAM_OFFSET];
  ASSERT_EQ(gain.ySupported, 1);
  ASSERT_EQ(exposure.ySupported, 1);
  ASSERT_EQ(offset.ySupported, 1);
  gain.iCurrent = 100000;
  exposure.iCurrent = -50;
  offset.iCurrent = 256;
  system->lError = 0;

  ASSERT_EQ(Acquire(image, 1, 0), 0);
  EXPECT_EQ(gain.iCurrent, gain.iMaximum);
  EXPECT_EQ(exposure.iCurrent, exposure.iMinimum);
  EXPECT_EQ(offset.iCurrent, 255);
  const CameraSlot& slot = system->tSlot[0];
  EXPECT_EQ(slot.aiApplied[TAVRO_PARAM_MASTER_GAIN], gain.iMaximum);
  EXPECT_EQ(slot.aiApplied[TAVRO_PARAM_OFFSET], 255);
  EXPECT_EQ(slot.dExposure, exposure.iMinimum);
  EXPECT_EQ(slot.yReapply, 0u);
  EXPECT_EQ(system->lError, 0);

  // Unchanged values are not sent again; a changed one is.
  const uint64_t gains = WriteCount(kMono, "Gain");
  const uint64_t exposures = WriteCount(kMono, "ExposureTime");
  ASSERT_EQ(Acquire(image, 1, 0), 0);
  EXPECT_EQ(WriteCount(kMono, "Gain"), gains);
  EXPECT_EQ(WriteCount(kMono, "ExposureTime"), exposures);
  gain.iCurrent = 50;
  ASSERT_EQ(Acquire(image, 1, 0), 0);
  EXPECT_EQ(WriteCount(kMono, "Gain"), gains + 1);
  EXPECT_EQ(slot.aiApplied[TAVRO_PARAM_MASTER_GAIN], 50);

  // An unsupported control marked supported and changed: lError, and the
  // image still arrives.
  ParameterEntry& gamma = record.tParam[TAVRO_PARAM_GAMMA];
  gamma.ySupported = 1;
  gamma.iMaximum = 10;
  gamma.iCurrent = 3;
  ASSERT_EQ(Acquire(image, 1, 0), 0);
  EXPECT_EQ(system->lError, -1);
  EXPECT_EQ(finished.size(), 4u);
}

TEST_F(DeliveredPixels, BrokenPlanesAndAoisNeverCrashOrOverrun) {
  SetupOn({kMono});
  {
    SCOPED_TRACE("pitch below width");
    HostImage image(0, 64, 4, false);
    image.grey = std::make_unique<HostPlane>(64, 4, 40);
    image.image.ptPlane = &image.grey->info;
    ASSERT_EQ(Acquire(image, 1, 0), 0);
    EXPECT_EQ(image.grey->At(39, 3), OxelSim_PatternMono8(39, 3, LastFrameId(kMono)));
  }
  {
    SCOPED_TRACE("no pixel memory");
    HostImage image(0, 64, 4, false);
    image.grey->info.pBits = nullptr;
    status = ~0u;
    EXPECT_EQ(Acquire(image, 1, 0), -1);
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(system->tSlot[0].yAttached, 1u) << "the camera still answers";
  }
  {
    SCOPED_TRACE("a colour plane missing");
    HostImage image(0, 32, 4, true);
    image.image.ptGreen = nullptr;
    ASSERT_EQ(Acquire(image, 1, 0), 0);
    EXPECT_EQ(image.grey->At(5, 1), OxelSim_PatternMono8(5, 1, LastFrameId(kMono)));
  }
  const struct {
    const char* what;
    int32_t left, top, right, bottom;
  } aois[] = {
      {"empty", 100, 100, 100, 100},
      {"inverted", 600, 500, 200, 100},
      {"outside the sensor", 5000, 5000, 6000, 6000},
      {"huge", -100000, -100000, 100000, 100000},
  };
  for (const auto& aoi : aois) {
    SCOPED_TRACE(aoi.what);
    HostImage image(0, 2000, 1100, false);
    image.SetAoi(aoi.left, aoi.top, aoi.right, aoi.bottom);
    EXPECT_EQ(Acquire(image, 1, 0), 0);
    EXPECT_EQ(status, 0u);
  }
  EXPECT_EQ(system->tSlot[0].yAttached, 1u);
}

}  // namespace
}  // namespace tavro::testing
