// The animatable records' modifier operations and helper services on records that a loaded reference made: a
// modifier's context and its holder object, putting a locally changed modifier back into a freshly merged
// stack, handing a record's animatable to a new record one level up, and adopting a node through the helper.
// No script reaches these operations: the library makes the records, and the tests call the records' own
// virtual operations through the record classes' declarations (the inline accessors read their fields).
#include "anims/ref_anim.h"
#include "anims/ref_anim_mod.h"
#include "frame/module_state.h"
#include "helper/vandrels_helper.h"
#include "records/ref_node.h"
#include "records/subanim_space.h"

#include "core/fnpub.h"
#include "inode.h"
#include "io/chunk_reader.h"
#include "io/chunk_writer.h"
#include "notify.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "object.h"
#include "plugapi.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using vtest::CountDialogs;
using vtest::LastReport;
using vtest::Node;
using vtest::Quoted;
using vtest::RunInt;
using vtest::Script;

constexpr RefMessage kMsgNodeAdopted = 0x8663DF23;

// A dependent holding one reference that logs the messages it hears.
class Watcher : public ReferenceTarget {
public:
    Class_ID ClassID() override { return Class_ID(0x7E570002, 0); }
    void GetClassName(MSTR& s, bool) const override { s = L"Watcher"; }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int) override { return ref_; }
    void SetReference(int, RefTargetHandle t) override { ref_ = t; }
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage message, BOOL) override {
        heard.push_back(message);
        return REF_SUCCEED;
    }
    int Heard(RefMessage message) const { return int(std::count(heard.begin(), heard.end(), message)); }
    std::vector<RefMessage> heard;

private:
    RefTargetHandle ref_ = nullptr;
};

std::vector<std::wstring> Names(const Tab<WStr*>& path) {
    std::vector<std::wstring> names;
    for (WStr* name : path) names.push_back(name ? name->data() : L"<null>");
    return names;
}

std::vector<int> Numbers(const Tab<int>& path) { return std::vector<int>(path.begin(), path.end()); }

Matrix3 Offset(float x) {
    Matrix3 tm;
    tm.SetTrans(Point3(x, 2.f, 3.f));
    return tm;
}

class RefAnimModifiers : public vtest::SceneTest {
protected:
    RefAnimModifiers() : SceneTest("vandrels_refanim_mods") {}

    void SetUp() override {
        SceneTest::SetUp();
        reference_ = vtest::TempSceneFile("vandrels_refanim_mods_ref");
        Script(L"Vandrels.PrintTimes false");
        // Bent: a bend under a taper (the bend counts first from the bottom of the stack).
        Script(L"b = box name:\"Bent\"; addModifier b (bend()); addModifier b (taper()); saveMaxFile @\"" +
               std::wstring(reference_.data()) + L"\"");
        GetCOREInterface()->FileReset(TRUE);
        Script(L"Vandrels.AddVandrel @\"" + std::wstring(reference_.data()) + L"\"");
        const std::wstring stem = std::filesystem::path(reference_.ToUTF8()).stem().wstring();
        INode* helperNode = GetCOREInterface()->GetINodeByName(stem.c_str());
        ASSERT_NE(helperNode, nullptr);
        helper = static_cast<VandrelsHelper*>(helperNode->GetObjectRef());
        for (RefNode* record : helper->NodeRecords()) {
            auto* n = record ? static_cast<INode*>(record->GetReference(0)) : nullptr;
            if (n && std::wstring(n->GetName()).ends_with(L"Bent")) {
                nodeRecord = record;
                node = n;
            }
        }
        ASSERT_NE(nodeRecord, nullptr);
        derived = dynamic_cast<IDerivedObject*>(node->GetObjectRef());
        ASSERT_TRUE(derived && derived->NumModifiers() == 2);
        bend = derived->GetModifier(1);
        bendRecord = RecordHolding(bend);
        ASSERT_NE(bendRecord, nullptr);
        ASSERT_EQ(Names(bendRecord->GetPath()), (std::vector<std::wstring>{L"Mods", L"Bend"}));
        ASSERT_EQ(Numbers(bendRecord->GetPathByNumber()), (std::vector<int>{2, 1}));
    }
    void TearDown() override {
        SceneTest::TearDown();
        std::filesystem::remove(reference_.ToUTF8());
    }

