// The exclusion-list scans and node lists on a loaded reference: a light's include/exclude list loses its
// empty entries and names its referenced nodes' records, scene effects with one or three node lists give the
// records (effect, list index) pairs, both only for the records of the helper asked about; and the pending
// members of named selection sets. The scans are compiled into the tests; the records are the library's.
#include "helper/vandrels_helper.h"
#include "records/exclusion_lists.h"
#include "records/pending_selection_sets.h"
#include "records/ref_node.h"

#include "inode.h"
#include "iscene_effects.h"
#include "istdplug.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "object.h"
#include "plugapi.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace {

using vtest::CountDialogs;
using vtest::LastReport;
using vtest::Node;
using vtest::Quoted;
using vtest::RunInt;
using vtest::Script;

template <class T> T* Make(SClass_ID sc, const Class_ID& id) {
    return dynamic_cast<T*>(static_cast<Animatable*>(CreateInstance(sc, id)));
}

class ExclusionLists : public vtest::SceneTest {
protected:
    ExclusionLists() : SceneTest("vandrels_exclusions") {}

    void SetUp() override {
        SceneTest::SetUp();
        reference_ = vtest::TempSceneFile("vandrels_exclusions_ref");
        Script(L"Vandrels.PrintTimes false");
        Script(L"box name:\"Lit\"; box name:\"Dark\"; saveMaxFile @\"" + std::wstring(reference_.data()) + L"\"");
        GetCOREInterface()->FileReset(TRUE);
        // A second helper that holds no records (not loaded), then the reference itself.
        Script(L"Vandrels.AddVandrel \"elsewhere.max\" load:false");
        Script(L"Vandrels.AddVandrel @\"" + std::wstring(reference_.data()) + L"\"");
        const std::wstring stem = std::filesystem::path(reference_.ToUTF8()).stem().wstring();
        helper = HelperNamed(stem.c_str());
        other = HelperNamed(L"elsewhere");
        ASSERT_TRUE(helper && other);
        lit = RecordNamed(L"Lit");
        dark = RecordNamed(L"Dark");
        ASSERT_TRUE(lit && dark);
        ASSERT_EQ(lit->GetHelper(), helper);
    }
    void TearDown() override {
        vandrels::ClearPendingSelectionSets();
        SceneTest::TearDown();
        std::filesystem::remove(reference_.ToUTF8());
    }

    static VandrelsHelper* HelperNamed(const MCHAR* name) {
        INode* node = GetCOREInterface()->GetINodeByName(name);
        return node ? static_cast<VandrelsHelper*>(node->GetObjectRef()) : nullptr;
    }
    RefNode* RecordNamed(const MCHAR* name) {
        for (RefNode* record : helper->NodeRecords()) {
            auto* node = record ? static_cast<INode*>(record->GetReference(0)) : nullptr;
            if (node && std::wstring(node->GetName()).ends_with(name)) return record;
        }
        return nullptr;
    }
    static INode* NodeOf(RefNode* record) { return static_cast<INode*>(record->GetReference(0)); }

    // An omni light node; its object is the light.
    static LightObject* MakeLight(const MCHAR* name) {
        auto* light = Make<LightObject>(LIGHT_CLASS_ID, HOST_OMNI_LIGHT_CLASS_ID);
        INode* node = GetCOREInterface()->CreateObjectNode(light);
        node->SetName(name);
        return light;
    }

    MSTR reference_;
    VandrelsHelper* helper = nullptr;
    VandrelsHelper* other = nullptr;
    RefNode* lit = nullptr;
    RefNode* dark = nullptr;
};

