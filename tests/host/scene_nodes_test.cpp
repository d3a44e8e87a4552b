// Scene nodes: creation and handles, renames with undo, hierarchy and world transforms, deletion (re-entrant,
// with re-linking), undo and redo of deletion, creation and links, cloning, selection with undo, the messages of
// property changes, node-event callbacks, external-scene entries, the scene node container and a save/open round
// trip of a hierarchy; and the configurable identity class.
#include "core/class_directory.h"
#include "core/paramblock_classes.h"
#include "ilayer.h"
#include "imtl.h"
#include "iparamb2.h"
#include "iscene_events.h"
#include "istdplug.h"
#include "maxapi.h"
#include "notify.h"
#include "io/scene_reader.h"
#include "io/scene_writer.h"
#include "scene/controllers/controller_classes.h"
#include "scene/identity_class.h"
#include "scene/layers/layer_manager.h"
#include "scene/materials/material_classes.h"
#include "scene/named_sets.h"
#include "scene/node.h"
#include "scene/node_container.h"
#include "scene/objects/object_classes.h"
#include "scene/scene.h"
#include "test_objects.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <filesystem>
#include <unistd.h>

using hostrt::Scene;
using testobj::Item;

namespace {

Interface* ip() { return GetCOREInterface(); }

Object* newBox(float length = 10.f) {
    auto* box = dynamic_cast<Object*>(static_cast<Animatable*>(CreateInstance(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID)));
    box->GetParamBlock(0)->SetValue(box_length, 0, length);
    return box;
}

INode* makeNode(const MCHAR* name, Object* obj = nullptr) {
    INode* n = ip()->CreateObjectNode(obj ? obj : newBox());
    n->SetName(name);
    return n;
}

std::vector<std::wstring> childNames(INode* parent) {
    std::vector<std::wstring> names;
    for (int i = 0; i < parent->NumberOfChildren(); ++i) names.push_back(parent->GetChildNode(i)->GetName());
    return names;
}

// Records broadcasts: the code and the node the call parameter names (null when it names none).
struct Broadcasts {
    struct Entry {
        int code;
        INode* node;
        int property = 0;
        std::wstring text;
    };
    std::vector<Entry> log;
    std::vector<int> codes;
    explicit Broadcasts(std::vector<int> c) : codes(std::move(c)) {
        for (int code : codes) RegisterNotification(&proc, this, code);
    }
    ~Broadcasts() { UnRegisterNotification(&proc, this); }
    static void proc(void* self, NotifyInfo* info) {
        Entry e{info->intcode, nullptr, 0, {}};
        switch (info->intcode) {
        case NOTIFY_NODE_RENAMED: {
            auto* c = static_cast<NameChange*>(info->callParam);
            e.node = c->node;
            e.text = std::wstring(c->oldName) + L">" + c->newName;
            break;
        }
        case NOTIFY_NODE_PROPERTY_CHANGED:
        case NOTIFY_NODE_STRUCTURE_CHANGED: {
            auto* c = static_cast<NodePropertyChange*>(info->callParam);
            e.node = c->node;
            e.property = c->propertyId;
            break;
        }
        case NOTIFY_POST_NODE_DISPLAY_PROP_CHANGED:
        case NOTIFY_POST_NODE_RENDER_PROP_CHANGED:
        case NOTIFY_POST_NODE_USER_PROP_CHANGED:
        case NOTIFY_POST_NODE_BONE_PROP_CHANGED: {
            auto* t = static_cast<INodeTab*>(info->callParam);
            e.node = t->Count() == 1 ? (*t)[0] : nullptr;
            break;
        }
        default: e.node = static_cast<INode*>(info->callParam);
        }
        static_cast<Broadcasts*>(self)->log.push_back(e);
    }
    std::vector<int> Codes() const {
        std::vector<int> out;
        for (auto& e : log) out.push_back(e.code);
        return out;
    }
};

// Hears node events; remembers each delivery as "Kind:name,name".
struct EventLog : INodeEventCallback {
    std::vector<std::wstring> seen;
    void note(const wchar_t* kind, NodeKeyTab& keys) {
        std::wstring s = kind;
        s += L":";
        for (int i = 0; i < keys.Count(); ++i) {
            INode* n = NodeEventNamespace::GetNodeByKey(keys[i]);
            s += (i ? L"," : L"") + std::wstring(n ? n->GetName() : L"?");
        }
        seen.push_back(s);
    }
    void CallbackBegin() override { seen.push_back(L"begin"); }
    void CallbackEnd() override { seen.push_back(L"end"); }
    void GroupChanged(NodeKeyTab& k) override { note(L"Group", k); }
    void NameChanged(NodeKeyTab& k) override { note(L"Name", k); }
    void SelectionChanged(NodeKeyTab& k) override { note(L"Selection", k); }
    void Added(NodeKeyTab& k) override { note(L"Added", k); }
    void LinkChanged(NodeKeyTab& k) override { note(L"Link", k); }
};

struct SceneNodes : ::testing::Test {
    void SetUp() override {
        hostrt::RegisterBuiltinClasses();
        hostrt::RegisterParamBlockClasses();
        hostrt::RegisterControllerClasses();
        hostrt::RegisterObjectClasses();
        hostrt::RegisterMaterialClasses();
        hostrt::RegisterLayerClasses();
        Scene::Instance().ResetScene();
    }
    void TearDown() override {
        while (theHold.GetBeginDepth() > 0) theHold.Cancel();
        Scene::Instance().ResetScene();
    }
    static std::vector<std::pair<RefMessage, PartID>> heard(Item& w) {
        std::vector<std::pair<RefMessage, PartID>> m;
        for (const auto& h : w.heard) m.emplace_back(h.message, h.part);
        w.heard.clear();
        return m;
    }
};

bool sameTM(const Matrix3& a, const Matrix3& b) { return a.Equals(b, 1e-4f); }

}  // namespace