    RefAnim* RecordHolding(Animatable* anim) {
        for (int i = 0; i < nodeRecord->NumRefAnims(); ++i)
            if (RefAnim* record = nodeRecord->GetRefAnim(i); record && record->GetAnim() == anim) return record;
        return nullptr;
    }

    // A box named name with a bend under a taper, as a fresh merge brings Bent again.
    INode* FreshCopy(const MCHAR* name) {
        Script(L"b = box name:\"" + std::wstring(name) + L"\"; addModifier b (bend()); addModifier b (taper())");
        return GetCOREInterface()->GetINodeByName(name);
    }

    void ExtendPath(RefAnim* record, const MCHAR* name, int number) {
        FPInterface* fpi = hostrt::FindObjectInterface(record, L"RefAnim");
        ASSERT_NE(fpi, nullptr);
        FPValue size;
        hostrt::CallFromScript(fpi, L"GetPathSize", {}, {}, size);
        FPValue none;
        const int last = size.i + 1;
        hostrt::CallFromScript(fpi, L"SetPathSize", {FPValue(last)}, {}, none);
        hostrt::CallFromScript(fpi, L"SetPathItem", {FPValue(last), FPValue(name)}, {}, none);
        hostrt::CallFromScript(fpi, L"SetPathByNumberItem", {FPValue(last), FPValue(number)}, {}, none);
    }

    MSTR reference_;
    VandrelsHelper* helper = nullptr;
    RefNode* nodeRecord = nullptr;
    INode* node = nullptr;
    IDerivedObject* derived = nullptr;
    Modifier* bend = nullptr;
    RefAnim* bendRecord = nullptr;
};

TEST_F(RefAnimModifiers, TheContextAndTheHolderObjectOfAModifier) {
    ModContext* context = bendRecord->GetModContext(node);
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(context, derived->GetModContext(1));
    // Below the bend the path's parent is the modifier, not a derived object: no context.
    RefAnim* blockRecord = RecordHolding(bend->SubAnim(0));
    ASSERT_NE(blockRecord, nullptr);
    EXPECT_EQ(blockRecord->GetModContext(node), nullptr);

    // A context without local data makes no holder.
    ModContext* out = context;
    EXPECT_EQ(bendRecord->MakeHolderObject(node, &out), nullptr);
    EXPECT_EQ(out, nullptr);

    int localData = 7;
    context->localData = &localData;
    delete context->tm;
    context->tm = new Matrix3(Offset(1.f));
    Object* holder = bendRecord->MakeHolderObject(node, &out);
    context->localData = nullptr;
    EXPECT_EQ(out, context);
    auto* held = dynamic_cast<IDerivedObject*>(holder);
    ASSERT_NE(held, nullptr);
    EXPECT_FALSE(held->IsWorldSpace());
    ASSERT_EQ(held->NumModifiers(), 1);
    EXPECT_EQ(held->GetModifier(0), bend);
    ASSERT_NE(held->GetModContext(0)->tm, nullptr);
    EXPECT_EQ(*held->GetModContext(0)->tm, Offset(1.f));
    EXPECT_EQ(held->GetModContext(0)->localData, &localData);
    ASSERT_NE(held->GetObjRef(), nullptr);
    EXPECT_EQ(held->GetObjRef()->ClassID(), EMPTY_BASE_OBJECT_CLASS_ID);
    // The scene's stack keeps its bend.
    EXPECT_EQ(derived->GetModifier(1), bend);

    // The form with a given context takes it as it is, none included.
    auto* bare = dynamic_cast<IDerivedObject*>(bendRecord->MakeHolderObject(node, static_cast<ModContext*>(nullptr)));
    ASSERT_TRUE(bare && bare->NumModifiers() == 1);
    EXPECT_EQ(bare->GetModifier(0), bend);
    EXPECT_EQ(bare->GetModContext(0)->tm, nullptr);
    holder->DeleteMe();
    bare->DeleteMe();
}

