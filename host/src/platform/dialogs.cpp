// Modal dialogs from dialog templates: the dialog window and its controls, and the headless run that drives
// the dialog procedure with the dialog service's scripts or the default button.
#include "platform/dialogs.h"

#include "maxapi.h"
#include "platform/dialog_service.h"
#include "platform/session.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>

namespace hostrt {

namespace {

// Dialog base units of the templates' 8-point shell font at 100 %: 6 × 13 pixels per 4 × 8 dialog units.
constexpr LONG kBaseUnitX = 6;
constexpr LONG kBaseUnitY = 13;

bool Is(const std::wstring& className, const wchar_t* name) {
    if (className.size() != std::wcslen(name)) return false;
    for (std::size_t i = 0; i < className.size(); ++i)
        if (std::towlower(className[i]) != std::towlower(name[i])) return false;
    return true;
}

DialogRecord Snapshot(const DialogWindow& dialog) {
    DialogRecord record;
    record.resourceId = dialog.resourceId;
    record.parent = dialog.parent;
    record.caption = dialog.caption;
    record.result = dialog.result;
    record.left = dialog.left;
    record.top = dialog.top;
    record.width = dialog.width;
    record.height = dialog.height;
    for (const auto& c : dialog.controls)
        record.controls.push_back({c->id, c->className, c->text, c->style, c->visible, c->enabled, c->check});
    return record;
}

void AppendNote(std::wstring& note, const std::wstring& text) {
    if (!note.empty()) note += L"; ";
    note += text;
}

// Clicks a button as a user would: an automatic box or radio button changes its state, then the dialog hears
// of the click.
void Click(DialogWindow& dialog, DialogControl& control) {
    if (control.IsAutomatic()) {
        switch (control.ButtonType()) {
            case BS_AUTOCHECKBOX: control.check = control.check == BST_CHECKED ? BST_UNCHECKED : BST_CHECKED; break;
            case BS_AUTO3STATE: control.check = (control.check + 1) % 3; break;
            case BS_AUTORADIOBUTTON: {
                // The radio group: from the last WS_GROUP control at or before this one to the next WS_GROUP one.
                auto& all = dialog.controls;
                const auto self = std::find_if(all.begin(), all.end(), [&](const auto& c) { return c.get() == &control; });
                auto first = self;
                while (first != all.begin() && !((*first)->style & WS_GROUP)) --first;
                auto last = self + 1;
                while (last != all.end() && !((*last)->style & WS_GROUP)) ++last;
                for (auto it = first; it != last; ++it)
                    if ((*it)->IsButton() && (*it)->ButtonType() == BS_AUTORADIOBUTTON) (*it)->check = BST_UNCHECKED;
                control.check = BST_CHECKED;
                break;
            }
            default: break;
        }
    }
    dialog.Send(WM_COMMAND, MAKEWPARAM(control.id, BN_CLICKED), LPARAM(&control));
}

// Closing from the title bar: WM_CLOSE, and IDCANCEL when the procedure leaves it to the default handling.
void Close(DialogWindow& dialog) {
    if (!dialog.Send(WM_CLOSE, 0, 0) && !dialog.ended) {
        DialogControl* cancel = dialog.Control(IDCANCEL);
        dialog.Send(WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), LPARAM(cancel));
    }
}

// Does one scripted action; false (and a note) when a user could not do it.
bool Apply(DialogWindow& dialog, const DialogAction& action, std::wstring& note) {
    if (action.kind == DialogAction::Kind::Close) {
        Close(dialog);
        return true;
    }
    const std::wstring what = L"control " + std::to_wstring(action.control);
    DialogControl* control = dialog.Control(action.control);
    if (!control) {
        AppendNote(note, what + L" is not in dialog " + std::to_wstring(dialog.resourceId));
        return false;
    }
    if (!control->visible || !control->enabled) {
        AppendNote(note, what + (control->visible ? L" is disabled" : L" is hidden"));
        return false;
    }
    switch (action.kind) {
        case DialogAction::Kind::Press:
            if (Is(control->className, L"SysLink")) {  // a link tells its dialog through WM_NOTIFY
                NMHDR header{HWND(control), UINT_PTR(control->id), NM_CLICK};
                dialog.Send(WM_NOTIFY, WPARAM(control->id), LPARAM(&header));
                return true;
            }
            if (!control->IsButton()) {
                AppendNote(note, what + L" is not a button");
                return false;
            }
            Click(dialog, *control);
            return true;
        case DialogAction::Kind::Check:
        case DialogAction::Kind::Uncheck: {
            if (!control->IsCheckable()) {
                AppendNote(note, what + L" is not a check box or radio button");
                return false;
            }
            const UINT wanted = action.kind == DialogAction::Kind::Check ? BST_CHECKED : BST_UNCHECKED;
            if (control->check != wanted) Click(dialog, *control);
            return true;
        }
        case DialogAction::Kind::SetText:
            if (!Is(control->className, L"Edit") && !Is(control->className, L"ComboBox")) {
                AppendNote(note, what + L" takes no typed text");
                return false;
            }
            if (control->style & ES_READONLY && Is(control->className, L"Edit")) {
                AppendNote(note, what + L" is read-only");
                return false;
            }
            control->text = action.text;
            dialog.Send(WM_COMMAND, MAKEWPARAM(control->id, EN_CHANGE), LPARAM(control));
            return true;
        case DialogAction::Kind::Close: break;
    }
    return true;
}

// Takes a dialog off the running list however its run ends (a procedure may throw).
struct RunningGuard {
    DialogWindow* dialog;
    explicit RunningGuard(DialogWindow* d) : dialog(d) { DialogWindows::Instance().Push(d); }
    ~RunningGuard() { DialogWindows::Instance().Pop(dialog); }
    RunningGuard(const RunningGuard&) = delete;
    RunningGuard& operator=(const RunningGuard&) = delete;
};

}  // namespace

