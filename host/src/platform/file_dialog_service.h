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

// A plug-in's template in the dialog (a hook with OFN_ENABLETEMPLATE), as a presenter shows it: its controls,
// and the user's actions on them passed to the plug-in's hook. What the hook then asks of the dialog (another
// folder, confirming a typed name) waits here until the presenter takes it.
class FileDialogExtension {
public:
    struct Control {
        int id = 0;
        std::wstring className;  // "Button", "Static", "ComboBox", ...
        std::wstring text;
        DWORD style = 0;
        bool visible = true;
        bool enabled = true;
        std::vector<std::wstring> items;  // a combo box's list
        int selection = -1;
    };
    virtual ~FileDialogExtension() = default;
    // The template's controls as they stand, in template order, without the place-holder of the dialog's own.
    virtual std::vector<Control> Controls() const = 0;
    // The folder the dialog shows and the file name typed, as the user left them before an action.
    virtual void SetCurrent(const std::wstring& folder, const std::wstring& name) = 0;
    // The user picked item of the combo box id, or clicked the button id; the hook hears of it.
    virtual void Choose(int id, int item) = 0;
    virtual void Press(int id) = 0;
    // What the hook asked: move to Folder() (true once per request); confirm with the typed Name().
    virtual bool TakeFolderChange() = 0;
    virtual bool TakeConfirm() = 0;
    virtual std::wstring Folder() const = 0;
    virtual std::wstring Name() const = 0;
};

// The dialog as the caller asked for it.
struct FileDialogRequest {
    HWND owner = nullptr;
    std::wstring title;
    std::wstring initialDir;
    std::vector<std::pair<std::wstring, std::wstring>> filters;  // (description, pattern), in order
    DWORD flags = 0;                                              // OFN_xxx
    bool hasHook = false;
    bool hasTemplate = false;
    // The plug-in's template with its hook, while the dialog runs (null without one, or when the template is
    // not among the plug-in's resources).
    FileDialogExtension* extension = nullptr;
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
