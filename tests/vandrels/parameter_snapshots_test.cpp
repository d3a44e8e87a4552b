// Local parameter edits on referenced objects and modifiers: values typed into a box, a sphere, a bend, a light
// and a camera come back after save and reopen and after a reload, values changed only in the reference file
// follow the file, undo takes a snapshot back, and the snapshots and resized tables survive the record's own
// save and load. Parameters that a controller drives are kept by the controller's record; the others by the
// parameter block's record as snapshots.
#include "anims/pblock2_param.h"
#include "anims/ref_anim_pblock2.h"
#include "helper/vandrels_helper.h"
#include "records/ref_node.h"

#include "../host/scene_compare.h"
#include "io/chunk_reader.h"
#include "io/chunk_writer.h"
#include "istdplug.h"
#include "inode.h"
#include "iparamb2.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "object.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using vtest::Quoted;
using vtest::Script;

std::vector<std::string> Differences(const hostrt::test::SceneSnapshot& a, const hostrt::test::SceneSnapshot& b) {
    hostrt::test::CompareOptions options;
    options.byName = true;
    return hostrt::test::CompareSnapshots(a, b, options);
}

float Float(const std::wstring& expression) {
    const FPValue value = Script(expression);
    return value.type == TYPE_FLOAT ? value.f : value.type == TYPE_INT ? float(value.i) : -1.f;
}

// The reference file's content: a box with a bend, a sphere, an omni light and a free camera.
std::wstring ReferenceContent(const std::wstring& extra) {
    return L"b = box name:\"Crate\"; addModifier b (bend()); sphere name:\"Ball\"; omniLight name:\"Lamp\"; "
           L"freeCamera name:\"Cam\"; " + extra;
}

class ParameterSnapshots : public vtest::SceneTest {
protected:
    ParameterSnapshots() : SceneTest("vandrels_param_snapshots") {}

    void SetUp() override {
        SceneTest::SetUp();
        reference_ = vtest::TempSceneFile("vandrels_param_snapshots_ref");
        Script(L"Vandrels.PrintTimes false");
        WriteReference(L"");
        Script(L"Vandrels.AddVandrel " + Quoted(reference_));
        theHold.FlushUndoBuffer();
    }
    void TearDown() override {
        SceneTest::TearDown();
        std::filesystem::remove(reference_.ToUTF8());
    }
    // Writes the reference file from an empty scene and leaves an empty scene.
    void WriteReference(const std::wstring& extra) {
        GetCOREInterface()->FileReset(TRUE);
        Script(ReferenceContent(extra) + L"; saveMaxFile " + Quoted(reference_));
        GetCOREInterface()->FileReset(TRUE);
    }
    void Save() { ASSERT_NE(GetCOREInterface()->SaveToFile(file_.data()), 0); }
    void Open() {
        GetCOREInterface()->FileReset(TRUE);
        ASSERT_NE(GetCOREInterface()->LoadFromFile(file_.data()), 0);
    }
    // The user's edits, one of each kind of parameter on each kind of referenced thing.
    static void EditLocally() {
        Script(L"$Crate.length = 50; $Crate.modifiers[1].angle = 30; $Crate.modifiers[1].axis = 0; "
               L"$Ball.radius = 7; $Ball.segs = 9; "
               L"$Lamp.multiplier = 2.5; $Lamp.color = color 255 0 0; $Lamp.on = false; $Cam.fov = 60");
    }
    static void ExpectLocalValues() {
        EXPECT_FLOAT_EQ(Float(L"$Crate.length"), 50.f);
        EXPECT_FLOAT_EQ(Float(L"$Crate.modifiers[1].angle"), 30.f);
        EXPECT_FLOAT_EQ(Float(L"$Crate.modifiers[1].axis"), 0.f);
        EXPECT_FLOAT_EQ(Float(L"$Ball.radius"), 7.f);
        EXPECT_FLOAT_EQ(Float(L"$Ball.segs"), 9.f);
        EXPECT_FLOAT_EQ(Float(L"$Lamp.multiplier"), 2.5f);
        EXPECT_FLOAT_EQ(Float(L"$Lamp.color.r"), 255.f);
        EXPECT_FLOAT_EQ(Float(L"$Lamp.color.g"), 0.f);
        EXPECT_EQ(Script(L"$Lamp.on").i, 0);
        EXPECT_FLOAT_EQ(Float(L"$Cam.fov"), 60.f);
    }
    // The parameter-block record of a referenced node's block (its object's block, or its first modifier's).
    RefAnimPblock2* BlockRecord(const MCHAR* nodeName, bool modifier = false) {
        INode* node = vtest::Node(nodeName);
        if (!node) return nullptr;
        Object* object = node->GetObjectRef();
        ReferenceTarget* owner = object;
        if (auto* derived = dynamic_cast<IDerivedObject*>(object))
            owner = modifier ? static_cast<ReferenceTarget*>(derived->GetModifier(0)) : derived->GetObjRef();
        ReferenceTarget* block = owner ? owner->GetReference(0) : nullptr;
        DependentIterator it(block);
        while (ReferenceMaker* dep = it.Next())
            if (auto* record = dynamic_cast<RefAnimPblock2*>(dep)) return record;
        return nullptr;
    }

