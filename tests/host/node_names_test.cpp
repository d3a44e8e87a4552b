// Node names through the name index: unique names count on from the last one handed out but take a number
// back as soon as its node is renamed, deleted or leaves the scene; look-ups see only the scene's nodes (not
// those of external-scene trees, nor deleted ones kept for undo), the first in the walk when names repeat, and
// the names of nodes read from a file.
#include "assetmanagement.h"
#include "core/class_directory.h"
#include "hold.h"
#include "istdplug.h"
#include "maxapi.h"
#include "scene/node_operations.h"
#include "scene/scene.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

using hostrt::Scene;
using hostrt::UniqueNodeName;

namespace {

Interface* ip() { return GetCOREInterface(); }

// A node named as the host names a new one: after its class, with the next free number.
INode* newBox(const MCHAR* name = nullptr) {
    auto* box = dynamic_cast<Object*>(static_cast<Animatable*>(CreateInstance(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID)));
    INode* n = ip()->CreateObjectNode(box);
    n->SetName(name ? name : UniqueNodeName(MSTR(L"Box")).data());
    return n;
}

std::wstring unique(const wchar_t* base) { return UniqueNodeName(MSTR(base)).str(); }

struct NodeNames : ::testing::Test {
    void SetUp() override {
        hostrt::RegisterBuiltinClasses();
        Scene::Instance().ResetScene();
    }
    void TearDown() override {
        while (theHold.GetBeginDepth() > 0) theHold.Cancel();
        theHold.FlushUndoBuffer();
        Scene::Instance().ResetScene();
    }
};

}  // namespace

TEST_F(NodeNames, UniqueNamesCountOnAndTakeFreedNumbersBack) {
    INode* b1 = newBox();
    INode* b2 = newBox();
    newBox();
    EXPECT_STREQ(b1->GetName(), L"Box001");
    EXPECT_STREQ(b2->GetName(), L"Box002");
    EXPECT_EQ(unique(L"Box001"), L"Box004");
    EXPECT_EQ(unique(L"Box002"), L"Box004") << "a taken numbered name counts on from its number";
    EXPECT_EQ(unique(L"Box010"), L"Box010") << "a free name is kept";
    EXPECT_EQ(unique(L"Box"), L"Box") << "no node is called just Box";

    b2->SetName(L"lid");  // its number is free again
    EXPECT_STREQ(newBox()->GetName(), L"Box002");
    EXPECT_STREQ(newBox()->GetName(), L"Box004");

    INodeTab gone;
    gone.Append(1, &b1);
    ip()->DeleteNodes(gone);
    EXPECT_STREQ(newBox()->GetName(), L"Box001");

    // A node moved out of the scene (under an external-scene entry) frees its name too.
    INode* parked = ip()->GetINodeByName(L"Box003");
    ASSERT_NE(parked, nullptr);
    INode* root = ip()->GetRootNode();
    ASSERT_TRUE(root->AddNewXRefFile(MaxSDK::AssetManagement::IAssetManager::GetInstance()->GetAsset(
        L"names_parked", MaxSDK::AssetManagement::kXRefAsset)));
    root->GetXRefTree(root->GetXRefFileCount() - 1)->AttachChild(parked, FALSE);
    EXPECT_EQ(ip()->GetINodeByName(L"Box003"), nullptr);
    EXPECT_STREQ(newBox()->GetName(), L"Box003");
    EXPECT_STREQ(newBox()->GetName(), L"Box005");

    // Past three digits the number simply grows.
    newBox(L"Box999");
    EXPECT_EQ(unique(L"Box999"), L"Box1000");
}

TEST_F(NodeNames, LookUpsSeeTheScenesNodesInWalkOrder) {
    INode* first = newBox(L"twin");
    INode* child = newBox(L"kid");
    first->AttachChild(child);
    INode* second = newBox(L"twin");
    EXPECT_EQ(ip()->GetINodeByName(L"twin"), first);
    EXPECT_EQ(ip()->GetINodeByName(L"kid"), child);
    child->SetName(L"twin");  // below the first twin: before the second one in the walk
    EXPECT_EQ(ip()->GetINodeByName(L"twin"), first);
    EXPECT_EQ(ip()->GetINodeByName(L"kid"), nullptr);

    // Deleted while holding: kept for undo, but no longer in the scene; undo brings the name back.
    theHold.Begin();
    INodeTab gone;
    gone.Append(1, &first);
    ip()->DeleteNodes(gone);
    theHold.Accept(L"Delete");
    EXPECT_EQ(ip()->GetINodeByName(L"twin"), second) << "the child went up to the root, behind the second twin";
    first = nullptr;
    theHold.Undo();
    INode* back = ip()->GetINodeByName(L"twin");
    ASSERT_NE(back, nullptr);
    EXPECT_NE(back, second);
    EXPECT_EQ(unique(L"twin"), L"twin001");
}

TEST_F(NodeNames, NamesOfNodesReadFromAFileAreFound) {
    const auto file = std::filesystem::temp_directory_path() / ("node_names_" + std::to_string(::getpid()) + ".max");
    INode* table = newBox(L"table");
    table->AttachChild(newBox(L"lamp"));
    newBox();
    ASSERT_EQ(ip()->SaveToFile(MSTR::FromUTF8(file.string()).data()), 1);
    Scene::Instance().ResetScene();
    EXPECT_EQ(ip()->GetINodeByName(L"table"), nullptr);
    ASSERT_EQ(ip()->LoadFromFile(MSTR::FromUTF8(file.string()).data()), 1);
    INode* lamp = ip()->GetINodeByName(L"lamp");
    ASSERT_NE(lamp, nullptr);
    EXPECT_STREQ(lamp->GetParentNode()->GetName(), L"table");
    EXPECT_EQ(unique(L"Box001"), L"Box002");
    std::filesystem::remove(file);
}