TEST_F(SceneNodes, CreationAnnouncesNamesAfterTheObjectAndAnswersTheHandleQuery) {
    Broadcasts b({NOTIFY_NODE_CREATED, NOTIFY_SCENE_ADDED_NODE});
    Object* box = newBox();
    INode* n = ip()->CreateObjectNode(box);
    ASSERT_NE(n, nullptr);
    EXPECT_EQ(b.Codes(), (std::vector<int>{64, 67}));
    EXPECT_EQ(b.log[0].node, n);
    EXPECT_EQ(b.log[1].node, n);
    EXPECT_EQ(MSTR(n->GetName()), box->GetObjectName());
    EXPECT_EQ(n->GetParentNode(), ip()->GetRootNode());
    EXPECT_TRUE(ip()->GetRootNode()->IsRootNode());
    EXPECT_FALSE(n->IsRootNode());
    EXPECT_EQ(n->GetObjectRef(), box);
    EXPECT_EQ(n->GetBaseObject(), box);
    ASSERT_NE(n->GetTMController(), nullptr);
    EXPECT_EQ(n->GetTMController()->ClassID(), Class_ID(PRS_CONTROL_CLASS_ID, 0));
    ASSERT_NE(n->GetLayer(), nullptr);
    EXPECT_EQ(n->GetLayer(), ip()->GetLayerManager()->GetCurrentLayer());
    EXPECT_TRUE(ip()->IsSaveRequired());

    // The object asks for the handle of its node: the node writes it into the part and stops the message.
    Item beyond("beyond", 1);
    beyond.ReplaceReference(0, n);
    ULONG handle = 0;
    box->NotifyDependents(FOREVER, reinterpret_cast<PartID>(&handle), REFMSG_GET_NODE_HANDLE);
    EXPECT_EQ(handle, n->GetHandle());
    EXPECT_TRUE(beyond.heard.empty());
    // Other messages from below travel on with the node as the changed target.
    box->NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    ASSERT_EQ(beyond.heard.size(), 1u);
    EXPECT_EQ(beyond.heard[0].from, n);
    beyond.DeleteAllRefs();

    // Handles are unique and never come back after a deletion.
    EXPECT_EQ(ip()->GetINodeByHandle(n->GetHandle()), n);
    const ULONG gone = n->GetHandle();
    ip()->DeleteNode(n);
    EXPECT_EQ(ip()->GetINodeByHandle(gone), nullptr);
    INode* next = makeNode(L"next");
    EXPECT_NE(next->GetHandle(), gone);
    EXPECT_NE(next->GetHandle(), 0u);
}

TEST_F(SceneNodes, RenamesBroadcastOldAndNewNameAndUndo) {
    INode* n = makeNode(L"first");
    makeNode(L"first");  // names may repeat
    EXPECT_EQ(ip()->GetINodeByName(L"first"), n);
    Broadcasts b({NOTIFY_NODE_RENAMED});
    theHold.Begin();
    n->SetName(L"second");
    theHold.Accept(L"Rename");
    ASSERT_EQ(b.log.size(), 1u);
    EXPECT_EQ(b.log[0].text, L"first>second");
    EXPECT_EQ(b.log[0].node, n);
    n->SetName(L"second");  // no change, nothing sent
    EXPECT_EQ(b.log.size(), 1u);

    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(std::wstring(n->GetName()), L"first");
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(std::wstring(n->GetName()), L"second");
    ASSERT_EQ(b.log.size(), 3u);
    EXPECT_EQ(b.log[1].text, L"second>first");
    EXPECT_EQ(b.log[2].text, L"first>second");
}

TEST_F(SceneNodes, HierarchyKeepsOrderAndEvaluatesTransformsRelativeToTheParent) {
    INode* parent = makeNode(L"parent");
    INode* a = makeNode(L"a");
    INode* b = makeNode(L"b");
    Matrix3 parentTM = RotateZMatrix(float(M_PI / 2));
    parentTM.SetTrans(Point3(10.f, 0.f, 0.f));
    parent->SetNodeTM(0, parentTM);
    Matrix3 aTM = TransMatrix(Point3(0.f, 5.f, 0.f));
    a->SetNodeTM(0, aTM);

    Broadcasts links({NOTIFY_NODE_LINKED});
    parent->AttachChild(a, TRUE);  // keeps its place in the world
    EXPECT_TRUE(sameTM(a->GetNodeTM(0), aTM));
    EXPECT_TRUE(sameTM(a->GetParentTM(0), parentTM));
    parent->AttachChild(b, FALSE);  // keeps its local transform: moves with the parent
    EXPECT_TRUE(sameTM(b->GetNodeTM(0), parentTM));
    ASSERT_EQ(links.log.size(), 2u);
    EXPECT_EQ(links.log[0].node, a);
    EXPECT_EQ(links.log[1].node, b);
    EXPECT_EQ(childNames(parent), (std::vector<std::wstring>{L"a", L"b"}));

    // Moving the parent moves the children with it.
    Matrix3 moved = parentTM;
    moved.Translate(Point3(0.f, 0.f, 3.f));
    parent->SetNodeTM(0, moved);
    EXPECT_TRUE(a->GetNodeTM(0).GetTrans().Equals(Point3(0.f, 5.f, 3.f), 1e-4f));

    // A node cannot become a child of its own descendant, nor a root a child at all.
    a->AttachChild(parent, TRUE);
    EXPECT_EQ(parent->GetParentNode(), ip()->GetRootNode());
    a->AttachChild(ip()->GetRootNode(), TRUE);
    EXPECT_EQ(ip()->GetRootNode()->GetParentNode(), nullptr);
    EXPECT_EQ(links.log.size(), 2u);

    a->Detach(0, TRUE);
    EXPECT_EQ(a->GetParentNode(), ip()->GetRootNode());
    EXPECT_TRUE(a->GetNodeTM(0).GetTrans().Equals(Point3(0.f, 5.f, 3.f), 1e-4f));
    EXPECT_EQ(childNames(parent), (std::vector<std::wstring>{L"b"}));
    EXPECT_EQ(childNames(ip()->GetRootNode()), (std::vector<std::wstring>{L"parent", L"a"}));
    EXPECT_EQ(links.log.size(), 3u);
}

