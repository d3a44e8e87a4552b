// The operations of the global interface `Vandrels` as a pipeline script drives them on loaded references:
// the index-list operations (which helpers, in which order, inside how many reference batches), the advanced
// reset (which mode, which records, which reloads), adding references through the file dialog, and what the
// interface answers to bad input (no file name, a missing reference file), the manager requests and the about
// box.
#include "helper/vandrels_helper.h"
#include "anims/ref_anim.h"
#include "records/ref_base.h"
#include "records/ref_material.h"
#include "records/ref_node.h"

#include "commdlg.h"
#include "hold.h"
#include "inode.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "notify.h"
#include "platform/dialog_service.h"
#include "platform/file_dialog_service.h"
#include "platform/listener_capture.h"
#include "vandrels_library.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace {

using vtest::Node;
using vtest::Quoted;
using vtest::RunInt;
using vtest::Script;

constexpr int kNotifyUnloadStarts = 0xDFA2;  // call parameter: the helper
constexpr int kNotifyBatchOpened = 0xDFA6;
constexpr UINT kAboutDialog = 122;
constexpr int kAboutVersion = 1206, kAboutHostVersion = 1010, kAboutLink = 1029;

// A script's value as a string (a MAXScript error caught by the script is answered as its text).
std::wstring Text(const std::wstring& script) {
    FPValue v = Script(script);
    return v.type == TYPE_STRING && v.s ? v.s : L"<not a string>";
}
bool Truth(const std::wstring& script) {
    FPValue v = Script(script);
    return v.type == TYPE_BOOL && v.i;
}
// The error a script raises, or "no error".
std::wstring ErrorOf(const std::wstring& script) {
    return Text(L"try (" + script + L"; \"no error\") catch (getCurrentException())");
}
int CountNamed(const wchar_t* name) {
    return RunInt(std::wstring(L"(for o in objects where o.name == \"") + name + L"\" collect o).count");
}
// Listener lines that hold text.
int LinesWith(const std::wstring& text) {
    int n = 0;
    for (const std::wstring& line : hostrt::Listener::Instance().Lines()) n += line.find(text) != std::wstring::npos;
    return n;
}

// What the reference operations announce: the reference batches opened and, by helper node name, the helpers
// whose unload starts (a reload and a reset each unload their helper once).
class OperationProbe {
public:
    OperationProbe() {
        RegisterNotification(&OnBatch, this, kNotifyBatchOpened);
        RegisterNotification(&OnUnload, this, kNotifyUnloadStarts);
    }
    ~OperationProbe() { UnRegisterNotification(&OnBatch, this); UnRegisterNotification(&OnUnload, this); }
    OperationProbe(const OperationProbe&) = delete;
    OperationProbe& operator=(const OperationProbe&) = delete;
    void Clear() {
        batches = 0;
        unloaded.clear();
    }
    int batches = 0;
    std::vector<std::wstring> unloaded;

private:
    static void OnBatch(void* self, NotifyInfo*) { ++static_cast<OperationProbe*>(self)->batches; }
    static void OnUnload(void* self, NotifyInfo* info) {
        const Object* helper = static_cast<VandrelsHelper*>(info->callParam);
        INode* node = NodeHolding(GetCOREInterface()->GetRootNode(), helper);
        static_cast<OperationProbe*>(self)->unloaded.push_back(node ? node->GetName() : L"<unknown helper>");
    }
    static INode* NodeHolding(INode* parent, const Object* object) {
        for (int i = 0; i < parent->NumberOfChildren(); ++i) {
            INode* child = parent->GetChildNode(i);
            if (child->GetObjectRef() == object) return child;
            if (INode* below = NodeHolding(child, object)) return below;
        }
        return nullptr;
    }
};

using Names = std::vector<std::wstring>;

// A shot with three references in the helper list: chairs (a box Chair with the material Paint and a sphere
// Stool), lamps (a sphere Lamp), and missing, whose file does not exist.
class InterfaceOperations : public vtest::SceneTest {
protected:
    InterfaceOperations() : SceneTest("vandrels_interface_ops") {}

