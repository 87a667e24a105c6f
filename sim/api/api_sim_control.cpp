// The simulator's control functions: what a test or a demonstration does to
// the simulated hardware. They work whether or not the library is started.
#include "api/exported.h"

using namespace oxelsim;

namespace {

std::string DeviceId(const char* deviceId) {
  if (deviceId == nullptr) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT, std::string(CurrentFunction()) + ": null device ID");
  }
  return deviceId;
}

template <class Action>
OXEL_RETURN_CODE OnCameras(const char* function, const char* deviceId, Action action) {
  return RunApiCall(function, [&] {
    for (const auto& camera : Simulator::Instance().hardware.Cameras(DeviceId(deviceId))) {
      action(*camera);
    }
  });
}

}  // namespace

OXEL_RETURN_CODE OxelSim_ResetAll(void) {
  return RunApiCall(__func__, [] { Simulator::Instance().hardware.ResetAll(); });
}

OXEL_RETURN_CODE OxelSim_UnplugCamera(const char* deviceId) {
  return OnCameras(__func__, deviceId, [](SimCamera& camera) { camera.Unplug(); });
}

OXEL_RETURN_CODE OxelSim_ReplugCamera(const char* deviceId) {
  return OnCameras(__func__, deviceId, [](SimCamera& camera) { camera.Replug(); });
}

OXEL_RETURN_CODE OxelSim_PulseLine0(const char* deviceId) {
  return OnCameras(__func__, deviceId, [](SimCamera& camera) { camera.PulseLine0(); });
}

OXEL_RETURN_CODE OxelSim_DropFrames(const char* deviceId, int32_t count) {
  return OnCameras(__func__, deviceId, [&](SimCamera& camera) { camera.DropFrames(count); });
}

OXEL_RETURN_CODE OxelSim_DelayFrames(const char* deviceId, int32_t count, uint32_t delayMs) {
  return OnCameras(__func__, deviceId,
                   [&](SimCamera& camera) { camera.DelayFrames(count, delayMs); });
}

OXEL_RETURN_CODE OxelSim_IncompleteFrames(const char* deviceId, int32_t count) {
  return OnCameras(__func__, deviceId, [&](SimCamera& camera) { camera.IncompleteFrames(count); });
}

OXEL_RETURN_CODE OxelSim_FailStreamStarts(const char* deviceId, int32_t count,
                                          OXEL_RETURN_CODE code) {
  return OnCameras(__func__, deviceId,
                   [&](SimCamera& camera) { camera.FailStreamStarts(count, code); });
}

OXEL_RETURN_CODE OxelSim_GetIgnoredTriggerCount(const char* deviceId, uint64_t* count) {
  return RunApiCall(__func__, [&] {
    uint64_t& result = Out(count, "count");
    const auto cameras = Simulator::Instance().hardware.Cameras(DeviceId(deviceId));
    result = cameras.front()->IgnoredTriggers();
  });
}

OXEL_RETURN_CODE OxelSim_GetIncompleteFrameCount(const char* deviceId, uint64_t* count) {
  return RunApiCall(__func__, [&] {
    uint64_t& result = Out(count, "count");
    const auto cameras = Simulator::Instance().hardware.Cameras(DeviceId(deviceId));
    result = cameras.front()->IncompleteFramesSent();
  });
}

OXEL_RETURN_CODE OxelSim_FailFeatureWrites(const char* deviceId, const char* featureName,
                                           int32_t count, OXEL_RETURN_CODE code) {
  return RunApiCall(__func__, [&] {
    if (featureName == nullptr) {
      Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT, std::string(__func__) + ": null feature name");
    }
    for (const auto& camera : Simulator::Instance().hardware.Cameras(DeviceId(deviceId))) {
      camera->FailWrites(featureName, count, code);
    }
  });
}

OXEL_RETURN_CODE OxelSim_SetOpenedElsewhere(const char* deviceId, OXEL_BOOL8 openedElsewhere) {
  return OnCameras(__func__, deviceId,
                   [&](SimCamera& camera) { camera.SetOpenedElsewhere(openedElsewhere != 0); });
}

OXEL_RETURN_CODE OxelSim_GetLastFrameId(const char* deviceId, uint64_t* frameId) {
  return RunApiCall(__func__, [&] {
    uint64_t& result = Out(frameId, "frameId");
    const auto cameras = Simulator::Instance().hardware.Cameras(DeviceId(deviceId));
    const std::optional<uint64_t> last = cameras.front()->LastFrameId();
    if (!last) {
      Fail(OXEL_RETURN_CODE_NOT_AVAILABLE,
           std::string(__func__) + ": camera '" + cameras.front()->Id() +
               "' has delivered no frame since it was loaded or reset");
    }
    result = *last;
  });
}

OXEL_RETURN_CODE OxelSim_GetFeatureWriteCount(const char* deviceId, const char* featureName,
                                              uint64_t* count) {
  return RunApiCall(__func__, [&] {
    uint64_t& result = Out(count, "count");
    if (featureName == nullptr) {
      Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT, std::string(__func__) + ": null feature name");
    }
    const auto cameras = Simulator::Instance().hardware.Cameras(DeviceId(deviceId));
    result = cameras.front()->WriteCount(featureName);
  });
}
