// tavro-host as a script uses it: results alone on standard output, errors
// on standard error, exit codes by kind of failure, --quiet and list --json.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host_run.h"

namespace {

using tavro_test::HostRun;
using tavro_test::kBundled;
using tavro_test::RunHostSeparately;
using tavro_test::TemporaryPng;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;

// A line setup always prints through the plug-in's diagnostics.
constexpr const char* kPluginLine = "The number of Oxel cameras connected";
constexpr const char* kNoCameras = "GENICAM_GENTL64_PATH=/nonexistent/tavro-producers";

TEST(HostConventions, QuietLeavesOnlyTheResultAndErrorsStayOnStandardError) {
  const std::string path = TemporaryPng("quiet.png");
  struct Case {
    std::string environment;
    std::string arguments;
    int exitCode;
    std::string output;  // the whole of standard output, a regular expression
    std::string errors;  // the whole of standard error, a regular expression
  };
  const std::vector<Case> cases = {
      // The option is taken before or after the command.
      {kBundled, "--quiet grab -o " + path, 0,
       "Saved a 1936 x 1216 grey image from camera 0 \\(OX-U3-23C-Left\\) to " + path +
           "  \\(producers: .*\\)\n",
       ""},
      {kBundled, "list --select OX-U3-13M -q", 0,
       "\n1 camera\\(s\\) opened, largest image 1280 x 1024 .*", ""},
      // The plug-in's own failure message goes; the host's error stays.
      {kNoCameras, "-q list", 1, "", "tavro-host: Setup found no camera\n"},
      {kBundled, "--quiet grab --aoi 0,0,3000,40", 1, "",
       "tavro-host: --aoi: the area leaves the 1936 x 1216 sensor\n"},
      {kBundled, "grab --bogus", 2, "", "tavro-host: grab: unknown option --bogus\n"},
      {kBundled, "--quiet", 0, "\n2 camera\\(s\\) opened.*", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE("tavro-host " + c.arguments);
    const HostRun run = RunHostSeparately(c.environment, c.arguments);
    EXPECT_EQ(run.exitCode, c.exitCode) << run.output << run.errors;
    EXPECT_THAT(run.output, MatchesRegex(c.output));
    EXPECT_THAT(run.errors, MatchesRegex(c.errors));
  }
  EXPECT_TRUE(std::filesystem::exists(path));
  std::filesystem::remove(path);

  // Without --quiet the plug-in speaks on standard output.
  EXPECT_THAT(RunHostSeparately(kBundled, "list").output, HasSubstr(kPluginLine));
}

TEST(HostConventions, HelpDocumentsTheExitCodes) {
  const HostRun run = RunHostSeparately(kBundled, "--help");
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.output, HasSubstr("-q, --quiet"));
  for (const char* code : {"\n  0  done", "\n  1  failed", "\n  2  wrong command line"}) {
    EXPECT_THAT(run.output, HasSubstr(code));
  }
  // An unknown command shows the same text, as an error.
  const HostRun unknown = RunHostSeparately(kBundled, "snapshot");
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_THAT(unknown.output, IsEmpty());
  EXPECT_THAT(unknown.errors, HasSubstr("\n  2  wrong command line"));
}

TEST(HostConventions, ListJsonIsOneDocumentWithEveryCamera) {
  const HostRun run = RunHostSeparately(kBundled, "list --json");
  ASSERT_EQ(run.exitCode, 0) << run.errors;
  // Parsing fails if any plug-in line reached standard output.
  const nlohmann::json list = nlohmann::json::parse(run.output);
  // The plug-in's lines are still there, on standard error.
  EXPECT_THAT(run.errors, HasSubstr(kPluginLine));
  EXPECT_EQ(list["largest"], (nlohmann::json{{"width", 1936}, {"height", 1216}}));
  EXPECT_THAT(list["producers"].get<std::string>(), HasSubstr("producers"));
  ASSERT_EQ(list["cameras"].size(), 2u);

  const nlohmann::json& colour = list["cameras"][0];
  EXPECT_EQ(colour["number"], 0);
  EXPECT_EQ(colour["key"], "OX-U3-23C-Left");
  EXPECT_EQ(colour["colour"], true);
  EXPECT_EQ(colour["width"], 1936);
  EXPECT_EQ(colour["aoi"]["left"], (nlohmann::json{{"min", 0}, {"max", 1920}, {"step", 8}}));
  EXPECT_EQ(colour["aoi"]["width"], (nlohmann::json{{"min", 16}, {"max", 1936}, {"step", 8}}));
  ASSERT_EQ(colour["formats"].size(), 1u);
  EXPECT_EQ(colour["formats"][0]["name"], "OX-U3-23C-Left");
  const nlohmann::json& exposure = colour["parameters"][15];
  EXPECT_EQ(exposure, (nlohmann::json{{"row", 15},
                                      {"name", "Exposure"},
                                      {"supported", true},
                                      {"current", 20},
                                      {"default", 20},
                                      {"min", 20},
                                      {"max", 1000000},
                                      {"step", 0}}));
  EXPECT_EQ(colour["parameters"][0],
            (nlohmann::json{{"row", 0}, {"name", "Brightness"}, {"supported", false}}));

  const nlohmann::json& mono = list["cameras"][1];
  EXPECT_EQ(mono["key"], "OX-U3-13M");
  EXPECT_EQ(mono["colour"], false);
  EXPECT_EQ(mono["height"], 1024);

  // Quiet and JSON together: nothing but the document anywhere.
  const HostRun quiet = RunHostSeparately(kBundled, "-q list --json --select OX-U3-13M");
  EXPECT_EQ(quiet.exitCode, 0);
  EXPECT_THAT(quiet.errors, IsEmpty());
  EXPECT_EQ(nlohmann::json::parse(quiet.output)["cameras"].size(), 1u);

  // No camera: no document, the reason on standard error.
  const HostRun none = RunHostSeparately(kNoCameras, "list --json");
  EXPECT_EQ(none.exitCode, 1);
  EXPECT_THAT(none.output, IsEmpty());
  EXPECT_THAT(none.errors, HasSubstr("tavro-host: Setup found no camera\n"));
}

}  // namespace
