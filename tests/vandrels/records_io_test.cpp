// Reference records, the holder and animatable records as the host sees them: their references, their chunks in
// scene files (byte for byte), damaged data, cloning, and the holder's scripting interface.
#include "core/class_directory.h"
#include "core/fnpub.h"
#include "io/chunk_reader.h"
#include "io/chunk_writer.h"
#include "inode.h"
#include "max.h"
#include "object.h"
#include "plugapi.h"
#include "saved_objects.h"
#include "scene/scene.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <unistd.h>

namespace {

using vtest::LoadInto;
using vtest::SavedBy;

constexpr SClass_ID kRecordSuper = 0x8663DFA6;
constexpr SClass_ID kAnimRecordSuper = 0x8663DFA8;
constexpr Class_ID kBaseRecord(0x8663DFA6, 0x3F273883);
constexpr Class_ID kRefHolder(0x8663DFA5, 0x3F273890);
constexpr Class_ID kEmptyBaseObject(0x8663DFA5, 0x3F273888);
constexpr Class_ID kListCtrlRecord(0x00030008, 0);
// A kind whose saved form is the base record's.
constexpr Class_ID kReactionRecord(0x00030024, 0);
constexpr DWORD kRecordProperty = 0x8663DFA6;

template <class T> T* Make(SClass_ID sc, Class_ID id) {
    auto* made = dynamic_cast<T*>(static_cast<Animatable*>(CreateInstance(sc, id)));
    EXPECT_NE(made, nullptr);
    return made;
}

using Bytes = vtest::ChunkBytes;

Bytes RecordBytes(std::int32_t refAnims) {
    return std::move(Bytes().Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0022, refAnims));
}

// The base chunks of an animatable record with the path TM / Position (numbers 3, 1).
Bytes AnimBaseBytes(std::uint8_t state, std::int32_t option = 1) {
    Bytes b;
    b.Chunk(0x0023, std::int32_t(2)).Text(0x0024, L"TM").Text(0x0024, L"Position");
    b.Chunk(0x0025, std::int32_t(2)).Chunk(0x0026, std::int32_t(3)).Chunk(0x0026, std::int32_t(1));
    b.Chunk(0x0027, state).Chunk(0x0028, option);
    return b;
}

class Records : public ::testing::Test {
protected:
    void SetUp() override {
        hostrt::RegisterBuiltinClasses();
        vtest::VandrelsLibrary();
        hostrt::Scene::Instance().ResetScene();
        file_ = vtest::TempSceneFile("vandrels_records");
    }
    void TearDown() override {
        hostrt::Scene::Instance().ResetScene();
        std::filesystem::remove(file_.ToUTF8());
    }
    MSTR file_;
};

}  // namespace

