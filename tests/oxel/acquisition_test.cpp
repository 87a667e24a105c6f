// Frames through the object layer from a simulated camera: buffers handed
// back and queued anew, time-outs, a killed wait and a stream torn down while
// grabbing.
#include <gtest/gtest.h>

#include <chrono>
#include <future>

#include "oxel/sim_fixture.h"
#include "oxel_sim.h"

namespace oxel::core {
namespace {

using namespace std::chrono_literals;

class AcquisitionTest : public SimFixture {
 protected:
  void SetUp() override {
    SimFixture::SetUp();
    WriteProducer("a.cti", TestProducerFile("SysA"));
    Update();
  }
};

// One frame more than buffers: the last one fills the first buffer again,
// after it was queued anew.
TEST_F(AcquisitionTest, FramesArriveInTheAnnouncedBuffersUntilTheWaitIsKilled) {
  OpenedCamera camera(Descriptor("CAM-C"));
  camera.StartTriggered();
  EXPECT_TRUE(camera.dataStream->IsGrabbing());
  EXPECT_THROW(camera.dataStream->WaitForFinishedBuffer(0), TimeoutException);
  for (size_t frame = 0; frame <= camera.buffers.size(); ++frame) {
    SCOPED_TRACE(frame);
    camera.Trigger();
    const auto buffer = camera.dataStream->WaitForFinishedBuffer(3000);
    EXPECT_EQ(buffer, camera.buffers[frame % camera.buffers.size()]);
    EXPECT_EQ(buffer->Width(), 64u);
    EXPECT_FALSE(buffer->IsIncomplete());
    uint64_t lastId = 0;
    ASSERT_EQ(OxelSim_GetLastFrameId("CAM-C", &lastId), OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(buffer->FrameID(), lastId);
    camera.dataStream->QueueBuffer(buffer);
  }

  auto waiter = std::async(std::launch::async, [&] {
    try {
      camera.dataStream->WaitForFinishedBuffer(10000);
    } catch (const AbortedException&) {
      return true;
    }
    return false;
  });
  // A kill that comes before the wait has begun may be lost: repeat it until
  // the waiter is free.
  while (waiter.wait_for(10ms) != std::future_status::ready) {
    camera.dataStream->KillWait();
  }
  EXPECT_TRUE(waiter.get());
  camera.Stop();
  EXPECT_FALSE(camera.dataStream->IsGrabbing());
}

TEST_F(AcquisitionTest, AStreamDestroyedWhileGrabbingGivesEverythingBack) {
  OpenedCamera camera(Descriptor("CAM-C"));
  camera.StartTriggered();
  ASSERT_TRUE(camera.dataStream->IsGrabbing());
  const auto revoked = camera.buffers.front();
  camera.buffers.clear();
  camera.dataStream.reset();
  // The buffer object outlives its stream, but the library has taken the
  // buffer back.
  EXPECT_THROW(revoked->Size(), Exception);

  // The device's stream can be opened again, empty.
  camera.dataStream = camera.device->DataStreams().at(0)->OpenDataStream();
  EXPECT_FALSE(camera.dataStream->IsGrabbing());
  EXPECT_TRUE(camera.dataStream->AnnouncedBuffers().empty());
}

}  // namespace
}  // namespace oxel::core
