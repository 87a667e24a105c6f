#include "camera/live_display.h"

#include <algorithm>

namespace tavro::camera {

LiveDisplayPlan PlanLiveDisplay(const LiveDisplaySource& source) {
  LiveDisplayPlan plan;
  if (source.display == nullptr || source.grey == nullptr) return plan;
  if (source.displayStride <= 0 || source.displayFirstRow < 0 || source.pitch <= 0) return plan;
  DisplayArea area;
  // A display row holds `displayStride` pixels; drawing more would run into
  // the next row and, on the last one, past the buffer.
  area.columns = std::min({source.width, source.widthMax, source.displayStride});
  area.rows = std::min(source.height, source.heightMax);
  area.stride = source.displayStride;
  area.pixels = source.display + ptrdiff_t{source.displayFirstRow} * source.displayStride;
  if (area.columns <= 0 || area.rows <= 0) return plan;

  plan.area = area;
  plan.pitch = source.pitch;
  plan.colour = source.colour && source.red && source.green && source.blue;
  if (plan.colour) {
    plan.red = source.red;
    plan.green = source.green;
    plan.blue = source.blue;
  } else {
    plan.grey = source.grey;
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
