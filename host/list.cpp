#include <nlohmann/json.hpp>

#include <iostream>
#include <stdexcept>

#include "commands.h"
#include "options.h"
#include "plugin.h"
#include "records.h"
#include "simulator.h"

namespace tavro_host {
namespace {

// The same description as DescribeCamera, for scripts.
nlohmann::json CameraJson(const CameraRecord& camera) {
  nlohmann::json formats = nlohmann::json::array();
  for (int k = 0; k < camera.iNumFormats && k < TAVRO_MAX_FORMATS; ++k) {
    const FormatDescriptor& format = camera.tFormat[k];
    formats.push_back({{"id", format.lFormatId},
                       {"name", FieldText(format.szName, sizeof format.szName)},
                       {"width", format.iWidth},
                       {"height", format.iHeight},
                       {"left", format.iLeft},
                       {"top", format.iTop}});
  }
  const int32_t* g = camera.aiGeometry;
  const nlohmann::json aoi = {{"left",
                               {{"min", g[TAVRO_GEOMETRY_MIN_LEFT]},
                                {"max", g[TAVRO_GEOMETRY_MAX_LEFT]},
                                {"step", g[TAVRO_GEOMETRY_INC_LEFT]}}},
                              {"top",
                               {{"min", g[TAVRO_GEOMETRY_MIN_TOP]},
                                {"max", g[TAVRO_GEOMETRY_MAX_TOP]},
                                {"step", g[TAVRO_GEOMETRY_INC_TOP]}}},
                              {"width",
                               {{"min", g[TAVRO_GEOMETRY_MIN_WIDTH]},
                                {"max", g[TAVRO_GEOMETRY_MAX_WIDTH]},
                                {"step", g[TAVRO_GEOMETRY_INC_WIDTH]}}},
                              {"height",
                               {{"min", g[TAVRO_GEOMETRY_MIN_HEIGHT]},
                                {"max", g[TAVRO_GEOMETRY_MAX_HEIGHT]},
                                {"step", g[TAVRO_GEOMETRY_INC_HEIGHT]}}}};
  nlohmann::json parameters = nlohmann::json::array();
  for (int i = 0; i < camera.iNumParams && i < TAVRO_NUM_PARAMS; ++i) {
    const ParameterEntry& entry = camera.tParam[i];
    nlohmann::json parameter = {{"row", i},
                                {"name", FieldText(entry.szName, sizeof entry.szName)},
                                {"supported", entry.ySupported != 0}};
    if (entry.ySupported != 0) {
      parameter.update({{"current", entry.iCurrent},
                        {"default", entry.iDefault},
                        {"min", entry.iMinimum},
                        {"max", entry.iMaximum},
                        {"step", entry.iIncrement}});
    }
    parameters.push_back(parameter);
  }
  return {{"number", camera.iCamNum},
          {"key", FieldText(camera.szCamKey, sizeof camera.szCamKey)},
          {"width", camera.iWidthMax},
          {"height", camera.iHeightMax},
          {"colour", camera.yColour != 0},
          {"formats", formats},
          {"aoi", aoi},
          {"parameters", parameters}};
}

}  // namespace

int RunList(const Arguments& arguments) {
  std::string selection;
  bool json = false;
  const bool help =
      !ParseOptions("list", arguments, {SelectOption(selection), FlagOption("--json", json)});
  if (help) {
    std::cout << "usage: tavro-host list [--select TEXT] [--json]\n"
                 "  Sets up the cameras and describes each one. With --select, only cameras\n"
                 "  whose key (model, or model-userName) occurs in TEXT are used. With --json,\n"
                 "  one JSON object on standard output; the plug-in's messages go to\n"
                 "  standard error.\n";
    return kExitDone;
  }
  // Standard output carries only the JSON document.
  if (json) SetPluginOutput(PluginOutput::kOnStandardError, /*unlessHidden=*/true);
  const std::string producers = EnsureProducerPath();
  CameraSystem cameras(LoadPlugin(), selection);
  if (json) {
    nlohmann::json list = {
        {"producers", producers},
        {"cameraLibrary", {{"kind", CameraLibraryDescription()}, {"path", CameraLibraryPath()}}},
        {"largest", {{"width", cameras.widest()}, {"height", cameras.highest()}}},
        {"cameras", nlohmann::json::array()}};
    for (int n = 0; n < cameras.cameraCount(); ++n) {
      list["cameras"].push_back(CameraJson(cameras.record().tCam[n]));
    }
    std::cout << list.dump(2) << std::endl;
    return kExitDone;
  }
  std::cout << "\n"
            << cameras.cameraCount() << " camera(s) opened, largest image " << cameras.widest()
            << " x " << cameras.highest() << " (" << CameraSource(producers) << ")\n";
  for (int n = 0; n < cameras.cameraCount(); ++n) {
    std::cout << "\n" << DescribeCamera(cameras.record().tCam[n]);
  }
  std::cout.flush();
  return kExitDone;
}

}  // namespace tavro_host
