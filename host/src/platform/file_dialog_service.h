// hostrt::FileDialogService: how the host answers the system's open-file dialog (GetOpenFileNameW) and what it
// remembers of each run. A headless host has nobody to pick files: a test or a script queues the files a user
// would pick (PushAnswer), and the dialog takes the next answer; with none queued the installed presenter (an
// interactive session's file dialog) asks the user, and without one the dialog is cancelled. In
// quiet mode nothing is shown, the dialog is cancelled and the queued answers stay. An answer the dialog would
// refuse (several files in a single-selection dialog, files from different folders, a missing file where the
// file must exist) cancels it, and the record says why.
// hostrt::ShellRequests: the documents and web addresses plug-ins asked the system to open (ShellExecuteW).
#pragma once

#include "maxtypes.h"

#include <mutex>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace hostrt {

// The dialog as the caller asked for it.
struct FileDialogRequest {
    HWND owner = nullptr;
    std::wstring title;
    std::wstring initialDir;
    std::vector<std::pair<std::wstring, std::wstring>> filters;  // (description, pattern), in order
    DWORD flags = 0;                                              // OFN_xxx
    bool hasHook = false;
    bool hasTemplate = false;
};

// How a run ended.
struct FileDialogRecord {
    FileDialogRequest request;
    std::vector<std::wstring> chosen;  // full paths, in the order picked; empty when cancelled
    bool confirmed = false;
    bool suppressed = false;  // quiet mode
    std::wstring note;        // why a queued answer was refused
};

class FileDialogService {
public:
    static FileDialogService& Instance();

    // The files the user picks in the next dialog, first pushed first used: full paths, or names taken from
    // the dialog's initial folder. An empty answer presses Cancel.
    void PushAnswer(std::vector<std::wstring> files);
    std::size_t PendingAnswers() const;

    // Runs one dialog: the full paths picked, or nothing when it was cancelled. Every run is recorded.
    std::optional<std::vector<std::wstring>> Run(const FileDialogRequest& request);
    std::vector<FileDialogRecord> Records() const;

    // An interactive presenter shows the dialog and answers the full paths picked (nothing for Cancel); none
    // (headless) by default. Queued answers go first.
    using Presenter = std::function<std::optional<std::vector<std::wstring>>(const FileDialogRequest&)>;
    void SetPresenter(Presenter presenter);

    // Forgets the records and the queued answers, and removes the presenter.
    void Reset();

private:
    FileDialogService() = default;
    mutable std::mutex mutex_;
    Presenter presenter_;
    std::deque<std::vector<std::wstring>> answers_;
    std::vector<FileDialogRecord> records_;
};

// One ShellExecuteW call.
struct ShellRequest {
    std::wstring operation;  // "open", ... ("" for the default verb)
    std::wstring file;
    std::wstring parameters;
};

class ShellRequests {
public:
    static ShellRequests& Instance();
    void Record(ShellRequest request);
    std::vector<ShellRequest> Requests() const;
    void Reset();

private:
    ShellRequests() = default;
    mutable std::mutex mutex_;
    std::vector<ShellRequest> requests_;
};

}  // namespace hostrt
