#include "oxel/core/data_stream_descriptor.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/data_stream.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core {

DataStreamDescriptor::DataStreamDescriptor(CreationKey, OXEL_DATA_STREAM_DESCRIPTOR handle,
                                           std::weak_ptr<Device> parent)
    : ModuleDescriptor(QueryText([handle](char* text, size_t* size) {
        return Api().OXEL_DataStreamDescriptor_GetID(handle, text, size);
      })),
      handle_(handle),
      parent_(std::move(parent)) {}

std::shared_ptr<DataStream> DataStreamDescriptor::OpenDataStream() {
  // The stream's parent is the descriptor's; without it nothing is opened.
  LockParent(parent_);
  const auto handle = QueryValue<OXEL_DATA_STREAM>([this](OXEL_DATA_STREAM* out) {
    return Api().OXEL_DataStreamDescriptor_OpenDataStream(handle_, out);
  });
  return CreateOwner<DataStream>(
      handle, [](OXEL_DATA_STREAM stream) { Api().OXEL_DataStream_Close(stream); }, parent_);
}

}  // namespace oxel::core
