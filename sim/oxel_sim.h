/*
 * Control functions of the simulated Oxel camera library (liboxel.so.1).
 *
 * Tests and the reference host use these to act on the simulated hardware:
 * unplug and replug a camera, raise an edge on line 0, lose, delay or cut
 * frames, make a feature refuse writes or the data stream refuse to start, or
 * pretend another process holds a camera. The
 * plug-in never calls them. Cameras are addressed by their device ID (the
 * "id" of the camera in its producer file). Each function returns an
 * OXEL_RETURN_CODE and records a last error like every other call.
 *
 * They act on the cameras of the producer files loaded now, and work whether
 * or not the library is started: a camera not loaded yet is looked for in the
 * producer files on GENICAM_GENTL64_PATH, so a test can prepare a camera
 * before the code under test starts the library. When the last user closes
 * the library, the loaded files and their cameras are forgotten: the next
 * start (or control function) reads the files afresh. An unknown ID fails
 * with OXEL_RETURN_CODE_NOT_FOUND. docs/simulator-producer-files.md
 * describes the cameras' behaviour.
 *
 * Frame pattern: every delivered pixel is a pure function of its sensor
 * position (x, y: the AOI offset is included) and of the frame's ID, so a test
 * can check every byte it receives with the inline functions below. It is a
 * test picture a person can read too (described above OxelSim_PatternRowKey).
 */
#ifndef OXEL_OXEL_SIM_H
#define OXEL_OXEL_SIM_H

#include <stdint.h>

#include "oxel/oxel_c.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Pixel format codes (PFNC) the simulator produces. */
#define OXEL_SIM_PIXEL_FORMAT_MONO8 UINT64_C(0x01080001)
#define OXEL_SIM_PIXEL_FORMAT_BGR8 UINT64_C(0x02180015)

/* Frame IDs start this far below the 64-bit wrap-around. */
#define OXEL_SIM_FIRST_FRAME_ID (UINT64_MAX - UINT64_C(299))

/* Reverts every camera of every loaded producer to the state its producer
 * file describes: plugged in (unless the file says otherwise), feature values,
 * faults (none unless the file arms some; delayed, incomplete frames and
 * refused stream starts cleared), frame IDs from OXEL_SIM_FIRST_FRAME_ID,
 * write and ignored-trigger counts 0, frames in flight gone. Open devices
 * stay open. */
OXEL_RETURN_CODE OxelSim_ResetAll(void);

/* The next device update reports the camera lost (or found again). An opened
 * camera stops answering: its feature accesses and data-stream calls fail
 * with OXEL_RETURN_CODE_ERROR (a wait in progress ends so), and no frame
 * arrives. */
OXEL_RETURN_CODE OxelSim_UnplugCamera(const char* deviceId);
OXEL_RETURN_CODE OxelSim_ReplugCamera(const char* deviceId);

/* A pulse on line 0: a rising edge followed by a falling one. A camera
 * triggered on either edge of line 0 takes one frame (if it is acquiring). */
OXEL_RETURN_CODE OxelSim_PulseLine0(const char* deviceId);

/* The next `count` frames the camera would send never arrive (count -1: all
 * of them until the next call with 0). */
OXEL_RETURN_CODE OxelSim_DropFrames(const char* deviceId, int32_t count);

/* The next `count` frames the camera sends arrive `delayMs` milliseconds
 * later than their timing says (count -1: all of them until the next call
 * with 0). The camera is free for its next trigger when a frame is read out,
 * whatever the delay. A delayed frame arrives in the output queue like any
 * other while its data stream still grabs; once the stream is stopped it is
 * lost. */
OXEL_RETURN_CODE OxelSim_DelayFrames(const char* deviceId, int32_t count, uint32_t delayMs);

/* The next `count` frames arrive flagged incomplete with only the first half
 * of their payload written (count -1: all of them until the next call with
 * 0). */
OXEL_RETURN_CODE OxelSim_IncompleteFrames(const char* deviceId, int32_t count);

/* The next `count` starts of the camera's data stream
 * (OXEL_DataStream_StartAcquisition) fail with `code` and leave the stream
 * stopped (count -1: every start until the next call with 0). */
