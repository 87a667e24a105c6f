// The simulated camera library's control functions, reached in the copy of
// liboxel.so.1 that the plug-in loaded beside this executable. A real
// camera library has none of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tavro_host {

// The camera library the plug-in loads: TAVRO_OXEL_LIBRARY, else the one
// beside the plug-in.
std::string CameraLibraryPath();

// "simulated cameras", "Aravis 0.8.26" or "camera library": what the loaded
// library is, once the plug-in has loaded it.
std::string CameraLibraryDescription();

// Where the cameras come from, for reports: "producers: PATH" for the
// simulated cameras, "camera library: Aravis 0.8.26, PATH" otherwise.
std::string CameraSource(const std::string& producers);

// The bundled simulated camera with that key ("" for any other camera).
std::string BundledCameraId(const std::string& key);

// A pulse on the simulated camera's line 0; throws std::runtime_error when
// there is no such camera or control.
void PulseLine0(const std::string& deviceId);

// The library has the simulated cameras' frame counter.
bool HasFrameCounter();

// The ID of the last frame the simulated camera sent into a buffer: none
// before its first frame, or when the library or camera has no such control.
std::optional<uint64_t> LastFrameId(const std::string& deviceId);

// How many frames the simulated camera sent torn (marked incomplete) since it
// was opened: none when the library or camera has no such control.
std::optional<uint64_t> IncompleteFrameCount(const std::string& deviceId);

}  // namespace tavro_host
