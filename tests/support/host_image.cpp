#include "support/host_image.h"

#include <algorithm>
#include <atomic>
#include <thread>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#endif

namespace tavro::testing {

template <typename T>
GuardedMemory<T>::~GuardedMemory() {
  Poison(false);
}

template <typename T>
void GuardedMemory<T>::Reset(size_t count, T fill) {
  Poison(false);
  storage_.assign(count + 2 * kGuard, kGuardValue);
  std::fill_n(storage_.begin() + kGuard, count, fill);
  count_ = count;
  Poison(true);
}

template <typename T>
bool GuardedMemory<T>::GuardsIntact() const {
#if defined(__SANITIZE_ADDRESS__)
  return true;  // a touch of a poisoned guard has already been reported
#else
  const auto intact = [](auto first, auto last) {
    return std::all_of(first, last, [](T value) { return value == kGuardValue; });
  };
  return intact(storage_.begin(), storage_.begin() + kGuard) &&
         intact(storage_.end() - kGuard, storage_.end());
#endif
}

template <typename T>
void GuardedMemory<T>::Poison([[maybe_unused]] bool poisoned) {
#if defined(__SANITIZE_ADDRESS__)
  if (storage_.empty()) return;
  const size_t bytes = kGuard * sizeof(T);
  const T* after = storage_.data() + kGuard + count_;
  if (poisoned) {
    ASAN_POISON_MEMORY_REGION(storage_.data(), bytes);
    ASAN_POISON_MEMORY_REGION(after, bytes);
  } else {
    ASAN_UNPOISON_MEMORY_REGION(storage_.data(), bytes);
    ASAN_UNPOISON_MEMORY_REGION(after, bytes);
  }
#endif
}

template class GuardedMemory<uint8_t>;
template class GuardedMemory<uint32_t>;

HostPlane::HostPlane(int32_t width, int32_t height, int32_t pitch, int32_t firstRow)
    : HostPlane(static_cast<size_t>(pitch > 0 ? pitch : 0) * (firstRow + height), width, height,
                pitch, firstRow) {}

HostPlane::HostPlane(size_t bytes, int32_t width, int32_t height, int32_t pitch, int32_t firstRow)
    : memory(bytes, kFill) {
  info.pBits = memory.data();
  info.iWidth = width;
  info.iHeight = height;
  info.iPitch = pitch;
  info.iFirstRow = firstRow;
}

HostImage::HostImage(int16_t cameraId, int32_t width, int32_t height, bool colourPlanes) {
  // A few spare bytes per row and rows above the image, as host planes have.
  const int32_t pitch = width + 5;
  grey = std::make_unique<HostPlane>(width, height, pitch, 2);
  image.lMagic = TAVRO_IMAGE_MAGIC;
  image.ptCamera = &info;
  image.ptPlane = &grey->info;
  info.iCamId = cameraId;
  info.yColourPlanes = colourPlanes ? 1 : 0;
  if (!colourPlanes) return;
  red = std::make_unique<HostPlane>(width, height, pitch, 2);
  green = std::make_unique<HostPlane>(width, height, pitch, 2);
  blue = std::make_unique<HostPlane>(width, height, pitch, 2);
  redImage.ptPlane = &red->info;
  greenImage.ptPlane = &green->info;
  blueImage.ptPlane = &blue->info;
  image.ptRed = &redImage;
  image.ptGreen = &greenImage;
  image.ptBlue = &blueImage;
}

void HostImage::SetPlane(int index, std::unique_ptr<HostPlane> plane) {
  std::unique_ptr<HostPlane>* planes[] = {&grey, &red, &green, &blue};
  CamImage* images[] = {&image, &redImage, &greenImage, &blueImage};
  images[index]->ptPlane = &plane->info;
  *planes[index] = std::move(plane);
}

bool HostImage::GuardsIntact() const {
  for (const auto* plane : {&grey, &red, &green, &blue}) {
    if (*plane && !(*plane)->memory.GuardsIntact()) return false;
  }
  return true;
}

void HostImage::SetAoi(int32_t left, int32_t top, int32_t right, int32_t bottom) {
  image.yAoi = 1;
  image.iAoiLeft = left;
  image.iAoiTop = top;
  image.iAoiRight = right;
  image.iAoiBottom = bottom;
}

LiveImage::LiveImage(int16_t cameraId, int32_t width, int32_t height, bool colour)
    : HostImage(cameraId, width, height, colour) {
  // A stride wider than the image, so that a display row that runs over
  // shows up in the spare pixels; as tall as the planes' memory, since the
  // display starts at their first row.
  SetLiveBuffer(static_cast<size_t>(width + 3) * (grey->info.iFirstRow + height), width + 3);
  image.ptLiveBuffer = &live;
  display.qwLiveDisplayTag = kDisplayTag;
  view.ptDisplay = &display;
  view.yColourDisplay = colour ? 1 : 0;
  image.qwColourDisplay = colour ? 1 : 0;
  info.ptHostView = &view;
}

void LiveImage::SetLiveBuffer(size_t pixels, int32_t stride) {
  livePixels.Reset(pixels, kDisplayFill);
  live.plPixels = livePixels.data();
  live.iStride = stride;
}

bool LiveImage::GuardsIntact() const {
  return HostImage::GuardsIntact() && livePixels.GuardsIntact();
}

uint32_t LiveImage::NewFrameFlag() {
  return std::atomic_ref<uint32_t>(display.yNewLiveFrame).load(std::memory_order_acquire);
}

void LiveImage::ClearNewFrameFlag() {
  std::atomic_ref<uint32_t>(display.yNewLiveFrame).store(0, std::memory_order_relaxed);
}

bool LiveImage::WaitForNewFrame(std::chrono::seconds bound) {
  const auto deadline = std::chrono::steady_clock::now() + bound;
  while (NewFrameFlag() == 0) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

}  // namespace tavro::testing