    MSTR reference_;
};

TEST_F(ParameterSnapshots, LocalEditsComeBackAfterSaveAndReopenAndAfterReload) {
    EditLocally();
    // Integer parameters without controllers are kept as snapshots by their block's record.
    RefAnimPblock2* ball = BlockRecord(L"Ball");
    ASSERT_NE(ball, nullptr);
    ASSERT_EQ(ball->GetOverriddenParams().Count(), 1);
    EXPECT_EQ(ball->GetOverriddenParams()[0]->name, MSTR(L"segs"));
    EXPECT_TRUE(ball->IsModified());
    const auto before = hostrt::test::TakeSnapshot();

    Save();
    Open();
    ExpectLocalValues();
    EXPECT_TRUE(Differences(before, hostrt::test::TakeSnapshot()).empty())
        << hostrt::test::JoinDifferences(Differences(before, hostrt::test::TakeSnapshot()));
    ball = BlockRecord(L"Ball");
    ASSERT_NE(ball, nullptr);
    EXPECT_EQ(ball->GetOverriddenParams().Count(), 1) << "the snapshot was saved and follows the merged block";

    Script(L"Vandrels.ReloadVandrels #()");
    ExpectLocalValues();
    EXPECT_TRUE(Differences(before, hostrt::test::TakeSnapshot()).empty());

    // Unloading and loading again merges the file afresh: the light's and the camera's values come back too.
    Script(L"h = Vandrels.GetVandrel 1; h.baseObject.Unload()");
    EXPECT_EQ(vtest::Node(L"Lamp"), nullptr);
    EXPECT_EQ(vtest::Node(L"Cam"), nullptr);
    Script(L"h.baseObject.Reload()");
    ExpectLocalValues();
    EXPECT_TRUE(Differences(before, hostrt::test::TakeSnapshot()).empty())
        << hostrt::test::JoinDifferences(Differences(before, hostrt::test::TakeSnapshot()));

    // A second round keeps everything: the re-applied values are no new edits.
    Save();
    Open();
    ExpectLocalValues();
    EXPECT_TRUE(Differences(before, hostrt::test::TakeSnapshot()).empty());
}

