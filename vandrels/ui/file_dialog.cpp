#include "ui/file_dialog.h"

#include "bitmap.h"
#include "commdlg.h"
#include "frame/module.h"
#include "maxapi.h"
#include "resource.h"

#include <cwchar>
#include <cwctype>
#include <vector>

namespace vandrels {

namespace {

constexpr DWORD kFileBufferLength = 2048;
constexpr int kTextLength = 2048;

// Description and pattern pairs, each ending in a zero, and a second zero after the last.
const wchar_t kFilter[] = L"3ds Max (*.max)\0*.max\0"
                          L"3ds Max Characters (*.chr)\0*.chr\0"
                          L"All files (*.*)\0*.*\0";

std::wstring AskDialog(HWND fileDialog, UINT message) {
    std::vector<wchar_t> text(kTextLength, L'\0');
    const LRESULT size = SendMessageW(fileDialog, message, WPARAM(text.size()), LPARAM(text.data()));
    return size > 0 && size <= LRESULT(text.size()) ? std::wstring(text.data()) : std::wstring();
}

// The "+" button: the typed name numbered on, written into the file-name field, and the dialog confirmed.
void NumberOn(HWND templateDialog) {
    HWND fileDialog = GetParent(templateDialog);
    const std::wstring name = AskDialog(fileDialog, CDM_GETSPEC);
    if (!name.empty())
        SendMessageW(fileDialog, CDM_SETCONTROLTEXT, edt1, LPARAM(NextNumberedName(name).c_str()));
    SendMessageW(fileDialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
}

// The hook of the file dialog's template: the folder history (kept by the caller, handed in through the
// dialog's custom data) is loaded when the dialog opens, moves the dialog when a folder is chosen from it, and
// takes the dialog's folder at the top when the pick is confirmed.
UINT_PTR HookProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* history = reinterpret_cast<bmmHistoryList*>(GetWindowLongPtrW(dialog, GWLP_USERDATA));
    switch (message) {
    case WM_INITDIALOG: {
        const auto* ofn = reinterpret_cast<const OPENFILENAMEW*>(lParam);
        history = reinterpret_cast<bmmHistoryList*>(ofn->lCustData);
        SetWindowLongPtrW(dialog, GWLP_USERDATA, LONG_PTR(history));
        wchar_t title[512] = L"";
        LoadStringW(GetModuleInstance(), IDS_FILE_HISTORY, title, 512);
        history->Init(title);
        history->SetDlgInfo(dialog, IDC_HISTORY, IDC_HISTORY_LABEL);
        history->LoadList();
        const std::wstring folder = AskDialog(GetParent(dialog), CDM_GETFOLDERPATH);
        if (!folder.empty()) history->NewPath(folder.c_str());
        history->ListToDialog();
        return TRUE;
    }
    case WM_COMMAND:
        if (!history) return FALSE;
        if (LOWORD(wParam) == IDC_HISTORY && HIWORD(wParam) == CBN_SELCHANGE) {
            history->SetPath();
            return TRUE;
        }
        if (LOWORD(wParam) == IDC_NEXT_NUMBER && HIWORD(wParam) == BN_CLICKED) {
            NumberOn(dialog);
            return TRUE;
        }
        return FALSE;
    case WM_NOTIFY: {
        const auto* notify = reinterpret_cast<const OFNOTIFYW*>(lParam);
        if (!history || !notify || notify->hdr.code != CDN_FILEOK) return FALSE;
        history->NewPath(AskDialog(GetParent(dialog), CDM_GETFOLDERPATH).c_str());
        history->SaveList();
        return FALSE;  // the pick stands
    }
    default: return FALSE;
    }
}

}  // namespace

std::wstring NextNumberedName(const std::wstring& name) {
    // An extension of up to five characters: the last dot among the last five characters.
    std::size_t dot = name.rfind(L'.');
    if (dot == std::wstring::npos || name.size() - dot > 5) dot = name.size();
    std::wstring stem = name.substr(0, dot);
    const std::wstring extension = name.substr(dot);
    const std::size_t n = stem.size();
    if (n >= 2 && std::iswdigit(stem[n - 2]) && std::iswdigit(stem[n - 1])) {
        const int next = (stem[n - 2] - L'0') * 10 + (stem[n - 1] - L'0') + 1;
        wchar_t digits[16];
        std::swprintf(digits, 16, L"%02d", next);
        stem = stem.substr(0, n - 2) + digits;
    } else {
        stem += L"01";
    }
    return stem + extension;
}

int PickFiles(MSTR& initial, const MCHAR* title, std::vector<MSTR>* list) {
    std::vector<wchar_t> buffer(kFileBufferLength, L'\0');
    bmmHistoryList history;
    OPENFILENAMEW ofn;
    ofn.lStructSize = sizeof(OPENFILENAMEW);
    Interface* ip = GetCOREInterface();
    ofn.hwndOwner = ip ? ip->GetMAXHWnd() : nullptr;
    ofn.hInstance = GetModuleInstance();
    ofn.lpstrFilter = kFilter;
    ofn.lpstrFile = buffer.data();
    ofn.nMaxFile = kFileBufferLength;
    ofn.lpstrInitialDir = initial.data();
    ofn.lpstrTitle = title;
    ofn.Flags = OFN_EXPLORER | OFN_ENABLEHOOK | OFN_ENABLETEMPLATE | OFN_HIDEREADONLY | OFN_PATHMUSTEXIST |
                OFN_FILEMUSTEXIST | OFN_ENABLESIZING;
    if (list) ofn.Flags |= OFN_ALLOWMULTISELECT;
    ofn.lCustData = LPARAM(&history);
    ofn.lpfnHook = &HookProc;
    ofn.lpTemplateName = MAKEINTRESOURCEW(IDD_FILE_HISTORY);
    if (!GetOpenFileNameW(&ofn)) return 0;

    // The answer: zero-terminated strings, a second zero after the last (one string in single selection).
    std::vector<MSTR> strings;
    for (const wchar_t* s = buffer.data(); s < buffer.data() + buffer.size() && *s; s += std::wcslen(s) + 1)
        strings.emplace_back(s);
    if (strings.empty()) return 0;
    if (!list) {
        initial = strings.front();
        return 1;
    }
    list->insert(list->end(), strings.begin(), strings.end());
    return int(strings.size());
}

}  // namespace vandrels