    void SetUp() override {
        SceneTest::SetUp();
        folder_ = std::filesystem::temp_directory_path() / ("vandrels_interface_ops_" + std::to_string(::getpid()));
        std::filesystem::create_directories(folder_);
        Script(L"Vandrels.PrintTimes false");
        Script(L"box name:\"Chair\" wirecolor:(color 10 20 30) material:(standardMaterial name:\"Paint\"); "
               L"sphere name:\"Stool\"; saveMaxFile " + Quoted(File(L"chairs")));
        Script(L"resetMaxFile #noPrompt; sphere name:\"Lamp\"; saveMaxFile " + Quoted(File(L"lamps")));
        Script(L"resetMaxFile #noPrompt; Vandrels.AddVandrel " + Quoted(File(L"chairs")) + L"; Vandrels.AddVandrel " +
               Quoted(File(L"lamps")) + L"; Vandrels.AddVandrel " + Quoted(File(L"missing")) + L" load:false");
        theHold.FlushUndoBuffer();
        chairs = HelperNamed(L"chairs");
        ASSERT_NE(chairs, nullptr);
        ASSERT_EQ(chairs->refNodes.Count(), 2);
        chair = Record(L"Chair");
        stool = Record(L"Stool");
        ASSERT_TRUE(chair && stool);
        hostrt::Listener::Instance().Clear();
        hostrt::DialogService::Instance().Reset();
        hostrt::FileDialogService::Instance().Reset();
        probe.Clear();
    }
    void TearDown() override {
        SceneTest::TearDown();
        std::filesystem::remove_all(folder_);
    }

    MSTR Folder() const { return MSTR::FromUTF8(folder_.string()); }
    MSTR File(const wchar_t* stem) const { return Folder() + L"/" + stem + L".max"; }
    static VandrelsHelper* HelperNamed(const wchar_t* name) {
        INode* node = Node(name);
        return node ? static_cast<VandrelsHelper*>(node->GetObjectRef()) : nullptr;
    }
    RefNode* Record(const wchar_t* name) const {
        for (RefNode* record : chairs->refNodes)
            if (record && record->GetName() == MSTR(name)) return record;
        return nullptr;
    }
    static Names HelperNames() {
        Names names;
        for (int i = 1; i <= RunInt(L"Vandrels.NumVandrels()"); ++i)
            names.push_back(Text(L"(Vandrels.GetVandrel " + std::to_wstring(i) + L").name"));
        return names;
    }

    std::filesystem::path folder_;
    VandrelsHelper* chairs = nullptr;
    RefNode* chair = nullptr;
    RefNode* stool = nullptr;
    OperationProbe probe;
};

// Indices count from 1; one out of range is skipped; an empty list, or one naming no helper, opens no batch; a
// helper whose file is missing is left alone and named on the listener, each time the list names it.
TEST_F(InterfaceOperations, IndexListsShareOneBatchAndSkipWhatTheyCannotUse) {
    Script(L"Vandrels.ReloadVandrels #(); Vandrels.ResetVandrels #(0, 4)");
    EXPECT_EQ(probe.batches, 0);
    Script(L"Vandrels.ReloadVandrels #(3, 2, 3)");
    EXPECT_EQ(probe.batches, 1);
    const std::wstring missingLine = L"Error: the reference file " + std::wstring(File(L"missing").data()) +
                                     L" of the helper missing does not exist; the helper was left as it was";
    EXPECT_EQ(LinesWith(missingLine), 2);
    Script(L"Vandrels.ResetVandrels #(3)");
    EXPECT_EQ(probe.batches, 1);
    EXPECT_EQ(LinesWith(missingLine), 3);
    EXPECT_EQ(HelperNames(), (Names{L"chairs", L"lamps", L"missing"}));
    EXPECT_EQ(CountNamed(L"Lamp"), 1);
    EXPECT_EQ(CountNamed(L"Chair"), 1);
}

// A reload keeps the local edits, a reset drops them; both act on the named helpers in the order named.
TEST_F(InterfaceOperations, ReloadAndResetActOnTheNamedHelpersInOrder) {
    Script(L"$Chair.wirecolor = color 200 0 0");
    Script(L"Vandrels.ReloadVandrels #(0, 2, 99)");
    EXPECT_EQ(probe.unloaded, (Names{L"lamps"}));
    probe.Clear();
    Script(L"Vandrels.ReloadVandrels #(1, 1)");
    EXPECT_EQ(probe.unloaded, (Names{L"chairs", L"chairs"}));
    EXPECT_EQ(probe.batches, 1);
    EXPECT_TRUE(Truth(L"$Chair.wirecolor == color 200 0 0"));
    probe.Clear();
    Script(L"Vandrels.ResetVandrels #(2, 1)");
    EXPECT_EQ(probe.unloaded, (Names{L"lamps", L"chairs"}));
    EXPECT_TRUE(Truth(L"$Chair.wirecolor == color 10 20 30"));
}