TEST_F(RefAnimModifiers, AModifiedModifierGoesBackInPlaceOfTheMergedOne) {
    INode* fresh = FreshCopy(L"Fresh");
    auto* stack = dynamic_cast<IDerivedObject*>(fresh->GetObjectRef());
    ASSERT_TRUE(stack && stack->NumModifiers() == 2);
    Modifier* merged = stack->GetModifier(1);
    Modifier* taper = stack->GetModifier(0);
    auto* user = new Watcher();  // something local that uses the merged bend
    ASSERT_EQ(user->ReplaceReference(0, merged), REF_SUCCEED);
    Matrix3 given = Offset(5.f);
    ModContext context(&given, nullptr);

    // A clean record leaves the merged stack alone.
    bendRecord->OverrideModifier(fresh, nullptr, &context);
    EXPECT_EQ(stack->GetModifier(1), merged);

    // Modified: the held bend takes the merged one's place and users, with the context of the holder object
    // that kept it on top.
    bendRecord->SetOverrideState(kOverrideModified);
    Matrix3 kept = Offset(9.f);
    ModContext keptContext(&kept, nullptr);
    Object* holder = bendRecord->MakeHolderObject(node, &keptContext);
    bendRecord->OverrideModifier(fresh, static_cast<IDerivedObject*>(holder), &context);
    ASSERT_EQ(stack->NumModifiers(), 2);
    EXPECT_EQ(stack->GetModifier(0), taper);
    EXPECT_EQ(stack->GetModifier(1), bend);
    ASSERT_NE(stack->GetModContext(1)->tm, nullptr);
    EXPECT_EQ(*stack->GetModContext(1)->tm, kept);
    EXPECT_EQ(user->GetReference(0), bend);
    EXPECT_EQ(Numbers(bendRecord->GetPathByNumber()), (std::vector<int>{2, 1}));
    EXPECT_EQ(bendRecord->GetAnim(), bend);

    // Without a holder the given context goes with it.
    INode* again = FreshCopy(L"Again");
    auto* second = dynamic_cast<IDerivedObject*>(again->GetObjectRef());
    bendRecord->OverrideModifier(again, nullptr, &context);
    EXPECT_EQ(second->GetModifier(1), bend);
    ASSERT_NE(second->GetModContext(1)->tm, nullptr);
    EXPECT_EQ(*second->GetModContext(1)->tm, given);

    user->DeleteMe();
    holder->DeleteMe();
}

