#include "core/library.h"

#include <arv.h>
#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>

namespace oxelarv {

namespace {

Settings ReadSettings() {
  Settings settings;
  if (const char* fake = std::getenv("OXEL_ARAVIS_FAKE")) {
    settings.fakeCamera = std::string(fake) == "1";
  }
  if (const char* list = std::getenv("OXEL_ARAVIS_AS_U3V")) {
    std::stringstream ids(list);
    std::string id;
    while (std::getline(ids, id, ',')) {
      if (!id.empty()) settings.asU3V.insert(id);
    }
  }
  return settings;
}

}  // namespace

Library& Library::Instance() {
  // Never destroyed: threads of the library's users may still call in while
  // the process exits.
  static Library* library = new Library();
  return *library;
}

void Library::Start() {
  std::lock_guard lock(usersMutex_);
  if (users_++ > 0) return;
  settings_ = ReadSettings();
  if (settings_.fakeCamera) {
    arv_set_fake_camera_genicam_filename(FakeCameraGenicamPath().c_str());
    arv_enable_interface("Fake");
  } else {
    arv_disable_interface("Fake");
  }
}

void Library::Stop() {
  {
    std::lock_guard lock(usersMutex_);
    if (users_ == 0) {
      Fail(OXEL_RETURN_CODE_NOT_INITIALIZED,
           "OXEL_Library_Close: the library is not initialized (more closes than "
           "initializations)");
    }
    if (--users_ > 0) return;
  }
  std::vector<std::shared_ptr<Releasable>> closing;
  {
    std::lock_guard lock(mutex);
    closing.swap(producers);
  }
  for (const auto& producer : closing) producer->Release();
}

bool Library::Started() {
  std::lock_guard lock(usersMutex_);
  return users_ > 0;
}

void Library::RequireStarted() {
  if (!Started()) {
    Fail(OXEL_RETURN_CODE_NOT_INITIALIZED,
         std::string("Oxel library not initialized: call OXEL_Library_Initialize before ") +
             CurrentFunction());
  }
}

Settings Library::CurrentSettings() {
  std::lock_guard lock(usersMutex_);
  return settings_;
}

const std::string& Library::OwnPath() {
  static const std::string path = [] {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&Library::OwnPath), &info) == 0 ||
        info.dli_fname == nullptr) {
      return std::string("liboxel.so.1");
    }
    std::error_code error;
    std::filesystem::path resolved = std::filesystem::canonical(info.dli_fname, error);
    return error ? std::string(info.dli_fname) : resolved.string();
  }();
  return path;
}

std::string Library::FakeCameraGenicamPath() {
  return (std::filesystem::path(OwnPath()).parent_path() / "oxel-aravis-fake-camera.xml").string();
}

std::string Library::AravisVersion() {
  return std::to_string(arv_get_major_version()) + "." + std::to_string(arv_get_minor_version()) +
         "." + std::to_string(arv_get_micro_version());
}

}  // namespace oxelarv