// Merging makes the content plain scene content and deletes the helper; a helper named twice, or deleted by an
// earlier merge of the same call, is merged once.
TEST_F(InterfaceOperations, MergeVandrelsLeavesPlainContentAndTakesRepeats) {
    Script(L"Vandrels.MergeVandrels #(2, 2, 1)");
    EXPECT_EQ(HelperNames(), (Names{L"missing"}));
    for (const wchar_t* name : {L"Chair", L"Stool", L"Lamp"}) {
        EXPECT_EQ(CountNamed(name), 1) << name;
        EXPECT_EQ(Node(name)->GetAProp(REFBASE_PROPERTY_ID), nullptr) << name << " still carries a record";
    }
}

TEST_F(InterfaceOperations, DuplicateVandrelsCopiesTheNamedHelpersWithTheirEdits) {
    Script(L"$Chair.wirecolor = color 200 0 0");
    Script(L"Vandrels.DuplicateVandrels #(1, 7)");
    EXPECT_EQ(HelperNames(), (Names{L"chairs", L"lamps", L"missing", L"chairs001"}));
    EXPECT_EQ(RunInt(L"(Vandrels.GetVandrel 4).NumRefNodes()"), 2);
    EXPECT_EQ(RunInt(L"(for o in objects where o.wirecolor == color 200 0 0 collect o).count"), 2);
}

// Nodes mode resets the chosen parameter groups of the chosen nodes' records (whatever their category) and
// reloads their helpers once each; the mode follows what is given, an empty array counting as given.
TEST_F(InterfaceOperations, AdvancedResetChoosesItsModeAndTheRecordsFromItsArguments) {
    Script(L"$Chair.wirecolor = color 200 0 0; hide $Chair; $Stool.name = \"Seat\"; select #($Chair, $Seat)");
    const std::uint32_t chairFlags = chair->GetOverrideFlags();
    ASSERT_TRUE(chairFlags & kNodeWireColor);
    ASSERT_TRUE(stool->GetOverrideFlags() & kNodeOverriddenName);

    // selection 3 chooses nothing; references:#() is references mode with no helper (not the selected nodes);
    // nodes:#() is nodes mode without nodes (not references mode on the helpers selected in the manager).
    for (const wchar_t* call : {L"Vandrels.AdvancedReset selection:3", L"Vandrels.AdvancedReset references:#() selection:2",
                                L"Vandrels.AdvancedReset nodes:#()"}) {
        Script(call);
        EXPECT_EQ(chair->GetOverrideFlags(), chairFlags) << WStr(call).ToUTF8();
        EXPECT_TRUE(stool->GetOverrideFlags() & kNodeOverriddenName) << WStr(call).ToUTF8();
        EXPECT_EQ(probe.batches, 0) << WStr(call).ToUTF8();
    }

    Script(L"Vandrels.AdvancedReset selection:2 parameters:#{7}");  // Name, on the selection
    EXPECT_EQ(stool->GetOverrideFlags() & kNodeOverriddenName, 0u);
    EXPECT_EQ(chair->GetOverrideFlags(), chairFlags);
    EXPECT_EQ(probe.batches, 1);

    Script(L"Vandrels.AdvancedReset nodes:#($Chair, $Seat, $Chair) category:#{} parameters:#{5}");
    EXPECT_EQ(chair->GetOverrideFlags() & (kNodeWireColor | kNodeHidden), 0u);
    EXPECT_EQ(probe.batches, 2);
    EXPECT_EQ(probe.unloaded, (Names{L"chairs", L"chairs"}));
}

// A local node with a referenced material: the material bit resets the material record and reloads its helper;
// without it the local node, having no record, changes nothing.
TEST_F(InterfaceOperations, AdvancedResetTakesTheReferencedMaterialOfALocalNode) {
    Script(L"b = box name:\"Local\"; b.material = $Chair.material; b.material.diffuse = color 0 255 0");
    RefMaterial* paint = chairs->refMaterials.Count() ? chairs->refMaterials[0] : nullptr;
    ASSERT_NE(paint, nullptr);
    // The local node keeps depending on the material (LocDep); the edit itself is what a reset drops.
    const auto edits = [paint] {
        std::uint8_t bits = 0;
        for (int i = 0; i < paint->NumRefAnims(); ++i)
            if (RefAnim* record = paint->GetRefAnim(i)) bits |= record->GetOverrideState();
        return bits & ~kOverrideLocDep;
    };
    ASSERT_NE(edits(), 0);
    Script(L"Vandrels.AdvancedReset nodes:#($Local) parameters:#{5}");
    EXPECT_NE(edits(), 0);
    EXPECT_EQ(probe.batches, 0);
    Script(L"Vandrels.AdvancedReset nodes:#($Local) parameters:#{4}");
    EXPECT_EQ(edits(), 0);
    EXPECT_EQ(probe.batches, 1);
}

