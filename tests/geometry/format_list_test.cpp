// Format entries: their texts, the report and the host name field.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "geometry/format_list.h"

namespace tavro::geometry {
namespace {

FormatEntry ColourSensor(const std::string& key = "M1-Left") {
  AoiLimits limits;
  limits.maxWidth = 1936;
  limits.maxHeight = 1216;
  return FullSensorFormat(limits, key);
}

TEST(FormatTexts, DescribeTheEntry) {
  const FormatEntry entry = ColourSensor();
  EXPECT_EQ(FormatText(entry), "1936X1216:0");
  EXPECT_EQ(FormatAoiText(entry), "0,0 --> 1935,1215");

  FormatEntry offset = entry;
  offset.left = 8;
  offset.top = -2;
  offset.width = 16;
  offset.height = 4;
  offset.formatId = 4000000000u;  // unsigned in the text
  EXPECT_EQ(FormatText(offset), "16X4:4000000000");
  EXPECT_EQ(FormatAoiText(offset), "8,-2 --> 23,1");
}

TEST(FormatTexts, AllFormatsAreJoinedWithoutATrailingSeparator) {
  EXPECT_EQ(AllFormatsText({}), "");
  EXPECT_EQ(AllFormatsText({ColourSensor()}), "1936X1216:0");
  FormatEntry mono = ColourSensor();
  mono.width = 1280;
  mono.height = 1024;
  mono.formatId = 1;
  EXPECT_EQ(AllFormatsText({ColourSensor(), mono}), "1936X1216:0::1280X1024:1");
}

TEST(FormatName, FillsTheHostFieldWithZeroPaddingAndNoTerminatorWhenFull) {
  struct Case {
    std::string name;
    std::string expectedField;  // all 64 bytes
  };
  const std::string sixtyFour(64, 'k');
  const Case cases[] = {
      {"M1-Left", std::string("M1-Left") + std::string(57, '\0')},
      {"", std::string(64, '\0')},
      {std::string(63, 'a'), std::string(63, 'a') + std::string(1, '\0')},
      {sixtyFour, sixtyFour},
      {sixtyFour + "overflow", sixtyFour},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    char field[66];
    std::memset(field, 0x5A, sizeof(field));
    CopyFormatName(ColourSensor(c.name), field, 64);
    EXPECT_EQ(std::string(field, 64), c.expectedField);
    EXPECT_EQ(field[64], 0x5A) << "wrote past the field";
  }
}

TEST(FormatReport, PrintsOneLinePerEntryBetweenRules) {
  testing::internal::CaptureStdout();
  PrintFormats({ColourSensor()});
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "The following 1 image formats are supported: \n"
            "--------------------------------------------------------\n"
            "1936X1216:0\tBinning:0\tSubsampling:0\tAOI:0,0 --> 1935,1215\n"
            "--------------------------------------------------------\n");
}

}  // namespace
}  // namespace tavro::geometry