TEST_F(ParameterSnapshots, ValuesChangedOnlyInTheReferenceFileFollowTheFile) {
    Script(L"$Ball.segs = 9; $Ball.radius = 7; $Crate.lengthsegs = 3; $Lamp.multiplier = 0.5; $Cam.fov = 70");
    Save();
    // The file changes segs, radius, the light's multiplier and the camera's field of view (also changed
    // locally) and heightsegs, width, the light's colour and on switch and the camera's target distance (not
    // changed locally).
    WriteReference(L"$Ball.segs = 20; $Ball.radius = 12; $Crate.heightsegs = 4; $Crate.width = 40; $Lamp.on = false; "
                   L"$Lamp.multiplier = 3; $Lamp.color = color 0 0 255; $Cam.fov = 20; $Cam.targetDistance = 90");
    ASSERT_NE(GetCOREInterface()->LoadFromFile(file_.data()), 0);
    const auto expectMixed = [] {
        EXPECT_FLOAT_EQ(Float(L"$Ball.segs"), 9.f);
        EXPECT_FLOAT_EQ(Float(L"$Ball.radius"), 7.f);
        EXPECT_FLOAT_EQ(Float(L"$Crate.lengthsegs"), 3.f);
        EXPECT_FLOAT_EQ(Float(L"$Crate.heightsegs"), 4.f);
        EXPECT_FLOAT_EQ(Float(L"$Crate.width"), 40.f);
        EXPECT_EQ(Script(L"$Lamp.on").i, 0);
        EXPECT_FLOAT_EQ(Float(L"$Lamp.multiplier"), 0.5f);
        EXPECT_FLOAT_EQ(Float(L"$Lamp.color.b"), 255.f);
        EXPECT_FLOAT_EQ(Float(L"$Lamp.color.r"), 0.f);
        EXPECT_FLOAT_EQ(Float(L"$Cam.fov"), 70.f);
        EXPECT_FLOAT_EQ(Float(L"$Cam.targetDistance"), 90.f);
    };
    expectMixed();
    // A reload of the changed file gives the same mix.
    Script(L"Vandrels.ReloadVandrels #()");
    expectMixed();
}

// A node put into a referenced block's node table (a skin's bones) is kept as a record of its own at the
// table entry's path and goes into the merged block again; a resize of that table in a block of mode 0 is no
// snapshot of the block's record, which only follows the new size.
TEST_F(ParameterSnapshots, ANodeHeldInAReferencedBlocksTableComesBack) {
    GetCOREInterface()->FileReset(TRUE);
    Script(ReferenceContent(L"s = box name:\"Skinned\"; addModifier s (skin()); box name:\"Bone1\""));
    {
        auto* derived = dynamic_cast<IDerivedObject*>(vtest::Node(L"Skinned")->GetObjectRef());
        ASSERT_NE(derived, nullptr);
        auto* bones = static_cast<IParamBlock2*>(derived->GetModifier(0)->GetReference(0));
        INode* bone = vtest::Node(L"Bone1");
        bones->Append(skin_bones, 1, &bone);
    }
    Script(L"saveMaxFile " + Quoted(reference_));
    GetCOREInterface()->FileReset(TRUE);
    Script(L"Vandrels.AddVandrel " + Quoted(reference_));
    theHold.FlushUndoBuffer();
    RefAnimPblock2* skin = BlockRecord(L"Skinned", true);
    ASSERT_NE(skin, nullptr);
    EXPECT_EQ(skin->GetTabResizeOverride(), 0);
    auto* block = static_cast<IParamBlock2*>(skin->GetAnim());
    ASSERT_EQ(block->Count(skin_bones), 1);
    ASSERT_EQ(block->GetINode(skin_bones, 0, 0), vtest::Node(L"Bone1"));

    // The entry is swapped for a local node: the record is Modified and a record at
    // "...bones/TabItem 0" holds the local node.
    Script(L"box name:\"LocalBone\"");
    INode* localBone = vtest::Node(L"LocalBone");
    block->SetValue(skin_bones, 0, localBone, 0);
    EXPECT_TRUE(skin->IsModified());
    RefNode* owner = dynamic_cast<RefNode*>(skin->GetOwner());
    ASSERT_NE(owner, nullptr);
    RefAnim* entry = nullptr;
    for (int i = 0; i < owner->NumRefAnims(); ++i)
        if (RefAnim* record = owner->GetRefAnim(i); record && record->GetAnim() == localBone) entry = record;
    ASSERT_NE(entry, nullptr);
    const Tab<WStr*> path = entry->GetPath();
    ASSERT_GE(path.Count(), 2);
    EXPECT_EQ(*path[path.Count() - 2], WStr(L"bones"));
    EXPECT_EQ(*path[path.Count() - 1], WStr(L"TabItem"));
    EXPECT_EQ(entry->GetPathByNumber()[path.Count() - 1], 0);
    EXPECT_TRUE(entry->TestOverrideBits(kOverrideReplaced));

    // Growing the table in mode 0 leaves the record's snapshots alone; the new size is the new baseline, so
    // swapping the added entry is told from a resize.
    block->Append(skin_bones, 1, &localBone);
    EXPECT_EQ(skin->GetOverriddenTabs().Count(), 0);
    EXPECT_EQ(skin->GetOverriddenParams().Count(), 0);

    Save();
    Open();
    block = static_cast<IParamBlock2*>(BlockRecord(L"Skinned", true)->GetAnim());
    ASSERT_GE(block->Count(skin_bones), 1);
    EXPECT_EQ(block->GetINode(skin_bones, 0, 0), vtest::Node(L"LocalBone")) << "the local node went into the merged block";
    Script(L"Vandrels.ReloadVandrels #()");
    block = static_cast<IParamBlock2*>(BlockRecord(L"Skinned", true)->GetAnim());
    EXPECT_EQ(block->GetINode(skin_bones, 0, 0), vtest::Node(L"LocalBone"));
}

