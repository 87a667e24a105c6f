// Highway compiles this file once per instruction set (foreach_target.h
// includes it again for each); the part under HWY_ONCE builds the table.
// Only Highway's headers are used: its run-time target choice lives in
// libhwy, which Debian ships as a shared library alone, and the plug-in
// links nothing but the C++ runtime, so the choice is made here instead.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "camera/pixel_kernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
// foreach_target.h must come first.
#include <hwy/highway.h>

#include <cstring>

#include "camera/display_drawing.h"
#include "camera/pixel_conversion.h"
#include "camera/pixel_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace tavro::camera {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR
// Highway's one-lane fallback cannot split bytes into wider lanes; plain
// loops serve processors without SSSE3 (and GCC before 12.3, where Highway
// uses this fallback instead of its 128-bit emulation).
void BgrRow(const uint8_t* HWY_RESTRICT bgr, const RowOutput& out, size_t pixels) {
  for (size_t x = 0; x < pixels; ++x) {
    const uint8_t b = bgr[3 * x], g = bgr[3 * x + 1], r = bgr[3 * x + 2];
    const uint8_t grey = GreyFromRgb(r, g, b);
    out.grey[x] = grey;
    if (out.red != nullptr) {
      out.red[x] = r;
      out.green[x] = g;
      out.blue[x] = b;
    }
    if (out.display != nullptr) {
      out.display[x] = out.colourDisplay ? DisplayPixel(r, g, b) : DisplayPixel(grey, grey, grey);
    }
  }
}

void MonoRow(const uint8_t* HWY_RESTRICT mono, const RowOutput& out, size_t pixels) {
  std::memcpy(out.grey, mono, pixels);
  if (out.red != nullptr) {
    std::memcpy(out.red, mono, pixels);
    std::memcpy(out.green, mono, pixels);
    std::memcpy(out.blue, mono, pixels);
  }
  if (out.display == nullptr) return;
  for (size_t x = 0; x < pixels; ++x) out.display[x] = DisplayPixel(mono[x], mono[x], mono[x]);
}

void GreyDisplayRow(const uint8_t* HWY_RESTRICT grey, uint32_t* HWY_RESTRICT display,
                    size_t pixels) {
  for (size_t x = 0; x < pixels; ++x) display[x] = DisplayPixel(grey[x], grey[x], grey[x]);
}

void ColourDisplayRow(const uint8_t* HWY_RESTRICT red, const uint8_t* HWY_RESTRICT green,
                      const uint8_t* HWY_RESTRICT blue, uint32_t* HWY_RESTRICT display,
                      size_t pixels) {
  for (size_t x = 0; x < pixels; ++x) display[x] = DisplayPixel(red[x], green[x], blue[x]);
}

#else
using D8 = hn::ScalableTag<uint8_t>;
using V8 = hn::Vec<D8>;

enum class Display { kNone, kGrey, kColour };

using D16 = hn::Repartition<uint16_t, D8>;
using V16 = hn::Vec<D16>;

// The luma weights split into their high and low bytes (19595 = 76 x 256 +
// 139 and so on). GCC would turn multiplications by these constants into
// longer shift-and-add chains; hiding the values keeps one multiply each.
struct LumaWeights {
  V16 redHigh, greenHigh, blueHigh, redLow, greenLow, blueLow;

  static V16 Weight(uint16_t value) {
    asm("" : "+r"(value));
    return hn::Set(D16(), value);
  }
  LumaWeights()
      : redHigh(Weight(76)),
        greenHigh(Weight(150)),
        blueHigh(Weight(29)),
        redLow(Weight(139)),
        greenLow(Weight(70)),
        blueLow(Weight(47)) {}
};

// 256 x luma plus a fraction below, from channels widened to 16 bits. Both
// partial sums stay below 65536, and adding the low one shifted down by 8
// keeps exactly the carry that the full 32-bit sum would have.
HWY_INLINE V16 ScaledLuma(const LumaWeights& w, V16 r, V16 g, V16 b) {
  const V16 high =
      hn::Add(hn::Add(hn::Mul(r, w.redHigh), hn::Mul(g, w.greenHigh)), hn::Mul(b, w.blueHigh));
  const V16 low =
      hn::Add(hn::Add(hn::Mul(r, w.redLow), hn::Mul(g, w.greenLow)), hn::Mul(b, w.blueLow));
  return hn::Add(high, hn::ShiftRight<8>(low));
}

// Luma of every byte lane: even and odd bytes are worked on as the low and
// high halves of 16-bit lanes, so that no lane changes place.
HWY_INLINE V8 Luma(const LumaWeights& w, V8 r, V8 g, V8 b) {
  const D16 d16;
  const V16 lowByte = hn::Set(d16, 0x00FF);
  const V16 r16 = hn::BitCast(d16, r), g16 = hn::BitCast(d16, g), b16 = hn::BitCast(d16, b);
  const V16 even =
      ScaledLuma(w, hn::And(r16, lowByte), hn::And(g16, lowByte), hn::And(b16, lowByte));
  const V16 odd =
      ScaledLuma(w, hn::ShiftRight<8>(r16), hn::ShiftRight<8>(g16), hn::ShiftRight<8>(b16));
  return hn::BitCast(D8(), hn::Or(hn::ShiftRight<8>(even), hn::AndNot(lowByte, odd)));
}

