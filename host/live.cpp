// tavro-host live: live acquisition on one camera for a number of frames or
// seconds, with a progress line, then the live display saved as a PNG.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "commands.h"
#include "host_image.h"
#include "options.h"
#include "oxel_sim.h"
#include "plugin.h"
#include "records.h"
#include "simulator.h"

namespace tavro_host {
namespace {

using Clock = std::chrono::steady_clock;

// How often the run is looked at; how long after its last frame a live run
// has certainly ended on the plug-in's 3000 ms frame time-out; how many
// such ends in a row give the camera up.
constexpr auto kPollInterval = std::chrono::milliseconds(1);
constexpr auto kProgressInterval = std::chrono::milliseconds(200);
constexpr auto kLiveRunEnded = std::chrono::milliseconds(3500);
constexpr int32_t kLostInARowLimit = 3;
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
  help = !tavro_host::ParseOptions(
      "live", arguments,
      {OutputOption(options.output), CameraOption(options.camera), SelectOption(options.selection),
       Option{{"--frames"},
              true,
              [&](const std::string& used, const std::string& v) {
                options.frames = IntegerValue(v, used);
                if (options.frames <= 0) throw UsageError("--frames: must be above 0");
              }},
       Option{{"--seconds"},
              true,
              [&](const std::string& used, const std::string& v) {
                options.seconds = Seconds(v, used);
              }},
       ColourOption(options.colour)});
  if (options.frames > 0 && options.seconds > 0) {
    throw UsageError("live: give --frames or --seconds, not both");
  }
  if (options.frames == 0 && options.seconds == 0) options.frames = kDefaultFrames;
  return options;
}

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

// What the camera and the plug-in did so far.
struct Progress {
  int64_t delivered = 0;  // frames the plug-in delivered
  int32_t lost = 0;       // frames lost to a time-out, each ending a live run
  int64_t torn = 0;       // frames that came incomplete and were skipped
  double elapsed = 0;
};

void PrintProgress(const LiveOptions& options, const Progress& progress) {
  const double rate = progress.elapsed > 0 ? progress.delivered / progress.elapsed : 0;
  char text[160];
  if (options.frames > 0) {
    std::snprintf(text, sizeof text, "\rlive: %lld of %d frames, %.1f fps, %d lost, ",
                  static_cast<long long>(progress.delivered), options.frames, rate, progress.lost);
  } else {
    std::snprintf(text, sizeof text, "\rlive: %lld frames, %.1f fps, %d lost, ",
                  static_cast<long long>(progress.delivered), rate, progress.lost);
  }
  std::string line = text;
  if (options.seconds > 0) {
    std::snprintf(text, sizeof text, "%.1f s left   ",
                  std::max(0.0, options.seconds - progress.elapsed));
  } else if (rate > 0) {
    std::snprintf(text, sizeof text, "about %.1f s left   ",
                  (options.frames - progress.delivered) / rate);
  } else {
    std::snprintf(text, sizeof text, "time left unknown   ");
  }
  std::cerr << line << text << std::flush;
}

bool Done(const LiveOptions& options, const Progress& progress) {
  if (options.frames > 0) return progress.delivered >= options.frames;
  return progress.elapsed >= options.seconds;
}

// Counts the plug-in's deliveries. With a simulated camera each live frame
// takes the camera's next frame ID, so the count is exact: the IDs sent,
// less those lost, up to the frame the image holds at the end. With any
// other camera only the new-frame flags this host saw can be counted.
class DeliveryCounter {
 public:
  DeliveryCounter(std::string deviceId, bool bgr)
      : deviceId_(std::move(deviceId)),
        bgr_(bgr),
        before_(LastFrameId(deviceId_).value_or(OXEL_SIM_FIRST_FRAME_ID - 1)),
        tornBefore_(IncompleteFrameCount(deviceId_).value_or(0)),
        exact_(!deviceId_.empty() && HasFrameCounter()) {}

  bool exact() const { return exact_; }
  // Frames the camera sent torn so far; the plug-in skips them.
  int64_t Torn() const {
    return static_cast<int64_t>(IncompleteFrameCount(deviceId_).value_or(tornBefore_) -
                                tornBefore_);
  }
  // Frames sent so far, lost ones included; or flags seen.
  int64_t Sent(LiveImage& live) {
    if (!exact_) return flags_ += live.TakeNewFrame() ? 1 : 0;
    live.TakeNewFrame();
    return static_cast<int64_t>(LastFrameId(deviceId_).value_or(before_) - before_);
  }
  // After the run: the frames up to the one the host image holds, which the
  // worker no longer writes.
  // Torn frames sent after the one shown (the last ones sent, when they
  // came torn) are not counted among them.
  int64_t SentUpToShown(const LiveImage& live, int64_t& tornBefore) {
    if (!exact_) return flags_;
    const uint64_t last = LastFrameId(deviceId_).value_or(before_);
    const uint64_t shown = ShownFrame(live, last).value_or(last);
    tornBefore = std::max<int64_t>(0, Torn() - static_cast<int64_t>(last - shown));
    return static_cast<int64_t>(shown - before_);
  }