// A holder node parks a node record with two empty animatable slots and an animatable record; the scene file
// holds their chunks byte for byte and opening it gives the same records back.
TEST_F(Records, HolderNodeRecordAndAnimRecordSurviveSaveAndOpen) {
    Interface* ip = GetCOREInterface();
    auto* holder = Make<Object>(GEOMOBJECT_CLASS_ID, kRefHolder);
    ASSERT_NE(holder, nullptr);
    auto* fpi = dynamic_cast<FPInterface*>(holder->GetInterface(Interface_ID(0x8663DFA5, 0x3F273890)));
    ASSERT_NE(fpi, nullptr);
    FPValue result;
    hostrt::CallFromScript(fpi, L"SetNumRefs", {FPValue(3)}, {}, result);
    ASSERT_EQ(holder->NumRefs(), 3);

    auto* record = Make<ReferenceTarget>(kRecordSuper, kBaseRecord);
    ASSERT_EQ(LoadInto(record, RecordBytes(2).Get()), IO_OK);
    EXPECT_EQ(record->NumRefs(), 3);  // the target and two animatable records
    EXPECT_EQ(record->GetReference(1), nullptr);
    EXPECT_EQ(record->GetReference(7), nullptr);
    auto* anim = Make<ReferenceTarget>(kAnimRecordSuper, kListCtrlRecord);
    ASSERT_EQ(LoadInto(anim, AnimBaseBytes(0x02).Get()), IO_OK);
    holder->ReplaceReference(0, record);
    holder->ReplaceReference(1, anim);
    ip->CreateObjectNode(holder)->SetName(L"VDHN");

    const std::vector<std::uint8_t> holderBytes = Bytes().Chunk(0x0000, std::int32_t(3)).Get();
    ASSERT_NE(ip->SaveToFile(file_.data()), 0);
    const auto saved = vtest::ReadSavedObjects(file_);
    using Datas = std::vector<std::vector<std::uint8_t>>;
    EXPECT_EQ(vtest::SavedDataOf(saved, kRefHolder), Datas{holderBytes});
    EXPECT_EQ(vtest::SavedDataOf(saved, kBaseRecord), Datas{RecordBytes(2).Get()});
    EXPECT_EQ(vtest::SavedDataOf(saved, kListCtrlRecord), Datas{AnimBaseBytes(0x02).Get()});

    ip->FileReset();
    ASSERT_NE(ip->LoadFromFile(file_.data()), 0);
    INode* node = ip->GetINodeByName(L"VDHN");
    ASSERT_NE(node, nullptr);
    Object* holder2 = node->GetObjectRef();
    ASSERT_EQ(holder2->ClassID(), kRefHolder);
    ASSERT_EQ(holder2->NumRefs(), 3);
    ReferenceTarget* record2 = holder2->GetReference(0);
    ReferenceTarget* anim2 = holder2->GetReference(1);
    ASSERT_TRUE(record2 && anim2);
    EXPECT_EQ(holder2->GetReference(2), nullptr);
    EXPECT_EQ(record2->ClassID(), kBaseRecord);
    EXPECT_EQ(record2->NumRefs(), 3);
    EXPECT_EQ(record2->GetReference(0), nullptr);
    EXPECT_EQ(anim2->ClassID(), kListCtrlRecord);
    EXPECT_EQ(SavedBy(holder2), holderBytes);
    EXPECT_EQ(SavedBy(record2), RecordBytes(2).Get());
    EXPECT_EQ(SavedBy(anim2), AnimBaseBytes(0x02).Get());
}

// Kinds with state of their own wrap the base chunks in 0x0029; a kind without saves them unwrapped.
TEST_F(Records, AnimRecordReadsWrappedBaseChunks) {
    auto* reaction = Make<ReferenceTarget>(kAnimRecordSuper, kReactionRecord);
    ASSERT_NE(reaction, nullptr);
    Bytes wrapped;
    wrapped.Wrapped(0x0029, AnimBaseBytes(0x41, 0)).Chunk(0x002A, std::int32_t(77));
    ASSERT_EQ(LoadInto(reaction, wrapped.Get()), IO_OK);
    EXPECT_EQ(SavedBy(reaction), AnimBaseBytes(0x41, 0).Get());
    reaction->DeleteThis();

    // Unknown chunks of a record are skipped.
    auto* rec = Make<ReferenceTarget>(kRecordSuper, kBaseRecord);
    EXPECT_EQ(LoadInto(rec, Bytes().Chunk(0x0099, std::int32_t(5)).Chunk(0x0022, std::int32_t(4)).Get()), IO_OK);
    EXPECT_EQ(rec->NumRefs(), 5);
    rec->DeleteThis();
}

TEST_F(Records, DamagedChunksFailTheLoad) {
    struct Case {
        SClass_ID super;
        Class_ID id;
        std::vector<std::uint8_t> bytes;
    };
    const Case cases[] = {
        {kAnimRecordSuper, kListCtrlRecord, Bytes().Raw(0x0027, {}).Get()},                  // no state byte
        {kAnimRecordSuper, kListCtrlRecord, Bytes().Chunk(0x0023, std::int32_t(-1)).Get()},  // negative count
        {kAnimRecordSuper, kListCtrlRecord, Bytes().Raw(0x0026, {1, 0}).Get()},              // half a number
        {kAnimRecordSuper, kListCtrlRecord, Bytes().Wrapped(0x0029, Bytes().Raw(0x0028, {})).Get()},
        {kRecordSuper, kBaseRecord, Bytes().Raw(0x0022, {2, 0}).Get()},
        {kRecordSuper, kBaseRecord, Bytes().Chunk(0x0022, std::int32_t(-2)).Get()},
        {GEOMOBJECT_CLASS_ID, kRefHolder, Bytes().Chunk(0x0000, std::int32_t(-1)).Get()},
    };
    for (const Case& c : cases) {
        auto* obj = Make<ReferenceTarget>(c.super, c.id);
        ASSERT_NE(obj, nullptr);
        EXPECT_EQ(LoadInto(obj, c.bytes), IO_ERROR) << "class part A " << std::hex << c.id.PartA();
        obj->DeleteThis();
    }
}