TEST_F(SceneNodes, DeletionRelinksChildrenClearsReferencesAndIsReentrant) {
    INode* a = makeNode(L"a");
    INode* c1 = makeNode(L"c1");
    INode* c2 = makeNode(L"c2");
    INode* d = makeNode(L"d");
    INode* e = makeNode(L"e");
    Matrix3 aTM = TransMatrix(Point3(1.f, 2.f, 3.f));
    a->SetNodeTM(0, aTM);
    a->AttachChild(c1, FALSE);
    a->AttachChild(c2, FALSE);
    ip()->SelectNode(a);
    ip()->SelectNode(d, FALSE);
    Item holder("holder", 2);
    holder.ReplaceReference(0, a);
    holder.ReplaceReference(1, e);

    // While a is about to go, a handler deletes e: e gets its own 68 and 69 inside a's, and is then skipped.
    struct Deleter {
        INode* when;
        INode* victim;
        static void proc(void* self, NotifyInfo* info) {
            auto* d = static_cast<Deleter*>(self);
            if (info->callParam == d->when) GetCOREInterface()->DeleteNode(d->victim);
        }
    } deleter{a, e};
    Broadcasts b({NOTIFY_SCENE_PRE_DELETED_NODE, NOTIFY_SCENE_POST_DELETED_NODE});
    RegisterNotification(&Deleter::proc, &deleter, NOTIFY_SCENE_PRE_DELETED_NODE);
    INodeTab doomed{a, e, d};
    ip()->DeleteNodes(doomed, true);
    UnRegisterNotification(&Deleter::proc, &deleter);

    EXPECT_EQ(b.Codes(), (std::vector<int>{68, 68, 69, 69, 68, 69}));
    EXPECT_EQ(b.log[0].node, a);
    EXPECT_EQ(b.log[1].node, e);
    EXPECT_EQ(b.log[4].node, d);
    EXPECT_EQ(childNames(ip()->GetRootNode()), (std::vector<std::wstring>{L"c1", L"c2"}));
    EXPECT_TRUE(sameTM(c1->GetNodeTM(0), aTM));  // children kept their place
    EXPECT_EQ(holder.GetReference(0), nullptr);
    EXPECT_EQ(holder.GetReference(1), nullptr);
    EXPECT_EQ(ip()->GetSelNodeCount(), 0);
    const auto msgs = heard(holder);
    EXPECT_EQ(std::count(msgs.begin(), msgs.end(), std::make_pair(RefMessage(REFMSG_TARGET_DELETED), PartID(PART_ALL))),
              2);

    // Without keeping transforms the children keep their local transform under the root.
    INode* p = makeNode(L"p");
    p->SetNodeTM(0, aTM);
    p->AttachChild(c1, FALSE);
    EXPECT_TRUE(sameTM(c1->GetNodeTM(0), aTM * aTM));
    INodeTab justP{p};
    ip()->DeleteNodes(justP, false);
    EXPECT_TRUE(sameTM(c1->GetNodeTM(0), aTM));  // its local transform, now under the root
}

TEST_F(SceneNodes, UndoneDeletionBringsTheNodeBackWhereItWasAndRedoDeletesItAgain) {
    hostrt::RegisterNamedSelSetClasses();
    INode* p = makeNode(L"p");
    INode* a = makeNode(L"a");
    INode* b = makeNode(L"b");
    INode* c = makeNode(L"c");
    INode* kid = makeNode(L"kid");
    for (INode* n : {a, b, c}) p->AttachChild(n, FALSE);
    Matrix3 bTM = TransMatrix(Point3(4.f, 0.f, 0.f));
    b->SetNodeTM(0, bTM);
    b->AttachChild(kid, FALSE);
    const Matrix3 kidWorld = kid->GetNodeTM(0);
    Mtl* mtl = NewDefaultStdMat();
    b->SetMtl(mtl);
    ILayer* layer = ip()->GetLayerManager()->CreateLayer(L"L");
    ASSERT_TRUE(layer->AddToLayer(b));
    ip()->SelectNode(a);
    ip()->SelectNode(b, FALSE);
    INodeTab members{a, b, c};
    ASSERT_TRUE(ip()->AddNewNamedSelSet(members, L"set"));
    Item holder("holder", 2);
    holder.ReplaceReference(1, b);
    auto& container = hostrt::SceneNodeContainer::Instance();
    const int slot = container.FindRef(b);
    const ULONG handle = b->GetHandle();
    const AnimHandle anim = Animatable::GetHandleByAnim(b);
    const Object* obj = b->GetObjectRef();

    auto expectGone = [&] {
        EXPECT_EQ(ip()->GetINodeByHandle(handle), nullptr);
        EXPECT_EQ(childNames(p), (std::vector<std::wstring>{L"a", L"c"}));
        EXPECT_EQ(kid->GetParentNode(), ip()->GetRootNode());
        EXPECT_TRUE(sameTM(kid->GetNodeTM(0), kidWorld));
        EXPECT_EQ(holder.GetReference(1), nullptr);
        EXPECT_EQ(ip()->GetSelNodeCount(), 1);
        EXPECT_EQ(ip()->GetNamedSelSetItemCount(0), 2);
        EXPECT_EQ(layer->NumNodes(), 0);
        EXPECT_EQ(container.FindRef(b), -1);
    };
    auto expectBack = [&] {
        EXPECT_EQ(ip()->GetINodeByHandle(handle), b);
        EXPECT_EQ(childNames(p), (std::vector<std::wstring>{L"a", L"b", L"c"}));
        EXPECT_EQ(childNames(b), (std::vector<std::wstring>{L"kid"}));
        EXPECT_TRUE(sameTM(kid->GetNodeTM(0), kidWorld));
        EXPECT_TRUE(sameTM(b->GetNodeTM(0), bTM));
        EXPECT_EQ(b->GetObjectRef(), obj);
        EXPECT_EQ(b->GetMtl(), mtl);
        EXPECT_EQ(b->GetLayer(), layer);
        ASSERT_EQ(layer->NumNodes(), 1);
        EXPECT_EQ(layer->GetNode(0), b);
        EXPECT_EQ(holder.GetReference(1), b);
        ASSERT_EQ(ip()->GetSelNodeCount(), 2);
        EXPECT_EQ(ip()->GetSelNode(1), b);
        EXPECT_TRUE(b->Selected());
        ASSERT_EQ(ip()->GetNamedSelSetItemCount(0), 3);
        EXPECT_EQ(ip()->GetNamedSelSetItem(0, 1), b);
        EXPECT_EQ(container.FindRef(b), slot);  // the same slot: the container's order is kept
    };

    Broadcasts heardCodes({NOTIFY_SCENE_ADDED_NODE, NOTIFY_SCENE_PRE_DELETED_NODE, NOTIFY_SCENE_POST_DELETED_NODE});
    theHold.Begin();
    ip()->DeleteNode(b);
    theHold.Accept(L"Delete");
    expectGone();
    ASSERT_EQ(theHold.NumUndoEntries(), 1);

    ASSERT_TRUE(theHold.Undo());
    expectBack();
    ASSERT_TRUE(theHold.Redo());
    expectGone();
    ASSERT_TRUE(theHold.Undo());
    expectBack();
    EXPECT_EQ(heardCodes.Codes(), (std::vector<int>{68, 69, 67, 68, 69, 67}));
    EXPECT_EQ(heardCodes.log[2].node, b);

    // A cancelled hold puts the node back too; a deletion outside any hold is final at once.
    theHold.Begin();
    ip()->DeleteNode(b);
    theHold.Cancel();
    expectBack();
    theHold.FlushUndoBuffer();  // no undo step may bring it back any more
    ip()->DeleteNode(b);
    EXPECT_EQ(Animatable::GetAnimByHandle(anim), nullptr);

    // A deleted node that no undo step can bring back any more is destroyed.
    INode* d = makeNode(L"d");
    const AnimHandle dAnim = Animatable::GetHandleByAnim(d);
    theHold.Begin();
    ip()->DeleteNode(d);
    theHold.Accept(L"Delete");
    EXPECT_EQ(Animatable::GetAnimByHandle(dAnim), d);  // kept for the undo step
    theHold.FlushUndoBuffer();
    EXPECT_EQ(Animatable::GetAnimByHandle(dAnim), nullptr);
}

