// hostrt::DialogService: the one way the host shows message boxes, modal dialogs (and beeps). Every box is
// recorded; a box is answered by a scripted answer when one is queued, else by the installed presenter (an
// interactive session), else by its default button. In quiet mode no box is shown: it is recorded as
// suppressed, answers its default button and leaves the scripted answers queued.
// Modal dialogs (DialogBoxParamW) run headless in every session: the dialog procedure gets WM_INITDIALOG, then
// the next queued dialog script acts on the controls as a user would (tick a box, type a text, press a
// button), and, when no script is queued or the script did not end the dialog, the default button is pressed.
// Every run is recorded with the final state of its controls. In quiet mode a dialog is not created at all:
// its procedure is not called, it answers the id of its default button and is recorded as suppressed.
#pragma once

#include "maxtypes.h"

#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace hostrt {

// A message box as the caller asked for it.
struct MessageBoxRequest {
    HWND owner = nullptr;
    std::wstring text;
    std::wstring title;
    UINT type = 0;  // MB_xxx buttons, icon, default button and modality bits

    UINT Buttons() const;
    UINT Icon() const;
    // The answers its buttons give, in order (IDOK, IDCANCEL, ...; IDHELP last with MB_HELP).
    std::vector<int> Answers() const;
    // The answer of its default button (MB_DEFBUTTONn; the first button when n is past the last).
    int DefaultAnswer() const;
};

// How a box was answered.
enum class BoxOutcome {
    Presented,  // shown by the presenter, which answered
    Scripted,   // answered from the scripted queue
    Default,    // headless with no scripted answer: the default button
    Suppressed  // quiet mode: not shown, the default button
};

struct MessageBoxRecord {
    MessageBoxRequest request;
    int answer = 0;
    BoxOutcome outcome = BoxOutcome::Default;
    std::wstring note;  // why a scripted answer was not used, when it was not
};

// One control of a dialog as it stood when the dialog ended.
struct DialogControlRecord {
    int id = 0;
    std::wstring className;
    std::wstring text;
    DWORD style = 0;
    bool visible = true;
    bool enabled = true;
    UINT check = 0;  // BST_xxx for buttons
};

// One run of a modal dialog.
struct DialogRecord {
    UINT resourceId = 0;
    HWND parent = nullptr;
    std::wstring caption;  // the caption when the dialog ended
    std::vector<DialogControlRecord> controls;
    INT_PTR result = 0;  // what the procedure passed to EndDialog
    BoxOutcome outcome = BoxOutcome::Default;
    LONG left = 0, top = 0, width = 0, height = 0;  // pixels, where the dialog was last placed
    std::wstring note;  // scripted actions that could not be done, a procedure that did not end the dialog

    // The control with this id; null when the dialog has none.
    const DialogControlRecord* Control(int id) const;
};

// One step of a dialog script: what a user does to a control.
struct DialogAction {
    enum class Kind {
        Press,    // click a button (an automatic check box or radio button changes its state first) or a link
        Check,    // click a check box unless it is already checked
        Uncheck,  // click a check box unless it is already clear
        SetText,  // type a text into an edit control (replacing its text)
        Close     // close the dialog from its title bar
    };
    Kind kind = Kind::Press;
    int control = 0;
    std::wstring text;

    static DialogAction PressButton(int id) { return {Kind::Press, id, {}}; }
    static DialogAction Tick(int id) { return {Kind::Check, id, {}}; }
    static DialogAction Untick(int id) { return {Kind::Uncheck, id, {}}; }
    static DialogAction Type(int id, std::wstring text) { return {Kind::SetText, id, std::move(text)}; }
    static DialogAction CloseDialog() { return {Kind::Close, 0, {}}; }
};
using DialogScript = std::vector<DialogAction>;

class DialogService {
public:
    static DialogService& Instance();

    // Shows, records and answers one message box (see above).
    int ShowMessageBox(const MessageBoxRequest& request);

    // Answers for the next boxes that are shown, first pushed first used. An answer that is not one
    // of the box's buttons is dropped and the box takes its default button (the record says so).
    void PushAnswer(int answer);
    void ClearAnswers();
    std::size_t PendingAnswers() const;

    // An interactive presenter shows the box and answers it; none (headless) by default.
    using Presenter = std::function<int(const MessageBoxRequest&)>;
    void SetPresenter(Presenter presenter);
    bool HasPresenter() const;

    std::vector<MessageBoxRecord> MessageBoxes() const;
    // Boxes that were shown (presented, scripted or default), leaving out suppressed ones.
    int ShownCount() const;

    // Scripts for the next dialogs that run, first pushed first used; each dialog takes one (also a dialog
    // suppressed in quiet mode does not take one).
    void PushDialogScript(DialogScript script);
    std::size_t PendingDialogScripts() const;
    // The next script, or false when none is queued.
    bool TakeDialogScript(DialogScript& script);
    void RecordDialog(DialogRecord record);
    std::vector<DialogRecord> Dialogs() const;

    // Beeps (MessageBeep), by kind.
    void Beep(UINT type);
    std::vector<UINT> Beeps() const;
    int BeepCount(UINT type) const;

    // Forgets the records, beeps, scripted answers and dialog scripts, and removes the presenter.
    void Reset();

private:
    DialogService() = default;
    mutable std::mutex mutex_;
    std::deque<int> answers_;
    Presenter presenter_;
    std::vector<MessageBoxRecord> boxes_;
    std::vector<UINT> beeps_;
    std::deque<DialogScript> dialogScripts_;
    std::vector<DialogRecord> dialogs_;
};

}  // namespace hostrt
