// The duplicated-names warning (IDD_DUPLICATED_NAMES): the list text, the automatic warning after a load and the helper's
// own "show duplicated names".
#include "helper/dup_names_dialog.h"

#include "frame/module.h"
#include "helper/vandrels_helper.h"
#include "inode.h"
#include "maxapi.h"
#include "resource.h"
#include "frame/settings.h"
#include "winshim.h"

#include <string>
#include <unordered_map>

namespace vandrels {

namespace {

// What one run of IDD_DUPLICATED_NAMES shows and what the user answered.
struct DupNamesDialogState {
    MSTR list;
    MSTR helperName;
    bool showDontShowAgain = false;
    bool dontShowAgain = false;  // the box's state when the dialog closed
};

void CloseDupNamesDialog(HWND dialog, INT_PTR result) {
    auto* state = reinterpret_cast<DupNamesDialogState*>(GetWindowLongPtrW(dialog, DWLP_USER));
    if (state) state->dontShowAgain = IsDlgButtonChecked(dialog, IDC_DONT_SHOW_AGAIN) == BST_CHECKED;
    EndDialog(dialog, result);
}

INT_PTR CALLBACK DupNamesProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG: {
            auto* state = reinterpret_cast<DupNamesDialogState*>(lParam);
            SetWindowLongPtrW(dialog, DWLP_USER, lParam);
            CenterWindow(dialog, GetParent(dialog));
            SetWindowTextW(dialog, (MSTR(L"Duplicated Names Warning - ") + state->helperName).data());
            SetDlgItemTextW(dialog, IDC_TEXT_LIST, state->list.data());
            ShowWindow(GetDlgItem(dialog, IDC_DONT_SHOW_AGAIN), state->showDontShowAgain ? SW_SHOW : SW_HIDE);
            return TRUE;
        }
        case WM_COMMAND:
            if (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL) {
                CloseDupNamesDialog(dialog, LOWORD(wParam));
                return TRUE;
            }
            return FALSE;
        case WM_CLOSE:
            CloseDupNamesDialog(dialog, IDCANCEL);
            return TRUE;
        default:
            return FALSE;
    }
}

MSTR HelperNodeName(VandrelsHelper* helper) {
    INode* node = helper ? helper->GetNode() : nullptr;
    return node && node->GetName() ? MSTR(node->GetName()) : MSTR();
}

void RunDupNamesDialog(DupNamesDialogState& state) {
    Interface* ip = GetCOREInterface();
    MessageBeep(MB_ICONEXCLAMATION);
    DialogBoxParamW(GetModuleInstance(), MAKEINTRESOURCE(IDD_DUPLICATED_NAMES), ip ? ip->GetMAXHWnd() : nullptr,
                    DupNamesProc, reinterpret_cast<LPARAM>(&state));
}

}  // namespace

MSTR DuplicatedNamesText(const Tab<INode*>& nodes) {
    std::unordered_map<std::wstring, int> seen;
    MSTR text;
    for (INode* node : nodes) {
        if (!node) continue;
        const MCHAR* name = node->GetName();
        const std::wstring key = name ? name : L"";
        if (++seen[key] == 2) {
            text += key.c_str();
            text += L"\r\n";
        }
    }
    return text;
}

void ShowDuplicatedNamesWarning(VandrelsHelper* helper, const Tab<INode*>& nodes) {
    DupNamesDialogState state;
    try {
        state.list = DuplicatedNamesText(nodes);
    } catch (...) {
        state.list = L"<error collecting duplicated names>";
    }
    state.helperName = HelperNodeName(helper);
    state.showDontShowAgain = true;
    RunDupNamesDialog(state);
    if (state.dontShowAgain) SetShowDuplicatedNamesWarning(false);
}

void ShowHelperDuplicatedNames(VandrelsHelper* helper) {
    if (!helper) return;
    try {
        DupNamesDialogState state;
        state.list = DuplicatedNamesText(helper->GetNodes());
        if (state.list.isNull()) {
            Interface* ip = GetCOREInterface();
            MessageBoxW(ip ? ip->GetMAXHWnd() : nullptr, L"There are no duplicated names in this reference.",
                        L"Duplicated Names", MB_OK | MB_ICONINFORMATION);
            return;
        }
        state.helperName = HelperNodeName(helper);
        state.showDontShowAgain = false;
        RunDupNamesDialog(state);
    } catch (...) {
        // Showing the names is a convenience: a failure here changes nothing.
    }
}

}  // namespace vandrels