// Display pixels are 0x00RRGGBB: in memory blue, green, red, zero.
HWY_INLINE void StoreDisplay(D8 d, V8 r, V8 g, V8 b, uint32_t* display) {
  hn::StoreInterleaved4(b, g, r, hn::Zero(d), d, reinterpret_cast<uint8_t*>(display));
}

template <bool kColour, Display kDisplay>
HWY_INLINE void BgrStep(D8 d, const LumaWeights& w, const uint8_t* HWY_RESTRICT bgr,
                        const RowOutput& out, size_t x) {
  V8 b, g, r;
  hn::LoadInterleaved3(d, bgr + 3 * x, b, g, r);
  const V8 grey = Luma(w, r, g, b);
  hn::StoreU(grey, d, out.grey + x);
  if constexpr (kColour) {
    hn::StoreU(r, d, out.red + x);
    hn::StoreU(g, d, out.green + x);
    hn::StoreU(b, d, out.blue + x);
  }
  if constexpr (kDisplay == Display::kGrey) StoreDisplay(d, grey, grey, grey, out.display + x);
  if constexpr (kDisplay == Display::kColour) StoreDisplay(d, r, g, b, out.display + x);
}

// Rows shorter than a vector go pixel by pixel; longer ones end with a step
// that overlaps the one before and writes the same values again.
template <bool kColour, Display kDisplay>
void BgrRowOf(const uint8_t* HWY_RESTRICT bgr, const RowOutput& out, size_t pixels) {
  const D8 d;
  const size_t lanes = hn::Lanes(d);
  if (pixels < lanes) {
    for (size_t x = 0; x < pixels; ++x) {
      const uint8_t b = bgr[3 * x], g = bgr[3 * x + 1], r = bgr[3 * x + 2];
      const uint8_t grey = GreyFromRgb(r, g, b);
      out.grey[x] = grey;
      if constexpr (kColour) {
        out.red[x] = r;
        out.green[x] = g;
        out.blue[x] = b;
      }
      if constexpr (kDisplay == Display::kGrey) out.display[x] = DisplayPixel(grey, grey, grey);
      if constexpr (kDisplay == Display::kColour) out.display[x] = DisplayPixel(r, g, b);
    }
    return;
  }
  const LumaWeights w;
  size_t x = 0;
  for (; x + lanes <= pixels; x += lanes) BgrStep<kColour, kDisplay>(d, w, bgr, out, x);
  if (x < pixels) BgrStep<kColour, kDisplay>(d, w, bgr, out, pixels - lanes);
}

template <bool kColour>
void BgrRowFor(const uint8_t* bgr, const RowOutput& out, size_t pixels) {
  if (out.display == nullptr) return BgrRowOf<kColour, Display::kNone>(bgr, out, pixels);
  if (out.colourDisplay) return BgrRowOf<kColour, Display::kColour>(bgr, out, pixels);
  BgrRowOf<kColour, Display::kGrey>(bgr, out, pixels);
}

void BgrRow(const uint8_t* bgr, const RowOutput& out, size_t pixels) {
  if (out.red != nullptr) return BgrRowFor<true>(bgr, out, pixels);
  BgrRowFor<false>(bgr, out, pixels);
}

// A grey source gives the same byte to every plane and, grey or colour, the
// same display pixel.
template <bool kColour>
HWY_INLINE void MonoStep(D8 d, const uint8_t* HWY_RESTRICT mono, const RowOutput& out, size_t x) {
  const V8 v = hn::LoadU(d, mono + x);
  hn::StoreU(v, d, out.grey + x);
  if constexpr (kColour) {
    hn::StoreU(v, d, out.red + x);
    hn::StoreU(v, d, out.green + x);
    hn::StoreU(v, d, out.blue + x);
  }
  StoreDisplay(d, v, v, v, out.display + x);
}

template <bool kColour>
void MonoWithDisplay(const uint8_t* HWY_RESTRICT mono, const RowOutput& out, size_t pixels) {
  const D8 d;
  const size_t lanes = hn::Lanes(d);
  size_t x = 0;
  for (; x + lanes <= pixels; x += lanes) MonoStep<kColour>(d, mono, out, x);
  if (x < pixels && pixels >= lanes) MonoStep<kColour>(d, mono, out, pixels - lanes);
  if (pixels >= lanes) return;
  for (x = 0; x < pixels; ++x) {
    const uint8_t v = mono[x];
    out.grey[x] = v;
    if constexpr (kColour) out.red[x] = out.green[x] = out.blue[x] = v;
    out.display[x] = DisplayPixel(v, v, v);
  }
}

void MonoRow(const uint8_t* mono, const RowOutput& out, size_t pixels) {
  if (out.display != nullptr) {
    if (out.red != nullptr) return MonoWithDisplay<true>(mono, out, pixels);
    return MonoWithDisplay<false>(mono, out, pixels);
  }
  // Plain copies: nothing beats the C library's block copy here.
  std::memcpy(out.grey, mono, pixels);
  if (out.red == nullptr) return;
  std::memcpy(out.red, mono, pixels);
  std::memcpy(out.green, mono, pixels);
  std::memcpy(out.blue, mono, pixels);
}

