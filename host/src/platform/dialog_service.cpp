// Message boxes and beeps: recorded, then answered by a scripted answer, the presenter or the default button.
#include "platform/dialog_service.h"

#include "platform/session.h"
#include "strclass.h"
#include "winshim.h"

#include <algorithm>
#include <iostream>

namespace hostrt {

UINT MessageBoxRequest::Buttons() const { return type & MB_TYPEMASK; }

UINT MessageBoxRequest::Icon() const { return type & MB_ICONMASK; }

std::vector<int> MessageBoxRequest::Answers() const {
    std::vector<int> answers;
    switch (Buttons()) {
        case MB_OKCANCEL: answers = {IDOK, IDCANCEL}; break;
        case MB_ABORTRETRYIGNORE: answers = {IDABORT, IDRETRY, IDIGNORE}; break;
        case MB_YESNOCANCEL: answers = {IDYES, IDNO, IDCANCEL}; break;
        case MB_YESNO: answers = {IDYES, IDNO}; break;
        case MB_RETRYCANCEL: answers = {IDRETRY, IDCANCEL}; break;
        case MB_CANCELTRYCONTINUE: answers = {IDCANCEL, IDTRYAGAIN, IDCONTINUE}; break;
        default: answers = {IDOK}; break;  // MB_OK and unknown button sets
    }
    if (type & MB_HELP) answers.push_back(IDHELP);
    return answers;
}

int MessageBoxRequest::DefaultAnswer() const {
    const std::vector<int> answers = Answers();
    const std::size_t index = (type & MB_DEFMASK) >> 8;
    return index < answers.size() ? answers[index] : answers.front();
}

DialogService& DialogService::Instance() {
    static DialogService service;
    return service;
}

int DialogService::ShowMessageBox(const MessageBoxRequest& request) {
    MessageBoxRecord record{request, request.DefaultAnswer(), BoxOutcome::Default, {}};
    Presenter presenter;
    {
        std::lock_guard lock(mutex_);
        if (Session::Instance().Quiet()) {
            record.outcome = BoxOutcome::Suppressed;
        } else if (!answers_.empty()) {
            const int scripted = answers_.front();
            answers_.pop_front();
            const std::vector<int> valid = request.Answers();
            if (std::find(valid.begin(), valid.end(), scripted) != valid.end()) {
                record.answer = scripted;
                record.outcome = BoxOutcome::Scripted;
            } else {
                record.note = L"the scripted answer " + std::to_wstring(scripted) +
                              L" is none of this box's buttons; answered with the default button";
                std::cerr << "maxhost: message box \"" << MaxSDK::ToUTF8(request.title) << "\": "
                          << MaxSDK::ToUTF8(record.note) << "\n";
            }
        } else if (presenter_) {
            presenter = presenter_;
        }
    }
    // The presenter runs without the lock: a modal box may print, beep or open other boxes.
    if (presenter) {
        record.answer = presenter(request);
        record.outcome = BoxOutcome::Presented;
    }
    std::lock_guard lock(mutex_);
    boxes_.push_back(record);
    return record.answer;
}

void DialogService::PushAnswer(int answer) {
    std::lock_guard lock(mutex_);
    answers_.push_back(answer);
}

void DialogService::ClearAnswers() {
    std::lock_guard lock(mutex_);
    answers_.clear();
}

std::size_t DialogService::PendingAnswers() const {
    std::lock_guard lock(mutex_);
    return answers_.size();
}

void DialogService::SetPresenter(Presenter presenter) {
    std::lock_guard lock(mutex_);
    presenter_ = std::move(presenter);
}

bool DialogService::HasPresenter() const {
    std::lock_guard lock(mutex_);
    return bool(presenter_);
}

std::vector<MessageBoxRecord> DialogService::MessageBoxes() const {
    std::lock_guard lock(mutex_);
    return boxes_;
}

int DialogService::ShownCount() const {
    std::lock_guard lock(mutex_);
    return int(std::count_if(boxes_.begin(), boxes_.end(),
                             [](const MessageBoxRecord& r) { return r.outcome != BoxOutcome::Suppressed; }));
}

const DialogControlRecord* DialogRecord::Control(int id) const {
    for (const DialogControlRecord& c : controls)
        if (c.id == id) return &c;
    return nullptr;
}

void DialogService::PushDialogScript(DialogScript script) {
    std::lock_guard lock(mutex_);
    dialogScripts_.push_back(std::move(script));
}

std::size_t DialogService::PendingDialogScripts() const {
    std::lock_guard lock(mutex_);
    return dialogScripts_.size();
}

bool DialogService::TakeDialogScript(DialogScript& script) {
    std::lock_guard lock(mutex_);
    if (dialogScripts_.empty()) return false;
    script = std::move(dialogScripts_.front());
    dialogScripts_.pop_front();
    return true;
}

void DialogService::RecordDialog(DialogRecord record) {
    std::lock_guard lock(mutex_);
    dialogs_.push_back(std::move(record));
}

std::vector<DialogRecord> DialogService::Dialogs() const {
    std::lock_guard lock(mutex_);
    return dialogs_;
}

void DialogService::Beep(UINT type) {
    std::lock_guard lock(mutex_);
    beeps_.push_back(type);
}

std::vector<UINT> DialogService::Beeps() const {
    std::lock_guard lock(mutex_);
    return beeps_;
}

int DialogService::BeepCount(UINT type) const {
    std::lock_guard lock(mutex_);
    return int(std::count(beeps_.begin(), beeps_.end(), type));
}

void DialogService::Reset() {
    std::lock_guard lock(mutex_);
    answers_.clear();
    presenter_ = nullptr;
    boxes_.clear();
    beeps_.clear();
    dialogScripts_.clear();
    dialogs_.clear();
}

}  // namespace hostrt
