// The operations of the global interface `Vandrels` as a pipeline script drives them on loaded references, where
// a script cannot see what they decide: which helpers an index list names, in which order, inside how many
// reference batches; which mode and which records an advanced reset takes; what becomes of a reference whose file
// is missing; the file dialog; the manager requests and the about box. The stories
// drive_references_from_a_pipeline_script.ms and advanced_reset_from_script.ms show the effects on the scene.
#include "helper/vandrels_helper.h"
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
#include "resource.h"

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
using Names = std::vector<std::wstring>;

constexpr int kNotifyUnloadStarts = 0xDFA2;  // call parameter: the helper
constexpr int kNotifyBatchOpened = 0xDFA6;
constexpr UINT kAboutDialog = IDD_ABOUT;
constexpr int kAboutVersion = IDC_ABOUT_VERSION, kAboutHostVersion = IDC_ABOUT_HOST_VERSION;
constexpr int kAboutLink = IDC_ABOUT_LINK;

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
int LinesWith(const std::wstring& text) {
    int n = 0;
    for (const std::wstring& line : hostrt::Listener::Instance().Lines()) n += line.find(text) != std::wstring::npos;
    return n;
}
Names HelperNames() {
    Names names;
    for (int i = 1; i <= RunInt(L"Vandrels.NumVandrels()"); ++i)
        names.push_back(Text(L"(Vandrels.GetVandrel " + std::to_wstring(i) + L").name"));
    return names;
}

// What the reference operations announce: the batches opened and, by helper node name, the helpers whose unload
// starts (a reload and a reset each unload their helper once).
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
    Names unloaded;