LONG DialogUnitsToPixelsX(LONG units) { return LONG(float(units * kBaseUnitX / 4) * MaxSDK::GetUIScaleFactor()); }

LONG DialogUnitsToPixelsY(LONG units) { return LONG(float(units * kBaseUnitY / 8) * MaxSDK::GetUIScaleFactor()); }

bool DialogControl::IsButton() const { return Is(className, L"Button"); }

bool DialogControl::IsCheckable() const {
    if (!IsButton()) return false;
    const DWORD type = ButtonType();
    return type == BS_CHECKBOX || type == BS_AUTOCHECKBOX || type == BS_3STATE || type == BS_AUTO3STATE ||
           type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON;
}

bool DialogControl::IsAutomatic() const {
    const DWORD type = ButtonType();
    return IsButton() && (type == BS_AUTOCHECKBOX || type == BS_AUTO3STATE || type == BS_AUTORADIOBUTTON);
}

DialogControl* DialogWindow::Control(int id) const {
    for (const auto& c : controls)
        if (c->id == id) return c.get();
    return nullptr;
}

int DialogWindow::DefaultButton() const {
    for (const auto& c : controls)
        if (c->IsButton() && c->ButtonType() == BS_DEFPUSHBUTTON) return c->id;
    return IDOK;
}

INT_PTR DialogWindow::Send(UINT message, WPARAM wParam, LPARAM lParam) {
    return proc ? proc(this, message, wParam, lParam) : 0;
}

DialogWindows& DialogWindows::Instance() {
    static DialogWindows windows;
    return windows;
}

DialogWindow* DialogWindows::Dialog(HWND hwnd) const {
    for (DialogWindow* d : running_)
        if (d == hwnd) return d;
    return nullptr;
}

DialogControl* DialogWindows::Control(HWND hwnd) const {
    if (!hwnd) return nullptr;
    for (DialogWindow* d : running_)
        for (const auto& c : d->controls)
            if (c.get() == hwnd) return c.get();
    return nullptr;
}

