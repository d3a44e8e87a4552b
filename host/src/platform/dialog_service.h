// hostrt::DialogService: the one way the host shows message boxes (and beeps). Every box is recorded; a box is
// answered by a scripted answer when one is queued, else by the installed presenter (an interactive session),
// else by its default button. In quiet mode no box is shown: it is recorded as suppressed, answers its default
// button and leaves the scripted answers queued.
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

    // Beeps (MessageBeep), by kind.
    void Beep(UINT type);
    std::vector<UINT> Beeps() const;
    int BeepCount(UINT type) const;

    // Forgets the records, beeps and scripted answers, and removes the presenter.
    void Reset();

private:
    DialogService() = default;
    mutable std::mutex mutex_;
    std::deque<int> answers_;
    Presenter presenter_;
    std::vector<MessageBoxRecord> boxes_;
    std::vector<UINT> beeps_;
};

}  // namespace hostrt
