// The animatable record kinds with state of their own besides the parameter blocks and lights: a derived
// object's names and switches, a camera's kept properties, the items an animatable refers to, and which kinds a
// reset keeps as generic. Each kind's chunks are checked id by id and survive the record's own save and load.
#include "anims/ref_anim_family.h"

#include "frame/module_state.h"
#include "records/subanim_space.h"
#include "hold.h"
#include "inode.h"
#include "io/chunk_reader.h"
#include "io/chunk_writer.h"
#include "maxapi.h"
#include "object.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

using vtest::Script;

using ChunkList = std::vector<std::pair<USHORT, ULONG>>;

std::vector<std::uint8_t> Saved(RefAnim* record) {
    hostrt::ChunkWriter w;
    EXPECT_EQ(record->Save(&w), IO_OK);
    return w.Bytes();
}

// The top-level chunks of bytes: id and length.
ChunkList TopChunks(const std::vector<std::uint8_t>& bytes) {
    hostrt::ChunkReader r(bytes.data(), bytes.size());
    ChunkList chunks;
    while (r.OpenChunk() == IO_OK) {
        chunks.emplace_back(r.CurChunkID(), r.CurChunkLength());
        r.CloseChunk();
    }
    return chunks;
}

template <class T> T* Loaded(const std::vector<std::uint8_t>& bytes) {
    hostrt::ChunkReader r(bytes.data(), bytes.size());
    auto* loaded = new T();
    EXPECT_EQ(loaded->Load(&r), IO_OK);
    return loaded;
}

// A maker with two references and the sub-anim address space's custom-attribute entry only.
class TwoRefs : public ReferenceTarget {
public:
    Class_ID ClassID() override { return Class_ID(0x7E570021, 0); }
    void GetClassName(MSTR& s, bool) const override { s = L"TwoRefs"; }
    int NumRefs() override { return 2; }
    RefTargetHandle GetReference(int i) override { return refs_[i]; }
    void SetReference(int i, RefTargetHandle t) override { refs_[i] = t; }
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage, BOOL) override {
        return REF_SUCCEED;
    }

private:
    RefTargetHandle refs_[2] = {nullptr, nullptr};
};

class RecordKinds : public vtest::SceneTest {
protected:
    RecordKinds() : SceneTest("vandrels_record_kinds") {}
};

