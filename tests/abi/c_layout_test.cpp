// The header compiled as C and as C++ must describe the same records.
#include <gtest/gtest.h>

#include <array>
#include <cstddef>

#include "abi/layout_from_c.h"

namespace {

TEST(HeaderLayout, CAndCxxCompilersAgree) {
  const std::array<size_t, 20> expected = {
      sizeof(SystemRecord),
      sizeof(CameraRecord),
      sizeof(CameraSlot),
      sizeof(FormatDescriptor),
      sizeof(ParameterEntry),
      offsetof(SystemRecord, tCam),
      offsetof(SystemRecord, tSlot),
      offsetof(SystemRecord, pfnAcqFinished),
      offsetof(SystemRecord, pszCamSelection),
      offsetof(CameraRecord, tParam),
      offsetof(CameraRecord, iCamNum),
      offsetof(CameraSlot, pCamera),
      offsetof(CamImage, ptLiveBuffer),
      offsetof(CamImage, iAoiBottom),
      offsetof(CameraInfo, iCamId),
      offsetof(CameraInfo, ptHostView),
      offsetof(PlaneInfo, iFirstRow),
      offsetof(LiveBuffer, iStride),
      offsetof(HostDisplay, yNewLiveFrame),
      offsetof(HostView, yColourDisplay),
  };
  std::array<size_t, 20> fromC{};
  ASSERT_EQ(TavroLayoutFromC(fromC.data(), fromC.size()), expected.size());
  EXPECT_EQ(fromC, expected);
  EXPECT_EQ(fromC[0], 80072u);
}

}  // namespace
