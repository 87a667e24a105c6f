// Data streams and buffers: the exported functions every Oxel library shares,
// over the objects of the one being built (api/exported.h of that library).
#include "api/exported.h"

using namespace oxellib;

namespace {

Ref<DataStream> FindStream(OXEL_DATA_STREAM stream) {
  return Find<DataStream>(stream, Kind::DataStream, "dataStream");
}

template <class T, class Query>
OXEL_RETURN_CODE StreamValue(const char* function, OXEL_DATA_STREAM stream, T* out,
                             const char* name, Query query) {
  return RunApiCall(function, [&] {
    auto opened = FindStream(stream);
    T& result = Out(out, name);
    result = static_cast<T>(query(*opened));
  });
}

std::shared_ptr<PoolBuffer> FindBuffer(OXEL_BUFFER buffer) {
  Ref<PoolBuffer> found = Find<PoolBuffer>(buffer, Kind::Buffer, "buffer");
  return std::static_pointer_cast<PoolBuffer>(found.keepAlive);
}

// Values the last frame left in the buffer, read under the stream owner's mutex.
template <class T, class Query>
OXEL_RETURN_CODE BufferValue(const char* function, OXEL_BUFFER buffer, T* out, const char* name,
                             Query query, bool needsFrame) {
  return RunApiCall(function, [&] {
    std::shared_ptr<PoolBuffer> found = FindBuffer(buffer);
    T& result = Out(out, name);
    std::lock_guard lock(found->Guard());
    if (needsFrame && !found->hasFrame) {
      Fail(OXEL_RETURN_CODE_NOT_AVAILABLE,
           std::string(function) + ": buffer " + HandleText(buffer) + " holds no frame yet");
    }
    result = static_cast<T>(query(*found));
  });
}

}  // namespace

OXEL_RETURN_CODE OXEL_DataStream_GetID(OXEL_DATA_STREAM dataStream, char* id, size_t* idSize) {
  return RunApiCall(__func__, [&] {
    FindStream(dataStream);
    WriteText("Stream0", id, idSize);
  });
}

OXEL_RETURN_CODE OXEL_DataStream_ToModule(OXEL_DATA_STREAM dataStream, OXEL_MODULE* module) {
  return RunApiCall(__func__, [&] {
    FindStream(dataStream);
    Out(module, "module") = reinterpret_cast<OXEL_MODULE>(dataStream);
  });
}

OXEL_RETURN_CODE OXEL_DataStream_GetNumBuffersAnnouncedMinRequired(OXEL_DATA_STREAM dataStream,
                                                                   size_t* count) {
  return StreamValue(__func__, dataStream, count, "count",
                     [](DataStream& s) { return s.MinBufferCount(); });
}

OXEL_RETURN_CODE OXEL_DataStream_GetNumBuffersAnnounced(OXEL_DATA_STREAM dataStream,
                                                        size_t* count) {
  return StreamValue(__func__, dataStream, count, "count",
                     [](DataStream& s) { return s.AnnouncedCount(); });
}

OXEL_RETURN_CODE OXEL_DataStream_GetNumBuffersQueued(OXEL_DATA_STREAM dataStream, size_t* count) {
  return StreamValue(__func__, dataStream, count, "count",
                     [](DataStream& s) { return s.QueuedCount(); });
}

OXEL_RETURN_CODE OXEL_DataStream_GetNumBuffersAwaitDelivery(OXEL_DATA_STREAM dataStream,
                                                            size_t* count) {
  return StreamValue(__func__, dataStream, count, "count",
                     [](DataStream& s) { return s.AwaitingDeliveryCount(); });
}

OXEL_RETURN_CODE OXEL_DataStream_GetNumBuffersDelivered(OXEL_DATA_STREAM dataStream,
                                                        uint64_t* count) {
  return StreamValue(__func__, dataStream, count, "count",
                     [](DataStream& s) { return s.DeliveredCount(); });
}