void GreyDisplayRow(const uint8_t* HWY_RESTRICT grey, uint32_t* HWY_RESTRICT display,
                    size_t pixels) {
  const D8 d;
  const size_t lanes = hn::Lanes(d);
  if (pixels < lanes) {
    for (size_t x = 0; x < pixels; ++x) display[x] = DisplayPixel(grey[x], grey[x], grey[x]);
    return;
  }
  size_t x = 0;
  for (; x + lanes <= pixels; x += lanes) {
    const V8 v = hn::LoadU(d, grey + x);
    StoreDisplay(d, v, v, v, display + x);
  }
  if (x < pixels) {
    const V8 v = hn::LoadU(d, grey + pixels - lanes);
    StoreDisplay(d, v, v, v, display + pixels - lanes);
  }
}

void ColourDisplayRow(const uint8_t* HWY_RESTRICT red, const uint8_t* HWY_RESTRICT green,
                      const uint8_t* HWY_RESTRICT blue, uint32_t* HWY_RESTRICT display,
                      size_t pixels) {
  const D8 d;
  const size_t lanes = hn::Lanes(d);
  if (pixels < lanes) {
    for (size_t x = 0; x < pixels; ++x) display[x] = DisplayPixel(red[x], green[x], blue[x]);
    return;
  }
  const auto step = [&](size_t x) {
    StoreDisplay(d, hn::LoadU(d, red + x), hn::LoadU(d, green + x), hn::LoadU(d, blue + x),
                 display + x);
  };
  size_t x = 0;
  for (; x + lanes <= pixels; x += lanes) step(x);
  if (x < pixels) step(pixels - lanes);
}

#endif  // HWY_TARGET == HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace tavro::camera
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <cpuid.h>

#include <vector>

namespace tavro::camera {
namespace {

// The same instruction sets Highway compiles each target for; GCC's checks
// include the operating system's support for the wide registers.
bool HasSsse3() {
  return __builtin_cpu_supports("ssse3");
}
bool HasSse4() {
  return HasSsse3() && __builtin_cpu_supports("sse4.1") && __builtin_cpu_supports("sse4.2") &&
         __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("aes");
}
// F16C straight from CPUID (leaf 1, ECX): clang's __builtin_cpu_supports
// has no name for it.
bool HasF16c() {
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
  return __get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0 && (ecx & bit_F16C) != 0;
}
bool HasAvx2() {
  return HasSse4() && __builtin_cpu_supports("avx") && __builtin_cpu_supports("avx2") &&
         __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
         __builtin_cpu_supports("fma") && HasF16c();
}
bool HasAvx512() {
  return HasAvx2() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
         __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw");
}
bool Always() {
  return true;
}

struct Compiled {
  PixelKernels kernels;
  bool (*runs)();
};

#define TAVRO_KERNEL_SET(NS, NAME)                                              \
  PixelKernels {                                                                \
    NAME, &NS::BgrRow, &NS::MonoRow, &NS::GreyDisplayRow, &NS::ColourDisplayRow \
  }

// A build for any x86-64 has the portable set as its baseline; a raised
// baseline (-march) would drop it and tie the plug-in to newer processors.
static_assert(HWY_STATIC_TARGET == HWY_SCALAR || HWY_STATIC_TARGET == HWY_EMU128,
              "the portable kernels must be compiled");

const Compiled kCompiled[] = {
#if HWY_TARGETS & HWY_AVX3
    {TAVRO_KERNEL_SET(N_AVX3, "AVX-512"), HasAvx512},
#endif
#if HWY_TARGETS & HWY_AVX2
    {TAVRO_KERNEL_SET(N_AVX2, "AVX2"), HasAvx2},
#endif
#if HWY_TARGETS & HWY_SSE4
    {TAVRO_KERNEL_SET(N_SSE4, "SSE4"), HasSse4},
#endif
#if HWY_TARGETS & HWY_SSSE3
    {TAVRO_KERNEL_SET(N_SSSE3, "SSSE3"), HasSsse3},
#endif
#if HWY_STATIC_TARGET == HWY_SCALAR
    {TAVRO_KERNEL_SET(N_SCALAR, "scalar"), Always},
#else
    {TAVRO_KERNEL_SET(N_EMU128, "portable 128-bit"), Always},
#endif
};

#undef TAVRO_KERNEL_SET

}  // namespace

std::span<const PixelKernels> RunnableKernels() {
  static const std::vector<PixelKernels> runnable = [] {
    __builtin_cpu_init();  // may run before the library's own initialisation
    std::vector<PixelKernels> sets;
    for (const Compiled& compiled : kCompiled) {
      if (compiled.runs()) sets.push_back(compiled.kernels);
    }
    return sets;
  }();
  return runnable;
}

const PixelKernels& Kernels() {
  static const PixelKernels& best = RunnableKernels().front();
  return best;
}

}  // namespace tavro::camera
#endif  // HWY_ONCE
