// The node record's modifier mirrors through the host: their chunks byte for byte (referenced entries as empty
// chunks unless the reference persists, local and boundary entries with their fields, the change lists), where
// their modifiers sit among the record's references, a damaged entry, cloning and the diagnostics lines; and the
// mirrors a referenced node with a world-space stack over two derived objects gets when a reference is added.
#include "vandrels_library.h"

#include "core/class_directory.h"
#include "core/fnpub.h"
#include "inode.h"
#include "iparamb2.h"
#include "istdplug.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "object.h"
#include "platform/listener_capture.h"
#include "plugapi.h"
#include "saved_objects.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <type_traits>

namespace {

using vtest::LoadInto;
using vtest::Script;
using vtest::SavedBy;
using Bytes = vtest::ChunkBytes;

constexpr SClass_ID kRecordSuper = 0x8663DFA6;
const Class_ID kRefNode(0x8663DFA6, 0x3F273884);
const Class_ID kHelperClass(0x8663DFA5, 0x3F273879);
constexpr ParamID kPersistRef = 6;
constexpr int kFirstRecordRef = 2;

// A context payload: 52 bytes of transform and 24 of box, each byte telling its position.
std::vector<std::uint8_t> ContextBytes() {
    std::vector<std::uint8_t> out(76);
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = std::uint8_t(i + 1);
    return out;
}

Bytes ModEntry(std::uint8_t state, const MCHAR* name, bool context = false) {
    Bytes b;
    b.Chunk(0x0000, state).Text(0x0001, name);
    if (context) b.Raw(0x0002, ContextBytes());
    return b;
}

// The change lists: two deleted (the second twice the same name), one renamed, one toggled whose modifier was
// missing at the last re-application (complemented index).
void AddChangeLists(Bytes& b) {
    b.Chunk(0x001C, std::int32_t(2));
    b.Wrapped(0x001D, Bytes().Text(0x0000, L"Twist").Chunk(0x0001, std::int32_t(4)));
    b.Wrapped(0x001D, Bytes().Text(0x0000, L"Twist").Chunk(0x0001, std::int32_t(1)));
    b.Chunk(0x001E, std::int32_t(1));
    b.Wrapped(0x001F, Bytes().Text(0x0000, L"Bend").Chunk(0x0001, std::int32_t(2)).Text(0x0002, L"Bent"));
    b.Chunk(0x0020, std::int32_t(1));
    b.Wrapped(0x0021, Bytes().Text(0x0000, L"Taper").Chunk(0x0001, std::int32_t(~1)).Chunk(0x0002, std::uint8_t(5)));
}

// A record with one local child and one exclusion light, two world-space entries (a referenced one, a local
// one with its context) and three object-space entries (a local one, a boundary, a referenced one).
// persisted: saved under a persisting reference, with the referenced entries' modifiers restored, so that they
// are written as records too, after the counts at merge. Without localItems the child and the light are left out.
Bytes MirrorRecord(bool persisted = false, bool localItems = true) {
    Bytes b;
    b.Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0007, std::int32_t(0)).Text(0x0008, L"Box");
    b.Chunk(0x000A, std::uint32_t(0x10));
    if (localItems) b.Chunk(0x000C, std::int32_t(1));
    if (persisted) b.Raw(0x0024, std::vector<std::uint8_t>(8, 0));
    b.Chunk(0x0015, std::int32_t(2));
    if (persisted)
        b.Wrapped(0x0017, ModEntry(0, L"Gravity Binding"));
    else
        b.Raw(0x0019, {});
    b.Wrapped(0x0017, ModEntry(1, L"Wind Binding", true));
    b.Chunk(0x0016, std::int32_t(3));
    b.Wrapped(0x0018, ModEntry(1, L"Taper")).Wrapped(0x0018, ModEntry(3, L""));
    if (persisted)
        b.Wrapped(0x0018, ModEntry(0, L"Bend"));
    else
        b.Raw(0x001A, {});
    AddChangeLists(b);
    b.Chunk(0x0029, std::int32_t(localItems ? 1 : 0)).Chunk(0x0022, std::int32_t(0)).Chunk(0x002A, std::int32_t(0));
    b.Chunk(0x002C, std::int32_t(0));
    return b;
}

