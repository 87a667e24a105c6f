// tavro-host cycle and order: the camera management entry points run one
// step at a time, with what each step left in the records.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "commands.h"
#include "host_image.h"
#include "options.h"
#include "plugin.h"
#include "records.h"

namespace tavro_host {
namespace {

constexpr const char* kCycleUsage =
    "usage: tavro-host cycle [OPTIONS]\n"
    "  Sets up the cameras, detaches one, grabs (which attaches it), detaches it again,\n"
    "  attaches it and grabs, printing each call's result, the plug-in's messages and\n"
    "  the slot flags after each step.\n"
    "  --camera N          camera number (default 0)\n"
    "  --select TEXT       use only cameras whose key occurs in TEXT\n";

constexpr const char* kOrderUsage =
    "usage: tavro-host order --map I0,I1,... [OPTIONS]\n"
    "  Sets up the cameras and gives host id k the camera number Ik with _kxTavroOrder,\n"
    "  printing aiCamIndex and the attached flags before and after. The map names every\n"
    "  opened camera once; ids after it keep no camera.\n"
    "  --map LIST          comma-separated camera numbers, one per opened camera\n"
    "  --select TEXT       use only cameras whose key occurs in TEXT\n";

struct ManageOptions {
  std::string selection;
  int camera = 0;
  std::vector<int32_t> map;
};

// Comma-separated numbers, each given once; an empty item is refused.
std::vector<int32_t> NumberList(const std::string& text, const std::string& option) {
  std::vector<int32_t> numbers;
  for (size_t start = 0;;) {
    const size_t comma = text.find(',', start);
    const int32_t number = IntegerValue(text.substr(start, comma - start), option);
    if (std::find(numbers.begin(), numbers.end(), number) != numbers.end()) {
      throw UsageError(option + ": " + std::to_string(number) + " given twice in " + text);
    }
    numbers.push_back(number);
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  if (numbers.size() > TAVRO_MAX_CAMERAS) {
    throw UsageError(option + ": at most 16 numbers, got " + text);
  }
  return numbers;
}

// The plug-in silently ignores a map it cannot apply, so it is checked here:
// every opened camera exactly once (NumberList refused repeats).
void CheckMap(const std::vector<int32_t>& map, int32_t cameraCount) {
  if (map.size() != static_cast<size_t>(cameraCount)) {
    throw std::runtime_error("order: --map needs " + std::to_string(cameraCount) +
                             " camera numbers, one per opened camera, got " +
                             std::to_string(map.size()));
  }
  for (const int32_t number : map) {
    if (number < 0 || number >= cameraCount) {
      throw std::runtime_error("order: --map: no camera " + std::to_string(number) + " (" +
                               std::to_string(cameraCount) + " opened)");
    }
  }
}

ManageOptions ParseOptions(const Arguments& arguments, bool& help, const std::string& command) {
  ManageOptions options;
  std::vector<Option> known = {SelectOption(options.selection)};
  if (command == "cycle") known.push_back(CameraOption(options.camera));
  if (command == "order") {
    known.push_back(Option{{"--map"}, true, [&](const std::string& used, const std::string& v) {
                             options.map = NumberList(v, used);
                           }});
  }
  help = !tavro_host::ParseOptions(command, arguments, known);
  return options;
}

// Output of ours and the plug-in's lines share one stream and stay in order.
void Step(const std::string& text) {
  std::cout << "== " << text << std::endl;
}

void PrintSlots(const SystemRecord& system) {
  std::cout << "   slots:";
  for (int n = 0; n < system.iNumCams; ++n) {
    const CameraSlot& slot = system.tSlot[n];
    std::cout << "  " << n << ": attached " << slot.yAttached << ", live " << slot.yLive
              << ", camera object " << (slot.pCamera != nullptr ? "present" : "none");
  }
  std::cout << std::endl;
}

void PrintMap(const SystemRecord& system) {
  std::cout << "   aiCamIndex:";
  for (int id = 0; id < TAVRO_MAX_CAMERAS; ++id) std::cout << " " << system.aiCamIndex[id];
  std::cout << "\n   attached:";
  for (int n = 0; n < system.iNumCams; ++n) std::cout << " " << system.tSlot[n].yAttached;
  std::cout << std::endl;
}

int32_t LastUserValue = -1;
int32_t RecordFinished(CamImage*, uint32_t userValue) {
  LastUserValue = static_cast<int32_t>(userValue);
  return 0;
}

void Grab(const Plugin& plugin, SystemRecord& system, const CameraRecord& camera, int cameraId,
          uint32_t userValue) {
  HostImage host(static_cast<int16_t>(cameraId), camera.iWidthMax, camera.iHeightMax, false);
  uint32_t status = 0;
  LastUserValue = -1;
  const int32_t result = plugin.acquire(&host.image, 1, userValue, &status, &system);
  std::printf(
      "   grab: result %d, status 0x%x, %s\n", result, status,
      LastUserValue == static_cast<int32_t>(userValue) ? "image finished" : "no image finished");
  std::fflush(stdout);
}

void Cycle(const ManageOptions& options) {
  const Plugin& plugin = LoadPlugin();
  Step("setup");
  CameraSystem cameras(plugin, options.selection);
  SystemRecord& system = cameras.record();
  const CameraRecord& camera = cameras.camera(options.camera);
  system.pfnAcqFinished = RecordFinished;
  PrintSlots(system);

  const int n = options.camera;
  Step("detach camera " + std::to_string(n));
  std::printf("   detach: result %d\n", plugin.detach(&system, n));
  PrintSlots(system);

  Step("grab from camera " + std::to_string(n) + " (an image of a detached camera attaches it)");
  Grab(plugin, system, camera, n, 1);
  PrintSlots(system);

  Step("detach camera " + std::to_string(n) + " again");
  std::printf("   detach: result %d\n", plugin.detach(&system, n));
  PrintSlots(system);

  Step("attach camera " + std::to_string(n));
  std::printf("   attach: result %d\n", plugin.attach(&system, n));
  PrintSlots(system);

  Step("grab from camera " + std::to_string(n));
  Grab(plugin, system, camera, n, 2);
  PrintSlots(system);
  Step("teardown");
}

void Order(const ManageOptions& options) {
  if (options.map.empty()) throw UsageError("order: --map is required");
  const Plugin& plugin = LoadPlugin();
  CameraSystem cameras(plugin, options.selection);
  SystemRecord& system = cameras.record();
  CheckMap(options.map, system.iNumCams);
  Step("before");
  PrintMap(system);

  // Every opened camera stays wanted; only the id map changes.
  std::vector<CameraRecord> wanted(system.tCam, system.tCam + TAVRO_MAX_CAMERAS);
  for (int i = 0; i < TAVRO_MAX_CAMERAS; ++i) {
    wanted[i].yEnabled = i < system.iNumCams ? 1 : 0;
    wanted[i].iCamNum = i < system.iNumCams ? options.map[i] : -1;
  }
  Step("_kxTavroOrder");
  std::printf("   order: result %d\n", plugin.order(&system, wanted.data()));
  std::fflush(stdout);
  Step("after");
  PrintMap(system);
  Step("teardown");
}

int Run(const Arguments& arguments, const std::string& command, const char* usage,
        void (*run)(const ManageOptions&)) {
  bool help = false;
  const ManageOptions options = ParseOptions(arguments, help, command);
  if (help) {
    std::cout << usage;
    return 0;
  }
  EnsureProducerPath();
  run(options);
  return 0;
}

}  // namespace

int RunCycle(const Arguments& arguments) {
  return Run(arguments, "cycle", kCycleUsage, Cycle);
}

int RunOrder(const Arguments& arguments) {
  return Run(arguments, "order", kOrderUsage, Order);
}

}  // namespace tavro_host
