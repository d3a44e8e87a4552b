// Node overrides on a loaded reference: each category is detected from the host's own edit (or from the node
// message the scene events send for it), survives save and open (the reference merged afresh and the record
// re-applying onto the new node), and is cleared by the reset entry that selects it. Also the undo of a detected
// edit, the "Layer Override" step, the category filter by node kind and the step word of a failed re-application.
#include "helper/vandrels_helper.h"
#include "records/ref_node.h"
#include "anims/ref_anim.h"

#include "hold.h"
#include "ilayer.h"
#include "imtl.h"
#include "inode.h"
#include "istdplug.h"
#include "maxapi.h"
#include "maxexception.h"
#include "maxscript/maxscript.h"
#include "notify.h"
#include "object.h"
#include "plugapi.h"
#include "vandrels_library.h"
#include "scene_compare.h"

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

// A reload merges the referenced nodes back as new last children of the scene root: nodes pair by name.
std::vector<std::string> Differences(const hostrt::test::SceneSnapshot& a, const hostrt::test::SceneSnapshot& b) {
    hostrt::test::CompareOptions options;
    options.byName = true;
    return hostrt::test::CompareSnapshots(a, b, options);
}

template <class T> T* Extension(INode* node, Interface_ID id) { return static_cast<T*>(node->GetInterface(id)); }

class NodeOverrides : public vtest::SceneTest {
protected:
    NodeOverrides() : SceneTest("vandrels_overrides") {}

    void SetUp() override {
        SceneTest::SetUp();
        reference_ = vtest::TempSceneFile("vandrels_overrides_ref");
        Script(L"Vandrels.PrintTimes false");
        Script(L"b = box name:\"Crate\" wirecolor:(color 10 20 30); addModifier b (bend()); sphere name:\"Ball\" parent:b; "
               L"omniLight name:\"Lamp\"; saveMaxFile " + Quoted(reference_));
        GetCOREInterface()->FileReset(TRUE);
        Script(L"Vandrels.AddVandrel " + Quoted(reference_));
        theHold.FlushUndoBuffer();
        Bind();
    }
    void TearDown() override {
        SceneTest::TearDown();
        std::filesystem::remove(reference_.ToUTF8());
    }
    // Finds the helper, the records and their nodes (again after an open).
    void Bind() {
        const std::wstring stem = std::filesystem::path(reference_.ToUTF8()).stem().wstring();
        INode* helperNode = GetCOREInterface()->GetINodeByName(stem.c_str());
        ASSERT_NE(helperNode, nullptr);
        helper = static_cast<VandrelsHelper*>(helperNode->GetObjectRef());
        crate = RecordNamed(L"Crate");
        ball = RecordNamed(L"Ball");
        lamp = RecordNamed(L"Lamp");
        ASSERT_TRUE(crate && ball && lamp);
    }
    RefNode* RecordNamed(const MCHAR* name) {
        for (RefNode* record : helper->NodeRecords())
            if (record && record->GetName() == MSTR(name)) return record;
        return nullptr;
    }
    static float GetLength() {
        FPValue value;
        ExecuteMAXScriptScript(L"$Instance.length", MAXScript::ScriptSource::Embedded, TRUE, &value, TRUE);
        return value.type == TYPE_FLOAT ? value.f : -1.f;
    }
    static INode* NodeOf(RefNode* record) { return static_cast<INode*>(record->GetReference(0)); }

    // Saving runs the collect pass over the records (the scans, then every record collects) and puts the scene
    // back afterwards.
    void Save() { ASSERT_NE(GetCOREInterface()->SaveToFile(file_.data()), 0); }
    // Save, reset, open: the reference is merged afresh and every record re-applies onto its new node.
    void Reopen() {
        Save();
        GetCOREInterface()->FileReset(TRUE);
        ASSERT_NE(GetCOREInterface()->LoadFromFile(file_.data()), 0);
        Bind();
        bound.clear();
        for (INode* node : helper->GetNodes()) bound.push_back(node);
    }

    MSTR reference_;
    VandrelsHelper* helper = nullptr;
    RefNode* crate = nullptr;
    RefNode* ball = nullptr;
    RefNode* lamp = nullptr;
    std::vector<INode*> bound;
};

