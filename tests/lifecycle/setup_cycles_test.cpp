// Setup and teardown over and over in one process: every cycle finds the
// same cameras, a setup repeated without teardown releases the cameras,
// events and library start of the first, teardown closes the camera library
// it started, and re-attach finds a camera by its key among those the
// setup's selection admits.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <malloc.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "oxel/oxel_c.h"
#include "oxel_sim.h"
#include "support/plugin_host.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The sanitizer runtimes' heap count; GCC ships no header that declares it.
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace tavro::testing {
namespace {

using ::testing::HasSubstr;

class SetupCycles : public PluginHost {};

TEST_F(SetupCycles, EveryCycleFindsTheSameCamerasAndTeardownReleasesThem) {
  for (int cycle = 0; cycle < 3; ++cycle) {
    SCOPED_TRACE("cycle " + std::to_string(cycle));
    ASSERT_EQ(Setup(nullptr), 0);
    ASSERT_EQ(system->iNumCams, 2);
    EXPECT_EQ(Key(0), "OX-U3-23C-Left");
    EXPECT_EQ(Key(1), "OX-U3-13M");

    Output output;
    EXPECT_EQ(TearDownSystem(&output), 0);
    EXPECT_EQ(output.out, "_kxDetachTavroCamera() called\n_kxDetachTavroCamera() called\n");
    for (int n = 0; n < 2; ++n) {
      EXPECT_EQ(system->tSlot[n].yAttached, 0u);
      EXPECT_EQ(system->tSlot[n].pCamera, nullptr);
      EXPECT_EQ(system->tCam[n].yEnabled, 0u);
    }
    // What teardown leaves for the host to look at.
    EXPECT_EQ(system->lMagic, TAVRO_SYSTEM_MAGIC);
    EXPECT_EQ(system->iNumCams, 2);
    EXPECT_EQ(system->aiCamIndex[1], 1);
  }
}

bool LibraryStarted() {
  OXEL_BOOL8 started = 1;
  EXPECT_EQ(OXEL_Library_IsInitialized(&started), OXEL_RETURN_CODE_SUCCESS);
  return started != 0;
}

TEST_F(SetupCycles, SecondSetupReleasesTheFirstsCamerasAndOneTeardownEndsBoth) {
  ASSERT_EQ(Setup("OX-U3-23C-Left;OX-U3-13M"), 0);
  ASSERT_EQ(system->iNumCams, 2);
  // Still open, the first setup's cameras would be busy and not listed.
  Output output;
  ASSERT_EQ(Setup(nullptr, &output), 0);
  EXPECT_THAT(output.out, HasSubstr("The number of Oxel cameras connected = 2\n"));
  EXPECT_EQ(system->iNumCams, 2);
  EXPECT_EQ(system->pszCamSelection, nullptr);

  // One teardown ends what both setups started; a second one has no
  // library to close and says so.
  EXPECT_EQ(TearDownSystem(&output), 0);
  EXPECT_EQ(output.err, "");
  EXPECT_FALSE(LibraryStarted());
  EXPECT_EQ(TearDownSystem(&output), -1);
  EXPECT_THAT(output.err, HasSubstr("NOT_INITIALIZED"));
  // No camera was left open: a new setup opens both.
  ASSERT_EQ(Setup(nullptr), 0);
  EXPECT_EQ(system->iNumCams, 2);
}

size_t EntriesOf(const char* directory) {
  size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(directory)) {
    ++count;
  }
  return count;
}

// Bytes the process holds on its heap, by whichever allocator it runs with.
size_t HeapInUse() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return __sanitizer_get_current_allocated_bytes();
#else
  return mallinfo2().uordblks;
#endif
}

TEST_F(SetupCycles, RepeatedSetupsLeaveNothingStartedAndHoldNoMore) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  constexpr int kCycles = 300;  // sanitized runs are several times slower
#else
  constexpr int kCycles = 1000;
#endif
  // An earlier setup's cameras, events and library start that a repeated
  // setup failed to release would show in every cycle.
  const auto cycle = [&] {
    Output output;
    ASSERT_EQ(Setup(nullptr, &output), 0);
    ASSERT_EQ(Setup(nullptr, &output), 0);
    ASSERT_EQ(system->iNumCams, 2) << "a camera of the first setup stayed open";
    ASSERT_EQ(TearDownSystem(&output), 0);
    ASSERT_FALSE(LibraryStarted());
  };
  // Counted after a few cycles: what is made once per process is in by then.
  for (int n = 0; n < 10; ++n) cycle();
  ASSERT_FALSE(HasFailure());
  const size_t threads = EntriesOf("/proc/self/task"), files = EntriesOf("/proc/self/fd");
  const size_t heap = HeapInUse();
  for (int n = 0; n < kCycles; ++n) {
    cycle();
    ASSERT_FALSE(HasFailure()) << "cycle " << n;
  }
  EXPECT_EQ(EntriesOf("/proc/self/task"), threads);
  EXPECT_EQ(EntriesOf("/proc/self/fd"), files);
  // Flat up to the allocator's own noise: a leak of the events alone was
  // some 2 KB per cycle.
  const size_t held = HeapInUse();
  EXPECT_LT(held, heap + 64 * 1024) << "heap grew by " << (held - heap) << " bytes";
}