// Reference slots of MirrorRecord's layout (no animatable records): target, material, parent, the child,
// layer, two world-space and three object-space modifiers, the light, the local dependent.
enum Slot {
    kChild = 3, kLayer = 4, kWs0 = 5, kWs1 = 6, kOs0 = 7, kOsBoundary = 8, kOs2 = 9, kLight = 10, kLocalDep = 11
};

ReferenceTarget* NewRecord() {
    return static_cast<ReferenceTarget*>(static_cast<Animatable*>(CreateInstance(kRecordSuper, kRefNode)));
}

template <class T> T* Make(SClass_ID sc, Class_ID id, const MCHAR* name = nullptr) {
    auto* made = dynamic_cast<T*>(static_cast<Animatable*>(CreateInstance(sc, id)));
    EXPECT_NE(made, nullptr);
    if constexpr (std::is_base_of_v<Modifier, T>)
        if (made && name) made->SetName(name);
    return made;
}

int Handle(Animatable* anim) { return int(Animatable::GetHandleByAnim(anim)); }

class RefNodeMods : public vtest::SceneTest {
protected:
    RefNodeMods() : SceneTest("vandrels_refnode_mods") {}

    // A helper node "Ref" holding record in its first record slot.
    Object* Adopt(ReferenceTarget* record, bool persist) {
        ClassDesc* cd = FindClassDesc(HELPER_CLASS_ID, kHelperClass);
        auto* helper = static_cast<Object*>(static_cast<Animatable*>(cd->Create(FALSE)));
        EXPECT_EQ(LoadInto(helper, Bytes().Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0001, std::int32_t(1)).Get()),
                  IO_OK);
        GetCOREInterface()->CreateObjectNode(helper)->SetName(L"Ref");
        static_cast<IParamBlock2*>(helper->GetReference(0))->SetValue(kPersistRef, 0, persist ? 1 : 0);
        EXPECT_EQ(helper->ReplaceReference(kFirstRecordRef, record), REF_SUCCEED);
        return helper;
    }

    // The record loaded from MirrorRecord with its modifiers and light restored the way the host does after
    // reading a scene file; the first world-space slot stays empty unless withWsFirst.
    ReferenceTarget* LoadedRecord(bool withWsFirst) {
        ReferenceTarget* record = NewRecord();
        EXPECT_EQ(LoadInto(record, MirrorRecord().Get()), IO_OK);
        if (withWsFirst) {
            EXPECT_EQ(record->ReplaceReference(kWs0, wsFirst_), REF_SUCCEED);
        }
        EXPECT_EQ(record->ReplaceReference(kWs1, binding_), REF_SUCCEED);
        EXPECT_EQ(record->ReplaceReference(kOs0, taper_), REF_SUCCEED);
        EXPECT_EQ(record->ReplaceReference(kOs2, bend_), REF_SUCCEED);
        EXPECT_EQ(record->ReplaceReference(kLight, light_), REF_SUCCEED);
        return record;
    }

    void SetUp() override {
        SceneTest::SetUp();
        wsFirst_ = Make<Modifier>(WSM_CLASS_ID, HOST_SPACE_WARP_BINDING_CLASS_ID, L"Gravity Binding");
        binding_ = Make<Modifier>(WSM_CLASS_ID, HOST_SPACE_WARP_BINDING_CLASS_ID, L"Wind Binding");
        taper_ = Make<Modifier>(OSM_CLASS_ID, HOST_TAPER_CLASS_ID, L"Taper");
        bend_ = Make<Modifier>(OSM_CLASS_ID, HOST_BEND_CLASS_ID, L"Bend");
        light_ = Make<Object>(LIGHT_CLASS_ID, HOST_OMNI_LIGHT_CLASS_ID);
        // Something has to hold them besides the record, as a node's stack would.
        for (ReferenceTarget* item : {static_cast<ReferenceTarget*>(wsFirst_), static_cast<ReferenceTarget*>(binding_),
                                      static_cast<ReferenceTarget*>(taper_), static_cast<ReferenceTarget*>(bend_),
                                      static_cast<ReferenceTarget*>(light_)})
            item->SetAFlag(A_LOCK_TARGET);
    }

    Modifier* wsFirst_ = nullptr;
    Modifier* binding_ = nullptr;
    Modifier* taper_ = nullptr;
    Modifier* bend_ = nullptr;
    Object* light_ = nullptr;
};

}  // namespace

