// External-scene assets and entries as a save uses them to park nodes: the asset manager hands out one asset per
// name and type, an entry is made from an external-scene asset and answers it, nodes parked under the entry's
// tree are not in the scene and not in the saved file, and they come back from there without losing anything.
#include "assetmanagement.h"
#include "core/class_directory.h"
#include "inode.h"
#include "istdplug.h"
#include "maxapi.h"
#include "object.h"
#include "scene/scene.h"
#include "scene_compare.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <unistd.h>

using namespace MaxSDK::AssetManagement;

namespace {

Interface* ip() { return GetCOREInterface(); }

INode* boxNode(const wchar_t* name) {
    auto* obj = dynamic_cast<Object*>(static_cast<Animatable*>(CreateInstance(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID)));
    INode* node = ip()->CreateObjectNode(obj);
    node->SetName(name);
    return node;
}

// Whether a node hangs from the open scene's root (and not from the tree of an external-scene entry).
bool UnderSceneRoot(INode* node) {
    INode* top = node;
    while (top && !top->IsRootNode()) top = top->GetParentNode();
    return top == ip()->GetRootNode();
}

class ExternalScene : public ::testing::Test {
protected:
    void SetUp() override {
        hostrt::RegisterBuiltinClasses();
        hostrt::Scene::Instance().ResetScene();
        file_ = std::filesystem::temp_directory_path() / ("external_scene_" + std::to_string(::getpid()) + ".max");
    }
    void TearDown() override {
        hostrt::Scene::Instance().ResetScene();
        std::filesystem::remove(file_);
    }
    std::filesystem::path file_;
};

}  // namespace

TEST_F(ExternalScene, TheAssetManagerHandsOutOneAssetPerNameAndType) {
    IAssetManager* manager = IAssetManager::GetInstance();
    ASSERT_EQ(manager, IAssetManager::GetInstance());
    const AssetUser xref = manager->GetAsset(L"VDTXR", kXRefAsset);
    EXPECT_FALSE(xref.IsEmpty());
    EXPECT_EQ(xref.GetType(), kXRefAsset);
    EXPECT_EQ(xref.GetFileName(), MSTR(L"VDTXR"));
    EXPECT_EQ(manager->GetAsset(L"VDTXR", kXRefAsset).GetId(), xref.GetId());
    EXPECT_EQ(AssetUser(L"VDTXR", kXRefAsset).GetId(), xref.GetId());  // made directly: the same asset
    EXPECT_NE(manager->GetAsset(L"VDTXR", kExternalLink).GetId(), xref.GetId());
    EXPECT_TRUE(manager->GetAsset(L"", kXRefAsset).IsEmpty());

    const AssetUser back = manager->GetAsset(xref.GetId());
    EXPECT_EQ(back.GetFileName(), MSTR(L"VDTXR"));
    EXPECT_EQ(back.GetType(), kXRefAsset);
    EXPECT_TRUE(manager->GetAsset(kInvalidId).IsEmpty());
    EXPECT_TRUE(manager->GetAsset(1 << 30).IsEmpty());
}

