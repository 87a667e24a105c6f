#include <iostream>
#include <stdexcept>

#include "commands.h"
#include "plugin.h"
#include "records.h"

namespace tavro_host {

int RunList(const Arguments& arguments) {
  std::string selection;
  for (size_t k = 0; k < arguments.size(); ++k) {
    if (arguments[k] == "--select") {
      selection = OptionValue(arguments, k);
    } else if (arguments[k] == "--help") {
      std::cout << "usage: tavro-host list [--select TEXT]\n"
                   "  Sets up the cameras and describes each one. With --select, only cameras\n"
                   "  whose key (model, or model-userName) occurs in TEXT are used.\n";
      return 0;
    } else {
      throw std::runtime_error("list: unknown option " + arguments[k]);
    }
  }
  const std::string producers = EnsureProducerPath();
  CameraSystem cameras(LoadPlugin(), selection);
  std::cout << "\n"
            << cameras.cameraCount() << " camera(s) opened, largest image " << cameras.widest()
            << " x " << cameras.highest() << " (producers: " << producers << ")\n";
  for (int n = 0; n < cameras.cameraCount(); ++n) {
    std::cout << "\n" << DescribeCamera(cameras.record().tCam[n]);
  }
  std::cout.flush();
  return 0;
}

}  // namespace tavro_host