TEST_F(ParameterSnapshots, UndoOfAnEditRemovesItsSnapshotAndRedoBringsItBack) {
    RefAnimPblock2* ball = BlockRecord(L"Ball");
    ASSERT_NE(ball, nullptr);
    auto* block = static_cast<IParamBlock2*>(ball->GetAnim());
    const ParamID segs = ParamID(block->IndextoID(1));
    ASSERT_EQ(block->GetParamDef(segs).int_name, MSTR(L"segs"));

    theHold.Begin();
    block->SetValue(segs, 0, 9);
    theHold.Accept(L"Segments");
    theHold.Begin();
    block->SetValue(segs, 0, 11);
    theHold.Accept(L"Segments");
    // Two edits of one parameter: one snapshot with the latest value.
    ASSERT_EQ(ball->GetOverriddenParams().Count(), 1);
    Pblock2Param* taken = ball->GetOverriddenParams()[0];
    EXPECT_EQ(static_cast<IntParam*>(taken)->value, 11);

    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(ball->GetOverriddenParams().Count(), 1);
    EXPECT_EQ(static_cast<IntParam*>(taken)->value, 9) << "undoing the value re-captures it";
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(ball->GetOverriddenParams().Count(), 0);
    EXPECT_FALSE(ball->IsModified());
    ASSERT_TRUE(theHold.Redo());
    ASSERT_EQ(ball->GetOverriddenParams().Count(), 1);
    EXPECT_EQ(ball->GetOverriddenParams()[0], taken) << "redo brings the same snapshot back";
    EXPECT_TRUE(ball->IsModified());

    // An undone edit is gone after save and reopen too.
    ASSERT_TRUE(theHold.Undo());
    Save();
    Open();
    EXPECT_FLOAT_EQ(Float(L"$Ball.segs"), 32.f);
}

// A light's include/exclude list edited locally goes into the merged light; its parameters still follow the file.
TEST_F(ParameterSnapshots, ALightsExclusionListEditedLocallySurvivesReopen) {
    Script(L"box name:\"Local\"");
    INode* local = vtest::Node(L"Local");
    auto* light = static_cast<LightObject*>(vtest::Node(L"Lamp")->GetObjectRef());
    ASSERT_NE(light->GetExclList(), nullptr);
    light->GetExclList()->AddNode(local);
    Save();
    WriteReference(L"$Lamp.on = false");
    ASSERT_NE(GetCOREInterface()->LoadFromFile(file_.data()), 0);

    light = static_cast<LightObject*>(vtest::Node(L"Lamp")->GetObjectRef());
    ExclList* list = light->GetExclList();
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->Count(), 1);
    EXPECT_EQ((*list)[0], vtest::Node(L"Local"));
    EXPECT_EQ(Script(L"$Lamp.on").i, 0) << "the file's change of a parameter comes through";
}