OXEL_RETURN_CODE OxelSim_FailStreamStarts(const char* deviceId, int32_t count,
                                          OXEL_RETURN_CODE code);

/* How many triggers the camera ignored because it was still exposing or
 * reading out a frame, since it was opened or reset. */
OXEL_RETURN_CODE OxelSim_GetIgnoredTriggerCount(const char* deviceId, uint64_t* count);

/* How many frames the camera sent into a buffer marked incomplete, since it
 * was opened or reset. */
OXEL_RETURN_CODE OxelSim_GetIncompleteFrameCount(const char* deviceId, uint64_t* count);

/* The next `count` writes to the feature fail with `code` (count -1: every
 * write until the next call with 0). */
OXEL_RETURN_CODE OxelSim_FailFeatureWrites(const char* deviceId, const char* featureName,
                                           int32_t count, OXEL_RETURN_CODE code);

/* Marks the camera as opened by another process (access status Busy, not
 * openable) or releases that mark. */
OXEL_RETURN_CODE OxelSim_SetOpenedElsewhere(const char* deviceId, OXEL_BOOL8 openedElsewhere);

/* ID of the last frame the camera delivered to a buffer
 * (OXEL_RETURN_CODE_NOT_AVAILABLE before the first one). */
OXEL_RETURN_CODE OxelSim_GetLastFrameId(const char* deviceId, uint64_t* frameId);

/* How many writes the feature has received since the camera was opened or
 * reset (every write call, accepted or refused). */
OXEL_RETURN_CODE OxelSim_GetFeatureWriteCount(const char* deviceId, const char* featureName,
                                              uint64_t* count);

/* The test picture. Sensor pixels (0, 0) to (1279, 1023) hold a card, top to
 * bottom:
 *   y    0 to  447  eight colour bars 160 pixels wide, named at the top:
 *                   white, yellow, cyan, green, magenta, red, blue, black,
 *                   with a red triangle (black edge) in the sensor's corner
 *   y  448 to  575  a grey ramp, 0 at x 0 to 239 at x 1279
 *   y  576 to 1023  "FRAME" and the frame number in digits 224 pixels tall:
 *                   frame ID - OXEL_SIM_FIRST_FRAME_ID, modulo 1000000
 * Right of the card the bars and the ramp repeat and the number's band stays
 * black; below it lies a grey checkerboard of 64-pixel squares.
 *
 * Every byte is the picture's level (0 to 239) plus a frame tag (0 to 15),
 * the same in every colour channel:
 *   (frame ID + nibble + x + x / 16 + 7 y) modulo 16,
 * where nibble is 0 in the columns x = 0 modulo 8 and otherwise nibble
 * number (x modulo 8) of the frame ID's low 32 bits (bits 4 (x modulo 8) and
 * up). Any 8 neighbouring columns thus carry the whole 32-bit frame ID: two
 * frames whose IDs differ in their low 32 bits differ in some pixel of every
 * row of 8 pixels or more, whatever its offset (the number's strokes move the
 * level by 239, more than any tag). Between frames 1 to 8 apart every pixel
 * differs, and an image that landed a few pixels off its place differs from
 * the expected one. A "Mono8" camera sends the picture's luma (the plug-in's
 * grey weights) plus the tag; the plug-in's grey of a "BGR8" pixel is the
 * same, since the weights add up to one. */

/* The picture is drawn one row at a time: rows with the same key are the same
 * for every x. Bit 63 marks rows that change with the frame. */
#define OXEL_SIM_PATTERN_CARD_WIDTH 1280u
#define OXEL_SIM_PATTERN_CARD_HEIGHT 1024u
#define OXEL_SIM_PATTERN_FRAME_ROW UINT64_C(0x8000000000000000)

enum {
  OxelSimRowChecker = 1,
  OxelSimRowBars,   /* parameter: label font row + 1, 0 outside the labels */
  OxelSimRowCorner, /* parameter: y */
  OxelSimRowRamp,
  OxelSimRowCaption, /* parameter: caption font row + 1, 0 outside it */
  OxelSimRowDigits,  /* parameter: font row, and the six digits' bits of that row */
};

/* Row `row` (0 top) of a 5 x 7 glyph: five bits, the leftmost highest. Only
 * the characters the picture uses; 0 for the others. */