private:
    static void OnBatch(void* self, NotifyInfo*) { ++static_cast<OperationProbe*>(self)->batches; }
    static void OnUnload(void* self, NotifyInfo* info) {
        INode* node = NodeHolding(GetCOREInterface()->GetRootNode(), static_cast<VandrelsHelper*>(info->callParam));
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

// A shot with three references in the helper list: chairs (a box Chair and a sphere Stool), lamps (a sphere
// Lamp), and missing, whose file does not exist.
class InterfaceOperations : public vtest::SceneTest {
protected:
    InterfaceOperations() : SceneTest("vandrels_interface_ops") {}

    void SetUp() override {
        SceneTest::SetUp();
        folder_ = std::filesystem::temp_directory_path() / ("vandrels_interface_ops_" + std::to_string(::getpid()));
        std::filesystem::create_directories(folder_);
        Script(L"Vandrels.PrintTimes false");
        Script(L"box name:\"Chair\" wirecolor:(color 10 20 30); sphere name:\"Stool\"; saveMaxFile " +
               Quoted(File(L"chairs")));
        Script(L"resetMaxFile #noPrompt; sphere name:\"Lamp\"; saveMaxFile " + Quoted(File(L"lamps")));
        Script(L"resetMaxFile #noPrompt; Vandrels.AddVandrel " + Quoted(File(L"chairs")) + L"; Vandrels.AddVandrel " +
               Quoted(File(L"lamps")) + L"; Vandrels.AddVandrel " + Quoted(File(L"missing")) + L" load:false");
        theHold.FlushUndoBuffer();
        auto* chairs = static_cast<VandrelsHelper*>(Node(L"chairs")->GetObjectRef());
        for (RefNode* record : chairs->NodeRecords())
            (record->GetName() == MSTR(L"Chair") ? chair : stool) = record;
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
    std::wstring LeftAsItWas(const wchar_t* stem) const {
        return L"Error: the reference file " + std::wstring(File(stem).data()) + L" of the helper " + stem +
               L" does not exist; the helper was left as it was";
    }

    std::filesystem::path folder_;
    RefNode* chair = nullptr;
    RefNode* stool = nullptr;
    OperationProbe probe;
};

// Indices count from 1 and name helpers in the order given (a repeat acts again) inside one batch; an index out
// of range is skipped, and a list naming no helper opens none. A reload keeps the local edits, a reset drops them.
TEST_F(InterfaceOperations, IndexListsActOnTheNamedHelpersInOrderInOneBatch) {
    Script(L"$Chair.wirecolor = color 200 0 0");
    Script(L"Vandrels.ReloadVandrels #(); Vandrels.ResetVandrels #(0, 4)");
    EXPECT_EQ(probe.batches, 0);
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
    EXPECT_EQ(probe.batches, 1);
    EXPECT_TRUE(Truth(L"$Chair.wirecolor == color 10 20 30"));
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
    EXPECT_EQ(probe.unloaded, (Names{L"chairs"}));
    probe.Clear();
    Script(L"Vandrels.AdvancedReset nodes:#($Chair, $Stool, $Chair) category:#{} parameters:#{5}");
    EXPECT_EQ(chair->GetOverrideFlags() & (kNodeWireColor | kNodeHidden), 0u);
    EXPECT_EQ(probe.unloaded, (Names{L"chairs"}));
    EXPECT_EQ(probe.batches, 1);
    probe.Clear();
    Script(L"Vandrels.AdvancedReset references:#(1, 9, 1) selection:2");  // a repeated index acts again
    EXPECT_EQ(probe.unloaded, (Names{L"chairs", L"chairs"}));
    EXPECT_EQ(probe.batches, 1);
}

// Every operation that would load a reference again leaves one whose file went away as it is, and says so; a
// new helper of a missing file is added without content.
TEST_F(InterfaceOperations, AReferenceWhoseFileIsGoneKeepsItsContentAndEdits) {
    Script(L"$Chair.wirecolor = color 200 0 0");
    const std::uint32_t flags = chair->GetOverrideFlags();
    std::filesystem::remove(File(L"chairs").ToUTF8());
    Script(L"Vandrels.AdvancedReset nodes:#($Chair) parameters:#{5}; Vandrels.ReloadVandrels #(1, 3); "
           L"Vandrels.ResetVandrels #(1); Vandrels.AdvancedReset references:#(1)");
    EXPECT_EQ(LinesWith(LeftAsItWas(L"chairs")), 4);
    EXPECT_EQ(LinesWith(LeftAsItWas(L"missing")), 1);
    EXPECT_EQ(probe.batches, 0);
    EXPECT_EQ(chair->GetOverrideFlags(), flags);
    EXPECT_TRUE(Truth(L"$Chair.wirecolor == color 200 0 0"));

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
    const std::wstring lastFolder = L"GetINISetting (getMAXIniFile()) \"Vandrels\" \"LastFileDir\"";
    Script(L"Vandrels.AddVandrelDialog()");  // nothing picked: cancelled
    ASSERT_EQ(dialogs.Records().size(), 1u);
    const hostrt::FileDialogRequest first = dialogs.Records().front().request;
    EXPECT_EQ(first.title, L"Select One or More Reference Files");
    EXPECT_EQ(first.initialDir, L"");
    EXPECT_EQ(first.flags & (OFN_ALLOWMULTISELECT | OFN_FILEMUSTEXIST), DWORD(OFN_ALLOWMULTISELECT | OFN_FILEMUSTEXIST));
    EXPECT_EQ(first.filters.size(), 3u);
    EXPECT_EQ(HelperNames().size(), 3u);
    EXPECT_EQ(Text(lastFolder), L"");

    dialogs.PushAnswer({File(L"lamps").data()});
    Script(L"Vandrels.AddVandrelDialog()");
    EXPECT_EQ(HelperNames(), (Names{L"chairs", L"lamps", L"missing", L"lamps001"}));
    EXPECT_EQ(Text(L"(Vandrels.GetVandrel 4).FileName"), File(L"lamps").data());
    EXPECT_EQ(Text(lastFolder), Folder().data());

    probe.Clear();
    dialogs.PushAnswer({L"chairs.max", L"lamps.max"});  // picked in the folder the dialog starts in
    Script(L"Vandrels.AddVandrelDialog()");
    EXPECT_EQ(dialogs.Records().back().request.initialDir, Folder().data());
    EXPECT_EQ(Text(L"(Vandrels.GetVandrel 5).FileName"), File(L"chairs").data());
    EXPECT_EQ(probe.batches, 1);
    EXPECT_EQ(Text(L"s = \"\"; for h in Vandrels.GetAllVandrels() do s += (h.SelectedInManager as string) + \" \"; s"),
              L"false false false false true true ");
    EXPECT_EQ(RunInt(L"(for o in objects where o.name == \"Lamp\" collect o).count"), 3);
}

// Without the graphical interface the manager window cannot open: asking for it says so as a MAXScript error. The about box
// shows the version and its link opens the web page.
TEST_F(InterfaceOperations, ManagerRequestsAndTheAboutBox) {
    const std::wstring headless = ErrorOf(L"OpenVandrelsManager()");
    EXPECT_EQ(headless, L"-- Runtime error: OpenVandrelsManager: the Vandrels manager window needs the graphical "
                        L"interface, and this host session runs without one; scripts reach every reference "
                        L"operation through the Vandrels interface (showInterface Vandrels)");
    EXPECT_EQ(ErrorOf(L"OpenVandrelsManager 1"), L"-- Argument count error: OpenVandrelsManager wanted 0, got 1");
    // The interface's request shows the error without stopping the script that made it.
    EXPECT_EQ(ErrorOf(L"Vandrels.OpenManager(); Vandrels.CloseManager()"), L"no error");
    EXPECT_EQ(LinesWith(headless), 1);
    EXPECT_FALSE(Truth(L"Vandrels.IsManagerOpen()"));

    hostrt::DialogService::Instance().PushDialogScript(
        {hostrt::DialogAction::PressButton(kAboutLink), hostrt::DialogAction::PressButton(IDOK)});
    Script(L"Vandrels.About()");
    const hostrt::DialogRecord about = hostrt::DialogService::Instance().Dialogs().back();
    EXPECT_EQ(about.resourceId, kAboutDialog);
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