TEST_F(SetupCycles, UnpluggedCameraCannotBeReattachedUntilItIsBack) {
  ASSERT_EQ(Setup(nullptr), 0);
  ::testing::internal::CaptureStdout();
  ASSERT_EQ(plugin.detach(system.get(), 1), 0);
  ASSERT_EQ(OxelSim_UnplugCamera("OX13M-21B0112"), OXEL_RETURN_CODE_SUCCESS);
  const int whileUnplugged = plugin.attach(system.get(), 1);
  OxelSim_ReplugCamera("OX13M-21B0112");
  const int onceBack = plugin.attach(system.get(), 1);
  ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(whileUnplugged, -1);
  EXPECT_EQ(onceBack, 0);
  EXPECT_EQ(system->tSlot[1].yAttached, 1u);
  EXPECT_EQ(Key(1), "OX-U3-13M");
}

TEST_F(SetupCycles, ReattachFindsOnlyCamerasTheSetupsSelectionAdmits) {
  // A host writes the free colour camera's key into the mono camera's
  // detached slot. Re-attach lists the cameras with the setup's selection
  // again: a selection that leaves the colour camera out keeps it away.
  struct Case {
    const char* selection;
    int expected;
  };
  for (const Case& c : {Case{"OX-U3-13M", -1}, Case{nullptr, 0}}) {
    SCOPED_TRACE(c.selection == nullptr ? "no selection" : c.selection);
    ASSERT_EQ(Setup(c.selection), 0);
    int mono = -1;
    ::testing::internal::CaptureStdout();
    for (int n = 0; n < system->iNumCams; ++n) {
      if (Key(n) == "OX-U3-13M") mono = n;
      EXPECT_EQ(plugin.detach(system.get(), n), 0) << n;  // frees the colour camera
    }
    ::testing::internal::GetCapturedStdout();
    ASSERT_GE(mono, 0);
    std::strcpy(system->tCam[mono].szCamKey, "OX-U3-23C-Left");
    system->tSlot[mono].yReapply = 0;

    ::testing::internal::CaptureStdout();
    EXPECT_EQ(plugin.attach(system.get(), mono), c.expected);
    const std::string out = ::testing::internal::GetCapturedStdout();
    const std::string count = "_kxTavroReattachAndInit: Number of cameras at startup = " +
                              std::to_string(system->iNumCams) + "\n";
    EXPECT_EQ(out.substr(0, count.size()), count);
    EXPECT_EQ(system->tSlot[mono].yAttached, c.expected == 0 ? 1u : 0u);
    EXPECT_EQ(system->tSlot[mono].pCamera != nullptr, c.expected == 0);
    EXPECT_EQ(system->tCam[mono].yColour, c.expected == 0 ? 1u : 0u);
    if (c.expected == 0) {  // the found camera's record is read again
      EXPECT_EQ(system->tCam[mono].iWidthMax, 1936);
      EXPECT_EQ(system->tSlot[mono].yReapply, 1u);
    } else {
      // The camera object made for the search says no more than that it started.
      EXPECT_EQ(out, count + "Acquire thread started.\n");
      // The camera the selection admits is still found under its own key.
      std::strcpy(system->tCam[mono].szCamKey, "OX-U3-13M");
      ::testing::internal::CaptureStdout();
      EXPECT_EQ(plugin.attach(system.get(), mono), 0);
      ::testing::internal::GetCapturedStdout();
      EXPECT_EQ(system->tSlot[mono].yAttached, 1u);
    }
    EXPECT_EQ(TearDownSystem(), 0);
  }
}

TEST_F(SetupCycles, TeardownReleasesACameraAttachedBeyondTheOpenedOnes) {
  // The colour camera is held by another process at setup, so it is not
  // listed; once free, the host attaches it into slot 1, beyond iNumCams.
  Output output;
  ASSERT_EQ(OxelSim_SetOpenedElsewhere("OX23C-21A0417", 1), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(Setup(nullptr, &output), 0);
  EXPECT_THAT(output.out, HasSubstr("The number of Oxel cameras connected = 1\n"));
  ASSERT_EQ(system->iNumCams, 1);
  EXPECT_EQ(Key(0), "OX-U3-13M");
  ASSERT_EQ(OxelSim_SetOpenedElsewhere("OX23C-21A0417", 0), OXEL_RETURN_CODE_SUCCESS);
  std::strcpy(system->tCam[1].szCamKey, "OX-U3-23C-Left");
  ::testing::internal::CaptureStdout();
  const int attached = plugin.attach(system.get(), 1);
  ::testing::internal::GetCapturedStdout();
  ASSERT_EQ(attached, 0);

  EXPECT_EQ(TearDownSystem(&output), 0);
  EXPECT_EQ(output.out, "_kxDetachTavroCamera() called\n") << "slot 1 is not detached";
  EXPECT_EQ(system->tSlot[1].pCamera, nullptr);
  EXPECT_EQ(system->tCam[1].yEnabled, 1u);
  // Its device was released: the next setup opens both cameras.
  ASSERT_EQ(Setup(nullptr), 0);
  EXPECT_EQ(system->iNumCams, 2);
}

}  // namespace
}  // namespace tavro::testing
