// The node record through the host: its references and chunks (byte for byte, in a scene file and loaded in any
// order), cloning with a parent record, letting go of the node on scene changes, the local name it takes when
// the user renames the node (with and without the helper's prefix, undoably) and the "RefNode" interface.
#include "vandrels_library.h"

#include "core/class_directory.h"
#include "core/fnpub.h"
#include "hold.h"
#include "inode.h"
#include "io/chunk_reader.h"
#include "io/chunk_writer.h"
#include "iparamb2.h"
#include "istdplug.h"
#include "imtl.h"
#include "maxapi.h"
#include "maxexception.h"
#include "notify.h"
#include "object.h"
#include "plugapi.h"
#include "saved_objects.h"

#include <gtest/gtest.h>

namespace {

using vtest::LoadInto;
using vtest::SavedBy;

constexpr SClass_ID kRecordSuper = 0x8663DFA6;
const Class_ID kRefNode(0x8663DFA6, 0x3F273884);
const Class_ID kHelperClass(0x8663DFA5, 0x3F273879);
constexpr ParamID kUseNamePrefix = 5;
constexpr int kFirstRecordRef = 2;

using Bytes = vtest::ChunkBytes;

// The chunks a node record writes without conditional values.
struct NodeChunks {
    std::int32_t nodeLoaded = 0;
    const MCHAR* referenceName = L"";
    std::uint32_t flags = 0;
    const MCHAR* localName = nullptr;  // with flag 0x2
    std::int32_t refAnims = 0;
    std::int32_t nodeKind = 0;

    Bytes Get() const {
        Bytes b;
        b.Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0007, nodeLoaded).Text(0x0008, referenceName);
        b.Chunk(0x000A, flags);
        if (localName) b.Text(0x000B, localName);
        b.Chunk(0x0029, std::int32_t(0)).Chunk(0x0022, refAnims).Chunk(0x002A, nodeKind);
        b.Chunk(0x002C, std::int32_t(0));
        return b;
    }
};

std::vector<std::uint8_t> Floats(std::initializer_list<float> values) {
    std::vector<std::uint8_t> out;
    for (float v : values) {
        const auto* p = reinterpret_cast<const std::uint8_t*>(&v);
        out.insert(out.end(), p, p + sizeof v);
    }
    return out;
}

FPValue Call(ReferenceTarget* record, const MCHAR* fn, std::vector<FPValue> args = {}) {
    FPInterface* fpi = hostrt::FindObjectInterface(record, L"RefNode");
    EXPECT_NE(fpi, nullptr) << "no RefNode interface";
    FPValue result;
    if (fpi) hostrt::CallFromScript(fpi, fn, std::move(args), {}, result);
    return result;
}

ReferenceTarget* NewRecord() {
    return static_cast<ReferenceTarget*>(static_cast<Animatable*>(CreateInstance(kRecordSuper, kRefNode)));
}

class RefNodeTest : public vtest::SceneTest {
protected:
    RefNodeTest() : SceneTest("vandrels_refnode") {}

    INode* Box(const MCHAR* name) {
        auto* box = static_cast<Object*>(static_cast<Animatable*>(CreateInstance(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID)));
        INode* node = GetCOREInterface()->CreateObjectNode(box);
        node->SetName(name);
        return node;
    }

    // A record bound to a box node named name, owned by a helper node "Ref" (prefixing names when prefix).
    ReferenceTarget* AdoptedRecord(const MCHAR* name, bool prefix) {
        node_ = Box(name);
        ReferenceTarget* record = NewRecord();
        EXPECT_NE(record, nullptr);
        record->ReplaceReference(0, node_);
        ClassDesc* cd = FindClassDesc(HELPER_CLASS_ID, kHelperClass);
        helper_ = static_cast<Object*>(static_cast<Animatable*>(cd->Create(FALSE)));
        EXPECT_EQ(LoadInto(helper_, Bytes().Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0001, std::int32_t(1)).Get()),
                  IO_OK);
        GetCOREInterface()->CreateObjectNode(helper_)->SetName(L"Ref");
        SetPrefix(prefix);
        EXPECT_EQ(helper_->ReplaceReference(kFirstRecordRef, record), REF_SUCCEED);
        return record;
    }

    void SetPrefix(bool on) { static_cast<IParamBlock2*>(helper_->GetReference(0))->SetValue(kUseNamePrefix, 0, on ? 1 : 0); }

    void Rename(const MCHAR* name) {
        theHold.Begin();
        node_->SetName(name);
        theHold.Accept(L"Rename");
    }

    std::int32_t Count(ReferenceTarget* record) { return Call(record, L"NumRefAnims").i; }

    INode* node_ = nullptr;
    Object* helper_ = nullptr;
};

}  // namespace