TEST_F(RefNodeMods, MirrorsLoadAndSaveByteForByteWithTheirModifiersBetweenLayerAndLights) {
    ReferenceTarget* record = NewRecord();
    ASSERT_EQ(LoadInto(record, MirrorRecord().Get()), IO_OK);
    EXPECT_EQ(SavedBy(record), MirrorRecord().Get());
    ASSERT_EQ(record->NumRefs(), 12);
    for (int i = 0; i < record->NumRefs(); ++i) EXPECT_EQ(record->GetReference(i), nullptr) << i;
    record->DeleteMe();

    // Restored references land in their lists: the mirrors sit between layer and exclusion light.
    record = LoadedRecord(true);
    INode* child = GetCOREInterface()->CreateObjectNode(Make<Object>(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID));
    ASSERT_EQ(record->ReplaceReference(kChild, child), REF_SUCCEED);
    const std::pair<int, ReferenceTarget*> expected[] = {{kChild, child}, {kLayer, nullptr}, {kWs0, wsFirst_},
                                                         {kWs1, binding_}, {kOs0, taper_}, {kOsBoundary, nullptr},
                                                         {kOs2, bend_}, {kLight, light_}, {kLocalDep, nullptr}};
    for (const auto& [slot, target] : expected) EXPECT_EQ(record->GetReference(slot), target) << slot;
    // A referenced modifier restored into an empty position still saves as an empty entry.
    EXPECT_EQ(SavedBy(record), MirrorRecord().Get());

    // Under a persisting reference, referenced entries are written as records too, after the counts at merge.
    Adopt(record, true);
    EXPECT_EQ(SavedBy(record), MirrorRecord(true).Get());
    // Loading that gives the same record back, the referenced entry included.
    ReferenceTarget* reloaded = NewRecord();
    ASSERT_EQ(LoadInto(reloaded, MirrorRecord(true).Get()), IO_OK);
    Adopt(reloaded, true);
    EXPECT_EQ(SavedBy(reloaded), MirrorRecord(true).Get());
}

TEST_F(RefNodeMods, EntriesFillTheirPositionsWhateverComesFirstAndADamagedEntryEmptiesTheMirrors) {
    // Entries ahead of their count chunk keep their positions; a count above the entries leaves empty places.
    Bytes early;
    early.Wrapped(0x0018, ModEntry(1, L"Taper")).Chunk(0x0016, std::int32_t(2));
    early.Wrapped(0x001D, Bytes().Text(0x0000, L"Twist").Chunk(0x0001, std::int32_t(0))).Chunk(0x001C, std::int32_t(2));
    ReferenceTarget* record = NewRecord();
    ASSERT_EQ(LoadInto(record, early.Get()), IO_OK);
    EXPECT_EQ(record->NumRefs(), 5 + 2);
    ASSERT_EQ(record->ReplaceReference(4, taper_), REF_SUCCEED);
    Bytes mods;
    mods.Chunk(0x0016, std::int32_t(2)).Wrapped(0x0018, ModEntry(1, L"Taper")).Raw(0x001A, {});
    mods.Chunk(0x001C, std::int32_t(2)).Wrapped(0x001D, Bytes().Text(0x0000, L"Twist").Chunk(0x0001, std::int32_t(0)));
    const std::vector<std::uint8_t> saved = SavedBy(record);
    const std::vector<std::uint8_t> expectedMods = mods.Get();
    EXPECT_NE(std::search(saved.begin(), saved.end(), expectedMods.begin(), expectedMods.end()), saved.end());

    // A state cut short fails the load; no mirror positions are left behind.
    ReferenceTarget* damaged = NewRecord();
    Bytes cut;
    cut.Chunk(0x0015, std::int32_t(2)).Raw(0x0019, {});
    cut.Wrapped(0x0017, Bytes().Raw(0x0000, {}).Text(0x0001, L"Bend"));
    EXPECT_EQ(LoadInto(damaged, cut.Get()), IO_ERROR);
    EXPECT_EQ(damaged->NumRefs(), 5);
    EXPECT_EQ(LoadInto(damaged, Bytes().Chunk(0x0016, std::int32_t(-4)).Get()), IO_ERROR);
    EXPECT_EQ(damaged->NumRefs(), 5);
    record->DeleteMe();
    damaged->DeleteMe();
}