// Every category edited the way a user edits it (the node messages the scene events send where the host has
// no reference message) is stored, and after save and open the freshly merged nodes show the local scene again.
TEST_F(NodeOverrides, EveryCategoryEditedLocallyIsBackAfterReopen) {
    INode* box = NodeOf(crate);
    INode* sphere = NodeOf(ball);
    INode* light = NodeOf(lamp);
    box->SetName(L"Crate Local");
    box->SetMtl(NewDefaultStdMat());
    box->GetMtl()->SetName(L"Local Paint");
    box->SetWireColor(0x00123456);
    box->Hide(TRUE);
    sphere->Freeze(TRUE);
    sphere->SetGroupMember(TRUE);
    box->SetDisplayFlag(NODE_DISP_SEE_THROUGH, TRUE);
    Extension<INodeExtension2>(box, NODE_EXTENSION2_INTERFACE)->SetDisplaySwitch(TRUE);
    box->SetDisplayValue(1, 7);
    box->SetRenderFlag(NODE_REND_CAST_SHADOWS, FALSE);
    Extension<INodeRenderProperties>(box, NODE_RENDERPROPS_INTERFACE)->SetRenderSwitch(4, TRUE);
    box->SetUserPropBuffer(L"lod = 2");
    box->SetBoneFlag(NODE_BONE_FREEZE_LENGTH, TRUE);
    box->SetBoneValue(0, 3);
    box->SetTransformLock(INODE_LOCKROT, INODE_LOCK_Z, TRUE);
    box->SetObjOffsetPos(Point3(1, 2, 3));
    Extension<INodeSkinPose>(box, INODE_SKINPOSE_INTERFACE)->SetSkinPos(Point3(4, 5, 6));
    // Linked under another referenced node: stored as that node's record, which re-attaches it after the reload.
    light->AttachChild(sphere);
    ILayer* layer = GetCOREInterface()->GetLayerManager()->CreateLayer(L"Lights");
    layer->AddToLayer(light);
    Script(L"box name:\"Local\"");
    INode* local = GetCOREInterface()->GetINodeByName(L"Local");
    box->AttachChild(local, FALSE);

    Save();
    EXPECT_EQ(crate->GetOverrideFlags() & ~std::uint32_t(kNodeLocalDependents),
              std::uint32_t(kNodeOverriddenName | kNodeMaterial | kNodeChildren |
                            kNodeObjectOffset | kNodeSkinPose | kNodeWireColor | kNodeHidden | kNodeDisplayProps |
                            kNodeRenderProps | kNodeUserProps | kNodeBoneProps | kNodeTmLocks));
    EXPECT_EQ(ball->GetOverrideFlags(), std::uint32_t(kNodeParent | kNodeGrouping | kNodeFrozen));
    EXPECT_EQ(ball->GetStoredParent(), lamp);
    EXPECT_EQ(lamp->GetOverrideFlags(), std::uint32_t(kNodeLayer | kNodeChildren));
    EXPECT_EQ(lamp->GetChildren().Count(), 0);  // a referenced child is not kept
    const auto before = hostrt::test::TakeSnapshot();

    Reopen();
    box = NodeOf(crate);
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(bound.size(), 3u);
    const auto after = hostrt::test::TakeSnapshot();
    EXPECT_TRUE(Differences(before, after).empty()) << hostrt::test::JoinDifferences(Differences(before, after));
    // The re-applied values are the new baseline: a second collect finds nothing new, a second reopen keeps all.
    const std::uint32_t flags = crate->GetOverrideFlags();
    Save();
    EXPECT_EQ(crate->GetOverrideFlags(), flags);
    Reopen();
    EXPECT_TRUE(Differences(before, hostrt::test::TakeSnapshot()).empty());
}

// A fresh reference has no overrides, however far its nodes' values are from the host's defaults.
TEST_F(NodeOverrides, AMergedNodeIsItsOwnBaseline) {
    for (RefNode* record : {crate, ball, lamp}) EXPECT_EQ(record->GetOverrideFlags() & ~kNodeLocalDependents, 0u);
    Save();
    for (RefNode* record : {crate, ball, lamp}) EXPECT_EQ(record->GetOverrideFlags() & ~kNodeLocalDependents, 0u);
    // Setting a value back to what the reference has is no override either.
    NodeOf(crate)->SetWireColor(NodeOf(crate)->GetWireColor());
    NodeOf(crate)->Hide(FALSE);
    EXPECT_EQ(crate->GetOverrideFlags(), 0u);
}

