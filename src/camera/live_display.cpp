#include "camera/live_display.h"

#include <algorithm>
#include <cstddef>

#include "camera/display_drawing.h"

namespace tavro::camera {

void DrawLiveDisplay(const LiveDisplaySource& source) {
  if (source.display == nullptr || source.grey == nullptr) return;
  if (source.displayStride <= 0 || source.displayFirstRow < 0 || source.pitch <= 0) return;
  DisplayArea area;
  // A display row holds `displayStride` pixels; drawing more would run into
  // the next row and, on the last one, past the buffer.
  area.columns = std::min({source.width, source.widthMax, source.displayStride});
  area.rows = std::min(source.height, source.heightMax);
  area.stride = source.displayStride;
  area.pixels = source.display + ptrdiff_t{source.displayFirstRow} * source.displayStride;
  if (area.columns <= 0 || area.rows <= 0) return;

  const ptrdiff_t pitch = source.pitch;
  if (source.colour && source.red && source.green && source.blue) {
    DrawColour(source.red, source.green, source.blue, pitch, area);
  } else {
    DrawGrey(source.grey, pitch, area);
  }
}

}  // namespace tavro::camera
