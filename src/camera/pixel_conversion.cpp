#include "camera/pixel_conversion.h"

#include <emmintrin.h>
#include <tmmintrin.h>

#include <algorithm>
#include <cstring>

namespace tavro::camera {
namespace {

struct PlaneRow {
  uint8_t* grey;
  uint8_t* red;
  uint8_t* green;
  uint8_t* blue;
};

using RowKernel = void (*)(const uint8_t* source, const PlaneRow& row, size_t pixels);

void MonoToGrey(const uint8_t* source, const PlaneRow& row, size_t pixels) {
  std::memcpy(row.grey, source, pixels);
}

void MonoToAllPlanes(const uint8_t* source, const PlaneRow& row, size_t pixels) {
  std::memcpy(row.grey, source, pixels);
  std::memcpy(row.red, source, pixels);
  std::memcpy(row.green, source, pixels);
  std::memcpy(row.blue, source, pixels);
}

// The planes never alias the frame or each other; saying so lets the
// compiler keep the loops tight.
void BgrToPlanesScalar(const uint8_t* __restrict source, const PlaneRow& row, size_t from,
                       size_t to) {
  for (size_t x = from; x < to; ++x) {
    const uint8_t* pixel = source + 3 * x;
    if (row.red != nullptr) {
      row.blue[x] = pixel[0];
      row.green[x] = pixel[1];
      row.red[x] = pixel[2];
    }
    row.grey[x] = GreyFromRgb(pixel[2], pixel[1], pixel[0]);
  }
}

// Luma of four pixels whose bytes sit in the low 16 bits of each 32-bit
// lane. The green weight (38470) does not fit a signed 16-bit factor, so it
// is split in two halves paired with red and with blue: two multiply-adds
// give the exact 32-bit sums of the scalar definition.
__attribute__((target("ssse3"))) inline __m128i Luma4(__m128i red, __m128i green, __m128i blue) {
  const __m128i redWeights = _mm_set1_epi32(19595 | (19235 << 16));
  const __m128i blueWeights = _mm_set1_epi32(7471 | (19235 << 16));
  const __m128i greenHigh = _mm_slli_epi32(green, 16);
  const __m128i sum = _mm_add_epi32(_mm_madd_epi16(_mm_or_si128(red, greenHigh), redWeights),
                                    _mm_madd_epi16(_mm_or_si128(blue, greenHigh), blueWeights));
  return _mm_srli_epi32(sum, 16);
}

// Luma of eight pixels given as 16-bit lanes, as eight 16-bit lanes.
__attribute__((target("ssse3"))) inline __m128i Luma8(__m128i red, __m128i green, __m128i blue) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i low = Luma4(_mm_unpacklo_epi16(red, zero), _mm_unpacklo_epi16(green, zero),
                            _mm_unpacklo_epi16(blue, zero));
  const __m128i high = Luma4(_mm_unpackhi_epi16(red, zero), _mm_unpackhi_epi16(green, zero),
                             _mm_unpackhi_epi16(blue, zero));
  return _mm_packs_epi32(low, high);  // values are at most 255
}

// Sixteen pixels (48 bytes) per step: byte shuffles pull each channel out of
// the three loads, then the luma is formed in 32-bit lanes.
__attribute__((target("ssse3"))) size_t BgrToPlanesVector(const uint8_t* source,
                                                          const PlaneRow& row, size_t pixels) {
  // For channel c, the byte of pixel i sits at 3i + c of the 48 bytes; each
  // mask gathers the bytes one load holds, -1 zeroes the rest.
  const auto mask = [](int channel, int load) {
    alignas(16) int8_t bytes[16];
    for (int i = 0; i < 16; ++i) {
      const int at = 3 * i + channel - 16 * load;
      bytes[i] = static_cast<int8_t>(at >= 0 && at < 16 ? at : -1);
    }
    return _mm_load_si128(reinterpret_cast<const __m128i*>(bytes));
  };
  const __m128i masks[3][3] = {{mask(0, 0), mask(0, 1), mask(0, 2)},
                               {mask(1, 0), mask(1, 1), mask(1, 2)},
                               {mask(2, 0), mask(2, 1), mask(2, 2)}};
  const __m128i zero = _mm_setzero_si128();
  size_t x = 0;
  for (; x + 16 <= pixels; x += 16) {
    const uint8_t* in = source + 3 * x;
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 16));
    const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 32));
    __m128i channel[3];
    for (int k = 0; k < 3; ++k) {
      channel[k] = _mm_or_si128(
          _mm_or_si128(_mm_shuffle_epi8(a, masks[k][0]), _mm_shuffle_epi8(b, masks[k][1])),
          _mm_shuffle_epi8(c, masks[k][2]));
    }
    const __m128i& blue = channel[0];
    const __m128i& green = channel[1];
    const __m128i& red = channel[2];
    if (row.red != nullptr) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(row.blue + x), blue);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(row.green + x), green);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(row.red + x), red);
    }
    const __m128i low = Luma8(_mm_unpacklo_epi8(red, zero), _mm_unpacklo_epi8(green, zero),
                              _mm_unpacklo_epi8(blue, zero));
    const __m128i high = Luma8(_mm_unpackhi_epi8(red, zero), _mm_unpackhi_epi8(green, zero),
                               _mm_unpackhi_epi8(blue, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(row.grey + x), _mm_packus_epi16(low, high));
  }
  return x;
}