TEST_F(RecordKinds, ADerivedObjectsRenamesAndSwitchesAreKeptAndPutOnTheMergedStack) {
    Script(L"b = box name:\"Stack\"; addModifier b (bend()); addModifier b (taper())");
    INode* node = vtest::Node(L"Stack");
    auto* derived = dynamic_cast<IDerivedObject*>(node->GetObjectRef());
    ASSERT_TRUE(derived && derived->NumModifiers() == 2);
    auto* record = new RefAnimDerivObj();
    // The node's entry 2 of the sub-anim address space is its derived object ("Mods").
    MSTR mods;
    ASSERT_EQ(GetSubAnimByIndex(node, nullptr, 2, nullptr, mods), derived);
    record->SetPath(Tab<WStr*>{new WStr(mods)});
    record->SetPathByNumber(Tab<int>{2});
    record->SetAnim(derived);
    EXPECT_EQ(record->GetModNames(), (std::vector<MSTR>{L"Taper", L"Bend"}));
    EXPECT_EQ(record->GetModToggles(), (std::vector<int>{7, 7}));

    // A rename and a switch while idle: Renamed and Toggled, undoably.
    theHold.Begin();
    derived->GetModifier(0)->SetName(L"Soft taper");
    derived->GetModifier(1)->DisableModInRender();
    theHold.Accept(L"Edit");
    EXPECT_EQ(record->GetOverrideState(), kOverrideRenamed | kOverrideToggled);
    EXPECT_EQ(record->GetModNames()[0], MSTR(L"Soft taper"));
    EXPECT_EQ(record->GetModToggles()[1], RefAnimDerivObj::kOn | RefAnimDerivObj::kInViews);
    // An added modifier only makes the record read the stack again.
    Script(L"addModifier $Stack (twist())");
    EXPECT_EQ(record->GetModNames().size(), 3u);
    EXPECT_EQ(record->GetOverrideState(), kOverrideRenamed | kOverrideToggled);
    Script(L"deleteModifier $Stack 1");

    const std::vector<std::uint8_t> bytes = Saved(record);
    const ChunkList chunks = TopChunks(bytes);
    ASSERT_EQ(chunks.size(), 5u);
    EXPECT_EQ(chunks[0].first, 0x0029);
    EXPECT_EQ(chunks[1], (std::pair<USHORT, ULONG>{0x002A, 8}));
    EXPECT_EQ(chunks[2].first, 0x002B);
    EXPECT_EQ(chunks[3].first, 0x002B);
    EXPECT_EQ(chunks[4], (std::pair<USHORT, ULONG>{0x002C, 8}));
    auto* loaded = Loaded<RefAnimDerivObj>(bytes);
    EXPECT_EQ(loaded->GetModNames(), record->GetModNames());
    EXPECT_EQ(loaded->GetModToggles(), record->GetModToggles());
    EXPECT_EQ(loaded->GetOverrideState(), record->GetOverrideState());
    EXPECT_EQ(Saved(loaded), bytes);
    loaded->DeleteMe();
    const std::wstring info = record->GetInfo().data();
    EXPECT_NE(info.find(L"\nNumMods: 2\nNumNestedDerivObj: 0\nModNames: Soft taper,Bend,\nModToggles: 7,3,"),
              std::wstring::npos)
        << info;

    // A freshly merged copy of the stack takes the local name and switch.
    Script(L"f = box name:\"Fresh\"; addModifier f (bend()); addModifier f (taper())");
    INode* fresh = vtest::Node(L"Fresh");
    auto* merged = dynamic_cast<IDerivedObject*>(fresh->GetObjectRef());
    record->Override(fresh);
    EXPECT_EQ(record->GetAnim(), merged);
    EXPECT_EQ(merged->GetModifier(0)->GetName(false), MSTR(L"Soft taper"));
    EXPECT_FALSE(merged->GetModifier(1)->IsEnabledInRender());
    EXPECT_TRUE(merged->GetModifier(1)->IsEnabled());

    // Undo takes the state bits back.
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(record->GetOverrideState(), 0);
    record->DeleteMe();
}

TEST_F(RecordKinds, ACameraRecordStaysCleanAndKeepsItsBytes) {
    Script(L"freeCamera name:\"Cam\"");
    Object* camera = vtest::Node(L"Cam")->GetObjectRef();
    auto* record = new RefAnimCam();
    record->SetAnim(camera);
    // The field of view is a block parameter: the camera record itself is not touched by it.
    Script(L"$Cam.fov = 70");
    EXPECT_EQ(record->GetOverrideState(), 0);
    EXPECT_EQ(TopChunks(Saved(record)),
              (ChunkList{{0x0029, TopChunks(Saved(record))[0].second}, {0x002A, 2}, {0x002B, 1}}));

    // Values from a file are kept and written back byte for byte.
    hostrt::ChunkWriter w;
    const std::uint8_t cam[2] = {0x05, 0x04};
    const std::uint8_t views = 0x09;
    ULONG n = 0;
    w.BeginChunk(0x002A);
    w.Write(cam, 2, &n);
    w.EndChunk();
    w.BeginChunk(0x002B);
    w.Write(&views, 1, &n);
    w.EndChunk();
    auto* loaded = Loaded<RefAnimCam>(w.Bytes());
    EXPECT_EQ(loaded->GetCamOverrides(), 0x05);
    EXPECT_EQ(loaded->GetCamValues(), 0x04);
    EXPECT_EQ(loaded->GetViewBits(), 0x09);
    auto* again = Loaded<RefAnimCam>(Saved(loaded));
    EXPECT_EQ(Saved(again), Saved(loaded));
    EXPECT_EQ(again->GetViewBits(), 0x09);
    again->DeleteMe();
    loaded->DeleteMe();
    record->DeleteMe();
}

