#include "parameters/discovery.h"

#include <algorithm>
#include <array>
#include <exception>

#include "camera/features.h"
#include "camera/oxel_camera.h"
#include "diagnostics/debug_output.h"
#include "geometry/format_list.h"
#include "host_interface/shared_fields.h"
#include "host_interface/slot_camera.h"
#include "parameters/host_scaling.h"
#include "parameters/parameter_table.h"
#include "parameters/trigger_mode.h"

namespace tavro::parameters {
namespace {

using diagnostics::StdoutLine;

constexpr double kAttachExposure = 10.0;
constexpr std::array<double, 5> kSlotHostValues = {1.0, 0.0, 0.0, 1.0, 4.0};
constexpr int64_t kSlotHostValue136 = -1;
constexpr int32_t kBlackLevelHostMaximum = 255;
constexpr int32_t kPercentMaximum = 100;

void FillFormats(CameraRecord& record, const camera::OxelCamera& camera) {
  const auto count = std::min<size_t>(camera.formats.size(), TAVRO_MAX_FORMATS);
  record.iNumFormats = static_cast<int32_t>(count);
  for (size_t k = 0; k < count; ++k) {
    const geometry::FormatEntry& entry = camera.formats[k];
    FormatDescriptor& descriptor = record.tFormat[k];
    descriptor.lFormatId = entry.formatId;
    descriptor.iWidth = entry.width;
    descriptor.iHeight = entry.height;
    descriptor.iLeft = entry.left;
    descriptor.iTop = entry.top;
    descriptor.iBinning = 0;
    descriptor.iSubsampling = 0;
    geometry::CopyFormatName(entry, descriptor.szName, sizeof descriptor.szName);
  }
}

void ReportFormats(CameraRecord& record, const camera::OxelCamera& camera) {
  FillFormats(record, camera);
  camera.PrintFormats();
  StdoutLine("All formats combined: ");
  StdoutLine("\t", camera.AllFormatsText());
}

void ReportGeometry(CameraRecord& record, camera::OxelCamera& camera) {
  camera.ReadAoiLimits();
  camera.PrintAoiLimits();
  if (!camera.aoiLimits) return;
  const auto values = camera.aoiLimits->Values();
  std::copy(values.begin(), values.end(), record.aiGeometry);
}

// Fills row `index` of the table; a row whose support question answers
// false, or that has none, stays cleared.
void DiscoverRow(ParameterEntry& entry, int32_t index, camera::OxelCamera& camera) {
  ClearParameterEntry(entry, index);
  switch (index) {
    case TAVRO_PARAM_SHARPNESS:
      camera.IsSharpnessSupported();
      break;
    case TAVRO_PARAM_GAMMA:
      camera.IsGammaSupported();
      break;
    case TAVRO_PARAM_OFFSET:
      if (camera.DiscoverBlackLevel()) {
        const int32_t defaultValue = camera.GetBlackLevelDefault();
        FillParameterEntry(entry,
                           {defaultValue, camera.GetBlackLevel(), 0, kBlackLevelHostMaximum, 1});
      }
      break;
    case TAVRO_PARAM_MASTER_GAIN:
      StdoutLine("Master Gain specs being discovered...");
      if (camera.DiscoverGain()) {
        const int32_t defaultValue = camera.GetGain();
        FillParameterEntry(entry, {defaultValue, camera.GetGain(), 0, kPercentMaximum, 1});
      }
      break;
    case TAVRO_PARAM_PIXEL_CLOCK:
      camera.IsPixelClockSupported();
      break;
    case TAVRO_PARAM_EXPOSURE:
      if (camera.IsExposureSupported()) {
        double minimum = 0.0, maximum = 0.0, defaultValue = 0.0, increment = 0.0;
        camera.GetExposureRange(minimum, maximum, defaultValue, increment);
        const double current = camera.GetExposure();
        FillParameterEntry(entry, {Rounded(defaultValue), Rounded(current), Rounded(minimum),
                                   Truncated(maximum), Truncated(increment)});
      }
      break;
    case TAVRO_PARAM_MANUAL_FOCUS:
      StdoutLine("Manual Focus specs being discovered...");
      camera.IsFocusSupported();
      StdoutLine("over.");
      break;
    case TAVRO_PARAM_DIGITAL_ZOOM:
      StdoutLine("Digital Zoom specs being discovered...");
      camera.IsZoomSupported();
      StdoutLine("over.");
      break;
    case TAVRO_PARAM_THROUGHPUT:
      if (camera.DiscoverThroughputLimit()) {
        FillParameterEntry(entry,
                           {kPercentMaximum, camera.GetThroughputLimit(), 0, kPercentMaximum, 1});
      }
      break;
    default:
      break;  // never offered by these cameras
  }
}

}  // namespace

void DisableAutoFeatures(camera::OxelCamera& camera) {
  for (const char* feature : {"ExposureAuto", "GainAuto", "BalanceWhiteAuto", "BlackLevelAuto"}) {
    try {
      camera::SelectEntry(camera.nodeMap, feature, "Off");
    } catch (const std::exception&) {
      // A camera without this automatic has nothing to switch off.
    }
  }
}

int32_t DiscoverParameters(SystemRecord& system, int32_t number) {
  CameraRecord& record = system.tCam[number];
  CameraSlot& slot = system.tSlot[number];
  camera::OxelCamera& camera = *host_interface::CameraOf(slot);

  record.yColour = camera.isColour ? 1 : 0;
  slot.yColour = record.yColour;
  DisableAutoFeatures(camera);
  ReportFormats(record, camera);
  ReportGeometry(record, camera);

  record.iNumParams = kParameterCount;
  for (int32_t index = 0; index < kParameterCount; ++index) {
    DiscoverRow(record.tParam[index], index, camera);
  }

  record.iWidthMax = camera.widthMax;
  record.iHeightMax = camera.heightMax;
  camera.SetTriggerMode(TriggerModeSoftware, true);
  camera.EnableStrobe(true, 0, kStartupStrobeDuration);
  MarkCameraAttached(system, number);
  return 0;
}

void WriteSlotHostValues(CameraSlot& slot) {
  std::copy(kSlotHostValues.begin(), kSlotHostValues.end(), slot.adHostValues);
  slot.iHostValue136 = kSlotHostValue136;
}

void MarkCameraAttached(SystemRecord& system, int32_t number) {
  CameraRecord& record = system.tCam[number];
  CameraSlot& slot = system.tSlot[number];
  const camera::OxelCamera& camera = *host_interface::CameraOf(slot);
  record.yColour = camera.isColour ? 1 : 0;
  slot.yColour = record.yColour;
  record.iWidthMax = camera.widthMax;
  record.iHeightMax = camera.heightMax;
  record.yEnabled = 1;
  slot.dExposure = kAttachExposure;
  WriteSlotHostValues(slot);
  record.iCamNum = number;
  host_interface::Store(system.aiCamIndex[number], number);
  // Last: another thread that sees the slot attached sees it complete.
  host_interface::Store(slot.yAttached, 1);
}

}  // namespace tavro::parameters
