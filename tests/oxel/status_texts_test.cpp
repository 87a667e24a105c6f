// The texts of node kinds, node access states and device access states, at
// the ends of their ranges and past them.
#include <gtest/gtest.h>

#include <string>

#include "oxel/core/device_access_status.h"
#include "oxel/core/nodes/node.h"

namespace oxel::core {
namespace {

TEST(StatusTextsTest, EndsOfTheRangesAndTheFallbacks) {
  using nodes::NodeAccessStatusText;
  using nodes::NodeTypeText;
  const std::vector<std::pair<std::string, std::string>> rows = {
      {NodeTypeText(0), "Integer"},
      {NodeTypeText(8), "EnumerationEntry"},
      {NodeTypeText(9), ""},
      {NodeTypeText(-1), ""},
      {NodeAccessStatusText(0), "NotImplemented"},
      {NodeAccessStatusText(4), "ReadWrite"},
      {NodeAccessStatusText(7), "NotDefined"},
      {NodeAccessStatusText(-1), "NotDefined"},
      {DeviceAccessStatusText(0), ""},
      {DeviceAccessStatusText(4), "Busy"},
      {DeviceAccessStatusText(6), "OpenReadOnly"},
      {DeviceAccessStatusText(7), ""},
      {DeviceAccessStatusText(999), ""},
      {DeviceAccessStatusText(1000), "Custom"},
      {DeviceAccessStatusText(4711), "Custom"},
      {DeviceAccessStatusText(-3), ""}};
  for (size_t i = 0; i < rows.size(); ++i) {
    EXPECT_EQ(rows[i].first, rows[i].second) << "row " << i;
  }
}

}  // namespace
}  // namespace oxel::core
