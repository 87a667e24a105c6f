#include "host_image.h"

#include <png.h>

#include <atomic>
#include <csetjmp>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace tavro_host {

Plane::Plane(int32_t width, int32_t height)
    : memory(static_cast<size_t>(width) * static_cast<size_t>(height)) {
  info.pBits = memory.data();
  info.iWidth = width;
  info.iHeight = height;
  info.iPitch = width;
  image.ptPlane = &info;
}

uint8_t Plane::At(int32_t x, int32_t y) const {
  return memory[static_cast<size_t>(info.iPitch) * (info.iFirstRow + y) + x];
}

HostImage::HostImage(int16_t cameraId, int32_t width, int32_t height, bool colourPlanes)
    : grey(width, height),
      red(width, height),
      green(width, height),
      blue(width, height),
      colour(colourPlanes) {
  info.iCamId = cameraId;
  info.yColourPlanes = colourPlanes ? 1 : 0;
  image.lMagic = TAVRO_IMAGE_MAGIC;
  image.ptCamera = &info;
  image.ptPlane = &grey.info;
  image.ptRed = &red.image;
  image.ptGreen = &green.image;
  image.ptBlue = &blue.image;
}

std::vector<const Plane*> HostImage::planes() const {
  if (colour) return {&red, &green, &blue};
  return {&grey};
}

LiveImage::LiveImage(int16_t cameraId, int32_t width, int32_t height, bool colourDisplay)
    : HostImage(cameraId, width, height, colourDisplay) {
  buffer.iStride = width;
  pixels.assign(static_cast<size_t>(width) * (grey.info.iFirstRow + height), 0);
  buffer.plPixels = pixels.data();
  image.ptLiveBuffer = &buffer;
  view.ptDisplay = &display;
  view.yColourDisplay = colourDisplay ? 1 : 0;
  image.qwColourDisplay = colourDisplay ? 1 : 0;
  info.ptHostView = &view;
}

bool LiveImage::TakeNewFrame() {
  std::atomic_ref<uint32_t> flag(display.yNewLiveFrame);
  if (flag.load(std::memory_order_acquire) == 0) return false;
  flag.store(0, std::memory_order_relaxed);
  return true;
}

void WritePng(const std::string& path, int32_t width, int32_t height, bool rgb,
              const RowFiller& fill) {
  std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
  if (!file) throw std::runtime_error("cannot write " + path);
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png ? png_create_info_struct(png) : nullptr;
  if (info == nullptr) {
    png_destroy_write_struct(&png, nullptr);
    throw std::runtime_error("libpng cannot start");
  }
  // Allocated before the jump point, so that a longjmp leaks nothing.
  std::vector<png_byte> row(static_cast<size_t>(width) * (rgb ? 3 : 1));
  if (setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    throw std::runtime_error("libpng failed writing " + path);
  }
  png_init_io(png, file.get());
  png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
               rgb ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  for (int32_t y = 0; y < height; ++y) {
    fill(y, row.data());
    png_write_row(png, row.data());
  }
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
}

void WritePlanesPng(const std::string& path, const HostImage& image) {
  const std::vector<const Plane*> planes = image.planes();
  const size_t count = planes.size();
  WritePng(path, image.width(), image.height(), count == 3, [&](int32_t y, uint8_t* row) {
    for (int32_t x = 0; x < image.width(); ++x) {
      for (size_t c = 0; c < count; ++c) row[x * count + c] = planes[c]->At(x, y);
    }
  });
}

}  // namespace tavro_host