TEST_F(RefNodeMods, CloneCopiesTheListsAndSharesTheModifiers) {
    ReferenceTarget* record = LoadedRecord(false);
    ReferenceTarget* clone = CloneRefHierarchy(record);
    ASSERT_NE(clone, nullptr);
    // The clone has no local children or lights: its mirrors begin right after the layer.
    ASSERT_EQ(clone->NumRefs(), 1 + 4 + 2 + 3);
    EXPECT_EQ(clone->GetReference(4), nullptr);
    EXPECT_EQ(clone->GetReference(5), binding_);
    EXPECT_EQ(clone->GetReference(6), taper_);
    EXPECT_EQ(clone->GetReference(7), nullptr);
    EXPECT_EQ(clone->GetReference(8), bend_);
    EXPECT_EQ(SavedBy(clone), MirrorRecord(false, false).Get());
    // Freeing the clone leaves the original's lists alone.
    clone->DeleteMe();
    EXPECT_EQ(SavedBy(record), MirrorRecord().Get());
    record->DeleteMe();
}

TEST_F(RefNodeMods, FullPrintEndsWithTheMirrorsAndChangeLists) {
    ReferenceTarget* record = LoadedRecord(false);
    Object* helper = Adopt(record, false);
    FPInterface* fpi = hostrt::FindObjectInterface(helper, L"VandrelsHelper");
    ASSERT_NE(fpi, nullptr);
    auto& listener = hostrt::Listener::Instance();
    listener.Clear();
    FPValue result;
    FPParams mode{FPValue(TYPE_INDEX, 1)};
    ASSERT_EQ(fpi->Invoke(5, result, &mode), FPS_OK);
    const std::wstring text = listener.Text();

    MSTR lines;
    lines.printf(L"\nNode Loaded: FALSE\nOverridden Flags: 16\nOverridden Material: None"
                 L"\nWSRefMods: \nNull RefMod: "
                 L"\nName: Wind Binding, Index: -1, State: 1, Toggles: 7, Modifier: %d"
                 L"\nOSRefMods: \nName: Taper, Index: -1, State: 1, Toggles: 7 - %d (Taper)"
                 L"\nName: , Index: -1, State: 3, Toggles: 0 - 0"
                 L"\nName: Bend, Index: -1, State: 0, Toggles: 7 - %d (Bend)"
                 L"\nDeletedMods: \nName: Twist, Index: 4\nName: Twist, Index: 1"
                 L"\nRenamedMods: \nName: Bend, Index: 2, NewName: Bent"
                 L"\nToggledMods: \nName: Taper, Index: -2, Toggles: 5\n",
                 Handle(binding_), Handle(taper_), Handle(bend_));
    EXPECT_NE(text.find(L"RefNode: Box - 0\n\n" + std::wstring(lines.data())), std::wstring::npos) << text;
}

// ------------------------------------------------------------------------------------------ through a reference

namespace {

class ReferencedStacks : public RefNodeMods {
protected:
    void SetUp() override {
        RefNodeMods::SetUp();
        std::filesystem::path path(file_.ToUTF8());
        path.replace_filename(path.stem().string() + "_ref.max");
        reference_ = MSTR::FromUTF8(path.string());
    }
    void TearDown() override {
        std::filesystem::remove(reference_.ToUTF8());
        RefNodeMods::TearDown();
    }

