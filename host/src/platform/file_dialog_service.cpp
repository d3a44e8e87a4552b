// The open-file dialog's answers (queued, checked as the system dialog checks a choice) and records; the shell's
// open requests.
#include "platform/file_dialog_service.h"

#include "platform/paths.h"
#include "platform/session.h"
#include "commdlg.h"

#include <filesystem>
#include <system_error>

namespace hostrt {

namespace {

bool IsAbsolute(const std::wstring& path) {
    return (!path.empty() && IsPathSeparator(path[0])) || (path.size() >= 2 && path[1] == L':');
}

// The folder a name without a folder is taken from: the initial folder, or the folder of an initial file.
std::wstring BaseFolder(const std::wstring& initial) {
    std::error_code ec;
    if (!initial.empty() && std::filesystem::is_regular_file(ToNativePath(initial), ec)) return PathDirectory(initial);
    return WithTrailingSeparator(initial);
}

// Folders compare with '/' and '\' alike.
std::wstring FolderKey(const std::wstring& path) {
    std::wstring folder = PathDirectory(path);
    for (wchar_t& c : folder)
        if (c == L'\\') c = L'/';
    return folder;
}

// Why the system dialog would not accept these files, or "" when it would.
std::wstring Refusal(const FileDialogRequest& request, const std::vector<std::wstring>& files) {
    if (files.size() > 1 && !(request.flags & OFN_ALLOWMULTISELECT))
        return L"several files picked in a single-selection dialog";
    for (const std::wstring& file : files) {
        if (FolderKey(file) != FolderKey(files.front())) return L"the files picked are not in one folder";
        std::error_code ec;
        if ((request.flags & OFN_PATHMUSTEXIST) && !std::filesystem::is_directory(ToNativePath(PathDirectory(file)), ec))
            return L"the folder of " + file + L" does not exist";
        if ((request.flags & OFN_FILEMUSTEXIST) && !std::filesystem::is_regular_file(ToNativePath(file), ec))
            return L"the file " + file + L" does not exist";
    }
    return {};
}

}  // namespace

FileDialogService& FileDialogService::Instance() {
    static FileDialogService service;
    return service;
}

void FileDialogService::PushAnswer(std::vector<std::wstring> files) {
    std::lock_guard lock(mutex_);
    answers_.push_back(std::move(files));
}

std::size_t FileDialogService::PendingAnswers() const {
    std::lock_guard lock(mutex_);
    return answers_.size();
}

std::optional<std::vector<std::wstring>> FileDialogService::Run(const FileDialogRequest& request) {
    FileDialogRecord record;
    record.request = request;
    record.request.extension = nullptr;  // it lives only while the dialog runs
    std::vector<std::wstring> files;
    bool picked = false;
    Presenter presenter;
    {
        std::lock_guard lock(mutex_);
        if (Session::Instance().Quiet()) {
            record.suppressed = true;
        } else if (!answers_.empty()) {
            files = std::move(answers_.front());
            answers_.pop_front();
            picked = true;
        } else if (presenter_) {
            presenter = presenter_;
        } else {
            record.note = L"no answer queued: cancelled";
        }
    }
    // The presenter runs without the lock: the dialog runs an event loop of its own.
    if (presenter) {
        if (auto answer = presenter(request)) {
            files = std::move(*answer);
            picked = true;
        }
    }
    if (picked) {
        const std::wstring base = BaseFolder(request.initialDir);
        for (std::wstring& file : files)
            if (!IsAbsolute(file)) file = base + file;
        record.note = Refusal(request, files);
        if (record.note.empty() && !files.empty()) {
            record.chosen = std::move(files);
            record.confirmed = true;
        }
    }
    std::lock_guard lock(mutex_);
    records_.push_back(record);
    if (!record.confirmed) return std::nullopt;
    return record.chosen;
}

void FileDialogService::SetPresenter(Presenter presenter) {
    std::lock_guard lock(mutex_);
    presenter_ = std::move(presenter);
}

std::vector<FileDialogRecord> FileDialogService::Records() const {
    std::lock_guard lock(mutex_);
    return records_;
}

void FileDialogService::Reset() {
    std::lock_guard lock(mutex_);
    answers_.clear();
    records_.clear();
    presenter_ = nullptr;
}

ShellRequests& ShellRequests::Instance() {
    static ShellRequests requests;
    return requests;
}

void ShellRequests::Record(ShellRequest request) {
    std::lock_guard lock(mutex_);
    requests_.push_back(std::move(request));
}

std::vector<ShellRequest> ShellRequests::Requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
}

void ShellRequests::Reset() {
    std::lock_guard lock(mutex_);
    requests_.clear();
}

}  // namespace hostrt
