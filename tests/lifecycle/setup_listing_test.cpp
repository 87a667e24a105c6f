// Which cameras setup lists and opens, in which order, and what it says
// about them: the bundled producers, selection texts, cameras that cannot be
// opened, more than 16 cameras, none at all. (A camera held by another
// process is left out in the setup cycle tests.)
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "oxel_sim.h"
#include "support/plugin_host.h"

namespace tavro::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class SetupListing : public PluginHost {};

TEST_F(SetupListing, BundledProducersGiveTheTwoUsb3CamerasButNotTheGigECamera) {
  Output output;
  ASSERT_EQ(Setup(nullptr, &output), 0) << output.out << output.err;

  EXPECT_EQ(system->lMagic, TAVRO_SYSTEM_MAGIC);
  ASSERT_EQ(system->iNumCams, 2);
  EXPECT_EQ(Key(0), "OX-U3-23C-Left");
  EXPECT_EQ(Key(1), "OX-U3-13M");
  EXPECT_EQ(widest, 1936);
  EXPECT_EQ(highest, 1216);
  EXPECT_THAT(output.out, HasSubstr("The number of Oxel cameras connected = 2\n"));
  EXPECT_THAT(output.out, Not(HasSubstr("OX-GE-50M")));
  EXPECT_EQ(output.err, "");

  for (int n = 0; n < TAVRO_MAX_CAMERAS; ++n) {
    SCOPED_TRACE("camera " + std::to_string(n));
    const bool opened = n < 2;
    EXPECT_EQ(system->tSlot[n].yAttached, opened ? 1u : 0u);
    EXPECT_EQ(system->tSlot[n].pCamera != nullptr, opened);
    EXPECT_EQ(system->tCam[n].yEnabled, opened ? 1u : 0u);
    EXPECT_EQ(system->tCam[n].iCamNum, opened ? n : -1);
    EXPECT_EQ(system->aiCamIndex[n], opened ? n : -1);
  }
  EXPECT_EQ(system->tCam[0].yColour, 1u);
  EXPECT_EQ(system->tSlot[0].yColour, 1u);
  EXPECT_EQ(system->tCam[1].yColour, 0u);
  EXPECT_EQ(system->tCam[1].iWidthMax, 1280);
  EXPECT_EQ(system->tCam[1].iHeightMax, 1024);
}

TEST_F(SetupListing, SelectionTextAdmitsCamerasWhoseKeyOccursInIt) {
  struct Case {
    const char* selection;
    std::vector<std::string> keys;
  };
  const std::vector<Case> cases = {
      {"", {"OX-U3-23C-Left", "OX-U3-13M"}},
      {"OX-U3-13M", {"OX-U3-13M"}},
      {"OX-U3-23C-Left;OX-U3-13M", {"OX-U3-23C-Left", "OX-U3-13M"}},
      {"[OX-U3-23C-Left]", {"OX-U3-23C-Left"}},
      // The key must occur in the text, not the text in the key.
      {"OX-U3-23C", {}},
      {"OX-U3-23C-Right;OX-GE-50M-Overview", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string("selection \"") + c.selection + "\"");
    Output output;
    const int result = Setup(c.selection, &output);
    if (c.keys.empty()) {
      EXPECT_EQ(result, -1);
      EXPECT_EQ(output.out, "No Tavro cameras connected\n");
      EXPECT_EQ(system->lMagic, 0u);
    } else {
      // A host may hand the plug-in's own copy back as the next selection:
      // the same cameras, and a copy of the same text.
      for (const bool ownCopy : {false, true}) {
        SCOPED_TRACE(ownCopy ? "setup given the plug-in's copy" : "first setup");
        if (ownCopy) {
          ASSERT_EQ(Setup(system->pszCamSelection, &output), 0) << output.out << output.err;
        } else {
          ASSERT_EQ(result, 0);
        }
        ASSERT_EQ(system->iNumCams, static_cast<int>(c.keys.size()));
        for (size_t n = 0; n < c.keys.size(); ++n) {
          EXPECT_EQ(Key(static_cast<int>(n)), c.keys[n]);
        }
        EXPECT_STREQ(system->pszCamSelection, c.selection[0] != '\0' ? c.selection : nullptr);
      }
    }
    EXPECT_EQ(TearDownSystem(), 0);
  }
}

