// tavro-host live, grab, cycle and order run as a user runs them: their
// reports, the PNG files they write and their refusals of bad values.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host_run.h"

namespace {

using tavro_test::kBundled;
using tavro_test::PngHeader;
using tavro_test::ReadPngHeader;
using tavro_test::RunHost;
using tavro_test::TemporaryPng;
using ::testing::ContainsRegex;
using ::testing::HasSubstr;

constexpr int kGrey = 0;
constexpr int kRgb = 2;

// Each text must appear after the one before it.
void ExpectInOrder(const std::string& output, const std::vector<std::string>& texts) {
  size_t from = 0;
  for (const std::string& text : texts) {
    const size_t at = output.find(text, from);
    ASSERT_NE(at, std::string::npos) << "missing, or out of order: " << text << "\n" << output;
    from = at + text.size();
  }
}

TEST(HostCommands, LiveAndGrabReportAndSaveImagesOfTheRightSize) {
  struct Case {
    std::string arguments;  // -o is added
    std::string report;     // regular expression; PATH stands for the output file
    uint32_t width, height;
    int colourType;
  };
  const std::vector<Case> cases = {
      {"live --frames 5",
       // At least the frames asked for: the count is what the plug-in delivered.
       "Live on camera 0 \\(OX-U3-23C-Left\\): ([5-9]|[1-9][0-9]+) frames delivered in [0-9.]+ s, "
       "[0-9.]*[1-9][0-9.]* frames per second, 0 lost to time-outs, 0 torn \\(skipped\\); 1936 x "
       "1216 display saved to "
       "PATH\n",
       1936, 1216, kRgb},
      {"live --seconds 0.2 --camera 1",
       "Live on camera 1 \\(OX-U3-13M\\): [1-9][0-9]* frames delivered in [0-9.]+ s, "
       "[0-9.]*[1-9][0-9.]* frames per second, 0 lost to time-outs, 0 torn \\(skipped\\); 1280 x "
       "1024 display saved to "
       "PATH\n",
       1280, 1024, kRgb},
      {"live --frames 2 --colour --select OX-U3-13M",
       "Live on camera 0 \\(OX-U3-13M\\): ([2-9]|[1-9][0-9]+) frames delivered in ", 1280, 1024,
       kRgb},
      {"grab", "Saved a 1936 x 1216 grey image from camera 0 \\(OX-U3-23C-Left\\) to PATH ", 1936,
       1216, kGrey},
      {"grab --colour --aoi 8,2,72,34",
       "Saved a 64 x 32 RGB image from camera 0 \\(OX-U3-23C-Left\\) to PATH ", 64, 32, kRgb},
      {"grab --camera 1 --aoi 4,2,100,52 --exposure 500 --gain 50",
       "Saved a 96 x 50 grey image from camera 1 \\(OX-U3-13M\\) to PATH ", 96, 50, kGrey},
      {"grab --hw-trigger --colour", "Saved a 1936 x 1216 RGB image", 1936, 1216, kRgb},
  };
  for (size_t k = 0; k < cases.size(); ++k) {
    const Case& c = cases[k];
    SCOPED_TRACE("tavro-host " + c.arguments);
    const std::string path = TemporaryPng("image" + std::to_string(k) + ".png");
    const auto run = RunHost(kBundled, c.arguments + " -o " + path);
    EXPECT_EQ(run.exitCode, 0) << run.output;
    std::string report = c.report;
    if (const size_t at = report.find("PATH"); at != std::string::npos) report.replace(at, 4, path);
    EXPECT_THAT(run.output, ContainsRegex(report));
    const PngHeader png = ReadPngHeader(path);
    EXPECT_TRUE(png.valid);
    EXPECT_EQ(png.width, c.width);
    EXPECT_EQ(png.height, c.height);
    EXPECT_EQ(png.colourType, c.colourType);
    std::filesystem::remove(path);
  }
}

TEST(HostCommands, LiveGoesOnPastTornFramesAndCountsThem) {
  // The bundled monochrome camera, but every fourth frame loses part of its
  // payload on the link.
  nlohmann::json file =
      nlohmann::json::parse(std::ifstream(TAVRO_SOURCE_DIR "/sim/producers/oxel_u3v.cti"));
  for (auto& camera : file["system"]["interfaces"][0]["cameras"]) {
    if (camera["id"] == "OX13M-21B0112") camera["faults"] = {{"incompleteEvery", 4}};
  }
  const std::filesystem::path directory = TemporaryPng("torn");
  std::filesystem::create_directories(directory);
  std::ofstream(directory / "torn.cti") << file.dump();
  const std::string path = TemporaryPng("torn.png");
  const auto run = RunHost("GENICAM_GENTL64_PATH=" + directory.string(),
                           "--quiet live --select OX-U3-13M --frames 30 -o " + path);
  EXPECT_EQ(run.exitCode, 0) << run.output;
  // The run never ended: no frame was lost to a time-out, and the torn ones
  // were counted apart from those delivered.
  EXPECT_THAT(run.output,
              ContainsRegex("Live on camera 0 \\(OX-U3-13M\\): ([3-9][0-9]|[1-9][0-9]{2,}) "
                            "frames delivered in [0-9.]+ s, [0-9.]+ frames per second, 0 "
                            "lost to time-outs, ([7-9]|[1-9][0-9]+) torn \\(skipped\\);"));
  std::filesystem::remove_all(directory);
  std::filesystem::remove(path);
}

TEST(HostCommands, BadValuesAreRefusedWithAMessageAndNoFile) {
  // A wrong command line answers 2 before any camera is touched; a command
  // line the cameras cannot satisfy answers 1.
  constexpr int kUsage = 2;
  constexpr int kFailed = 1;
  struct Case {
    std::string arguments;
    int exitCode;
    std::string message;
  };
  const std::vector<Case> cases = {
      {"live --frames 0", kUsage, "tavro-host: --frames: must be above 0\n"},
      {"live --frames x", kUsage, "tavro-host: --frames: not a number: \"x\"\n"},
      {"live --frames 5x", kUsage, "tavro-host: --frames: not a number: \"5x\"\n"},
      {"live --seconds 0", kUsage, "tavro-host: --seconds: not a positive number: 0\n"},
      {"live --seconds inf", kUsage, "tavro-host: --seconds: not a positive number: inf\n"},
      {"live --frames 3 --seconds 1", kUsage,
       "tavro-host: live: give --frames or --seconds, not both\n"},
      {"live --camera 5", kFailed, "tavro-host: no camera 5 (2 opened)\n"},
      {"live --select OX-GE-50M", kFailed, "tavro-host: Setup found no camera\n"},
      {"live --fast", kUsage, "tavro-host: live: unknown option --fast\n"},
      {"grab --camera -1", kFailed, "tavro-host: no camera -1 (2 opened)\n"},
      {"grab --aoi 8,2", kUsage, "tavro-host: --aoi wants L,T,R,B, got 8,2\n"},
      {"grab --aoi 72,2,8,34", kUsage, "tavro-host: --aoi: empty or inverted area\n"},
      {"grab --aoi 0,0,3000,40", kFailed,
       "tavro-host: --aoi: the area leaves the 1936 x 1216 sensor\n"},
      {"grab --aoi 1,2,72,34", kFailed,
       "tavro-host: --aoi: this camera takes offsets in steps of 8,2 and sizes from 16 x 2 in "
       "steps "
       "of 8,2\n"},
      {"grab --aoi 0,0,8,2", kFailed,
       "tavro-host: --aoi: this camera takes offsets in steps of 8,2 and sizes from 16 x 2 in "
       "steps "
       "of 8,2\n"},
      {"grab --hw-trigger --line0 nothing", kFailed,
       "tavro-host: cannot pulse line 0 of simulated camera nothing\n"},
      {"cycle --camera 2", kFailed, "tavro-host: no camera 2 (2 opened)\n"},
      {"cycle --map 1,0", kUsage, "tavro-host: cycle: unknown option --map\n"},
      {"order", kUsage, "tavro-host: order: --map is required\n"},
      {"order --map 0,0", kUsage, "tavro-host: --map: 0 given twice in 0,0\n"},
      {"order --map 1", kFailed,
       "tavro-host: order: --map needs 2 camera numbers, one per opened camera, "
       "got 1\n"},
      {"order --map 0,1,2", kFailed, "needs 2 camera numbers, one per opened camera, got 3\n"},
      {"order --map 1,0 --select OX-U3-13M", kFailed,
       "needs 1 camera numbers, one per opened camera, got 2\n"},
      {"order --map a,0", kUsage, "tavro-host: --map: not a number: \"a\"\n"},
      {"order --map 1,,0", kUsage, "tavro-host: --map: not a number: \"\"\n"},
      {"order --map 1,0,", kUsage, "tavro-host: --map: not a number: \"\"\n"},
      {"order --map 5,0", kFailed, "tavro-host: order: --map: no camera 5 (2 opened)\n"},
      {"order --map -1,0", kFailed, "tavro-host: order: --map: no camera -1 (2 opened)\n"},
      {"order --map 1,0 --camera 1", kUsage, "tavro-host: order: unknown option --camera\n"},
  };
  const std::string path = TemporaryPng("refused.png");
  for (const Case& c : cases) {
    SCOPED_TRACE("tavro-host " + c.arguments);
    // Only the commands that write a file take -o.
    const bool writes = c.arguments.starts_with("live") || c.arguments.starts_with("grab");
    const auto run = RunHost(kBundled, c.arguments + (writes ? " -o " + path : ""));
    EXPECT_EQ(run.exitCode, c.exitCode) << run.output;
    EXPECT_THAT(run.output, HasSubstr(c.message));
    EXPECT_FALSE(std::filesystem::exists(path));
    // A refused map never reaches the plug-in.
    EXPECT_THAT(run.output, ::testing::Not(HasSubstr("_kxTavroOrder")));
  }
}

TEST(HostCommands, CycleAndOrderShowEachStepWithItsResult) {
  const auto cycle = RunHost(kBundled, "cycle --camera 1");
  EXPECT_EQ(cycle.exitCode, 0) << cycle.output;
  const std::string bothAttached =
      "   slots:  0: attached 1, live 0, camera object present  1: attached 1, live 0, camera "
      "object present\n";
  const std::string oneDetached =
      "   slots:  0: attached 1, live 0, camera object present  1: attached 0, live 0, camera "
      "object none\n";
  ExpectInOrder(
      cycle.output,
      {"== setup\n", bothAttached, "== detach camera 1\n", "   detach: result 0\n", oneDetached,
       "== grab from camera 1", "   grab: result 0, status 0x0, image finished\n", bothAttached,
       "== detach camera 1 again\n", "   detach: result 0\n", oneDetached, "== attach camera 1\n",
       "   attach: result 0\n", bothAttached, "== grab from camera 1\n",
       "   grab: result 0, status 0x0, image finished\n", bothAttached, "== teardown\n"});

  const auto order = RunHost(kBundled, "order --map 1,0");
  EXPECT_EQ(order.exitCode, 0) << order.output;
  ExpectInOrder(order.output,
                {"== before\n", "   aiCamIndex: 0 1 -1 -1 -1 -1 -1 -1 -1 -1 -1 -1 -1 -1 -1 -1\n",
                 "   attached: 1 1\n", "   order: result 0\n", "== after\n",
                 "   aiCamIndex: 1 0 -1 -1 -1 -1 -1 -1 -1 -1 -1 -1 -1 -1 -1 -1\n",
                 "   attached: 1 1\n", "== teardown\n"});
}

}  // namespace
