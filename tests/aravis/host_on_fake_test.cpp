// tavro-host on the Oxel library over Aravis with its fake camera, as a user
// runs it: the camera listed with the library that found it, grey and colour
// grabs, and a live run of 200 frames with none lost.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "../host/host_run.h"

namespace {

using tavro_test::ReadPngHeader;
using tavro_test::RunHost;
using tavro_test::TemporaryPng;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;

const std::string kLibrary = std::string(TAVRO_BIN_DIR) + "/aravis/liboxel.so.1";
const std::string kFake = "env -u GENICAM_GENTL64_PATH -u TAVRO_OXEL_LIBRARY OXEL_ARAVIS_FAKE=1";

TEST(HostOnFakeCamera, ListGrabAndLiveWorkThroughTheChosenLibrary) {
  const auto list = RunHost(kFake, "-q --camera-library " + kLibrary + " list");
  EXPECT_EQ(list.exitCode, 0) << list.output;
  EXPECT_THAT(list.output, HasSubstr("1 camera(s) opened, largest image 2048 x 2048 (camera "
                                     "library: Aravis 0."));
  EXPECT_THAT(list.output, HasSubstr("camera 0: Fake"));

  for (const bool colour : {false, true}) {
    const std::string path = TemporaryPng(colour ? "fake-colour.png" : "fake-grey.png");
    const auto grab = RunHost(kFake, "-q --camera-library " + kLibrary + " grab -o " + path +
                                         (colour ? " --colour" : ""));
    EXPECT_EQ(grab.exitCode, 0) << grab.output;
    EXPECT_THAT(grab.output, HasSubstr(std::string("Saved a 2048 x 2048 ") +
                                       (colour ? "RGB" : "grey") + " image from camera 0 (Fake)"));
    const auto png = ReadPngHeader(path);
    EXPECT_TRUE(png.valid);
    EXPECT_EQ(png.colourType, colour ? 2 : 0);
  }

  // The same library through the environment, as an installed host gets it.
  const std::string path = TemporaryPng("fake-live.png");
  const auto live =
      RunHost(kFake + " TAVRO_OXEL_LIBRARY=" + kLibrary, "-q live --frames 200 -o " + path);
  EXPECT_EQ(live.exitCode, 0) << live.output;
  EXPECT_THAT(live.output, ContainsRegex("Live on camera 0 \\(Fake\\): 2[0-9][0-9] frames "
                                         "delivered in [0-9.]+ s, [0-9.]+ frames per second[^,]*, "
                                         "0 lost to time-outs, 0 torn \\(skipped\\)"));
}

TEST(HostOnFakeCamera, AMissingLibraryIsAUsageErrorAndNoCameraAFailure) {
  const auto missing = RunHost(kFake, "--camera-library /nonexistent/liboxel.so.1 list");
  EXPECT_EQ(missing.exitCode, 2);
  EXPECT_THAT(missing.output, HasSubstr("--camera-library: no such file"));
  // Without the fake camera Aravis finds nothing on this machine.
  const auto none =
      RunHost("env -u GENICAM_GENTL64_PATH -u OXEL_ARAVIS_FAKE", "-q --camera-library " + kLibrary);
  EXPECT_EQ(none.exitCode, 1) << none.output;
}

}  // namespace
