// tavro-host run as a user runs it: its exit code and what it prints for
// the bundled simulated cameras, a selection, no camera and bad commands.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host_run.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

using tavro_test::HostRun;
using tavro_test::RunHost;

TEST(HostList, CommandsAnswerWithTheirExitCodesAndDescriptions) {
  const std::string& bundled = tavro_test::kBundled;
  struct Case {
    std::string environment;
    std::string arguments;
    int exitCode;
    std::vector<std::string> present;
    std::vector<std::string> absent;
  };
  const std::vector<Case> cases = {
      {bundled,
       "",
       0,
       {"2 camera(s) opened, largest image 1936 x 1216",
        "camera 0: OX-U3-23C-Left\n  formats (1):\n    1936 x 1216 at 0,0  id 0  OX-U3-23C-Left\n",
        "largest image: 1936 x 1216 colour",
        "    15 Exposure      current 20, default 20, 20 to 1000000 step 0\n",
        "     0 Brightness    not supported\n", "camera 1: OX-U3-13M"},
       {"OX-GE-50M"}},
      {bundled,
       "list --select OX-U3-13M",
       0,
       {"1 camera(s) opened", "camera 0: OX-U3-13M", "size 32 x 2 to 1280 x 1024 step 4,2"},
       {"OX-U3-23C"}},
      {"GENICAM_GENTL64_PATH=/nonexistent/tavro-producers",
       "list",
       1,
       {"No Tavro cameras connected\n", "tavro-host: Setup found no camera\n"},
       {}},
      {bundled, "--help", 0, {"usage: tavro-host", "list "}, {"camera 0"}},
      {bundled, "list --select", 2, {"tavro-host: --select needs a value\n"}, {"camera 0"}},
      {bundled, "snapshot", 2, {"tavro-host: unknown command snapshot\n", "usage:"}, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE("tavro-host " + c.arguments + " with " + c.environment);
    const HostRun run = RunHost(c.environment, c.arguments);
    EXPECT_EQ(run.exitCode, c.exitCode) << run.output;
    for (const auto& text : c.present) EXPECT_THAT(run.output, HasSubstr(text));
    for (const auto& text : c.absent) EXPECT_THAT(run.output, Not(HasSubstr(text)));
  }
}

}  // namespace