    // "Stack": a world-space binding over two derived objects, Taper and Bend2 (off in renders) on top of Bend;
    // "Twin" uses the lower derived object (Bend) as its object.
    void WriteReference() {
        Interface* ip = GetCOREInterface();
        auto* box = Make<Object>(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID);
        IDerivedObject* lower = CreateDerivedObject(box);
        lower->AddModifier(Make<Modifier>(OSM_CLASS_ID, HOST_BEND_CLASS_ID, L"Bend"));
        IDerivedObject* upper = CreateDerivedObject(lower);
        Modifier* bend2 = Make<Modifier>(OSM_CLASS_ID, HOST_BEND_CLASS_ID, L"Bend2");
        bend2->DisableModInRender();
        upper->AddModifier(bend2);
        upper->AddModifier(Make<Modifier>(OSM_CLASS_ID, HOST_TAPER_CLASS_ID, L"Taper"));
        INode* stack = ip->CreateObjectNode(upper);
        stack->SetName(L"Stack");
        Modifier* binding = Make<Modifier>(WSM_CLASS_ID, HOST_SPACE_WARP_BINDING_CLASS_ID, L"Wind Binding");
        ASSERT_TRUE(ip->AddModifier(*stack, *binding));
        ip->CreateObjectNode(lower)->SetName(L"Twin");
        ASSERT_NE(ip->SaveToFile(reference_.data()), 0);
        ip->FileReset(TRUE);
    }

    FPInterface* Helper() {
        const std::wstring name = std::filesystem::path(reference_.ToUTF8()).stem().wstring();
        INode* node = GetCOREInterface()->GetINodeByName(name.c_str());
        EXPECT_NE(node, nullptr);
        return node ? hostrt::FindObjectInterface(node->GetObjectRef(), L"VandrelsHelper") : nullptr;
    }

    ReferenceTarget* RecordOf(const MCHAR* name) {
        FPInterface* helper = Helper();
        if (!helper) return nullptr;
        FPValue count;
        helper->Invoke(7, count);
        for (int i = 0; i < count.i; ++i) {
            FPValue record;
            FPParams index{FPValue(TYPE_INDEX, i)};
            helper->Invoke(8, record, &index);
            auto* node = record.r ? dynamic_cast<INode*>(record.r->GetReference(0)) : nullptr;
            if (node && std::wstring(node->GetName()).ends_with(name)) return record.r;
        }
        ADD_FAILURE() << "no record for " << WStr(name).ToUTF8();
        return nullptr;
    }

    std::wstring FullPrint() {
        auto& listener = hostrt::Listener::Instance();
        listener.Clear();
        FPValue result;
        FPParams mode{FPValue(TYPE_INDEX, 1)};
        EXPECT_EQ(Helper()->Invoke(5, result, &mode), FPS_OK);
        return listener.Text();
    }

    MSTR reference_;
};

std::int32_t NumRefAnims(ReferenceTarget* record) {
    FPValue result;
    hostrt::CallFromScript(hostrt::FindObjectInterface(record, L"RefNode"), L"NumRefAnims", {}, {}, result);
    return result.i;
}

}  // namespace

TEST_F(ReferencedStacks, MergedNodesMirrorBothStacksWithIndicesFromTheBottom) {
    WriteReference();
    Script(L"h = Vandrels.AddVandrel " + vtest::Quoted(reference_));
    ReferenceTarget* record = RecordOf(L"Stack");
    ASSERT_NE(record, nullptr);
    auto* node = static_cast<INode*>(record->GetReference(0));
    IDerivedObject* ws = node->GetWSMDerivedObject();
    ASSERT_NE(ws, nullptr);
    auto* upper = dynamic_cast<IDerivedObject*>(node->GetObjectRef());
    ASSERT_TRUE(upper && upper->NumModifiers() == 2);
    auto* lower = dynamic_cast<IDerivedObject*>(upper->GetObjRef());
    ASSERT_TRUE(lower && lower->NumModifiers() == 1);
    Modifier* binding = ws->GetModifier(0);
    Modifier* taper = upper->GetModifier(0);
    Modifier* bend2 = upper->GetModifier(1);
    Modifier* bend = lower->GetModifier(0);

    // The references: world-space modifier, then the object-space ones with the boundary's empty slot.
    const int first = 1 + NumRefAnims(record) + 3;
    EXPECT_EQ(record->GetReference(first - 1), nullptr);  // the layer is not overridden
    EXPECT_EQ(record->GetReference(first), binding);
    EXPECT_EQ(record->GetReference(first + 1), taper);
    EXPECT_EQ(record->GetReference(first + 2), bend2);
    EXPECT_EQ(record->GetReference(first + 3), nullptr);
    EXPECT_EQ(record->GetReference(first + 4), bend);

    const std::wstring text = FullPrint();
    MSTR stackLines;
    stackLines.printf(L"\nWSRefMods: \nName: Wind Binding, Index: 3, State: 0, Toggles: 7, Modifier: %d"
                      L"\nOSRefMods: \nName: Taper, Index: 2, State: 0, Toggles: 7 - %d (Taper)"
                      L"\nName: Bend2, Index: 1, State: 0, Toggles: 3 - %d (Bend)"
                      L"\nName: , Index: -1, State: 3, Toggles: 0 - 0"
                      L"\nName: Bend, Index: 0, State: 0, Toggles: 7 - %d (Bend)"
                      L"\nDeletedMods: \nRenamedMods: \nToggledMods: \n",
                      Handle(binding), Handle(taper), Handle(bend2), Handle(bend));
    EXPECT_NE(text.find(stackLines.data()), std::wstring::npos) << WStr(text).ToUTF8();
    // The twin's stack is the shared lower derived object alone.
    MSTR twinLines;
    twinLines.printf(L"\nWSRefMods: \nOSRefMods: \nName: Bend, Index: 0, State: 0, Toggles: 7 - %d (Bend)"
                     L"\nDeletedMods: \nRenamedMods: \nToggledMods: \n",
                     Handle(bend));
    EXPECT_NE(text.find(twinLines.data()), std::wstring::npos) << WStr(text).ToUTF8();
}