// A block of the test's own with a resizable table and values of several kinds.
struct TableBlock {
    enum : ParamID { kCounts = 3, kLabel = 5, kTint = 7, kTm = 9, kOffset = 11 };
    ParamBlockDesc2 desc{0, L"Table", 0, nullptr, 0};
    TableBlock() {
        desc.AddParam(kCounts, L"counts", TYPE_INT_TAB, P_VARIABLE_SIZE, 0).Default(1).TableSize(2);
        desc.AddParam(kLabel, L"label", TYPE_STRING, 0, 0).Default(L"");
        desc.AddParam(kTint, L"tint", TYPE_FRGBA, 0, 0).Default(AColor(0.f, 0.f, 0.f, 1.f));
        desc.AddParam(kTm, L"frame", TYPE_MATRIX3, 0, 0);
        desc.AddParam(kOffset, L"offset", TYPE_POINT2, 0, 0);
    }
};

RefAnimPblock2* SavedAndLoaded(RefAnimPblock2* record) {
    hostrt::ChunkWriter w;
    EXPECT_EQ(record->Save(&w), IO_OK);
    const std::vector<std::uint8_t> bytes = w.Bytes();
    hostrt::ChunkReader r(bytes.data(), bytes.size());
    auto* loaded = new RefAnimPblock2();
    EXPECT_EQ(loaded->Load(&r), IO_OK);
    return loaded;
}

TEST_F(ParameterSnapshots, ATableResizedLocallyAndEveryValueKindSurviveTheRecordsSaveAndApply) {
    static TableBlock table;
    IParamBlock2* local = CreateParameterBlock2(&table.desc, nullptr);
    auto* record = new RefAnimPblock2();
    record->SetMode(1, false);
    record->ReplaceReference(0, local);

    local->SetCount(TableBlock::kCounts, 4);
    local->SetValue(TableBlock::kCounts, 0, 7, 3);
    local->SetValue(TableBlock::kLabel, 0, L"local \"label\"");
    local->SetValue(TableBlock::kTint, 0, AColor(0.5f, 0.25f, 0.f, 1.f));
    Matrix3 tm;
    tm.SetTrans(Point3(1.f, 2.f, 3.f));
    local->SetValue(TableBlock::kTm, 0, tm);
    local->SetValue(TableBlock::kOffset, 0, Point2(4.f, 5.f));
    ASSERT_EQ(record->GetOverriddenTabs().Count(), 1);
    EXPECT_EQ(static_cast<TabParam*>(record->GetOverriddenTabs()[0])->count, 4);
    EXPECT_EQ(record->GetOverriddenParams().Count(), 4 + 4) << "every table entry and the four plain values";

    RefAnimPblock2* loaded = SavedAndLoaded(record);
    EXPECT_EQ(loaded->GetType(), record->GetType()) << "the mode is saved";
    ASSERT_EQ(loaded->GetOverriddenParams().Count(), record->GetOverriddenParams().Count());
    ASSERT_EQ(loaded->GetOverriddenTabs().Count(), 1);

    // Applied to a fresh block the way an override does: the table grows before its entries are set.
    IParamBlock2* fresh = CreateParameterBlock2(&table.desc, nullptr);
    for (Pblock2Param* p : loaded->GetOverriddenTabs()) EXPECT_TRUE(p->Apply(fresh));
    for (Pblock2Param* p : loaded->GetOverriddenParams()) EXPECT_TRUE(p->Apply(fresh)) << p->name.ToUTF8();
    EXPECT_EQ(fresh->Count(TableBlock::kCounts), 4);
    EXPECT_EQ(fresh->GetInt(TableBlock::kCounts, 0, 3), 7);
    EXPECT_EQ(MSTR(fresh->GetStr(TableBlock::kLabel)), MSTR(L"local \"label\""));
    EXPECT_EQ(fresh->GetPoint4(TableBlock::kTint), Point4(0.5f, 0.25f, 0.f, 1.f));
    EXPECT_EQ(fresh->GetMatrix3(TableBlock::kTm), tm);
    EXPECT_EQ(fresh->GetPoint2(TableBlock::kOffset), Point2(4.f, 5.f));

    // A snapshot whose identifier no longer names its parameter is found by name; a renamed one is not found.
    Pblock2Param* byName = MakePblock2Param(kParamKindPoint2);
    byName->name = L"offset";
    byName->paramID = TableBlock::kTm;
    EXPECT_TRUE(byName->Apply(fresh));
    EXPECT_EQ(byName->paramID, TableBlock::kOffset);
    byName->name = L"shift";
    EXPECT_FALSE(byName->Apply(fresh));
    EXPECT_EQ(byName->paramID, -1);
    delete byName;

    loaded->DeleteMe();
    record->DeleteMe();
    local->DeleteMe();
    fresh->DeleteMe();
}

