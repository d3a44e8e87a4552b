// Modifier stacks of referenced nodes edited as a user edits them (a modifier added on top and in the middle,
// one deleted, one renamed, one switched off in the viewport) survive save and open, Reload, and unload then
// load, with the whole scene compared; the reference file changing under the stored edits; same-named
// modifiers; the "Modifiers" and "Base Object" resets; a whole stack replaced locally; a local space-warp binding;
// referenced entries saved as empty chunks; undo of an added modifier and of a switched one.
#include "helper/vandrels_helper.h"
#include "records/ref_node.h"

#include "hold.h"
#include "inode.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "object.h"
#include "saved_objects.h"
#include "scene_compare.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>

namespace {

using vtest::Quoted;
using vtest::RunInt;
using vtest::Script;

std::vector<std::string> Differences(const hostrt::test::SceneSnapshot& a, const hostrt::test::SceneSnapshot& b) {
    hostrt::test::CompareOptions options;
    options.byName = true;
    return hostrt::test::CompareSnapshots(a, b, options);
}

// The node's stacks from the top as "name(toggles) ..." with "|" between derived objects.
std::string StackOf(INode* node) {
    std::string out;
    for (Object* o = node ? node->GetObjOrWSMRef() : nullptr; o && o->SuperClassID() == GEN_DERIVOB_CLASS_ID;) {
        auto* d = static_cast<IDerivedObject*>(o);
        if (!out.empty()) out += " | ";
        for (int i = 0; i < d->NumModifiers(); ++i) {
            if (i) out += " ";
            Modifier* mod = d->GetModifier(i);
            out += WStr(mod->GetName(false)).ToUTF8();
            if (!mod->IsEnabledInViews()) out += "(off in views)";
        }
        o = d->GetObjRef();
    }
    return out;
}

class ModifierOverrides : public vtest::SceneTest {
protected:
    ModifierOverrides() : SceneTest("vandrels_modifier_overrides") {}

    void SetUp() override {
        SceneTest::SetUp();
        reference_ = vtest::TempSceneFile("vandrels_mods_ref");
        Script(L"Vandrels.PrintTimes false");
        // Crate: Taper over Bend; Pair: two modifiers named Bend.
        WriteReference(L"addModifier c (bend name:\"Bend\"); addModifier c (taper name:\"Taper\")");
        Script(L"Vandrels.AddVandrel " + Quoted(reference_));
        theHold.FlushUndoBuffer();
        Bind();
    }
    void TearDown() override {
        SceneTest::TearDown();
        std::filesystem::remove(reference_.ToUTF8());
    }

    // Writes the reference file with crateStack applied to the box c, from an empty scene.
    void WriteReference(const std::wstring& crateStack) {
        GetCOREInterface()->FileReset(TRUE);
        Script(L"c = box name:\"Crate\"; " + crateStack +
               L"; p = box name:\"Pair\" pos:[50,0,0]; addModifier p (bend name:\"Bend\" angle:10); "
               L"addModifier p (bend name:\"Bend\" angle:20); saveMaxFile " + Quoted(reference_));
        GetCOREInterface()->FileReset(TRUE);
    }
    // The shot is saved, the reference file rewritten with crateStack, and the shot opened again.
    void ChangeReference(const std::wstring& crateStack) {
        ASSERT_NE(GetCOREInterface()->SaveToFile(file_.data()), 0);
        WriteReference(crateStack);
        ASSERT_NE(GetCOREInterface()->LoadFromFile(file_.data()), 0);
        Bind();
    }
    void Bind() {
        const std::wstring stem = std::filesystem::path(reference_.ToUTF8()).stem().wstring();
        INode* helperNode = GetCOREInterface()->GetINodeByName(stem.c_str());
        ASSERT_NE(helperNode, nullptr);
        helper = static_cast<VandrelsHelper*>(helperNode->GetObjectRef());
        crate = RecordNamed(L"Crate");
        pair = RecordNamed(L"Pair");
        ASSERT_TRUE(crate && pair);
    }
    RefNode* RecordNamed(const MCHAR* name) {
        for (RefNode* record : helper->NodeRecords())
            if (record && record->GetName() == MSTR(name)) return record;
        return nullptr;
    }
    void Reopen() {
        ASSERT_NE(GetCOREInterface()->SaveToFile(file_.data()), 0);
        GetCOREInterface()->FileReset(TRUE);
        ASSERT_NE(GetCOREInterface()->LoadFromFile(file_.data()), 0);
        Bind();
    }
    void Reload() {
        ASSERT_EQ(RunInt(L"(getNodeByName " + Quoted(HelperName()) + L").baseObject.Reload()"), 1);
        Bind();
    }
    std::wstring HelperName() const { return std::filesystem::path(reference_.ToUTF8()).stem().wstring(); }
    static INode* NodeOf(RefNode* record) { return static_cast<INode*>(record->GetReference(0)); }

