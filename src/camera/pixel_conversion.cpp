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

// A shuffle mask from 16 byte positions (-1 gives zero).
inline __m128i ByteMask(const int8_t (&positions)[16]) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(positions));
}

// Luma of the four pixels in bytes 0 to 11 of `pixels`, one per 32-bit lane.
// The green weight (38470) does not fit a signed 16-bit factor, so it is
// split in halves, one beside red and one beside blue: two multiply-adds of
// 16-bit pairs give the exact sums of the scalar definition.
__attribute__((target("ssse3"))) inline __m128i Luma4(__m128i pixels) {
  const __m128i redGreen = ByteMask({2, -1, 1, -1, 5, -1, 4, -1, 8, -1, 7, -1, 11, -1, 10, -1});
  const __m128i blueGreen = ByteMask({0, -1, 1, -1, 3, -1, 4, -1, 6, -1, 7, -1, 9, -1, 10, -1});
  const __m128i sum = _mm_add_epi32(
      _mm_madd_epi16(_mm_shuffle_epi8(pixels, redGreen), _mm_set1_epi32(19595 | (19235 << 16))),
      _mm_madd_epi16(_mm_shuffle_epi8(pixels, blueGreen), _mm_set1_epi32(7471 | (19235 << 16))));
  return _mm_srli_epi32(sum, 16);
}

// The shuffles that gather one channel of sixteen pixels from the three
// loads holding them: the byte of pixel i sits at 3i + channel of the 48.
struct ChannelMasks {
  __m128i part[3];

  explicit ChannelMasks(int channel) {
    for (int load = 0; load < 3; ++load) {
      alignas(16) int8_t positions[16];
      for (int i = 0; i < 16; ++i) {
        const int at = 3 * i + channel - 16 * load;
        positions[i] = static_cast<int8_t>(at >= 0 && at < 16 ? at : -1);
      }
      part[load] = _mm_load_si128(reinterpret_cast<const __m128i*>(positions));
    }
  }
};

__attribute__((target("ssse3"))) inline __m128i Channel(const ChannelMasks& masks, __m128i a,
                                                        __m128i b, __m128i c) {
  return _mm_or_si128(
      _mm_or_si128(_mm_shuffle_epi8(a, masks.part[0]), _mm_shuffle_epi8(b, masks.part[1])),
      _mm_shuffle_epi8(c, masks.part[2]));
}

// Sixteen pixels (48 bytes) per step. The luma works on four groups of four
// pixels, each moved to the start of a register; the colour planes, when
// wanted, take one byte shuffle per load and channel.
__attribute__((target("ssse3"))) size_t BgrToPlanesVector(const uint8_t* source,
                                                          const PlaneRow& row, size_t pixels) {
  static const ChannelMasks blue(0), green(1), red(2);
  size_t x = 0;
  for (; x + 16 <= pixels; x += 16) {
    const uint8_t* in = source + 3 * x;
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 16));
    const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 32));
    const __m128i first = _mm_packs_epi32(Luma4(a), Luma4(_mm_alignr_epi8(b, a, 12)));
    const __m128i second =
        _mm_packs_epi32(Luma4(_mm_alignr_epi8(c, b, 8)), Luma4(_mm_srli_si128(c, 4)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(row.grey + x), _mm_packus_epi16(first, second));
    if (row.red != nullptr) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(row.blue + x), Channel(blue, a, b, c));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(row.green + x), Channel(green, a, b, c));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(row.red + x), Channel(red, a, b, c));
    }
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