TEST_F(NodeOverrides, UndoTakesADetectedEditBackAndALayerChangeAloneIsOneStep) {
    INode* box = NodeOf(crate);
    theHold.Begin();
    box->SetUserPropBuffer(L"lod = 1");
    box->SetRenderFlag(NODE_REND_RENDERABLE, FALSE);
    theHold.Accept(L"Properties");
    EXPECT_EQ(crate->GetOverrideFlags(), std::uint32_t(kNodeUserProps | kNodeRenderProps));
    theHold.Undo();
    EXPECT_TRUE(box->GetRenderFlag(NODE_REND_RENDERABLE));
    EXPECT_EQ(crate->GetOverrideFlags(), 0u);
    theHold.Redo();
    EXPECT_EQ(crate->GetOverrideFlags(), std::uint32_t(kNodeUserProps | kNodeRenderProps));
    theHold.FlushUndoBuffer();

    // Outside a hold the layer change records a step of its own; inside one it joins the open step.
    ILayer* layer = GetCOREInterface()->GetLayerManager()->CreateLayer(L"Props");
    layer->AddToLayer(box);
    ASSERT_EQ(theHold.NumUndoEntries(), 1);
    EXPECT_EQ(theHold.UndoEntryName(0), MSTR(L"Layer Override"));
    EXPECT_EQ(crate->GetStoredLayer(), layer);
    theHold.Undo();
    EXPECT_EQ(crate->GetOverrideFlags() & kNodeLayer, 0u);
    theHold.Begin();
    layer->AddToLayer(NodeOf(lamp));
    theHold.Accept(L"Move");
    ASSERT_EQ(theHold.NumUndoEntries(), 1);  // the undone step went, the move is the only one
    EXPECT_EQ(theHold.UndoEntryName(0), MSTR(L"Move"));
    EXPECT_EQ(lamp->GetOverrideFlags(), std::uint32_t(kNodeLayer));

    // The wire colour's bit bypasses the undo stack: undoing the colour leaves it set.
    theHold.Begin();
    box->SetWireColor(0x00ABCDEF);
    theHold.Accept(L"Colour");
    theHold.Undo();
    EXPECT_NE(box->GetWireColor(), 0x00ABCDEFu);
    EXPECT_TRUE(crate->GetOverrideFlags() & kNodeWireColor);
}

// Reset by mask: the node kind picks the category (unless the selected-nodes mode), the entries clear exactly
// their bits, undoably, and the next reload shows the reference's values again.
TEST_F(NodeOverrides, ResetClearsTheChosenCategoriesOfTheChosenKinds) {
    INode* box = NodeOf(crate);
    box->SetWireColor(0x00ABCDEF);
    box->Hide(TRUE);
    box->SetName(L"Renamed");
    NodeOf(lamp)->Hide(TRUE);
    NodeOf(lamp)->SetWireColor(0x00FEDCBA);
    const std::uint32_t crateFlags = crate->GetOverrideFlags();
    constexpr DWORD kGeometry = 0x8, kObjectProperties = 0x8000, kName = 0x20000, kSelectedNodes = 0x2;

    crate->ResetOverrides(kObjectProperties);  // no kind selected: nothing
    EXPECT_EQ(crate->GetOverrideFlags(), crateFlags);
    theHold.Begin();
    crate->ResetOverrides(kGeometry | kObjectProperties);
    lamp->ResetOverrides(kGeometry | kObjectProperties);  // a light is no geometry
    theHold.Accept(L"Reset");
    EXPECT_EQ(crate->GetOverrideFlags(), std::uint32_t(kNodeOverriddenName));
    const std::uint32_t lampFlags = kNodeHidden | kNodeWireColor;
    EXPECT_EQ(lamp->GetOverrideFlags(), lampFlags);
    theHold.Undo();
    EXPECT_EQ(crate->GetOverrideFlags(), crateFlags);
    theHold.Redo();
    lamp->ResetOverrides(kSelectedNodes | kName);  // selected nodes: every kind, only the name entry
    EXPECT_EQ(lamp->GetOverrideFlags(), lampFlags);

    Reopen();
    box = NodeOf(crate);
    EXPECT_EQ(box->GetWireColor(), 0x001E140Au);  // the reference's colour (10, 20, 30)
    EXPECT_FALSE(box->IsHidden());
    EXPECT_STREQ(box->GetName(), L"Renamed");
    EXPECT_TRUE(NodeOf(lamp)->IsHidden());
}