// References mode resets the chosen helpers' records by the mask and reloads them: the helpers named, or
// without names the helpers selected in the manager.
TEST_F(InterfaceOperations, AdvancedResetOfReferencesResetsAndReloadsTheChosenHelpers) {
    Script(L"$Chair.wirecolor = color 200 0 0; $Stool.name = \"Seat\"");
    Script(L"Vandrels.AdvancedReset references:#(1, 9, 1) selection:2 parameters:#{5}");
    EXPECT_EQ(probe.unloaded, (Names{L"chairs", L"chairs"}));  // a repeated index acts again
    EXPECT_EQ(probe.batches, 1);
    EXPECT_TRUE(Truth(L"$Chair.wirecolor == color 10 20 30"));
    EXPECT_EQ(CountNamed(L"Seat"), 1);  // the name was not chosen
    probe.Clear();
    Script(L"(Vandrels.GetVandrel 1).SelectedInManager = false");
    Script(L"Vandrels.AdvancedReset()");
    EXPECT_EQ(probe.unloaded, (Names{L"lamps"}));  // missing is selected too, but has no file
}

// A reference whose file went away is left as it is by every operation that would load it again.
TEST_F(InterfaceOperations, AReferenceWhoseFileIsGoneKeepsItsContentAndEdits) {
    Script(L"$Chair.wirecolor = color 200 0 0");
    const std::uint32_t flags = chair->GetOverrideFlags();
    std::filesystem::remove(File(L"chairs").ToUTF8());
    Script(L"Vandrels.AdvancedReset nodes:#($Chair) parameters:#{5}; Vandrels.ReloadVandrels #(1); "
           L"Vandrels.ResetVandrels #(1); Vandrels.AdvancedReset references:#(1)");
    EXPECT_EQ(LinesWith(L"the reference file " + std::wstring(File(L"chairs").data()) +
                        L" of the helper chairs does not exist; the helper was left as it was"),
              4);
    EXPECT_EQ(probe.batches, 0);
    EXPECT_EQ(chair->GetOverrideFlags(), flags);
    EXPECT_TRUE(Truth(L"$Chair.wirecolor == color 200 0 0"));
}

// No file name is refused before anything is made; a missing file makes an empty helper and says so.
TEST_F(InterfaceOperations, AddVandrelRefusesNoFileNameAndNamesAMissingFile) {
    EXPECT_EQ(ErrorOf(L"Vandrels.AddVandrel undefined"),
              L"-- Runtime error: Vandrels.AddVandrel: the file name is undefined; pass the path of a scene file "
              L"(nothing was added)");
    EXPECT_EQ(ErrorOf(L"Vandrels.AddVandrel \"\" proxyFileName:\"p.max\""),
              L"-- Runtime error: Vandrels.AddVandrel: the file name is empty; pass the path of a scene file "
              L"(nothing was added)");
    EXPECT_EQ(RunInt(L"objects.count"), 6);
    Script(L"Vandrels.AddVandrel " + Quoted(File(L"gone")));
    EXPECT_EQ(HelperNames().back(), L"gone");
    EXPECT_EQ(LinesWith(L"Error: the reference file " + std::wstring(File(L"gone").data()) +
                        L" of the helper gone does not exist; the helper was added without content"),
              1);
}

