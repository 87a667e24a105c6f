// Frame delivery into host planes, each beside a plain memcpy of the same
// frame so that the ratio can be read off one run.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "camera/display_drawing.h"
#include "camera/live_delivery.h"
#include "camera/pixel_conversion.h"

namespace {

constexpr int32_t kWidth = 1936;
constexpr int32_t kHeight = 1216;

std::vector<uint8_t> Frame(bool bgr) {
  std::vector<uint8_t> frame(static_cast<size_t>(kWidth) * kHeight * (bgr ? 3 : 1));
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = static_cast<uint8_t>(i * 31 + (i >> 11));
  return frame;
}

struct Planes {
  std::vector<uint8_t> grey, red, green, blue;
  Planes() : grey(kWidth * kHeight), red(grey.size()), green(grey.size()), blue(grey.size()) {}
  tavro::camera::HostPlanes View(bool colour) {
    return {grey.data(),
            colour ? red.data() : nullptr,
            colour ? green.data() : nullptr,
            colour ? blue.data() : nullptr,
            kWidth,
            kHeight,
            kWidth,
            colour};
  }
};

void Deliver(benchmark::State& state, bool bgr, bool colour) {
  const std::vector<uint8_t> data = Frame(bgr);
  const tavro::camera::SourceFrame frame{data.data(), data.size(), kWidth, kHeight, bgr};
  Planes planes;
  const tavro::camera::HostPlanes view = planes.View(colour);
  for (auto _ : state) {
    tavro::camera::ConvertFrame(frame, view,
                                tavro::camera::DeliveryRegion(frame, view, kWidth, kHeight));
    benchmark::DoNotOptimize(planes.grey.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.size()));
}

void Memcpy(benchmark::State& state, bool bgr) {
  const std::vector<uint8_t> data = Frame(bgr);
  std::vector<uint8_t> copy(data.size());
  for (auto _ : state) {
    std::memcpy(copy.data(), data.data(), data.size());
    benchmark::DoNotOptimize(copy.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * data.size()));
}

void BM_DeliverBgr8IntoGreyAndColour(benchmark::State& state) {
  Deliver(state, true, true);
}
void BM_DeliverBgr8IntoGrey(benchmark::State& state) {
  Deliver(state, true, false);
}
void BM_MemcpyBgr8Frame(benchmark::State& state) {
  Memcpy(state, true);
}
void BM_DeliverMono8IntoGrey(benchmark::State& state) {
  Deliver(state, false, false);
}
void BM_MemcpyMono8Frame(benchmark::State& state) {
  Memcpy(state, false);
}

// The live display of the same frame, grey and colour.
void BM_LiveDisplayGrey(benchmark::State& state) {
  Planes planes;
  std::vector<uint32_t> display(planes.grey.size());
  for (auto _ : state) {
    tavro::camera::DrawGrey(planes.grey.data(), kWidth, {display.data(), kWidth, kWidth, kHeight});
    benchmark::DoNotOptimize(display.data());
    benchmark::ClobberMemory();
  }
}

void BM_LiveDisplayColour(benchmark::State& state) {
  Planes planes;
  std::vector<uint32_t> display(planes.grey.size());
  for (auto _ : state) {
    tavro::camera::DrawColour(planes.red.data(), planes.green.data(), planes.blue.data(), kWidth,
                              {display.data(), kWidth, kWidth, kHeight});
    benchmark::DoNotOptimize(display.data());
    benchmark::ClobberMemory();
  }
}

// A copy of the live display's bytes, for the display rows beside it.
void BM_MemcpyDisplay(benchmark::State& state) {
  std::vector<uint32_t> from(size_t{kWidth} * kHeight, 1), to(from.size());
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), from.size() * sizeof(uint32_t));
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
  }
}

// A live "BGR8" frame into grey and colour planes with the colour display:
// in one pass, and in two (delivery, then drawing from the planes). The two
// rows share their working set, unlike the delivery and display rows above.
void LiveBgr8WithColourDisplay(benchmark::State& state, bool onePass) {
  const std::vector<uint8_t> data = Frame(true);
  const tavro::camera::SourceFrame frame{data.data(), data.size(), kWidth, kHeight, true};
  Planes planes;
  const tavro::camera::HostPlanes view = planes.View(true);
  std::vector<uint32_t> display(planes.grey.size());
  tavro::camera::LiveDisplayPlan plan;
  plan.area = {display.data(), kWidth, kWidth, kHeight};
  plan.colour = true;
  plan.red = planes.red.data();
  plan.green = planes.green.data();
  plan.blue = planes.blue.data();
  plan.pitch = kWidth;
  const tavro::camera::CopyRegion region =
      tavro::camera::DeliveryRegion(frame, view, kWidth, kHeight);
  for (auto _ : state) {
    if (onePass) {
      tavro::camera::DeliverLiveFrame(frame, view, region, plan);
    } else {
      tavro::camera::ConvertFrame(frame, view, region);
      tavro::camera::DrawLiveDisplay(plan);
    }
    benchmark::DoNotOptimize(display.data());
    benchmark::ClobberMemory();
  }
}

void BM_LiveBgr8WithColourDisplayOnePass(benchmark::State& state) {
  LiveBgr8WithColourDisplay(state, true);
}
void BM_LiveBgr8WithColourDisplayTwoPasses(benchmark::State& state) {
  LiveBgr8WithColourDisplay(state, false);
}

BENCHMARK(BM_DeliverBgr8IntoGreyAndColour)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_DeliverBgr8IntoGrey)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MemcpyBgr8Frame)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_DeliverMono8IntoGrey)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MemcpyMono8Frame)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LiveDisplayGrey)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LiveDisplayColour)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MemcpyDisplay)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LiveBgr8WithColourDisplayOnePass)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LiveBgr8WithColourDisplayTwoPasses)->Unit(benchmark::kMicrosecond);

}  // namespace