TEST_F(SceneNodes, CreationAndLinksUndoAndRedo) {
    INode* p = makeNode(L"p");
    INode* q = makeNode(L"q");
    Matrix3 pTM = TransMatrix(Point3(0.f, 10.f, 0.f));
    p->SetNodeTM(0, pTM);

    // Creation: undo takes the node out of the scene, redo brings it back as it was made.
    Broadcasts heardCodes({NOTIFY_SCENE_ADDED_NODE, NOTIFY_SCENE_PRE_DELETED_NODE, NOTIFY_SCENE_POST_DELETED_NODE,
                           NOTIFY_NODE_LINKED});
    theHold.Begin();
    Object* box = newBox(3.f);
    INode* n = makeNode(L"n", box);
    theHold.Accept(L"Create");
    const ULONG handle = n->GetHandle();
    const AnimHandle boxAnim = Animatable::GetHandleByAnim(box);
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(ip()->GetINodeByHandle(handle), nullptr);
    EXPECT_EQ(childNames(ip()->GetRootNode()), (std::vector<std::wstring>{L"p", L"q"}));
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(ip()->GetINodeByHandle(handle), n);
    EXPECT_EQ(std::wstring(n->GetName()), L"n");
    EXPECT_EQ(n->GetObjectRef(), box);
    EXPECT_EQ(n->GetLayer(), ip()->GetLayerManager()->GetCurrentLayer());
    EXPECT_EQ(childNames(ip()->GetRootNode()), (std::vector<std::wstring>{L"p", L"q", L"n"}));
    EXPECT_EQ(heardCodes.Codes(), (std::vector<int>{67, 68, 69, 67}));

    // Linking without keeping the transform moves the node; undo puts back its parent, place and transform.
    const Matrix3 before = n->GetNodeTM(0);
    heardCodes.log.clear();
    theHold.Begin();
    p->AttachChild(n, FALSE);
    p->AttachChild(q, TRUE);
    theHold.Accept(L"Link");
    EXPECT_TRUE(sameTM(n->GetNodeTM(0), before * pTM));
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(childNames(ip()->GetRootNode()), (std::vector<std::wstring>{L"p", L"q", L"n"}));
    EXPECT_EQ(p->NumberOfChildren(), 0);
    EXPECT_TRUE(sameTM(n->GetNodeTM(0), before));
    EXPECT_TRUE(sameTM(q->GetNodeTM(0), Matrix3()));
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(childNames(p), (std::vector<std::wstring>{L"n", L"q"}));
    EXPECT_TRUE(sameTM(n->GetNodeTM(0), before * pTM));
    EXPECT_TRUE(sameTM(q->GetNodeTM(0), Matrix3()));  // kept its place in the world
    // 59 for each link, its undo and its redo.
    EXPECT_EQ(heardCodes.Codes(), (std::vector<int>{59, 59, 59, 59, 59, 59}));

    // Detaching is a link to the root: undo puts the node back in its old place among its siblings.
    theHold.Begin();
    n->Detach(0, TRUE);
    theHold.Accept(L"Unlink");
    EXPECT_EQ(childNames(p), (std::vector<std::wstring>{L"q"}));
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(childNames(p), (std::vector<std::wstring>{L"n", L"q"}));

    // Undoing everything and dropping the redo steps destroys the node made in the first step, and its object.
    while (theHold.Undo()) {
    }
    EXPECT_EQ(ip()->GetINodeByHandle(handle), nullptr);
    theHold.Begin();
    p->SetName(L"p2");  // a new step drops the redo steps
    theHold.Accept(L"Rename");
    EXPECT_EQ(theHold.NumRedoEntries(), 0);
    EXPECT_EQ(Animatable::GetAnimByHandle(boxAnim), nullptr);
}

TEST_F(SceneNodes, CloneCopiesObjectsControllersAndHierarchyInOneOperation) {
    INode* p = makeNode(L"Box001", newBox(7.f));
    INode* c = makeNode(L"child", newBox(3.f));
    p->AttachChild(c, FALSE);
    Mtl* mtl = NewDefaultStdMat();
    p->SetMtl(mtl);
    p->SetWireColor(RGB(1, 2, 3));

    Broadcasts b({NOTIFY_SCENE_ADDED_NODE});
    INodeTab nodes{p}, sources, clones;
    ASSERT_TRUE(ip()->CloneNodes(nodes, Point3(0.f, 0.f, 5.f), true, NODE_COPY, &sources, &clones));
    ASSERT_EQ(clones.Count(), 2);
    EXPECT_EQ(sources[0], p);
    EXPECT_EQ(sources[1], c);
    INode* p2 = clones[0];
    INode* c2 = clones[1];
    EXPECT_EQ(b.Codes(), (std::vector<int>{67, 67}));
    EXPECT_EQ(std::wstring(p2->GetName()), L"Box002");
    EXPECT_EQ(c2->GetParentNode(), p2);
    EXPECT_EQ(p2->GetParentNode(), ip()->GetRootNode());
    EXPECT_NE(p2->GetObjectRef(), p->GetObjectRef());
    EXPECT_FLOAT_EQ(p2->GetObjectRef()->GetParamBlock(0)->GetFloat(box_length), 7.f);
    EXPECT_NE(p2->GetTMController(), p->GetTMController());
    EXPECT_EQ(p2->GetMtl(), mtl);
    EXPECT_EQ(p2->GetLayer(), p->GetLayer());
    EXPECT_EQ(p2->GetWireColor(), RGB(1, 2, 3));
    EXPECT_TRUE(p2->GetNodeTM(0).GetTrans().Equals(Point3(0.f, 0.f, 5.f), 1e-4f));
    EXPECT_TRUE(c2->GetNodeTM(0).GetTrans().Equals(Point3(0.f, 0.f, 5.f), 1e-4f));

    // Instances share the object; without expansion the children stay behind.
    INodeTab again{p}, instances;
    ASSERT_TRUE(ip()->CloneNodes(again, Point3(), false, NODE_INSTANCE, nullptr, &instances));
    ASSERT_EQ(instances.Count(), 1);
    EXPECT_EQ(instances[0]->GetObjectRef(), p->GetObjectRef());
    EXPECT_EQ(instances[0]->NumberOfChildren(), 0);
}

