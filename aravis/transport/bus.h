// The producer (this library itself), its system, the Aravis interfaces
// (USB3 Vision, GigE Vision, the fake one) and the devices on them. Each
// device update compares the devices Aravis sees now with those reported
// before: one that is gone is reported lost by its device ID, a new one is
// reported found with a new descriptor handle.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/library.h"
#include "core/module.h"

namespace oxelarv {

class Device;
class Interface;
class System;

// How a system or interface names itself.
struct NamedModule {
  std::string id;
  std::string displayName;
};

// What Aravis tells of a device without opening it.
struct DeviceInfo {
  std::string id;
  std::string vendor;
  std::string model;
  std::string serial;
  std::string protocol;  // "USB3Vision", "GigEVision", "Fake"
  std::string address;
  std::string tlType;  // "U3V", "GEV" or the protocol
};

// The devices Aravis sees now; a discovery within the last 200 ms is reused,
// since each asks every network interface for GigE cameras.
std::vector<DeviceInfo> CurrentDevices();

class DeviceDescriptor : public std::enable_shared_from_this<DeviceDescriptor> {
 public:
  explicit DeviceDescriptor(DeviceInfo info) : info_(std::move(info)) {}
  const DeviceInfo& Info() const { return info_; }
  bool Present() const { return present_; }
  void SetGone() { present_ = false; }
  bool IsOpen() const { return static_cast<bool>(opened_); }
  std::shared_ptr<Device> Open(OXEL_DEVICE_ACCESS_TYPE access);
  void CloseLocked();
  void DeviceClosedLocked() { opened_.reset(); }

 private:
  DeviceInfo info_;
  bool present_ = true;
  std::shared_ptr<Device> opened_;
};

class InterfaceDescriptor : public std::enable_shared_from_this<InterfaceDescriptor> {
 public:
  explicit InterfaceDescriptor(std::string id);
  const std::string& Id() const { return description_.id; }
  const NamedModule& Description() const { return description_; }
  std::shared_ptr<Interface> Open();
  void CloseLocked();
  void InterfaceClosedLocked() { opened_.reset(); }

 private:
  NamedModule description_;
  std::shared_ptr<Interface> opened_;
};

class Interface : public Module, public std::enable_shared_from_this<Interface> {
 public:
  Interface(NamedModule description, std::weak_ptr<InterfaceDescriptor> origin)
      : description_(std::move(description)), origin_(std::move(origin)) {}
  const NamedModule& Description() const { return description_; }
  void UpdateDevices();
  void CloseLocked();

  CallbackList<OXEL_DeviceFoundCallback> found;
  CallbackList<OXEL_DeviceLostCallback> lost;

 private:
  NamedModule description_;
  std::weak_ptr<InterfaceDescriptor> origin_;
  // Every descriptor given out (valid until the interface closes) and, by
  // device ID, those whose device was present at the last update.
  std::vector<std::shared_ptr<DeviceDescriptor>> descriptors_;
  std::map<std::string, std::shared_ptr<DeviceDescriptor>> present_;
  bool closed_ = false;
};

class System : public Module, public std::enable_shared_from_this<System> {
 public:
  explicit System(std::weak_ptr<class SystemDescriptor> origin);
  const NamedModule& Description() const { return description_; }
  void UpdateInterfaces();
  void CloseLocked();

  CallbackList<OXEL_InterfaceFoundCallback> found;
  CallbackList<OXEL_InterfaceLostCallback> lost;

 private:
  NamedModule description_;
  std::weak_ptr<SystemDescriptor> origin_;
  std::vector<std::shared_ptr<InterfaceDescriptor>> interfaces_;
  bool closed_ = false;
};

class SystemDescriptor : public std::enable_shared_from_this<SystemDescriptor> {
 public:
  SystemDescriptor();
  const NamedModule& Description() const { return description_; }
  std::shared_ptr<System> Open();
  void CloseLocked();
  void SystemClosedLocked() { opened_.reset(); }

 private:
  NamedModule description_;
  std::shared_ptr<System> opened_;
};

class ProducerLibrary : public Releasable, public std::enable_shared_from_this<ProducerLibrary> {
 public:
  // Only this library's own file is a producer of it.
  static std::shared_ptr<ProducerLibrary> Open(const std::string& path);
  const std::string& Path() const { return Library::OwnPath(); }
  std::string Vendor() const { return "Aravis " + Library::AravisVersion(); }
  const std::shared_ptr<SystemDescriptor>& SystemHandle() const { return system_; }
  void Release() override;

 private:
  std::shared_ptr<SystemDescriptor> system_ = std::make_shared<SystemDescriptor>();
  bool released_ = false;
};

[[noreturn]] void FailAlreadyOpen(const std::string& what);

}  // namespace oxelarv