TEST_F(ExclusionLists, TheLightScanDropsEmptyEntriesAndListsTheLightOnceOnItsRecords) {
    LightObject* light = MakeLight(L"Lamp");
    ASSERT_NE(light, nullptr);
    ExclList* list = light->GetExclList();
    Script(L"box name:\"Gone\"; box name:\"Local\"");
    INode* gone = GetCOREInterface()->GetINodeByName(L"Gone");
    list->AddNode(gone);
    list->AddNode(NodeOf(lit));
    list->AddNode(GetCOREInterface()->GetINodeByName(L"Local"));
    GetCOREInterface()->DeleteNode(gone);
    ASSERT_EQ(list->Count(), 3);
    ASSERT_EQ((*list)[0], nullptr);
    // An instance of the light on a second node is met twice by the scan.
    INode* instance = GetCOREInterface()->CreateObjectNode(light);
    ASSERT_NE(instance, nullptr);

    // Another helper's scan cleans the list but fills nothing of this helper's records.
    CollectLightExclusions(other);
    ASSERT_EQ(list->Count(), 2);
    EXPECT_EQ((*list)[0], NodeOf(lit));
    EXPECT_TRUE(lit->ScratchLights().empty());

    CollectLightExclusions(helper);
    ASSERT_EQ(lit->ScratchLights().Count(), 1);
    EXPECT_EQ(lit->ScratchLights()[0], light);
    EXPECT_TRUE(dark->ScratchLights().empty());
    // Any helper's records without a helper given; a light listed already is not listed again.
    CollectLightExclusions(nullptr);
    EXPECT_EQ(lit->ScratchLights().Count(), 1);
}

TEST_F(ExclusionLists, EffectsGiveTheirListIndicesAndTakeNodesByIndex) {
    auto* three = Make<ReferenceTarget>(REF_TARGET_CLASS_ID, SCENE_EFFECT_THREE_LISTS_CLASS_ID);
    auto* one = Make<ReferenceTarget>(REF_TARGET_CLASS_ID, SCENE_EFFECT_ONE_LIST_B_CLASS_ID);
    ASSERT_TRUE(three && one);
    Interface* core = GetCOREInterface();
    core->AddSceneEffect(three);
    core->AddSceneEffect(one);

    EXPECT_TRUE(AddNodeToNodeList(three, 2, NodeOf(lit)));
    EXPECT_TRUE(AddNodeToNodeList(three, 0, NodeOf(dark)));
    EXPECT_TRUE(AddNodeToNodeList(one, 0, NodeOf(lit)));
    // The internal list codes of indices 0 and 2; the one-list effect has no list 1, and no index 3 exists.
    auto* lists = static_cast<INodeListEffect*>(three->GetInterface(SCENE_EFFECT_NODE_LISTS_INTERFACE));
    EXPECT_EQ(lists->GetNode(9, 0), NodeOf(lit));
    EXPECT_EQ(lists->GetNode(1, 0), NodeOf(dark));
    EXPECT_EQ(lists->NumNodes(5), 0);
    EXPECT_FALSE(AddNodeToNodeList(one, 1, NodeOf(dark)));
    EXPECT_FALSE(AddNodeToNodeList(three, 3, NodeOf(dark)));
    EXPECT_FALSE(AddNodeToNodeList(lit, 0, NodeOf(dark)));  // no item with node lists

    CollectOtherExclusions(other);
    EXPECT_TRUE(lit->ScratchOthers().empty());
    CollectOtherExclusions(helper);
    CollectOtherExclusions(nullptr);  // pairs listed already are not listed again
    const Tab<RefNode::ScratchExclusion>& litPairs = lit->ScratchOthers();
    ASSERT_EQ(litPairs.Count(), 2);
    EXPECT_EQ(litPairs[0].item, three);
    EXPECT_EQ(litPairs[0].listIndex, 2);
    EXPECT_EQ(litPairs[1].item, one);
    EXPECT_EQ(litPairs[1].listIndex, 0);
    ASSERT_EQ(dark->ScratchOthers().Count(), 1);
    EXPECT_EQ(dark->ScratchOthers()[0].item, three);
    EXPECT_EQ(dark->ScratchOthers()[0].listIndex, 0);
}

TEST_F(ExclusionLists, PendingSelectionMembersGoOnlyToSetsOfTheTable) {
    vandrels::ResetPendingSelectionSets(2);
    EXPECT_EQ(vandrels::PendingSelectionMembers(0), nullptr);
    EXPECT_TRUE(AddPendingSelectionMember(NodeOf(lit), 1));
    EXPECT_TRUE(AddPendingSelectionMember(NodeOf(dark), 1));
    EXPECT_FALSE(AddPendingSelectionMember(NodeOf(lit), 2));
    EXPECT_FALSE(AddPendingSelectionMember(NodeOf(lit), -1));
    const Tab<INode*>* members = vandrels::PendingSelectionMembers(1);
    ASSERT_NE(members, nullptr);
    ASSERT_EQ(members->Count(), 2);
    EXPECT_EQ((*members)[0], NodeOf(lit));
    EXPECT_EQ((*members)[1], NodeOf(dark));
}

}  // namespace