TEST_F(SceneNodes, SelectionIsOrderedAndUndoable) {
    INode* a = makeNode(L"a");
    INode* b = makeNode(L"b");
    EventLog events;
    const auto key = GetISceneEventManager()->RegisterCallback(&events);
    theHold.Begin();
    ip()->SelectNode(b);
    ip()->SelectNode(a, FALSE);
    theHold.Accept(L"Select Nodes");
    ASSERT_EQ(ip()->GetSelNodeCount(), 2);
    EXPECT_EQ(ip()->GetSelNode(0), b);
    EXPECT_EQ(ip()->GetSelNode(1), a);
    EXPECT_TRUE(a->Selected());
    ip()->SelectNode(ip()->GetRootNode(), FALSE);  // roots are never selected
    EXPECT_EQ(ip()->GetSelNodeCount(), 2);

    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(ip()->GetSelNodeCount(), 0);
    EXPECT_FALSE(a->Selected());
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(ip()->GetSelNodeCount(), 2);

    INodeTab drop{b};
    ip()->SelectNodeTab(drop, FALSE);
    EXPECT_EQ(ip()->GetSelNodeCount(), 1);
    EXPECT_EQ(ip()->GetSelNode(0), a);
    ip()->ClearNodeSelection();
    EXPECT_EQ(ip()->GetSelNodeCount(), 0);
    GetISceneEventManager()->UnRegisterCallback(key);
    // Every select call, undo and redo step is an operation of its own: one delivery each.
    std::vector<std::wstring> selections;
    for (auto& e : events.seen)
        if (e != L"begin" && e != L"end") selections.push_back(e);
    EXPECT_EQ(std::count(events.seen.begin(), events.seen.end(), L"begin"), int(selections.size()));
    EXPECT_EQ(selections, (std::vector<std::wstring>{L"Selection:b", L"Selection:a",                    // select
                                                     L"Selection:a", L"Selection:b",                    // undo
                                                     L"Selection:b", L"Selection:a",                    // redo
                                                     L"Selection:b", L"Selection:a"}));                 // drop, clear
}

TEST_F(SceneNodes, PropertyChangesSendTheirMessagesAndNotifications) {
    INode* n = makeNode(L"n");
    Item watcher("watcher", 1);
    watcher.ReplaceReference(0, n);
    Broadcasts b({NOTIFY_POST_NODE_DISPLAY_PROP_CHANGED, NOTIFY_POST_NODE_RENDER_PROP_CHANGED,
                  NOTIFY_POST_NODE_USER_PROP_CHANGED, NOTIFY_POST_NODE_BONE_PROP_CHANGED, NOTIFY_NODE_PROPERTY_CHANGED,
                  NOTIFY_NODE_UNFREEZE});
    auto* props = static_cast<INodeRenderProperties*>(n->GetInterface(NODE_RENDERPROPS_INTERFACE));
    auto* ext2 = static_cast<INodeExtension2*>(n->GetInterface(NODE_EXTENSION2_INTERFACE));
    auto* skin = static_cast<INodeSkinPose*>(n->GetInterface(INODE_SKINPOSE_INTERFACE));
    ASSERT_TRUE(props && ext2 && skin && n->GetInterface(NODE_EXTENSION1_INTERFACE));

    struct Case {
        const char* what;
        std::function<void()> edit;
        std::vector<std::pair<RefMessage, PartID>> messages;
        std::vector<int> broadcasts;
    };
    const std::vector<Case> cases = {
        {"wire colour", [&] { n->SetWireColor(RGB(9, 9, 9)); }, {{528, 0}}, {}},
        {"material", [&] { n->SetMtl(NewDefaultStdMat()); }, {{565, PART_ALL}}, {}},
        {"hide", [&] { n->Hide(TRUE); }, {{577, 0x1}}, {}},
        {"freeze", [&] { n->Freeze(TRUE); }, {{577, 0x2}}, {}},
        {"unfreeze", [&] { n->Freeze(FALSE); }, {{577, 0x2}}, {64}},
        {"display switch", [&] { n->SetDisplayFlag(NODE_DISP_SEE_THROUGH, TRUE); }, {{577, 0}}, {199}},
        {"display value", [&] { n->SetDisplayValue(1, 7); }, {{577, 0}}, {199}},
        {"extension display switch", [&] { ext2->SetDisplaySwitch(TRUE); }, {{577, 0}}, {199}},
        {"render switch", [&] { n->SetRenderFlag(NODE_REND_CAST_SHADOWS, FALSE); }, {{568, PART_ALL}}, {197}},
        {"render value", [&] { n->SetRenderValue(0, 42); }, {{576, PART_ALL}}, {197}},
        {"render-properties switch", [&] { props->SetRenderSwitch(9, TRUE); }, {{568, PART_ALL}}, {197}},
        {"render-properties value", [&] { props->SetRenderPropValue(8, 3); }, {{576, PART_ALL}}, {197}},
        {"user properties", [&] { n->SetUserPropString(L"kind", L"tree"); }, {}, {132}},
        {"bone", [&] { n->SetBoneNodeOnOff(TRUE, 0); }, {}, {130}},
        {"bone value", [&] { n->SetBoneValue(1, 2); }, {}, {130}},
        {"transform lock", [&] { n->SetTransformLock(INODE_LOCKROT, INODE_LOCK_Z, TRUE); }, {}, {213}},
        {"skin pose", [&] { skin->SetSkinPos(Point3(1.f, 2.f, 3.f)); }, {}, {213}},
        {"object offset", [&] { n->SetObjOffsetPos(Point3(0.f, 0.f, 1.f)); }, {{REFMSG_CHANGE, PART_ALL}}, {213}},
        {"unchanged wire colour", [&] { n->SetWireColor(RGB(9, 9, 9)); }, {}, {}},
    };
    for (const Case& c : cases) {
        watcher.heard.clear();
        b.log.clear();
        c.edit();
        EXPECT_EQ(heard(watcher), c.messages) << c.what;
        EXPECT_EQ(b.Codes(), c.broadcasts) << c.what;
        for (auto& e : b.log) EXPECT_EQ(e.node, n) << c.what;
    }
    // The values stick, and the lock of the property change is the one asked for.
    EXPECT_TRUE(n->IsFrozen() == FALSE && n->IsHidden());
    EXPECT_TRUE(n->GetTransformLock(INODE_LOCKROT, INODE_LOCK_Z));
    EXPECT_FALSE(n->GetTransformLock(INODE_LOCKROT, INODE_LOCK_Y));
    EXPECT_FALSE(n->GetRenderFlag(NODE_REND_CAST_SHADOWS));
    EXPECT_EQ(props->GetRenderPropValue(8), 3u);
    MSTR kind;
    ASSERT_TRUE(n->GetUserPropString(L" KIND ", kind));
    EXPECT_EQ(kind, MSTR(L"tree"));
    n->SetUserPropString(L"kind", L"bush");
    MSTR all;
    n->GetUserPropBuffer(all);
    EXPECT_EQ(all, MSTR(L"kind = bush"));
    EXPECT_EQ(skin->GetSkinPos(), Point3(1.f, 2.f, 3.f));
    watcher.DeleteAllRefs();
}

