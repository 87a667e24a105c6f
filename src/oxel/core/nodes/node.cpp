#include "oxel/core/nodes/node.h"

#include <array>

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core::nodes {

Node::Node(CreationKey, NodeInit init)
    : handle_(init.handle),
      type_(init.type),
      name_(std::move(init.name)),
      nodeMap_(std::move(init.nodeMap)) {}

OXEL_NODE_ACCESS_STATUS Node::AccessStatus() const {
  return QueryValue<OXEL_NODE_ACCESS_STATUS>([this](OXEL_NODE_ACCESS_STATUS* out) {
    return Api().OXEL_Node_GetAccessStatus(handle_, out);
  });
}

std::string Node::DisplayName() const {
  return QueryText([this](char* text, size_t* size) {
    return Api().OXEL_Node_GetDisplayName(handle_, text, size);
  });
}

bool Node::IsReadable() const {
  const auto status = AccessStatus();
  return status == OXEL_NODE_ACCESS_STATUS_READ_ONLY ||
         status == OXEL_NODE_ACCESS_STATUS_READ_WRITE;
}

bool Node::IsWritable() const {
  const auto status = AccessStatus();
  return status == OXEL_NODE_ACCESS_STATUS_WRITE_ONLY ||
         status == OXEL_NODE_ACCESS_STATUS_READ_WRITE;
}

std::string NodeTypeText(OXEL_NODE_TYPE type) {
  static constexpr std::array<const char*, 9> kTexts = {
      "Integer",  "Boolean",  "Command",     "Float",           "String",
      "Register", "Category", "Enumeration", "EnumerationEntry"};
  if (type < 0 || static_cast<size_t>(type) >= kTexts.size()) {
    return {};
  }
  return kTexts[static_cast<size_t>(type)];
}

std::string NodeAccessStatusText(OXEL_NODE_ACCESS_STATUS status) {
  static constexpr std::array<const char*, 5> kTexts = {"NotImplemented", "NotAvailable",
                                                        "WriteOnly", "ReadOnly", "ReadWrite"};
  if (status < 0 || static_cast<size_t>(status) >= kTexts.size()) {
    return "NotDefined";
  }
  return kTexts[static_cast<size_t>(status)];
}

}  // namespace oxel::core::nodes