TEST_F(SetupListing, CameraThatCannotBeOpenedGivesItsNumberToTheNext) {
  UseProducers({ProducerFile(
      {SmallCamera("A", "First"),
       SmallCamera("B", "Stubborn", R"("features": {"PixelFormat": {"access": "ReadOnly"}})"),
       SmallCamera("C", "Third", R"("userDefinedName": "Right")"),
       SmallCamera("D", "Untriggered", R"("features": {"TriggerMode": {"access": "ReadOnly"}})"),
       // Without it the device set-up stops early, which alone does not make
       // the camera unusable.
       SmallCamera("E", "Unlocked", R"("features": {"TLParamsLocked": "absent"})")})});
  Output output;
  ASSERT_EQ(Setup(nullptr, &output), 0);
  EXPECT_THAT(output.out, HasSubstr("The number of Oxel cameras connected = 5\n"));
  EXPECT_EQ(output.err,
            "OpenCamera: Cannot set correct color.\nOpenCamera: Cannot set trigger mode.\n");
  ASSERT_EQ(system->iNumCams, 3);
  EXPECT_EQ(Key(0), "First");
  EXPECT_EQ(Key(1), "Third-Right");
  EXPECT_EQ(Key(2), "Unlocked");
  EXPECT_EQ(system->tCam[1].iCamNum, 1);
  EXPECT_EQ(system->aiCamIndex[1], 1);
  EXPECT_EQ(system->tSlot[3].yAttached, 0u);
  EXPECT_EQ(system->tSlot[3].pCamera, nullptr);
  for (const char* feature : {"UserSetLoad", "AcquisitionMode"}) {
    EXPECT_EQ(WriteCount({"A", "First"}, feature), 1u) << feature;
    EXPECT_EQ(WriteCount({"E", "Unlocked"}, feature), 0u) << feature;
  }
}

TEST_F(SetupListing, OnlyTheFirstSixteenOfTwentyCamerasAreOpened) {
  std::vector<std::string> cameras;
  for (int k = 0; k < 20; ++k) {
    const std::string suffix = (k < 10 ? "0" : "") + std::to_string(k);
    cameras.push_back(SmallCamera("CAM-" + suffix, "Model" + suffix));
  }
  UseProducers({ProducerFile(cameras)});
  Output output;
  ASSERT_EQ(Setup(nullptr, &output), 0);
  EXPECT_THAT(output.out, HasSubstr("The number of Oxel cameras connected = 20\n"
                                    "# of Tavro cameras reduced from 20 to 16\n"));
  ASSERT_EQ(system->iNumCams, 16);
  EXPECT_EQ(Key(0), "Model00");
  EXPECT_EQ(Key(15), "Model15");
  EXPECT_EQ(widest, 32);
  EXPECT_EQ(highest, 16);
}

TEST_F(SetupListing, NoCameraAtAllFailsWithoutMagic) {
  struct Case {
    const char* name;
    std::vector<std::string> files;
  };
  const std::vector<Case> cases = {
      {"no producer file", {}},
      {"only a GigE camera", {ProducerFile({SmallCamera("G", "Gige", R"("tlType": "GEV")")})}},
      {"only a read-only camera",
       {ProducerFile({SmallCamera("R", "Locked", R"("accessStatus": "ReadOnly")")})}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    UseProducers(c.files);
    system->lMagic = TAVRO_SYSTEM_MAGIC;  // left from an earlier setup
    Output output;
    EXPECT_EQ(Setup(nullptr, &output), -1);
    EXPECT_EQ(output.out, "No Tavro cameras connected\n");
    EXPECT_EQ(system->lMagic, 0u);
    EXPECT_EQ(system->iNumCams, 0);
    EXPECT_EQ(TearDownSystem(), 0);
  }
}

TEST_F(SetupListing, ProducerThatFailsToLoadIsReportedAndTheOthersStillCount) {
  UseProducers({"{ not json", ProducerFile({SmallCamera("A", "Survivor")})});
  Output output;
  ASSERT_EQ(Setup(nullptr, &output), 0);
  EXPECT_THAT(output.out, HasSubstr("MakeListOfAllCameras: Update failed.\n  Error: "));
  EXPECT_THAT(output.out, HasSubstr("p0.cti"));
  ASSERT_EQ(system->iNumCams, 1);
  EXPECT_EQ(Key(0), "Survivor");
}

TEST_F(SetupListing, LongKeysAreCutAfterSixtyTwoCharacters) {
  const std::string model(40, 'M');
  const std::string user(30, 'U');
  UseProducers(
      {ProducerFile({SmallCamera("L", model, R"("userDefinedName": ")" + user + R"(")")})});
  ASSERT_EQ(Setup(nullptr), 0);
  ASSERT_EQ(system->iNumCams, 1);
  EXPECT_EQ(Key(0), (model + "-" + user).substr(0, 62));
  // The format name is cut only by its 64-byte field, without a terminator.
  EXPECT_EQ(std::string(system->tCam[0].tFormat[0].szName, TAVRO_FORMAT_NAME_SIZE),
            (model + "-" + user).substr(0, TAVRO_FORMAT_NAME_SIZE));
}

}  // namespace
}  // namespace tavro::testing
