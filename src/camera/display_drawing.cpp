#include "camera/display_drawing.h"

#include <emmintrin.h>

namespace tavro::camera {
namespace {

// Whether two byte ranges share memory; compared as integers because the
// planes and the display are unrelated allocations.
bool Overlap(const void* a, size_t aBytes, const void* b, size_t bBytes) {
  const auto first = reinterpret_cast<uintptr_t>(a);
  const auto second = reinterpret_cast<uintptr_t>(b);
  return first < second + bBytes && second < first + aBytes;
}

void DrawColourRowScalar(const uint8_t* red, const uint8_t* green, const uint8_t* blue,
                         uint32_t* display, size_t from, size_t to) {
  for (size_t x = from; x < to; ++x) display[x] = DisplayPixel(red[x], green[x], blue[x]);
}

// Eight pixels per step: widen the bytes to 16 bits, put green above blue,
// then interleave with red to get red << 16 | green << 8 | blue.
size_t DrawColourRowVector(const uint8_t* red, const uint8_t* green, const uint8_t* blue,
                           uint32_t* display, size_t pixels) {
  const __m128i zero = _mm_setzero_si128();
  size_t x = 0;
  for (; x + 8 <= pixels; x += 8) {
    const __m128i r =
        _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(red + x)), zero);
    const __m128i g =
        _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(green + x)), zero);
    const __m128i b =
        _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(blue + x)), zero);
    const __m128i greenBlue = _mm_or_si128(_mm_slli_epi16(g, 8), b);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(display + x), _mm_unpacklo_epi16(greenBlue, r));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(display + x + 4), _mm_unpackhi_epi16(greenBlue, r));
  }
  return x;
}

// Sixteen pixels per step: each grey byte paired with itself gives green and
// blue, widened with zero above it gives red, as the table's entries are.
size_t DrawGreyRowVector(const uint8_t* grey, uint32_t* display, size_t pixels) {
  const __m128i zero = _mm_setzero_si128();
  size_t x = 0;
  for (; x + 16 <= pixels; x += 16) {
    const __m128i g = _mm_loadu_si128(reinterpret_cast<const __m128i*>(grey + x));
    const __m128i pairsLow = _mm_unpacklo_epi8(g, g), pairsHigh = _mm_unpackhi_epi8(g, g);
    const __m128i wideLow = _mm_unpacklo_epi8(g, zero), wideHigh = _mm_unpackhi_epi8(g, zero);
    auto* out = reinterpret_cast<__m128i*>(display + x);
    _mm_storeu_si128(out, _mm_unpacklo_epi16(pairsLow, wideLow));
    _mm_storeu_si128(out + 1, _mm_unpackhi_epi16(pairsLow, wideLow));
    _mm_storeu_si128(out + 2, _mm_unpacklo_epi16(pairsHigh, wideHigh));
    _mm_storeu_si128(out + 3, _mm_unpackhi_epi16(pairsHigh, wideHigh));
  }
  return x;
}

}  // namespace

const std::array<uint32_t, 256>& GreyDisplayTable() {
  static const std::array<uint32_t, 256> table = [] {
    std::array<uint32_t, 256> entries{};
    for (uint32_t i = 0; i < entries.size(); ++i) entries[i] = i * 65536 + i * 256 + i;
    return entries;
  }();
  return table;
}

void DrawGrey(const uint8_t* grey, ptrdiff_t pitch, const DisplayArea& area) {
  if (grey == nullptr || area.pixels == nullptr) return;
  if (area.columns <= 0) return;
  const uint32_t* table = GreyDisplayTable().data();
  const auto pixels = static_cast<size_t>(area.columns);
  for (int32_t y = 0; y < area.rows; ++y) {
    const uint8_t* source = grey + pitch * y;
    uint32_t* display = area.pixels + area.stride * y;
    // As for colour: the vector path only where the row cannot overwrite its source.
    size_t done = 0;
    if (!Overlap(display, pixels * sizeof(uint32_t), source, pixels)) {
      done = DrawGreyRowVector(source, display, pixels);
    }
    for (size_t x = done; x < pixels; ++x) display[x] = table[source[x]];
  }
}

void DrawColour(const uint8_t* red, const uint8_t* green, const uint8_t* blue, ptrdiff_t pitch,
                const DisplayArea& area) {
  if (!red || !green || !blue || area.pixels == nullptr || area.columns <= 0) return;
  const auto pixels = static_cast<size_t>(area.columns);
  for (int32_t y = 0; y < area.rows; ++y) {
    const ptrdiff_t offset = pitch * y;
    uint32_t* display = area.pixels + area.stride * y;
    const size_t displayBytes = pixels * sizeof(uint32_t);
    // The vector path reads a whole step before it writes; it is only taken
    // when writing the display row cannot change a source byte.
    const bool separate = !Overlap(display, displayBytes, red + offset, pixels) &&
                          !Overlap(display, displayBytes, green + offset, pixels) &&
                          !Overlap(display, displayBytes, blue + offset, pixels);
    size_t done = 0;
    if (separate && pixels >= 8) {
      done = DrawColourRowVector(red + offset, green + offset, blue + offset, display, pixels);
    }
    DrawColourRowScalar(red + offset, green + offset, blue + offset, display, done, pixels);
  }
}

}  // namespace tavro::camera
