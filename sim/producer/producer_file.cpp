#include "producer/producer_file.h"

#include <sys/stat.h>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "camera/feature_changes.h"
#include "camera/standard_features.h"
#include "core/api.h"
#include "oxel_sim.h"
#include "producer/json_reader.h"

namespace oxelsim {

namespace {

constexpr const char* kDefaultVendor = "Oxel Imaging";

OXEL_DEVICE_ACCESS_STATUS ParseAccessStatus(const JsonReader& reader) {
  const std::string name = reader.Choice({"ReadWrite", "ReadOnly", "NoAccess", "Busy"});
  if (name == "ReadOnly") return OXEL_DEVICE_ACCESS_STATUS_READ_ONLY;
  if (name == "NoAccess") return OXEL_DEVICE_ACCESS_STATUS_NO_ACCESS;
  if (name == "Busy") return OXEL_DEVICE_ACCESS_STATUS_BUSY;
  return OXEL_DEVICE_ACCESS_STATUS_READ_WRITE;
}

OXEL_RETURN_CODE ParseFaultCode(const JsonReader& reader) {
  if (!reader.IsString()) {
    const int64_t code = reader.Integer();
    if (code == 0 || code < INT32_MIN || code > INT32_MAX) reader.Fail("a failure code (not 0)");
    return static_cast<OXEL_RETURN_CODE>(code);
  }
  const std::string name = reader.String();
  for (OXEL_RETURN_CODE code = 1; code <= OXEL_RETURN_CODE_CTI_LOADING_ERROR; ++code) {
    const std::string full = ReturnCodeName(code);
    if (name == full || "OXEL_RETURN_CODE_" + name == full) return code;
  }
  reader.Fail("a return code name such as \"OUT_OF_RANGE\" or a number");
}

std::vector<PixelFormatDefinition> ParsePixelFormats(const JsonReader& reader) {
  std::vector<PixelFormatDefinition> formats;
  for (const JsonReader& item : reader.Array()) {
    PixelFormatDefinition format;
    const JsonReader* nameReader = &item;
    std::optional<JsonReader> member;
    if (!item.IsString()) {
      item.AllowOnly({"name", "available"});
      member = item.Member("name");
      nameReader = &*member;
      if (auto available = item.Optional("available")) format.available = available->Boolean();
    }
    format.name = nameReader->Choice({"Mono8", "BGR8"});
    format.code = PixelFormatCode(format.name);
    for (const PixelFormatDefinition& other : formats) {
      if (other.name == format.name) item.Fail("each pixel format once");
    }
    formats.push_back(format);
  }
  bool anyAvailable = false;
  for (const PixelFormatDefinition& format : formats)
    anyAvailable = anyAvailable || format.available;
  if (!anyAvailable) reader.Fail("at least one available pixel format");
  return formats;
}

void ParseAoi(const JsonReader& reader, AoiRules& aoi) {
  reader.AllowOnly({"offsetRule", "offsetXIncrement", "offsetYIncrement", "widthIncrement",
                    "heightIncrement", "widthMinimum", "heightMinimum"});
  if (auto rule = reader.Optional("offsetRule")) {
    aoi.offsetRule = rule->Choice({"shrinkSize", "strict"}) == "strict" ? OffsetRule::kStrict
                                                                        : OffsetRule::kShrinkSize;
  }
  auto read = [&](const char* key, int64_t& target) {
    if (auto value = reader.Optional(key)) target = value->Positive();
  };
  read("offsetXIncrement", aoi.offsetXIncrement);
  read("offsetYIncrement", aoi.offsetYIncrement);
  read("widthIncrement", aoi.widthIncrement);
  read("heightIncrement", aoi.heightIncrement);
  aoi.widthMinimum = aoi.widthIncrement;
  aoi.heightMinimum = aoi.heightIncrement;
  read("widthMinimum", aoi.widthMinimum);
  read("heightMinimum", aoi.heightMinimum);
}

void ParseFaults(const JsonReader& reader, CameraDescription& camera) {
  reader.AllowOnly({"dropFrames", "incompleteEvery", "failWrites"});
  if (auto every = reader.Optional("incompleteEvery")) {
    const int64_t period = every->Integer();
    if (period < 2 || period > INT32_MAX) every->Fail("a period of 2 frames or more");
    camera.incompleteEvery = static_cast<int32_t>(period);
  }
  if (auto drop = reader.Optional("dropFrames")) {
    const int64_t count = drop->Integer();
    if (count < -1 || count > INT32_MAX) drop->Fail("a frame count, or -1 for all frames");
    camera.dropFrames = static_cast<int32_t>(count);
  }
  if (auto writes = reader.Optional("failWrites")) {
    for (const JsonReader& item : writes->Array()) {
      item.AllowOnly({"feature", "count", "code"});
      WriteFault fault;
      fault.feature = item.Member("feature").NonEmptyString();
      const int64_t count = item.Member("count").Integer();
      if (count < -1 || count == 0 || count > INT32_MAX) {
        item.Member("count").Fail("a write count, or -1 for every write");
      }
      fault.count = static_cast<int32_t>(count);
      fault.code = ParseFaultCode(item.Member("code"));
      if (camera.FindFeature(fault.feature) == nullptr) {
        item.Member("feature").Fail("the name of a feature of this camera");
      }
      camera.failWrites.push_back(fault);
    }
  }
}

CameraDescription ParseCamera(const JsonReader& reader) {
  reader.AllowOnly({"comment",         "id",          "model",  "vendor",       "serial",
                    "userDefinedName", "displayName", "tlType", "accessStatus", "plugged",
                    "openedElsewhere", "sensor",      "aoi",    "pixelFormats", "maxFrameRate",
                    "instantFrames",   "dataStreams", "stream", "faults",       "features"});
  CameraDescription camera;
  camera.id = reader.Member("id").NonEmptyString();
  camera.model = reader.Member("model").NonEmptyString();
  camera.vendor = kDefaultVendor;
  if (auto vendor = reader.Optional("vendor")) camera.vendor = vendor->NonEmptyString();
  camera.serial = camera.id;
  if (auto serial = reader.Optional("serial")) camera.serial = serial->NonEmptyString();
  if (auto name = reader.Optional("userDefinedName")) camera.userDefinedName = name->String();
  camera.displayName = camera.vendor + " " + camera.model + " (" + camera.serial + ")";
  if (auto display = reader.Optional("displayName")) camera.displayName = display->String();
  camera.tlType = "U3V";
  if (auto tlType = reader.Optional("tlType")) camera.tlType = tlType->NonEmptyString();
  if (auto status = reader.Optional("accessStatus"))
    camera.accessStatus = ParseAccessStatus(*status);
  if (auto plugged = reader.Optional("plugged")) camera.plugged = plugged->Boolean();
  if (auto elsewhere = reader.Optional("openedElsewhere")) {
    camera.openedElsewhere = elsewhere->Boolean();
  }
  const JsonReader sensor = reader.Member("sensor");
  sensor.AllowOnly({"width", "height"});
  camera.sensorWidth = sensor.Member("width").Positive();
  camera.sensorHeight = sensor.Member("height").Positive();
  if (auto aoi = reader.Optional("aoi")) ParseAoi(*aoi, camera.aoi);
  if (camera.aoi.widthMinimum > camera.sensorWidth ||
      camera.aoi.heightMinimum > camera.sensorHeight) {
    reader.Member("aoi").Fail("minimum sizes that fit the sensor");
  }
  camera.pixelFormats = {PixelFormatDefinition{"Mono8", OXEL_SIM_PIXEL_FORMAT_MONO8, true}};
  if (auto formats = reader.Optional("pixelFormats"))
    camera.pixelFormats = ParsePixelFormats(*formats);
  camera.maxFrameRate = 60.0;
  if (auto rate = reader.Optional("maxFrameRate")) {
    camera.maxFrameRate = rate->Number();
    if (!(camera.maxFrameRate >= 1.0)) rate->Fail("a frame rate of 1.0 or more");
  }
  if (auto instant = reader.Optional("instantFrames")) camera.instantFrames = instant->Boolean();
  if (auto streams = reader.Optional("dataStreams")) {
    camera.dataStreamCount = static_cast<size_t>(streams->NonNegative());
    if (camera.dataStreamCount > 1) streams->Fail("0 or 1 data streams");
  }
  if (auto stream = reader.Optional("stream")) {
    stream->AllowOnly({"minBufferCount", "definesPayloadSize"});
    if (auto count = stream->Optional("minBufferCount")) {
      camera.minBufferCount = static_cast<size_t>(count->NonNegative());
    }
    if (auto defines = stream->Optional("definesPayloadSize")) {
      camera.definesPayloadSize = defines->Boolean();
    }
  }
  camera.features = StandardFeatures(camera);
  ApplyFeatureChanges(camera, reader);
  if (auto faults = reader.Optional("faults")) ParseFaults(*faults, camera);
  return camera;
}

InterfaceDescription ParseInterface(const JsonReader& reader) {
  reader.AllowOnly({"comment", "id", "displayName", "cameras"});
  InterfaceDescription description;
  description.id = reader.Member("id").NonEmptyString();
  description.displayName = description.id;
  if (auto display = reader.Optional("displayName")) description.displayName = display->String();
  for (const JsonReader& item : reader.Member("cameras").Array()) {
    description.cameras.push_back(ParseCamera(item));
  }
  return description;
}

void CheckUniqueIds(const SystemDescription& system, const JsonReader& interfaces) {
  std::vector<std::string> seen;
  for (size_t i = 0; i < system.interfaces.size(); ++i) {
    for (size_t c = 0; c < system.interfaces[i].cameras.size(); ++c) {
      const std::string& id = system.interfaces[i].cameras[c].id;
      if (std::find(seen.begin(), seen.end(), id) != seen.end()) {
        interfaces.Array()[i].Member("cameras").Array()[c].Member("id").Fail(
            "a camera id used once in the file");
      }
      seen.push_back(id);
    }
    for (size_t j = 0; j < i; ++j) {
      if (system.interfaces[j].id == system.interfaces[i].id) {
        interfaces.Array()[i].Member("id").Fail("an interface id used once in the file");
      }
    }
  }
}

std::string ReadWholeFile(const std::string& path) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) {
    FailLoading(path, std::string("the file cannot be found (") + std::strerror(errno) + ")");
  }
  if (S_ISDIR(info.st_mode)) FailLoading(path, "it is a directory, not a file");
  std::ifstream file(path, std::ios::binary);
  if (!file)
    FailLoading(path, std::string("the file cannot be read (") + std::strerror(errno) + ")");
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace

const FeatureDefinition* CameraDescription::FindFeature(const std::string& name) const {
  for (const FeatureDefinition& definition : features) {
    if (definition.name == name) return &definition;
  }
  return nullptr;
}

uint64_t PixelFormatCode(const std::string& name) {
  if (name == "Mono8") return OXEL_SIM_PIXEL_FORMAT_MONO8;
  if (name == "BGR8") return OXEL_SIM_PIXEL_FORMAT_BGR8;
  return 0;
}

size_t BytesPerPixel(uint64_t code) {
  return code == OXEL_SIM_PIXEL_FORMAT_BGR8 ? 3 : 1;
}

SystemDescription LoadProducerFile(const std::string& path) {
  return ParseProducerText(path, ReadWholeFile(path));
}

SystemDescription ParseProducerText(const std::string& path, const std::string& text) {
  if (text.find_first_not_of(" \t\r\n") == std::string::npos) {
    FailLoading(path, "the file is empty; expected a JSON object with a \"system\"");
  }
  nlohmann::json document;
  try {
    document = nlohmann::json::parse(text);
  } catch (const nlohmann::json::parse_error& error) {
    std::string what = error.what();
    const size_t prefix = what.find("] ");
    if (prefix != std::string::npos) what = what.substr(prefix + 2);
    FailLoading(path, "not valid JSON: " + what);
  }
  const JsonReader top(document, "", path);
  top.AllowOnly({"comment", "vendor", "system"});
  SystemDescription system;
  system.path = path;
  system.vendor = kDefaultVendor;
  if (auto vendor = top.Optional("vendor")) system.vendor = vendor->NonEmptyString();
  const JsonReader systemReader = top.Member("system");
  systemReader.AllowOnly({"comment", "id", "displayName", "interfaces"});
  system.id = systemReader.Member("id").NonEmptyString();
  system.displayName = system.id;
  if (auto display = systemReader.Optional("displayName")) system.displayName = display->String();
  const JsonReader interfaces = systemReader.Member("interfaces");
  for (const JsonReader& item : interfaces.Array()) {
    system.interfaces.push_back(ParseInterface(item));
  }
  CheckUniqueIds(system, interfaces);
  return system;
}

}  // namespace oxelsim