// The modifier record's own collect and override: a Modified bend keeps its context (and, with local data, a
// holder object that a save lets go of again) and goes back into a fresh stack; a clean one follows the merged
// bend.
TEST_F(RefAnimModifiers, AModifierRecordKeepsItsContextAndPutsItsModifierBack) {
    auto* record = dynamic_cast<RefAnimWithRefsMod*>(bendRecord);
    ASSERT_NE(record, nullptr) << "a bend holds its block: a modifier record with references";
    // Reference 1 is the holder object; the items the bend refers to (its block) follow it.
    ASSERT_EQ(record->NumRefs(), 3);
    EXPECT_EQ(record->GetReference(1), nullptr);
    EXPECT_EQ(record->GetReference(2), bend->GetReference(0));
    ModContext* context = derived->GetModContext(1);
    delete context->tm;
    context->tm = new Matrix3(Offset(4.f));

    // Clean: a collect keeps nothing.
    record->Collect(node);
    EXPECT_EQ(record->GetKeptContext(), nullptr);

    // Modified: the context is kept (no local data, no holder) ...
    record->SetOverrideState(kOverrideModified);
    record->Collect(node);
    ASSERT_NE(record->GetKeptContext(), nullptr);
    ASSERT_NE(record->GetKeptContext()->tm, nullptr);
    EXPECT_EQ(*record->GetKeptContext()->tm, Offset(4.f));
    EXPECT_EQ(record->GetHolderObject(), nullptr);

    // ... and saved with the record: 0x0029, the count of held items, then the context (52 + 24 bytes).
    hostrt::ChunkWriter w;
    ASSERT_EQ(record->Save(&w), IO_OK);
    const std::vector<std::uint8_t> bytes = w.Bytes();
    hostrt::ChunkReader r(bytes.data(), bytes.size());
    std::vector<std::pair<USHORT, ULONG>> chunks;
    while (r.OpenChunk() == IO_OK) {
        chunks.emplace_back(r.CurChunkID(), r.CurChunkLength());
        r.CloseChunk();
    }
    ASSERT_EQ(chunks.size(), 3u);
    EXPECT_EQ(chunks[0].first, 0x0029);
    EXPECT_EQ(chunks[1], (std::pair<USHORT, ULONG>{0x002A, 4}));
    EXPECT_EQ(chunks[2], (std::pair<USHORT, ULONG>{0x0933, 76}));
    hostrt::ChunkReader again(bytes.data(), bytes.size());
    auto* loaded = new RefAnimWithRefsMod();
    ASSERT_EQ(loaded->Load(&again), IO_OK);
    ASSERT_TRUE(loaded->GetKeptContext() && loaded->GetKeptContext()->tm);
    EXPECT_EQ(*loaded->GetKeptContext()->tm, Offset(4.f));
    EXPECT_NE(loaded->GetKeptContext()->box, nullptr);
    loaded->DeleteMe();

    // With local data a holder keeps the bend; while saving it goes when the save is over. (A record of this
    // process's own, so that the saving mode set here is the one it reads; its path is named the way this
    // process names the levels.)
    auto* saving = new RefAnimWithRefsMod();
    MSTR modsName, bendName;
    ASSERT_EQ(GetSubAnimByIndex(node, nullptr, 2, nullptr, modsName), derived);
    ASSERT_EQ(GetSubAnimByIndex(derived, node, 1, nullptr, bendName), bend);
    saving->SetPath(Tab<WStr*>{new WStr(modsName), new WStr(bendName)});
    saving->SetPathByNumber(Tab<int>{2, 1});
    saving->SetAnim(bend);
    saving->SetOverrideState(kOverrideModified);
    int localData = 3;
    context->localData = &localData;
    {
        vandrels::OperationModeScope mode(vandrels::kModeSaving);
        saving->Collect(node);
    }
    context->localData = nullptr;
    Object* holder = saving->GetHolderObject();
    ASSERT_NE(holder, nullptr);
    EXPECT_EQ(saving->GetReference(1), holder);
    EXPECT_TRUE(saving->IsRealDependency(holder));
    auto* held = dynamic_cast<IDerivedObject*>(holder);
    ASSERT_TRUE(held && held->NumModifiers() == 1 && held->GetModifier(0) == bend);
    BroadcastNotification(NOTIFY_FILE_POST_SAVE);
    EXPECT_EQ(saving->GetHolderObject(), nullptr);
    saving->DeleteMe();

    // The override puts the held bend in place of the merged one with the kept context.
    INode* second = FreshCopy(L"Second");
    auto* secondStack = dynamic_cast<IDerivedObject*>(second->GetObjectRef());
    record->Override(second);
    EXPECT_EQ(secondStack->GetModifier(1), bend);
    ASSERT_NE(secondStack->GetModContext(1)->tm, nullptr);
    EXPECT_EQ(*secondStack->GetModContext(1)->tm, Offset(4.f));
    EXPECT_EQ(record->GetHolderObject(), nullptr);

    // A clean record follows the merged bend and leaves the merged stack alone.
    record->SetOverrideState(0);
    INode* fresh = FreshCopy(L"Fresh");
    auto* freshStack = dynamic_cast<IDerivedObject*>(fresh->GetObjectRef());
    Modifier* mergedBend = freshStack->GetModifier(1);
    record->Override(fresh);
    EXPECT_EQ(record->GetAnim(), mergedBend);
    EXPECT_EQ(freshStack->GetModifier(1), mergedBend);
}