OXEL_RETURN_CODE OXEL_DataStream_GetNumUnderruns(OXEL_DATA_STREAM dataStream, uint64_t* count) {
  return StreamValue(__func__, dataStream, count, "count",
                     [](DataStream& s) { return s.UnderrunCount(); });
}

OXEL_RETURN_CODE OXEL_DataStream_GetDefinesPayloadSize(OXEL_DATA_STREAM dataStream,
                                                       OXEL_BOOL8* definesPayloadSize) {
  return StreamValue(__func__, dataStream, definesPayloadSize, "definesPayloadSize",
                     [](DataStream& s) { return s.DefinesPayloadSize() ? 1 : 0; });
}

OXEL_RETURN_CODE OXEL_DataStream_GetPayloadSize(OXEL_DATA_STREAM dataStream, size_t* payloadSize) {
  return StreamValue(__func__, dataStream, payloadSize, "payloadSize",
                     [](DataStream& s) { return s.PayloadSize(); });
}

OXEL_RETURN_CODE OXEL_DataStream_GetIsGrabbing(OXEL_DATA_STREAM dataStream,
                                               OXEL_BOOL8* isGrabbing) {
  return StreamValue(__func__, dataStream, isGrabbing, "isGrabbing",
                     [](DataStream& s) { return s.Grabbing() ? 1 : 0; });
}

OXEL_RETURN_CODE OXEL_DataStream_AllocAndAnnounceBuffer(OXEL_DATA_STREAM dataStream,
                                                        size_t bufferSize, void* userPtr,
                                                        OXEL_BUFFER* buffer) {
  return RunApiCall(__func__, [&] {
    auto opened = FindStream(dataStream);
    OXEL_BUFFER& result = Out(buffer, "buffer");
    result = reinterpret_cast<OXEL_BUFFER>(opened->AllocAndAnnounce(bufferSize, userPtr).get());
  });
}

// `userPtr` may be null when the caller does not want it back.
OXEL_RETURN_CODE OXEL_DataStream_RevokeBuffer(OXEL_DATA_STREAM dataStream, OXEL_BUFFER buffer,
                                              void** userPtr) {
  return RunApiCall(__func__, [&] {
    auto opened = FindStream(dataStream);
    void* revoked = opened->Revoke(FindBuffer(buffer));
    if (userPtr != nullptr) *userPtr = revoked;
  });
}

OXEL_RETURN_CODE OXEL_DataStream_QueueBuffer(OXEL_DATA_STREAM dataStream, OXEL_BUFFER buffer) {
  return RunApiCall(__func__, [&] { FindStream(dataStream)->Queue(FindBuffer(buffer)); });
}

OXEL_RETURN_CODE OXEL_DataStream_WaitForFinishedBuffer(OXEL_DATA_STREAM dataStream,
                                                       uint64_t timeoutMs, OXEL_BUFFER* buffer) {
  return RunApiCall(__func__, [&] {
    auto opened = FindStream(dataStream);
    OXEL_BUFFER& result = Out(buffer, "buffer");
    result = reinterpret_cast<OXEL_BUFFER>(opened->Wait(timeoutMs).get());
  });
}

OXEL_RETURN_CODE OXEL_DataStream_KillWait(OXEL_DATA_STREAM dataStream) {
  return RunApiCall(__func__, [&] { FindStream(dataStream)->KillWait(); });
}

OXEL_RETURN_CODE OXEL_DataStream_StartAcquisition(OXEL_DATA_STREAM dataStream,
                                                  OXEL_ACQUISITION_START_MODE startMode,
                                                  uint64_t numToAcquire) {
  return RunApiCall(__func__, [&] { FindStream(dataStream)->Start(startMode, numToAcquire); });
}

OXEL_RETURN_CODE OXEL_DataStream_StopAcquisition(OXEL_DATA_STREAM dataStream,
                                                 OXEL_ACQUISITION_STOP_MODE stopMode) {
  return RunApiCall(__func__, [&] { FindStream(dataStream)->Stop(stopMode); });
}

