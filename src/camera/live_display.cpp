#include "camera/live_display.h"

#include <algorithm>
#include <cstddef>

namespace tavro::camera {

LiveDisplayPlan PlanLiveDisplay(const LiveDisplaySource& source) {
  LiveDisplayPlan plan;
  if (source.display == nullptr) return plan;
  const ptrdiff_t pitch = source.pitch;
  DisplayArea area;
  area.columns = std::min(source.width, source.widthMax);
  area.rows = std::min(source.height, source.heightMax);
  area.stride = source.displayStride;
  area.pixels = source.display + ptrdiff_t{source.grey.firstRow} * source.displayStride;
  if (area.columns <= 0 || area.rows <= 0) return plan;

  const auto rowStart = [pitch](const LivePlane& plane) -> const uint8_t* {
    return plane.bits != nullptr ? plane.bits + pitch * plane.firstRow : nullptr;
  };
  plan.area = area;
  plan.pitch = pitch;
  plan.colour = source.colour && source.red.bits && source.green.bits && source.blue.bits;
  if (plan.colour) {
    plan.red = rowStart(source.red);
    plan.green = rowStart(source.green);
    plan.blue = rowStart(source.blue);
  } else {
    plan.grey = rowStart(source.grey);
  }
  return plan;
}

void DrawLiveDisplay(const LiveDisplayPlan& plan) {
  if (plan.colour) {
    DrawColour(plan.red, plan.green, plan.blue, plan.pitch, plan.area);
  } else {
    DrawGrey(plan.grey, plan.pitch, plan.area);
  }
}

void DrawLiveDisplay(const LiveDisplaySource& source) {
  DrawLiveDisplay(PlanLiveDisplay(source));
}

}  // namespace tavro::camera
