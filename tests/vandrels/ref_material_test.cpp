// The material record through the host: binding it to a material, its single sub-anim, the local name it takes
// when the user renames the material (with and without the helper's name prefix) and the undo of that, its
// chunks byte for byte in a scene file, loading and cloning.
#include "vandrels_library.h"

#include "core/class_directory.h"
#include "core/fnpub.h"
#include "hold.h"
#include "imtl.h"
#include "inode.h"
#include "io/chunk_reader.h"
#include "io/chunk_writer.h"
#include "iparamb2.h"
#include "maxapi.h"
#include "object.h"
#include "plugapi.h"
#include "saved_objects.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <unistd.h>

namespace {

using vtest::LoadInto;
using vtest::SavedBy;

constexpr SClass_ID kRecordSuper = 0x8663DFA6;
const Class_ID kRefMaterial(0x8663DFA6, 0x3F273885);
const Class_ID kHelperClass(0x8663DFA5, 0x3F273879);
constexpr ParamID kUseNamePrefix = 5;
constexpr int kFirstRecordRef = 2;

using Bytes = vtest::ChunkBytes;

// The chunks a material record writes; localName only with flag 0x2.
Bytes MaterialBytes(const MCHAR* referenceName, std::uint16_t flags, const MCHAR* localName, std::int32_t refAnims) {
    Bytes b;
    b.Chunk(0x0000, std::uint32_t(0x46273400)).Text(0x0009, referenceName).Chunk(0x000A, flags);
    if (localName) b.Text(0x000B, localName);
    b.Chunk(0x0022, refAnims);
    return b;
}

FPValue Call(ReferenceTarget* record, const MCHAR* fn, std::vector<FPValue> args = {}) {
    FPInterface* fpi = hostrt::FindObjectInterface(record, L"RefBase");
    EXPECT_NE(fpi, nullptr) << "no RefBase interface";
    FPValue result;
    if (fpi) hostrt::CallFromScript(fpi, fn, std::move(args), {}, result);
    return result;
}

class RefMaterialTest : public vtest::SceneTest {
protected:
    RefMaterialTest() : SceneTest("vandrels_refmtl") {}

    // A record bound to a new standard material named name.
    ReferenceTarget* BoundRecord(const MCHAR* name) {
        mtl_ = NewDefaultStdMat();
        mtl_->SetName(name);
        auto* record = static_cast<ReferenceTarget*>(static_cast<Animatable*>(CreateInstance(kRecordSuper, kRefMaterial)));
        EXPECT_NE(record, nullptr);
        if (record) {
            EXPECT_EQ(record->ReplaceReference(0, mtl_), REF_SUCCEED);
        }
        return record;
    }

    // A helper node named "Ref" prefixing names, owning record as its material record.
    ReferenceTarget* AdoptedByPrefixingHelper(ReferenceTarget* record) {
        ClassDesc* cd = FindClassDesc(HELPER_CLASS_ID, kHelperClass);
        EXPECT_NE(cd, nullptr);
        auto* helper = static_cast<Object*>(static_cast<Animatable*>(cd->Create(FALSE)));
        EXPECT_EQ(LoadInto(helper, Bytes().Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0002, std::int32_t(1)).Get()),
                  IO_OK);
        GetCOREInterface()->CreateObjectNode(helper)->SetName(L"Ref");
        static_cast<IParamBlock2*>(helper->GetReference(0))->SetValue(kUseNamePrefix, 0, 1);
        EXPECT_EQ(helper->ReplaceReference(kFirstRecordRef, record), REF_SUCCEED);
        return helper;
    }

    void Rename(const MCHAR* name) {
        theHold.Begin();
        mtl_->SetName(name);
        theHold.Accept(L"Rename Material");
    }

    std::int32_t Count(ReferenceTarget* record) { return Call(record, L"NumRefAnims").i; }

    Mtl* mtl_ = nullptr;
};

}  // namespace

TEST_F(RefMaterialTest, ShowsItsMaterialAsTheSingleSubAnimAndTakesItsName) {
    ReferenceTarget* record = BoundRecord(L"Wood");
    ASSERT_NE(record, nullptr);
    ASSERT_EQ(record->NumSubs(), 1);
    EXPECT_EQ(record->SubAnim(0), mtl_);
    EXPECT_EQ(record->SubAnimName(0), MSTR(L"Material"));
    EXPECT_TRUE(record->CanTransferReference(0));
    EXPECT_FALSE(record->CanTransferReference(1));
    // The "RefBase" interface lists the animatable records behind the material.
    const std::int32_t count = Count(record);
    EXPECT_EQ(record->NumRefs(), 1 + count);
    for (int i = 0; i < count; ++i) EXPECT_EQ(Call(record, L"GetRefAnim", {FPValue(i)}).r, record->GetReference(1 + i));
    EXPECT_EQ(SavedBy(record), MaterialBytes(L"Wood", 0, nullptr, count).Get());
    record->DeleteThis();
}

