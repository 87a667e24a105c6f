// Finding cameras: descriptors and their texts, found and lost reports on
// unplug and replug, access status and opening.
#include <algorithm>

#include "sim_world.h"

namespace simtest {
namespace {

class Discovery : public BundledWorld {
 protected:
  static OXEL_DEVICE_ACCESS_STATUS Status(OXEL_DEVICE_DESCRIPTOR descriptor) {
    OXEL_DEVICE_ACCESS_STATUS status = -1;
    EXPECT_EQ(OXEL_DeviceDescriptor_GetAccessStatus(descriptor, &status), OXEL_RETURN_CODE_SUCCESS);
    return status;
  }
  static bool Openable(OXEL_DEVICE_DESCRIPTOR descriptor) {
    OXEL_BOOL8 openable = 2;
    EXPECT_EQ(
        OXEL_DeviceDescriptor_IsOpenable(descriptor, OXEL_DEVICE_ACCESS_TYPE_CONTROL, &openable),
        OXEL_RETURN_CODE_SUCCESS);
    return openable != 0;
  }
};

TEST_F(Discovery, BundledCamerasCarryTheirIdentity) {
  struct Expected {
    const char* id;
    const char* model;
    const char* userName;
    const char* tlType;
  };
  const Expected cameras[] = {{kColourId, "OX-U3-23C", "Left", "U3V"},
                              {kMonoId, "OX-U3-13M", "", "U3V"},
                              {kGevId, "OX-GE-50M", "Overview", "GEV"}};
  ASSERT_EQ(world_->Descriptors().size(), 3u);
  for (const Expected& camera : cameras) {
    SCOPED_TRACE(camera.id);
    OXEL_DEVICE_DESCRIPTOR d = world_->Descriptor(camera.id);
    EXPECT_EQ(Text([&](char* t, size_t* s) { return OXEL_DeviceDescriptor_GetModelName(d, t, s); }),
              camera.model);
    EXPECT_EQ(
        Text([&](char* t, size_t* s) { return OXEL_DeviceDescriptor_GetUserDefinedName(d, t, s); }),
        camera.userName);
    EXPECT_EQ(Text([&](char* t, size_t* s) { return OXEL_DeviceDescriptor_GetTLType(d, t, s); }),
              camera.tlType);
    EXPECT_EQ(Status(d), OXEL_DEVICE_ACCESS_STATUS_READ_WRITE);
    EXPECT_TRUE(Openable(d));
  }
}

TEST_F(Discovery, UnplugAndReplugAreReportedAtTheNextUpdate) {
  std::vector<std::string> found, lost;
  world_->UpdateDevices(&found, &lost);
  EXPECT_TRUE(found.empty());
  EXPECT_TRUE(lost.empty());

  ASSERT_EQ(OxelSim_UnplugCamera(kMonoId), OXEL_RETURN_CODE_SUCCESS);
  world_->UpdateDevices(&found, &lost);
  EXPECT_TRUE(found.empty());
  EXPECT_EQ(lost, std::vector<std::string>{kMonoId});

  lost.clear();
  ASSERT_EQ(OxelSim_ReplugCamera(kMonoId), OXEL_RETURN_CODE_SUCCESS);
  world_->UpdateDevices(&found, &lost);
  EXPECT_EQ(found, std::vector<std::string>{kMonoId});
  EXPECT_TRUE(lost.empty());

  // Unplugged and plugged in again between two updates: the old descriptor is
  // lost and a new one found.
  found.clear();
  ASSERT_EQ(OxelSim_UnplugCamera(kColourId), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OxelSim_ReplugCamera(kColourId), OXEL_RETURN_CODE_SUCCESS);
  OXEL_DEVICE_DESCRIPTOR before = world_->Descriptor(kColourId);
  world_->UpdateDevices(&found, &lost);
  EXPECT_EQ(found, std::vector<std::string>{kColourId});
  EXPECT_EQ(lost, std::vector<std::string>{kColourId});
  EXPECT_NE(world_->Descriptor(kColourId), before);
  EXPECT_EQ(Status(before), OXEL_DEVICE_ACCESS_STATUS_UNKNOWN);
}

TEST_F(Discovery, AccessStatusFollowsWhoHasTheCamera) {
  OXEL_DEVICE_DESCRIPTOR d = world_->Descriptor(kColourId);

  ASSERT_EQ(OxelSim_SetOpenedElsewhere(kColourId, 1), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(Status(d), OXEL_DEVICE_ACCESS_STATUS_BUSY);
  EXPECT_FALSE(Openable(d));
  OXEL_DEVICE device = nullptr;
  EXPECT_EQ(OXEL_DeviceDescriptor_OpenDevice(d, OXEL_DEVICE_ACCESS_TYPE_CONTROL, &device),
            OXEL_RETURN_CODE_BAD_ACCESS);
  EXPECT_NE(TakeLastError().text.find("Busy"), std::string::npos);

  ASSERT_EQ(OxelSim_SetOpenedElsewhere(kColourId, 0), OXEL_RETURN_CODE_SUCCESS);
  Camera camera = Camera::Open(*world_, kColourId);
  EXPECT_EQ(Status(d), OXEL_DEVICE_ACCESS_STATUS_OPEN_READ_WRITE);
  EXPECT_FALSE(Openable(d));
  EXPECT_EQ(OXEL_DeviceDescriptor_OpenDevice(d, OXEL_DEVICE_ACCESS_TYPE_CONTROL, &device),
            OXEL_RETURN_CODE_BAD_ACCESS);

  camera.Close();
  EXPECT_EQ(Status(d), OXEL_DEVICE_ACCESS_STATUS_READ_WRITE);
  EXPECT_TRUE(Openable(d));
}

}  // namespace
}  // namespace simtest
