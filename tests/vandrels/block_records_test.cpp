// The parameter-block records outside a reference: an old-style block's record stores its changed parameters
// with undo and redo, keeps them through its own save and load and writes them into a fresh block; a block-2
// record of the undo-group kind writes its snapshots as one undo step "Override".
#include "anims/ref_anim_pblock.h"
#include "anims/ref_anim_pblock2.h"

#include "hold.h"
#include "io/chunk_reader.h"
#include "io/chunk_writer.h"
#include "iparamb.h"
#include "iparamb2.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// A root with one sub-anim: the block a record's path "Params" (number 1, after the custom-attribute entry)
// reaches.
class BlockRoot : public ReferenceTarget {
public:
    explicit BlockRoot(ReferenceTarget* block) { ReplaceReference(0, block); }
    Class_ID ClassID() override { return Class_ID(0x7E570011, 0); }
    void GetClassName(MSTR& s, bool) const override { s = L"BlockRoot"; }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int) override { return block_; }
    void SetReference(int, RefTargetHandle t) override { block_ = t; }
    int NumSubs() override { return 1; }
    Animatable* SubAnim(int) override { return block_; }
    MSTR SubAnimName(int, bool) override { return MSTR(L"Params"); }

private:
    RefTargetHandle block_ = nullptr;
};

void PointAtParams(RefAnim* record) {
    record->SetPath(Tab<WStr*>{new WStr(L"Params")});
    record->SetPathByNumber(Tab<int>{1});
}

template <class T> T* SavedAndLoaded(T* record) {
    hostrt::ChunkWriter w;
    EXPECT_EQ(record->Save(&w), IO_OK);
    const std::vector<std::uint8_t> bytes = w.Bytes();
    hostrt::ChunkReader r(bytes.data(), bytes.size());
    auto* loaded = new T();
    EXPECT_EQ(loaded->Load(&r), IO_OK);
    return loaded;
}

class BlockRecords : public vtest::SceneTest {
protected:
    BlockRecords() : SceneTest("vandrels_block_records") {}
};

const ParamBlockDescID kOldStyle[] = {
    {TYPE_INT, FALSE, 0, L"count"},
    {TYPE_FLOAT, FALSE, 1, L"size"},
    {TYPE_RGBA, FALSE, 2, L"tint"},
};

TEST_F(BlockRecords, AnOldStyleBlocksEditsAreStoredUndoneAndWrittenBack) {
    auto* block = new IParamBlock(kOldStyle, 3);
    auto* record = new RefAnimPblock();
    record->ReplaceReference(0, block);
    for (auto edit : {+[](IParamBlock* b) { b->SetValue(0, 0, 7); },
                      +[](IParamBlock* b) { b->SetValue(2, 0, Color(0.5f, 0.25f, 1.f)); },
                      +[](IParamBlock* b) { b->SetValue(0, 0, 9); }}) {
        theHold.Begin();
        edit(block);
        theHold.Accept(L"Edit");
    }
    ASSERT_EQ(record->GetOverriddenParams().size(), 2u);
    EXPECT_EQ(record->GetOverriddenParams()[0].value[0], 9.f) << "an integer is kept as a float";
    EXPECT_TRUE(record->IsModified());

    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(record->GetOverriddenParams()[0].value[0], 7.f);
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(record->GetOverriddenParams().size(), 1u);
    ASSERT_TRUE(theHold.Redo());
    ASSERT_TRUE(theHold.Redo());
    ASSERT_EQ(record->GetOverriddenParams().size(), 2u);
    EXPECT_EQ(record->GetOverriddenParams()[0].value[0], 9.f);
    EXPECT_EQ(record->GetOverriddenParams()[1].value[1], 0.25f);

    // Through the record's own save and load, onto a fresh block found at the path.
    RefAnimPblock* loaded = SavedAndLoaded(record);
    ASSERT_EQ(loaded->GetOverriddenParams().size(), 2u);
    EXPECT_TRUE(loaded->IsModified());
    auto* fresh = new IParamBlock(kOldStyle, 3);
    auto* root = new BlockRoot(fresh);
    PointAtParams(loaded);
    loaded->Override(root);
    EXPECT_EQ(loaded->GetAnim(), fresh);
    Interval valid = FOREVER;
    int count = 0;
    Point3 tint;
    fresh->GetValue(0, 0, count, valid);
    fresh->GetValue(2, 0, tint, valid);
    EXPECT_EQ(count, 9);
    EXPECT_EQ(tint, Point3(0.5f, 0.25f, 1.f));
    loaded->DeleteMe();
    record->DeleteMe();
    root->DeleteMe();
}

struct GroupBlock {
    ParamBlockDesc2 desc{0, L"Light", 0, nullptr, 0};
    GroupBlock() {
        desc.AddParam(1, L"on", TYPE_BOOL, 0, 0).Default(TRUE);
        desc.AddParam(2, L"decay", TYPE_INT, 0, 0).Default(0);
    }
};

TEST_F(BlockRecords, AnUndoGroupRecordWritesItsSnapshotsAsOneUndoStep) {
    static GroupBlock group;
    IParamBlock2* local = CreateParameterBlock2(&group.desc, nullptr);
    auto* record = new RefAnimPblock2();
    record->SetMode(0, true);
    EXPECT_EQ(record->GetType(), 0x00030036u);
    record->ReplaceReference(0, local);
    local->SetValue(1, 0, FALSE);
    local->SetValue(2, 0, 3);
    ASSERT_EQ(record->GetOverriddenParams().Count(), 2);

    IParamBlock2* fresh = CreateParameterBlock2(&group.desc, nullptr);
    auto* root = new BlockRoot(fresh);
    PointAtParams(record);
    theHold.FlushUndoBuffer();
    record->Override(root);
    EXPECT_EQ(fresh->GetInt(1), FALSE);
    EXPECT_EQ(fresh->GetInt(2), 3);
    EXPECT_EQ(record->GetAnim(), fresh);
    // One step takes both values back.
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(fresh->GetInt(1), TRUE);
    EXPECT_EQ(fresh->GetInt(2), 0);
    theHold.FlushUndoBuffer();
    record->DeleteMe();
    root->DeleteMe();
    local->DeleteMe();
}

// Local content that uses a LocDep record's block moves to the freshly merged block; the record itself follows
// only when it is set to it.
TEST_F(BlockRecords, ALocDepBlockHandsItsLocalUsersToTheNewBlock) {
    static GroupBlock group;
    IParamBlock2* held = CreateParameterBlock2(&group.desc, nullptr);
    IParamBlock2* fresh = CreateParameterBlock2(&group.desc, nullptr);
    auto* user = new BlockRoot(held);
    auto* keeper = new BlockRoot(fresh);
    auto* record = new RefAnimPblock2();
    record->ReplaceReference(0, held);

    record->OverrideLocDep(fresh);
    EXPECT_EQ(user->GetReference(0), held) << "a clean record moves nothing";
    record->SetOverrideState(kOverrideLocDep);
    record->OverrideLocDep(fresh);
    EXPECT_EQ(user->GetReference(0), fresh);
    EXPECT_EQ(record->GetAnim(), held);
    EXPECT_EQ(record->GetLastOperation(), 118);
    record->SetAnim(fresh);
    EXPECT_EQ(record->GetAnim(), fresh);
    record->DeleteMe();
    user->DeleteMe();
    keeper->DeleteMe();
}

}  // namespace