// A record hangs on its target's property list while bound; its clone is unbound and keeps only the
// animatable records that carry overrides, which clone their animatable only when they carry it as their own.
TEST_F(Records, RecordClonesKeepOnlyOverriddenAnimRecords) {
    auto* record = Make<ReferenceTarget>(kRecordSuper, kBaseRecord);
    ASSERT_EQ(LoadInto(record, RecordBytes(2).Get()), IO_OK);
    auto* target = Make<ReferenceTarget>(GEOMOBJECT_CLASS_ID, kEmptyBaseObject);
    auto* other = Make<ReferenceTarget>(GEOMOBJECT_CLASS_ID, kEmptyBaseObject);
    record->ReplaceReference(0, target);
    auto* asProperty = dynamic_cast<AnimProperty*>(static_cast<Animatable*>(record));
    ASSERT_NE(asProperty, nullptr);
    EXPECT_EQ(target->GetAProp(kRecordProperty), asProperty);

    auto* clean = Make<ReferenceTarget>(kAnimRecordSuper, kListCtrlRecord);
    ASSERT_EQ(LoadInto(clean, AnimBaseBytes(0x00).Get()), IO_OK);
    auto* replaced = Make<ReferenceTarget>(kAnimRecordSuper, kReactionRecord);
    ASSERT_EQ(LoadInto(replaced, AnimBaseBytes(0x01).Get()), IO_OK);
    auto* localAnim = Make<ReferenceTarget>(GEOMOBJECT_CLASS_ID, kEmptyBaseObject);
    replaced->ReplaceReference(0, localAnim);
    record->ReplaceReference(1, clean);
    record->ReplaceReference(2, replaced);

    ReferenceTarget* clone = CloneRefHierarchy(record);
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->ClassID(), kBaseRecord);
    ASSERT_EQ(clone->NumRefs(), 3);
    EXPECT_EQ(clone->GetReference(0), nullptr);  // unbound
    EXPECT_EQ(clone->GetReference(1), nullptr);  // the clean record is not copied
    ReferenceTarget* replacedClone = clone->GetReference(2);
    ASSERT_NE(replacedClone, nullptr);
    EXPECT_NE(replacedClone, replaced);
    EXPECT_EQ(replacedClone->ClassID(), kReactionRecord);
    EXPECT_EQ(SavedBy(replacedClone), AnimBaseBytes(0x01, 0).Get());  // paths and state; the option starts anew
    ASSERT_NE(replacedClone->GetReference(0), nullptr);
    EXPECT_NE(replacedClone->GetReference(0), localAnim);
    clone->DeleteMe();

    // A clean record clones without its animatable.
    clean->ReplaceReference(0, other);
    ReferenceTarget* cleanClone = CloneRefHierarchy(clean);
    ASSERT_NE(cleanClone, nullptr);
    EXPECT_EQ(cleanClone->GetReference(0), nullptr);
    cleanClone->DeleteMe();
    clean->DeleteReference(0, FALSE);

    // Rebinding moves the record's property; a deleted record leaves nothing behind on its target.
    record->ReplaceReference(0, other, FALSE);
    EXPECT_EQ(target->GetAProp(kRecordProperty), nullptr);
    EXPECT_EQ(other->GetAProp(kRecordProperty), asProperty);
    other->SetAFlag(A_LOCK_TARGET);
    record->DeleteMe();
    EXPECT_EQ(other->GetAProp(kRecordProperty), nullptr);
    other->ClearAFlag(A_LOCK_TARGET);
    other->DeleteThis();
    target->DeleteThis();
}