// Byte shuffles need SSSE3, which every x86-64 processor of the last
// fifteen years has; the scalar loop serves the rest.
bool HasShuffle() {
  static const bool has = [] {
    __builtin_cpu_init();  // may run before the library's own initialisation
    return __builtin_cpu_supports("ssse3") != 0;
  }();
  return has;
}

// Grey alone (red null) or grey and the three colour planes.
void BgrToPlanes(const uint8_t* source, const PlaneRow& row, size_t pixels) {
  const size_t done = HasShuffle() ? BgrToPlanesVector(source, row, pixels) : 0;
  BgrToPlanesScalar(source, row, done, pixels);
}

// Indexed by [source is BGR][destination has colour planes].
constexpr RowKernel kKernels[2][2] = {{MonoToGrey, MonoToAllPlanes}, {BgrToPlanes, BgrToPlanes}};

size_t BytesPerPixel(const SourceFrame& frame) {
  return frame.bgr ? 3 : 1;
}

}  // namespace

CopyRegion DeliveryRegion(const SourceFrame& frame, const HostPlanes& planes,
                          int32_t copyLimitWidth, int32_t copyLimitHeight) {
  CopyRegion region;
  region.columns = std::min({planes.width, copyLimitWidth, frame.width});
  region.rows = std::min({planes.height, copyLimitHeight, frame.height});
  if (region.columns <= 0 || region.rows <= 0 || frame.base == nullptr) return CopyRegion{};

  // A buffer shorter than width x height (a partial frame) bounds the rows
  // too; the last row read must end inside it.
  const size_t sourceStride = static_cast<size_t>(frame.width) * BytesPerPixel(frame);
  const size_t lastRowBytes = static_cast<size_t>(region.columns) * BytesPerPixel(frame);
  if (frame.size < lastRowBytes) return CopyRegion{};
  const size_t rowsInBuffer = (frame.size - lastRowBytes) / sourceStride + 1;
  if (rowsInBuffer < static_cast<size_t>(region.rows)) {
    region.rows = static_cast<int32_t>(rowsInBuffer);
  }
  return region;
}

void ConvertFrame(const SourceFrame& frame, const HostPlanes& planes, CopyRegion region) {
  if (planes.grey == nullptr || region.columns <= 0 || region.rows <= 0) return;
  const bool colour = planes.colour && planes.red && planes.green && planes.blue;
  const RowKernel kernel = kKernels[frame.bgr ? 1 : 0][colour ? 1 : 0];

  const ptrdiff_t sourceStride =
      static_cast<ptrdiff_t>(frame.width) * static_cast<ptrdiff_t>(BytesPerPixel(frame));
  const ptrdiff_t pitch = planes.pitch;
  for (int32_t y = 0; y < region.rows; ++y) {
    const ptrdiff_t offset = pitch * y;
    const PlaneRow row{planes.grey + offset, colour ? planes.red + offset : nullptr,
                       colour ? planes.green + offset : nullptr,
                       colour ? planes.blue + offset : nullptr};
    kernel(frame.base + sourceStride * y, row, static_cast<size_t>(region.columns));
  }
}

}  // namespace tavro::camera
