// tavro-host grab: one image from one camera into a PNG file, with the
// host's choices of AOI, exposure, gain, colour planes and trigger.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "commands.h"
#include "host_image.h"
#include "options.h"
#include "plugin.h"
#include "records.h"
#include "simulator.h"

namespace tavro_host {
namespace {

// The first bundled simulated camera, whose line 0 a hardware-triggered grab
// pulses unless told another.
constexpr const char* kDefaultLine0Camera = "OX23C-21A0417";

struct GrabOptions {
  std::string selection;
  int camera = 0;
  bool aoi = false;
  int32_t aoiRect[4] = {0, 0, 0, 0};
  bool exposure = false;
  int32_t exposureValue = 0;
  bool gain = false;
  int32_t gainValue = 0;
  bool colour = false;
  bool hardwareTrigger = false;
  std::string line0Camera = kDefaultLine0Camera;
  std::string output = "tavro-grab.png";
};

constexpr const char* kUsage =
    "usage: tavro-host grab [OPTIONS]\n"
    "  Sets up the cameras, takes one image from one of them and writes it as a PNG.\n"
    "  -o PATH             output file (default tavro-grab.png)\n"
    "  --camera N          camera number (default 0)\n"
    "  --select TEXT       use only cameras whose key occurs in TEXT\n"
    "  --aoi L,T,R,B       area of interest, right and bottom exclusive, on the\n"
    "                      camera's AOI steps (tavro-host list shows them)\n"
    "  --exposure V        exposure in the camera's unit (clamped to its range)\n"
    "  --gain P            master gain in percent 0 to 100\n"
    "  --colour            fill the red, green and blue planes: an RGB PNG\n"
    "  --hw-trigger        trigger on a rising edge of line 0 instead of by software;\n"
    "                      the simulated camera's line is pulsed after arming\n"
    "  --line0 ID          simulated camera to pulse (default OX23C-21A0417)\n";

GrabOptions ParseOptions(const Arguments& arguments, bool& help) {
  GrabOptions options;
  const auto aoi = [&](const std::string&, const std::string& value) {
    int used = 0;
    int32_t* r = options.aoiRect;
    if (std::sscanf(value.c_str(), "%d,%d,%d,%d%n", &r[0], &r[1], &r[2], &r[3], &used) != 4 ||
        static_cast<size_t>(used) != value.size()) {
      throw UsageError("--aoi wants L,T,R,B, got " + value);
    }
    options.aoi = true;
  };
  const auto valueAndFlag = [](const char* name, int32_t& value, bool& given) {
    return Option{{name}, true, [&](const std::string& used, const std::string& text) {
                    value = IntegerValue(text, used);
                    given = true;
                  }};
  };
  help = !tavro_host::ParseOptions(
      "grab", arguments,
      {OutputOption(options.output), CameraOption(options.camera), SelectOption(options.selection),
       Option{{"--aoi"}, true, aoi},
       valueAndFlag("--exposure", options.exposureValue, options.exposure),
       valueAndFlag("--gain", options.gainValue, options.gain), ColourOption(options.colour),
       FlagOption("--hw-trigger", options.hardwareTrigger),
       Option{{"--line0"}, true, [&](const std::string&, const std::string& v) {
                options.line0Camera = v;
              }}});
  return options;
}

void SetParameter(CameraRecord& camera, int row, int32_t value, const char* name) {
  ParameterEntry& entry = camera.tParam[row];
  if (entry.ySupported == 0) {
    std::cerr << "tavro-host: this camera has no " << name << "; ignored\n";
    return;
  }
  entry.iCurrent = value;
}

int32_t LastFinishedUserValue = -1;
int32_t RecordFinished(CamImage*, uint32_t userValue) {
  LastFinishedUserValue = static_cast<int32_t>(userValue);
  return 0;
}

// Grabs and saves; answers what was saved. The cameras are torn down on
// return, so the caller's report comes after their messages.
std::string GrabAndSave(const GrabOptions& options) {
  const std::string producers = EnsureProducerPath();
  const Plugin& plugin = LoadPlugin();
  CameraSystem cameras(plugin, options.selection);
  SystemRecord& system = cameras.record();
  CameraRecord& camera = cameras.camera(options.camera);
  system.pfnAcqFinished = RecordFinished;
  if (options.exposure)
    SetParameter(camera, TAVRO_PARAM_EXPOSURE, options.exposureValue, "exposure");
  if (options.gain) SetParameter(camera, TAVRO_PARAM_MASTER_GAIN, options.gainValue, "gain");

  // The host's planes have the size of the image it asks for.
  int32_t width = camera.iWidthMax, height = camera.iHeightMax;
  if (options.aoi) {
    width = options.aoiRect[2] - options.aoiRect[0];
    height = options.aoiRect[3] - options.aoiRect[1];
    if (width <= 0 || height <= 0) throw UsageError("--aoi: empty or inverted area");
    // The plug-in cuts an area to the sensor; planes of the asked size would
    // then be saved with an unwritten band.
    const int32_t* r = options.aoiRect;
    if (r[0] < 0 || r[1] < 0 || r[2] > camera.iWidthMax || r[3] > camera.iHeightMax) {
      throw std::runtime_error("--aoi: the area leaves the " + std::to_string(camera.iWidthMax) +
                               " x " + std::to_string(camera.iHeightMax) + " sensor");
    }
    // The plug-in rounds an area off the camera's steps; the PNG would then
    // have a band the camera never wrote.
    const int32_t* g = camera.aiGeometry;
    const auto onStep = [](int32_t value, int32_t step) { return value % std::max(step, 1) == 0; };
    if (!onStep(r[0], g[TAVRO_GEOMETRY_INC_LEFT]) || !onStep(r[1], g[TAVRO_GEOMETRY_INC_TOP]) ||
        !onStep(width, g[TAVRO_GEOMETRY_INC_WIDTH]) ||
        !onStep(height, g[TAVRO_GEOMETRY_INC_HEIGHT]) || width < g[TAVRO_GEOMETRY_MIN_WIDTH] ||
        height < g[TAVRO_GEOMETRY_MIN_HEIGHT]) {
      throw std::runtime_error("--aoi: this camera takes offsets in steps of " +
                               std::to_string(g[TAVRO_GEOMETRY_INC_LEFT]) + "," +
                               std::to_string(g[TAVRO_GEOMETRY_INC_TOP]) + " and sizes from " +
                               std::to_string(g[TAVRO_GEOMETRY_MIN_WIDTH]) + " x " +
                               std::to_string(g[TAVRO_GEOMETRY_MIN_HEIGHT]) + " in steps of " +
                               std::to_string(g[TAVRO_GEOMETRY_INC_WIDTH]) + "," +
                               std::to_string(g[TAVRO_GEOMETRY_INC_HEIGHT]));
    }
  }
  HostImage host(static_cast<int16_t>(options.camera), width, height, options.colour);
  host.info.yHwTrigger = options.hardwareTrigger ? 1 : 0;
  CamImage& image = host.image;
  image.yAoi = options.aoi ? 1 : 0;
  image.iAoiLeft = options.aoiRect[0];
  image.iAoiTop = options.aoiRect[1];
  image.iAoiRight = options.aoiRect[2];
  image.iAoiBottom = options.aoiRect[3];

  constexpr uint32_t kUserValue = 1;
  uint32_t status = 0;
  int32_t result;
  if (options.hardwareTrigger) {
    result = plugin.acquire(&image, 0, kUserValue, &status, &system);
    if (result == 0) {
      PulseLine0(options.line0Camera);
      result = plugin.waitAcquire(&image, 0, 0, &status, &system);
    }
  } else {
    result = plugin.acquire(&image, 1, kUserValue, &status, &system);
  }
  if (result != 0 || LastFinishedUserValue != static_cast<int32_t>(kUserValue)) {
    char text[64];
    std::snprintf(text, sizeof text, "acquisition failed: result %d, status 0x%x", result, status);
    throw std::runtime_error(text);
  }
  if (system.lError != 0) {
    std::cerr << "tavro-host: some parameter or the AOI could not be applied\n";
  }

  WritePlanesPng(options.output, host);
  return "Saved a " + std::to_string(width) + " x " + std::to_string(height) +
         (options.colour ? " RGB" : " grey") + " image from camera " +
         std::to_string(options.camera) + " (" + camera.szCamKey + ") to " + options.output +
         "  (" + CameraSource(producers) + ")\n";
}

}  // namespace

int RunGrab(const Arguments& arguments) {
  bool help = false;
  const GrabOptions options = ParseOptions(arguments, help);
  if (help) {
    std::cout << kUsage;
    return 0;
  }
  const std::string saved = GrabAndSave(options);
  std::cout << saved;
  return 0;
}

}  // namespace tavro_host
