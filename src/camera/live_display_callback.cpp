#include "camera/live_display_callback.h"

#include <atomic>

#include "camera/live_display.h"
#include "host_interface/acquisition_table.h"
#include "tavro/tavro_host.h"

namespace tavro::camera {
namespace {

bool IsLiveImage(const SystemRecord* system, const CamImage* image) {
  return system != nullptr && system->yLive != 0 && system->ptLiveImage == image;
}

const PlaneInfo* PlaneOf(const CamImage* image) {
  return image != nullptr ? image->ptPlane : nullptr;
}

LivePlane LivePlaneOf(const PlaneInfo* plane) {
  return plane != nullptr ? LivePlane{plane->pBits, plane->iFirstRow} : LivePlane{};
}

bool WantsColour(const CamImage& image, const HostView* view) {
  const CameraInfo* info = image.ptCamera;
  return view != nullptr && view->yColourDisplay != 0 && info != nullptr &&
         info->yColourPlanes != 0 && image.qwColourDisplay != 0 && PlaneOf(image.ptRed) &&
         PlaneOf(image.ptGreen) && PlaneOf(image.ptBlue);
}

}  // namespace

bool LiveDisplayOf(void* argument, LiveDisplaySource* source) {
  const auto* entry = static_cast<const host_interface::TavroCamAcq*>(argument);
  if (entry == nullptr || entry->ptCamImage == nullptr) return false;
  const CamImage& image = *entry->ptCamImage;
  const PlaneInfo* primary = image.ptPlane;
  if (!IsLiveImage(entry->ptSystem, &image) || primary == nullptr) return false;

  const HostView* view = image.ptCamera != nullptr ? image.ptCamera->ptHostView : nullptr;
  *source = LiveDisplaySource{};
  source->grey = LivePlaneOf(primary);
  source->width = primary->iWidth;
  source->height = primary->iHeight;
  source->pitch = primary->iPitch;
  source->widthMax = entry->iWidthMax;
  source->heightMax = entry->iHeightMax;
  source->colour = WantsColour(image, view);
  if (source->colour) {
    source->red = LivePlaneOf(PlaneOf(image.ptRed));
    source->green = LivePlaneOf(PlaneOf(image.ptGreen));
    source->blue = LivePlaneOf(PlaneOf(image.ptBlue));
  }
  if (image.ptLiveBuffer != nullptr) {
    source->display = image.ptLiveBuffer->plPixels;
    source->displayStride = image.ptLiveBuffer->iStride;
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
