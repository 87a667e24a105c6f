// The device manager's update, lists, callbacks and reset, driven through a
// scripted transport layer.
#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>

#include "oxel/core/device.h"
#include "oxel/core/device_manager.h"
#include "oxel/core/exceptions.h"
#include "oxel/fake_transport.h"

namespace oxel::core {
namespace {

using fake_oxel::Found;
using fake_oxel::Lost;

template <typename T>
std::vector<std::string> Keys(const std::vector<std::shared_ptr<T>>& objects) {
  std::vector<std::string> keys;
  for (const auto& object : objects) {
    keys.push_back(object->ID());
  }
  return keys;
}

class DeviceManagerTest : public ::testing::Test {
 protected:
  DeviceManagerTest() {
    transport_.AddProducer("/fake/a.cti", 1);
    transport_.AddProducer("/fake/b.cti", 2);
    // System 1 has interfaces 10 and 11; system 2 has interface 20.
    transport_.Script("Sys1", {Found(10), Found(11)});
    transport_.Script("If10", {Found(100), Found(101)});
    transport_.Script("If11", {Found(110)});
    transport_.Script("Sys2", {Found(20)});
    transport_.Script("If20", {Found(200)});
  }

  ~DeviceManagerTest() override { manager_.Reset(true); }

  void Update(DeviceManager::UpdatePolicy policy = DeviceManager::UpdatePolicy::AddedPathsOnly) {
    manager_.Update(policy, [this](const std::string& text) {
      std::lock_guard lock(errorMutex_);
      errors_.push_back(text);
    });
  }

  // Every manager callback, in the order called.
  void RecordCallbacks() {
    handles_ = {
        manager_.RegisterSystemFoundCallback(
            [this](const auto& system) { events_.push_back("system+ " + system->ID()); }),
        manager_.RegisterInterfaceFoundCallback(
            [this](const auto& found) { events_.push_back("interface+ " + found->ID()); }),
        manager_.RegisterInterfaceLostCallback(
            [this](const std::string& key) { events_.push_back("interface- " + key); }),
        manager_.RegisterDeviceFoundCallback(
            [this](const auto& device) { events_.push_back("device+ " + device->ID()); }),
        manager_.RegisterDeviceLostCallback(
            [this](const std::string& key) { events_.push_back("device- " + key); }),
    };
  }

  void TearDown() override {
    if (!handles_.empty()) {
      EXPECT_TRUE(manager_.UnregisterSystemFoundCallback(handles_[0]));
      EXPECT_TRUE(manager_.UnregisterInterfaceFoundCallback(handles_[1]));
      EXPECT_TRUE(manager_.UnregisterInterfaceLostCallback(handles_[2]));
      EXPECT_TRUE(manager_.UnregisterDeviceFoundCallback(handles_[3]));
      EXPECT_TRUE(manager_.UnregisterDeviceLostCallback(handles_[4]));
    }
  }