// The parenting entry drops the stored parent and the local children, and undo brings both back.
TEST_F(NodeOverrides, ResetOfParentingDropsParentAndChildrenUndoably) {
    INode* sphere = NodeOf(ball);
    Script(L"box name:\"Local\"");
    INode* local = GetCOREInterface()->GetINodeByName(L"Local");
    sphere->AttachChild(local);
    NodeOf(lamp)->AttachChild(sphere);
    // A referenced node attached as a child is not kept: it comes back with its own record.
    sphere->AttachChild(NodeOf(crate));
    ASSERT_EQ(ball->GetChildren().Count(), 1);
    EXPECT_EQ(ball->GetStoredParent(), lamp);  // a referenced parent is held through its record

    theHold.Begin();
    ball->ResetOverrides(0x2 | 0x10000);
    theHold.Accept(L"Reset");
    EXPECT_EQ(ball->GetOverrideFlags() & (kNodeParent | kNodeChildren), 0u);
    EXPECT_EQ(ball->GetStoredParent(), nullptr);
    EXPECT_EQ(ball->GetChildren().Count(), 0);
    theHold.Undo();
    EXPECT_EQ(ball->GetOverrideFlags() & (kNodeParent | kNodeChildren), std::uint32_t(kNodeParent | kNodeChildren));
    EXPECT_EQ(ball->GetStoredParent(), lamp);
    ASSERT_EQ(ball->GetChildren().Count(), 1);
    EXPECT_EQ(ball->GetChildren()[0], local);

    // The child moving elsewhere leaves the list; a node linked to the scene root stores no parent.
    GetCOREInterface()->GetRootNode()->AttachChild(local);
    EXPECT_EQ(ball->GetChildren().Count(), 0);
    sphere->Detach(0);
    EXPECT_EQ(ball->GetStoredParent(), nullptr);
    EXPECT_TRUE(ball->GetOverrideFlags() & kNodeParent);
}

// A failure while re-applying ends the remaining steps and names the step in force.
TEST_F(NodeOverrides, AFailedReapplicationNamesItsStep) {
    INode* box = NodeOf(crate);
    box->SetWireColor(0x00ABCDEF);
    box->Hide(TRUE);
    box->SetUserPropBuffer(L"kept = no");
    // The node loses the local values behind the record's back, as a reload does.
    DisableRefMsgs();
    box->SetWireColor(0x00000001);
    box->Hide(FALSE);
    box->SetUserPropBuffer(L"");
    EnableRefMsgs();
    // A dependent of the node that refuses to let it be hidden.
    struct Thrower : ReferenceMaker {
        explicit Thrower(INode* node) { ReplaceReference(0, node); }
        ~Thrower() override { DeleteAllRefs(); }
        int NumRefs() override { return 1; }
        RefTargetHandle GetReference(int) override { return node; }
        void SetReference(int, RefTargetHandle target) override { node = target; }
        RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID& part, RefMessage message, BOOL) override {
            if (message == REFMSG_NODE_DISPLAY_PROP_CHANGED && part == NODE_DISPLAY_PART_HIDDEN)
                throw MAXException(MSTR(L"display refused"), 0);
            return REF_SUCCEED;
        }
        RefTargetHandle node = nullptr;
    };
    std::wstring message;
    {
        Thrower refuser(box);
        try {
            crate->Override();
        } catch (const MAXException& e) {
            message = e.message.data();
        }
    }
    EXPECT_EQ(message.rfind(L"Error Overriding RefNode\nNode: Crate - ", 0), 0u) << WStr(message.c_str()).ToUTF8();
    EXPECT_NE(message.find(L"\nLastOperation: Override Hidden\n\ndisplay refused"), std::wstring::npos)
        << WStr(message.c_str()).ToUTF8();
    EXPECT_EQ(box->GetWireColor(), 0x00ABCDEFu);  // the step before ran
    MSTR props;
    box->GetUserPropBuffer(props);
    EXPECT_EQ(props, MSTR(L""));  // the steps after did not
    EXPECT_EQ(crate->GetReference(0), nullptr);  // the record let go of its node
}

