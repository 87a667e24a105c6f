// The descriptor of one of a device's data streams.
#ifndef OXEL_CORE_DATA_STREAM_DESCRIPTOR_H
#define OXEL_CORE_DATA_STREAM_DESCRIPTOR_H

#include <memory>
#include <string>

#include "oxel/core/class_creator.h"
#include "oxel/core/module_descriptor.h"
#include "oxel/oxel_c.h"

namespace oxel::core {

class DataStream;
class Device;

class DataStreamDescriptor : public ModuleDescriptor {
 public:
  DataStreamDescriptor(CreationKey, OXEL_DATA_STREAM_DESCRIPTOR handle,
                       std::weak_ptr<Device> parent);

  std::shared_ptr<Device> ParentDevice() const { return LockParent(parent_); }
  std::shared_ptr<DataStream> OpenDataStream();
  OXEL_DATA_STREAM_DESCRIPTOR Handle() const { return handle_; }

 private:
  const OXEL_DATA_STREAM_DESCRIPTOR handle_;
  const std::weak_ptr<Device> parent_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_DATA_STREAM_DESCRIPTOR_H