TEST_F(ExternalScene, EntriesAreMadeFromExternalSceneAssetsOnly) {
    INode* root = ip()->GetRootNode();
    const AssetUser asset = IAssetManager::GetInstance()->GetAsset(L"VDTXR", kXRefAsset);
    EXPECT_FALSE(root->AddNewXRefFile(AssetUser(L"VDTXR", kExternalLink)));
    EXPECT_FALSE(root->AddNewXRefFile(AssetUser()));
    EXPECT_FALSE(boxNode(L"plain")->AddNewXRefFile(asset));  // only the scene root keeps entries
    EXPECT_EQ(root->GetXRefFileCount(), 0);

    ASSERT_TRUE(root->AddNewXRefFile(L"first"));  // the name form makes the external-scene asset of the name
    ASSERT_TRUE(root->AddNewXRefFile(asset, TRUE, TRUE));
    ASSERT_EQ(root->GetXRefFileCount(), 2);
    EXPECT_EQ(root->GetXRefAsset(0).GetType(), kXRefAsset);
    EXPECT_EQ(root->GetXRefAsset(1), asset);  // the new entry is the last one
    EXPECT_EQ(root->GetXRefFile(1), MSTR(L"VDTXR"));
    EXPECT_TRUE(root->GetXRefAsset(2).IsEmpty());
    EXPECT_EQ(root->GetXRefFile(-1), MSTR());
    EXPECT_TRUE(root->GetXRefTree(1)->IsRootNode());
    EXPECT_NE(root->GetXRefTree(0), root->GetXRefTree(1));

    // The save's clean-up: the entry of that asset goes, the other stays.
    EXPECT_TRUE(root->DeleteXRefFile(1));
    ASSERT_EQ(root->GetXRefFileCount(), 1);
    EXPECT_EQ(root->GetXRefFile(0), MSTR(L"first"));
}

// The save's parking: nodes attached under an entry's tree leave the scene and the saved file, and go back to
// their parents afterwards with every property, object, controller and material as before.
TEST_F(ExternalScene, ParkedNodesAreNotSavedAndComeBackWhole) {
    INode* kept = boxNode(L"kept");
    INode* parent = boxNode(L"parent");
    INode* parked = boxNode(L"parked");
    INode* below = boxNode(L"below");
    parent->AttachChild(parked, FALSE);
    parked->AttachChild(below, FALSE);
    Matrix3 tm;
    tm.SetTrans(Point3(5, 0, 0));
    parent->SetNodeTM(0, tm);
    parked->SetWireColor(0x00123456);
    parked->SetTransformLock(INODE_LOCKROT, INODE_LOCK_Z, TRUE);
    parked->SetRenderValue(NODE_REND_VALUE_GBUFFER_CHANNEL, 9);
    below->SetUserPropBuffer(L"note = parked too");
    const auto before = hostrt::test::TakeSnapshot();

    INode* root = ip()->GetRootNode();
    ASSERT_TRUE(root->AddNewXRefFile(IAssetManager::GetInstance()->GetAsset(L"VDTXR", kXRefAsset)));
    INode* tree = root->GetXRefTree(root->GetXRefFileCount() - 1);
    Object* object = parked->GetObjectRef();
    Control* controller = parked->GetTMController();
    tree->AttachChild(parked, FALSE);
    EXPECT_FALSE(UnderSceneRoot(parked));
    EXPECT_FALSE(UnderSceneRoot(below));
    EXPECT_TRUE(UnderSceneRoot(kept));
    EXPECT_EQ(ip()->GetINodeByName(L"parked"), nullptr);  // scene look-ups do not see parked nodes

    ASSERT_EQ(ip()->SaveToFile(MSTR(file_.wstring()).data()), 1);
    parent->AttachChild(parked, FALSE);
    ASSERT_TRUE(root->DeleteXRefFile(root->GetXRefFileCount() - 1));
    EXPECT_TRUE(UnderSceneRoot(below));
    EXPECT_EQ(parked->GetObjectRef(), object);
    EXPECT_EQ(parked->GetTMController(), controller);
    const auto differences = hostrt::test::CompareSnapshots(before, hostrt::test::TakeSnapshot());
    EXPECT_TRUE(differences.empty()) << hostrt::test::JoinDifferences(differences);

    ASSERT_EQ(ip()->LoadFromFile(MSTR(file_.wstring()).data(), FALSE), 1);
    EXPECT_NE(ip()->GetINodeByName(L"kept"), nullptr);
    EXPECT_NE(ip()->GetINodeByName(L"parent"), nullptr);
    EXPECT_EQ(ip()->GetINodeByName(L"parked"), nullptr);
    EXPECT_EQ(ip()->GetINodeByName(L"below"), nullptr);
    EXPECT_EQ(ip()->GetRootNode()->GetXRefFileCount(), 0);
}
