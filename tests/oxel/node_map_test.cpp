// The node map's cache and the node classes, against a fake node map whose
// answers the test controls (kinds the simulator never reports included).
#include <gtest/gtest.h>

#include <typeinfo>
#include <utility>
#include <vector>

#include "oxel/core/exceptions.h"
#include "oxel/core/node_map.h"
#include "oxel/core/nodes/enumeration_node.h"
#include "oxel/core/nodes/integer_node.h"
#include "oxel/fake_oxel.h"

namespace oxel::core {
namespace {

using fake_oxel::HandleNumber;
using fake_oxel::MakeHandle;

struct FakeNode {
  std::string name;
  OXEL_NODE_TYPE type;
  std::vector<uintptr_t> entries;  // node numbers of an enumeration's entries
};

// Node number n (1-based) is the node at index n - 1; its kind handle is the
// same number.
const std::vector<FakeNode> kNodes = {
    {"Width", OXEL_NODE_TYPE_INTEGER, {}},
    {"PixelFormat", OXEL_NODE_TYPE_ENUMERATION, {3, 4}},
    {"EnumEntry_PixelFormat_Mono8", OXEL_NODE_TYPE_ENUMERATION_ENTRY, {}},
    {"EnumEntry_PixelFormat_BGR8", OXEL_NODE_TYPE_ENUMERATION_ENTRY, {}},
    {"Mystery", 9, {}},
    {"TriggerSelector", OXEL_NODE_TYPE_ENUMERATION, {}},
};

struct Recorded {
  int countFailures = 0;
  std::vector<std::pair<std::string, size_t>> texts;  // names and symbols passed in
};
Recorded g_recorded;

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
    g_recorded = {};
    auto& t = fake_.table;
    t.OXEL_NodeMap_GetNumNodes = [](OXEL_NODE_MAP, size_t* count) -> OXEL_RETURN_CODE {
      if (g_recorded.countFailures > 0) {
        --g_recorded.countFailures;
        return Fail(OXEL_RETURN_CODE_NOT_AVAILABLE, "map busy");
      }
      *count = kNodes.size();
      return OXEL_RETURN_CODE_SUCCESS;
    };
    t.OXEL_NodeMap_GetNode = [](OXEL_NODE_MAP, size_t index, OXEL_NODE* node) -> OXEL_RETURN_CODE {
      *node = MakeHandle<OXEL_NODE>(index + 1);
      return OXEL_RETURN_CODE_SUCCESS;
    };
    t.OXEL_NodeMap_FindNode = [](OXEL_NODE_MAP, const char* name, size_t size,
                                 OXEL_NODE* node) -> OXEL_RETURN_CODE {
      g_recorded.texts.emplace_back(name, size);
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
    t.OXEL_Node_ToEnumerationNode = &CastTo<OXEL_NODE_TYPE_ENUMERATION, OXEL_ENUMERATION_NODE>;
    t.OXEL_Node_ToEnumerationEntryNode =
        &CastTo<OXEL_NODE_TYPE_ENUMERATION_ENTRY, OXEL_ENUMERATION_ENTRY_NODE>;
    t.OXEL_EnumerationNode_GetNumEntries = [](OXEL_ENUMERATION_NODE node,
                                              size_t* count) -> OXEL_RETURN_CODE {
      *count = NodeOf(HandleNumber(node)).entries.size();
      return OXEL_RETURN_CODE_SUCCESS;
    };
    t.OXEL_EnumerationNode_GetEntry = [](OXEL_ENUMERATION_NODE node, size_t index,
                                         OXEL_ENUMERATION_ENTRY_NODE* entry) -> OXEL_RETURN_CODE {
      *entry =
          MakeHandle<OXEL_ENUMERATION_ENTRY_NODE>(NodeOf(HandleNumber(node)).entries.at(index));
      return OXEL_RETURN_CODE_SUCCESS;
    };
    t.OXEL_EnumerationNode_GetCurrentEntry =
        [](OXEL_ENUMERATION_NODE, OXEL_NODE_CACHE_POLICY,
           OXEL_ENUMERATION_ENTRY_NODE* entry) -> OXEL_RETURN_CODE {
      *entry = MakeHandle<OXEL_ENUMERATION_ENTRY_NODE>(4);
      return OXEL_RETURN_CODE_SUCCESS;
    };
    t.OXEL_EnumerationNode_SetCurrentEntry = [](OXEL_ENUMERATION_NODE, const char* symbol,
                                                size_t size) -> OXEL_RETURN_CODE {
      g_recorded.texts.emplace_back(symbol, size);
      return OXEL_RETURN_CODE_SUCCESS;
    };
    t.OXEL_EnumerationEntryNode_ToNode = [](OXEL_ENUMERATION_ENTRY_NODE entry,
                                            OXEL_NODE* node) -> OXEL_RETURN_CODE {
      *node = MakeHandle<OXEL_NODE>(HandleNumber(entry));
      return OXEL_RETURN_CODE_SUCCESS;
    };
  }

  fake_oxel::ScopedTable fake_;
  std::shared_ptr<NodeMap> map_ = ClassCreator<NodeMap>::Create(MakeHandle<OXEL_NODE_MAP>(77));
};

TEST_F(NodeMapTest, AnUnknownKindIsAPlainNodeInIndexOrder) {
  const auto mystery = map_->FindNode("Mystery");
  EXPECT_EQ(map_->FindNode("Mystery"), mystery);
  EXPECT_EQ(typeid(*mystery), typeid(nodes::Node));
  EXPECT_EQ(mystery->Type(), 9);
  EXPECT_EQ(map_->Nodes().at(4), mystery);
  try {
    map_->FindNode<nodes::IntegerNode>("Mystery");
    ADD_FAILURE() << "a plain node became an integer";
  } catch (const InvalidCastException& error) {
    EXPECT_STREQ(error.what(), "Invalid node cast!");
  }
}

TEST_F(NodeMapTest, TextsGoInWithTheirTerminatorCounted) {
  map_->FindNode<nodes::EnumerationNode>("PixelFormat")->SetCurrentEntry("Mono8");
  EXPECT_EQ(g_recorded.texts,
            (std::vector<std::pair<std::string, size_t>>{{"PixelFormat", 12}, {"Mono8", 6}}));
}

TEST_F(NodeMapTest, EntriesAreCachedNodesOfALiveNodeMap) {
  const auto pixelFormat = map_->FindNode<nodes::EnumerationNode>("PixelFormat");
  const auto bgr8 = map_->FindNode("EnumEntry_PixelFormat_BGR8");
  EXPECT_EQ(pixelFormat->Entries().at(1), bgr8);
  EXPECT_EQ(pixelFormat->CurrentEntry(), bgr8);
  EXPECT_TRUE(map_->FindNode<nodes::EnumerationNode>("TriggerSelector")->Entries().empty());

  // Without its node map an enumeration still answers its own calls.
  map_.reset();
  try {
    pixelFormat->CurrentEntry();
    ADD_FAILURE() << "no error without a node map";
  } catch (const InternalErrorException& error) {
    EXPECT_STREQ(error.what(), "Pointer has expired!");
  }
  EXPECT_THROW(pixelFormat->Entries(), InternalErrorException);
  EXPECT_NO_THROW(pixelFormat->SetCurrentEntry("BGR8"));
}

TEST_F(NodeMapTest, AFailedCacheBuildIsRetriedOnNextUse) {
  g_recorded.countFailures = 1;
  EXPECT_THROW(map_->FindNode("Width"), NotAvailableException);
  EXPECT_EQ(map_->FindNode("Width")->Name(), "Width");
}

}  // namespace
}  // namespace oxel::core
