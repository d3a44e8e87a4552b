// The small dialogs of the library through the host: the duplicated-names list shown by the helper on request
// and after a load (its don't-show-again box writing the setting), the information box when there are no
// duplicates, and the "Reference Error" report of a failed load, silent in quiet mode.
#include "vandrels_library.h"

#include "core/fnpub.h"
#include "inode.h"
#include "iparamb2.h"
#include "istdplug.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "object.h"
#include "plugapi.h"
#include "platform/dialog_service.h"
#include "platform/host_dirs.h"
#include "platform/ini_file.h"
#include "platform/windows.h"
#include "saved_objects.h"
#include "winshim.h"
#include "resource.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using hostrt::DialogAction;
using hostrt::DialogService;

namespace {

using vtest::CountDialogs;
using vtest::LastReport;
using vtest::Node;
using vtest::Quoted;
using vtest::RunInt;
using vtest::Script;

constexpr UINT kDupNamesDialog = IDD_DUPLICATED_NAMES;
constexpr UINT kErrorDialog = IDD_REFERENCE_ERROR;
constexpr int kDontShowAgain = IDC_DONT_SHOW_AGAIN;
constexpr int kTextList = IDC_TEXT_LIST;
constexpr int kMessage = IDC_DIALOG_MESSAGE;
// The dialog templates keep their resource numbers.
static_assert(IDD_DUPLICATED_NAMES == 131 && IDD_REFERENCE_ERROR == 132 && IDD_ABOUT == 122);
const Class_ID kRefNode(0x8663DFA6, 0x3F273884);
const Class_ID kHelperClass(0x8663DFA5, 0x3F273879);
constexpr int kFirstRecordRef = 2;

std::wstring Quoted(const fs::path& path) { return L"@\"" + path.wstring() + L"\""; }

class UiDialogs : public vtest::SceneTest {
protected:
    UiDialogs() : SceneTest("vandrels_ui_dialogs") {}
    void SetUp() override {
        SceneTest::SetUp();
        dir_ = fs::temp_directory_path() / ("vandrels-ui-dialogs-" + std::to_string(::getpid()));
        fs::create_directories(dir_);
        ini_ = dir_ / "3dsMax.ini";
        hostrt::SetIniPath(ini_);
        DialogService::Instance().Reset();
        Script(L"Vandrels.PrintTimes false");
    }
    void TearDown() override {
        GetCOREInterface()->SetHasUserInterface(FALSE);
        GetCOREInterface()->SetQuietMode(FALSE);
        DialogService::Instance().Reset();
        hostrt::SetIniPath({});
        fs::remove_all(dir_);
        SceneTest::TearDown();
    }

    // A helper node "Ref" whose node records hold nodes of these names, in this order.
    Object* HelperWithNodes(std::initializer_list<const MCHAR*> names) {
        ClassDesc* cd = FindClassDesc(HELPER_CLASS_ID, kHelperClass);
        auto* helper = static_cast<Object*>(static_cast<Animatable*>(cd->Create(FALSE)));
        vtest::ChunkBytes chunks;
        chunks.Chunk(0x0000, std::uint32_t(0x46273400)).Chunk(0x0001, std::int32_t(names.size()));
        EXPECT_EQ(vtest::LoadInto(helper, chunks.Get()), IO_OK);
        GetCOREInterface()->CreateObjectNode(helper)->SetName(L"Ref");
        int slot = kFirstRecordRef;
        for (const MCHAR* name : names) {
            auto* box = static_cast<Object*>(static_cast<Animatable*>(CreateInstance(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID)));
            INode* node = GetCOREInterface()->CreateObjectNode(box);
            node->SetName(name);
            auto* record = static_cast<ReferenceTarget*>(static_cast<Animatable*>(CreateInstance(0x8663DFA6, kRefNode)));
            record->ReplaceReference(0, node);
            EXPECT_EQ(helper->ReplaceReference(slot++, record), REF_SUCCEED);
        }
        return helper;
    }