TEST_F(RefNodeTest, ReferencesFollowTheListsAndOnlyOwnOnesMoveWhileLoading) {
    ReferenceTarget* record = NewRecord();
    ASSERT_NE(record, nullptr);
    // Unbound: the target slot, then material, parent, layer and the local dependent.
    EXPECT_EQ(record->NumRefs(), 5);
    Bytes lists;
    lists.Chunk(0x000C, std::int32_t(2)).Chunk(0x0029, std::int32_t(1)).Chunk(0x0022, std::int32_t(1));
    lists.Raw(0x002C, {1, 0, 0, 0, 7, 0, 0, 0});
    ASSERT_EQ(LoadInto(record, lists.Get()), IO_OK);
    EXPECT_EQ(record->NumRefs(), 2 + 4 + 2 + 1 + 1);
    for (int i = 0; i < record->NumRefs(); ++i) EXPECT_EQ(record->GetReference(i), nullptr) << i;

    // Slot 2 + 1 is the parent, 2 + 2 and 2 + 3 the children; a material slot holds nothing without bit 0x8.
    INode* parent = Box(L"Parent");
    INode* child = Box(L"Child");
    record->ReplaceReference(3, parent);
    record->ReplaceReference(5, child);
    auto* mtl = NewDefaultStdMat();
    record->ReplaceReference(2, mtl);
    EXPECT_EQ(record->GetReference(3), parent);
    EXPECT_EQ(record->GetReference(5), child);
    EXPECT_EQ(record->GetReference(2), nullptr);
    EXPECT_EQ(record->GetReference(4), nullptr);

    EXPECT_FALSE(record->CanTransferReference(0));
    EXPECT_FALSE(record->CanTransferReference(3)) << "outside loading nothing moves";
    record->DeleteMe();
}