OXEL_RETURN_CODE OXEL_DataStream_Flush(OXEL_DATA_STREAM dataStream,
                                       OXEL_DATA_STREAM_FLUSH_MODE flushMode) {
  return RunApiCall(__func__, [&] { FindStream(dataStream)->Flush(flushMode); });
}

OXEL_RETURN_CODE OXEL_DataStream_Close(OXEL_DATA_STREAM dataStream) {
  return RunApiCall(__func__, [&] {
    auto opened = FindStream(dataStream);
    auto lock = LockStructure();
    opened->CloseLocked();
  });
}

OXEL_RETURN_CODE OXEL_Buffer_ToModule(OXEL_BUFFER buffer, OXEL_MODULE* module) {
  return RunApiCall(__func__, [&] {
    FindBuffer(buffer);
    Out(module, "module") = reinterpret_cast<OXEL_MODULE>(buffer);
  });
}

OXEL_RETURN_CODE OXEL_Buffer_GetBasePtr(OXEL_BUFFER buffer, void** basePtr) {
  return BufferValue(
      __func__, buffer, basePtr, "basePtr",
      [](PoolBuffer& b) { return static_cast<void*>(b.Base()); }, false);
}

OXEL_RETURN_CODE OXEL_Buffer_GetSize(OXEL_BUFFER buffer, size_t* size) {
  return BufferValue(
      __func__, buffer, size, "size", [](PoolBuffer& b) { return b.Size(); }, false);
}

OXEL_RETURN_CODE OXEL_Buffer_GetUserPtr(OXEL_BUFFER buffer, void** userPtr) {
  return BufferValue(
      __func__, buffer, userPtr, "userPtr", [](PoolBuffer& b) { return b.UserPtr(); }, false);
}

OXEL_RETURN_CODE OXEL_Buffer_GetWidth(OXEL_BUFFER buffer, size_t* width) {
  return BufferValue(
      __func__, buffer, width, "width", [](PoolBuffer& b) { return b.width; }, true);
}

OXEL_RETURN_CODE OXEL_Buffer_GetHeight(OXEL_BUFFER buffer, size_t* height) {
  return BufferValue(
      __func__, buffer, height, "height", [](PoolBuffer& b) { return b.height; }, true);
}

OXEL_RETURN_CODE OXEL_Buffer_GetXOffset(OXEL_BUFFER buffer, size_t* xOffset) {
  return BufferValue(
      __func__, buffer, xOffset, "xOffset", [](PoolBuffer& b) { return b.xOffset; }, true);
}

OXEL_RETURN_CODE OXEL_Buffer_GetYOffset(OXEL_BUFFER buffer, size_t* yOffset) {
  return BufferValue(
      __func__, buffer, yOffset, "yOffset", [](PoolBuffer& b) { return b.yOffset; }, true);
}

OXEL_RETURN_CODE OXEL_Buffer_GetPixelFormat(OXEL_BUFFER buffer, uint64_t* pixelFormat) {
  return BufferValue(
      __func__, buffer, pixelFormat, "pixelFormat", [](PoolBuffer& b) { return b.pixelFormat; },
      true);
}

OXEL_RETURN_CODE OXEL_Buffer_GetFrameID(OXEL_BUFFER buffer, uint64_t* frameId) {
  return BufferValue(
      __func__, buffer, frameId, "frameId", [](PoolBuffer& b) { return b.frameId; }, true);
}

OXEL_RETURN_CODE OXEL_Buffer_GetTimestampNs(OXEL_BUFFER buffer, uint64_t* timestampNs) {
  return BufferValue(
      __func__, buffer, timestampNs, "timestampNs", [](PoolBuffer& b) { return b.timestampNs; },
      true);
}

OXEL_RETURN_CODE OXEL_Buffer_GetIsIncomplete(OXEL_BUFFER buffer, OXEL_BOOL8* isIncomplete) {
  return BufferValue(
      __func__, buffer, isIncomplete, "isIncomplete",
      [](PoolBuffer& b) { return b.incomplete ? 1 : 0; }, false);
}
