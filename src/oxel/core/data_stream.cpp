#include "oxel/core/data_stream.h"

#include <algorithm>

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core {
namespace {

void RequireBuffer(const std::shared_ptr<Buffer>& buffer) {
  if (!buffer) {
    throw InvalidArgumentException("A data stream operation was given no buffer");
  }
}

}  // namespace

DataStream::DataStream(CreationKey, OXEL_DATA_STREAM handle, std::weak_ptr<Device> parent)
    : handle_(handle), parent_(std::move(parent)) {}

DataStream::~DataStream() {
  // Each step is tried on its own: a stream that cannot be stopped must
  // still give its buffers back, and the handle is closed in any case.
  try {
    if (IsGrabbing()) {
      StopAcquisition(OXEL_ACQUISITION_STOP_MODE_DEFAULT);
    }
  } catch (const Exception&) {
  }
  try {
    Flush(OXEL_DATA_STREAM_FLUSH_MODE_DISCARD_ALL);
  } catch (const Exception&) {
  }
  for (const auto& buffer : AnnouncedBuffers()) {
    try {
      RevokeBuffer(buffer);
    } catch (const Exception&) {
    }
  }
  CallCheckedInDestructor([this] { return Api().OXEL_DataStream_Close(handle_); });
}

std::string DataStream::ID() const {
  return QueryText([this](char* text, size_t* size) {
    return Api().OXEL_DataStream_GetID(handle_, text, size);
  });
}

size_t DataStream::NumBuffersAnnouncedMinRequired() {
  return QueryValue<size_t>([this](size_t* out) {
    return Api().OXEL_DataStream_GetNumBuffersAnnouncedMinRequired(handle_, out);
  });
}

size_t DataStream::NumBuffersAnnounced() {
  return QueryValue<size_t>(
      [this](size_t* out) { return Api().OXEL_DataStream_GetNumBuffersAnnounced(handle_, out); });
}

size_t DataStream::NumBuffersQueued() {
  return QueryValue<size_t>(
      [this](size_t* out) { return Api().OXEL_DataStream_GetNumBuffersQueued(handle_, out); });
}

size_t DataStream::NumBuffersAwaitDelivery() {
  return QueryValue<size_t>([this](size_t* out) {
    return Api().OXEL_DataStream_GetNumBuffersAwaitDelivery(handle_, out);
  });
}

uint64_t DataStream::NumBuffersDelivered() {
  return QueryValue<uint64_t>(
      [this](uint64_t* out) { return Api().OXEL_DataStream_GetNumBuffersDelivered(handle_, out); });
}

uint64_t DataStream::NumUnderruns() {
  return QueryValue<uint64_t>(
      [this](uint64_t* out) { return Api().OXEL_DataStream_GetNumUnderruns(handle_, out); });
}

bool DataStream::DefinesPayloadSize() {
  return QueryValue<OXEL_BOOL8>([this](OXEL_BOOL8* out) {
           return Api().OXEL_DataStream_GetDefinesPayloadSize(handle_, out);
         }) != 0;
}

size_t DataStream::PayloadSize() {
  return QueryValue<size_t>(
      [this](size_t* out) { return Api().OXEL_DataStream_GetPayloadSize(handle_, out); });
}

bool DataStream::IsGrabbing() {
  return QueryValue<OXEL_BOOL8>([this](OXEL_BOOL8* out) {
           return Api().OXEL_DataStream_GetIsGrabbing(handle_, out);
         }) != 0;
}

std::shared_ptr<Buffer> DataStream::AllocAndAnnounceBuffer(size_t size, void* userPtr) {
  const auto handle = QueryValue<OXEL_BUFFER>([&](OXEL_BUFFER* out) {
    return Api().OXEL_DataStream_AllocAndAnnounceBuffer(handle_, size, userPtr, out);
  });
  auto buffer = ClassCreator<Buffer>::Create(handle, weak_from_this());
  std::lock_guard lock(bufferMutex_);
  announced_.push_back(buffer);
  byHandle_[handle] = buffer;
  return buffer;
}

void DataStream::QueueBuffer(const std::shared_ptr<Buffer>& buffer) {
  RequireBuffer(buffer);
  CallChecked([&] { return Api().OXEL_DataStream_QueueBuffer(handle_, buffer->Handle()); });
}

std::shared_ptr<Buffer> DataStream::WaitForFinishedBuffer(uint64_t timeoutMs) {
  const auto handle = QueryValue<OXEL_BUFFER>([&](OXEL_BUFFER* out) {
    return Api().OXEL_DataStream_WaitForFinishedBuffer(handle_, timeoutMs, out);
  });
  std::lock_guard lock(bufferMutex_);
  return byHandle_.at(handle);
}

void DataStream::KillWait() {
  CallChecked([this] { return Api().OXEL_DataStream_KillWait(handle_); });
}

void DataStream::StartAcquisition(OXEL_ACQUISITION_START_MODE mode, uint64_t count) {
  CallChecked([&] { return Api().OXEL_DataStream_StartAcquisition(handle_, mode, count); });
}

void DataStream::StopAcquisition(OXEL_ACQUISITION_STOP_MODE mode) {
  CallChecked([&] { return Api().OXEL_DataStream_StopAcquisition(handle_, mode); });
}

void DataStream::Flush(OXEL_DATA_STREAM_FLUSH_MODE mode) {
  CallChecked([&] { return Api().OXEL_DataStream_Flush(handle_, mode); });
}

std::vector<std::shared_ptr<Buffer>> DataStream::AnnouncedBuffers() {
  std::lock_guard lock(bufferMutex_);
  return announced_;
}

void DataStream::RevokeBuffer(const std::shared_ptr<Buffer>& buffer) {
  RequireBuffer(buffer);
  void* userPtr = nullptr;
  CallChecked(
      [&] { return Api().OXEL_DataStream_RevokeBuffer(handle_, buffer->Handle(), &userPtr); });
  std::lock_guard lock(bufferMutex_);
  std::erase(announced_, buffer);
  byHandle_.erase(buffer->Handle());
}

OXEL_MODULE DataStream::ModuleHandle() const {
  return QueryValue<OXEL_MODULE>(
      [this](OXEL_MODULE* out) { return Api().OXEL_DataStream_ToModule(handle_, out); });
}

}  // namespace oxel::core
