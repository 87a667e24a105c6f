#include "camera/live_delivery.h"

#include <algorithm>
#include <cstdint>

namespace tavro::camera {
namespace {

// A byte range, compared as integers since its ends belong to unrelated
// allocations.
struct Span {
  uintptr_t first = 0;
  uintptr_t end = 0;
  bool Overlaps(const Span& other) const { return first < other.end && other.first < end; }
};

Span RowsOf(const void* start, ptrdiff_t rowBytes, int32_t rows, size_t lastRowBytes) {
  const auto first = reinterpret_cast<uintptr_t>(start);
  return {first, first + static_cast<uintptr_t>(rowBytes * (rows - 1)) + lastRowBytes};
}

}  // namespace

FusedDisplay FusableDisplay(const SourceFrame& frame, const HostPlanes& planes, CopyRegion region,
                            const LiveDisplayPlan& plan) {
  const DisplayArea& area = plan.area;
  if (area.pixels == nullptr || planes.grey == nullptr || frame.base == nullptr) return {};
  const int32_t columns = std::min(area.columns, region.columns);
  const int32_t rows = std::min(area.rows, region.rows);
  // Rows that go forward without overlapping their neighbours keep the
  // spans below simple.
  if (columns <= 0 || rows <= 0 || area.stride < columns || planes.pitch < region.columns ||
      plan.pitch != planes.pitch) {
    return {};
  }
  const bool colourPlanes = planes.colour && planes.red && planes.green && planes.blue;
  if (plan.colour) {
    if (!colourPlanes || plan.red != planes.red || plan.green != planes.green ||
        plan.blue != planes.blue) {
      return {};
    }
  } else if (plan.grey != planes.grey) {
    return {};
  }

  const Span display = RowsOf(area.pixels, area.stride * ptrdiff_t{sizeof(uint32_t)}, area.rows,
                              static_cast<size_t>(area.columns) * sizeof(uint32_t));
  const Span source = {reinterpret_cast<uintptr_t>(frame.base),
                       reinterpret_cast<uintptr_t>(frame.base) + frame.size};
  if (display.Overlaps(source)) return {};
  for (const uint8_t* plane : {planes.grey, planes.red, planes.green, planes.blue}) {
    if (plane == nullptr || (plane != planes.grey && !colourPlanes)) continue;
    const Span written =
        RowsOf(plane, planes.pitch, region.rows, static_cast<size_t>(region.columns));
    if (display.Overlaps(written)) return {};
  }
  return {area.pixels, area.stride, columns, rows, plan.colour};
}

void DeliverLiveFrame(const SourceFrame& frame, const HostPlanes& planes, CopyRegion region,
                      LiveDisplayPlan plan) {
  const FusedDisplay fused = FusableDisplay(frame, planes, region, plan);
  ConvertFrame(frame, planes, region, fused);
  plan.area.drawnColumns = fused.pixels != nullptr ? fused.columns : 0;
  plan.area.drawnRows = fused.pixels != nullptr ? fused.rows : 0;
  DrawLiveDisplay(plan);
}

}  // namespace tavro::camera