  fake_oxel::FakeTransport transport_;
  DeviceManager& manager_ = DeviceManager::Instance();
  std::mutex errorMutex_;
  std::vector<std::string> errors_;
  std::vector<std::string> events_;
  std::vector<CallbackHandle> handles_;
};

TEST_F(DeviceManagerTest, NothingToDoChangesNothing) {
  RecordCallbacks();
  Update();
  EXPECT_TRUE(manager_.Systems().empty());
  EXPECT_TRUE(manager_.Devices().empty());
  EXPECT_TRUE(events_.empty());
  EXPECT_TRUE(errors_.empty());
  EXPECT_TRUE(transport_.UpdateTimeouts().empty());
}

TEST_F(DeviceManagerTest, FindsEverythingBehindEachProducerOnceAndCallsBackInOrder) {
  RecordCallbacks();
  manager_.AddProducerLibrary("/fake/a.cti");
  manager_.AddProducerLibrary("/fake/b.cti");
  manager_.AddProducerLibrary("/fake/a.cti");
  Update();
  EXPECT_EQ(transport_.OpenCount("/fake/a.cti"), 1);
  EXPECT_EQ(Keys(manager_.Systems()), (std::vector<std::string>{"Sys1", "Sys2"}));
  EXPECT_EQ(Keys(manager_.Interfaces()), (std::vector<std::string>{"If10", "If11", "If20"}));
  EXPECT_EQ(Keys(manager_.Devices()),
            (std::vector<std::string>{"Dev100", "Dev101", "Dev110", "Dev200"}));
  EXPECT_EQ(events_,
            (std::vector<std::string>{"system+ Sys1", "system+ Sys2", "interface+ If10",
                                      "interface+ If11", "interface+ If20", "device+ Dev100",
                                      "device+ Dev101", "device+ Dev110", "device+ Dev200"}));
  // Systems with the interface timeout, then interfaces with the device timeout.
  EXPECT_EQ(transport_.UpdateTimeouts(), (std::vector<uint64_t>{100, 100, 300, 300, 300}));

  manager_.AddProducerLibrary("/fake/a.cti");
  Update();
  EXPECT_EQ(transport_.OpenCount("/fake/a.cti"), 1);
  EXPECT_EQ(manager_.Devices().size(), 4u);
  EXPECT_TRUE(errors_.empty());
}

TEST_F(DeviceManagerTest, FailuresAreReportedWithTheirPlaceAndTheRestGoesOn) {
  transport_.FailNextUpdate("Sys2", OXEL_RETURN_CODE_NOT_AVAILABLE);
  transport_.FailNextUpdate("If11", OXEL_RETURN_CODE_TIMEOUT);
  manager_.AddProducerLibrary("/fake/missing.cti");
  manager_.AddProducerLibrary("/fake/a.cti");
  manager_.AddProducerLibrary("/fake/b.cti");
  Update();
  std::sort(errors_.begin(), errors_.end());
  EXPECT_EQ(errors_,
            (std::vector<std::string>{
                "[CTI - /fake/missing.cti]: Error-Code: 16 (OXEL_RETURN_CODE_CTI_LOADING_ERROR) | "
                "Error-Description: /fake/missing.cti is not a producer",
                "[Interface - If11]: Error-Code: 13 (OXEL_RETURN_CODE_TIMEOUT) | "
                "Error-Description: If11 did not answer",
                "[System - Sys2]: Error-Code: 14 (OXEL_RETURN_CODE_NOT_AVAILABLE) | "
                "Error-Description: Sys2 did not answer"}));
  EXPECT_EQ(Keys(manager_.Devices()), (std::vector<std::string>{"Dev100", "Dev101"}));

  // The failed path is not remembered (and fails again); the failed system
  // and interface are, and answer now.
  manager_.AddProducerLibrary("/fake/missing.cti");
  errors_.clear();
  Update();
  EXPECT_EQ(errors_.size(), 1u);
  EXPECT_EQ(Keys(manager_.Devices()),
            (std::vector<std::string>{"Dev100", "Dev101", "Dev110", "Dev200"}));
}

TEST_F(DeviceManagerTest, OnlyKnownObjectsCanBeLost) {
  manager_.AddProducerLibrary("/fake/a.cti");
  Update();
  RecordCallbacks();
  // Unknown keys are ignored; a lost interface takes its devices with it.
  transport_.Script("Sys1", {Lost("If99"), Lost("If10")});
  transport_.Script("If11", {Lost("Dev999"), Found(111)});
  Update();
  EXPECT_EQ(events_, (std::vector<std::string>{"interface- If10", "device+ Dev111",
                                               "device- Dev100", "device- Dev101"}));
  EXPECT_EQ(Keys(manager_.Interfaces()), (std::vector<std::string>{"If11"}));
  EXPECT_EQ(Keys(manager_.Devices()), (std::vector<std::string>{"Dev110", "Dev111"}));

  transport_.Script("If11", {Lost("Dev110")});
  Update();
  EXPECT_EQ(Keys(manager_.Devices()), (std::vector<std::string>{"Dev111"}));
  EXPECT_EQ(events_.back(), "device- Dev110");
}

TEST_F(DeviceManagerTest, ResetRefusesWhileDevicesAreOpenUnlessForced) {
  manager_.AddProducerLibrary("/fake/a.cti");
  Update();
  auto first = manager_.Devices().at(0)->OpenDevice(OXEL_DEVICE_ACCESS_TYPE_CONTROL);
  auto second = manager_.Devices().at(2)->OpenDevice(OXEL_DEVICE_ACCESS_TYPE_CONTROL);
  const auto refusal = [&] {
    try {
      manager_.Reset(false);
    } catch (const InternalErrorException& error) {
      return std::string(error.what());
    }
    return std::string("reset");
  };
  const std::string text =
      "Can't reset the device manager while there are devices open. The following devices (";
  EXPECT_EQ(refusal(), text + "2) are open: Dev100 Dev110 ");
  first.reset();
  EXPECT_EQ(refusal(), text + "1) are open: Dev110 ");
  EXPECT_EQ(manager_.Devices().size(), 3u);

  RecordCallbacks();
  manager_.Reset(true);
  EXPECT_EQ(events_, (std::vector<std::string>{"device- Dev100", "device- Dev101", "device- Dev110",
                                               "interface- If10", "interface- If11"}));
  EXPECT_TRUE(manager_.Devices().empty());
  EXPECT_TRUE(manager_.Systems().empty());

  // Producer libraries are opened afresh by the next update.
  manager_.AddProducerLibrary("/fake/a.cti");
  Update();
  EXPECT_EQ(transport_.OpenCount("/fake/a.cti"), 2);
}

TEST_F(DeviceManagerTest, ResetReleasesChildrenBeforeParents) {
  manager_.AddProducerLibrary("/fake/b.cti");
  Update();
  const auto descriptor = manager_.Devices().at(0);
  manager_.Reset(true);
  EXPECT_EQ(transport_.Releases(),
            (std::vector<std::string>{"Close If20", "Close Sys2", "Release /fake/b.cti"}));
  try {
    descriptor->ParentInterface();
    ADD_FAILURE() << "the interface outlived the reset";
  } catch (const InternalErrorException& error) {
    EXPECT_STREQ(error.what(), "Pointer has expired!");
  }
}

}  // namespace
}  // namespace oxel::core