TEST_F(RecordKinds, AnAnimatableThatRefersToOtherItemsIsModifiedWhenOneIsSwapped) {
    Script(L"box name:\"A\"; box name:\"B\"; box name:\"C\"");
    INode* a = vtest::Node(L"A");
    INode* b = vtest::Node(L"B");
    INode* c = vtest::Node(L"C");
    auto* holder = new TwoRefs();
    holder->ReplaceReference(1, a);
    auto* record = new RefAnimWithRefs();
    record->SetAnim(holder);
    ASSERT_EQ(record->NumRefs(), 2);
    EXPECT_EQ(record->GetReference(1), a);
    EXPECT_FALSE(record->IsRealDependency(a)) << "the held items keep nothing alive";

    // A change that leaves the same items keeps the list following the animatable.
    holder->NotifyDependents(FOREVER, PART_OBJECT_CHAIN, REFMSG_CHANGE);
    EXPECT_EQ(record->GetHeldRefs().Count(), 1);
    EXPECT_EQ(record->IsFollowing(), 1);
    record->SetOverrideState(0);

    // Another item and one more: Modified, and the list holds the local items.
    holder->ReplaceReference(1, b);
    holder->ReplaceReference(0, c);
    holder->NotifyDependents(FOREVER, PART_OBJECT_CHAIN, REFMSG_CHANGE);
    EXPECT_TRUE(record->IsModified());
    EXPECT_EQ(record->IsFollowing(), 0);
    ASSERT_EQ(record->NumRefs(), 3);
    EXPECT_EQ(record->GetReference(1), c);
    EXPECT_EQ(record->GetReference(2), b);

    // While an operation runs nothing is marked.
    record->SetOverrideState(0);
    {
        vandrels::OperationModeScope loading(vandrels::kModeLoading);
        holder->ReplaceReference(0, nullptr);
        holder->NotifyDependents(FOREVER, PART_OBJECT_CHAIN, REFMSG_CHANGE);
    }
    EXPECT_FALSE(record->IsModified());

    // A clone holds the same items (they were not cloned with it).
    auto* clone = dynamic_cast<RefAnimWithRefs*>(CloneRefHierarchy(record));
    ASSERT_NE(clone, nullptr);
    ASSERT_EQ(clone->NumRefs(), 3);
    EXPECT_EQ(clone->GetReference(1), c);
    EXPECT_EQ(clone->GetReference(2), b);
    clone->DeleteMe();

    // The count chunk sizes the list the host fills on load.
    const std::vector<std::uint8_t> bytes = Saved(record);
    const ChunkList chunks = TopChunks(bytes);
    ASSERT_EQ(chunks.size(), 2u);
    EXPECT_EQ(chunks[0].first, 0x0029);
    EXPECT_EQ(chunks[1], (std::pair<USHORT, ULONG>{0x002A, 4}));
    auto* loaded = Loaded<RefAnimWithRefs>(bytes);
    EXPECT_EQ(loaded->NumRefs(), 3);
    EXPECT_EQ(loaded->GetReference(1), nullptr);
    loaded->DeleteMe();
    record->DeleteMe();
    holder->DeleteMe();
}

TEST_F(RecordKinds, AResetKeepsTheGenericKindsWithAClearedState) {
    struct Row {
        RefAnim* record;
        bool generic;
    };
    const Row rows[] = {
        {new RefAnimMod(), true},     {new RefAnimSkin(), false},     {new RefAnimWithRefs(), true},
        {new RefAnimWithRefsMod(), true}, {new RefAnimForest(), false}, {new RefAnimPRS(), true},
        {new RefAnimEuler(), true},   {new RefAnimPointMod(), true},  {new RefAnimLocDep(), true},
        {new RefAnimCam(), false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.record->IsGeneric(), row.generic) << row.record->GetTypeName().ToUTF8();
        row.record->SetOverrideState(kOverrideModified);
        // Without an animatable a kind that is not generic is dropped (1); a generic one is kept clean (0).
        EXPECT_EQ(row.record->ResetOverrides(0), row.generic ? 0 : 1);
        EXPECT_EQ(row.record->GetOverrideState() == 0, row.generic);
        row.record->DeleteMe();
    }
}

}  // namespace
