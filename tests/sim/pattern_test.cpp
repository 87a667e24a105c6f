// The frame pattern as tests and people use it: every pixel tells nearby
// frames apart, and the picture shows its parts where the header says.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "oxel_sim.h"

namespace {

constexpr uint64_t kFirst = OXEL_SIM_FIRST_FRAME_ID;

// What a host's planes get from pixel (x, y) of a frame: the Mono8 byte, the
// BGR8 bytes and the grey of those.
std::array<uint8_t, 5> Planes(uint32_t x, uint32_t y, uint64_t frameId) {
  const uint8_t b = OxelSim_PatternBgr8(x, y, frameId, 0);
  const uint8_t g = OxelSim_PatternBgr8(x, y, frameId, 1);
  const uint8_t r = OxelSim_PatternBgr8(x, y, frameId, 2);
  return {OxelSim_PatternMono8(x, y, frameId), b, g, r,
          OxelSim_PatternLuma(static_cast<uint32_t>(r) << 16 | static_cast<uint32_t>(g) << 8 | b)};
}

// Frame checks compare whole images against one frame ID and name a nearby
// one that matches instead: that needs every pixel of every part of the
// picture, in every plane a host gets, to differ between frames up to 8
// apart, also across the 64-bit wrap and the number's roll-over.
TEST(FramePattern, EveryPixelTellsFramesUpToEightApart) {
  const uint64_t frames[] = {UINT64_MAX - 3, kFirst + 999995, kFirst + 123456};
  // One row from every band, on the widest bundled sensor and past it.
  const uint32_t rows[] = {40, 85, 300, 500, 605, 660, 760, 870, 900, 1100};
  size_t checked = 0;
  for (const uint64_t frame : frames) {
    for (const uint32_t y : rows) {
      for (uint32_t x = 0; x < 2448; ++x) {
        const auto expected = Planes(x, y, frame);
        for (uint64_t delta = 1; delta <= 8; ++delta) {
          const auto other = Planes(x, y, frame + delta);
          for (size_t plane = 0; plane < other.size(); ++plane) {
            ASSERT_NE(expected[plane], other[plane])
                << "plane " << plane << " (Mono8, B, G, R, grey) at " << x << "," << y << " frame "
                << frame << " +" << delta;
          }
          ++checked;
        }
      }
    }
  }
  EXPECT_EQ(checked, 3u * 10u * 2448u * 8u);
}

// Any 8 neighbouring pixels of a row, wherever they lie, carry the whole
// 32-bit frame ID: frames whose IDs differ in their low 32 bits differ there
// in every plane a host gets.
TEST(FramePattern, EightNeighbouringPixelsNameTheFrame) {
  const uint64_t frames[] = {kFirst, kFirst + 123456, UINT64_MAX - 3};
  const uint32_t rows[] = {3, 85, 300, 500, 660, 870, 1100};
  const uint32_t lefts[] = {0, 1, 5, 803, 1276, 1937};
  std::vector<uint64_t> aways;
  for (uint32_t bit = 0; bit < 32; ++bit) aways.push_back(uint64_t{1} << bit);
  for (const uint64_t away : {16u, 48u, 4096u, 0x5A5A5A5Au, 0xFFFFFFFFu}) aways.push_back(away);
  for (const uint64_t frame : frames) {
    for (const uint32_t y : rows) {
      for (const uint32_t left : lefts) {
        for (const uint64_t away : aways) {
          const uint64_t other = frame + away;
          bool differs[5] = {};
          for (uint32_t x = left; x < left + 8; ++x) {
            const auto mine = Planes(x, y, frame);
            const auto theirs = Planes(x, y, other);
            for (size_t plane = 0; plane < mine.size(); ++plane) {
              differs[plane] = differs[plane] || mine[plane] != theirs[plane];
            }
          }
          for (size_t plane = 0; plane < 5; ++plane) {
            EXPECT_TRUE(differs[plane]) << "plane " << plane << " at " << left << "," << y
                                        << ": frame " << frame << " and +" << away;
          }
        }
      }
    }
  }
}

// What a person reads off a grab: bars in order with red in the red byte of
// BGR8, the marker in the corner, the ramp rising, the frame number counting.
TEST(FramePattern, ThePictureShowsBarsMarkerRampAndFrameNumber) {
  struct Probe {
    uint32_t x, y;
    uint32_t colour;  // 0x00RRGGBB of the picture, without the frame tag
    const char* what;
  };
  const Probe probes[] = {
      {80, 300, 0xEFEFEF, "white bar"},         {240, 300, 0xEFEF00, "yellow bar"},
      {400, 300, 0x00EFEF, "cyan bar"},         {560, 300, 0x00EF00, "green bar"},
      {720, 300, 0xEF00EF, "magenta bar"},      {880, 300, 0xEF0000, "red bar"},
      {1040, 300, 0x0000EF, "blue bar"},        {1200, 300, 0x000000, "black bar"},
      {1360, 300, 0xEFEFEF, "bars repeat"},     {2, 2, 0xEF0000, "marker at the origin"},
      {30, 30, 0x000000, "marker's edge"},      {0, 500, 0x000000, "ramp starts black"},
      {1279, 500, 0xEFEFEF, "ramp ends white"}, {10, 700, 0x000000, "number's band"},
  };
  const uint64_t frame = kFirst + 7;
  for (const Probe& p : probes) {
    SCOPED_TRACE(p.what);
    const uint8_t tag = OxelSim_PatternTag(p.x, p.y, frame);
    EXPECT_EQ(OxelSim_PatternBgr8(p.x, p.y, frame, 0), (p.colour & 0xFF) + tag);
    EXPECT_EQ(OxelSim_PatternBgr8(p.x, p.y, frame, 1), (p.colour >> 8 & 0xFF) + tag);
    EXPECT_EQ(OxelSim_PatternBgr8(p.x, p.y, frame, 2), (p.colour >> 16) + tag);
    EXPECT_EQ(OxelSim_PatternMono8(p.x, p.y, frame), OxelSim_PatternLuma(p.colour) + tag);
  }
  // Each bar carries its name in the opposite brightness.
  for (uint32_t bar = 0; bar < 8; ++bar) {
    int ink = 0;
    for (uint32_t x = bar * 160; x < bar * 160 + 160; ++x) {
      ink += OxelSim_PatternColour(x, OxelSim_PatternRowKey(90, frame)) !=
             OxelSim_PatternColour(x, OxelSim_PatternRowKey(300, frame));
    }
    EXPECT_GT(ink, 10) << "bar " << bar;
  }
  // The ramp never falls along the card.
  for (uint32_t x = 1; x < OXEL_SIM_PATTERN_CARD_WIDTH; ++x) {
    const uint64_t ramp = OxelSim_PatternRowKey(500, frame);
    EXPECT_GE(OxelSim_PatternColour(x, ramp), OxelSim_PatternColour(x - 1, ramp)) << x;
  }
  // The number is drawn from its own digits: frame 7 and frame 1000007 show
  // the same last digit and differ in the leading ones.
  const auto cellRow = [](uint64_t frameId, uint32_t cell) {
    std::string dots;
    for (uint32_t x = 64 + cell * 192; x < 64 + cell * 192 + 160; x += 32) {
      dots += OxelSim_PatternColour(x, OxelSim_PatternRowKey(656, frameId)) != 0 ? '#' : '.';
    }
    return dots;
  };
  EXPECT_EQ(cellRow(kFirst + 7, 5), "#####");  // the top of a 7
  EXPECT_EQ(cellRow(kFirst + 7, 0), ".###.");  // the top of a 0
  EXPECT_EQ(cellRow(kFirst + 1000007, 5), "#####");
  EXPECT_EQ(cellRow(kFirst + 400007, 0), "...#.");  // the top of a 4
}

}  // namespace
