// The device manager and the object tree over the simulated camera system:
// discovery, failures in their place, loss and return of cameras and
// interfaces, reset, shared children and weak parents. A spy over the
// simulator's table shows what the simulator cannot be made to do.
#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>

#include "oxel/fake_oxel.h"
#include "oxel/sim_fixture.h"
#include "oxel_sim.h"

namespace oxel::core {
namespace {

using CameraSystemTest = SimFixture;

std::string SystemId(OXEL_SYSTEM system) {
  return QueryText([&](char* t, size_t* s) { return OXEL_System_GetID(system, t, s); });
}
std::string InterfaceId(OXEL_INTERFACE handle) {
  return QueryText([&](char* t, size_t* s) { return OXEL_Interface_GetID(handle, t, s); });
}

TEST_F(CameraSystemTest, ABrokenProducerIsReportedWhileTheOthersAreFoundOnce) {
  const std::string good = WriteProducer("a.cti", TestProducerFile("SysA"));
  const std::string broken = WriteProducer("b.cti", "{\"system\": ");
  Update(DeviceManager::UpdatePolicy::AddedPathsOnly);
  EXPECT_TRUE(Manager().Systems().empty());

  RecordCallbacks();
  Manager().AddProducerLibrary(good);  // found by the scan as well
  Update();
  ASSERT_EQ(Errors().size(), 1u);
  EXPECT_EQ(Errors()[0].rfind("[CTI - " + broken + "]: Error-Code: 16 (", 0), 0u) << Errors()[0];
  EXPECT_EQ(Keys(Manager().Systems()), std::vector<std::string>{"SysA"});
  EXPECT_EQ(events_, (std::vector<std::string>{"system+ SysA", "interface+ USB0", "device+ CAM-C",
                                               "device+ CAM-M"}));

  // The broken path is not remembered and fails again; the good one is.
  Update();
  EXPECT_EQ(Errors().size(), 2u);
  EXPECT_EQ(Manager().Systems().size(), 1u);
  EXPECT_EQ(Manager().Devices().size(), 2u);
  EXPECT_EQ(events_.size(), 4u);
}

// Update failures of a system or an interface, once each; the updates run
// on several threads.
std::mutex g_failingMutex;
std::vector<std::string> g_failing;
bool FailsNow(const std::string& id) {
  std::lock_guard lock(g_failingMutex);
  return std::erase(g_failing, id) != 0;
}
OXEL_RETURN_CODE FailingSystemUpdate(OXEL_SYSTEM system, uint64_t timeoutMs) {
  return FailsNow(SystemId(system)) ? OXEL_System_UpdateInterfaces(nullptr, 0)
                                    : OXEL_System_UpdateInterfaces(system, timeoutMs);
}
OXEL_RETURN_CODE FailingInterfaceUpdate(OXEL_INTERFACE handle, uint64_t timeoutMs) {
  return FailsNow(InterfaceId(handle)) ? OXEL_Interface_UpdateDevices(nullptr, 0)
                                       : OXEL_Interface_UpdateDevices(handle, timeoutMs);
}

TEST_F(CameraSystemTest, UpdateFailuresAreReportedWithTheirPlaceAndRetried) {
  WriteProducer("a.cti", TestProducerFile("SysA"));
  WriteProducer("b.cti", TestProducerFile("SysB"));
  fake_oxel::ScopedTable spy(&Api());
  spy.table.OXEL_System_UpdateInterfaces = &FailingSystemUpdate;
  spy.table.OXEL_Interface_UpdateDevices = &FailingInterfaceUpdate;
  g_failing = {"SysB", "USB0"};  // SysB's interface is never seen: only SysA's fails
  Update();
  auto errors = Errors();
  std::sort(errors.begin(), errors.end());
  ASSERT_EQ(errors.size(), 2u);
  const std::string code =
      "]: Error-Code: 10 (OXEL_RETURN_CODE_INVALID_HANDLE) | Error-Description: ";
  EXPECT_EQ(errors[0].rfind("[Interface - USB0" + code, 0), 0u) << errors[0];
  EXPECT_EQ(errors[1].rfind("[System - SysB" + code, 0), 0u) << errors[1];
  EXPECT_TRUE(Manager().Devices().empty());
  EXPECT_EQ(Manager().Interfaces().size(), 1u);

  Update();
  EXPECT_EQ(Errors().size(), 2u);
  EXPECT_EQ(Manager().Interfaces().size(), 2u);
  EXPECT_EQ(Manager().Devices().size(), 4u);
}

// Interfaces reported lost by the next interface update.
struct LostRegistration {
  OXEL_InterfaceLostCallback function = nullptr;
  void* context = nullptr;
};
LostRegistration g_interfaceLost;
std::vector<std::string> g_losing;
OXEL_RETURN_CODE RegisterLost(OXEL_SYSTEM system, OXEL_InterfaceLostCallback function,
                              void* context, OXEL_CALLBACK_HANDLE* out) {
  g_interfaceLost = {function, context};
  return OXEL_System_RegisterInterfaceLostCallback(system, function, context, out);
}
OXEL_RETURN_CODE LosingUpdate(OXEL_SYSTEM system, uint64_t timeoutMs) {
  for (const auto& key : std::exchange(g_losing, {})) {
    g_interfaceLost.function(key.c_str(), key.size() + 1, g_interfaceLost.context);
  }
  return OXEL_System_UpdateInterfaces(system, timeoutMs);
}

TEST_F(CameraSystemTest, LostCamerasAndInterfacesAreForgottenAndFoundAnew) {
  WriteProducer("a.cti", TestProducerFile("SysA"));
  fake_oxel::ScopedTable spy(&Api());
  spy.table.OXEL_System_RegisterInterfaceLostCallback = &RegisterLost;
  spy.table.OXEL_System_UpdateInterfaces = &LosingUpdate;
  Update();
  RecordCallbacks();
  const auto before = Descriptor("CAM-M");

  ASSERT_EQ(OxelSim_UnplugCamera("CAM-M"), OXEL_RETURN_CODE_SUCCESS);
  Update();
  EXPECT_EQ(events_, std::vector<std::string>{"device- CAM-M"});
  EXPECT_EQ(Keys(Manager().Devices()), std::vector<std::string>{"CAM-C"});
  ASSERT_EQ(OxelSim_ReplugCamera("CAM-M"), OXEL_RETURN_CODE_SUCCESS);
  Update();
  EXPECT_EQ(events_.back(), "device+ CAM-M");
  ASSERT_NE(Descriptor("CAM-M"), nullptr);
  EXPECT_NE(Descriptor("CAM-M"), before);

  // Unknown keys are ignored; a lost interface takes its cameras with it.
  events_.clear();
  g_losing = {"USB9", "USB0"};
  Update();
  EXPECT_EQ(events_,
            (std::vector<std::string>{"interface- USB0", "device- CAM-C", "device- CAM-M"}));
  EXPECT_TRUE(Manager().Interfaces().empty());
  EXPECT_TRUE(Manager().Devices().empty());
  EXPECT_TRUE(Errors().empty());
}

// Releases of the transport objects, in order.
std::vector<std::string> g_releases;
OXEL_RETURN_CODE CloseInterface(OXEL_INTERFACE handle) {
  g_releases.push_back("Close " + InterfaceId(handle));
  return OXEL_Interface_Close(handle);
}
OXEL_RETURN_CODE CloseSystem(OXEL_SYSTEM system) {
  g_releases.push_back("Close " + SystemId(system));
  return OXEL_System_Close(system);
}
OXEL_RETURN_CODE ReleaseLibrary(OXEL_PRODUCER_LIBRARY library) {
  g_releases.push_back("Release");
  return OXEL_ProducerLibrary_Release(library);
}

TEST_F(CameraSystemTest, ResetRefusesWhileCamerasAreOpenUnlessForced) {
  WriteProducer("a.cti", TestProducerFile("SysA"));
  Update();
  const auto descriptor = Descriptor("CAM-C");
  auto first = descriptor->OpenDevice(OXEL_DEVICE_ACCESS_TYPE_CONTROL);
  auto second = Descriptor("CAM-M")->OpenDevice(OXEL_DEVICE_ACCESS_TYPE_CONTROL);
  const auto refusal = [&] {
    try {
      Manager().Reset(false);
    } catch (const InternalErrorException& error) {
      return std::string(error.what());
    }
    return std::string("reset");
  };
  const std::string text =
      "Can't reset the device manager while there are devices open. The following devices (";
  EXPECT_EQ(refusal(), text + "2) are open: CAM-C CAM-M ");
  first.reset();
  EXPECT_EQ(refusal(), text + "1) are open: CAM-M ");
  EXPECT_EQ(Manager().Devices().size(), 2u);

  RecordCallbacks();
  g_releases.clear();
  {
    fake_oxel::ScopedTable spy(&Api());
    spy.table.OXEL_Interface_Close = &CloseInterface;
    spy.table.OXEL_System_Close = &CloseSystem;
    spy.table.OXEL_ProducerLibrary_Release = &ReleaseLibrary;
    Manager().Reset(true);
  }
  EXPECT_EQ(events_,
            (std::vector<std::string>{"device- CAM-C", "device- CAM-M", "interface- USB0"}));
  EXPECT_EQ(g_releases, (std::vector<std::string>{"Close USB0", "Close SysA", "Release"}));
  EXPECT_TRUE(Manager().Systems().empty());
  EXPECT_TRUE(Manager().Devices().empty());
  try {
    descriptor->ParentInterface();
    ADD_FAILURE() << "the interface outlived the reset";
  } catch (const InternalErrorException& error) {
    EXPECT_STREQ(error.what(), "Pointer has expired!");
  }

  // Producer files are opened afresh by the next update.
  second.reset();
  Update();
  EXPECT_EQ(Manager().Devices().size(), 2u);
}

TEST_F(CameraSystemTest, ChildrenAreHandedOutOnceAndParentsHeldWeakly) {
  WriteProducer("a.cti", TestProducerFile("SysA"));
  Update();
  const auto descriptor = Descriptor("CAM-C");
  auto device = descriptor->OpenDevice(OXEL_DEVICE_ACCESS_TYPE_CONTROL);
  EXPECT_EQ(device->ID(), "CAM-C");
  EXPECT_EQ(descriptor->OpenedDevice(), device);
  const auto remote = device->RemoteDevice();
  EXPECT_EQ(device->RemoteDevice(), remote);
  const auto nodeMaps = remote->NodeMaps();
  ASSERT_FALSE(nodeMaps.empty());
  EXPECT_EQ(remote->NodeMaps(), nodeMaps);
  EXPECT_EQ(device->DataStreams(), device->DataStreams());
  EXPECT_EQ(nodeMaps[0]->FindNode<nodes::IntegerNode>("Width")->Value(), 64);

  const auto streamDescriptor = device->DataStreams().at(0);
  device.reset();
  EXPECT_THROW(remote->ParentDevice(), InternalErrorException);
  EXPECT_THROW(streamDescriptor->OpenDataStream(), InternalErrorException);
}

}  // namespace
}  // namespace oxel::core