TEST_F(RefNodeTest, LoadsEveryChunkInAnyOrderAndSavesThemInFileOrder) {
    // Every conditional chunk, in file order: overridden name, group flags, object offset, skin pose, wire colour,
    // display, render, user, bone properties, transform locks and selection sets.
    const std::uint32_t flags = 0x2 | 0x100 | 0x400 | 0x800 | 0x1000 | 0x2000 | 0x10000 | 0x20000 | 0x40000 |
                                0x100000 | 0x800000;
    std::vector<std::uint8_t> offset = Floats({1, 2, 3, 0, 0, 0.5f, 0.75f, 2, 2, 2, 0, 0, 0, 1});
    std::vector<std::uint8_t> skin = Floats({4, 5, 6, 0.1f, 0.2f, 0.3f, 0.4f});
    skin.insert(skin.end(), {3, 0, 0, 0});
    const std::vector<std::uint8_t> skinScale = Floats({1, 1, 1, 0, 0, 0, 1});
    skin.insert(skin.end(), skinScale.begin(), skinScale.end());
    std::vector<std::uint8_t> render(60);
    for (std::size_t i = 0; i < render.size(); ++i) render[i] = std::uint8_t(i + 1);

    Bytes canonical;
    canonical.Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0007, std::int32_t(1)).Text(0x0008, L"Box");
    canonical.Chunk(0x000A, flags).Text(0x000B, L"Crate").Chunk(0x000C, std::int32_t(1));
    canonical.Chunk(0x000D, std::uint8_t(0x5)).Raw(0x000E, offset).Raw(0x000F, skin);
    canonical.Chunk(0x0010, std::uint32_t(0x00FF8040)).Raw(0x0011, {0x03, 0x00, 9, 8}).Raw(0x0012, render);
    canonical.Text(0x0013, L"weight=2").Raw(0x0014, {1, 4, 5}).Chunk(0x0028, std::uint16_t(0x1FF));
    canonical.Chunk(0x0029, std::int32_t(0)).Chunk(0x0022, std::int32_t(0)).Chunk(0x002A, std::int32_t(0x10));
    canonical.Raw(0x002B, {2, 0, 0, 0, 4, 0, 0, 0, 9, 0, 0, 0});
    canonical.Raw(0x002C, {1, 0, 0, 0, 3, 0, 0, 0});

    Bytes shuffled;
    shuffled.Raw(0x002C, {1, 0, 0, 0, 3, 0, 0, 0}).Raw(0x002B, {2, 0, 0, 0, 4, 0, 0, 0, 9, 0, 0, 0});
    shuffled.Chunk(0x0028, std::uint16_t(0x1FF)).Raw(0x0014, {1, 4, 5}).Text(0x0013, L"weight=2");
    shuffled.Raw(0x0012, render).Raw(0x0011, {0x03, 0x00, 9, 8}).Chunk(0x0010, std::uint32_t(0x00FF8040));
    shuffled.Raw(0x000F, skin).Raw(0x000E, offset).Chunk(0x000D, std::uint8_t(0x5)).Chunk(0x0077, std::int32_t(1));
    shuffled.Chunk(0x000C, std::int32_t(1)).Text(0x000B, L"Crate").Chunk(0x000A, flags);
    shuffled.Text(0x0008, L"Box").Chunk(0x0007, std::int32_t(1)).Chunk(0x002A, std::int32_t(0x10));
    shuffled.Chunk(0x0022, std::int32_t(0)).Chunk(0x0029, std::int32_t(0)).Chunk(0x0000, std::uint32_t(0x46273400));

    ReferenceTarget* record = NewRecord();
    ASSERT_EQ(LoadInto(record, shuffled.Get()), IO_OK);
    EXPECT_EQ(SavedBy(record), canonical.Get());
    EXPECT_EQ(Call(record, L"GetName").s, std::wstring(L"Box"));

    // A count cut short fails the load and leaves no animatable slots behind.
    ReferenceTarget* damaged = NewRecord();
    Bytes cut;
    cut.Chunk(0x0022, std::int32_t(3)).Raw(0x002B, {2, 0, 0, 0, 4, 0, 0, 0});
    EXPECT_EQ(LoadInto(damaged, cut.Get()), IO_ERROR);
    EXPECT_EQ(Count(damaged), 0);
    ReferenceTarget* negative = NewRecord();
    EXPECT_EQ(LoadInto(negative, Bytes().Chunk(0x000C, std::int32_t(-1)).Get()), IO_ERROR);
    record->DeleteMe();
    damaged->DeleteMe();
    negative->DeleteMe();
}

TEST_F(RefNodeTest, ChunksSurviveSaveAndOpen) {
    ReferenceTarget* record = AdoptedRecord(L"Ref_Box", true);
    Call(record, L"SetName", {FPValue(L"Box")});
    EXPECT_EQ(std::wstring(node_->GetName()), L"Ref_Box");
    Rename(L"Ref_Crate");
    const std::int32_t n = Count(record);
    const Bytes expected = NodeChunks{0, L"Box", 0x2, L"Crate", n, 0}.Get();
    EXPECT_EQ(SavedBy(record), expected.Get());

    Interface* ip = GetCOREInterface();
    ASSERT_NE(ip->SaveToFile(file_.data()), 0);
    using Datas = std::vector<std::vector<std::uint8_t>>;
    EXPECT_EQ(vtest::SavedDataOf(vtest::ReadSavedObjects(file_), kRefNode), Datas{expected.Get()});

    ip->FileReset(TRUE);
    ASSERT_NE(ip->LoadFromFile(file_.data()), 0);
    INode* helperNode = ip->GetINodeByName(L"Ref");
    ASSERT_NE(helperNode, nullptr);
    ReferenceTarget* loaded = helperNode->GetObjectRef()->GetReference(kFirstRecordRef);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->ClassID(), kRefNode);
    EXPECT_EQ(SavedBy(loaded), expected.Get());
    // The node is the reference file's content: the shot does not hold it, and the record waits unbound.
    EXPECT_EQ(ip->GetINodeByName(L"Ref_Crate"), nullptr);
    EXPECT_EQ(loaded->GetReference(0), nullptr);
}