// The dialog starts in the folder remembered from the last time; cancel changes nothing; the picked files are
// added, loaded (several in one batch) and alone selected for the manager.
TEST_F(InterfaceOperations, AddVandrelDialogAddsThePickedFilesAndRemembersTheirFolder) {
    auto& dialogs = hostrt::FileDialogService::Instance();
    Script(L"Vandrels.AddVandrelDialog()");  // nothing picked: cancelled
    ASSERT_EQ(dialogs.Records().size(), 1u);
    const hostrt::FileDialogRecord first = dialogs.Records().front();
    EXPECT_EQ(first.request.title, L"Select One or More Reference Files");
    EXPECT_EQ(first.request.initialDir, L"");
    EXPECT_EQ(first.request.flags & (OFN_ALLOWMULTISELECT | OFN_FILEMUSTEXIST | OFN_EXPLORER),
              DWORD(OFN_ALLOWMULTISELECT | OFN_FILEMUSTEXIST | OFN_EXPLORER));
    ASSERT_EQ(first.request.filters.size(), 3u);
    EXPECT_EQ(first.request.filters[0], (std::pair<std::wstring, std::wstring>{L"3ds Max (*.max)", L"*.max"}));
    EXPECT_EQ(RunInt(L"Vandrels.NumVandrels()"), 3);
    EXPECT_EQ(Text(L"GetINISetting (getMAXIniFile()) \"Vandrels\" \"LastFileDir\""), L"");

    dialogs.PushAnswer({File(L"lamps").data()});
    Script(L"Vandrels.AddVandrelDialog()");
    EXPECT_EQ(HelperNames(), (Names{L"chairs", L"lamps", L"missing", L"lamps001"}));
    EXPECT_EQ(Text(L"(Vandrels.GetVandrel 4).FileName"), File(L"lamps").data());
    EXPECT_EQ(Text(L"GetINISetting (getMAXIniFile()) \"Vandrels\" \"LastFileDir\""), Folder().data());
    EXPECT_EQ(CountNamed(L"Lamp"), 2);

    probe.Clear();
    dialogs.PushAnswer({L"chairs.max", L"lamps.max"});  // picked in the folder the dialog starts in
    Script(L"Vandrels.AddVandrelDialog()");
    EXPECT_EQ(dialogs.Records().back().request.initialDir, Folder().data());
    EXPECT_EQ(HelperNames(), (Names{L"chairs", L"lamps", L"missing", L"lamps001", L"chairs001", L"lamps002"}));
    EXPECT_EQ(Text(L"(Vandrels.GetVandrel 5).FileName"), File(L"chairs").data());
    EXPECT_EQ(probe.batches, 1);
    EXPECT_EQ(Text(L"s = \"\"; for h in Vandrels.GetAllVandrels() do s += (h.SelectedInManager as string) + \" \"; s"),
              L"false false false false true true ");
    EXPECT_EQ(CountNamed(L"Chair"), 2);
}

// The manager window needs the graphical interface; asking for it says so as a MAXScript error.
TEST_F(InterfaceOperations, ManagerRequestsSayTheWindowNeedsTheGraphicalInterface) {
    const std::wstring headless = ErrorOf(L"OpenVandrelsManager()");
    EXPECT_EQ(headless, L"-- Runtime error: OpenVandrelsManager: the Vandrels manager window needs the graphical "
                        L"interface, and this host session runs without one; scripts reach every reference "
                        L"operation through the Vandrels interface (showInterface Vandrels)");
    GetCOREInterface()->SetHasUserInterface(TRUE);
    const std::wstring withInterface = ErrorOf(L"OpenVandrelsManager()");
    GetCOREInterface()->SetHasUserInterface(FALSE);
    EXPECT_NE(withInterface.find(L"which this build of Vandrels does not include"), std::wstring::npos);
    EXPECT_EQ(ErrorOf(L"OpenVandrelsManager 1"), L"-- Argument count error: OpenVandrelsManager wanted 0, got 1");

    // The interface's request shows the error without stopping the script that made it.
    EXPECT_EQ(ErrorOf(L"Vandrels.OpenManager(); Vandrels.CloseManager()"), L"no error");
    EXPECT_EQ(LinesWith(headless), 1);
    EXPECT_FALSE(Truth(L"Vandrels.IsManagerOpen()"));
}

TEST_F(InterfaceOperations, AboutShowsTheVersionAndItsLinkOpensTheWebPage) {
    hostrt::DialogService::Instance().PushDialogScript(
        {hostrt::DialogAction::PressButton(kAboutLink), hostrt::DialogAction::PressButton(IDOK)});
    Script(L"Vandrels.About()");
    const auto runs = hostrt::DialogService::Instance().Dialogs();
    ASSERT_EQ(runs.size(), 1u);
    const hostrt::DialogRecord& about = runs.front();
    EXPECT_EQ(about.resourceId, kAboutDialog);
    EXPECT_EQ(about.caption, L"About");
    EXPECT_EQ(about.Control(kAboutVersion)->text, L"1.12.02");
    EXPECT_EQ(about.Control(kAboutHostVersion)->text, L"2026");
    EXPECT_EQ(about.result, IDOK);
    EXPECT_EQ(about.left, (1920 - about.width) / 2);  // centred on the main window
    EXPECT_TRUE(about.note.empty()) << WStr(about.note).ToUTF8();
    const auto opened = hostrt::ShellRequests::Instance().Requests();
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(opened.front().file.rfind(L"https://", 0), 0u);
}

}  // namespace