TEST_F(SceneNodes, PropertyEditsUndo) {
    INode* n = makeNode(L"n");
    const DWORD colour = n->GetWireColor();
    theHold.Begin();
    n->SetWireColor(RGB(200, 0, 0));
    n->Hide(TRUE);
    n->SetRenderFlag(NODE_REND_RENDERABLE, FALSE);
    n->SetGroupMember(TRUE);
    theHold.Accept(L"Edit");
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(n->GetWireColor(), colour);
    EXPECT_FALSE(n->IsHidden());
    EXPECT_TRUE(n->GetRenderFlag(NODE_REND_RENDERABLE));
    EXPECT_FALSE(n->IsGroupMember());
    ASSERT_TRUE(theHold.Redo());
    EXPECT_TRUE(n->IsHidden() && n->IsGroupMember());
}

TEST_F(SceneNodes, NodeEventsArriveAtTheEndOfTheOperation) {
    INode* a = makeNode(L"a");
    INode* b = makeNode(L"b");
    EventLog events;
    auto* mgr = GetISceneEventManager();
    const auto key = mgr->RegisterCallback(&events);
    EXPECT_EQ(mgr->GetCallbackByKey(key), &events);
    {
        hostrt::NodeEventBatch operation;
        a->SetGroupHead(TRUE);
        b->SetGroupMember(TRUE);
        a->SetGroupHeadOpen(TRUE);
        EXPECT_TRUE(events.seen.empty());  // nothing before the operation ends
    }
    EXPECT_EQ(events.seen, (std::vector<std::wstring>{L"begin", L"Group:a,b", L"end"}));
    EXPECT_TRUE(a->IsGroupHead() && a->IsOpenGroupHead() && b->IsGroupMember());
    EXPECT_FALSE(a->IsGroupMember() || b->IsOpenGroupMember());

    // A callback that unregisters itself hears nothing more, even in the same delivery.
    struct Once : INodeEventCallback {
        ISceneEventManager::CallbackKey key = 0;
        int heard = 0;
        void GroupChanged(NodeKeyTab&) override {
            ++heard;
            GetISceneEventManager()->UnRegisterCallback(key);
        }
        void NameChanged(NodeKeyTab&) override { ++heard; }
    } once;
    once.key = mgr->RegisterCallback(&once);
    events.seen.clear();
    {
        hostrt::NodeEventBatch operation;
        a->SetName(L"a2");
        b->SetGroupMember(FALSE);
    }
    EXPECT_EQ(once.heard, 1);
    EXPECT_EQ(events.seen, (std::vector<std::wstring>{L"begin", L"Group:b", L"Name:a2", L"end"}));
    mgr->UnRegisterCallback(key);
    EXPECT_EQ(mgr->GetCallbackByKey(key), nullptr);
    const ULONG gone = a->GetHandle();
    ip()->DeleteNode(a);
    EXPECT_EQ(NodeEventNamespace::GetNodeByKey(gone), nullptr);
}

TEST_F(SceneNodes, TheContainerHoldsEveryNodeAndOutlivesTheScene) {
    auto& container = hostrt::SceneNodeContainer::Instance();
    const int base = container.NodeCount();  // nodes outside the scene that something still holds
    INode* a = makeNode(L"a");
    const auto& deps = a->Dependents();
    EXPECT_NE(std::find(deps.begin(), deps.end(), &container), deps.end());
    EXPECT_EQ(container.ClassID(), Class_ID(0x2A930130, 0x168B3DD9));
    EXPECT_EQ(container.FindRef(a) >= 0, true);
    EXPECT_EQ(container.FindRef(ip()->GetRootNode()), -1);
    EXPECT_EQ(container.NodeCount(), base + 1);
    ip()->DeleteNode(a);
    EXPECT_EQ(container.NodeCount(), base);
    makeNode(L"b");
    makeNode(L"b2");
    Scene::Instance().ResetScene();
    EXPECT_EQ(container.NodeCount(), base);
    INode* c = makeNode(L"c");
    EXPECT_EQ(container.GetReference(container.FindRef(c)), c);
}

TEST_F(SceneNodes, ExternalSceneEntriesHaveTreesOfTheirOwnAndAreNeverSaved) {
    INode* root = ip()->GetRootNode();
    ASSERT_TRUE(root->AddNewXRefFile(L"VDTXR"));  // no such file: the entry is made all the same
    ASSERT_EQ(root->GetXRefFileCount(), 1);
    EXPECT_EQ(root->GetXRefFile(0), MSTR(L"VDTXR"));
    INode* tree = root->GetXRefTree(0);
    ASSERT_NE(tree, nullptr);
    EXPECT_TRUE(tree->IsRootNode());
    EXPECT_NE(tree, root);
    INode* parked = makeNode(L"parked");
    tree->AttachChild(parked, FALSE);
    EXPECT_EQ(parked->GetParentNode(), tree);
    EXPECT_EQ(root->NumberOfChildren(), 0);

    const auto file = std::filesystem::temp_directory_path() / ("scene_nodes_xref_" + std::to_string(::getpid()) + ".max");
    ASSERT_EQ(ip()->SaveToFile(MSTR(file.wstring()).data()), 1);
    ASSERT_EQ(ip()->LoadFromFile(MSTR(file.wstring()).data()), 1);
    std::filesystem::remove(file);
    EXPECT_EQ(ip()->GetRootNode()->GetXRefFileCount(), 0);
    EXPECT_EQ(ip()->GetINodeByName(L"parked"), nullptr);

    INode* again = ip()->GetRootNode();
    ASSERT_TRUE(again->AddNewXRefFile(L"other"));
    again->GetXRefTree(0)->AttachChild(makeNode(L"x"), FALSE);
    const ULONG handle = again->GetXRefTree(0)->GetChildNode(0)->GetHandle();
    EXPECT_TRUE(again->DeleteXRefFile(0));
    EXPECT_EQ(again->GetXRefFileCount(), 0);
    EXPECT_EQ(ip()->GetINodeByHandle(handle), nullptr);
    EXPECT_FALSE(again->DeleteXRefFile(0));
}

