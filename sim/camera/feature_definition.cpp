#include "camera/feature_definition.h"

#include <cctype>

namespace oxelsim {

const EnumEntryDefinition* FeatureDefinition::FindEntry(const std::string& symbolic) const {
  for (const EnumEntryDefinition& entry : entries) {
    if (entry.symbolic == symbolic) return &entry;
  }
  return nullptr;
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
