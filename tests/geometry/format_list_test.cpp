// Format entries: their texts and the host name field. The report is checked
// line by line in the setup report.
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

TEST(FormatTexts, DescribeTheEntryAndJoinWithoutATrailingSeparator) {
  FormatEntry offset = ColourSensor();
  offset.left = 8;
  offset.top = -2;
  offset.width = 16;
  offset.height = 4;
  offset.formatId = 4000000000u;  // unsigned in the text
  EXPECT_EQ(FormatText(offset), "16X4:4000000000");
  EXPECT_EQ(FormatAoiText(offset), "8,-2 --> 23,1");

  EXPECT_EQ(AllFormatsText({}), "");
  EXPECT_EQ(AllFormatsText({ColourSensor()}), "1936X1216:0");
  EXPECT_EQ(AllFormatsText({ColourSensor(), offset}), "1936X1216:0::16X4:4000000000");
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

}  // namespace
}  // namespace tavro::geometry
