#include "ui/file_dialog.h"

#include "commdlg.h"
#include "maxapi.h"

#include <cwchar>
#include <vector>

namespace vandrels {

namespace {

constexpr DWORD kFileBufferLength = 2048;

// Description and pattern pairs, each ending in a zero, and a second zero after the last.
const wchar_t kFilter[] = L"3ds Max (*.max)\0*.max\0"
                          L"3ds Max Characters (*.chr)\0*.chr\0"
                          L"All files (*.*)\0*.*\0";

}  // namespace

int PickFiles(MSTR& initial, const MCHAR* title, std::vector<MSTR>* list) {
    std::vector<wchar_t> buffer(kFileBufferLength, L'\0');
    OPENFILENAMEW ofn;
    ofn.lStructSize = sizeof(OPENFILENAMEW);
    Interface* ip = GetCOREInterface();
    ofn.hwndOwner = ip ? ip->GetMAXHWnd() : nullptr;
    ofn.lpstrFilter = kFilter;
    ofn.lpstrFile = buffer.data();
    ofn.nMaxFile = kFileBufferLength;
    ofn.lpstrInitialDir = initial.data();
    ofn.lpstrTitle = title;
    ofn.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST | OFN_ENABLESIZING;
    if (list) ofn.Flags |= OFN_ALLOWMULTISELECT;
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
