// Which frame a host image holds. The simulator's pixels are a pure function
// of sensor position and frame ID, so every delivered byte names its frame:
// a stale frame fails here even when it looks like a good image.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>

#include "support/host_image.h"

namespace tavro::testing {

// Compares every pixel of the image's grey plane (and of its colour planes,
// when it has them) with frame `frameId` of a camera sending "BGR8" (`bgr`)
// or "Mono8", the image's top-left pixel being sensor pixel (left, top). On a
// mismatch the message names the first differing pixel and, when one of the
// nearby frames matches instead, which one (-1: the previous frame).
::testing::AssertionResult HoldsFrame(const HostImage& image, bool bgr, uint64_t frameId,
                                      int32_t left = 0, int32_t top = 0);

// The grey value a host plane gets from a "BGR8" pixel.
uint8_t Luma(uint32_t red, uint32_t green, uint32_t blue);

}  // namespace tavro::testing
