// Host node events reach the dependents of the nodes as the library's own messages (links, layers, property
// edits, group changes, general property changes), silent while the library works; helper nodes are frozen when
// made, dismiss their reference when deleted and register their follow-up once; renaming a helper node renames
// its prefixed nodes; a removed named selection set reaches the node records.
#include "vandrels_library.h"

#include "hold.h"
#include "ilayer.h"
#include "inode.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "notify.h"
#include "object.h"
#include "records/ref_node.h"
#include "helper/vandrels_helper.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace {

using vtest::CountDialogs;
using vtest::LastReport;
using vtest::Node;
using vtest::Quoted;
using vtest::RunInt;
using vtest::Script;

constexpr RefMessage kParentChanged = 0x8663DF12;
constexpr RefMessage kChildAttached = 0x8663DF13;
constexpr RefMessage kGroupChanged = 0x8663DF14;
constexpr RefMessage kLayerChanged = 0x8663DF15;
constexpr RefMessage kDisplayProps = 0x8663DF16;
constexpr RefMessage kRenderProps = 0x8663DF17;
constexpr RefMessage kUserProps = 0x8663DF18;
constexpr RefMessage kBoneProps = 0x8663DF19;
constexpr RefMessage kPropertyChanged = 0x8663DF24;

// Depends on one node and keeps the library's messages it hears, with their parts.
class MessageProbe : public ReferenceMaker {
public:
    explicit MessageProbe(INode* node) { ReplaceReference(0, node); }
    ~MessageProbe() override { DeleteAllRefs(); }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int) override { return node_; }
    void SetReference(int, RefTargetHandle target) override { node_ = static_cast<INode*>(target); }
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID& part, RefMessage message, BOOL) override {
        if (message >= 0x8663DF11 && message <= 0x8663DF24) heard.emplace_back(message, part);
        return REF_SUCCEED;
    }
    int Count(RefMessage message) const {
        int n = 0;
        for (const auto& entry : heard) n += entry.first == message;
        return n;
    }
    PartID PartOf(RefMessage message) const {
        for (const auto& entry : heard)
            if (entry.first == message) return entry.second;
        return 0;
    }
    std::vector<std::pair<RefMessage, PartID>> heard;

private:
    INode* node_ = nullptr;
};

class SceneEvents : public vtest::SceneTest {
protected:
    SceneEvents() : SceneTest("vandrels_scene_events") {}
    void SetUp() override {
        SceneTest::SetUp();
        reference_ = vtest::TempSceneFile("vandrels_scene_events_ref");
        Script(L"Vandrels.PrintTimes false");
        // A helper makes the library listen to the host's scene events.
        Script(L"Vandrels.AddVandrel \"listener.max\" load:false");
    }
    void TearDown() override {
        std::filesystem::remove(reference_.ToUTF8());
        SceneTest::TearDown();
    }
    MSTR reference_;
};

TEST_F(SceneEvents, NodeEventsReachTheNodesDependentsAsLibraryMessages) {
    Script(L"box name:\"Parent\"; box name:\"Child\"; box name:\"Other\"");
    MessageProbe parent(Node(L"Parent")), child(Node(L"Child"));

    // A link: the child hears that its parent changed, the parent that a child came, with the child as part.
    Script(L"$Child.parent = $Parent");
    EXPECT_EQ(child.Count(kParentChanged), 1);
    EXPECT_EQ(parent.Count(kChildAttached), 1);
    EXPECT_EQ(parent.PartOf(kChildAttached), reinterpret_cast<PartID>(Node(L"Child")));
    // Unlinked to the scene root: no parent to tell.
    parent.heard.clear();
    Script(L"$Child.parent = undefined");
    EXPECT_EQ(child.Count(kParentChanged), 2);
    EXPECT_EQ(parent.Count(kChildAttached), 0);

    // A layer change carries the new layer.
    Script(L"l = LayerManager.newLayerFromName \"Walls\"; l.addNode $Parent");
    ILayer* walls = GetCOREInterface()->GetLayerManager()->GetLayer(MSTR(L"Walls"));
    EXPECT_EQ(parent.Count(kLayerChanged), 1);
    EXPECT_EQ(parent.PartOf(kLayerChanged), reinterpret_cast<PartID>(walls));

    // Display, render, user and bone property edits, each to the node edited only.
    child.heard.clear();
    Script(L"$Parent.boxMode = true");
    Script(L"$Parent.renderable = false");
    Script(L"setUserProp $Parent \"owner\" \"me\"");
    INode* p = Node(L"Parent");
    p->SetBoneNodeOnOff(TRUE, 0);
    BroadcastNotification(NOTIFY_POST_NODE_BONE_PROP_CHANGED, nullptr);  // a call without a table is ignored
    EXPECT_GE(parent.Count(kDisplayProps), 1);
    EXPECT_GE(parent.Count(kRenderProps), 1);
    EXPECT_EQ(parent.Count(kUserProps), 1);
    EXPECT_EQ(parent.Count(kBoneProps), 1);
    EXPECT_TRUE(child.heard.empty());

    // Group changes arrive through the helpers' node-event callbacks.
    parent.heard.clear();
    p->SetGroupHead(TRUE);
    EXPECT_GE(parent.Count(kGroupChanged), 1);
}

