// Frames through the object layer from a simulated camera: buffers handed
// back across threads, time-outs, a killed wait and a stream torn down while
// grabbing.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <deque>
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

// One thread waits for frames until its wait is killed; the other fires
// triggers and queues the buffers it is handed back. One frame more than
// buffers: the last one fills the first buffer again, after it was queued anew.
TEST_F(AcquisitionTest, FramesArriveInTheAnnouncedBuffersAcrossThreads) {
  OpenedCamera camera(Descriptor("CAM-C"));
  camera.StartTriggered();
  EXPECT_TRUE(camera.dataStream->IsGrabbing());
  EXPECT_THROW(camera.dataStream->WaitForFinishedBuffer(20), TimeoutException);

  std::mutex mutex;
  std::condition_variable handedBack;
  std::deque<std::shared_ptr<Buffer>> done;
  auto waiter = std::async(std::launch::async, [&]() -> std::string {
    try {
      for (;;) {
        auto buffer = camera.dataStream->WaitForFinishedBuffer(10000);
        std::lock_guard lock(mutex);
        done.push_back(std::move(buffer));
        handedBack.notify_one();
      }
    } catch (const AbortedException&) {
      return "aborted";
    } catch (const Exception& error) {
      return error.what();
    }
  });
  const size_t frames = camera.buffers.size() + 1;
  for (size_t frame = 0; frame < frames; ++frame) {
    SCOPED_TRACE(frame);
    camera.Trigger();
    std::shared_ptr<Buffer> buffer;
    {
      std::unique_lock lock(mutex);
      ASSERT_TRUE(handedBack.wait_for(lock, 5s, [&] { return !done.empty(); }));
      buffer = done.front();
      done.pop_front();
    }
    EXPECT_EQ(buffer, camera.buffers[frame % camera.buffers.size()]);
    EXPECT_EQ(buffer->Width(), 64u);
    EXPECT_EQ(buffer->Height(), 48u);
    EXPECT_FALSE(buffer->IsIncomplete());
    EXPECT_EQ(buffer->PixelFormat(), OXEL_SIM_PIXEL_FORMAT_BGR8);
    uint64_t lastId = 0;
    ASSERT_EQ(OxelSim_GetLastFrameId("CAM-C", &lastId), OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(buffer->FrameID(), lastId);
    camera.dataStream->QueueBuffer(buffer);
  }
  // A kill that comes before the wait has begun may be lost: repeat it until
  // the waiter is free.
  while (waiter.wait_for(10ms) != std::future_status::ready) {
    camera.dataStream->KillWait();
  }
  EXPECT_EQ(waiter.get(), "aborted");
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

  // The device's stream can be opened and run again.
  camera.dataStream = camera.device->DataStreams().at(0)->OpenDataStream();
  EXPECT_FALSE(camera.dataStream->IsGrabbing());
  EXPECT_TRUE(camera.dataStream->AnnouncedBuffers().empty());
  std::vector<std::shared_ptr<Buffer>> buffers;
  for (size_t i = 0; i < camera.dataStream->NumBuffersAnnouncedMinRequired(); ++i) {
    buffers.push_back(
        camera.dataStream->AllocAndAnnounceBuffer(camera.dataStream->PayloadSize(), nullptr));
    camera.dataStream->QueueBuffer(buffers.back());
  }
  camera.dataStream->StartAcquisition();
  camera.Trigger();
  EXPECT_EQ(camera.dataStream->WaitForFinishedBuffer(3000), buffers.front());
  camera.Stop();
  camera.dataStream->Flush(OXEL_DATA_STREAM_FLUSH_MODE_DISCARD_ALL);
  camera.dataStream->RevokeBuffer(buffers.front());
  const auto announced = camera.dataStream->AnnouncedBuffers();
  EXPECT_EQ(announced.size(), buffers.size() - 1);
  EXPECT_EQ(std::find(announced.begin(), announced.end(), buffers.front()), announced.end());
}

}  // namespace
}  // namespace oxel::core
