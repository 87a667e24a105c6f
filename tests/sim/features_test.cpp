// Camera features through the C interface: refused writes with their codes and
// texts, the two offset rules, and the payload size.
#include <array>
#include <variant>

#include "sim_world.h"

namespace simtest {
namespace {

struct Command {};

// One write in a sequence and, for a failure, a piece of its text.
struct Write {
  const char* feature;
  std::variant<int64_t, double, const char*, Command> value;
  OXEL_RETURN_CODE expected;
  const char* text;
};

constexpr auto kOk = OXEL_RETURN_CODE_SUCCESS;
constexpr auto kRange = OXEL_RETURN_CODE_OUT_OF_RANGE;
constexpr auto kAccess = OXEL_RETURN_CODE_BAD_ACCESS;

void ExpectWrites(const Camera& camera, const std::vector<Write>& writes) {
  for (const Write& w : writes) {
    SCOPED_TRACE(w.feature);
    OXEL_RETURN_CODE code = kOk;
    if (const auto* i = std::get_if<int64_t>(&w.value)) code = camera.SetInt(w.feature, *i);
    if (const auto* f = std::get_if<double>(&w.value)) code = camera.SetFloat(w.feature, *f);
    if (const auto* e = std::get_if<const char*>(&w.value)) code = camera.SetEnum(w.feature, *e);
    if (std::holds_alternative<Command>(w.value)) code = camera.Execute(w.feature);
    EXPECT_EQ(code, w.expected);
    if (w.expected == kOk) continue;
    const LastError error = TakeLastError();
    EXPECT_EQ(error.code, w.expected);
    EXPECT_NE(error.text.find(w.text), std::string::npos) << error.text;
  }
}

using Features = BundledWorld;

TEST_F(Features, RefusedWritesNameTheRuleTheyBreak) {
  Camera colour = Camera::Open(*world_, kColourId);
  ExpectWrites(
      colour,
      {
          {"OffsetX", int64_t{12}, kRange, "OffsetX 12 not on the increment"},
          {"OffsetX", int64_t{1928}, kRange,
           "OffsetX 1928 above maximum 1920 for WidthMax 1936 and minimum Width 16"},
          {"Width", int64_t{8}, kRange, "Width 8 below minimum 16"},
          {"Width", int64_t{100}, kRange, "not a multiple of 8"},
          {"PayloadSize", int64_t{5}, kAccess, "read-only"},
          {"ExposureTime", 10.0, kRange, "ExposureTime 10 below minimum 20"},
          // The frame rate's maximum follows the exposure.
          {"ExposureTime", 40000.0, kOk, ""},
          {"AcquisitionFrameRate", 30.0, kRange, "above maximum 25"},
          {"TriggerSelector", "FrameBurstStart", OXEL_RETURN_CODE_NOT_AVAILABLE,
           "'FrameBurstStart' is not available"},
          {"TriggerSelector", "LineStart", OXEL_RETURN_CODE_NOT_FOUND, "no entry 'LineStart'"},
          {"PixelFormat", "RGB8", OXEL_RETURN_CODE_NOT_FOUND, "(entries: BGR8, Mono8)"},
          {"TLParamsLocked", int64_t{1}, kOk, ""},
          {"Width", int64_t{16}, kAccess, "Width is locked while TLParamsLocked is 1"},
          {"PixelFormat", "Mono8", kAccess, "locked"},
          {"UserSetLoad", Command{}, kAccess, "UserSetLoad refused"},
          {"TLParamsLocked", int64_t{0}, kOk, ""},
          {"AcquisitionStart", Command{}, kOk, ""},
          {"Width", int64_t{640}, kAccess, "acquisition is running"},
          {"AcquisitionAbort", Command{}, kOk, ""},
          {"Width", int64_t{640}, kOk, ""},
      });
  Camera mono = Camera::Open(*world_, kMonoId);
  ExpectWrites(mono,
               {
                   {"GainSelector", "DigitalAll", kOk, ""},
                   {"Gain", 8.5, kRange, "Gain (GainSelector DigitalAll) 8.5 above maximum 4"},
                   {"ExposureAuto", "Continuous", kOk, ""},
                   {"ExposureTime", 1000.0, kAccess, "read-only while ExposureAuto is Continuous"},
                   {"ExposureAuto", "Off", kOk, ""},
                   {"ExposureTime", 100.5, kRange, "not on the increment 1"},
               });

  // Unknown features and nodes of the wrong kind.
  OXEL_NODE node = nullptr;
  EXPECT_EQ(OXEL_NodeMap_FindNode(mono.features, "Gamma", 6, &node), OXEL_RETURN_CODE_NOT_FOUND);
  EXPECT_NE(TakeLastError().text.find("no node 'Gamma'"), std::string::npos);
  OXEL_FLOAT_NODE asFloat = nullptr;
  EXPECT_EQ(OXEL_Node_ToFloatNode(mono.Node("Width"), &asFloat), OXEL_RETURN_CODE_INVALID_CAST);
  EXPECT_NE(TakeLastError().text.find("'Width' is a Integer node, not a Float node"),
            std::string::npos);
}

TEST(OffsetRules, StrictRefusesAnOffsetTheSizeLeavesNoRoomForAndShrinkSizeMakesRoom) {
  ASSERT_EQ(OxelSim_ResetAll(), OXEL_RETURN_CODE_SUCCESS);
  TempDir dir;
  // Sizes on steps of 8 from 8, offsets on steps of 2: a shrunk width is
  // rounded down onto its own increment.
  dir.Write("rules.cti", R"({"system": {"id": "S", "interfaces": [{"id": "I", "cameras": [
    {"id": "STRICT", "model": "S", "sensor": {"width": 64, "height": 16},
     "aoi": {"offsetRule": "strict", "offsetXIncrement": 2, "widthIncrement": 8}},
    {"id": "SHRINK", "model": "S", "sensor": {"width": 64, "height": 16},
     "aoi": {"offsetRule": "shrinkSize", "offsetXIncrement": 2, "widthIncrement": 8}}
  ]}]}})");
  World world(dir.Path());
  // Each write, then the AOI it leaves: offset X, width, offset Y, height.
  using Aoi = std::array<int64_t, 4>;
  const auto run = [](const Camera& camera, const std::vector<std::pair<Write, Aoi>>& steps) {
    for (const auto& [write, aoi] : steps) {
      SCOPED_TRACE(std::to_string(std::get<int64_t>(write.value)));
      ExpectWrites(camera, {write});
      EXPECT_EQ((Aoi{camera.Int("OffsetX"), camera.Int("Width"), camera.Int("OffsetY"),
                     camera.Int("Height")}),
                aoi);
    }
  };
  run(Camera::Open(world, "STRICT"),
      {
          {{"OffsetX", int64_t{6}, kRange, "OffsetX 6 above maximum 0 for Width 64"},
           Aoi{0, 64, 0, 16}},
          {{"Width", int64_t{56}, kOk, ""}, Aoi{0, 56, 0, 16}},
          {{"OffsetX", int64_t{10}, kRange, "OffsetX 10 above maximum 8 for Width 56"},
           Aoi{0, 56, 0, 16}},
          {{"OffsetX", int64_t{6}, kOk, ""}, Aoi{6, 56, 0, 16}},
          {{"OffsetY", int64_t{1}, kRange, "OffsetY 1 above maximum 0 for Height 16"},
           Aoi{6, 56, 0, 16}},
      });
  run(Camera::Open(world, "SHRINK"),
      {
          {{"OffsetX", int64_t{6}, kOk, ""}, Aoi{6, 56, 0, 16}},
          {{"OffsetX", int64_t{58}, kRange,
            "OffsetX 58 above maximum 56 for WidthMax 64 and minimum Width 8"},
           Aoi{6, 56, 0, 16}},
          {{"OffsetX", int64_t{56}, kOk, ""}, Aoi{56, 8, 0, 16}},
          // A size that fits the new offset is left alone.
          {{"OffsetX", int64_t{40}, kOk, ""}, Aoi{40, 8, 0, 16}},
          {{"OffsetY", int64_t{15}, kOk, ""}, Aoi{40, 8, 15, 1}},
      });
}