// Property changes and renames made by the user reach the records; those the library makes itself (here the
// name prefix it applies) do not.
TEST_F(SceneEvents, UserEditsReachTheRecordsButTheLibrarysOwnDoNot) {
    Script(L"box name:\"B\"");
    MessageProbe probe(Node(L"B"));
    Script(L"$B.objectOffsetPos = [1,2,3]");
    ASSERT_EQ(probe.Count(kPropertyChanged), 1);
    EXPECT_EQ(probe.PartOf(kPropertyChanged), PartID(NODE_PROP_OBJ_OFFSET));

    Script(L"box name:\"Chair\"; saveMaxFile " + Quoted(reference_) + L"; resetMaxFile #noPrompt");
    Script(L"h = Vandrels.AddVandrel " + Quoted(reference_));
    const std::wstring helperName = std::filesystem::path(reference_.ToUTF8()).stem().wstring();
    Script(L"h.baseObject.UseNamePrefix = true");
    INode* chair = Node((helperName + L"_Chair").c_str());
    ASSERT_NE(chair, nullptr);
    auto* helper = static_cast<VandrelsHelper*>(Node(helperName.c_str())->GetObjectRef());
    RefNode* record = nullptr;
    for (RefNode* r : helper->NodeRecords())
        if (r && r->GetReference(0) == chair) record = r;
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->GetOverrideFlags() & 0x2u, 0u) << "the prefix is not a local name";

    // Renaming the helper node renames the prefixed nodes; still no local name.
    Script(L"h.name = \"Set\"");
    EXPECT_STREQ(chair->GetName(), L"Set_Chair");
    EXPECT_EQ(record->GetOverrideFlags() & 0x2u, 0u);

    // The user's rename is a local name, kept without the prefix.
    Script(L"(getNodeByName \"Set_Chair\").name = \"Set_Stool\"");
    EXPECT_EQ(record->GetOverrideFlags() & 0x6u, 0x2u);
    Script(L"h.name = \"Room\"");
    EXPECT_STREQ(chair->GetName(), L"Room_Stool");
}

// A helper node made by a script is frozen; deleting it takes its content with it and clears the undo buffer
// once the node is gone; removing all helpers at once leaves no follow-up registered.
TEST_F(SceneEvents, DeletingHelperNodesTakesTheirContent) {
    Script(L"box name:\"Table\"; box name:\"Chair\"; saveMaxFile " + Quoted(reference_) + L"; resetMaxFile #noPrompt");
    Script(L"box name:\"Mine\"");
    Script(L"h = Vandrels.AddVandrel " + Quoted(reference_));
    INode* helperNode = Node(std::filesystem::path(reference_.ToUTF8()).stem().wstring().c_str());
    ASSERT_NE(helperNode, nullptr);
    EXPECT_TRUE(helperNode->IsFrozen());
    ASSERT_NE(Node(L"Table"), nullptr);

    theHold.Begin();
    Script(L"box name:\"Later\"");
    theHold.Accept(L"make a box");
    ASSERT_GT(theHold.NumUndoEntries(), 0);
    GetCOREInterface()->DeleteNode(helperNode);
    EXPECT_EQ(Node(L"Table"), nullptr);
    EXPECT_EQ(Node(L"Chair"), nullptr);
    EXPECT_NE(Node(L"Mine"), nullptr);
    EXPECT_NE(Node(L"Later"), nullptr);
    EXPECT_EQ(RunInt(L"Vandrels.NumVandrels()"), 0);
    EXPECT_EQ(theHold.NumUndoEntries(), 0) << "the follow-up clears the undo buffer";

    // Two references removed at once through the scripting interface: both contents go.
    Script(L"Vandrels.AddVandrel " + Quoted(reference_) + L"; Vandrels.AddVandrel " + Quoted(reference_));
    EXPECT_EQ(RunInt(L"(for o in objects where o.name == \"Table\" collect o).count"), 2);
    Script(L"Vandrels.RemoveAllVandrels()");
    EXPECT_EQ(RunInt(L"Vandrels.NumVandrels()"), 0);
    EXPECT_EQ(Node(L"Table"), nullptr);
    EXPECT_NE(Node(L"Mine"), nullptr);
}

}  // namespace
