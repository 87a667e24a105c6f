// The texts of node kinds, node access states and device access states.
#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "oxel/core/device_access_status.h"
#include "oxel/core/nodes/node.h"

namespace oxel::core {
namespace {

TEST(StatusTextsTest, EveryKnownValueAndTheFallbacks) {
  const std::vector<std::tuple<int32_t, const char*>> nodeTypes = {
      {0, "Integer"},          {1, "Boolean"},  {2, "Command"},  {3, "Float"},
      {4, "String"},           {5, "Register"}, {6, "Category"}, {7, "Enumeration"},
      {8, "EnumerationEntry"}, {9, ""},         {-1, ""}};
  for (const auto& [value, text] : nodeTypes) {
    EXPECT_EQ(nodes::NodeTypeText(value), text) << value;
  }
  const std::vector<std::tuple<int32_t, const char*>> nodeAccess = {
      {0, "NotImplemented"}, {1, "NotAvailable"}, {2, "WriteOnly"},  {3, "ReadOnly"},
      {4, "ReadWrite"},      {5, "NotDefined"},   {7, "NotDefined"}, {-1, "NotDefined"}};
  for (const auto& [value, text] : nodeAccess) {
    EXPECT_EQ(nodes::NodeAccessStatusText(value), text) << value;
  }
  const std::vector<std::tuple<int32_t, const char*>> deviceAccess = {
      {0, ""},     {1, "ReadWrite"},     {2, "ReadOnly"},     {3, "NoAccess"},
      {4, "Busy"}, {5, "OpenReadWrite"}, {6, "OpenReadOnly"}, {7, ""},
      {999, ""},   {1000, "Custom"},     {4711, "Custom"},    {-3, ""}};
  for (const auto& [value, text] : deviceAccess) {
    EXPECT_EQ(DeviceAccessStatusText(value), text) << value;
  }
}

}  // namespace
}  // namespace oxel::core