static inline uint32_t OxelSim_PatternGlyphRow(char c, uint32_t row) {
  static const char kCharacters[] = "0123456789ABCDEFGHIKLMNORTUWY";
  static const uint8_t kGlyphs[][7] = {
      {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E}, {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E},
      {0x0E, 0x11, 0x01, 0x02, 0x04, 0x08, 0x1F}, {0x1F, 0x02, 0x04, 0x02, 0x01, 0x11, 0x0E},
      {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02}, {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E},
      {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E}, {0x1F, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08},
      {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E}, {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C},
      {0x0E, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11}, {0x1E, 0x11, 0x11, 0x1E, 0x11, 0x11, 0x1E},
      {0x0E, 0x11, 0x10, 0x10, 0x10, 0x11, 0x0E}, {0x1C, 0x12, 0x11, 0x11, 0x11, 0x12, 0x1C},
      {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x1F}, {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x10},
      {0x0E, 0x11, 0x10, 0x17, 0x11, 0x11, 0x0F}, {0x11, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11},
      {0x0E, 0x04, 0x04, 0x04, 0x04, 0x04, 0x0E}, {0x11, 0x12, 0x14, 0x18, 0x14, 0x12, 0x11},
      {0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x1F}, {0x11, 0x1B, 0x15, 0x15, 0x11, 0x11, 0x11},
      {0x11, 0x11, 0x19, 0x15, 0x13, 0x11, 0x11}, {0x0E, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0E},
      {0x1E, 0x11, 0x11, 0x1E, 0x14, 0x12, 0x11}, {0x1F, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04},
      {0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0E}, {0x11, 0x11, 0x11, 0x15, 0x15, 0x15, 0x0A},
      {0x11, 0x11, 0x11, 0x0A, 0x04, 0x04, 0x04}};
  uint32_t k;
  if (row >= 7) return 0;
  for (k = 0; kCharacters[k] != '\0'; ++k) {
    if (kCharacters[k] == c) return kGlyphs[k][row];
  }
  return 0;
}

/* Whether pixel column x of font row `row` is ink in `text` drawn from
 * column `left` with glyphs `scale` pixels per dot and one dot between. */
static inline int OxelSim_PatternTextInk(const char* text, uint32_t left, uint32_t scale,
                                         uint32_t x, uint32_t row) {
  uint32_t cell, dot, length = 0;
  while (text[length] != '\0') ++length;
  if (x < left) return 0;
  cell = (x - left) / (6u * scale);
  dot = (x - left) % (6u * scale) / scale;
  if (cell >= length || dot >= 5) return 0;
  return (OxelSim_PatternGlyphRow(text[cell], row) >> (4u - dot)) & 1u;
}

/* The key of the picture's row y in frame `frameId`. */
static inline uint64_t OxelSim_PatternRowKey(uint32_t y, uint64_t frameId) {
  uint64_t number, bits = 0;
  uint32_t k, row;
  if (y >= OXEL_SIM_PATTERN_CARD_HEIGHT) return (uint64_t)OxelSimRowChecker << 56 | (y / 64u & 1u);
  if (y < 64) return (uint64_t)OxelSimRowCorner << 56 | y;
  if (y < 448) {
    return (uint64_t)OxelSimRowBars << 56 | (y >= 80 && y < 101 ? (y - 80) / 3 + 1 : 0);
  }
  if (y < 576) return (uint64_t)OxelSimRowRamp << 56;
  if (y >= 600 && y < 628) return (uint64_t)OxelSimRowCaption << 56 | ((y - 600) / 4 + 1);
  if (y < 656 || y >= 880) return (uint64_t)OxelSimRowCaption << 56;
  row = (y - 656) / 32;
  number = (frameId - OXEL_SIM_FIRST_FRAME_ID) % 1000000u;
  for (k = 0; k < 6; ++k, number /= 10) {
    bits |= (uint64_t)OxelSim_PatternGlyphRow((char)('0' + number % 10), row) << (5 * k);
  }
  return OXEL_SIM_PATTERN_FRAME_ROW | (uint64_t)OxelSimRowDigits << 56 | bits << 3 | row;
}

/* The picture's colour at column x of row `rowKey`: 0x00RRGGBB, each level 0
 * to 239. */
