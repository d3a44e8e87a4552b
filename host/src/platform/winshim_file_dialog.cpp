// Windows' open-file dialog and shell open calls, answered by the host's file dialog service and shell requests.
#include "commdlg.h"
#include "shellapi.h"

#include "platform/dialogs.h"
#include "platform/file_dialog_service.h"
#include "platform/paths.h"
#include "platform/resource_tables.h"

#include <algorithm>
#include <cwchar>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

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

// A folder as the system dialog reports it: without its trailing separator, except for a root.
std::wstring WithoutClosingSeparator(std::wstring folder) {
    if (folder.size() > 1 && hostrt::IsPathSeparator(folder.back()) && !(folder.size() == 3 && folder[1] == L':'))
        folder.pop_back();
    return folder;
}

// The folder of a picked file as the system dialog answers it.
std::wstring AnswerFolder(const std::wstring& file) { return WithoutClosingSeparator(hostrt::PathDirectory(file)); }

// Answers a text as the CDM_ messages do: copied when it fits (with its zero), its size with the zero.
LRESULT AnswerText(const std::wstring& text, WPARAM bufferMax, LPARAM buffer) {
    const std::size_t needed = text.size() + 1;
    if (buffer && bufferMax >= needed) std::wmemcpy(reinterpret_cast<LPWSTR>(buffer), text.c_str(), needed);
    return LRESULT(needed);
}

bool IsFolder(const std::wstring& path) {
    std::error_code ec;
    return !path.empty() && std::filesystem::is_directory(hostrt::ToNativePath(path), ec);
}

// The file dialog with a plug-in's template and hook: the dialog window the hook's template is the child of
// (its procedure answers the CDM_ messages), and the template's window, driven by the hook.
class HookedFileDialog : public hostrt::FileDialogExtension {
public:
    HookedFileDialog(OPENFILENAMEW& ofn, const MaxResourceDialog& resource, const std::wstring& title)
        : ofn_(ofn), hook_(ofn.lpfnHook) {
        outer_.parent = ofn.hwndOwner;
        outer_.caption = title;
        outer_.proc = &OuterProc;
        outer_.userData = LONG_PTR(this);
        child_ = hostrt::BuildDialog(resource, &outer_, &ChildProc);
        const std::wstring initial = ofn.lpstrInitialDir ? ofn.lpstrInitialDir : L"";
        // The folder the dialog starts in, as the dialog reports folders (without a closing separator).
        folder_ = IsFolder(initial) ? WithoutClosingSeparator(initial) : initial.empty() ? initial : AnswerFolder(initial);
        auto& windows = hostrt::DialogWindows::Instance();
        windows.Push(&outer_);
        windows.Push(child_.get());
        open().push_back(this);
    }
    ~HookedFileDialog() override {
        auto& all = open();
        all.erase(std::remove(all.begin(), all.end(), this), all.end());
        hostrt::DialogWindows::Instance().Pop(child_.get());
        hostrt::DialogWindows::Instance().Pop(&outer_);
    }
    HookedFileDialog(const HookedFileDialog&) = delete;
    HookedFileDialog& operator=(const HookedFileDialog&) = delete;

    void Open() { child_->Send(WM_INITDIALOG, 0, LPARAM(&ofn_)); }

    // The pick is confirmed: the dialog shows the chosen files' folder, and the hook hears CDN_FILEOK.
    void FileOk(const std::vector<std::wstring>& chosen) {
        folder_ = AnswerFolder(chosen.front());
        name_ = chosen.size() == 1 ? hostrt::PathFileName(chosen.front()) : std::wstring();
        OFNOTIFYW notify;
        notify.hdr = {&outer_, 0, CDN_FILEOK};
        notify.lpOFN = &ofn_;
        notify.pszFile = ofn_.lpstrFile;
        child_->Send(WM_NOTIFY, 0, LPARAM(&notify));
    }

    std::vector<Control> Controls() const override {
        std::vector<Control> controls;
        for (const auto& c : child_->controls) {
            if (c->id == stc32) continue;
            controls.push_back({c->id, c->className, c->text, c->style, c->visible, c->enabled, c->items, c->selection});
        }
        return controls;
    }
    void SetCurrent(const std::wstring& folder, const std::wstring& name) override {
        folder_ = folder;
        name_ = name;
    }
    void Choose(int id, int item) override {
        hostrt::DialogControl* combo = child_->Control(id);
        if (!combo || item < 0 || item >= int(combo->items.size())) return;
        combo->selection = item;
        combo->text = combo->items[std::size_t(item)];
        child_->Send(WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE), LPARAM(combo));
    }
    void Press(int id) override { child_->Send(WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), LPARAM(child_->Control(id))); }
    bool TakeFolderChange() override { return std::exchange(folderChanged_, false); }
    bool TakeConfirm() override { return std::exchange(confirmed_, false); }
    std::wstring Folder() const override { return folder_; }
    std::wstring Name() const override { return name_; }

private:
    static std::vector<HookedFileDialog*>& open() {
        static std::vector<HookedFileDialog*> dialogs;
        return dialogs;
    }

    // The template's window passes everything to the hook.
    static INT_PTR ChildProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        for (HookedFileDialog* d : open())
            if (d->child_.get() == hwnd) return INT_PTR(d->hook_(hwnd, message, wParam, lParam));
        return 0;
    }

    // The file dialog as its hook asks it.
    static INT_PTR OuterProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* d = reinterpret_cast<HookedFileDialog*>(static_cast<hostrt::DialogWindow*>(hwnd)->userData);
        switch (message) {
        case CDM_GETSPEC: return AnswerText(d->name_, wParam, lParam);
        case CDM_GETFOLDERPATH: return AnswerText(d->folder_, wParam, lParam);
        case CDM_GETFILEPATH:
            return AnswerText(d->folder_.empty() ? d->name_ : hostrt::WithTrailingSeparator(d->folder_) + d->name_,
                              wParam, lParam);
        case CDM_SETCONTROLTEXT:
            if (wParam == edt1 || wParam == cmb13) d->name_ = lParam ? reinterpret_cast<LPCWSTR>(lParam) : L"";
            return 0;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDOK) d->confirmTyped();
            return TRUE;
        default: return 0;
        }
    }

    // OK with the typed name: a folder's name (full, or in the folder shown) moves the dialog into it, anything
    // else confirms the dialog with it.
    void confirmTyped() {
        const std::wstring inFolder = folder_.empty() ? name_ : hostrt::WithTrailingSeparator(folder_) + name_;
        const std::wstring target = IsFolder(name_) ? name_ : IsFolder(inFolder) && !name_.empty() ? inFolder : L"";
        if (!target.empty()) {
            folder_ = target;
            name_.clear();
            folderChanged_ = true;
        } else {
            confirmed_ = true;
        }
    }

    OPENFILENAMEW& ofn_;
    LPOFNHOOKPROC hook_;
    hostrt::DialogWindow outer_;
    std::unique_ptr<hostrt::DialogWindow> child_;
    std::wstring folder_;
    std::wstring name_;
    bool folderChanged_ = false;
    bool confirmed_ = false;
};

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
    std::unique_ptr<HookedFileDialog> hooked;
    if (request.hasHook && request.hasTemplate)
        if (const MaxResourceDialog* resource =
                hostrt::FindDialogResource(ofn->hInstance, UINT(reinterpret_cast<UINT_PTR>(ofn->lpTemplateName)))) {
            hooked = std::make_unique<HookedFileDialog>(*ofn, *resource, request.title);
            request.extension = hooked.get();
            hooked->Open();
        }
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
    if (hooked) hooked->FileOk(*chosen);
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
