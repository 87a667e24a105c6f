#include "transport/interface.h"

#include "core/simulator.h"
#include "transport/device.h"
#include "transport/node_map.h"
#include "transport/producer_library.h"

namespace oxelsim {

std::shared_ptr<Device> DeviceDescriptor::Open(OXEL_DEVICE_ACCESS_TYPE access) {
  Simulator& simulator = Simulator::Instance();
  std::lock_guard lock(simulator.mutex);
  if (opened_) {
    Fail(OXEL_RETURN_CODE_BAD_ACCESS, std::string(CurrentFunction()) + ": camera '" +
                                          camera_->Id() +
                                          "' is open already through this descriptor");
  }
  if (camera_->Generation() != generation_) {
    Fail(OXEL_RETURN_CODE_NOT_AVAILABLE,
         std::string(CurrentFunction()) + ": camera '" + camera_->Id() +
             "' of this descriptor was unplugged; update the interface's devices for a new one");
  }
  opened_ = Device::Open(*camera_, access, weak_from_this());
  return opened_;
}

void DeviceDescriptor::CloseLocked() {
  // A local reference: closing tells this descriptor, which drops its own.
  if (auto opened = opened_) opened->CloseLocked();
  Simulator::Instance().handles.Remove(this);
}

std::shared_ptr<Interface> InterfaceDescriptor::Open() {
  Simulator& simulator = Simulator::Instance();
  std::lock_guard lock(simulator.mutex);
  if (opened_) FailAlreadyOpen("interface '" + Description().id + "'");
  opened_ = std::make_shared<Interface>(file_, index_, weak_from_this());
  simulator.handles.Add(opened_.get(), Kind::Interface, opened_, opened_.get(),
                        static_cast<Module*>(opened_.get()));
  return opened_;
}

void InterfaceDescriptor::CloseLocked() {
  // A local reference: closing tells this descriptor, which drops its own.
  if (auto opened = opened_) opened->CloseLocked();
  Simulator::Instance().handles.Remove(this);
}

Interface::Interface(std::shared_ptr<LoadedFile> file, size_t index,
                     std::weak_ptr<InterfaceDescriptor> origin)
    : file_(std::move(file)), index_(index), origin_(std::move(origin)) {
  const InterfaceDescription& description = Description();
  info_ = MakeInfoNodeMap(
      "interface '" + description.id + "'",
      {{"InterfaceID", description.id}, {"InterfaceDisplayName", description.displayName}});
}

std::shared_ptr<NodeMap> Interface::NodeMapAt(size_t index) const {
  if (index != 0) {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, std::string(CurrentFunction()) + ": node map index " +
                                            std::to_string(index) + " of a module with 1");
  }
  return info_;
}

void Interface::UpdateDevices() {
  std::vector<std::string> lostKeys;
  std::vector<std::shared_ptr<DeviceDescriptor>> foundDescriptors;
  {
    Simulator& simulator = Simulator::Instance();
    std::lock_guard lock(simulator.mutex);
    if (closed_) return;
    for (auto it = present_.begin(); it != present_.end();) {
      SimCamera& camera = it->second->Camera();
      if (camera.Plugged() && camera.Generation() == it->second->Generation()) {
        ++it;
        continue;
      }
      lostKeys.push_back(it->first);
      it = present_.erase(it);
    }
    for (const auto& camera : file_->cameras[index_]) {
      if (!camera->Plugged() || present_.count(camera->Id()) != 0) continue;
      auto descriptor = std::make_shared<DeviceDescriptor>(camera, camera->Generation());
      simulator.handles.Add(descriptor.get(), Kind::DeviceDescriptor, descriptor, descriptor.get());
      descriptors_.push_back(descriptor);
      present_[camera->Id()] = descriptor;
      foundDescriptors.push_back(descriptor);
    }
  }
  ReportLostAndFound<OXEL_DEVICE_DESCRIPTOR>(lostKeys, foundDescriptors, lost, found);
}

void Interface::CloseLocked() {
  if (closed_) return;
  closed_ = true;
  for (const auto& descriptor : descriptors_) descriptor->CloseLocked();
  descriptors_.clear();
  present_.clear();
  info_->Unregister();
  Simulator::Instance().handles.Remove(this);
  if (auto origin = origin_.lock()) origin->InterfaceClosedLocked();
}

}  // namespace oxelsim
