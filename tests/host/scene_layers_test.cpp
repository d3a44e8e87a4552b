// Layers and the layer manager, named selection sets and the scene effects list: their rules, notifications,
// how they follow node deletion, and save/open.
#include "hold.h"
#include "ilayer.h"
#include "inode.h"
#include "iscene_effects.h"
#include "maxapi.h"
#include "notify.h"
#include "platform/host_dirs.h"
#include "platform/ini_file.h"
#include "scene/layers/layer_manager.h"
#include "scene/named_sets.h"
#include "scene/scene.h"
#include "scene/scene_effects.h"
#include "test_objects.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace hostrt;
using testobj::Item;

namespace {

// What a broadcast carried, read while it was being sent.
struct Broadcast {
    int code;
    std::wstring text;  // set name, or "old>new" for a rename
    void* a = nullptr;
    void* b = nullptr;
    void* c = nullptr;
    bool layerListed = false;  // for 149: the layer was still in the manager when told
};

struct Recorder {
    std::vector<Broadcast> log;
    static constexpr int kCodes[] = {NOTIFY_LAYER_DELETED, NOTIFY_NODE_LAYER_CHANGED, NOTIFY_NAMED_SEL_SET_CREATED,
                                     NOTIFY_NAMED_SEL_SET_DELETED, NOTIFY_NAMED_SEL_SET_RENAMED};
    Recorder() {
        for (int code : kCodes) RegisterNotification(&Recorder::proc, this, code);
    }
    ~Recorder() { UnRegisterNotification(&Recorder::proc, this); }
    static void proc(void* self, NotifyInfo* info) {
        Broadcast b{info->intcode, {}};
        switch (info->intcode) {
        case NOTIFY_LAYER_DELETED:
            b.a = info->callParam;
            b.layerListed = SceneLayerManager().IndexOf(static_cast<ILayer*>(info->callParam)) >= 0;
            break;
        case NOTIFY_NODE_LAYER_CHANGED: {
            auto* ch = static_cast<NodeLayerChange*>(info->callParam);
            b.a = ch->node;
            b.b = ch->oldLayer;
            b.c = ch->newLayer;
            break;
        }
        case NOTIFY_NAMED_SEL_SET_RENAMED: {
            auto* ch = static_cast<NameChange*>(info->callParam);
            b.text = std::wstring(ch->oldName) + L">" + ch->newName;
            break;
        }
        default:
            b.text = static_cast<MSTR*>(info->callParam)->str();
        }
        static_cast<Recorder*>(self)->log.push_back(b);
    }
    int count(int code) const {
        return int(std::count_if(log.begin(), log.end(), [&](const Broadcast& b) { return b.code == code; }));
    }
};

INode* makeNode(const MCHAR* name) {
    INode* n = GetCOREInterface()->CreateObjectNode(nullptr);
    n->SetName(name);
    return n;
}

std::filesystem::path tempScene(const char* name) {
    return std::filesystem::temp_directory_path() / (std::string("scene_layers_") + name + ".scene");
}

// Saves the open scene, resets and opens it again.
void reopen(const char* name) {
    const auto path = tempScene(name);
    Scene::Instance().SaveScene(MSTR(path.wstring()));
    Scene::Instance().ResetScene();
    Scene::Instance().OpenScene(MSTR(path.wstring()));
    std::filesystem::remove(path);
}

struct SceneParts : ::testing::Test {
    void SetUp() override {
        RegisterLayerClasses();
        RegisterNamedSelSetClasses();
        RegisterSceneEffectClasses();
        Scene::Instance().ResetScene();
        layers = GetCOREInterface()->GetLayerManager();  // every scene has its own manager
    }
    void TearDown() override {
        while (theHold.GetBeginDepth() > 0) theHold.Cancel();
        Scene::Instance().ResetScene();
    }
    ILayerManager* layers = nullptr;
};

using SceneLayers = SceneParts;
using SceneNamedSets = SceneParts;
using SceneEffectLists = SceneParts;

TEST_F(SceneLayers, NamesAreUniqueAndRenamesUndo) {
    ASSERT_EQ(layers->GetLayerCount(), 1);
    ILayer* zero = layers->GetLayer(0);
    EXPECT_EQ(zero->GetName(), L"0");
    EXPECT_EQ(layers->GetCurrentLayer(), zero);

    ILayer* walls = layers->CreateLayer(L"Walls");
    ASSERT_NE(walls, nullptr);
    EXPECT_EQ(layers->CreateLayer(L"WALLS"), nullptr);
    EXPECT_EQ(layers->CreateLayer(L""), nullptr);
    EXPECT_EQ(layers->GetLayer(L"walls"), walls);
    EXPECT_FALSE(walls->SetName(L"0"));
    EXPECT_FALSE(walls->SetName(L""));

    theHold.Begin();
    EXPECT_TRUE(walls->SetName(L"Roof"));
    theHold.Accept(L"Rename");
    EXPECT_EQ(layers->GetLayer(L"Walls"), nullptr);
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(walls->GetName(), L"Walls");

    EXPECT_TRUE(layers->SetCurrentLayer(L"walls"));
    EXPECT_EQ(layers->GetCurrentLayer(), walls);
    EXPECT_FALSE(layers->SetCurrentLayer(L"missing"));
    EXPECT_EQ(layers->GetCurrentLayer(), walls);
}

TEST_F(SceneLayers, DeleteRulesAnnounceAndReAdd) {
    Recorder rec;
    ILayer* parent = layers->CreateLayer(L"Parent");
    ILayer* child = layers->CreateLayer(L"Child");
    ILayer* busy = layers->CreateLayer(L"Busy");
    ASSERT_TRUE(child->SetParentLayer(parent));
    busy->AddToLayer(makeNode(L"box"));
    layers->SetCurrentLayer(L"Child");

    EXPECT_FALSE(layers->DeleteLayer(L"0"));
    EXPECT_FALSE(layers->DeleteLayer(L"Child"));   // current
    EXPECT_FALSE(layers->DeleteLayer(L"Parent"));  // has a child layer
    EXPECT_FALSE(layers->DeleteLayer(L"Busy"));    // holds a node
    EXPECT_FALSE(layers->DeleteLayer(L"missing"));
    EXPECT_EQ(rec.count(NOTIFY_LAYER_DELETED), 0);

    // A deleted layer leaves the manager only: what references it keeps it.
    layers->SetCurrentLayer(L"0");
    Item* holder = new Item("record", 1);
    holder->ReplaceReference(0, child);
    ASSERT_TRUE(layers->DeleteLayer(L"Child"));
    ASSERT_EQ(rec.count(NOTIFY_LAYER_DELETED), 1);
    EXPECT_EQ(rec.log.back().a, static_cast<void*>(child));
    EXPECT_TRUE(rec.log.back().layerListed);
    EXPECT_EQ(layers->GetLayer(L"Child"), nullptr);
    EXPECT_EQ(parent->GetNumOfChildLayers(), 1);  // still its parent's child, though not listed
    EXPECT_FALSE(layers->DeleteLayer(L"Parent"));

    EXPECT_TRUE(layers->AddLayer(child));
    EXPECT_FALSE(layers->AddLayer(child));
    EXPECT_EQ(layers->GetLayer(layers->GetLayerCount() - 1), child);
    EXPECT_EQ(child->GetParentLayer(), parent);

    // A layer nothing references is deleted with its removal.
    ILayer* lonely = layers->CreateLayer(L"Lonely");
    const AnimHandle h = Animatable::GetHandleByAnim(lonely);
    ASSERT_TRUE(layers->DeleteLayer(L"Lonely"));
    EXPECT_EQ(Animatable::GetAnimByHandle(h), nullptr);
    holder->DeleteMe();
}

TEST_F(SceneLayers, ParentsChildrenAndNodesBelow) {
    ILayer* a = layers->CreateLayer(L"A");
    ILayer* b = layers->CreateLayer(L"B");
    ILayer* c = layers->CreateLayer(L"C");
    ASSERT_TRUE(c->SetParentLayer(a));
    ASSERT_TRUE(b->SetParentLayer(a));
    ASSERT_TRUE(c->SetParentLayer(a));
    ASSERT_EQ(a->GetNumOfChildLayers(), 2);
    EXPECT_EQ(a->GetChildLayer(0), b);  // in the manager's order
    EXPECT_EQ(a->GetChildLayer(1), c);
    EXPECT_FALSE(a->SetParentLayer(c));  // would make a cycle
    EXPECT_FALSE(a->SetParentLayer(a));
    EXPECT_EQ(a->GetParentLayer(), nullptr);

    EXPECT_FALSE(a->HasNodesBelow());
    c->AddToLayer(makeNode(L"n"));
    EXPECT_TRUE(a->HasNodesBelow());
    EXPECT_FALSE(b->HasNodesBelow());
    ASSERT_TRUE(c->SetParentLayer(nullptr));
    EXPECT_EQ(a->GetNumOfChildLayers(), 1);
}

TEST_F(SceneLayers, AddToLayerMovesBroadcastsAndUndoes) {
    Recorder rec;
    ILayer* zero = layers->GetLayer(0);
    ILayer* walls = layers->CreateLayer(L"Walls");
    INode* n1 = makeNode(L"n1");
    INode* n2 = makeNode(L"n2");
    ASSERT_EQ(n1->GetLayer(), zero);  // new nodes go to the current layer
    ASSERT_EQ(zero->NumNodes(), 2);

    theHold.Begin();
    ASSERT_TRUE(walls->AddToLayer(n1));
    theHold.Accept(L"Layer");
    ASSERT_EQ(rec.count(NOTIFY_NODE_LAYER_CHANGED), 1);
    EXPECT_EQ(rec.log[0].a, static_cast<void*>(n1));
    EXPECT_EQ(rec.log[0].b, static_cast<void*>(zero));
    EXPECT_EQ(rec.log[0].c, static_cast<void*>(walls));
    EXPECT_EQ(n1->GetLayer(), walls);
    EXPECT_EQ(walls->NumNodes(), 1);
    EXPECT_EQ(walls->GetNode(0), n1);
    EXPECT_EQ(zero->NumNodes(), 1);
    EXPECT_EQ(zero->GetNode(0), n2);
    EXPECT_TRUE(walls->AddToLayer(n1));  // already there: nothing to tell
    EXPECT_EQ(rec.count(NOTIFY_NODE_LAYER_CHANGED), 1);
    EXPECT_FALSE(walls->AddToLayer(nullptr));

    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(n1->GetLayer(), zero);
    EXPECT_EQ(walls->NumNodes(), 0);
    EXPECT_EQ(zero->NumNodes(), 2);

    // A deleted node leaves its layer.
    GetCOREInterface()->DeleteNode(n2);
    ASSERT_EQ(zero->NumNodes(), 1);
    EXPECT_EQ(zero->GetNode(0), n1);
}

TEST_F(SceneLayers, MergeOptionIsAHostSettingStoredOnRequest) {
    const std::filesystem::path before = HostIniPath();
    const auto ini = std::filesystem::temp_directory_path() / "scene_layers_test.ini";
    std::filesystem::remove(ini);
    SetIniPath(ini);
    LoadLayerPreferences();
    EXPECT_FALSE(layers->GetDuplicateLayerWithoutSameHierarchyOnMerge());

    layers->SetDuplicateLayerWithoutSameHierarchyOnMerge(true, false);
    EXPECT_TRUE(layers->GetDuplicateLayerWithoutSameHierarchyOnMerge());
    LoadLayerPreferences();  // as at the next start-up: not stored
    EXPECT_FALSE(layers->GetDuplicateLayerWithoutSameHierarchyOnMerge());

    layers->SetDuplicateLayerWithoutSameHierarchyOnMerge(true, true);
    LoadLayerPreferences();
    EXPECT_TRUE(layers->GetDuplicateLayerWithoutSameHierarchyOnMerge());
    Scene::Instance().ResetScene();  // not scene data: a new scene keeps it
    layers = GetCOREInterface()->GetLayerManager();
    EXPECT_TRUE(layers->GetDuplicateLayerWithoutSameHierarchyOnMerge());

    layers->SetDuplicateLayerWithoutSameHierarchyOnMerge(false, true);
    SetIniPath(before);
    std::filesystem::remove(ini);
}

TEST_F(SceneLayers, SaveAndOpenKeepLayersHierarchyNodesAndCurrent) {
    ILayer* a = layers->CreateLayer(L"A");
    ILayer* b = layers->CreateLayer(L"B");
    ILayer* c = layers->CreateLayer(L"C");
    c->SetParentLayer(a);
    b->SetParentLayer(a);
    b->AddToLayer(makeNode(L"onB"));
    layers->SetCurrentLayer(L"C");

    reopen("layers");
    ILayerManager* m = GetCOREInterface()->GetLayerManager();
    ASSERT_EQ(m->GetLayerCount(), 4);
    EXPECT_EQ(m->GetLayer(0)->GetName(), L"0");
    ILayer* a2 = m->GetLayer(L"A");
    ASSERT_NE(a2, nullptr);
    ASSERT_EQ(a2->GetNumOfChildLayers(), 2);
    EXPECT_EQ(a2->GetChildLayer(0)->GetName(), L"B");
    EXPECT_EQ(a2->GetChildLayer(1)->GetName(), L"C");
    EXPECT_EQ(m->GetCurrentLayer()->GetName(), L"C");
    INode* onB = GetCOREInterface()->GetINodeByName(L"onB");
    ASSERT_NE(onB, nullptr);
    EXPECT_EQ(onB->GetLayer(), m->GetLayer(L"B"));
    EXPECT_EQ(m->GetLayer(L"B")->NumNodes(), 1);
}

TEST_F(SceneNamedSets, CreateReplaceRenameRemoveBroadcast) {
    Recorder rec;
    Interface* ip = GetCOREInterface();
    INode* a = makeNode(L"a");
    INode* b = makeNode(L"b");
    INodeTab ab{a, nullptr, b, a};
    ASSERT_TRUE(ip->AddNewNamedSelSet(ab, L"Set1"));
    EXPECT_FALSE(ip->AddNewNamedSelSet(ab, L"set1"));
    EXPECT_FALSE(ip->AddNewNamedSelSet(ab, L""));
    ASSERT_EQ(ip->GetNumNamedSelSets(), 1);
    ASSERT_EQ(ip->GetNamedSelSetItemCount(0), 2);  // no null, no repeat
    EXPECT_EQ(ip->GetNamedSelSetItem(0, 1), b);

    INodeTab onlyB{b};
    ASSERT_TRUE(ip->AddNewNamedSelSet(onlyB, L"Set2"));
    ASSERT_TRUE(ip->ReplaceNamedSelSet(onlyB, L"SET1"));
    EXPECT_FALSE(ip->ReplaceNamedSelSet(onlyB, L"missing"));
    EXPECT_EQ(ip->GetNamedSelSetItemCount(0), 1);
    EXPECT_EQ(ip->GetNamedSelSetItem(0, 0), b);

    EXPECT_FALSE(ip->SetNamedSelSetName(1, L"set1"));
    ASSERT_TRUE(ip->SetNamedSelSetName(1, L"Renamed"));
    EXPECT_EQ(ip->GetNamedSelSetName(1), L"Renamed");
    ASSERT_TRUE(ip->RemoveNamedSelSet(L"set1"));
    EXPECT_FALSE(ip->RemoveNamedSelSet(L"set1"));
    ASSERT_EQ(ip->GetNumNamedSelSets(), 1);
    EXPECT_EQ(ip->GetNamedSelSetName(0), L"Renamed");

    ASSERT_EQ(rec.log.size(), 4u);
    EXPECT_EQ(rec.log[0].code, NOTIFY_NAMED_SEL_SET_CREATED);
    EXPECT_EQ(rec.log[0].text, L"Set1");
    EXPECT_EQ(rec.log[1].code, NOTIFY_NAMED_SEL_SET_CREATED);
    EXPECT_EQ(rec.log[2].code, NOTIFY_NAMED_SEL_SET_RENAMED);
    EXPECT_EQ(rec.log[2].text, L"Set2>Renamed");
    EXPECT_EQ(rec.log[3].code, NOTIFY_NAMED_SEL_SET_DELETED);
    EXPECT_EQ(rec.log[3].text, L"Set1");
}

TEST_F(SceneNamedSets, DeletedNodesLeaveTheirSetsAndSetsSurviveSaveOpen) {
    Interface* ip = GetCOREInterface();
    INode* a = makeNode(L"a");
    INode* b = makeNode(L"b");
    INode* c = makeNode(L"c");
    INodeTab abc{a, b, c}, cb{c, b};
    ip->AddNewNamedSelSet(abc, L"All");
    ip->AddNewNamedSelSet(cb, L"CB");
    ip->DeleteNode(b);
    ASSERT_EQ(ip->GetNamedSelSetItemCount(0), 2);
    EXPECT_EQ(ip->GetNamedSelSetItem(0, 1), c);
    ASSERT_EQ(ip->GetNamedSelSetItemCount(1), 1);
    EXPECT_EQ(ip->GetNamedSelSetItem(1, 0), c);

    reopen("sets");
    ASSERT_EQ(ip->GetNumNamedSelSets(), 2);
    EXPECT_EQ(ip->GetNamedSelSetName(1), L"CB");
    ASSERT_EQ(ip->GetNamedSelSetItemCount(0), 2);
    EXPECT_EQ(ip->GetNamedSelSetItem(0, 0), ip->GetINodeByName(L"a"));
    EXPECT_EQ(ip->GetNamedSelSetItem(0, 1), ip->GetINodeByName(L"c"));
}

TEST_F(SceneEffectLists, NodeListsByCodeFollowDeletionAndSaveOpen) {
    Interface* ip = GetCOREInterface();
    NodeListEffect* three = NewNodeListEffect(SCENE_EFFECT_THREE_LISTS_CLASS_ID);
    NodeListEffect* one = NewNodeListEffect(SCENE_EFFECT_ONE_LIST_B_CLASS_ID);
    EXPECT_EQ(NewNodeListEffect(Class_ID(1, 2)), nullptr);
    ASSERT_EQ(ip->AddSceneEffect(three), 0);
    ASSERT_EQ(ip->AddSceneEffect(one), 1);
    EXPECT_EQ(ip->AddSceneEffect(three), 0);

    ReferenceTarget* first = ip->GetSceneEffect(0);
    auto* lists = dynamic_cast<INodeListEffect*>(first->GetInterface(SCENE_EFFECT_NODE_LISTS_INTERFACE));
    ASSERT_NE(lists, nullptr);
    EXPECT_EQ(lists->NumNodeLists(), 3);
    INode* a = makeNode(L"a");
    INode* b = makeNode(L"b");
    EXPECT_TRUE(lists->AddNode(a, 1));
    EXPECT_TRUE(lists->AddNode(b, 5));
    EXPECT_TRUE(lists->AddNode(a, 9));
    EXPECT_TRUE(lists->AddNode(b, 9));
    EXPECT_TRUE(lists->AddNode(a, 9));  // listed already
    EXPECT_FALSE(lists->AddNode(a, 2));
    EXPECT_FALSE(lists->AddNode(a, 13));
    EXPECT_FALSE(one->AddNode(a, 5));
    EXPECT_TRUE(one->AddNode(b, 1));
    EXPECT_EQ(lists->NumNodes(INodeListEffect::ListCode(2)), 2);
    EXPECT_EQ(lists->GetNode(9, 1), b);

    // A deleted node leaves an empty entry until it is removed.
    ip->DeleteNode(a);
    ASSERT_EQ(lists->NumNodes(9), 2);
    EXPECT_EQ(lists->GetNode(9, 0), nullptr);
    EXPECT_EQ(lists->GetNode(1, 0), nullptr);
    EXPECT_TRUE(lists->RemoveNode(9, 0));
    EXPECT_EQ(lists->GetNode(9, 0), b);

    reopen("effects");
    ASSERT_EQ(ip->NumSceneEffects(), 2);
    ReferenceTarget* e0 = ip->GetSceneEffect(0);
    EXPECT_EQ(e0->ClassID(), SCENE_EFFECT_THREE_LISTS_CLASS_ID);
    EXPECT_EQ(ip->GetSceneEffect(1)->ClassID(), SCENE_EFFECT_ONE_LIST_B_CLASS_ID);
    auto* l2 = dynamic_cast<INodeListEffect*>(e0->GetInterface(SCENE_EFFECT_NODE_LISTS_INTERFACE));
    ASSERT_NE(l2, nullptr);
    INode* b2 = ip->GetINodeByName(L"b");
    EXPECT_EQ(l2->NumNodes(1), 1);
    EXPECT_EQ(l2->GetNode(5, 0), b2);
    EXPECT_EQ(l2->GetNode(9, 0), b2);
    EXPECT_TRUE(ip->DeleteSceneEffect(1));
    EXPECT_EQ(ip->NumSceneEffects(), 1);
}

}  // namespace
