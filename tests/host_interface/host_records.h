// Host records as a host lays them out, after a setup that found cameras:
// the record with its magic, one image whose camera id maps to a camera
// number, and slots marked attached with or without a camera object.
#pragma once

#include <cstdint>
#include <cstring>
#include <memory>

#include "camera/oxel_camera.h"
#include "host_interface/acquisition_table.h"
#include "host_interface/slot_camera.h"
#include "lifecycle/setup.h"
#include "tavro/tavro_host.h"

namespace tavro::testing {

struct HostRecords {
  std::unique_ptr<SystemRecord> system = std::make_unique<SystemRecord>();
  CameraInfo info{};
  CamImage image{};

  HostRecords() {
    lifecycle::ResetCameraRecords(*system);
    lifecycle::ResetAcquisitionTable(system.get());
    system->lMagic = TAVRO_SYSTEM_MAGIC;
    image.lMagic = TAVRO_IMAGE_MAGIC;
    image.ptCamera = &info;
  }

  ~HostRecords() {
    for (auto& slot : system->tSlot) host_interface::TakeCamera(slot);
    lifecycle::FreeCameraSelection(*system);
    lifecycle::ResetAcquisitionTable(nullptr);
    for (auto& entry : host_interface::tTavroCamAcq) entry.hEvent.reset();
  }

  // Camera `number` attached as setup leaves it, reached from host id `id`.
  void Attach(int32_t number, const char* key, bool withCamera = false, int16_t id = -1) {
    std::strcpy(system->tCam[number].szCamKey, key);
    system->tCam[number].yEnabled = 1;
    system->tSlot[number].yAttached = 1;
    system->tSlot[number].yReapply = 0;
    system->aiCamIndex[number] = number;
    if (id >= 0) {
      system->aiCamIndex[id] = number;
      info.iCamId = id;
    }
    if (withCamera) {
      host_interface::AdoptCamera(system->tSlot[number], std::make_unique<camera::OxelCamera>());
    }
  }
};

}  // namespace tavro::testing