TEST_F(SceneNodes, SaveAndOpenKeepTheHierarchyAndEveryProperty) {
    INode* top = makeNode(L"top", newBox(4.f));
    INode* kid1 = makeNode(L"kid", newBox(1.f));
    INode* kid2 = makeNode(L"kid", newBox(2.f));  // same name, kept apart by order
    top->AttachChild(kid1, FALSE);
    top->AttachChild(kid2, FALSE);
    Matrix3 tm = RotateXMatrix(0.5f);
    tm.SetTrans(Point3(1.f, 2.f, 3.f));
    top->SetNodeTM(0, tm);
    Mtl* mtl = NewDefaultStdMat();
    mtl->SetName(L"shared");
    kid1->SetMtl(mtl);
    kid2->SetMtl(mtl);
    kid2->Hide(TRUE);
    kid2->Freeze(TRUE);
    kid2->SetWireColor(RGB(10, 20, 30));
    kid2->SetUserPropBuffer(L"a = 1");
    kid2->SetDisplayFlag(NODE_DISP_BOX_MODE, TRUE);
    kid2->SetDisplayValue(0, 5);
    kid2->SetRenderValue(2, 0x1234);
    kid2->SetBoneFlag(NODE_BONE_FREEZE_LENGTH, TRUE);
    kid2->SetTransformLock(INODE_LOCKSCL, INODE_LOCK_X, TRUE);
    kid2->SetGroupMember(TRUE);
    kid2->SetObjOffsetPos(Point3(0.f, 1.f, 0.f));
    static_cast<INodeExtension1*>(kid2->GetInterface(NODE_EXTENSION1_INTERFACE))->SetDisplaySwitch(TRUE);
    static_cast<INodeSkinPose*>(kid2->GetInterface(INODE_SKINPOSE_INTERFACE))->SetSkinScale(Point3(2.f, 2.f, 2.f));
    const ULONG oldHandle = kid2->GetHandle();

    const auto file = std::filesystem::temp_directory_path() / ("scene_nodes_" + std::to_string(::getpid()) + ".max");
    const MSTR path(file.wstring());
    ASSERT_EQ(ip()->SaveToFile(path.data()), 1);
    EXPECT_FALSE(ip()->IsSaveRequired());
    ip()->FileReset();
    EXPECT_EQ(ip()->GetRootNode()->NumberOfChildren(), 0);
    ASSERT_EQ(ip()->LoadFromFile(path.data()), 1);
    std::filesystem::remove(file);
    EXPECT_FALSE(ip()->IsSaveRequired());
    EXPECT_EQ(ip()->GetCurFilePath(), path);

    INode* root = ip()->GetRootNode();
    ASSERT_EQ(childNames(root), (std::vector<std::wstring>{L"top"}));
    INode* t = root->GetChildNode(0);
    ASSERT_EQ(childNames(t), (std::vector<std::wstring>{L"kid", L"kid"}));
    INode* k1 = t->GetChildNode(0);
    INode* k2 = t->GetChildNode(1);
    EXPECT_TRUE(sameTM(t->GetNodeTM(0), tm));
    EXPECT_FLOAT_EQ(k1->GetObjectRef()->GetParamBlock(0)->GetFloat(box_length), 1.f);
    EXPECT_FLOAT_EQ(k2->GetObjectRef()->GetParamBlock(0)->GetFloat(box_length), 2.f);
    ASSERT_NE(k1->GetMtl(), nullptr);
    EXPECT_EQ(k1->GetMtl(), k2->GetMtl());
    EXPECT_EQ(k1->GetMtl()->GetName(), MSTR(L"shared"));
    EXPECT_NE(k2->GetHandle(), oldHandle);
    EXPECT_TRUE(k2->IsHidden() && k2->IsFrozen());
    EXPECT_FALSE(k1->IsHidden());
    EXPECT_EQ(k2->GetWireColor(), RGB(10, 20, 30));
    MSTR props;
    k2->GetUserPropBuffer(props);
    EXPECT_EQ(props, MSTR(L"a = 1"));
    EXPECT_TRUE(k2->GetDisplayFlag(NODE_DISP_BOX_MODE));
    EXPECT_EQ(k2->GetDisplayValue(0), 5);
    EXPECT_EQ(k2->GetRenderValue(2), 0x1234u);
    EXPECT_TRUE(k2->GetBoneFlag(NODE_BONE_FREEZE_LENGTH));
    EXPECT_TRUE(k2->GetTransformLock(INODE_LOCKSCL, INODE_LOCK_X));
    EXPECT_TRUE(k2->IsGroupMember());
    EXPECT_EQ(k2->GetObjOffsetPos(), Point3(0.f, 1.f, 0.f));
    EXPECT_TRUE(static_cast<INodeExtension1*>(k2->GetInterface(NODE_EXTENSION1_INTERFACE))->GetDisplaySwitch());
    EXPECT_EQ(static_cast<INodeSkinPose*>(k2->GetInterface(INODE_SKINPOSE_INTERFACE))->GetSkinScale(),
              Point3(2.f, 2.f, 2.f));
    ASSERT_NE(k2->GetLayer(), nullptr);
    EXPECT_EQ(k2->GetLayer(), ip()->GetLayerManager()->GetLayer(0));
    EXPECT_EQ(ip()->GetINodeByHandle(k2->GetHandle()), k2);

    k1->SetName(L"changed");
    EXPECT_TRUE(ip()->IsSaveRequired());
}

TEST_F(SceneNodes, RenderAndCommandPanelState) {
    Broadcasts b({NOTIFY_PRE_RENDER, NOTIFY_POST_RENDER});
    ip()->RenderScene();
    EXPECT_EQ(b.Codes(), (std::vector<int>{20, 21}));
    ip()->SetCommandPanelTaskMode(TASK_MODE_MODIFY);
    EXPECT_EQ(ip()->GetCommandPanelTaskMode(), TASK_MODE_MODIFY);
    Object* box = newBox();
    INode* n = ip()->CreateObjectNode(box);
    ip()->SetCurEditObject(box);
    EXPECT_EQ(ip()->GetCurEditObject(), box);
    ip()->DeleteNode(n);  // the box goes with its node
    EXPECT_EQ(ip()->GetCurEditObject(), nullptr);
}

