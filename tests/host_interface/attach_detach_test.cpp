// Detach, attach, the attach marking and teardown on the host's records.
#include <gtest/gtest.h>

#include <string>

#include "host_records.h"
#include "lifecycle/attach_detach.h"
#include "oxel/core/device_manager.h"
#include "oxel/core/library.h"

namespace tavro::testing {
namespace {

using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;

const std::string kDetachLine = "_kxDetachTavroCamera() called\n";

TEST(AttachDetach, RefusalsAnswerFailureAndPrintNothing) {
  HostRecords host;
  host.Attach(0, "M1");
  SystemRecord* system = host.system.get();
  CaptureStdout();
  for (int32_t number : {-1, 16, 1}) {  // outside the range, or slot 1 not attached
    EXPECT_EQ(_kxDetachTavroCamera(system, number), -1) << number;
  }
  EXPECT_EQ(_kxDetachTavroCamera(nullptr, 0), -1);
  for (int32_t number : {-1, 16, 0}) {  // outside the range, or slot 0 attached
    EXPECT_EQ(_kxAttachTavroCamera(system, number), -1) << number;
  }
  EXPECT_EQ(_kxAttachTavroCamera(nullptr, 1), -1);
  EXPECT_EQ(GetCapturedStdout(), "");
  EXPECT_EQ(system->tSlot[0].yAttached, 1u);
}

TEST(AttachDetach, DetachDropsTheCameraObjectButKeepsItsIdentity) {
  HostRecords host;
  host.Attach(0, "M1", true, 3);
  host.Attach(1, "M2");  // attached without a camera object
  SystemRecord& system = *host.system;
  system.tSlot[0].yLive = 1;
  system.yLive = 1;
  system.ptLiveImage = &host.image;
  system.iLiveCamNum = 0;

  CaptureStdout();
  EXPECT_EQ(_kxDetachTavroCamera(&system, 0), 0);
  EXPECT_EQ(_kxDetachTavroCamera(&system, 1), 0);
  EXPECT_EQ(GetCapturedStdout(), kDetachLine + kDetachLine);

  EXPECT_EQ(system.tSlot[0].pCamera, nullptr);
  EXPECT_EQ(system.tCam[0].yEnabled, 0u);
  EXPECT_EQ(system.tSlot[0].yReapply, 1u);
  // Without a camera object only the slot's flags change.
  EXPECT_EQ(system.tCam[1].yEnabled, 1u);
  EXPECT_EQ(system.tSlot[1].yReapply, 0u);
  for (int32_t n : {0, 1}) {
    EXPECT_EQ(system.tSlot[n].yAttached, 0u);
    EXPECT_EQ(system.tSlot[n].yLive, 0u);
    EXPECT_EQ(system.aiCamIndex[n], n);
  }
  EXPECT_STREQ(system.tCam[0].szCamKey, "M1");
  EXPECT_EQ(system.aiCamIndex[3], 0);
  // Live has ended with its camera; the record still names the image, as
  // after a stop.
  EXPECT_EQ(system.yLive, 0u);
  EXPECT_EQ(system.ptLiveImage, &host.image);
  EXPECT_EQ(system.iLiveCamNum, 0);
}

TEST(Teardown, DetachesOpenedCamerasClosesEventsAndKeepsTheMap) {
  HostRecords host;
  SystemRecord& system = *host.system;
  host.Attach(0, "M1", true);
  host.Attach(1, "M2", true);
  host.Attach(5, "M3");  // attached beyond iNumCams: cleared, not detached
  system.iNumCams = 2;
  system.yLive = 1;
  lifecycle::ReplaceCameraSelection(system, "M1;M2");
  for (auto& entry : host_interface::tTavroCamAcq) {
    entry.yAcquiring = 1;
    entry.ptCamImage = &host.image;
  }

  // Teardown ends by closing the camera library, which must be started.
  oxel::Library::Initialize();
  CaptureStdout();
  EXPECT_EQ(kxTavroTearDown(&system), 0);
  EXPECT_EQ(GetCapturedStdout(), kDetachLine + kDetachLine);
  EXPECT_FALSE(oxel::Library::IsInitialized());

  for (int32_t n = 0; n < TAVRO_MAX_CAMERAS; ++n) {
    EXPECT_EQ(system.tSlot[n].yAttached, 0u) << n;
    EXPECT_EQ(system.tSlot[n].pCamera, nullptr) << n;
    const auto& entry = host_interface::tTavroCamAcq[n];
    EXPECT_EQ(entry.hEvent, nullptr) << n;
    EXPECT_EQ(entry.yAcquiring, 0u) << n;
    EXPECT_EQ(entry.ptCamImage, nullptr) << n;
  }
  EXPECT_EQ(system.tCam[5].yEnabled, 1u);
  EXPECT_EQ(system.yLive, 0u);
  EXPECT_EQ(system.pszCamSelection, nullptr);
  EXPECT_EQ(system.lMagic, TAVRO_SYSTEM_MAGIC);
  EXPECT_EQ(system.iNumCams, 2);
  EXPECT_EQ(system.aiCamIndex[1], 1);

  // A camera count beyond the table reaches no slot outside it.
  system.iNumCams = 1000;
  oxel::Library::Initialize();
  EXPECT_EQ(kxTavroTearDown(&system), 0);
}

TEST(Teardown, KeepsTheDeviceListsWhileAnotherUserHoldsTheLibrary) {
  using oxel::core::DeviceManager;
  HostRecords host;
  // One start for the system, one for another user of the library.
  oxel::Library::Initialize();
  oxel::Library::Initialize();
  DeviceManager& manager = DeviceManager::Instance();
  manager.Update(DeviceManager::UpdatePolicy::ScanEnvironment, nullptr);
  const auto devices = manager.Devices();
  ASSERT_FALSE(devices.empty()) << "no producer found through GENICAM_GENTL64_PATH";
  ASSERT_FALSE(manager.Interfaces().empty());
  ASSERT_FALSE(manager.Systems().empty());

  EXPECT_EQ(kxTavroTearDown(host.system.get()), 0);
  ASSERT_TRUE(oxel::Library::IsInitialized());
  EXPECT_EQ(manager.Devices(), devices);
  EXPECT_FALSE(manager.Interfaces().empty());
  EXPECT_FALSE(manager.Systems().empty());

  // The last user's teardown closes the library and forgets the lists.
  EXPECT_EQ(kxTavroTearDown(host.system.get()), 0);
  ASSERT_FALSE(oxel::Library::IsInitialized());
  EXPECT_TRUE(manager.Devices().empty());
  EXPECT_TRUE(manager.Interfaces().empty());
  EXPECT_TRUE(manager.Systems().empty());
}

}  // namespace
}  // namespace tavro::testing
