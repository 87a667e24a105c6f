// Frames through the object layer from the simulated cameras: triggers,
// pixels, time-outs, waits across threads and a stream torn down while
// grabbing.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <future>
#include <thread>

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

bool IsOneOf(const std::shared_ptr<Buffer>& buffer,
             const std::vector<std::shared_ptr<Buffer>>& buffers) {
  return std::find(buffers.begin(), buffers.end(), buffer) != buffers.end();
}

TEST_F(AcquisitionTest, TriggeredFramesArriveInTheAnnouncedBuffers) {
  struct Row {
    const char* camera;
    const char* source;
    bool bgr;
    size_t width, height;
  };
  for (const Row& row :
       {Row{"CAM-C", "Software", true, 64, 48}, Row{"CAM-M", "Line0", false, 32, 16}}) {
    SCOPED_TRACE(row.camera);
    OpenedCamera camera(Descriptor(row.camera));
    EXPECT_EQ(
        camera.Feature<nodes::EnumerationNode>("PixelFormat")->CurrentEntry()->SymbolicValue(),
        row.bgr ? "BGR8" : "Mono8");
    camera.StartTriggered(row.source);
    EXPECT_TRUE(camera.dataStream->IsGrabbing());
    const auto trigger = [&] {
      if (row.bgr) {
        camera.Feature<nodes::CommandNode>("TriggerSoftware")->Execute();
      } else {
        ASSERT_EQ(OxelSim_PulseLine0(row.camera), OXEL_RETURN_CODE_SUCCESS);
      }
    };
    uint64_t previousId = 0;
    // One frame more than buffers: the last one fills the first buffer again,
    // after it was queued anew.
    const size_t frames = camera.buffers.size() + 1;
    for (size_t frame = 0; frame < frames; ++frame) {
      trigger();
      const auto buffer = camera.dataStream->WaitForFinishedBuffer(3000);
      EXPECT_EQ(buffer, camera.buffers[frame % camera.buffers.size()]) << "frame " << frame;
      EXPECT_EQ(buffer->Width(), row.width);
      EXPECT_EQ(buffer->Height(), row.height);
      EXPECT_FALSE(buffer->IsIncomplete());
      EXPECT_EQ(buffer->PixelFormat(),
                row.bgr ? OXEL_SIM_PIXEL_FORMAT_BGR8 : OXEL_SIM_PIXEL_FORMAT_MONO8);
      uint64_t lastId = 0;
      ASSERT_EQ(OxelSim_GetLastFrameId(row.camera, &lastId), OXEL_RETURN_CODE_SUCCESS);
      EXPECT_EQ(buffer->FrameID(), lastId);
      if (frame > 0) {
        EXPECT_EQ(buffer->FrameID(), previousId + 1);
      }
      previousId = buffer->FrameID();
      ExpectPattern(*buffer, row.bgr);
      camera.dataStream->QueueBuffer(buffer);
    }
    camera.Stop();
    EXPECT_FALSE(camera.dataStream->IsGrabbing());
  }
}

TEST_F(AcquisitionTest, AWaitEndsByTimeOutOrByBeingKilled) {
  OpenedCamera camera(Descriptor("CAM-M"));
  camera.StartTriggered("Software");
  EXPECT_THROW(camera.dataStream->WaitForFinishedBuffer(20), TimeoutException);

  auto waiter = std::async(std::launch::async, [&]() -> std::string {
    try {
      camera.dataStream->WaitForFinishedBuffer(10000);
      return "frame";
    } catch (const AbortedException&) {
      return "aborted";
    } catch (const TimeoutException&) {
      return "timed out";
    }
  });
  // A kill that comes before the wait has begun may be lost: repeat it until
  // the waiter is free.
  while (waiter.wait_for(10ms) != std::future_status::ready) {
    camera.dataStream->KillWait();
  }
  EXPECT_EQ(waiter.get(), "aborted");
  camera.Stop();
}

// One thread waits for frames while the other fires triggers and queues the
// buffers it is handed back.
TEST_F(AcquisitionTest, WaitingAndQueueingOnTwoThreads) {
  OpenedCamera camera(Descriptor("CAM-C"));
  camera.StartTriggered("Software");
  constexpr int kFrames = 12;
  std::mutex mutex;
  std::condition_variable handedBack;
  std::deque<std::shared_ptr<Buffer>> done;
  std::thread waiter([&] {
    for (int i = 0; i < kFrames; ++i) {
      auto buffer = camera.dataStream->WaitForFinishedBuffer(3000);
      std::lock_guard lock(mutex);
      done.push_back(std::move(buffer));
      handedBack.notify_one();
    }
  });
  std::vector<uint64_t> frameIds;
  for (int i = 0; i < kFrames; ++i) {
    camera.Feature<nodes::CommandNode>("TriggerSoftware")->Execute();
    std::shared_ptr<Buffer> buffer;
    {
      std::unique_lock lock(mutex);
      ASSERT_TRUE(handedBack.wait_for(lock, 5s, [&] { return !done.empty(); })) << "frame " << i;
      buffer = done.front();
      done.pop_front();
    }
    frameIds.push_back(buffer->FrameID());
    ExpectPattern(*buffer, true);
    camera.dataStream->QueueBuffer(buffer);
  }
  waiter.join();
  for (size_t i = 1; i < frameIds.size(); ++i) {
    EXPECT_EQ(frameIds[i], frameIds[i - 1] + 1);
  }
  camera.Stop();
}

TEST_F(AcquisitionTest, AStreamDestroyedWhileGrabbingGivesEverythingBack) {
  OpenedCamera camera(Descriptor("CAM-C"));
  camera.StartTriggered("Software");
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
  camera.Feature<nodes::CommandNode>("TriggerSoftware")->Execute();
  EXPECT_EQ(camera.dataStream->WaitForFinishedBuffer(3000), buffers.front());
  camera.Stop();
  camera.dataStream->Flush(OXEL_DATA_STREAM_FLUSH_MODE_DISCARD_ALL);
  camera.dataStream->RevokeBuffer(buffers.front());
  EXPECT_EQ(camera.dataStream->AnnouncedBuffers().size(), buffers.size() - 1);
  EXPECT_FALSE(IsOneOf(buffers.front(), camera.dataStream->AnnouncedBuffers()));
}

}  // namespace
}  // namespace oxel::core
