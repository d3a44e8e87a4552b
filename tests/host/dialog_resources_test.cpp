// Modal dialogs from a library's dialog templates: what the resource compiler makes of DIALOG/DIALOGEX
// statements, and DialogBoxParamW driving a dialog procedure headless (default button, scripted user actions,
// quiet mode) with every run recorded by the dialog service.
#include "platform/dialog_service.h"
#include "platform/resource_tables.h"
#include "platform/session.h"
#include "strclass.h"
#include "winshim.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <string>
#include <vector>

using hostrt::BoxOutcome;
using hostrt::DialogAction;
using hostrt::DialogService;

namespace {

constexpr UINT kForm = 200;
constexpr UINT kPlain = 201;
constexpr int kAgree = 1002, kName = 1003, kLeft = 1004, kRight = 1005, kSecret = 1006, kLocked = 1007;

// What a test's dialog procedure saw, and what it does.
struct Probe {
    std::vector<std::pair<UINT, int>> messages;  // message and, for WM_COMMAND, the control id
    std::wstring nameAtOk;                       // the edit's text when OK was pressed
    UINT agreeAtOk = 99;
    bool endOnCommand = true;  // false: never ends the dialog
    bool handleClose = false;  // WM_CLOSE ends the dialog with 77
    HWND parentSeen = nullptr;
    HWND dialog = nullptr;
    HWND nameParent = nullptr;  // the name control's parent while the dialog ran
};

INT_PTR CALLBACK ProbeProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) SetWindowLongPtrW(dialog, DWLP_USER, lParam);
    auto* probe = reinterpret_cast<Probe*>(GetWindowLongPtrW(dialog, DWLP_USER));
    probe->messages.emplace_back(message, message == WM_COMMAND ? int(LOWORD(wParam)) : 0);
    switch (message) {
        case WM_INITDIALOG:
            probe->parentSeen = GetParent(dialog);
            probe->dialog = dialog;
            probe->nameParent = GetParent(GetDlgItem(dialog, kName));
            SetWindowTextW(dialog, L"Sample Form - Box01");
            SetDlgItemTextW(dialog, kName, L"typed by code");
            ShowWindow(GetDlgItem(dialog, kAgree), SW_SHOW);
            CenterWindow(dialog, GetParent(dialog));
            return TRUE;
        case WM_COMMAND: {
            const int id = LOWORD(wParam);
            if (!probe->endOnCommand || (id != IDOK && id != IDCANCEL)) return FALSE;
            wchar_t buf[64];
            GetDlgItemTextW(dialog, kName, buf, 64);
            probe->nameAtOk = buf;
            probe->agreeAtOk = IsDlgButtonChecked(dialog, kAgree);
            EndDialog(dialog, id == IDOK ? 42 : 43);
            return TRUE;
        }
        case WM_CLOSE:
            if (!probe->handleClose) return FALSE;
            EndDialog(dialog, 77);
            return TRUE;
        default: return FALSE;
    }
}

class DialogTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(lib_, nullptr) << dlerror();
        DialogService::Instance().Reset();
        hostrt::Session::Instance().SetQuiet(false);
    }
    void TearDown() override {
        DialogService::Instance().Reset();
        hostrt::Session::Instance().SetQuiet(false);
        if (lib_) dlclose(lib_);
    }
    INT_PTR Run(UINT id, Probe& probe, HWND parent = nullptr) {
        return DialogBoxParamW(lib_, MAKEINTRESOURCE(id), parent, ProbeProc, reinterpret_cast<LPARAM>(&probe));
    }
    hostrt::DialogRecord Last() const {
        const auto runs = DialogService::Instance().Dialogs();
        EXPECT_FALSE(runs.empty());
        return runs.empty() ? hostrt::DialogRecord{} : runs.back();
    }

    void* lib_ = dlopen((std::string(MAXHOST_TEST_PLUGIN_DIR) + "/HostSample.dlo").c_str(), RTLD_NOW | RTLD_LOCAL);
};

}  // namespace