void DialogWindows::Pop(DialogWindow* dialog) {
    running_.erase(std::remove(running_.begin(), running_.end(), dialog), running_.end());
}

std::unique_ptr<DialogWindow> BuildDialog(const MaxResourceDialog& resource, HWND parent, DLGPROC proc) {
    auto built = std::make_unique<DialogWindow>();
    DialogWindow& dialog = *built;
    dialog.resourceId = resource.id;
    dialog.parent = parent;
    dialog.proc = proc;
    dialog.caption = resource.caption ? resource.caption : L"";
    dialog.style = resource.style;
    dialog.width = DialogUnitsToPixelsX(resource.cx);
    dialog.height = DialogUnitsToPixelsY(resource.cy);
    dialog.left = DialogUnitsToPixelsX(resource.x);
    dialog.top = DialogUnitsToPixelsY(resource.y);
    for (int i = 0; i < resource.numControls; ++i) {
        const MaxResourceControl& t = resource.controls[i];
        auto control = std::make_unique<DialogControl>();
        control->dialog = &dialog;
        control->id = t.id;
        control->className = t.className ? t.className : L"";
        control->text = t.text ? t.text : L"";
        control->style = t.style;
        control->visible = (t.style & WS_VISIBLE) != 0;
        control->enabled = (t.style & WS_DISABLED) == 0;
        control->x = t.x;
        control->y = t.y;
        control->cx = t.cx;
        control->cy = t.cy;
        dialog.controls.push_back(std::move(control));
    }
    return built;
}

INT_PTR RunDialog(const MaxResourceDialog& resource, HWND parent, DLGPROC proc, LPARAM param) {
    const std::unique_ptr<DialogWindow> built = BuildDialog(resource, parent, proc);
    DialogWindow& dialog = *built;

    DialogService& service = DialogService::Instance();
    if (Session::Instance().Quiet()) {
        DialogRecord record = Snapshot(dialog);
        record.result = dialog.DefaultButton();
        record.outcome = BoxOutcome::Suppressed;
        service.RecordDialog(std::move(record));
        return dialog.DefaultButton();
    }

    std::wstring note;
    DialogScript script;
    const bool scripted = service.TakeDialogScript(script);
    {
        RunningGuard running(&dialog);
        DialogControl* focus = nullptr;
        for (const auto& c : dialog.controls)
            if (!focus && c->visible && c->enabled && (c->style & WS_TABSTOP)) focus = c.get();
        dialog.Send(WM_INITDIALOG, WPARAM(focus), param);
        for (std::size_t i = 0; i < script.size() && !dialog.ended; ++i) {
            if (!Apply(dialog, script[i], note)) {
                AppendNote(note, L"the rest of the script was dropped");
                break;
            }
            if (dialog.ended && i + 1 < script.size())
                AppendNote(note, L"the dialog ended before " + std::to_wstring(script.size() - i - 1) +
                                     L" scripted action(s)");
        }
        if (!dialog.ended) {
            // As the Enter key: the default button, pressed whether or not the template has it as a control.
            if (DialogControl* button = dialog.Control(dialog.DefaultButton()); button && button->visible)
                Click(dialog, *button);
            else
                dialog.Send(WM_COMMAND, MAKEWPARAM(dialog.DefaultButton(), BN_CLICKED), 0);
        }
        if (!dialog.ended) Close(dialog);
        if (!dialog.ended) {
            AppendNote(note, L"the dialog procedure did not end the dialog; the host ended it with IDCANCEL");
            dialog.ended = true;
            dialog.result = IDCANCEL;
        }
    }
    DialogRecord record = Snapshot(dialog);
    record.outcome = scripted ? BoxOutcome::Scripted : BoxOutcome::Default;
    record.note = note;
    service.RecordDialog(std::move(record));
    return dialog.result;
}

}  // namespace hostrt