    MSTR reference_;
    VandrelsHelper* helper = nullptr;
    RefNode* crate = nullptr;
    RefNode* pair = nullptr;
};

#define EXPECT_SAME_SCENE(before)                                                            \
    do {                                                                                     \
        const auto differences = Differences(before, hostrt::test::TakeSnapshot());         \
        EXPECT_TRUE(differences.empty()) << hostrt::test::JoinDifferences(differences);     \
    } while (0)

}  // namespace

// The user's edits of a referenced stack come back after save, reset and open (twice), through Reload, and
// through unload then load.
TEST_F(ModifierOverrides, StackEditsSurviveReopenReloadAndUnloadThenLoad) {
    Script(L"addModifier $Crate (turboSmooth name:\"Smooth\")");                 // on top
    Script(L"addModifier $Crate (twist name:\"Twist\") before:2");               // between Taper and Bend
    Script(L"$Crate.modifiers[\"Taper\"].name = \"Taper Local\"");
    Script(L"$Crate.modifiers[\"Bend\"].enabledInViews = false");
    Script(L"deleteModifier $Pair 1");
    ASSERT_EQ(StackOf(NodeOf(crate)), "Smooth Taper Local Twist Bend(off in views)");
    EXPECT_TRUE(crate->GetOverrideFlags() & kNodeModifiers);
    const auto before = hostrt::test::TakeSnapshot();

    for (int round = 0; round < 2; ++round) {
        Reopen();
        EXPECT_EQ(StackOf(NodeOf(crate)), "Smooth Taper Local Twist Bend(off in views)") << "round " << round;
        EXPECT_SAME_SCENE(before);
    }
    Reload();
    EXPECT_SAME_SCENE(before);
    ASSERT_EQ(RunInt(L"(getNodeByName " + Quoted(HelperName()) + L").baseObject.Unload()"), 1);
    ASSERT_EQ(RunInt(L"(getNodeByName " + Quoted(HelperName()) + L").baseObject.Reload()"), 1);
    Bind();
    EXPECT_SAME_SCENE(before);
    // The mirrors follow the stacks: a local entry per added modifier, one deleted entry for the Pair.
    EXPECT_NE(crate->ModifierLines().find(L"\nRenamedMods: \nName: Taper, Index: 1, NewName: Taper Local"), -1)
        << WStr(crate->ModifierLines()).ToUTF8();
    EXPECT_NE(pair->ModifierLines().find(L"\nDeletedMods: \nName: Bend, Index: 1\n"), -1)
        << WStr(pair->ModifierLines()).ToUTF8();
}