 private:
  // The frame the image shows, among the last 256 the camera sent: its ID
  // is in the first 8 pixels of row 0 (the picture's tag).
  std::optional<uint64_t> ShownFrame(const LiveImage& live, uint64_t last) const {
    for (uint64_t back = 0; back < 256 && last - back != before_; ++back) {
      const uint64_t id = last - back;
      bool fits = true;
      for (int32_t x = 0; x < std::min(8, live.width()) && fits; ++x) {
        const auto x32 = static_cast<uint32_t>(x);
        if (!bgr_) {
          fits = live.grey.At(x, 0) == OxelSim_PatternMono8(x32, 0, id);
        } else if (live.colour) {
          fits = live.blue.At(x, 0) == OxelSim_PatternBgr8(x32, 0, id, 0);
        } else {
          fits = live.grey.At(x, 0) == Luma(OxelSim_PatternBgr8(x32, 0, id, 2),
                                            OxelSim_PatternBgr8(x32, 0, id, 1),
                                            OxelSim_PatternBgr8(x32, 0, id, 0));
        }
      }
      if (fits) return id;
    }
    return std::nullopt;
  }

  static uint8_t Luma(uint32_t red, uint32_t green, uint32_t blue) {
    return static_cast<uint8_t>((19595u * red + 38470u * green + 7471u * blue) >> 16);
  }

  const std::string deviceId_;
  const bool bgr_;
  const uint64_t before_;
  const uint64_t tornBefore_;
  const bool exact_;
  int64_t flags_ = 0;
};

void Start(const Plugin& plugin, LiveImage& live, SystemRecord& system) {
  uint32_t status = 0;
  CheckResult(plugin.liveAcquire(&live.image, 1, 0, &status, &system), status, "live start");
}

void Stop(const Plugin& plugin, LiveImage& live, SystemRecord& system) {
  uint32_t status = 0;
  CheckResult(plugin.liveAcquire(&live.image, 0, 0, &status, &system), status, "live stop");
}

// Runs live until the goal is met. A live run ends by itself when a frame
// does not come within the plug-in's 3000 ms: that frame is counted lost
// and live is started again; a camera that loses three in a row is given up.
Progress Watch(const LiveOptions& options, const Plugin& plugin, LiveImage& live,
               SystemRecord& system, DeliveryCounter& counter) {
  Progress progress;
  const auto start = Clock::now();
  auto lastFrame = start, lastPrint = start;
  int64_t sent = 0;
  int32_t lostInARow = 0;
  Start(plugin, live, system);
  while (!Done(options, progress)) {
    std::this_thread::sleep_for(kPollInterval);
    const auto now = Clock::now();
    if (const int64_t nowSent = counter.Sent(live); nowSent != sent) {
      sent = nowSent;
      lastFrame = now;
      lostInARow = 0;
    } else if (now - lastFrame > kLiveRunEnded) {
      ++progress.lost;
      if (++lostInARow == kLostInARowLimit) {
        std::cerr << "\n";
        throw std::runtime_error("no live frame in " + std::to_string(kLostInARowLimit) +
                                 " live runs");
      }
      Stop(plugin, live, system);
      Start(plugin, live, system);
      lastFrame = now;
    }
    progress.torn = counter.Torn();
    progress.delivered = sent - (counter.exact() ? progress.lost + progress.torn : 0);
    progress.elapsed = std::chrono::duration<double>(now - start).count();
    if (now - lastPrint >= kProgressInterval) {
      PrintProgress(options, progress);
      lastPrint = now;
    }
  }
  Stop(plugin, live, system);
  progress.elapsed = std::chrono::duration<double>(Clock::now() - start).count();
  progress.torn = counter.Torn();
  int64_t tornBeforeShown = 0;
  const int64_t sentUpToShown = counter.SentUpToShown(live, tornBeforeShown);
  progress.delivered = sentUpToShown - (counter.exact() ? progress.lost + tornBeforeShown : 0);
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
  DeliveryCounter counter(BundledCameraId(camera.szCamKey), camera.yColour != 0);

  Progress progress;
  try {
    progress = Watch(options, plugin, live, system, counter);
  } catch (...) {
    uint32_t status = 0;
    plugin.liveAcquire(&live.image, 0, 0, &status, &system);
    throw;
  }
  if (system.lError != 0) std::cerr << "tavro-host: the camera reported an error during live\n";

  WriteDisplayPng(options.output, live);
  char text[512];
  std::snprintf(
      text, sizeof text,
      "Live on camera %d (%s): %lld frames delivered in %.2f s, %.1f frames per "
      "second%s, %d lost to time-outs, %lld torn (skipped); %d x %d display saved to "
      "%s\n",
      options.camera, camera.szCamKey, static_cast<long long>(progress.delivered), progress.elapsed,
      progress.elapsed > 0 ? progress.delivered / progress.elapsed : 0.0,
      counter.exact() ? "" : " (new-frame flags seen)", progress.lost,
      static_cast<long long>(progress.torn), live.width(), live.height(), options.output.c_str());
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
