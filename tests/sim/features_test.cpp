// Camera features: GenICam access, range and increment rules with their
// codes and texts, values computed from others, locks, selectors and faults.
#include "sim_world.h"

namespace simtest {
namespace {

class Features : public BundledWorld {
 public:
  // Runs a write and checks its code and, for a failure, a piece of its text.
  static void ExpectWrite(OXEL_RETURN_CODE code, OXEL_RETURN_CODE expected,
                          const std::string& textPart) {
    EXPECT_EQ(code, expected);
    if (expected != OXEL_RETURN_CODE_SUCCESS) {
      const LastError error = TakeLastError();
      EXPECT_EQ(error.code, expected);
      EXPECT_NE(error.text.find(textPart), std::string::npos) << error.text;
    }
  }

 protected:
  static int64_t Maximum(const Camera& camera, const char* name) {
    OXEL_INTEGER_NODE node = nullptr;
    EXPECT_EQ(OXEL_Node_ToIntegerNode(camera.Node(name), &node), OXEL_RETURN_CODE_SUCCESS);
    int64_t maximum = 0;
    EXPECT_EQ(OXEL_IntegerNode_GetMaximum(node, &maximum), OXEL_RETURN_CODE_SUCCESS);
    return maximum;
  }
  static double FloatMaximum(const Camera& camera, const char* name) {
    OXEL_FLOAT_NODE node = nullptr;
    EXPECT_EQ(OXEL_Node_ToFloatNode(camera.Node(name), &node), OXEL_RETURN_CODE_SUCCESS);
    double maximum = 0;
    EXPECT_EQ(OXEL_FloatNode_GetMaximum(node, &maximum), OXEL_RETURN_CODE_SUCCESS);
    return maximum;
  }
  static OXEL_NODE_ACCESS_STATUS Access(OXEL_NODE node) {
    OXEL_NODE_ACCESS_STATUS access = -1;
    EXPECT_EQ(OXEL_Node_GetAccessStatus(node, &access), OXEL_RETURN_CODE_SUCCESS);
    return access;
  }
};

// One write and what it leaves: the AOI features read back after it.
struct AoiStep {
  const char* feature;
  int64_t value;
  OXEL_RETURN_CODE expected;
  const char* text;  // part of the failure text
  int64_t offsetX, width, offsetY, height;
};

void RunAoiSteps(const Camera& camera, const std::vector<AoiStep>& steps) {
  for (const AoiStep& step : steps) {
    SCOPED_TRACE(std::string(step.feature) + " = " + std::to_string(step.value));
    Features::ExpectWrite(camera.SetInt(step.feature, step.value), step.expected, step.text);
    EXPECT_EQ(camera.Int("OffsetX"), step.offsetX);
    EXPECT_EQ(camera.Int("Width"), step.width);
    EXPECT_EQ(camera.Int("OffsetY"), step.offsetY);
    EXPECT_EQ(camera.Int("Height"), step.height);
  }
}

TEST_F(Features, BundledOffsetsReachTheSensorEdgeAndShrinkTheSize) {
  Camera camera = Camera::Open(*world_, kColourId);
  // Read at full sensor, the offset maxima already leave room for the minimum size.
  EXPECT_EQ(Maximum(camera, "OffsetX"), 1920);
  EXPECT_EQ(Maximum(camera, "OffsetY"), 1214);
  constexpr auto kOk = OXEL_RETURN_CODE_SUCCESS;
  constexpr auto kRange = OXEL_RETURN_CODE_OUT_OF_RANGE;
  RunAoiSteps(
      camera,
      {
          {"OffsetX", 1928, kRange,
           "OffsetX 1928 above maximum 1920 for WidthMax 1936 and minimum "
           "Width 16",
           0, 1936, 0, 1216},
          {"OffsetX", 12, kRange, "OffsetX 12 not on the increment", 0, 1936, 0, 1216},
          {"Width", 8, kRange, "Width 8 below minimum 16", 0, 1936, 0, 1216},
          {"Width", 100, kRange, "not a multiple of 8", 0, 1936, 0, 1216},
          // An AOI written offsets first from the full sensor, as a host does.
          {"OffsetX", 8, kOk, "", 8, 1928, 0, 1216},
          {"OffsetY", 4, kOk, "", 8, 1928, 4, 1212},
          {"Width", 96, kOk, "", 8, 96, 4, 1212},
          {"Height", 6, kOk, "", 8, 96, 4, 6},
          // A size that fits the new offset is left alone.
          {"OffsetX", 1840, kOk, "", 1840, 96, 4, 6},
          {"Width", 104, kRange, "Width 104 above maximum 96 for OffsetX 1840", 1840, 96, 4, 6},
          {"OffsetX", 1920, kOk, "", 1920, 16, 4, 6},
          {"OffsetY", 1214, kOk, "", 1920, 16, 1214, 2},
          {"Height", 4, kRange, "Height 4 above maximum 2 for OffsetY 1214", 1920, 16, 1214, 2},
          {"OffsetX", 0, kOk, "", 0, 16, 1214, 2},
          {"Width", 1936, kOk, "", 0, 1936, 1214, 2},
      });
  EXPECT_EQ(Maximum(camera, "Width"), 1936);
  EXPECT_EQ(Maximum(camera, "OffsetX"), 1920) << "fixed, whatever the width";
  EXPECT_EQ(camera.Int("PayloadSize"), 1936 * 2 * 3);
  EXPECT_EQ(camera.Int("WidthMax"), 1936);
  EXPECT_EQ(camera.Int("HeightMax"), 1216);
}

TEST(OffsetRules, AStrictCameraRefusesAnOffsetTheCurrentSizeLeavesNoRoomFor) {
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
  constexpr auto kOk = OXEL_RETURN_CODE_SUCCESS;
  constexpr auto kRange = OXEL_RETURN_CODE_OUT_OF_RANGE;
  {
    SCOPED_TRACE("strict");
    Camera strict = Camera::Open(world, "STRICT");
    RunAoiSteps(
        strict,
        {
            {"OffsetX", 6, kRange, "OffsetX 6 above maximum 0 for Width 64", 0, 64, 0, 16},
            {"Width", 56, kOk, "", 0, 56, 0, 16},
            {"OffsetX", 10, kRange, "OffsetX 10 above maximum 8 for Width 56", 0, 56, 0, 16},
            {"OffsetX", 6, kOk, "", 6, 56, 0, 16},
            {"OffsetY", 1, kRange, "OffsetY 1 above maximum 0 for Height 16", 6, 56, 0, 16},
        });
  }
  {
    SCOPED_TRACE("shrink");
    Camera shrink = Camera::Open(world, "SHRINK");
    RunAoiSteps(shrink, {
                            {"OffsetX", 6, kOk, "", 6, 56, 0, 16},
                            {"OffsetX", 58, kRange,
                             "OffsetX 58 above maximum 56 for WidthMax 64 and minimum Width 8", 6,
                             56, 0, 16},
                            {"OffsetX", 56, kOk, "", 56, 8, 0, 16},
                            {"OffsetY", 15, kOk, "", 56, 8, 15, 1},
                        });
  }
}

TEST_F(Features, PayloadSizeFollowsAoiAndPixelFormat) {
  Camera camera = Camera::Open(*world_, kColourId);
  EXPECT_EQ(camera.Enum("PixelFormat"), "BGR8");
  EXPECT_EQ(camera.Int("PayloadSize"), 1936 * 1216 * 3);
  ASSERT_EQ(camera.SetInt("Width", 640), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.SetInt("Height", 480), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(camera.Int("PayloadSize"), 640 * 480 * 3);
  ASSERT_EQ(camera.SetEnum("PixelFormat", "Mono8"), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(camera.Int("PayloadSize"), 640 * 480);
  size_t streamPayload = 0;
  ASSERT_EQ(OXEL_DataStream_GetPayloadSize(camera.stream, &streamPayload),
            OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(streamPayload, 640u * 480u);
  ExpectWrite(camera.SetInt("PayloadSize", 5), OXEL_RETURN_CODE_BAD_ACCESS, "read-only");

  // The monochrome camera's stream leaves the payload size to the camera.
  Camera mono = Camera::Open(*world_, kMonoId);
  OXEL_BOOL8 defines = 1;
  ASSERT_EQ(OXEL_DataStream_GetDefinesPayloadSize(mono.stream, &defines), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(defines, 0);
  ExpectWrite(OXEL_DataStream_GetPayloadSize(mono.stream, &streamPayload),
              OXEL_RETURN_CODE_NOT_AVAILABLE, "PayloadSize feature");
  EXPECT_EQ(mono.Int("PayloadSize"), 1280 * 1024);
}

TEST_F(Features, LockedTransportParametersAndRunningAcquisitionRefuseAoiAndFormat) {
  Camera camera = Camera::Open(*world_, kColourId);
  ASSERT_EQ(camera.SetInt("TLParamsLocked", 1), OXEL_RETURN_CODE_SUCCESS);
  for (const char* feature : {"Width", "Height", "OffsetX", "OffsetY"}) {
    SCOPED_TRACE(feature);
    EXPECT_EQ(Access(camera.Node(feature)), OXEL_NODE_ACCESS_STATUS_READ_ONLY);
    ExpectWrite(camera.SetInt(feature, 16), OXEL_RETURN_CODE_BAD_ACCESS,
                std::string(feature) + " is locked while TLParamsLocked is 1");
  }
  ExpectWrite(camera.SetEnum("PixelFormat", "Mono8"), OXEL_RETURN_CODE_BAD_ACCESS, "locked");
  ExpectWrite(camera.Execute("UserSetLoad"), OXEL_RETURN_CODE_BAD_ACCESS, "UserSetLoad refused");
  // Exposure is not a transport parameter.
  ExpectWrite(camera.SetFloat("ExposureTime", 1000.0), OXEL_RETURN_CODE_SUCCESS, "");

  ASSERT_EQ(camera.SetInt("TLParamsLocked", 0), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("AcquisitionStart"), OXEL_RETURN_CODE_SUCCESS);
  ExpectWrite(camera.SetInt("Width", 640), OXEL_RETURN_CODE_BAD_ACCESS, "acquisition is running");
  ASSERT_EQ(camera.Execute("AcquisitionAbort"), OXEL_RETURN_CODE_SUCCESS);
  ExpectWrite(camera.SetInt("Width", 640), OXEL_RETURN_CODE_SUCCESS, "");
  EXPECT_EQ(Access(camera.Node("Width")), OXEL_NODE_ACCESS_STATUS_READ_WRITE);

  // Closing the device drops the lock, as a lost control channel does.
  ASSERT_EQ(camera.SetInt("TLParamsLocked", 1), OXEL_RETURN_CODE_SUCCESS);
  camera.Close();
  Camera again = Camera::Open(*world_, kColourId);
  EXPECT_EQ(again.Int("TLParamsLocked"), 0);
  EXPECT_EQ(again.Int("Width"), 640);
}

TEST_F(Features, FrameRateMaximumIsComputedFromExposureAndLink) {
  Camera camera = Camera::Open(*world_, kColourId);
  // BGR8 1936 x 1216 through 500000000 B/s: 70.79 frames per second.
  EXPECT_DOUBLE_EQ(FloatMaximum(camera, "AcquisitionFrameRate"), 70.79);
  EXPECT_DOUBLE_EQ(camera.Float("AcquisitionFrameRate"), 70.79);
  ASSERT_EQ(camera.SetFloat("ExposureTime", 40000.0), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_DOUBLE_EQ(FloatMaximum(camera, "AcquisitionFrameRate"), 25.0);
  ExpectWrite(camera.SetFloat("AcquisitionFrameRate", 30.0), OXEL_RETURN_CODE_OUT_OF_RANGE,
              "above maximum 25");
  ASSERT_EQ(camera.SetFloat("ExposureTime", 20.0), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.SetEnum("PixelFormat", "Mono8"), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_DOUBLE_EQ(FloatMaximum(camera, "AcquisitionFrameRate"), 87.3);  // the sensor's limit
  ASSERT_EQ(camera.SetInt("DeviceLinkThroughputLimit", 100'000'000), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_DOUBLE_EQ(FloatMaximum(camera, "AcquisitionFrameRate"), 42.47);
  ExpectWrite(camera.SetInt("DeviceLinkThroughputLimit", 100'000'002),
              OXEL_RETURN_CODE_OUT_OF_RANGE, "not a multiple of 4");
}

TEST_F(Features, EnumerationEntriesKnowTheirAvailability) {
  Camera camera = Camera::Open(*world_, kColourId);
  OXEL_ENUMERATION_NODE selector = nullptr;
  ASSERT_EQ(OXEL_Node_ToEnumerationNode(camera.Node("TriggerSelector"), &selector),
            OXEL_RETURN_CODE_SUCCESS);
  size_t count = 0;
  ASSERT_EQ(OXEL_EnumerationNode_GetNumEntries(selector, &count), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(count, 3u);
  OXEL_ENUMERATION_ENTRY_NODE burst = nullptr;
  ASSERT_EQ(OXEL_EnumerationNode_GetEntry(selector, 2, &burst), OXEL_RETURN_CODE_SUCCESS);
  OXEL_NODE burstNode = nullptr;
  ASSERT_EQ(OXEL_EnumerationEntryNode_ToNode(burst, &burstNode), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(Access(burstNode), OXEL_NODE_ACCESS_STATUS_NOT_AVAILABLE);
  EXPECT_EQ(Text([&](char* t, size_t* s) { return OXEL_Node_GetName(burstNode, t, s); }),
            "EnumEntry_TriggerSelector_FrameBurstStart");

  ExpectWrite(camera.SetEnum("TriggerSelector", "FrameBurstStart"), OXEL_RETURN_CODE_NOT_AVAILABLE,
              "'FrameBurstStart' is not available");
  ExpectWrite(camera.SetEnum("TriggerSelector", "LineStart"), OXEL_RETURN_CODE_NOT_FOUND,
              "no entry 'LineStart'");
  ExpectWrite(camera.SetEnum("PixelFormat", "RGB8"), OXEL_RETURN_CODE_NOT_FOUND,
              "(entries: BGR8, Mono8)");

  // Entries carry their values: PFNC codes for pixel formats.
  OXEL_ENUMERATION_NODE format = nullptr;
  ASSERT_EQ(OXEL_Node_ToEnumerationNode(camera.Node("PixelFormat"), &format),
            OXEL_RETURN_CODE_SUCCESS);
  OXEL_ENUMERATION_ENTRY_NODE current = nullptr;
  ASSERT_EQ(OXEL_EnumerationNode_GetCurrentEntry(format, 0, &current), OXEL_RETURN_CODE_SUCCESS);
  int64_t code = 0;
  ASSERT_EQ(OXEL_EnumerationEntryNode_GetValue(current, &code), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(static_cast<uint64_t>(code), OXEL_SIM_PIXEL_FORMAT_BGR8);
}

TEST_F(Features, NodeKindsAreCheckedOnCastAndOnEveryTypedCall) {
  Camera camera = Camera::Open(*world_, kColourId);
  OXEL_NODE width = camera.Node("Width");
  OXEL_FLOAT_NODE asFloat = nullptr;
  ExpectWrite(OXEL_Node_ToFloatNode(width, &asFloat), OXEL_RETURN_CODE_INVALID_CAST,
              "'Width' is a Integer node, not a Float node");
  double value = 0;
  ExpectWrite(OXEL_FloatNode_GetValue(reinterpret_cast<OXEL_FLOAT_NODE>(width), 0, &value),
              OXEL_RETURN_CODE_INVALID_HANDLE, "not a Float node");
  OXEL_NODE node = nullptr;
  ExpectWrite(OXEL_NodeMap_FindNode(camera.features, "Gamma", 6, &node), OXEL_RETURN_CODE_NOT_FOUND,
              "no node 'Gamma'");

  OXEL_CATEGORY_NODE root = nullptr;
  ASSERT_EQ(OXEL_Node_ToCategoryNode(camera.Node("Root"), &root), OXEL_RETURN_CODE_SUCCESS);
  size_t features = 0;
  ASSERT_EQ(OXEL_CategoryNode_GetNumFeatures(root, &features), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(features, 7u);
  OXEL_REGISTER_NODE lut = nullptr;
  ASSERT_EQ(OXEL_Node_ToRegisterNode(camera.Node("LUTValueAll"), &lut), OXEL_RETURN_CODE_SUCCESS);
  int64_t length = 0;
  ASSERT_EQ(OXEL_RegisterNode_GetLength(lut, &length), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(length, 1024);

  // Every node of the map can be found by its name.
  size_t count = 0;
  ASSERT_EQ(OXEL_NodeMap_GetNumNodes(camera.features, &count), OXEL_RETURN_CODE_SUCCESS);
  for (size_t i = 0; i < count; ++i) {
    OXEL_NODE at = nullptr;
    ASSERT_EQ(OXEL_NodeMap_GetNode(camera.features, i, &at), OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(camera.Node(Text([&](char* t, size_t* s) { return OXEL_Node_GetName(at, t, s); })),
              at);
  }
}

TEST_F(Features, SelectorsAndAutoModesDecideWhatGainAndExposureMean) {
  Camera mono = Camera::Open(*world_, kMonoId);
  EXPECT_DOUBLE_EQ(FloatMaximum(mono, "Gain"), 16.0);
  ASSERT_EQ(mono.SetFloat("Gain", 8.5), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(mono.SetEnum("GainSelector", "DigitalAll"), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_DOUBLE_EQ(FloatMaximum(mono, "Gain"), 4.0);
  EXPECT_DOUBLE_EQ(mono.Float("Gain"), 1.0);
  ExpectWrite(mono.SetFloat("Gain", 8.5), OXEL_RETURN_CODE_OUT_OF_RANGE,
              "Gain (GainSelector DigitalAll) 8.5 above maximum 4");
  ASSERT_EQ(mono.SetEnum("GainSelector", "AnalogAll"), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_DOUBLE_EQ(mono.Float("Gain"), 8.5);
  EXPECT_DOUBLE_EQ(mono.Float("GainDefault"), 1.0);

  // The colour camera's selector offers "All" only.
  Camera colour = Camera::Open(*world_, kColourId);
  ExpectWrite(colour.SetEnum("GainSelector", "AnalogAll"), OXEL_RETURN_CODE_NOT_FOUND, "");
  ASSERT_EQ(colour.SetEnum("GainSelector", "All"), OXEL_RETURN_CODE_SUCCESS);

  ASSERT_EQ(mono.SetEnum("ExposureAuto", "Continuous"), OXEL_RETURN_CODE_SUCCESS);
  ExpectWrite(mono.SetFloat("ExposureTime", 1000.0), OXEL_RETURN_CODE_BAD_ACCESS,
              "read-only while ExposureAuto is Continuous");
  ASSERT_EQ(mono.SetEnum("ExposureAuto", "Off"), OXEL_RETURN_CODE_SUCCESS);
  // The monochrome camera's exposure has a constant increment of 1.
  ExpectWrite(mono.SetFloat("ExposureTime", 100.5), OXEL_RETURN_CODE_OUT_OF_RANGE,
              "not on the increment 1");
  ExpectWrite(mono.SetFloat("ExposureTime", 100.0), OXEL_RETURN_CODE_SUCCESS, "");
  ExpectWrite(colour.SetFloat("ExposureTime", 10.0), OXEL_RETURN_CODE_OUT_OF_RANGE,
              "ExposureTime 10 below minimum 20");
}

TEST_F(Features, InjectedFaultsWriteCountsAndUserSetLoad) {
  Camera camera = Camera::Open(*world_, kColourId);
  ASSERT_EQ(OxelSim_FailFeatureWrites(kColourId, "Width", 2, OXEL_RETURN_CODE_TIMEOUT),
            OXEL_RETURN_CODE_SUCCESS);
  ExpectWrite(camera.SetInt("Width", 640), OXEL_RETURN_CODE_TIMEOUT, "injected fault");
  ExpectWrite(camera.SetInt("Width", 640), OXEL_RETURN_CODE_TIMEOUT, "injected fault");
  ExpectWrite(camera.SetInt("Width", 7), OXEL_RETURN_CODE_OUT_OF_RANGE, "below minimum");
  ExpectWrite(camera.SetInt("Width", 640), OXEL_RETURN_CODE_SUCCESS, "");
  uint64_t writes = 0;
  ASSERT_EQ(OxelSim_GetFeatureWriteCount(kColourId, "Width", &writes), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(writes, 4u);
  EXPECT_EQ(OxelSim_GetFeatureWriteCount(kColourId, "Widht", &writes), OXEL_RETURN_CODE_NOT_FOUND);

  ASSERT_EQ(camera.SetFloat("ExposureTime", 777.0), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.SetEnum("UserSetSelector", "Default"), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("UserSetLoad"), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(camera.Int("Width"), 1936);
  EXPECT_DOUBLE_EQ(camera.Float("ExposureTime"), 5000.0);
}

TEST_F(Features, NodeChangedCallbacksReportWrites) {
  Camera camera = Camera::Open(*world_, kColourId);
  OXEL_NODE gain = camera.Node("Gain");
  std::vector<OXEL_NODE> changed;
  OXEL_CALLBACK_HANDLE handle = nullptr;
  ASSERT_EQ(OXEL_Node_RegisterChangedCallback(
                gain,
                [](OXEL_NODE node, void* context) {
                  static_cast<std::vector<OXEL_NODE>*>(context)->push_back(node);
                },
                &changed, &handle),
            OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.SetFloat("Gain", 3.0), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.SetFloat("Gain", 99.0), OXEL_RETURN_CODE_OUT_OF_RANGE);  // not a change
  EXPECT_EQ(changed, std::vector<OXEL_NODE>{gain});
  ASSERT_EQ(OXEL_Node_UnregisterChangedCallback(gain, handle), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(OXEL_Node_UnregisterChangedCallback(gain, handle), OXEL_RETURN_CODE_INVALID_HANDLE);
  ASSERT_EQ(camera.SetFloat("Gain", 4.0), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(changed.size(), 1u);
}

}  // namespace
}  // namespace simtest
