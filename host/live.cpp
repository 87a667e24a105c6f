// tavro-host live: live acquisition on one camera for a number of frames or
// seconds, with a progress line, then the live display saved as a PNG.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "commands.h"
#include "host_image.h"
#include "plugin.h"
#include "records.h"

namespace tavro_host {
namespace {

using Clock = std::chrono::steady_clock;

// How often the display flag is looked at, and how long a camera may stay
// silent before the run is given up.
constexpr auto kPollInterval = std::chrono::milliseconds(1);
constexpr auto kProgressInterval = std::chrono::milliseconds(200);
constexpr auto kSilenceLimit = std::chrono::seconds(10);
constexpr int32_t kDefaultFrames = 100;

struct LiveOptions {
  std::string selection;
  int camera = 0;
  int32_t frames = 0;
  double seconds = 0;
  bool colour = false;
  std::string output = "tavro-live.png";
};

constexpr const char* kUsage =
    "usage: tavro-host live [OPTIONS]\n"
    "  Runs live acquisition on one camera, then saves the live display as an RGB PNG.\n"
    "  --frames N          stop after N new live frames (default 100)\n"
    "  --seconds S         stop after S seconds instead\n"
    "  -o PATH             output file (default tavro-live.png)\n"
    "  --camera N          camera number (default 0)\n"
    "  --select TEXT       use only cameras whose key occurs in TEXT\n"
    "  --colour            colour planes and a colour display\n";

double Seconds(const std::string& text, const std::string& option) {
  size_t used = 0;
  double value = 0;
  try {
    value = std::stod(text, &used);
  } catch (const std::exception&) {
    used = 0;
  }
  if (used != text.size() || !(value > 0) || !std::isfinite(value)) {
    throw UsageError(option + ": not a positive number: " + text);
  }
  return value;
}

LiveOptions ParseOptions(const Arguments& arguments, bool& help) {
  LiveOptions options;
  for (size_t k = 0; k < arguments.size(); ++k) {
    const std::string& name = arguments[k];
    if (name == "--help") {
      help = true;
    } else if (name == "-o") {
      options.output = OptionValue(arguments, k);
    } else if (name == "--camera") {
      options.camera = IntegerValue(OptionValue(arguments, k), name);
    } else if (name == "--select") {
      options.selection = OptionValue(arguments, k);
    } else if (name == "--frames") {
      options.frames = IntegerValue(OptionValue(arguments, k), name);
      if (options.frames <= 0) throw UsageError("--frames: must be above 0");
    } else if (name == "--seconds") {
      options.seconds = Seconds(OptionValue(arguments, k), name);
    } else if (name == "--colour" || name == "--color") {
      options.colour = true;
    } else {
      throw UsageError("live: unknown option " + name);
    }
  }
  if (options.frames > 0 && options.seconds > 0) {
    throw UsageError("live: give --frames or --seconds, not both");
  }
  if (options.frames == 0 && options.seconds == 0) options.frames = kDefaultFrames;
  return options;
}

// A host image with a live display: the 32-bit buffer, as tall as the
// planes' memory since the display starts at their first row, and the view
// and display objects the plug-in reports new frames through.
struct LiveImage : HostImage {
  HostDisplay display{};
  HostView view{};
  LiveBuffer buffer{};
  std::vector<uint32_t> pixels;

  LiveImage(int16_t cameraId, int32_t width, int32_t height, bool colourDisplay)
      : HostImage(cameraId, width, height, colourDisplay) {
    buffer.iStride = width;
    pixels.assign(static_cast<size_t>(width) * (grey.info.iFirstRow + height), 0);
    buffer.plPixels = pixels.data();
    image.ptLiveBuffer = &buffer;
    view.ptDisplay = &display;
    view.yColourDisplay = colourDisplay ? 1 : 0;
    image.qwColourDisplay = colourDisplay ? 1 : 0;
    info.ptHostView = &view;
  }

  // Reads and clears the flag that the plug-in's worker sets.
  bool TakeNewFrame() {
    std::atomic_ref<uint32_t> flag(display.yNewLiveFrame);
    if (flag.load(std::memory_order_acquire) == 0) return false;
    flag.store(0, std::memory_order_relaxed);
    return true;
  }