    void ShowDupNames(Object* helper) {
        FPInterface* fpi = hostrt::FindObjectInterface(helper, L"VandrelsHelper");
        ASSERT_NE(fpi, nullptr);
        FPValue result;
        hostrt::CallFromScript(fpi, L"ShowDupNames", {}, {}, result);
    }

    std::wstring Stored(const wchar_t* key) const { return hostrt::IniFile(ini_).Get(L"Vandrels", key); }

    fs::path dir_;
    fs::path ini_;
};

}  // namespace

TEST_F(UiDialogs, ShowDupNamesListsEachRepeatedNameOnceWithoutTheDontShowBox) {
    // Light occurs first, but Box001 is listed first: a name is listed when its second occurrence is met.
    // Names compare exactly: "light" is another name.
    Object* helper = HelperWithNodes({L"Light", L"Box001", L"Box001", L"Light", L"Light", L"light", L"Other"});
    auto& service = DialogService::Instance();
    service.PushDialogScript({DialogAction::Tick(kDontShowAgain)});
    ShowDupNames(helper);

    const auto runs = service.Dialogs();
    ASSERT_EQ(runs.size(), 1u);
    const hostrt::DialogRecord& run = runs[0];
    EXPECT_EQ(run.resourceId, kDupNamesDialog);
    EXPECT_EQ(run.caption, L"Duplicated Names Warning - Ref");
    ASSERT_NE(run.Control(kTextList), nullptr);
    EXPECT_EQ(run.Control(kTextList)->text, L"Box001\r\nLight\r\n");
    EXPECT_EQ(run.Control(kMessage)->text,
              L"There are nodes with duplicated names in this reference, it may not work properly.");
    EXPECT_EQ(run.result, IDOK);
    EXPECT_EQ(run.parent, GetCOREInterface()->GetMAXHWnd());
    // The box is hidden: the user cannot tick it, and nothing is written.
    ASSERT_NE(run.Control(kDontShowAgain), nullptr);
    EXPECT_FALSE(run.Control(kDontShowAgain)->visible);
    EXPECT_NE(run.note.find(L"control 1008 is hidden"), std::wstring::npos) << WStr(run.note).ToUTF8();
    EXPECT_EQ(Stored(L"HideDuplicatedNamesWarning"), L"");
    // Centred on the host's main window.
    EXPECT_EQ(run.left, (1920 - run.width) / 2);
    EXPECT_EQ(run.top, (1080 - run.height) / 2);
    EXPECT_EQ(service.BeepCount(MB_ICONEXCLAMATION), 1);
    EXPECT_TRUE(service.MessageBoxes().empty());
}

TEST_F(UiDialogs, ShowDupNamesWithoutRepeatedNamesShowsOnlyTheInformationBox) {
    Object* helper = HelperWithNodes({L"Box001", L"Box002", L"box001"});
    ShowDupNames(helper);
    auto& service = DialogService::Instance();
    EXPECT_TRUE(service.Dialogs().empty());
    const auto boxes = service.MessageBoxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].request.text, L"There are no duplicated names in this reference.");
    EXPECT_EQ(boxes[0].request.title, L"Duplicated Names");
    EXPECT_EQ(boxes[0].request.Icon(), UINT(MB_ICONINFORMATION));
    EXPECT_EQ(boxes[0].request.owner, GetCOREInterface()->GetMAXHWnd());

    // A helper without records has no duplicates either.
    service.Reset();
    ShowDupNames(HelperWithNodes({}));
    EXPECT_EQ(service.MessageBoxes().size(), 1u);
    EXPECT_TRUE(service.Dialogs().empty());
}