// The reference file changes under the stored edits: a local modifier on top stays on top of a modifier the
// file adds; a rename whose modifier left the file waits (complemented index) and applies when it returns.
TEST_F(ModifierOverrides, TheReferenceFileChangesUnderTheStoredEdits) {
    Script(L"addModifier $Crate (turboSmooth name:\"Smooth\")");
    Script(L"$Crate.modifiers[\"Bend\"].name = \"Bent\"");
    ChangeReference(L"addModifier c (twist name:\"Twist\"); addModifier c (taper name:\"Taper\")");
    EXPECT_EQ(StackOf(NodeOf(crate)), "Smooth Taper Twist");
    EXPECT_NE(crate->ModifierLines().find(L"\nRenamedMods: \nName: Bend, Index: -1, NewName: Bent"), -1)
        << WStr(crate->ModifierLines()).ToUTF8();
    Reopen();
    EXPECT_EQ(StackOf(NodeOf(crate)), "Smooth Taper Twist");

    ChangeReference(L"addModifier c (bend name:\"Bend\"); addModifier c (twist name:\"Twist\"); "
                    L"addModifier c (taper name:\"Taper\")");
    EXPECT_EQ(StackOf(NodeOf(crate)), "Smooth Taper Twist Bent");
    const auto reloaded = hostrt::test::TakeSnapshot();
    Reopen();
    EXPECT_SAME_SCENE(reloaded);
}

// Two modifiers with one name: each change goes to the one nearest its place, never both to the same one.
TEST_F(ModifierOverrides, SameNamedModifiersEachKeepTheirOwnChange) {
    Script(L"$Pair.modifiers[2].name = \"Lower\"");
    Script(L"$Pair.modifiers[1].enabledInViews = false");
    Script(L"$Pair.modifiers[1].name = \"Upper\"");
    const auto before = hostrt::test::TakeSnapshot();
    Reopen();
    EXPECT_EQ(StackOf(NodeOf(pair)), "Upper(off in views) Lower");
    EXPECT_SAME_SCENE(before);
}

// Resetting "Modifiers" forgets every stack edit: the next reload brings the file's stack back.
TEST_F(ModifierOverrides, ResetModifiersBringsTheFileStackBackAtTheNextReload) {
    const auto fresh = hostrt::test::TakeSnapshot();
    Script(L"addModifier $Crate (turboSmooth name:\"Smooth\")");
    Script(L"deleteModifier $Crate \"Bend\"");
    Script(L"$Crate.modifiers[\"Taper\"].enabled = false");
    Script(L"Vandrels.AdvancedReset references:#(1) parameters:#{2}");
    Reload();
    EXPECT_EQ(StackOf(NodeOf(crate)), "Taper Bend");
    EXPECT_SAME_SCENE(fresh);
    Reopen();
    EXPECT_SAME_SCENE(fresh);
}

// Saved without the referenced content, referenced entries keep only their place (empty chunks); a local one
// is written with its state, name and context.
TEST_F(ModifierOverrides, ReferencedEntriesAreSavedAsEmptyChunks) {
    Script(L"addModifier $Crate (turboSmooth name:\"Smooth\")");
    Matrix3 tm;
    Box3 box;
    std::vector<std::uint8_t> context(reinterpret_cast<std::uint8_t*>(&tm), reinterpret_cast<std::uint8_t*>(&tm + 1));
    context.insert(context.end(), reinterpret_cast<std::uint8_t*>(&box), reinterpret_cast<std::uint8_t*>(&box + 1));
    vtest::ChunkBytes expected;
    expected.Chunk(0x0016, std::int32_t(3));
    expected.Wrapped(0x0018,
                     vtest::ChunkBytes().Chunk(0x0000, std::uint8_t(1)).Text(0x0001, L"Smooth").Raw(0x0002, context));
    expected.Raw(0x001A, {}).Raw(0x001A, {});
    const std::vector<std::uint8_t> saved = vtest::SavedBy(crate);
    EXPECT_NE(std::search(saved.begin(), saved.end(), expected.Get().begin(), expected.Get().end()), saved.end());
}