  uint32_t DisplayPixel(int32_t x, int32_t y) const {
    return pixels[static_cast<size_t>(buffer.iStride) * (grey.info.iFirstRow + y) + x];
  }
};

void WriteDisplayPng(const std::string& path, const LiveImage& live) {
  WritePng(path, live.width(), live.height(), true, [&](int32_t y, uint8_t* row) {
    for (int32_t x = 0; x < live.width(); ++x) {
      const uint32_t pixel = live.DisplayPixel(x, y);
      row[3 * x] = static_cast<uint8_t>(pixel >> 16);
      row[3 * x + 1] = static_cast<uint8_t>(pixel >> 8);
      row[3 * x + 2] = static_cast<uint8_t>(pixel);
    }
  });
}

void CheckResult(int32_t result, uint32_t status, const char* what) {
  if (result == 0) return;
  char text[96];
  std::snprintf(text, sizeof text, "%s failed: result %d, status 0x%x", what, result, status);
  throw std::runtime_error(text);
}

struct Progress {
  int32_t frames = 0;
  double elapsed = 0;
};

void PrintProgress(const LiveOptions& options, const Progress& progress) {
  const double rate = progress.elapsed > 0 ? progress.frames / progress.elapsed : 0;
  char text[128];
  if (options.frames > 0) {
    std::snprintf(text, sizeof text, "\rlive: %d of %d frames, %.1f fps, ", progress.frames,
                  options.frames, rate);
  } else {
    std::snprintf(text, sizeof text, "\rlive: %d frames, %.1f fps, ", progress.frames, rate);
  }
  std::string line = text;
  if (options.seconds > 0) {
    std::snprintf(text, sizeof text, "%.1f s left   ",
                  std::max(0.0, options.seconds - progress.elapsed));
  } else if (rate > 0) {
    std::snprintf(text, sizeof text, "about %.1f s left   ",
                  (options.frames - progress.frames) / rate);
  } else {
    std::snprintf(text, sizeof text, "time left unknown   ");
  }
  std::cerr << line << text << std::flush;
}

bool Done(const LiveOptions& options, const Progress& progress) {
  if (options.frames > 0) return progress.frames >= options.frames;
  return progress.elapsed >= options.seconds;
}

// Counts new live frames until the goal is met; throws when the camera
// falls silent.
Progress Watch(const LiveOptions& options, LiveImage& live) {
  Progress progress;
  const auto start = Clock::now();
  auto lastFrame = start, lastPrint = start;
  while (!Done(options, progress)) {
    std::this_thread::sleep_for(kPollInterval);
    const auto now = Clock::now();
    if (live.TakeNewFrame()) {
      ++progress.frames;
      lastFrame = now;
    } else if (now - lastFrame > kSilenceLimit) {
      std::cerr << "\n";
      throw std::runtime_error("no live frame for " + std::to_string(kSilenceLimit.count()) + " s");
    }
    progress.elapsed = std::chrono::duration<double>(now - start).count();
    if (now - lastPrint >= kProgressInterval) {
      PrintProgress(options, progress);
      lastPrint = now;
    }
  }
  PrintProgress(options, progress);
  std::cerr << "\n";
  return progress;
}

std::string RunAndSave(const LiveOptions& options) {
  EnsureProducerPath();
  const Plugin& plugin = LoadPlugin();
  CameraSystem cameras(plugin, options.selection);
  SystemRecord& system = cameras.record();
  const CameraRecord& camera = cameras.camera(options.camera);
  LiveImage live(static_cast<int16_t>(options.camera), camera.iWidthMax, camera.iHeightMax,
                 options.colour);

  uint32_t status = 0;
  CheckResult(plugin.liveAcquire(&live.image, 1, 0, &status, &system), status, "live start");
  Progress progress;
  try {
    progress = Watch(options, live);
  } catch (...) {
    plugin.liveAcquire(&live.image, 0, 0, &status, &system);
    throw;
  }
  CheckResult(plugin.liveAcquire(&live.image, 0, 0, &status, &system), status, "live stop");
  if (system.lError != 0) std::cerr << "tavro-host: the camera reported an error during live\n";

  WriteDisplayPng(options.output, live);
  char text[256];
  std::snprintf(text, sizeof text,
                "Live on camera %d (%s): %d frames in %.2f s, %.1f frames per second; "
                "%d x %d display saved to %s\n",
                options.camera, camera.szCamKey, progress.frames, progress.elapsed,
                progress.elapsed > 0 ? progress.frames / progress.elapsed : 0.0, live.width(),
                live.height(), options.output.c_str());
  return text;
}

}  // namespace

int RunLive(const Arguments& arguments) {
  bool help = false;
  const LiveOptions options = ParseOptions(arguments, help);
  if (help) {
    std::cout << kUsage;
    return 0;
  }
  const std::string report = RunAndSave(options);  // torn down before the report
  std::cout << report;
  return 0;
}

}  // namespace tavro_host