TEST_F(ReferencedStacks, ANewRecordTakesOverTheChangesOfANodeSharingItsStackOnce) {
    WriteReference();
    Script(L"h = Vandrels.AddVandrel " + vtest::Quoted(reference_) + L" load:false");
    // The helper already holds Stack's record, as an opened scene brings it: Bend (index 0, in the derived
    // object Twin shares) deleted and toggled, Bend2 (index 1, above it) renamed.
    Bytes changes;
    changes.Chunk(0x0000, std::uint32_t(0x46273400)).Text(0x0008, L"Stack").Chunk(0x000A, std::uint32_t(0x10));
    changes.Chunk(0x001C, std::int32_t(1)).Wrapped(0x001D, Bytes().Text(0x0000, L"Bend").Chunk(0x0001, std::int32_t(0)));
    changes.Chunk(0x001E, std::int32_t(1));
    changes.Wrapped(0x001F, Bytes().Text(0x0000, L"Bend2").Chunk(0x0001, std::int32_t(1)).Text(0x0002, L"Curve"));
    changes.Chunk(0x0020, std::int32_t(1));
    changes.Wrapped(0x0021, Bytes().Text(0x0000, L"Bend").Chunk(0x0001, std::int32_t(0)).Chunk(0x0002, std::uint8_t(1)));
    ReferenceTarget* stack = NewRecord();
    ASSERT_EQ(LoadInto(stack, changes.Get()), IO_OK);
    const std::wstring name = std::filesystem::path(reference_.ToUTF8()).stem().wstring();
    Object* helper = GetCOREInterface()->GetINodeByName(name.c_str())->GetObjectRef();
    ASSERT_EQ(LoadInto(helper, Bytes().Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0001, std::int32_t(1)).Get()),
              IO_OK);
    ASSERT_EQ(helper->ReplaceReference(kFirstRecordRef, stack), REF_SUCCEED);

    Script(L"h.baseObject.Active = true");
    const std::wstring text = FullPrint();
    const std::size_t at = text.find(L"RefNode: Twin");
    ASSERT_NE(at, std::wstring::npos) << WStr(text).ToUTF8();
    const std::wstring block = text.substr(at, text.find(L"***", at) - at);
    // Taken over once and marked as a modifier change; the rename above the shared derived object stays behind.
    EXPECT_NE(block.find(L"\nOverridden Flags: 16"), std::wstring::npos) << WStr(block).ToUTF8();
    EXPECT_NE(block.find(L"\nDeletedMods: \nName: Bend, Index: 0\nRenamedMods: \nToggledMods: "
                         L"\nName: Bend, Index: 0, Toggles: 1\n"),
              std::wstring::npos)
        << WStr(block).ToUTF8();
}