TEST_F(Features, PayloadSizeFollowsAoiAndFormatWithOrWithoutStreamDefinition) {
  Camera colour = Camera::Open(*world_, kColourId);
  ASSERT_EQ(colour.SetInt("Width", 640), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(colour.Int("PayloadSize"), 640 * 1216 * 3);
  ASSERT_EQ(colour.SetEnum("PixelFormat", "Mono8"), OXEL_RETURN_CODE_SUCCESS);
  size_t streamPayload = 0;
  ASSERT_EQ(OXEL_DataStream_GetPayloadSize(colour.stream, &streamPayload),
            OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(streamPayload, 640u * 1216u);

  // The monochrome camera's stream leaves the payload size to the camera.
  Camera mono = Camera::Open(*world_, kMonoId);
  OXEL_BOOL8 defines = 1;
  ASSERT_EQ(OXEL_DataStream_GetDefinesPayloadSize(mono.stream, &defines), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(defines, 0);
  EXPECT_EQ(OXEL_DataStream_GetPayloadSize(mono.stream, &streamPayload),
            OXEL_RETURN_CODE_NOT_AVAILABLE);
  EXPECT_NE(TakeLastError().text.find("PayloadSize feature"), std::string::npos);
  EXPECT_EQ(mono.Int("PayloadSize"), 1280 * 1024);
}

}  // namespace
}  // namespace simtest
