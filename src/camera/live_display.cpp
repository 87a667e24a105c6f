#include "camera/live_display.h"

#include <algorithm>
#include <cstddef>

#include "camera/display_drawing.h"

namespace tavro::camera {

void DrawLiveDisplay(const LiveDisplaySource& source) {
  if (source.display == nullptr) return;
  const ptrdiff_t pitch = source.pitch;
  DisplayArea area;
  area.columns = std::min(source.width, source.widthMax);
  area.rows = std::min(source.height, source.heightMax);
  area.stride = source.displayStride;
  area.pixels = source.display + ptrdiff_t{source.grey.firstRow} * source.displayStride;
  if (area.columns <= 0 || area.rows <= 0) return;

  const auto rowStart = [pitch](const LivePlane& plane) {
    return plane.bits + pitch * plane.firstRow;
  };
  if (source.colour && source.red.bits && source.green.bits && source.blue.bits) {
    DrawColour(rowStart(source.red), rowStart(source.green), rowStart(source.blue), pitch, area);
  } else {
    DrawGrey(source.grey.bits ? rowStart(source.grey) : nullptr, pitch, area);
  }
}

}  // namespace tavro::camera