// Undo takes an added modifier back out of the mirrors with the stack; redo puts it back; a reopen after the
// undo shows the file's stack.
TEST_F(ModifierOverrides, UndoOfAnAddedModifier) {
    const MSTR mirrors = crate->ModifierLines();
    const auto fresh = hostrt::test::TakeSnapshot();
    theHold.Begin();
    Script(L"addModifier $Crate (turboSmooth name:\"Smooth\")");
    theHold.Accept(L"Add Modifier");
    const MSTR added = crate->ModifierLines();
    EXPECT_NE(added.find(L"\nName: Smooth, Index: 2, State: 1"), -1) << WStr(added).ToUTF8();
    theHold.Undo();
    EXPECT_EQ(StackOf(NodeOf(crate)), "Taper Bend");
    EXPECT_EQ(crate->ModifierLines(), mirrors);
    theHold.Redo();
    EXPECT_EQ(crate->ModifierLines(), added);
    theHold.Undo();
    Reopen();
    EXPECT_SAME_SCENE(fresh);
}

// A stack the user put in place of the file's whole object-space stack comes back after reopen and Reload; the
// "Base Object" reset forgets it, and the next reload brings the file's stack back.
TEST_F(ModifierOverrides, AReplacedStackComesBackUntilBaseObjectIsReset) {
    const auto fresh = hostrt::test::TakeSnapshot();
    Script(L"t = box name:\"Spare\" height:40; addModifier t (shell name:\"Shell\"); addModifier t (twist name:\"Twist\")");
    INode* spare = GetCOREInterface()->GetINodeByName(L"Spare");
    ASSERT_NE(spare, nullptr);
    NodeOf(crate)->SetObjectRef(spare->GetObjectRef());
    GetCOREInterface()->DeleteNode(spare, FALSE);
    EXPECT_EQ(crate->GetOverrideFlags() & (kNodeModifiers | kNodeObjectSpaceReplaced),
              std::uint32_t(kNodeModifiers | kNodeObjectSpaceReplaced));
    ASSERT_EQ(StackOf(NodeOf(crate)), "Twist Shell");
    const auto replaced = hostrt::test::TakeSnapshot();

    Reopen();
    EXPECT_EQ(StackOf(NodeOf(crate)), "Twist Shell");
    EXPECT_SAME_SCENE(replaced);
    Reload();
    EXPECT_SAME_SCENE(replaced);

    Script(L"Vandrels.AdvancedReset references:#(1) parameters:#{1}");
    EXPECT_EQ(crate->GetOverrideFlags() & kNodeObjectSpaceReplaced, 0u);
    Reload();
    EXPECT_EQ(StackOf(NodeOf(crate)), "Taper Bend");
    EXPECT_SAME_SCENE(fresh);
}

// A referenced node bound to a local space warp keeps the binding (a local world-space entry) after reopen; undo
// of a switched modifier takes its change entry back, so the reopened scene shows the file's switch.
TEST_F(ModifierOverrides, ALocalSpaceWarpBindingStaysAndAnUndoneSwitchIsForgotten) {
    Script(L"bindSpaceWarp $Crate (wind name:\"Gust\")");
    ASSERT_NE(NodeOf(crate)->GetWSMDerivedObject(), nullptr);
    EXPECT_NE(crate->ModifierLines().find(L"\nWSRefMods: \nName: "), -1);
    EXPECT_NE(crate->ModifierLines().find(L", State: 1, Toggles: 7, Modifier: "), -1) << WStr(crate->ModifierLines()).ToUTF8();
    theHold.Begin();
    Script(L"$Crate.modifiers[\"Taper\"].enabled = false");
    theHold.Accept(L"Switch");
    EXPECT_NE(crate->ModifierLines().find(L"\nToggledMods: \nName: Taper"), -1);
    ASSERT_TRUE(theHold.Undo());
    EXPECT_EQ(crate->ModifierLines().find(L"\nToggledMods: \nName"), -1) << WStr(crate->ModifierLines()).ToUTF8();
    EXPECT_NE(crate->ModifierLines().find(L"\nName: Taper, Index: 1, State: 0, Toggles: 7"), -1);
    const auto before = hostrt::test::TakeSnapshot();
    Reopen();
    ASSERT_NE(NodeOf(crate)->GetWSMDerivedObject(), nullptr);
    EXPECT_EQ(NodeOf(crate)->GetWSMDerivedObject()->NumModifiers(), 1);
    EXPECT_SAME_SCENE(before);
}