// The exclusion lists follow the lights that name the node: the scans fill the work lists, a collect makes the
// list and its bit from them.
TEST_F(NodeOverrides, ExclusionListsFollowTheLightsThatNameTheNode) {
    auto* light = dynamic_cast<LightObject*>(NodeOf(lamp)->GetObjectRef());
    ASSERT_TRUE(light && light->GetExclList());
    light->GetExclList()->AddNode(NodeOf(crate));
    Save();
    ASSERT_EQ(crate->GetExclusionLights().Count(), 1);
    EXPECT_EQ(crate->GetExclusionLights()[0], light);
    EXPECT_TRUE(crate->GetOverrideFlags() & kNodeExclusionList);
    EXPECT_FALSE(ball->GetOverrideFlags() & kNodeExclusionList);
    // Taken off the list, it is dropped at the next collect; put back, re-application adds it to the list.
    light->GetExclList()->RemoveNode(NodeOf(crate));
    Save();
    EXPECT_EQ(crate->GetExclusionLights().Count(), 0);
    EXPECT_FALSE(crate->GetOverrideFlags() & kNodeExclusionList);
    light->GetExclList()->AddNode(NodeOf(crate));
    Reopen();
    light = dynamic_cast<LightObject*>(NodeOf(lamp)->GetObjectRef());
    ASSERT_TRUE(light && light->GetExclList());
    EXPECT_EQ(light->GetExclList()->FindNode(NodeOf(crate)), 0);
}

// A local node instancing a referenced node's object is the object's local dependent: after the reload it uses
// the freshly merged object.
TEST_F(NodeOverrides, ALocalInstanceMovesToTheMergedObject) {
    ASSERT_EQ(NodeOf(crate)->GetObjectRef()->SuperClassID(), SClass_ID(GEN_DERIVOB_CLASS_ID));
    INode* instance = GetCOREInterface()->CreateObjectNode(NodeOf(crate)->GetObjectRef());
    instance->SetName(L"Instance");
    Save();
    EXPECT_TRUE(crate->GetOverrideFlags() & kNodeObjectLocalDep);
    EXPECT_EQ(crate->GetLocalDependent(), NodeOf(crate)->GetObjectRef());
    EXPECT_FALSE(ball->GetOverrideFlags() & kNodeObjectLocalDep);

    Reopen();
    instance = GetCOREInterface()->GetINodeByName(L"Instance");
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(instance->GetObjectRef(), NodeOf(crate)->GetObjectRef());
    EXPECT_EQ(crate->GetLocalDependent(), nullptr);  // dropped once applied
}

// A reset of an animatable record that local content uses keeps the record but gives the content the
// reference's original at the next reload, instead of the local one.
TEST_F(NodeOverrides, AResetLocallyUsedParameterComesFromTheReferenceAgain) {
    INode* instance = GetCOREInterface()->CreateObjectNode(NodeOf(crate)->GetObjectRef());
    instance->SetName(L"Instance");
    const float length = GetLength();
    Script(L"$Instance.length = 77");
    Save();
    int modified = 0;
    for (int i = 0; i < crate->NumRefAnims(); ++i)
        if (RefAnim* r = crate->GetRefAnim(i)) modified += r->IsModified();
    ASSERT_GT(modified, 0);

    crate->ResetOverrides(0x2 | 0x800);  // selected nodes, "Base Object"
    for (int i = 0; i < crate->NumRefAnims(); ++i) {
        RefAnim* r = crate->GetRefAnim(i);
        EXPECT_FALSE(r && r->IsModified()) << i;
    }
    Reopen();
    EXPECT_EQ(GetLength(), length);
}

// The stored layer deleted since: a same-named layer takes its place, else the stored layer comes back.
TEST_F(NodeOverrides, ALayerDeletedMeanwhileIsFoundByNameOrMadeAgain) {
    ILayerManager* layers = GetCOREInterface()->GetLayerManager();
    ILayer* lights = layers->CreateLayer(L"Lights");
    INode* light = NodeOf(lamp);
    lights->AddToLayer(light);
    // The node goes back and the layer away behind the record's back.
    DisableRefMsgs();
    layers->GetLayer(0)->AddToLayer(light);
    EnableRefMsgs();
    ASSERT_TRUE(layers->DeleteLayer(L"Lights"));
    lamp->Override();
    EXPECT_EQ(light->GetLayer(), lights);
    EXPECT_EQ(layers->GetLayer(MSTR(L"Lights")), lights);

    DisableRefMsgs();
    layers->GetLayer(0)->AddToLayer(light);
    EnableRefMsgs();
    ASSERT_TRUE(layers->DeleteLayer(L"Lights"));
    ILayer* same = layers->CreateLayer(L"Lights");
    lamp->Override();
    EXPECT_EQ(light->GetLayer(), same);
    EXPECT_EQ(lamp->GetStoredLayer(), same);
}

}  // namespace
