// The data stream's bookkeeping, its destruction sequence and its lock,
// against a fake stream that records what the layer asks of it.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <vector>

#include "oxel/core/data_stream.h"
#include "oxel/core/device.h"
#include "oxel/core/exceptions.h"
#include "oxel/fake_oxel.h"

namespace oxel::core {
namespace {

using fake_oxel::HandleNumber;
using fake_oxel::MakeHandle;

struct FakeStream {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::string> calls;
  uintptr_t nextBuffer = 100;
  bool grabbing = false;
  OXEL_RETURN_CODE stopResult = OXEL_RETURN_CODE_SUCCESS;
  OXEL_RETURN_CODE flushResult = OXEL_RETURN_CODE_SUCCESS;
  uintptr_t finished = 0;  // buffer the next wait returns (0: time out)
  bool waiting = false;    // a wait is in progress
};
FakeStream* g_stream = nullptr;

OXEL_RETURN_CODE Record(const std::string& call, OXEL_RETURN_CODE result = 0) {
  std::lock_guard lock(g_stream->mutex);
  g_stream->calls.push_back(call);
  if (result != OXEL_RETURN_CODE_SUCCESS) {
    fake_oxel::SetLastError(result, call + " refused");
  }
  return result;
}

class DataStreamTest : public ::testing::Test {
 protected:
  DataStreamTest() {
    g_stream = &state_;
    auto& t = fake_.table;
    t.OXEL_DataStream_GetIsGrabbing = [](OXEL_DATA_STREAM, OXEL_BOOL8* out) -> OXEL_RETURN_CODE {
      *out = g_stream->grabbing ? 1 : 0;
      return Record("IsGrabbing");
    };
    t.OXEL_DataStream_StopAcquisition = [](OXEL_DATA_STREAM, OXEL_ACQUISITION_STOP_MODE mode) {
      return Record("Stop " + std::to_string(mode), g_stream->stopResult);
    };
    t.OXEL_DataStream_Flush = [](OXEL_DATA_STREAM, OXEL_DATA_STREAM_FLUSH_MODE mode) {
      return Record("Flush " + std::to_string(mode), g_stream->flushResult);
    };
    t.OXEL_DataStream_AllocAndAnnounceBuffer = [](OXEL_DATA_STREAM, size_t, void*,
                                                  OXEL_BUFFER* out) -> OXEL_RETURN_CODE {
      std::lock_guard lock(g_stream->mutex);
      *out = MakeHandle<OXEL_BUFFER>(++g_stream->nextBuffer);
      return OXEL_RETURN_CODE_SUCCESS;
    };
    // A queued buffer is filled at once.
    t.OXEL_DataStream_QueueBuffer = [](OXEL_DATA_STREAM, OXEL_BUFFER buffer) -> OXEL_RETURN_CODE {
      std::lock_guard lock(g_stream->mutex);
      g_stream->finished = HandleNumber(buffer);
      g_stream->changed.notify_all();
      return OXEL_RETURN_CODE_SUCCESS;
    };
    t.OXEL_DataStream_RevokeBuffer = [](OXEL_DATA_STREAM, OXEL_BUFFER buffer, void**) {
      return Record("Revoke " + std::to_string(HandleNumber(buffer)));
    };
    t.OXEL_DataStream_Close = [](OXEL_DATA_STREAM) { return Record("Close"); };
    t.OXEL_DataStream_WaitForFinishedBuffer = [](OXEL_DATA_STREAM, uint64_t timeoutMs,
                                                 OXEL_BUFFER* out) -> OXEL_RETURN_CODE {
      std::unique_lock lock(g_stream->mutex);
      g_stream->waiting = true;
      g_stream->changed.notify_all();
      g_stream->changed.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                                 [] { return g_stream->finished != 0; });
      g_stream->waiting = false;
      if (g_stream->finished == 0) {
        fake_oxel::SetLastError(OXEL_RETURN_CODE_TIMEOUT, "no frame within the time-out");
        return OXEL_RETURN_CODE_TIMEOUT;
      }
      *out = MakeHandle<OXEL_BUFFER>(std::exchange(g_stream->finished, 0));
      return OXEL_RETURN_CODE_SUCCESS;
    };
  }

  std::shared_ptr<DataStream> OpenStream() {
    return ClassCreator<DataStream>::Create(MakeHandle<OXEL_DATA_STREAM>(9),
                                            std::weak_ptr<Device>());
  }

  std::vector<std::string> Calls() {
    std::lock_guard lock(state_.mutex);
    return state_.calls;
  }

  FakeStream state_;
  fake_oxel::ScopedTable fake_;
};

TEST_F(DataStreamTest, DestructionStopsFlushesRevokesAndCloses) {
  struct Row {
    bool grabbing;
    OXEL_RETURN_CODE stopResult;
    OXEL_RETURN_CODE flushResult;
    std::vector<std::string> expected;
  };
  const std::vector<Row> rows = {
      {true, 0, 0, {"IsGrabbing", "Stop 0", "Flush 4", "Revoke 101", "Revoke 102", "Close"}},
      {false, 0, 0, {"IsGrabbing", "Flush 4", "Revoke 101", "Revoke 102", "Close"}},
      // Refusals of the family do not stop the rest of the sequence.
      {true,
       OXEL_RETURN_CODE_BAD_ACCESS,
       OXEL_RETURN_CODE_ERROR,
       {"IsGrabbing", "Stop 0", "Flush 4", "Revoke 101", "Revoke 102", "Close"}},
  };
  for (const auto& row : rows) {
    state_.calls.clear();
    state_.nextBuffer = 100;
    state_.grabbing = row.grabbing;
    state_.stopResult = row.stopResult;
    state_.flushResult = row.flushResult;
    auto stream = OpenStream();
    stream->AllocAndAnnounceBuffer(64, nullptr);
    stream->AllocAndAnnounceBuffer(64, nullptr);
    stream.reset();
    EXPECT_EQ(Calls(), row.expected) << "grabbing " << row.grabbing << ", stop " << row.stopResult;
  }
}

// The buffer lock must not be held during the C wait: another thread
// announces and queues a buffer while one thread waits, and that buffer ends
// the wait (a held lock would block the announce until the wait timed out).
TEST_F(DataStreamTest, AnnouncingWhileAnotherThreadWaits) {
  auto stream = OpenStream();
  auto waiter = std::async(std::launch::async, [&] { return stream->WaitForFinishedBuffer(5000); });
  {
    std::unique_lock lock(state_.mutex);
    ASSERT_TRUE(
        state_.changed.wait_for(lock, std::chrono::seconds(5), [&] { return state_.waiting; }));
  }
  const auto announced = stream->AllocAndAnnounceBuffer(64, nullptr);
  stream->QueueBuffer(announced);
  EXPECT_EQ(waiter.get(), announced);
}

}  // namespace
}  // namespace oxel::core
