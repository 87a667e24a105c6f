#include "camera/live_display_callback.h"

#include <atomic>

#include "camera/destination_binding.h"
#include "camera/live_display.h"
#include "host_interface/acquisition_table.h"
#include "host_interface/shared_fields.h"
#include "tavro/tavro_host.h"

namespace tavro::camera {
namespace {

bool IsLiveImage(const SystemRecord* system, const CamImage* image) {
  return system != nullptr && host_interface::Load(system->yLive) != 0 &&
         host_interface::Load(system->ptLiveImage) == image;
}

// The colour display also needs the host's consent in the view and the
// image; without it the display shows grey.
bool WantsColour(const CamImage& image, const HostView* view, const Destination& planes) {
  return planes.colour && view != nullptr && view->yColourDisplay != 0 &&
         image.qwColourDisplay != 0;
}

}  // namespace

bool LiveDisplayOf(void* argument, LiveDisplaySource* source) {
  const auto* entry = static_cast<const host_interface::TavroCamAcq*>(argument);
  if (entry == nullptr || entry->ptCamImage == nullptr) return false;
  const CamImage& image = *entry->ptCamImage;
  if (!IsLiveImage(entry->ptSystem, &image) || image.ptPlane == nullptr) return false;

  // The display shows what delivery wrote, bounded by the same planes: the
  // host's records are read afresh, as the host may change them between
  // frames.
  const Destination planes = DestinationOf(image);
  const HostView* view = image.ptCamera != nullptr ? image.ptCamera->ptHostView : nullptr;
  *source = LiveDisplaySource{};
  source->grey = planes.grey;
  source->width = planes.width;
  source->height = planes.height;
  source->pitch = planes.pitch;
  source->widthMax = entry->iWidthMax;
  source->heightMax = entry->iHeightMax;
  source->colour = WantsColour(image, view, planes);
  if (source->colour) {
    source->red = planes.red;
    source->green = planes.green;
    source->blue = planes.blue;
  }
  if (image.ptLiveBuffer != nullptr) {
    source->display = image.ptLiveBuffer->plPixels;
    source->displayStride = image.ptLiveBuffer->iStride;
    source->displayFirstRow = image.ptPlane->iFirstRow;
  }
  return true;
}

void ReportLiveFrame(void* argument) {
  const auto* entry = static_cast<const host_interface::TavroCamAcq*>(argument);
  if (entry == nullptr || entry->ptCamImage == nullptr) return;
  const CamImage& image = *entry->ptCamImage;
  const HostView* view = image.ptCamera != nullptr ? image.ptCamera->ptHostView : nullptr;
  if (IsLiveImage(entry->ptSystem, &image) && view != nullptr && view->ptDisplay != nullptr) {
    // The host polls the flag from its own threads; the release store makes
    // the drawn display visible to whoever sees the flag.
    std::atomic_ref<uint32_t>(view->ptDisplay->yNewLiveFrame).store(1, std::memory_order_release);
  }
}

void LiveDisplayCallback(void* argument) {
  LiveDisplaySource source;
  if (!LiveDisplayOf(argument, &source)) return;
  DrawLiveDisplay(source);
  ReportLiveFrame(argument);
}

}  // namespace tavro::camera
