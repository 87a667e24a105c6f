#include "records.h"

#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <string>

namespace tavro_host {

std::string FieldText(const char* field, size_t size) {
  size_t length = 0;
  while (length < size && field[length] != '\0') ++length;
  return std::string(field, length);
}

namespace {

void DescribeFormats(std::ostringstream& text, const CameraRecord& camera) {
  text << "  formats (" << camera.iNumFormats << "):\n";
  for (int k = 0; k < camera.iNumFormats && k < TAVRO_MAX_FORMATS; ++k) {
    const FormatDescriptor& format = camera.tFormat[k];
    text << "    " << format.iWidth << " x " << format.iHeight << " at " << format.iLeft << ","
         << format.iTop << "  id " << format.lFormatId << "  "
         << FieldText(format.szName, sizeof format.szName) << "\n";
  }
}

void DescribeGeometry(std::ostringstream& text, const CameraRecord& camera) {
  const int32_t* g = camera.aiGeometry;
  text << "  AOI limits: offset " << g[TAVRO_GEOMETRY_MIN_LEFT] << "," << g[TAVRO_GEOMETRY_MIN_TOP]
       << " to " << g[TAVRO_GEOMETRY_MAX_LEFT] << "," << g[TAVRO_GEOMETRY_MAX_TOP] << " step "
       << g[TAVRO_GEOMETRY_INC_LEFT] << "," << g[TAVRO_GEOMETRY_INC_TOP] << "; size "
       << g[TAVRO_GEOMETRY_MIN_WIDTH] << " x " << g[TAVRO_GEOMETRY_MIN_HEIGHT] << " to "
       << g[TAVRO_GEOMETRY_MAX_WIDTH] << " x " << g[TAVRO_GEOMETRY_MAX_HEIGHT] << " step "
       << g[TAVRO_GEOMETRY_INC_WIDTH] << "," << g[TAVRO_GEOMETRY_INC_HEIGHT] << "\n";
  text << "  largest image: " << camera.iWidthMax << " x " << camera.iHeightMax
       << (camera.yColour != 0 ? " colour" : " monochrome") << "\n";
}

void DescribeParameters(std::ostringstream& text, const CameraRecord& camera) {
  text << "  parameters:\n";
  for (int i = 0; i < camera.iNumParams && i < TAVRO_NUM_PARAMS; ++i) {
    const ParameterEntry& entry = camera.tParam[i];
    text << "    " << std::setw(2) << i << " " << std::left << std::setw(14)
         << FieldText(entry.szName, sizeof entry.szName) << std::right;
    if (entry.ySupported == 0) {
      text << "not supported\n";
      continue;
    }
    text << "current " << entry.iCurrent << ", default " << entry.iDefault << ", " << entry.iMinimum
         << " to " << entry.iMaximum << " step " << entry.iIncrement << "\n";
  }
}

}  // namespace

CameraSystem::CameraSystem(const Plugin& plugin, const std::string& selection)
    : plugin_(plugin), system_(std::make_unique<SystemRecord>()) {
  if (plugin_.setup(0, selection.c_str(), &widest_, &highest_, system_.get()) != 0) {
    plugin_.tearDown(system_.get());
    throw std::runtime_error("Setup found no camera");
  }
}

CameraSystem::~CameraSystem() {
  plugin_.tearDown(system_.get());
}

CameraRecord& CameraSystem::camera(int number) {
  if (number < 0 || number >= cameraCount()) {
    throw std::runtime_error("no camera " + std::to_string(number) + " (" +
                             std::to_string(cameraCount()) + " opened)");
  }
  return system_->tCam[number];
}

std::string DescribeCamera(const CameraRecord& camera) {
  std::ostringstream text;
  text << "camera " << camera.iCamNum << ": " << FieldText(camera.szCamKey, sizeof camera.szCamKey)
       << "\n";
  DescribeFormats(text, camera);
  DescribeGeometry(text, camera);
  DescribeParameters(text, camera);
  return text.str();
}

}  // namespace tavro_host
