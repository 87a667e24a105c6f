// The object layer over the simulated camera system: discovery, loss and
// return of cameras, reset, shared children and weak parents.
#include <gtest/gtest.h>

#include "oxel/core/oxel_loader.h"
#include "oxel/sim_fixture.h"
#include "oxel_sim.h"

namespace oxel::core {
namespace {

using CameraSystemTest = SimFixture;

TEST(SimulatorBindingTest, EveryFunctionOfTheInterfaceIsExported) {
  const OxelFunctions table = BindOxelLibrary(kOxelLibraryFile);
#define EXPECT_BOUND(name) EXPECT_NE(table.name, nullptr) << #name;
  OXEL_FOR_EACH_FUNCTION(EXPECT_BOUND)
#undef EXPECT_BOUND
}

TEST_F(CameraSystemTest, ABrokenProducerIsReportedWhileTheOthersCamerasAreFound) {
  WriteProducer("a.cti", TestProducerFile("SysA"));
  const std::string broken = WriteProducer("b.cti", "{\"system\": ");
  Update();
  const auto errors = Errors();
  ASSERT_EQ(errors.size(), 1u);
  const std::string prefix = "[CTI - " + broken + "]: Error-Code: 16 (";
  EXPECT_EQ(errors[0].rfind(prefix, 0), 0u) << errors[0];
  ASSERT_NE(Descriptor("CAM-C"), nullptr);
  ASSERT_NE(Descriptor("CAM-M"), nullptr);

  const auto colour = Descriptor("CAM-C");
  EXPECT_EQ(colour->ModelName(), "OX-64C");
  EXPECT_EQ(colour->UserDefinedName(), "Left");
  EXPECT_EQ(colour->SerialNumber(), "C0001");
  EXPECT_EQ(colour->TLType(), "U3V");
  EXPECT_EQ(colour->AccessStatus(), OXEL_DEVICE_ACCESS_STATUS_READ_WRITE);
  EXPECT_TRUE(colour->IsOpenable(OXEL_DEVICE_ACCESS_TYPE_CONTROL));
  EXPECT_EQ(colour->ParentInterface()->ID(), "USB0");
}

TEST_F(CameraSystemTest, UnpluggedCamerasAreLostAndFoundAgain) {
  WriteProducer("a.cti", TestProducerFile("SysA"));
  Update();
  std::vector<std::string> lost;
  const auto handle =
      Manager().RegisterDeviceLostCallback([&](const std::string& key) { lost.push_back(key); });
  const auto before = Descriptor("CAM-M");

  ASSERT_EQ(OxelSim_UnplugCamera("CAM-M"), OXEL_RETURN_CODE_SUCCESS);
  Update();
  EXPECT_EQ(lost, (std::vector<std::string>{"CAM-M"}));
  EXPECT_EQ(Descriptor("CAM-M"), nullptr);
  EXPECT_NE(Descriptor("CAM-C"), nullptr);

  ASSERT_EQ(OxelSim_ReplugCamera("CAM-M"), OXEL_RETURN_CODE_SUCCESS);
  Update();
  const auto after = Descriptor("CAM-M");
  ASSERT_NE(after, nullptr);
  EXPECT_NE(after, before);
  EXPECT_EQ(Manager().Devices().size(), 2u);
  EXPECT_TRUE(Errors().empty());
  EXPECT_TRUE(Manager().UnregisterDeviceLostCallback(handle));
}

TEST_F(CameraSystemTest, ACameraInUseElsewhereIsBusy) {
  WriteProducer("a.cti", TestProducerFile("SysA"));
  Update();
  ASSERT_EQ(OxelSim_SetOpenedElsewhere("CAM-C", 1), OXEL_RETURN_CODE_SUCCESS);
  const auto colour = Descriptor("CAM-C");
  EXPECT_EQ(DeviceAccessStatusText(colour->AccessStatus()), "Busy");
  EXPECT_FALSE(colour->IsOpenable(OXEL_DEVICE_ACCESS_TYPE_CONTROL));
  EXPECT_THROW(colour->OpenDevice(OXEL_DEVICE_ACCESS_TYPE_CONTROL), Exception);
}

TEST_F(CameraSystemTest, ResetIsRefusedWhileACameraIsOpen) {
  WriteProducer("a.cti", TestProducerFile("SysA"));
  Update();
  auto device = Descriptor("CAM-C")->OpenDevice(OXEL_DEVICE_ACCESS_TYPE_CONTROL);
  EXPECT_EQ(Descriptor("CAM-C")->AccessStatus(), OXEL_DEVICE_ACCESS_STATUS_OPEN_READ_WRITE);
  try {
    Manager().Reset(false);
    ADD_FAILURE() << "reset with an open camera";
  } catch (const InternalErrorException& error) {
    EXPECT_STREQ(error.what(),
                 "Can't reset the device manager while there are devices open. The following "
                 "devices (1) are open: CAM-C ");
  }
  device.reset();
  EXPECT_NO_THROW(Manager().Reset(false));
  EXPECT_TRUE(Manager().Devices().empty());
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
  const auto width = nodeMaps[0]->FindNode("Width");
  EXPECT_EQ(nodeMaps[0]->FindNode("Width"), width);
  EXPECT_EQ(nodeMaps[0]->FindNode<nodes::IntegerNode>("Width")->Value(), 64);
  try {
    nodeMaps[0]->FindNode<nodes::FloatNode>("Width");
    ADD_FAILURE() << "an integer feature became a float";
  } catch (const InvalidCastException& error) {
    EXPECT_STREQ(error.what(), "Invalid node cast!");
  }
  EXPECT_THROW(nodeMaps[0]->FindNode("NoSuchFeature"), NotFoundException);

  const auto streamDescriptor = device->DataStreams().at(0);
  device.reset();
  EXPECT_THROW(remote->ParentDevice(), InternalErrorException);
  EXPECT_THROW(streamDescriptor->OpenDataStream(), InternalErrorException);

  Manager().Reset(true);
  try {
    descriptor->ParentInterface();
    ADD_FAILURE() << "the interface outlived the reset";
  } catch (const InternalErrorException& error) {
    EXPECT_STREQ(error.what(), "Pointer has expired!");
  }
}

TEST_F(CameraSystemTest, EnumerationsAnswerWithTheirCachedEntries) {
  WriteProducer("a.cti", TestProducerFile("SysA"));
  Update();
  OpenedCamera camera(Descriptor("CAM-C"));
  const auto pixelFormat = camera.Feature<nodes::EnumerationNode>("PixelFormat");
  std::vector<std::string> symbols;
  for (const auto& entry : pixelFormat->Entries()) {
    symbols.push_back(entry->SymbolicValue());
    EXPECT_EQ(camera.nodeMap->FindNode(entry->Name()), entry);
  }
  EXPECT_EQ(symbols, (std::vector<std::string>{"BGR8", "Mono8"}));
  pixelFormat->SetCurrentEntry("Mono8");
  EXPECT_EQ(pixelFormat->CurrentEntry()->SymbolicValue(), "Mono8");
  EXPECT_THROW(pixelFormat->SetCurrentEntry("Mono16"), NotFoundException);
  EXPECT_EQ(nodes::NodeAccessStatusText(pixelFormat->AccessStatus()), "ReadWrite");
}

}  // namespace
}  // namespace oxel::core