TEST_F(DialogTest, TemplatesKeepControlsStylesAndStatementDefaults) {
    const MaxResourceDialog* form = hostrt::FindDialogResource(lib_, kForm);
    ASSERT_NE(form, nullptr);
    EXPECT_STREQ(form->caption, L"Sample Form");
    EXPECT_STREQ(form->fontName, L"MS Shell Dlg");
    EXPECT_EQ(form->fontSize, 8);
    EXPECT_EQ((form->x << 16) | form->y, (10 << 16) | 20);
    EXPECT_EQ(form->cx, 200);
    EXPECT_EQ(form->cy, 120);
    EXPECT_EQ(form->exStyle, 0x80u);  // WS_EX_TOOLWINDOW
    ASSERT_EQ(form->numControls, 11);

    struct Expect {
        int id;
        const wchar_t* className;
        const wchar_t* text;
        DWORD style;
    } expected[] = {
        {IDOK, L"Button", L"OK", WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON},
        {IDCANCEL, L"Button", L"Cancel", WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON},
        {1001, L"Static", L"Fill in the form.", WS_CHILD | WS_VISIBLE | WS_GROUP | SS_CENTER},
        {kAgree, L"Button", L"I agree", WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_AUTOCHECKBOX},
        {kName, L"Edit", L"", WS_CHILD | WS_VISIBLE | WS_TABSTOP | 0x00800000u /*WS_BORDER*/ | 0x80u /*ES_AUTOHSCROLL*/},
        {kLeft, L"Button", L"Left", WS_CHILD | WS_VISIBLE | WS_GROUP | BS_AUTORADIOBUTTON},
        {kRight, L"Button", L"Right", WS_CHILD | WS_VISIBLE | BS_AUTORADIOBUTTON},
        {-1, L"Button", L"Side", WS_CHILD | WS_VISIBLE | WS_GROUP | BS_GROUPBOX},
        // NOT removes a bit from the statement's defaults.
        {kSecret, L"Edit", L"", WS_CHILD | WS_TABSTOP | 0x00800000u | ES_MULTILINE | ES_READONLY | WS_VSCROLL},
        {kLocked, L"Button", L"Locked", WS_CHILD | WS_VISIBLE | WS_DISABLED | BS_AUTOCHECKBOX},
        {1008, L"ComboBox", L"", WS_CHILD | WS_VISIBLE | CBS_DROPDOWNLIST},
    };
    for (int i = 0; i < form->numControls; ++i) {
        const MaxResourceControl& c = form->controls[i];
        EXPECT_EQ(c.id, expected[i].id) << i;
        EXPECT_STREQ(c.className, expected[i].className) << i;
        EXPECT_STREQ(c.text, expected[i].text) << i;
        EXPECT_EQ(c.style, expected[i].style) << "control " << c.id;
    }
    EXPECT_EQ(form->controls[4].x, 5);
    EXPECT_EQ(form->controls[4].cx, 120);

    // A plain DIALOG: the default pop-up style plus the caption bar.
    const MaxResourceDialog* plain = hostrt::FindDialogResource(lib_, kPlain);
    ASSERT_NE(plain, nullptr);
    EXPECT_EQ(plain->style, 0x80000000u | 0x00800000u | 0x00080000u | 0x00C00000u);
    EXPECT_EQ(hostrt::FindDialogResource(lib_, 202), nullptr);
    EXPECT_EQ(hostrt::FindDialogResource(nullptr, kForm), nullptr);
}

TEST_F(DialogTest, HeadlessRunPressesTheDefaultButtonAndRecordsTheFinalState) {
    Probe probe;
    HWND owner = reinterpret_cast<HWND>(0x1234);  // not a window the host knows: centred on the screen
    EXPECT_EQ(Run(kForm, probe, owner), 42);
    ASSERT_GE(probe.messages.size(), 2u);
    EXPECT_EQ(probe.messages[0].first, UINT(WM_INITDIALOG));
    EXPECT_EQ(probe.messages[1], std::make_pair(UINT(WM_COMMAND), IDOK));
    EXPECT_EQ(probe.messages.size(), 2u);
    EXPECT_EQ(probe.parentSeen, owner);
    EXPECT_EQ(probe.nameParent, probe.dialog);
    EXPECT_EQ(probe.nameAtOk, L"typed by code");
    EXPECT_EQ(probe.agreeAtOk, UINT(BST_UNCHECKED));

    const hostrt::DialogRecord run = Last();
    EXPECT_EQ(run.resourceId, kForm);
    EXPECT_EQ(run.outcome, BoxOutcome::Default);
    EXPECT_EQ(run.result, 42);
    EXPECT_EQ(run.caption, L"Sample Form - Box01");
    ASSERT_NE(run.Control(kName), nullptr);
    EXPECT_EQ(run.Control(kName)->text, L"typed by code");
    EXPECT_FALSE(run.Control(kSecret)->visible);
    EXPECT_FALSE(run.Control(kLocked)->enabled);
    EXPECT_EQ(run.Control(9999), nullptr);
    // 200 × 120 dialog units are 300 × 195 pixels, centred on the 1920 × 1080 screen.
    EXPECT_EQ(run.width, 300);
    EXPECT_EQ(run.height, 195);
    EXPECT_EQ(run.left, (1920 - 300) / 2);
    EXPECT_EQ(run.top, (1080 - 195) / 2);
    EXPECT_TRUE(run.note.empty()) << MaxSDK::ToUTF8(run.note);

    // Handles are gone once the dialog ended.
    EXPECT_FALSE(IsWindow(probe.dialog));
    EXPECT_EQ(GetDlgItem(probe.dialog, kName), nullptr);
}

