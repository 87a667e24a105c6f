// The node map's cache and the node classes, against a fake node map whose
// answers the test controls (kinds the simulator never reports included).
#include <gtest/gtest.h>

#include <typeinfo>
#include <vector>

#include "oxel/core/exceptions.h"
#include "oxel/core/node_map.h"
#include "oxel/core/nodes/integer_node.h"
#include "oxel/fake_oxel.h"

namespace oxel::core {
namespace {

using fake_oxel::HandleNumber;
using fake_oxel::MakeHandle;

struct FakeNode {
  std::string name;
  OXEL_NODE_TYPE type;
};

// Node number n (1-based) is the node at index n - 1; its kind handle is the
// same number.
const std::vector<FakeNode> kNodes = {
    {"Width", OXEL_NODE_TYPE_INTEGER},
    {"Gain", OXEL_NODE_TYPE_FLOAT},
    {"Mystery", 9},
};

int g_countFailures = 0;  // node-count queries still to fail

const FakeNode& NodeOf(uintptr_t number) {
  return kNodes.at(number - 1);
}

OXEL_RETURN_CODE Fail(OXEL_RETURN_CODE code, const std::string& text) {
  fake_oxel::SetLastError(code, text);
  return code;
}

// A cast to a kind succeeds only for a node of that kind.
template <OXEL_NODE_TYPE Kind, typename KindHandle>
OXEL_RETURN_CODE CastTo(OXEL_NODE node, KindHandle* out) {
  if (NodeOf(HandleNumber(node)).type != Kind) {
    return Fail(OXEL_RETURN_CODE_INVALID_CAST, "wrong kind");
  }
  *out = MakeHandle<KindHandle>(HandleNumber(node));
  return OXEL_RETURN_CODE_SUCCESS;
}

class NodeMapTest : public ::testing::Test {
 protected:
  NodeMapTest() {
    g_countFailures = 0;
    auto& t = fake_.table;
    t.OXEL_NodeMap_GetNumNodes = [](OXEL_NODE_MAP, size_t* count) -> OXEL_RETURN_CODE {
      if (g_countFailures > 0) {
        --g_countFailures;
        return Fail(OXEL_RETURN_CODE_NOT_AVAILABLE, "map busy");
      }
      *count = kNodes.size();
      return OXEL_RETURN_CODE_SUCCESS;
    };
    t.OXEL_NodeMap_GetNode = [](OXEL_NODE_MAP, size_t index, OXEL_NODE* node) -> OXEL_RETURN_CODE {
      *node = MakeHandle<OXEL_NODE>(index + 1);
      return OXEL_RETURN_CODE_SUCCESS;
    };
    t.OXEL_NodeMap_FindNode = [](OXEL_NODE_MAP, const char* name, size_t,
                                 OXEL_NODE* node) -> OXEL_RETURN_CODE {
      for (size_t i = 0; i < kNodes.size(); ++i) {
        if (kNodes[i].name == name) {
          *node = MakeHandle<OXEL_NODE>(i + 1);
          return OXEL_RETURN_CODE_SUCCESS;
        }
      }
      return Fail(OXEL_RETURN_CODE_NOT_FOUND, std::string("no feature ") + name);
    };
    t.OXEL_Node_GetType = [](OXEL_NODE node, OXEL_NODE_TYPE* type) -> OXEL_RETURN_CODE {
      *type = NodeOf(HandleNumber(node)).type;
      return OXEL_RETURN_CODE_SUCCESS;
    };
    t.OXEL_Node_GetName = [](OXEL_NODE node, char* text, size_t* size) -> OXEL_RETURN_CODE {
      return fake_oxel::WriteText(NodeOf(HandleNumber(node)).name, text, size);
    };
    t.OXEL_Node_ToIntegerNode = &CastTo<OXEL_NODE_TYPE_INTEGER, OXEL_INTEGER_NODE>;
    t.OXEL_Node_ToFloatNode = &CastTo<OXEL_NODE_TYPE_FLOAT, OXEL_FLOAT_NODE>;
  }

  fake_oxel::ScopedTable fake_;
  std::shared_ptr<NodeMap> map_ = ClassCreator<NodeMap>::Create(MakeHandle<OXEL_NODE_MAP>(77));
};

TEST_F(NodeMapTest, AFailedCacheBuildIsRetriedAndAnUnknownKindIsAPlainNode) {
  g_countFailures = 1;
  EXPECT_THROW(map_->FindNode("Width"), NotAvailableException);
  EXPECT_EQ(map_->FindNode("Width")->Name(), "Width");

  const auto mystery = map_->FindNode("Mystery");
  EXPECT_EQ(map_->FindNode("Mystery"), mystery);
  EXPECT_EQ(typeid(*mystery), typeid(nodes::Node));
  EXPECT_EQ(mystery->Type(), 9);
  EXPECT_EQ(map_->Nodes().at(2), mystery);
  try {
    map_->FindNode<nodes::IntegerNode>("Mystery");
    ADD_FAILURE() << "a plain node became an integer";
  } catch (const InvalidCastException& error) {
    EXPECT_STREQ(error.what(), "Invalid node cast!");
  }
}

}  // namespace
}  // namespace oxel::core
