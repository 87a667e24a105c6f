#include "camera/feature_definition.h"

#include <cctype>

namespace oxelsim {

const EnumEntryDefinition* FeatureDefinition::FindEntry(const std::string& symbolic) const {
  for (const EnumEntryDefinition& entry : entries) {
    if (entry.symbolic == symbolic) return &entry;
  }
  return nullptr;
}

const char* NodeTypeName(OXEL_NODE_TYPE type) {
  switch (type) {
    case OXEL_NODE_TYPE_INTEGER:
      return "Integer";
    case OXEL_NODE_TYPE_BOOLEAN:
      return "Boolean";
    case OXEL_NODE_TYPE_COMMAND:
      return "Command";
    case OXEL_NODE_TYPE_FLOAT:
      return "Float";
    case OXEL_NODE_TYPE_STRING:
      return "String";
    case OXEL_NODE_TYPE_REGISTER:
      return "Register";
    case OXEL_NODE_TYPE_CATEGORY:
      return "Category";
    case OXEL_NODE_TYPE_ENUMERATION:
      return "Enumeration";
    case OXEL_NODE_TYPE_ENUMERATION_ENTRY:
      return "EnumerationEntry";
  }
  return "Unknown";
}

const char* AccessName(OXEL_NODE_ACCESS_STATUS access) {
  switch (access) {
    case OXEL_NODE_ACCESS_STATUS_NOT_IMPLEMENTED:
      return "NotImplemented";
    case OXEL_NODE_ACCESS_STATUS_NOT_AVAILABLE:
      return "NotAvailable";
    case OXEL_NODE_ACCESS_STATUS_WRITE_ONLY:
      return "WriteOnly";
    case OXEL_NODE_ACCESS_STATUS_READ_ONLY:
      return "ReadOnly";
    case OXEL_NODE_ACCESS_STATUS_READ_WRITE:
      return "ReadWrite";
  }
  return "NotDefined";
}

std::string DisplayNameOf(const std::string& name) {
  std::string display;
  for (size_t i = 0; i < name.size(); ++i) {
    const bool upper = std::isupper(static_cast<unsigned char>(name[i])) != 0;
    const bool lowerNext =
        i + 1 < name.size() && std::islower(static_cast<unsigned char>(name[i + 1])) != 0;
    const bool lowerBefore = i > 0 && std::islower(static_cast<unsigned char>(name[i - 1])) != 0;
    const bool digitBefore = i > 0 && std::isdigit(static_cast<unsigned char>(name[i - 1])) != 0;
    if (i > 0 && upper && (lowerBefore || digitBefore || lowerNext) && display.back() != ' ') {
      display += ' ';
    }
    display += name[i];
  }
  return display;
}

}  // namespace oxelsim