static inline uint32_t OxelSim_PatternColour(uint32_t x, uint64_t rowKey) {
  /* white, yellow, cyan, green, magenta, red, blue, black */
  static const uint32_t kBars[8] = {0xEFEFEF, 0xEFEF00, 0x00EFEF, 0x00EF00,
                                    0xEF00EF, 0xEF0000, 0x0000EF, 0x000000};
  static const char* const kNames[8] = {"WHITE",   "YELLOW", "CYAN", "GREEN",
                                        "MAGENTA", "RED",    "BLUE", "BLACK"};
  const uint32_t kind = (uint32_t)(rowKey >> 56) & 0xFu;
  const uint32_t parameter = (uint32_t)rowKey & 0xFFu;
  const uint32_t cx = x % OXEL_SIM_PATTERN_CARD_WIDTH;
  uint32_t bar, width, cell, dot;
  switch (kind) {
    case OxelSimRowChecker:
      return ((x / 64u & 1u) ^ parameter) != 0 ? 0x808080 : 0x505050;
    case OxelSimRowCorner:
      if (x + parameter < 56) return 0xEF0000;
      if (x + parameter < 64) return 0x000000;
      return kBars[cx / 160];
    case OxelSimRowBars:
      bar = cx / 160;
      if (parameter != 0) {
        width = 0;
        while (kNames[bar][width] != '\0') ++width;
        if (OxelSim_PatternTextInk(kNames[bar], bar * 160 + (160 - (width * 18 - 3)) / 2, 3, cx,
                                   parameter - 1)) {
          return bar < 4 ? 0x000000 : 0xEFEFEF; /* dark on the light bars */
        }
      }
      return kBars[bar];
    case OxelSimRowRamp:
      return (cx * 3 / 16) * 0x010101u;
    case OxelSimRowCaption:
      return x < OXEL_SIM_PATTERN_CARD_WIDTH && parameter != 0 &&
                     OxelSim_PatternTextInk("FRAME", 64, 4, x, parameter - 1)
                 ? 0xEFEFEF
                 : 0x000000;
    case OxelSimRowDigits:
      if (x < 64 || x >= 64 + 6 * 192) return 0x000000;
      cell = (x - 64) / 192;
      dot = (x - 64) % 192 / 32;
      if (dot >= 5) return 0x000000;
      /* the first digit drawn is the most significant */
      return (rowKey >> (3 + 5 * (5 - cell)) >> (4 - dot) & 1u) != 0 ? 0xEFEFEF : 0x000000;
    default:
      return 0x000000;
  }
}

/* The frame tag added to every byte of pixel (x, y). */
static inline uint8_t OxelSim_PatternTag(uint32_t x, uint32_t y, uint64_t frameId) {
  const uint32_t id = (uint32_t)frameId;
  const uint32_t nibble = x % 8u == 0 ? 0u : id >> (4u * (x % 8u));
  return (uint8_t)((id + nibble + x + x / 16u + 7u * y) & 15u);
}

/* The grey level of a picture colour, with the plug-in's weights. */
static inline uint8_t OxelSim_PatternLuma(uint32_t colour) {
  return (uint8_t)((19595u * (colour >> 16 & 0xFFu) + 38470u * (colour >> 8 & 0xFFu) +
                    7471u * (colour & 0xFFu)) >>
                   16);
}

static inline uint8_t OxelSim_PatternMono8(uint32_t x, uint32_t y, uint64_t frameId) {
  const uint32_t colour = OxelSim_PatternColour(x, OxelSim_PatternRowKey(y, frameId));
  return (uint8_t)(OxelSim_PatternLuma(colour) + OxelSim_PatternTag(x, y, frameId));
}
/* channel: 0 blue, 1 green, 2 red (the byte order of BGR8). */
static inline uint8_t OxelSim_PatternBgr8(uint32_t x, uint32_t y, uint64_t frameId,
                                          uint32_t channel) {
  const uint32_t colour = OxelSim_PatternColour(x, OxelSim_PatternRowKey(y, frameId));
  return (uint8_t)((colour >> (8 * channel) & 0xFFu) + OxelSim_PatternTag(x, y, frameId));
}

#ifdef __cplusplus
}
#endif

#endif /* OXEL_OXEL_SIM_H */