TEST_F(RefAnimModifiers, ARecordWhoseShorterPathStillReachesItsAnimatableHandsItUp) {
    const int records = nodeRecord->NumRefAnims();
    // One level up from the bend is the derived object: nothing moves.
    bendRecord->PromoteToParent(node);
    EXPECT_EQ(nodeRecord->NumRefAnims(), records);
    EXPECT_EQ(bendRecord->GetAnim(), bend);

    // A level below the bend's entry that names the bend itself: a Modified modifier record takes it over.
    ExtendPath(bendRecord, L"Ghost", 7);
    bendRecord->PromoteToParent(node);
    ASSERT_EQ(nodeRecord->NumRefAnims(), records + 1);
    RefAnim* promoted = nodeRecord->GetRefAnim(records);
    ASSERT_NE(promoted, nullptr);
    EXPECT_EQ(promoted->ClassID(), REFANIM_MOD_CLASS_ID);
    EXPECT_EQ(promoted->GetAnim(), bend);
    EXPECT_EQ(promoted->GetOverrideState(), kOverrideModified);
    EXPECT_EQ(Names(promoted->GetPath()), (std::vector<std::wstring>{L"Mods", L"Bend"}));
    EXPECT_EQ(Numbers(promoted->GetPathByNumber()), (std::vector<int>{2, 1}));
    EXPECT_EQ(promoted->GetOwner(), nodeRecord);
    EXPECT_EQ(bendRecord->GetAnim(), nullptr);

    // Anything but a modifier goes to a plain record.
    Animatable* block = bend->SubAnim(0);
    RefAnim* blockRecord = RecordHolding(block);
    ASSERT_NE(blockRecord, nullptr);
    const std::vector<std::wstring> blockPath = Names(blockRecord->GetPath());
    ExtendPath(blockRecord, L"Ghost", 3);
    blockRecord->PromoteToParent(node);
    ASSERT_EQ(nodeRecord->NumRefAnims(), records + 2);
    RefAnim* plain = nodeRecord->GetRefAnim(records + 1);
    ASSERT_NE(plain, nullptr);
    EXPECT_EQ(plain->ClassID(), REFANIM_CLASS_ID);
    EXPECT_EQ(plain->GetAnim(), block);
    EXPECT_EQ(Names(plain->GetPath()), blockPath);
}

TEST_F(RefAnimModifiers, AdoptingANodeMakesItsRecordOnce) {
    Script(L"box name:\"Stray\"; box name:\"Loose\"");
    INode* stray = GetCOREInterface()->GetINodeByName(L"Stray");
    INode* loose = GetCOREInterface()->GetINodeByName(L"Loose");
    ASSERT_TRUE(stray && loose);
    helper->RememberDeletedNode(L"Renamed");
    helper->RememberDeletedNode(L"Other");
    helper->RememberDeletedNode(L"Renamed");
    auto* watcher = new Watcher();
    ASSERT_EQ(watcher->ReplaceReference(0, stray), REF_SUCCEED);
    const int records = helper->NodeRecords().Count();

    bendRecord->AdoptNode(stray, L"Renamed");
    ASSERT_EQ(helper->NodeRecords().Count(), records + 1);
    RefNode* adopted = helper->NodeRecords()[records];
    ASSERT_NE(adopted, nullptr);
    EXPECT_EQ(adopted->GetReference(0), stray);
    EXPECT_EQ(helper->GetReference(helper->Slots().NodeRecord(records)), adopted);
    EXPECT_EQ(std::wstring(adopted->GetName().data()), L"Renamed");
    EXPECT_EQ(adopted->GetOverrideFlags() & kNodeOverriddenName, kNodeOverriddenName);
    ASSERT_EQ(helper->DeletedNodeNames().Count(), 1);
    EXPECT_EQ(std::wstring(helper->DeletedNodeNames()[0]->data()), L"Other");
    EXPECT_EQ(watcher->Heard(kMsgNodeAdopted), 1);

    // A node that has a record is left alone.
    bendRecord->AdoptNode(stray, L"Again");
    EXPECT_EQ(helper->NodeRecords().Count(), records + 1);
    EXPECT_EQ(std::wstring(adopted->GetName().data()), L"Renamed");
    EXPECT_EQ(watcher->Heard(kMsgNodeAdopted), 1);

    // Without a name the node's own name is taken, and it is no name override.
    bendRecord->AdoptNode(loose, nullptr);
    ASSERT_EQ(helper->NodeRecords().Count(), records + 2);
    EXPECT_EQ(std::wstring(helper->NodeRecords()[records + 1]->GetName().data()), L"Loose");
    EXPECT_EQ(helper->NodeRecords()[records + 1]->GetOverrideFlags() & kNodeOverriddenName, 0u);

    watcher->DeleteMe();
}

}  // namespace
