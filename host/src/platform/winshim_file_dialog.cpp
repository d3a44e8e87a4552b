// Windows' open-file dialog and shell open calls, answered by the host's file dialog service and shell requests.
#include "commdlg.h"
#include "shellapi.h"

#include "platform/file_dialog_service.h"
#include "platform/paths.h"

#include <cwchar>
#include <string>

namespace {

thread_local DWORD t_dialogError = 0;

std::vector<std::pair<std::wstring, std::wstring>> ParseFilter(LPCWSTR filter) {
    std::vector<std::pair<std::wstring, std::wstring>> pairs;
    while (filter && *filter) {
        std::wstring description = filter;
        filter += description.size() + 1;
        std::wstring pattern = filter;
        filter += pattern.size() + 1;
        pairs.emplace_back(std::move(description), std::move(pattern));
    }
    return pairs;
}

// The folder as the system dialog answers it: without its trailing separator, except for a root.
std::wstring AnswerFolder(const std::wstring& file) {
    std::wstring folder = hostrt::PathDirectory(file);
    if (folder.size() > 1 && hostrt::IsPathSeparator(folder.back()) && !(folder.size() == 3 && folder[1] == L':'))
        folder.pop_back();
    return folder;
}

}  // namespace

BOOL GetOpenFileNameW(LPOPENFILENAMEW ofn) {
    t_dialogError = 0;
    if (!ofn || ofn->lStructSize != sizeof(OPENFILENAMEW)) {
        t_dialogError = CDERR_STRUCTSIZE;
        return FALSE;
    }
    if (!ofn->lpstrFile || ofn->nMaxFile == 0) {
        t_dialogError = CDERR_INITIALIZATION;
        return FALSE;
    }
    hostrt::FileDialogRequest request;
    request.owner = ofn->hwndOwner;
    request.title = ofn->lpstrTitle ? ofn->lpstrTitle : L"Open";
    request.initialDir = ofn->lpstrInitialDir ? ofn->lpstrInitialDir : L"";
    request.filters = ParseFilter(ofn->lpstrFilter);
    request.flags = ofn->Flags;
    request.hasHook = (ofn->Flags & OFN_ENABLEHOOK) && ofn->lpfnHook;
    request.hasTemplate = (ofn->Flags & OFN_ENABLETEMPLATE) && ofn->lpTemplateName;
    const auto chosen = hostrt::FileDialogService::Instance().Run(request);
    if (!chosen) return FALSE;

    // One file: its full path. Several: the folder, then each name; every entry ends in a zero, and a second
    // zero ends the list.
    std::wstring answer;
    WORD fileOffset = 0;
    WORD extensionOffset = 0;
    if (chosen->size() == 1) {
        const std::wstring& file = chosen->front();
        answer = file;
        fileOffset = WORD(file.size() - hostrt::PathFileName(file).size());
        const std::wstring extension = hostrt::PathExtension(file);
        if (!extension.empty()) extensionOffset = WORD(file.size() - extension.size() + 1);
    } else {
        answer = AnswerFolder(chosen->front());
        fileOffset = WORD(answer.size() + 1);
        for (const std::wstring& file : *chosen) answer += L'\0' + hostrt::PathFileName(file);
    }
    answer += L'\0';
    answer += L'\0';
    if (answer.size() > ofn->nMaxFile) {
        ofn->lpstrFile[0] = wchar_t(answer.size());
        t_dialogError = FNERR_BUFFERTOOSMALL;
        return FALSE;
    }
    std::wmemcpy(ofn->lpstrFile, answer.data(), answer.size());
    ofn->nFileOffset = fileOffset;
    ofn->nFileExtension = extensionOffset;
    return TRUE;
}

DWORD CommDlgExtendedError() { return t_dialogError; }

HINSTANCE ShellExecuteW(HWND, LPCWSTR operation, LPCWSTR file, LPCWSTR parameters, LPCWSTR, int) {
    if (!file || !*file) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return reinterpret_cast<HINSTANCE>(INT_PTR(ERROR_FILE_NOT_FOUND));
    }
    hostrt::ShellRequests::Instance().Record({operation ? operation : L"", file, parameters ? parameters : L""});
    return reinterpret_cast<HINSTANCE>(INT_PTR(42));
}