TEST_F(RefNodeTest, RenameWithoutPrefixBecomesTheLocalNameUndoably) {
    ReferenceTarget* record = AdoptedRecord(L"Box", false);
    const std::int32_t n = Count(record);
    Rename(L"Crate");
    EXPECT_EQ(SavedBy(record), (NodeChunks{0, L"Box", 0x2, L"Crate", n, 0}.Get().Get()));
    Rename(L"Barrel");
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(std::wstring(node_->GetName()), L"Crate");
    EXPECT_EQ(SavedBy(record), (NodeChunks{0, L"Box", 0x2, L"Crate", n, 0}.Get().Get()));
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(SavedBy(record), (NodeChunks{0, L"Box", 0, nullptr, n, 0}.Get().Get()));
    ASSERT_TRUE(theHold.Redo());
    EXPECT_EQ(SavedBy(record), (NodeChunks{0, L"Box", 0x2, L"Crate", n, 0}.Get().Get()));

    // With a local name the scripted reference name leaves the node alone.
    Call(record, L"SetName", {FPValue(L"Chest")});
    EXPECT_EQ(std::wstring(node_->GetName()), L"Crate");
    EXPECT_EQ(std::wstring(Call(record, L"GetName").s), L"Chest");
}

TEST_F(RefNodeTest, PrefixIsStrippedFromLocalNamesAndFollowsThePrefixSetting) {
    ReferenceTarget* record = AdoptedRecord(L"Ref_Box", true);
    Call(record, L"SetName", {FPValue(L"Box")});
    const std::int32_t n = Count(record);
    EXPECT_EQ(SavedBy(record), (NodeChunks{0, L"Box", 0, nullptr, n, 0}.Get().Get()));
    // The scripted name is prefixed on the node, without counting as a local rename.
    Call(record, L"SetName", {FPValue(L"Bin")});
    EXPECT_EQ(std::wstring(node_->GetName()), L"Ref_Bin");
    EXPECT_EQ(SavedBy(record), (NodeChunks{0, L"Bin", 0, nullptr, n, 0}.Get().Get()));

    Rename(L"Ref_Crate");
    EXPECT_EQ(SavedBy(record), (NodeChunks{0, L"Bin", 0x2, L"Crate", n, 0}.Get().Get()));
    // Switching the prefix off and on renames the node from its local name.
    SetPrefix(false);
    EXPECT_EQ(std::wstring(node_->GetName()), L"Crate");
    SetPrefix(true);
    EXPECT_EQ(std::wstring(node_->GetName()), L"Ref_Crate");

    // A name without the prefix stands alone from then on, and the prefix setting no longer touches it.
    Rename(L"Pine");
    EXPECT_EQ(SavedBy(record), (NodeChunks{0, L"Bin", 0x6, L"Pine", n, 0}.Get().Get()));
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(std::wstring(node_->GetName()), L"Ref_Crate");
    EXPECT_EQ(SavedBy(record), (NodeChunks{0, L"Bin", 0x2, L"Crate", n, 0}.Get().Get()));
    ASSERT_TRUE(theHold.Redo());
    SetPrefix(false);
    SetPrefix(true);
    EXPECT_EQ(std::wstring(node_->GetName()), L"Pine");
}

TEST_F(RefNodeTest, CloneKeepsLocalStateAndPointsAtTheParentRecordsClone) {
    ReferenceTarget* record = AdoptedRecord(L"Box", false);
    Rename(L"Crate");
    // A parent that is another node record: the clone points at the original unless the parent is cloned too.
    ReferenceTarget* parentRecord = NewRecord();
    record->ReplaceReference(Count(record) + 2, parentRecord);
    ASSERT_EQ(record->GetReference(Count(record) + 2), parentRecord);

    ReferenceTarget* clone = CloneRefHierarchy(record);
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(clone->ClassID(), kRefNode);
    EXPECT_EQ(clone->GetReference(0), nullptr);
    const int cloneBase = 1 + Count(clone);
    EXPECT_EQ(clone->GetReference(cloneBase + 1), parentRecord);
    EXPECT_EQ(SavedBy(clone), (NodeChunks{0, L"Box", 0x2, L"Crate", Count(clone), 0}.Get().Get()));
    clone->DeleteMe();
}

TEST_F(RefNodeTest, SceneChangesLetGoOfTheNodeExceptOpeningAnotherKindOfFile) {
    ReferenceTarget* record = NewRecord();
    INode* node = Box(L"Box");
    record->ReplaceReference(0, node);
    FileIOType library = IOTYPE_MATLIB;
    BroadcastNotification(NOTIFY_FILE_PRE_OPEN, &library);
    EXPECT_EQ(record->GetReference(0), node);
    BroadcastNotification(NOTIFY_SYSTEM_PRE_NEW);
    EXPECT_EQ(record->GetReference(0), nullptr);
    record->DeleteMe();
}
