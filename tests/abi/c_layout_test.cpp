// The header compiled as C and as C++ must describe the same records.
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "abi/layout_from_c.h"

namespace {

TEST(HeaderLayout, CAndCxxCompilersAgree) {
#define TAVRO_AS_ELEMENT(value) value,
  const std::vector<size_t> expected = {TAVRO_LAYOUT_ITEMS(TAVRO_AS_ELEMENT)};
  std::vector<size_t> fromC(expected.size());
  ASSERT_EQ(TavroLayoutFromC(fromC.data(), fromC.size()), expected.size());
  EXPECT_EQ(fromC, expected);
  EXPECT_EQ(fromC[0], 80072u);
}

}  // namespace
