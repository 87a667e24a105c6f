#include "oxel/core/buffer.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core {
namespace {

template <typename T>
T BufferValue(OXEL_BUFFER handle, OXEL_RETURN_CODE (*OxelFunctions::*member)(OXEL_BUFFER, T*)) {
  const auto call = Api().*member;
  return QueryValue<T>([&](T* out) { return call(handle, out); });
}

}  // namespace

Buffer::Buffer(CreationKey, OXEL_BUFFER handle, std::weak_ptr<DataStream> parent)
    : handle_(handle), parent_(std::move(parent)) {}

void* Buffer::BasePtr() {
  return BufferValue(handle_, &OxelFunctions::OXEL_Buffer_GetBasePtr);
}
size_t Buffer::Size() {
  return BufferValue(handle_, &OxelFunctions::OXEL_Buffer_GetSize);
}
void* Buffer::UserPtr() {
  return BufferValue(handle_, &OxelFunctions::OXEL_Buffer_GetUserPtr);
}
size_t Buffer::Width() {
  return BufferValue(handle_, &OxelFunctions::OXEL_Buffer_GetWidth);
}
size_t Buffer::Height() {
  return BufferValue(handle_, &OxelFunctions::OXEL_Buffer_GetHeight);
}
size_t Buffer::XOffset() {
  return BufferValue(handle_, &OxelFunctions::OXEL_Buffer_GetXOffset);
}
size_t Buffer::YOffset() {
  return BufferValue(handle_, &OxelFunctions::OXEL_Buffer_GetYOffset);
}

uint64_t Buffer::PixelFormat() {
  return BufferValue(handle_, &OxelFunctions::OXEL_Buffer_GetPixelFormat);
}

uint64_t Buffer::FrameID() {
  return BufferValue(handle_, &OxelFunctions::OXEL_Buffer_GetFrameID);
}

uint64_t Buffer::TimestampNs() {
  return BufferValue(handle_, &OxelFunctions::OXEL_Buffer_GetTimestampNs);
}

bool Buffer::IsIncomplete() {
  return BufferValue(handle_, &OxelFunctions::OXEL_Buffer_GetIsIncomplete) != 0;
}

OXEL_MODULE Buffer::ModuleHandle() const {
  return QueryValue<OXEL_MODULE>(
      [this](OXEL_MODULE* out) { return Api().OXEL_Buffer_ToModule(handle_, out); });
}

}  // namespace oxel::core
