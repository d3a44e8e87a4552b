// Materials and texture maps, the scene material library and the material editor slots: names and their
// messages, parameter blocks and map slots, the multi/sub-object tables, list changes, save/open and clone.
#include "hold.h"
#include "imtl.h"
#include "inode.h"
#include "istdplug.h"
#include "object.h"
#include "plugapi.h"
#include "maxapi.h"
#include "scene/materials/material_classes.h"
#include "scene/materials/multi_material.h"
#include "scene/materials/std_material.h"
#include "scene/materials/texmaps.h"
#include "scene/scene.h"
#include "test_objects.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

using namespace hostrt;
using testobj::Item;

namespace {

int heard(const Item* watcher, RefMessage message) {
    return int(std::count_if(watcher->heard.begin(), watcher->heard.end(),
                             [&](const Item::Heard& h) { return h.message == message; }));
}

// A dependent of target, as a node or the plug-in's records would be.
Item* watch(ReferenceTarget* target) {
    auto* w = new Item("watcher", 1);
    w->ReplaceReference(0, target);
    return w;
}

std::filesystem::path tempScene(const char* name) {
    return std::filesystem::temp_directory_path() / (std::string("scene_materials_") + name + ".scene");
}

struct SceneMaterials : ::testing::Test {
    void SetUp() override {
        RegisterMaterialClasses();
        Scene::Instance().ResetScene();
    }
    void TearDown() override {
        while (theHold.GetBeginDepth() > 0) theHold.Cancel();
        Scene::Instance().ResetScene();
    }
};

TEST_F(SceneMaterials, RenameSends247AndIsUndoable) {
    Mtl* m = NewDefaultStdMat();
    Item* w = watch(m);
    theHold.Begin();
    m->SetName(L"Brick");
    theHold.Accept(L"Rename");
    m->SetName(L"Brick");  // no change, no message
    EXPECT_EQ(m->GetName(), L"Brick");
    ASSERT_EQ(heard(w, REFMSG_NODE_NAMECHANGE), 1);
    EXPECT_EQ(w->heard.back().from, m);

    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(m->GetName(), L"");
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(m->GetName(), L"Brick");
    EXPECT_EQ(heard(w, REFMSG_NODE_NAMECHANGE), 3);
    w->DeleteMe();
}

TEST_F(SceneMaterials, StandardMaterialBlockAndMapSlots) {
    auto* m = static_cast<StdMaterial*>(NewDefaultStdMat());
    Item* w = watch(m);
    EXPECT_EQ(m->ClassID(), DMTL_CLASS_ID);
    EXPECT_FLOAT_EQ(m->GetOpacity(), 100.0f);
    IParamBlock2* pb = m->ParamBlock();
    Control* diffuse = pb->GetController(StdMaterial::kDiffuse);
    ASSERT_NE(diffuse, nullptr);
    EXPECT_EQ(diffuse->SuperClassID(), SClass_ID(CTRL_POINT3_CLASS_ID));
    ASSERT_NE(pb->GetController(StdMaterial::kOpacity), nullptr);

    // Values go through the controllers.
    m->SetDiffuse(Color(1.0f, 0.5f, 0.0f));
    m->SetOpacity(40.0f);
    Point3 p;
    Interval iv = FOREVER;
    diffuse->GetValue(0, &p, iv);
    EXPECT_EQ(p, Point3(1.0f, 0.5f, 0.0f));
    EXPECT_FLOAT_EQ(m->GetOpacity(), 40.0f);

    // A map slot: a reference and a sub-anim; setting it sends 258 and undoes.
    auto* checker = new CheckerTexmap();
    theHold.Begin();
    m->SetSubTexmap(StdMaterial::kDiffuseMap, checker);
    theHold.Accept(L"Map");
    EXPECT_EQ(m->GetSubTexmap(StdMaterial::kDiffuseMap), checker);
    EXPECT_EQ(m->SubAnim(1), checker);
    EXPECT_EQ(m->SubAnimName(1), L"Diffuse Color");
    EXPECT_EQ(heard(w, REFMSG_SUBANIM_STRUCTURE_CHANGED), 1);
    auto* keep = watch(checker);  // keeps the map alive through the undo
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(m->GetSubTexmap(StdMaterial::kDiffuseMap), nullptr);

    // Maps cannot contain themselves, directly or through a sub-map.
    auto* other = new CheckerTexmap();
    checker->SetSubTexmap(0, other);
    other->SetSubTexmap(0, checker);
    checker->SetSubTexmap(0, checker);
    EXPECT_EQ(checker->GetSubTexmap(0), other);
    EXPECT_EQ(other->GetSubTexmap(0), nullptr);
    keep->DeleteMe();
    w->DeleteMe();
}

TEST_F(SceneMaterials, MultiMaterialTablesStayInStepAndCountChangesSend258) {
    auto* multi = new MultiMaterial();
    Item* w = watch(multi);
    ASSERT_EQ(multi->NumSubMtls(), MultiMaterial::kDefaultCount);
    EXPECT_EQ(multi->GetSubMtl(0)->ClassID(), DMTL_CLASS_ID);
    EXPECT_EQ(multi->GetSubMtl(0)->GetName(), L"Material #1");
    IParamBlock2* pb = multi->ParamBlock();
    auto counts = [&] {
        return std::vector<int>{pb->Count(MultiMaterial::kMaterials), pb->Count(MultiMaterial::kEnabled),
                                pb->Count(MultiMaterial::kNames), pb->Count(MultiMaterial::kIds)};
    };

    multi->SetNumSubMtls(3);
    EXPECT_EQ(counts(), std::vector<int>(4, 3));
    EXPECT_EQ(heard(w, REFMSG_SUBANIM_STRUCTURE_CHANGED), 1);

    // Resizing the material table directly, as the plug-in does, keeps the others in step.
    theHold.Begin();
    pb->SetCount(MultiMaterial::kMaterials, 5);
    theHold.Accept(L"Resize");
    EXPECT_EQ(counts(), std::vector<int>(4, 5));
    EXPECT_EQ(multi->GetSubMtlID(4), 5);
    EXPECT_TRUE(multi->GetSubMtlEnabled(4));
    EXPECT_EQ(multi->GetSubMtl(4), nullptr);
    int tab = 0;
    EXPECT_EQ(pb->LastNotifyParamID(tab), MultiMaterial::kMaterials);
    EXPECT_EQ(heard(w, REFMSG_SUBANIM_STRUCTURE_CHANGED), 2);
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(counts(), std::vector<int>(4, 3));
    EXPECT_EQ(heard(w, REFMSG_SUBANIM_STRUCTURE_CHANGED), 3);

    Mtl* first = multi->GetSubMtl(0);
    multi->SetSubMtl(0, multi);
    EXPECT_EQ(multi->GetSubMtl(0), first);
    multi->SetSubMtlName(1, L"Glass");
    EXPECT_EQ(multi->SubAnimName(1), L"Glass");
    EXPECT_EQ(multi->SubAnimName(0), L"Material #1");
    w->DeleteMe();
}

TEST_F(SceneMaterials, LibraryListChangesSend258) {
    MtlBaseLib* lib = GetCOREInterface()->GetSceneMtls();
    ASSERT_EQ(lib->Count(), 0);
    Item* w = watch(lib);
    Mtl* a = NewDefaultStdMat();
    Mtl* b = NewDefaultStdMat();
    Mtl* c = NewDefaultStdMat();
    a->SetName(L"A");
    b->SetName(L"B");
    Item* keepC = watch(c);

    EXPECT_EQ(lib->Add(a), 0);
    EXPECT_EQ(lib->Add(b), 1);
    EXPECT_EQ(lib->Add(a), 0);  // listed already: nothing changes
    EXPECT_EQ(heard(w, REFMSG_SUBANIM_STRUCTURE_CHANGED), 2);
    EXPECT_EQ(lib->FindMtlByName(L"B"), 1);
    EXPECT_EQ(lib->FindMtl(c), -1);

    EXPECT_EQ(lib->Replace(a, c), 1);
    EXPECT_EQ((*lib)[0], c);
    EXPECT_EQ(lib->Replace(c, b), 1);  // b is listed: the entry goes instead of repeating b
    ASSERT_EQ(lib->Count(), 1);
    EXPECT_EQ((*lib)[0], b);
    EXPECT_EQ(heard(w, REFMSG_SUBANIM_STRUCTURE_CHANGED), 4);

    // A material deleted outright leaves the list.
    lib->Add(c);
    c->DeleteMe();
    EXPECT_EQ(lib->Count(), 1);
    EXPECT_EQ(heard(w, REFMSG_SUBANIM_STRUCTURE_CHANGED), 6);
    EXPECT_EQ(lib->Remove(b), 1);
    EXPECT_EQ(lib->Remove(b), 0);
    EXPECT_EQ(heard(w, REFMSG_SUBANIM_STRUCTURE_CHANGED), 7);
    keepC->DeleteMe();
    w->DeleteMe();
}

TEST_F(SceneMaterials, EditorSlotsStartWithDefaultsAndHoldWhatIsPut) {
    Interface* ip = GetCOREInterface();
    EXPECT_EQ(ip->GetMtlSlot(0)->GetName(), L"01 - Default");
    EXPECT_EQ(ip->GetMtlSlot(23)->GetName(), L"24 - Default");
    EXPECT_NE(ip->GetMtlSlot(0), ip->GetMtlSlot(1));
    EXPECT_EQ(ip->GetMtlSlot(24), nullptr);
    EXPECT_EQ(ip->GetMtlSlot(-1), nullptr);

    auto* map = new BitmapTexmap();
    ip->PutMtlToMtlEditor(map, 5);
    ip->PutMtlToMtlEditor(nullptr, 6);
    EXPECT_EQ(ip->GetMtlSlot(5), map);
    EXPECT_EQ(ip->GetMtlSlot(6)->GetName(), L"07 - Default");
    Scene::Instance().ResetScene();
    EXPECT_EQ(ip->GetMtlSlot(5)->GetName(), L"06 - Default");
}

TEST_F(SceneMaterials, SaveAndOpenKeepMaterialsMapsAndSharing) {
    auto* brick = static_cast<StdMaterial*>(NewDefaultStdMat());
    brick->SetName(L"Brick");
    brick->SetDiffuse(Color(0.5f, 0.25f, 0.125f));
    brick->SetOpacity(40.0f);
    brick->SetGBufID(7);
    brick->SetMtlFlag(MTL_HW_MAT_ENABLED);
    auto* checker = new CheckerTexmap();
    auto* bitmap = new BitmapTexmap();
    bitmap->SetMapName(L"maps/bricks.png");
    checker->SetSubTexmap(0, bitmap);
    brick->SetSubTexmap(StdMaterial::kBumpMap, checker);
    auto* multi = new MultiMaterial();
    multi->SetName(L"Multi");
    multi->SetNumSubMtls(3);
    multi->SetSubMtl(1, brick);
    multi->SetSubMtlName(2, L"Glass");
    Interface* ip = GetCOREInterface();
    ip->GetSceneMtls()->Add(brick);
    ip->GetSceneMtls()->Add(multi);
    ip->PutMtlToMtlEditor(multi, 2);

    const auto path = tempScene("roundtrip");
    Scene::Instance().SaveScene(MSTR(path.wstring()));
    Scene::Instance().ResetScene();
    ASSERT_EQ(ip->GetSceneMtls()->Count(), 0);
    Scene::Instance().OpenScene(MSTR(path.wstring()));
    std::filesystem::remove(path);

    MtlBaseLib* lib = ip->GetSceneMtls();
    ASSERT_EQ(lib->Count(), 2);
    auto* brick2 = dynamic_cast<StdMaterial*>((*lib)[0]);
    auto* multi2 = dynamic_cast<MultiMaterial*>((*lib)[1]);
    ASSERT_TRUE(brick2 && multi2);
    EXPECT_NE(brick2, brick);
    EXPECT_EQ(brick2->GetName(), L"Brick");
    EXPECT_EQ(brick2->GetDiffuse(), Color(0.5f, 0.25f, 0.125f));
    EXPECT_FLOAT_EQ(brick2->GetOpacity(), 40.0f);
    EXPECT_EQ(brick2->GetGBufID(), 7u);
    EXPECT_TRUE(brick2->TestMtlFlag(MTL_HW_MAT_ENABLED));
    EXPECT_NE(brick2->ParamBlock()->GetController(StdMaterial::kDiffuse), nullptr);
    auto* checker2 = dynamic_cast<CheckerTexmap*>(brick2->GetSubTexmap(StdMaterial::kBumpMap));
    ASSERT_NE(checker2, nullptr);
    auto* bitmap2 = dynamic_cast<BitmapTexmap*>(checker2->GetSubTexmap(0));
    ASSERT_NE(bitmap2, nullptr);
    EXPECT_EQ(bitmap2->GetMapName(), L"maps/bricks.png");

    ASSERT_EQ(multi2->NumSubMtls(), 3);
    EXPECT_EQ(multi2->GetSubMtl(1), brick2);  // shared, not copied
    EXPECT_EQ(multi2->GetSubMtlSlotName(2), L"Glass");
    EXPECT_EQ(multi2->ParamBlock()->Count(MultiMaterial::kIds), 3);
    EXPECT_EQ(ip->GetMtlSlot(2), multi2);
    EXPECT_EQ(ip->GetMtlSlot(0)->GetName(), L"01 - Default");
}

// A scene file lists the materials its nodes (or the editor) use: one only listed in the library stays in memory
// but is not written, so a scene whose nodes left the written scene takes none of their materials along.
TEST_F(SceneMaterials, TheFileListsOnlyTheMaterialsItsContentUses) {
    Interface* ip = GetCOREInterface();
    Mtl* used = NewDefaultStdMat();
    used->SetName(L"Used");
    Mtl* listed = NewDefaultStdMat();
    listed->SetName(L"OnlyListed");
    INode* node = ip->CreateObjectNode(static_cast<Object*>(CreateInstance(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID)));
    node->SetMtl(used);
    ip->GetSceneMtls()->Add(listed);
    ASSERT_EQ(ip->GetSceneMtls()->Count(), 2);

    const auto path = tempScene("listed");
    Scene::Instance().SaveScene(MSTR(path.wstring()));
    EXPECT_EQ(ip->GetSceneMtls()->Count(), 2);  // the library in memory is as it was
    EXPECT_GE(ip->GetSceneMtls()->FindMtl(listed), 0);
    Scene::Instance().ResetScene();
    Scene::Instance().OpenScene(MSTR(path.wstring()));
    std::filesystem::remove(path);
    MtlBaseLib* lib = ip->GetSceneMtls();
    ASSERT_EQ(lib->Count(), 1);
    EXPECT_EQ((*lib)[0]->GetName(), L"Used");
}

TEST_F(SceneMaterials, CloneCopiesTheTreeOnceEach) {
    auto* multi = new MultiMaterial();
    multi->SetNumSubMtls(2);
    auto* shared = static_cast<StdMaterial*>(NewDefaultStdMat());
    shared->SetName(L"Shared");
    shared->SetDiffuse(Color(0.0f, 1.0f, 0.0f));
    multi->SetSubMtl(0, shared);
    multi->SetSubMtl(1, shared);
    multi->SetName(L"Multi");
    Item* w = watch(multi);

    auto* copy = dynamic_cast<MultiMaterial*>(CloneRefHierarchy(multi));
    ASSERT_NE(copy, nullptr);
    Item* wc = watch(copy);
    EXPECT_EQ(copy->GetName(), L"Multi");
    ASSERT_EQ(copy->NumSubMtls(), 2);
    auto* sub = dynamic_cast<StdMaterial*>(copy->GetSubMtl(0));
    ASSERT_NE(sub, nullptr);
    EXPECT_NE(sub, shared);
    EXPECT_EQ(copy->GetSubMtl(1), sub);
    EXPECT_EQ(sub->GetName(), L"Shared");
    EXPECT_EQ(sub->GetDiffuse(), Color(0.0f, 1.0f, 0.0f));
    sub->SetDiffuse(Color(1.0f, 0.0f, 0.0f));
    EXPECT_EQ(shared->GetDiffuse(), Color(0.0f, 1.0f, 0.0f));
    wc->DeleteMe();
    w->DeleteMe();
}

}  // namespace
