// What discovery leaves in a camera's record and slot, byte for byte: the
// 19-row parameter table, the format descriptor, the geometry copy, the
// attach values, and the report it prints on the way.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "support/plugin_host.h"

namespace tavro::testing {
namespace {

using ::testing::HasSubstr;

struct Row {
  int32_t supported, defaultValue, current, minimum, maximum, increment;
};
using Table = std::array<Row, TAVRO_NUM_PARAMS>;

constexpr std::array<const char*, TAVRO_NUM_PARAMS> kNames = {
    "Brightness",  "Contrast",     "Hue",           "Saturation", "Sharpness",
    "Gamma",       "Color Enable", "White Balance", "Offset",     "Gain Boost",
    "Master Gain", "Red Gain",     "Green Gain",    "Blue Gain",  "Pixel Clock",
    "Exposure",    "Manual Focus", "Digital Zoom",  "Throughput"};

// Only the four rows these cameras can support carry values.
Table TableWith(Row offset, Row gain, Row exposure, Row throughput) {
  Table table{};
  table[TAVRO_PARAM_OFFSET] = offset;
  table[TAVRO_PARAM_MASTER_GAIN] = gain;
  table[TAVRO_PARAM_EXPOSURE] = exposure;
  table[TAVRO_PARAM_THROUGHPUT] = throughput;
  return table;
}

void ExpectTable(const CameraRecord& record, const Table& table) {
  ASSERT_EQ(record.iNumParams, TAVRO_NUM_PARAMS);
  for (int i = 0; i < TAVRO_NUM_PARAMS; ++i) {
    SCOPED_TRACE(kNames[i]);
    ParameterEntry expected;
    std::memset(&expected, 0, sizeof expected);
    std::strcpy(expected.szName, kNames[i]);
    expected.ySupported = table[i].supported;
    expected.iDefault = table[i].defaultValue;
    expected.iCurrent = table[i].current;
    expected.iMinimum = table[i].minimum;
    expected.iMaximum = table[i].maximum;
    expected.iIncrement = table[i].increment;
    const ParameterEntry& p = record.tParam[i];
    EXPECT_EQ(std::memcmp(&p, &expected, sizeof expected), 0)
        << p.ySupported << " " << p.iDefault << " " << p.iCurrent << " " << p.iMinimum << ".."
        << p.iMaximum << " step " << p.iIncrement;
  }
}

void ExpectFormat(const CameraRecord& record, int32_t width, int32_t height, const char* name) {
  ASSERT_EQ(record.iNumFormats, 1);
  FormatDescriptor expected;
  std::memset(&expected, 0, sizeof expected);
  expected.iWidth = width;
  expected.iHeight = height;
  std::strcpy(expected.szName, name);
  EXPECT_EQ(std::memcmp(&record.tFormat[0], &expected, sizeof expected), 0);
}

class Discovery : public PluginHost {};

TEST_F(Discovery, BundledCamerasReportTheirTablesFormatsGeometryAndSlots) {
  ASSERT_EQ(Setup(nullptr), 0);
  ASSERT_EQ(system->iNumCams, 2);

  // Colour camera: black level is read only from monochrome frames (-1);
  // the gain was set to its minimum on opening, the exposure request of 10
  // raised to the minimum 20, the link limit is at its maximum.
  ExpectTable(system->tCam[0], TableWith({1, 0, -1, 0, 255, 1}, {1, 0, 0, 0, 100, 1},
                                         {1, 20, 20, 20, 1000000, 0}, {1, 100, 100, 0, 100, 1}));
  ExpectFormat(system->tCam[0], 1936, 1216, "OX-U3-23C-Left");

  // Monochrome camera: black level 4 of 63.75 is 16 of 255; the gain's
  // minimum is 1, so the zero written on opening was refused; exposure
  // 13 to 10000000 in steps of 1.
  ExpectTable(system->tCam[1], TableWith({1, 16, 16, 0, 255, 1}, {1, 0, 0, 0, 100, 1},
                                         {1, 13, 13, 13, 10000000, 1}, {1, 100, 100, 0, 100, 1}));
  ExpectFormat(system->tCam[1], 1280, 1024, "OX-U3-13M");

  struct Geometry {
    int camera;
    std::array<int32_t, 12> values;  // -1: depends on the camera's offset rule
  };
  const Geometry geometries[] = {
      {0, {0, 0, -1, -1, 8, 2, 16, 2, 1936, 1216, 8, 2}},
      {1, {0, 0, -1, -1, 4, 2, 32, 2, 1280, 1024, 4, 2}},
  };
  for (const auto& g : geometries) {
    for (int k = 0; k < 12; ++k) {
      if (g.values[k] < 0) continue;
      EXPECT_EQ(system->tCam[g.camera].aiGeometry[k], g.values[k])
          << "camera " << g.camera << " position " << k;
    }
    // The slot is marked attached with its fixed values.
    const CameraSlot& slot = system->tSlot[g.camera];
    EXPECT_EQ(slot.dExposure, 10.0);
    const double hostValues[5] = {1.0, 0.0, 0.0, 1.0, 4.0};
    EXPECT_EQ(std::memcmp(slot.adHostValues, hostValues, sizeof hostValues), 0);
    EXPECT_EQ(slot.iHostValue136, -1);
    EXPECT_EQ(slot.yReapply, 1u);
    EXPECT_EQ(slot.yLive, 0u);
  }
}

TEST_F(Discovery, CameraWithoutGainBlackLevelAndLinkLimitSupportsOnlyExposure) {
  UseProducers({ProducerFile({SmallCamera("X", "Bare",
                                          R"("features": {"Gain": "absent", "BlackLevel": "absent",
                      "DeviceLinkThroughputLimit": "absent",
                      "ExposureTime": {"min": 12.7, "max": 1000.9, "inc": 0.5, "value": 100.2}})")})});
  ASSERT_EQ(Setup(nullptr), 0);
  ASSERT_EQ(system->iNumCams, 1);
  // Opening asked for 10, clamped to 12.7: current 13 like the minimum.
  ExpectTable(system->tCam[0], TableWith({}, {}, {1, 13, 13, 13, 1000, 0}, {}));
}

TEST_F(Discovery, ReportLinesComeInOrder) {
  UseProducers({ProducerFile({SmallCamera("A", "Solo")})});
  Output output;
  ASSERT_EQ(Setup(nullptr, &output), 0);
  const std::string hyphens(56, '-');
  const std::string expected =
      "The number of Oxel cameras connected = 1\n"
      "Acquire thread started.\n"
      "The following 1 image formats are supported: \n" +
      hyphens + "\n32X16:0\tBinning:0\tSubsampling:0\tAOI:0,0 --> 31,15\n" + hyphens +
      "\n"
      "All formats combined: \n"
      "\t32X16:0\n"
      "The following represents the AOI parameters as a string: \n" +
      hyphens + "\n";
  EXPECT_EQ(output.out.substr(0, expected.size()), expected);
  EXPECT_THAT(output.out, HasSubstr("\n---\t" + std::string(53, '-') +
                                    "\nMaster Gain specs being discovered...\n"
                                    "Manual Focus specs being discovered...\nover.\n"
                                    "Digital Zoom specs being discovered...\nover.\n"));
  EXPECT_EQ(output.err, "");
}

}  // namespace
}  // namespace tavro::testing
