#include "transport/producer_library.h"

#include "core/simulator.h"
#include "transport/interface.h"
#include "transport/node_map.h"

namespace oxelsim {

void FailAlreadyOpen(const std::string& what) {
  Fail(OXEL_RETURN_CODE_BAD_ACCESS,
       std::string(CurrentFunction()) + ": " + what + " is open already; close it first");
}

std::shared_ptr<System> SystemDescriptor::Open() {
  Simulator& simulator = Simulator::Instance();
  std::lock_guard lock(simulator.mutex);
  if (opened_) FailAlreadyOpen("system '" + Description().id + "'");
  opened_ = std::make_shared<System>(file_, weak_from_this());
  simulator.handles.Add(opened_.get(), Kind::System, opened_, opened_.get(),
                        static_cast<Module*>(opened_.get()));
  return opened_;
}

void SystemDescriptor::CloseLocked() {
  // A local reference: closing tells this descriptor, which drops its own.
  if (auto opened = opened_) opened->CloseLocked();
  Simulator::Instance().handles.Remove(this);
}

System::System(std::shared_ptr<LoadedFile> file, std::weak_ptr<SystemDescriptor> origin)
    : file_(std::move(file)), origin_(std::move(origin)) {
  const SystemDescription& description = file_->description;
  info_ = MakeInfoNodeMap("system '" + description.id + "'",
                          {{"TLID", description.id},
                           {"TLVendorName", description.vendor},
                           {"TLDisplayName", description.displayName},
                           {"TLPath", description.path}});
}

std::shared_ptr<NodeMap> System::NodeMapAt(size_t index) const {
  if (index != 0) {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, std::string(CurrentFunction()) + ": node map index " +
                                            std::to_string(index) + " of a module with 1");
  }
  return info_;
}

void System::UpdateInterfaces() {
  std::vector<std::shared_ptr<InterfaceDescriptor>> reported;
  {
    Simulator& simulator = Simulator::Instance();
    std::lock_guard lock(simulator.mutex);
    if (closed_) return;
    for (size_t i = interfaces_.size(); i < file_->description.interfaces.size(); ++i) {
      auto descriptor = std::make_shared<InterfaceDescriptor>(file_, i);
      simulator.handles.Add(descriptor.get(), Kind::InterfaceDescriptor, descriptor,
                            descriptor.get());
      interfaces_.push_back(descriptor);
      reported.push_back(descriptor);
    }
  }
  ReportLostAndFound<OXEL_INTERFACE_DESCRIPTOR>({}, reported, lost, found);
}

void System::CloseLocked() {
  if (closed_) return;
  closed_ = true;
  for (const auto& descriptor : interfaces_) descriptor->CloseLocked();
  interfaces_.clear();
  info_->Unregister();
  Simulator::Instance().handles.Remove(this);
  if (auto origin = origin_.lock()) origin->SystemClosedLocked();
}

ProducerLibrary::ProducerLibrary(std::string path, std::shared_ptr<LoadedFile> file)
    : path_(std::move(path)),
      file_(std::move(file)),
      system_(std::make_shared<SystemDescriptor>(file_)) {}

std::shared_ptr<ProducerLibrary> ProducerLibrary::Open(const std::string& path) {
  Simulator& simulator = Simulator::Instance();
  std::shared_ptr<LoadedFile> file = simulator.hardware.Load(path);
  std::shared_ptr<ProducerLibrary> library(new ProducerLibrary(path, file));
  std::lock_guard lock(simulator.mutex);
  simulator.handles.Add(library.get(), Kind::ProducerLibrary, library, library.get());
  simulator.handles.Add(library->system_.get(), Kind::SystemDescriptor, library->system_,
                        library->system_.get());
  simulator.producers.push_back(library);
  return library;
}

void ProducerLibrary::Release() {
  Simulator& simulator = Simulator::Instance();
  std::lock_guard lock(simulator.mutex);
  if (released_) return;
  released_ = true;
  system_->CloseLocked();
  simulator.handles.Remove(this);
  std::erase(simulator.producers, shared_from_this());
}

}  // namespace oxelsim