// The list layout byte for byte: count, then per snapshot its kind and its three chunks.
TEST(ParameterSnapshotChunks, AListSavesCountKindNameIdentifiersAndValue) {
    Tab<Pblock2Param*> list;
    auto* radius = new FloatParam(L"radius", 4, 0);
    radius->value = 7.5f;
    list.Append(radius);
    hostrt::ChunkWriter w;
    ASSERT_EQ(SaveParamList(&w, list), IO_OK);
    const std::vector<std::uint8_t> bytes = w.Bytes();

    hostrt::ChunkReader r(bytes.data(), bytes.size());
    std::vector<USHORT> ids;
    std::int32_t count = -1;
    std::int32_t kind = -1;
    ASSERT_EQ(r.OpenChunk(), IO_OK);
    ids.push_back(r.CurChunkID());
    ULONG n = 0;
    r.Read(&count, 4, &n);
    r.CloseChunk();
    ASSERT_EQ(r.OpenChunk(), IO_OK);
    ids.push_back(r.CurChunkID());
    r.Read(&kind, 4, &n);
    r.CloseChunk();
    ASSERT_EQ(r.OpenChunk(), IO_OK);
    ids.push_back(r.CurChunkID());
    std::vector<std::pair<USHORT, ULONG>> inner;
    while (r.OpenChunk() == IO_OK) {
        inner.emplace_back(r.CurChunkID(), r.CurChunkLength());
        r.CloseChunk();
    }
    r.CloseChunk();
    EXPECT_EQ(ids, (std::vector<USHORT>{0x0000, 0x0001, 0x0002}));
    EXPECT_EQ(count, 1);
    EXPECT_EQ(kind, kParamKindFloat);
    ASSERT_EQ(inner.size(), 3u);
    EXPECT_EQ(inner[0].first, 0x0000);
    EXPECT_EQ(inner[1], (std::pair<USHORT, ULONG>{0x0001, 8}));
    EXPECT_EQ(inner[2], (std::pair<USHORT, ULONG>{0x0002, 4}));

    hostrt::ChunkReader again(bytes.data(), bytes.size());
    Tab<Pblock2Param*> loaded;
    ASSERT_EQ(LoadParamList(&again, loaded), IO_OK);
    ASSERT_EQ(loaded.Count(), 1);
    EXPECT_EQ(loaded[0]->GetKind(), kParamKindFloat);
    EXPECT_EQ(loaded[0]->name, MSTR(L"radius"));
    EXPECT_EQ(loaded[0]->paramID, 4);
    EXPECT_EQ(static_cast<FloatParam*>(loaded[0])->value, 7.5f);
    DeleteParamList(loaded);
    DeleteParamList(list);
}

}  // namespace