TEST_F(UiDialogs, TheWarningAfterALoadHidesItselfFromThenOnWhenTicked) {
    const fs::path reference = dir_ / "dup_ref.max";
    Script(L"box name:\"Box001\"; box name:\"Light\"; box name:\"Box001\"; box name:\"Light\"; box name:\"Light\"; "
        L"saveMaxFile " + Quoted(reference));
    GetCOREInterface()->FileReset(TRUE);
    GetCOREInterface()->SetHasUserInterface(TRUE);
    auto& service = DialogService::Instance();
    service.PushDialogScript({DialogAction::Tick(kDontShowAgain), DialogAction::PressButton(IDOK)});
    Script(L"h = Vandrels.AddVandrel " + Quoted(reference));

    auto runs = service.Dialogs();
    ASSERT_EQ(runs.size(), 1u);
    const std::wstring helperName = Script(L"h.name").s;
    EXPECT_EQ(runs[0].resourceId, kDupNamesDialog);
    EXPECT_EQ(runs[0].caption, L"Duplicated Names Warning - " + helperName);
    EXPECT_EQ(runs[0].Control(kTextList)->text, L"Box001\r\nLight\r\n");
    EXPECT_TRUE(runs[0].Control(kDontShowAgain)->visible);
    EXPECT_EQ(runs[0].Control(kDontShowAgain)->check, UINT(BST_CHECKED));
    EXPECT_TRUE(runs[0].note.empty()) << WStr(runs[0].note).ToUTF8();
    EXPECT_EQ(service.BeepCount(MB_ICONEXCLAMATION), 1);
    EXPECT_EQ(Stored(L"HideDuplicatedNamesWarning"), L"1");
    EXPECT_FALSE(Script(L"Vandrels.ShowDuplicatedNamesWarning").b);

    // From then on a load says nothing; the helper still lists the names on request.
    Script(L"h2 = Vandrels.AddVandrel " + Quoted(reference));
    EXPECT_EQ(service.Dialogs().size(), 1u);
    Script(L"h2.baseObject.ShowDupNames()");
    runs = service.Dialogs();
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_FALSE(runs[1].Control(kDontShowAgain)->visible);

    // Closed without ticking, the warning comes back next time.
    Script(L"Vandrels.ShowDuplicatedNamesWarning = true");
    Script(L"h3 = Vandrels.AddVandrel " + Quoted(reference));
    runs = service.Dialogs();
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(runs[2].Control(kDontShowAgain)->check, UINT(BST_UNCHECKED));
    EXPECT_EQ(Stored(L"HideDuplicatedNamesWarning"), L"0");
}

TEST_F(UiDialogs, AFailedLoadIsReportedInTheErrorDialogUnlessTheHostIsQuiet) {
    const fs::path missing = dir_ / "missing.max";
    auto& service = DialogService::Instance();
    Script(L"h = Vandrels.AddVandrel " + Quoted(missing));
    const auto runs = service.Dialogs();
    ASSERT_EQ(runs.size(), 1u);
    const hostrt::DialogRecord& run = runs[0];
    EXPECT_EQ(run.resourceId, kErrorDialog);
    EXPECT_EQ(run.caption, L"Reference Error");
    EXPECT_EQ(run.parent, GetCOREInterface()->GetMAXHWnd());
    EXPECT_EQ(run.result, IDOK);
    const std::wstring text = run.Control(kTextList)->text;
    EXPECT_EQ(text.rfind(L"Error Loading Reference\r\n", 0), 0u) << WStr(text).ToUTF8();
    // The host's reason follows two line breaks; every line feed has its carriage return.
    EXPECT_NE(text.find(L"\r\n\r\n"), std::wstring::npos) << WStr(text).ToUTF8();
    EXPECT_NE(text.find(missing.wstring()), std::wstring::npos) << WStr(text).ToUTF8();
    for (std::size_t i = text.find(L'\n'); i != std::wstring::npos; i = text.find(L'\n', i + 1))
        EXPECT_TRUE(i > 0 && text[i - 1] == L'\r') << "a bare line feed at " << i;
    EXPECT_EQ(run.left, (1920 - run.width) / 2);
    EXPECT_EQ(service.BeepCount(MB_ICONERROR), 1);

    // Quiet (a network render, a batch): nothing is shown, not even a suppressed dialog, and no beep.
    service.Reset();
    GetCOREInterface()->SetQuietMode(TRUE);
    Script(L"h.baseObject.Active = false; h.baseObject.Active = true");
    Script(L"Vandrels.AddVandrel " + Quoted(missing));
    EXPECT_TRUE(service.Dialogs().empty());
    EXPECT_TRUE(service.Beeps().empty());
}
