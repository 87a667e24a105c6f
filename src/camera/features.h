// Typed access to a camera's features through its node map. Every failure is
// an exception of the standard family, so that the camera operations can turn
// it into their documented failure results.
#pragma once

#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

#include "oxel/core/node_map.h"
#include "oxel/core/nodes/command_node.h"
#include "oxel/core/nodes/enumeration_node.h"
#include "oxel/core/nodes/float_node.h"
#include "oxel/core/nodes/integer_node.h"

namespace tavro::camera {

// A camera that was never opened has no node map; its features fail like
// missing ones.
template <typename T>
std::shared_ptr<T> Feature(const std::shared_ptr<oxel::core::NodeMap>& nodeMap,
                           const std::string& name) {
  if (!nodeMap) throw std::runtime_error("Camera has no node map, cannot reach " + name);
  return nodeMap->FindNode<T>(name);
}

// The feature when it exists, is of kind T and is read-write; else null.
template <typename T>
std::shared_ptr<T> ReadWriteFeature(const std::shared_ptr<oxel::core::NodeMap>& nodeMap,
                                    const std::string& name) {
  try {
    auto node = Feature<T>(nodeMap, name);
    if (node->AccessStatus() == OXEL_NODE_ACCESS_STATUS_READ_WRITE) return node;
  } catch (const std::exception&) {
    // Missing or of another kind: not usable either.
  }
  return nullptr;
}

inline void WriteInteger(const std::shared_ptr<oxel::core::NodeMap>& nodeMap,
                         const std::string& name, int64_t value) {
  Feature<oxel::core::nodes::IntegerNode>(nodeMap, name)->SetValue(value);
}

inline void SelectEntry(const std::shared_ptr<oxel::core::NodeMap>& nodeMap,
                        const std::string& name, const std::string& entry) {
  Feature<oxel::core::nodes::EnumerationNode>(nodeMap, name)->SetCurrentEntry(entry);
}

inline void ExecuteCommand(const std::shared_ptr<oxel::core::NodeMap>& nodeMap,
                           const std::string& name) {
  Feature<oxel::core::nodes::CommandNode>(nodeMap, name)->Execute();
}

inline double ReadFloat(const std::shared_ptr<oxel::core::NodeMap>& nodeMap,
                        const std::string& name) {
  return Feature<oxel::core::nodes::FloatNode>(nodeMap, name)->Value();
}

}  // namespace tavro::camera