TEST_F(RefMaterialTest, RenameWithoutPrefixBecomesTheLocalNameUndoably) {
    ReferenceTarget* record = BoundRecord(L"Wood");
    const std::int32_t n = Count(record);
    Rename(L"Oak");
    EXPECT_EQ(SavedBy(record), MaterialBytes(L"Wood", 0x2, L"Oak", n).Get());
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(mtl_->GetName(), MSTR(L"Wood"));
    EXPECT_EQ(SavedBy(record), MaterialBytes(L"Wood", 0, nullptr, n).Get());
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(SavedBy(record), MaterialBytes(L"Wood", 0x2, L"Oak", n).Get());
    // With a local name in force, the reference name is just another local name.
    Rename(L"Wood");
    EXPECT_EQ(SavedBy(record), MaterialBytes(L"Wood", 0x2, L"Wood", n).Get());
    record->DeleteThis();
}

TEST_F(RefMaterialTest, PrefixIsStrippedFromLocalNamesAndForeignNamesStandAlone) {
    ReferenceTarget* record = BoundRecord(L"Wood");
    AdoptedByPrefixingHelper(record);
    const std::int32_t n = Count(record);
    // The prefixed reference name is what the record expects: no override.
    Rename(L"Ref_Wood");
    EXPECT_EQ(SavedBy(record), MaterialBytes(L"Wood", 0, nullptr, n).Get());
    Rename(L"Ref_Oak");
    EXPECT_EQ(SavedBy(record), MaterialBytes(L"Wood", 0x2, L"Oak", n).Get());
    // A name without the prefix is kept whole and marked to stand without it.
    Rename(L"Pine");
    EXPECT_EQ(SavedBy(record), MaterialBytes(L"Wood", 0x6, L"Pine", n).Get());
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(mtl_->GetName(), MSTR(L"Ref_Oak"));
    EXPECT_EQ(SavedBy(record), MaterialBytes(L"Wood", 0x2, L"Oak", n).Get());
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(SavedBy(record), MaterialBytes(L"Wood", 0x6, L"Pine", n).Get());
    // Standing without the prefix, the local name simply follows the material.
    Rename(L"Ref_Birch");
    EXPECT_EQ(SavedBy(record), MaterialBytes(L"Wood", 0x6, L"Ref_Birch", n).Get());
}

TEST_F(RefMaterialTest, ChunksSurviveSaveAndOpen) {
    ReferenceTarget* record = BoundRecord(L"Wood");
    AdoptedByPrefixingHelper(record);
    const std::int32_t n = Count(record);
    Rename(L"Ref_Oak");
    Interface* ip = GetCOREInterface();
    ASSERT_NE(ip->SaveToFile(file_.data()), 0);
    using Datas = std::vector<std::vector<std::uint8_t>>;
    const Bytes expected = MaterialBytes(L"Wood", 0x2, L"Oak", n);
    EXPECT_EQ(vtest::SavedDataOf(vtest::ReadSavedObjects(file_), kRefMaterial), Datas{expected.Get()});

    ip->FileReset(TRUE);
    ASSERT_NE(ip->LoadFromFile(file_.data()), 0);
    INode* node = ip->GetINodeByName(L"Ref");
    ASSERT_NE(node, nullptr);
    ReferenceTarget* loaded = node->GetObjectRef()->GetReference(kFirstRecordRef);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->ClassID(), kRefMaterial);
    EXPECT_EQ(SavedBy(loaded), expected.Get());
}

TEST_F(RefMaterialTest, LoadsChunksInAnyOrderAndDropsRecordsOnDamage) {
    auto* record = static_cast<ReferenceTarget*>(static_cast<Animatable*>(CreateInstance(kRecordSuper, kRefMaterial)));
    Bytes shuffled;
    shuffled.Chunk(0x0022, std::int32_t(2)).Text(0x000B, L"Oak").Chunk(0x000A, std::uint16_t(0x3));
    shuffled.Text(0x0009, L"Wood").Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0077, std::int32_t(5));
    ASSERT_EQ(LoadInto(record, shuffled.Get()), IO_OK);
    EXPECT_EQ(record->NumRefs(), 3);
    EXPECT_EQ(SavedBy(record), MaterialBytes(L"Wood", 0x3, L"Oak", 2).Get());

    // A flag word cut short fails the load and leaves no animatable slots behind.
    auto* damaged = static_cast<ReferenceTarget*>(static_cast<Animatable*>(CreateInstance(kRecordSuper, kRefMaterial)));
    Bytes cut;
    cut.Chunk(0x0022, std::int32_t(4)).Chunk(0x000A, std::uint8_t(1));
    EXPECT_NE(LoadInto(damaged, cut.Get()), IO_OK);
    EXPECT_EQ(damaged->NumRefs(), 1);
    record->DeleteThis();
    damaged->DeleteThis();
}

TEST_F(RefMaterialTest, CloneKeepsNamesAndFlagsButNotTheMaterial) {
    ReferenceTarget* record = BoundRecord(L"Wood");
    Rename(L"Oak");
    ReferenceTarget* clone = CloneRefHierarchy(record);
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->ClassID(), kRefMaterial);
    EXPECT_EQ(clone->GetReference(0), nullptr);
    EXPECT_EQ(SavedBy(clone), MaterialBytes(L"Wood", 0x2, L"Oak", Count(record)).Get());
    clone->DeleteThis();
    record->DeleteThis();
}