TEST_F(DialogTest, ScriptsActAsAUserAndRefuseWhatAUserCannotDo) {
    auto& service = DialogService::Instance();
    service.PushDialogScript({DialogAction::Tick(kAgree), DialogAction::Type(kName, L"Crate"),
                              DialogAction::PressButton(kRight), DialogAction::PressButton(kLeft),
                              DialogAction::PressButton(IDCANCEL), DialogAction::PressButton(IDOK)});
    Probe probe;
    EXPECT_EQ(Run(kForm, probe), 43);
    EXPECT_EQ(probe.nameAtOk, L"Crate");
    EXPECT_EQ(probe.agreeAtOk, UINT(BST_CHECKED));
    hostrt::DialogRecord run = Last();
    EXPECT_EQ(run.outcome, BoxOutcome::Scripted);
    EXPECT_EQ(run.Control(kAgree)->check, UINT(BST_CHECKED));
    EXPECT_EQ(run.Control(kLeft)->check, UINT(BST_CHECKED));
    EXPECT_EQ(run.Control(kRight)->check, UINT(BST_UNCHECKED)) << "radio buttons of one group exclude each other";
    EXPECT_NE(run.note.find(L"ended before 1 scripted action"), std::wstring::npos);
    // The procedure heard every click and the typing, in order.
    std::vector<int> commands;
    for (const auto& [message, id] : probe.messages)
        if (message == WM_COMMAND) commands.push_back(id);
    EXPECT_EQ(commands, (std::vector<int>{kAgree, kName, kRight, kLeft, IDCANCEL}));
    EXPECT_EQ(service.PendingDialogScripts(), 0u);

    // A hidden, a disabled or a missing control cannot be used: the script stops there and the default button
    // ends the dialog.
    struct Case {
        DialogAction action;
        const wchar_t* note;
    } refused[] = {
        {DialogAction::Type(kSecret, L"x"), L"control 1006 is hidden"},
        {DialogAction::Tick(kLocked), L"control 1007 is disabled"},
        {DialogAction::PressButton(4242), L"control 4242 is not in dialog 200"},
        {DialogAction::Tick(kName), L"control 1003 is not a check box or radio button"},
    };
    for (const Case& c : refused) {
        service.PushDialogScript({c.action, DialogAction::PressButton(IDCANCEL)});
        Probe refusedProbe;
        EXPECT_EQ(Run(kForm, refusedProbe), 42) << MaxSDK::ToUTF8(c.note);
        run = Last();
        EXPECT_NE(run.note.find(c.note), std::wstring::npos) << MaxSDK::ToUTF8(run.note);
        EXPECT_EQ(run.Control(kLocked)->check, UINT(BST_UNCHECKED));
    }
}

TEST_F(DialogTest, ClosingUnendedDialogsQuietModeAndMissingTemplates) {
    // Closing from the title bar: WM_CLOSE, which the procedure may handle itself.
    auto& service = DialogService::Instance();
    service.PushDialogScript({DialogAction::CloseDialog()});
    Probe closing;
    closing.handleClose = true;
    EXPECT_EQ(Run(kPlain, closing), 77);

    // A procedure that never calls EndDialog: the default button (IDOK without a DEFPUSHBUTTON), then WM_CLOSE,
    // then IDCANCEL; the host ends the dialog itself and says so.
    Probe stubborn;
    stubborn.endOnCommand = false;
    EXPECT_EQ(Run(kPlain, stubborn), IDCANCEL);
    std::vector<std::pair<UINT, int>> expected{
        {WM_INITDIALOG, 0}, {WM_COMMAND, IDOK}, {WM_CLOSE, 0}, {WM_COMMAND, IDCANCEL}};
    EXPECT_EQ(stubborn.messages, expected);
    EXPECT_NE(Last().note.find(L"did not end the dialog"), std::wstring::npos);

    // Quiet mode: nothing is created, the procedure is not called, the default button answers and a queued
    // script waits for the next dialog that is shown.
    hostrt::Session::Instance().SetQuiet(true);
    service.PushDialogScript({DialogAction::PressButton(IDCANCEL)});
    Probe quiet;
    EXPECT_EQ(Run(kForm, quiet), IDOK);
    EXPECT_TRUE(quiet.messages.empty());
    EXPECT_EQ(Last().outcome, BoxOutcome::Suppressed);
    EXPECT_EQ(Last().caption, L"Sample Form");
    EXPECT_EQ(service.PendingDialogScripts(), 1u);
    hostrt::Session::Instance().SetQuiet(false);

    // A template the library does not have, a named template or no procedure: -1 and the reason.
    Probe none;
    const std::size_t before = service.Dialogs().size();
    SetLastError(0);
    EXPECT_EQ(Run(999, none), -1);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_RESOURCE_NAME_NOT_FOUND));
    EXPECT_EQ(DialogBoxParamW(lib_, L"FORM", nullptr, ProbeProc, 0), -1);
    EXPECT_EQ(DialogBoxParamW(lib_, MAKEINTRESOURCE(kForm), nullptr, nullptr, 0), -1);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_PARAMETER));
    EXPECT_TRUE(none.messages.empty());
    EXPECT_EQ(service.Dialogs().size(), before);
}
