#include "ui/about_dialog.h"

#include "frame/module.h"
#include "maxapi.h"
#include "resource.h"
#include "shellapi.h"
#include "winshim.h"

namespace vandrels {

namespace {

INT_PTR CALLBACK AboutProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            CenterWindow(dialog, GetParent(dialog));
            SetDlgItemTextW(dialog, IDC_ABOUT_VERSION, kVersionText);
            SetDlgItemTextW(dialog, IDC_ABOUT_HOST_VERSION, kHostGenerationText);
            return TRUE;
        case WM_COMMAND:
            switch (LOWORD(wParam)) {
                case IDOK:
                case IDCANCEL:
                    EndDialog(dialog, LOWORD(wParam));
                    return TRUE;
                default:
                    return FALSE;
            }
        case WM_NOTIFY: {
            const auto* header = reinterpret_cast<const NMHDR*>(lParam);
            if (!header || header->idFrom != IDC_ABOUT_LINK) return FALSE;
            if (header->code == NM_CLICK || header->code == NM_RETURN)
                ShellExecuteW(dialog, L"open", kProductWebPage, nullptr, nullptr, SW_SHOWNORMAL);
            return TRUE;
        }
        case WM_CLOSE:
            EndDialog(dialog, IDCANCEL);
            return TRUE;
        default:
            return FALSE;
    }
}

}  // namespace

void ShowAbout() {
    Interface* ip = GetCOREInterface();
    DialogBoxParamW(GetModuleInstance(), MAKEINTRESOURCE(IDD_ABOUT), ip ? ip->GetMAXHWnd() : nullptr, AboutProc, 0);
}

}  // namespace vandrels
