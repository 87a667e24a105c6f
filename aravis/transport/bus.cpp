#include "transport/bus.h"

#include <arv.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <mutex>

#include "transport/device.h"

namespace oxelarv {

namespace {

std::string Text(const char* text) {
  return text != nullptr ? text : "";
}

std::string TlTypeOf(const std::string& protocol, const std::string& id, const Settings& settings) {
  // The plug-in lists USB3 Vision cameras; the fake camera stands in for one.
  if (protocol == "USB3Vision" || protocol == "Fake" || settings.asU3V.count(id) != 0) {
    return "U3V";
  }
  if (protocol == "GigEVision") return "GEV";
  return protocol;
}

}  // namespace

void FailAlreadyOpen(const std::string& what) {
  Fail(OXEL_RETURN_CODE_BAD_ACCESS,
       std::string(CurrentFunction()) + ": " + what + " is open already; close it first");
}

std::vector<DeviceInfo> CurrentDevices() {
  static std::mutex mutex;
  static std::vector<DeviceInfo> devices;
  static std::chrono::steady_clock::time_point scanned;
  static bool everScanned = false;
  std::lock_guard lock(mutex);
  const auto now = std::chrono::steady_clock::now();
  if (everScanned && now - scanned < std::chrono::milliseconds(200)) return devices;
  const Settings settings = Library::Instance().CurrentSettings();
  arv_update_device_list();
  devices.clear();
  for (unsigned i = 0; i < arv_get_n_devices(); ++i) {
    DeviceInfo info;
    info.id = Text(arv_get_device_id(i));
    info.vendor = Text(arv_get_device_vendor(i));
    info.model = Text(arv_get_device_model(i));
    info.serial = Text(arv_get_device_serial_nbr(i));
    info.protocol = Text(arv_get_device_protocol(i));
    info.address = Text(arv_get_device_address(i));
    info.tlType = TlTypeOf(info.protocol, info.id, settings);
    if (!info.id.empty()) devices.push_back(std::move(info));
  }
  scanned = now;
  everScanned = true;
  return devices;
}

std::shared_ptr<Device> DeviceDescriptor::Open(OXEL_DEVICE_ACCESS_TYPE access) {
  std::lock_guard lock(Library::Instance().mutex);
  if (opened_) {
    Fail(OXEL_RETURN_CODE_BAD_ACCESS, std::string(CurrentFunction()) + ": camera '" + info_.id +
                                          "' is open already through this descriptor");
  }
  if (!present_) {
    Fail(OXEL_RETURN_CODE_NOT_AVAILABLE,
         std::string(CurrentFunction()) + ": camera '" + info_.id +
             "' of this descriptor is gone; update the interface's devices for a new one");
  }
  opened_ = Device::Open(info_, access, weak_from_this());
  return opened_;
}

void DeviceDescriptor::CloseLocked() {
  // A local reference: closing tells this descriptor, which drops its own.
  if (auto opened = opened_) opened->CloseLocked();
  Library::Instance().handles.Remove(this);
}

InterfaceDescriptor::InterfaceDescriptor(std::string id) {
  description_.id = id;
  description_.displayName = id == "Fake"         ? "Aravis fake camera interface"
                             : id == "USB3Vision" ? "USB3 Vision"
                             : id == "GigEVision" ? "GigE Vision"
                                                  : id;
}

std::shared_ptr<Interface> InterfaceDescriptor::Open() {
  Library& library = Library::Instance();
  std::lock_guard lock(library.mutex);
  if (opened_) FailAlreadyOpen("interface '" + description_.id + "'");
  opened_ = std::make_shared<Interface>(description_, weak_from_this());
  library.handles.Add(opened_.get(), Kind::Interface, opened_, opened_.get(),
                      static_cast<Module*>(opened_.get()));
  return opened_;
}

void InterfaceDescriptor::CloseLocked() {
  if (auto opened = opened_) opened->CloseLocked();
  Library::Instance().handles.Remove(this);
}

void Interface::UpdateDevices() {
  const std::vector<DeviceInfo> devices = CurrentDevices();
  std::vector<std::string> lostKeys;
  std::vector<std::shared_ptr<DeviceDescriptor>> foundDescriptors;
  {
    Library& library = Library::Instance();
    std::lock_guard lock(library.mutex);
    if (closed_) return;
    auto here = [&](const DeviceInfo& info) { return info.protocol == description_.id; };
    for (auto it = present_.begin(); it != present_.end();) {
      const bool seen = std::any_of(devices.begin(), devices.end(), [&](const DeviceInfo& info) {
        return here(info) && info.id == it->first;
      });
      if (seen) {
        ++it;
        continue;
      }
      it->second->SetGone();
      lostKeys.push_back(it->first);
      it = present_.erase(it);
    }
    for (const DeviceInfo& info : devices) {
      if (!here(info) || present_.count(info.id) != 0) continue;
      auto descriptor = std::make_shared<DeviceDescriptor>(info);
      library.handles.Add(descriptor.get(), Kind::DeviceDescriptor, descriptor, descriptor.get());
      descriptors_.push_back(descriptor);
      present_[info.id] = descriptor;
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
  Library::Instance().handles.Remove(this);
  if (auto origin = origin_.lock()) origin->InterfaceClosedLocked();
}

void System::UpdateInterfaces() {
  std::vector<std::shared_ptr<InterfaceDescriptor>> reported;
  {
    Library& library = Library::Instance();
    std::lock_guard lock(library.mutex);
    if (closed_) return;
    const bool fake = library.CurrentSettings().fakeCamera;
    for (unsigned i = 0; i < arv_get_n_interfaces(); ++i) {
      const std::string id = Text(arv_get_interface_id(i));
      if (id.empty() || (id == "Fake" && !fake)) continue;
      const bool known = std::any_of(interfaces_.begin(), interfaces_.end(),
                                     [&](const auto& known) { return known->Id() == id; });
      if (known) continue;
      auto descriptor = std::make_shared<InterfaceDescriptor>(id);
      library.handles.Add(descriptor.get(), Kind::InterfaceDescriptor, descriptor,
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
  Library::Instance().handles.Remove(this);
  if (auto origin = origin_.lock()) origin->SystemClosedLocked();
}

SystemDescriptor::SystemDescriptor()
    : description_{"Aravis", "Aravis " + Library::AravisVersion() + " (GenICam cameras)"} {}

System::System(std::weak_ptr<SystemDescriptor> origin) : origin_(std::move(origin)) {
  if (auto descriptor = origin_.lock()) description_ = descriptor->Description();
}

std::shared_ptr<System> SystemDescriptor::Open() {
  Library& library = Library::Instance();
  std::lock_guard lock(library.mutex);
  if (opened_) FailAlreadyOpen("system '" + description_.id + "'");
  opened_ = std::make_shared<System>(weak_from_this());
  library.handles.Add(opened_.get(), Kind::System, opened_, opened_.get(),
                      static_cast<Module*>(opened_.get()));
  return opened_;
}

void SystemDescriptor::CloseLocked() {
  if (auto opened = opened_) opened->CloseLocked();
  Library::Instance().handles.Remove(this);
}

std::shared_ptr<ProducerLibrary> ProducerLibrary::Open(const std::string& path) {
  std::error_code error;
  const auto given = std::filesystem::canonical(path, error);
  if (error || given.string() != Library::OwnPath()) {
    Fail(OXEL_RETURN_CODE_CTI_LOADING_ERROR,
         std::string(CurrentFunction()) + ": '" + path +
             "' is not a producer of this library (its only producer is '" + Library::OwnPath() +
             "')");
  }
  auto library = std::make_shared<ProducerLibrary>();
  Library& owner = Library::Instance();
  std::lock_guard lock(owner.mutex);
  owner.handles.Add(library.get(), Kind::ProducerLibrary, library, library.get());
  owner.handles.Add(library->system_.get(), Kind::SystemDescriptor, library->system_,
                    library->system_.get());
  owner.producers.push_back(library);
  return library;
}

void ProducerLibrary::Release() {
  Library& owner = Library::Instance();
  std::lock_guard lock(owner.mutex);
  if (released_) return;
  released_ = true;
  system_->CloseLocked();
  owner.handles.Remove(this);
  std::erase_if(owner.producers, [this](const auto& producer) { return producer.get() == this; });
}

}  // namespace oxelarv