// ------------------------------------------------------------------------------------ the identity class

TEST(SceneIdentityClass, AnswersTheConfiguredIdentityAndKeepsItThroughSaveLoadAndClone) {
    hostrt::RegisterBuiltinClasses();
    const Class_ID ikID(0x0E6F5815, 0x717F99A4);
    ReferenceTarget* ik = hostrt::IdentityClass::Make(CTRL_MATRIX3_CLASS_ID, ikID);
    hostrt::IdentityClass* cfg = hostrt::IdentityClass::Of(ik);
    ASSERT_NE(cfg, nullptr);
    EXPECT_EQ(ik->SuperClassID(), CTRL_MATRIX3_CLASS_ID);
    EXPECT_EQ(ik->ClassID(), ikID);
    auto* ctrl = dynamic_cast<Control*>(ik);
    ASSERT_NE(ctrl, nullptr);  // a controller superclass makes a controller
    EXPECT_NE(ik->GetInterface(ULONG(I_CONTROL)), nullptr);
    const Interface_ID listID(0x444E7687, 0x722E6E36);
    EXPECT_EQ(ik->GetInterface(listID), nullptr);
    cfg->AddInterface(listID);
    cfg->AddInterface(ULONG(37221));
    ASSERT_NE(ik->GetInterface(listID), nullptr);
    EXPECT_EQ(ik->GetInterface(listID)->GetID(), listID);
    EXPECT_NE(ik->GetInterface(ULONG(37221)), nullptr);
    EXPECT_EQ(ik->GetInterface(ULONG(37222)), nullptr);
    cfg->SetCanCopyAnim(false);
    cfg->SetIsLeaf(false);
    EXPECT_FALSE(ik->CanCopyAnim());
    EXPECT_FALSE(ctrl->IsLeaf());
    Matrix3 parent = TransMatrix(Point3(1.f, 2.f, 3.f));
    Interval valid;
    ctrl->GetValue(0, &parent, valid, CTRL_RELATIVE);  // relative: the incoming matrix is left as it is
    EXPECT_EQ(parent.GetTrans(), Point3(1.f, 2.f, 3.f));

    // References and named sub-anims.
    cfg->SetNumRefs(3);
    ReferenceTarget* leaf = hostrt::IdentityClass::Make(CTRL_FLOAT_CLASS_ID, Class_ID(0x72ED43DC, 0x3EC96A0A));
    ik->ReplaceReference(2, leaf);
    EXPECT_EQ(cfg->AddSubAnim(2, L"L"), 0);
    EXPECT_EQ(ik->NumRefs(), 3);
    EXPECT_EQ(ik->NumSubs(), 1);
    EXPECT_EQ(ik->SubAnim(0), leaf);
    EXPECT_EQ(ik->SubAnimName(0), MSTR(L"L"));
    EXPECT_EQ(ik->SubNumToRefNum(0), 2);

    // Save and load through the scene-file code, then clone: the identity and its configuration stay.
    auto image = hostrt::ParseSceneFile(hostrt::WriteSceneFile({ik}, L"identity"), L"identity");
    ReferenceTarget* back = hostrt::InstantiateScene(image, L"identity").roots.at(0);
    RefTargetHandle clone = CloneRefHierarchy(ik);
    for (ReferenceTarget* copy : {back, static_cast<ReferenceTarget*>(clone)}) {
        ASSERT_NE(copy, nullptr);
        EXPECT_NE(copy, ik);
        EXPECT_EQ(copy->ClassID(), ikID);
        EXPECT_EQ(copy->SuperClassID(), CTRL_MATRIX3_CLASS_ID);
        EXPECT_NE(copy->GetInterface(listID), nullptr);
        EXPECT_NE(copy->GetInterface(ULONG(37221)), nullptr);
        EXPECT_FALSE(copy->CanCopyAnim());
        EXPECT_FALSE(dynamic_cast<Control*>(copy)->IsLeaf());
        ASSERT_EQ(copy->NumRefs(), 3);
        ASSERT_NE(copy->GetReference(2), nullptr);
        EXPECT_NE(copy->GetReference(2), leaf);
        EXPECT_EQ(copy->GetReference(2)->ClassID(), Class_ID(0x72ED43DC, 0x3EC96A0A));
        EXPECT_EQ(copy->SubAnimName(0), MSTR(L"L"));
        copy->DeleteMe();
    }
    const AnimHandle leafHandle = Animatable::GetHandleByAnim(leaf);
    cfg->SetNumRefs(1);  // shrinking drops the references beyond: the leaf, needed by nothing else, goes
    EXPECT_EQ(Animatable::GetAnimByHandle(leafHandle), nullptr);
    EXPECT_EQ(ik->NumRefs(), 1);
    ik->DeleteMe();
}

TEST(SceneIdentityClass, TheSuperclassChoosesTheBaseAndTakenIdentitiesAreRefused) {
    hostrt::RegisterBuiltinClasses();
    hostrt::RegisterObjectClasses();
    ReferenceTarget* source = hostrt::IdentityClass::Make(GEOMOBJECT_CLASS_ID, Class_ID(0x50320C9A, 0), L"PF Source");
    EXPECT_NE(dynamic_cast<Object*>(source), nullptr);
    EXPECT_EQ(source->ClassName(), MSTR(L"PF Source"));
    ReferenceTarget* morpher = hostrt::IdentityClass::Make(OSM_CLASS_ID, Class_ID(0x17BB6854, 0xA5CBA2A3));
    EXPECT_NE(dynamic_cast<Modifier*>(morpher), nullptr);
    ReferenceTarget* other = hostrt::IdentityClass::Make(0x8663DFA7, Class_ID(0x55293BB4, 0x4AD13DAD));
    EXPECT_EQ(other->SuperClassID(), 0x8663DFA7u);
    EXPECT_EQ(dynamic_cast<Control*>(other), nullptr);
    EXPECT_EQ(FindClassDesc(0x8663DFA7, Class_ID(0x55293BB4, 0x4AD13DAD))->ClassName(), other->ClassName());
    try {
        hostrt::IdentityClass::Make(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID);
        ADD_FAILURE() << "made an identity that the box class has";
    } catch (const MAXException& e) {
        EXPECT_NE(e.message.str().find(L"class '"), std::wstring::npos) << e.what();
    }
    for (ReferenceTarget* t : {source, morpher, other}) t->DeleteMe();
}
