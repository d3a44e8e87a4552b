// Windows dialog calls: running a dialog template of a library, and reading and changing the dialog's
// windows while it runs.
#include "winshim.h"

#include "platform/dialogs.h"
#include "platform/resource_tables.h"
#include "platform/windows.h"

#include <algorithm>
#include <cwchar>
#include <string>

namespace {

using hostrt::DialogControl;
using hostrt::DialogWindow;
using hostrt::DialogWindows;

// The host's main window covers a 1920 × 1080 screen.
constexpr RECT kMainWindowRect{0, 0, 1920, 1080};

DialogWindow* DialogOf(HWND hwnd) {
    DialogWindow* dialog = DialogWindows::Instance().Dialog(hwnd);
    if (!dialog) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return dialog;
}

DialogControl* ItemOf(HWND dialog, int id) {
    DialogWindow* d = DialogOf(dialog);
    DialogControl* control = d ? d->Control(id) : nullptr;
    if (d && !control) SetLastError(ERROR_INVALID_PARAMETER);
    return control;
}

// The text of a dialog (its caption) or a control; null for any other handle.
std::wstring* TextOf(HWND hwnd) {
    if (DialogWindow* d = DialogWindows::Instance().Dialog(hwnd)) return &d->caption;
    if (DialogControl* c = DialogWindows::Instance().Control(hwnd)) return &c->text;
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return nullptr;
}

int CopyText(const std::wstring& text, LPWSTR buffer, int bufferMax) {
    if (!buffer || bufferMax <= 0) return 0;
    const int n = int(std::min<std::size_t>(text.size(), std::size_t(bufferMax - 1)));
    std::wmemcpy(buffer, text.data(), std::size_t(n));
    buffer[n] = L'\0';
    return n;
}

bool RectOf(HWND hwnd, RECT& rect) {
    if (!hwnd || hwnd == hostrt::WindowRegistry::Instance().MainWindow()) {
        rect = kMainWindowRect;
        return true;
    }
    if (DialogWindow* d = DialogWindows::Instance().Dialog(hwnd)) {
        rect = {d->left, d->top, d->left + d->width, d->top + d->height};
        return true;
    }
    if (DialogControl* c = DialogWindows::Instance().Control(hwnd)) {
        const LONG left = c->dialog->left + hostrt::DialogUnitsToPixelsX(c->x);
        const LONG top = c->dialog->top + hostrt::DialogUnitsToPixelsY(c->y);
        rect = {left, top, left + hostrt::DialogUnitsToPixelsX(c->cx), top + hostrt::DialogUnitsToPixelsY(c->cy)};
        return true;
    }
    if (hostrt::WindowRegistry::Instance().Exists(hwnd)) {  // fake top-level windows cover the screen
        rect = kMainWindowRect;
        return true;
    }
    return false;
}

}  // namespace

INT_PTR DialogBoxParamW(HINSTANCE instance, LPCWSTR templateName, HWND parent, DLGPROC proc, LPARAM param) {
    if (!proc) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return -1;
    }
    // Templates are numbered: a named template is not found.
    const MaxResourceDialog* resource =
        IS_INTRESOURCE(templateName) ? hostrt::FindDialogResource(instance, UINT(ULONG_PTR(templateName))) : nullptr;
    if (!resource) {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return -1;
    }
    return hostrt::RunDialog(*resource, parent, proc, param);
}

BOOL EndDialog(HWND dialog, INT_PTR result) {
    DialogWindow* d = DialogOf(dialog);
    if (!d) return FALSE;
    d->ended = true;
    d->result = result;
    return TRUE;
}

HWND GetDlgItem(HWND dialog, int id) { return ItemOf(dialog, id); }

int GetDlgCtrlID(HWND control) {
    DialogControl* c = DialogWindows::Instance().Control(control);
    if (!c) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return c ? c->id : 0;
}

BOOL SetDlgItemTextW(HWND dialog, int id, LPCWSTR text) {
    DialogControl* c = ItemOf(dialog, id);
    if (!c) return FALSE;
    c->text = text ? text : L"";
    return TRUE;
}

UINT GetDlgItemTextW(HWND dialog, int id, LPWSTR buffer, int bufferMax) {
    DialogControl* c = ItemOf(dialog, id);
    if (!c) {
        if (buffer && bufferMax > 0) buffer[0] = L'\0';
        return 0;
    }
    return UINT(CopyText(c->text, buffer, bufferMax));
}

BOOL SetWindowTextW(HWND hwnd, LPCWSTR text) {
    std::wstring* target = TextOf(hwnd);
    if (!target) return FALSE;
    *target = text ? text : L"";
    return TRUE;
}

int GetWindowTextW(HWND hwnd, LPWSTR buffer, int bufferMax) {
    if (buffer && bufferMax > 0) buffer[0] = L'\0';
    std::wstring* text = TextOf(hwnd);
    return text ? CopyText(*text, buffer, bufferMax) : 0;
}

int GetWindowTextLengthW(HWND hwnd) {
    std::wstring* text = TextOf(hwnd);
    return text ? int(text->size()) : 0;
}

BOOL ShowWindow(HWND hwnd, int command) {
    bool* visible = nullptr;
    if (DialogWindow* d = DialogWindows::Instance().Dialog(hwnd)) visible = &d->visible;
    else if (DialogControl* c = DialogWindows::Instance().Control(hwnd)) visible = &c->visible;
    if (!visible) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return FALSE;
    }
    const BOOL was = *visible ? TRUE : FALSE;
    *visible = command != SW_HIDE;
    return was;
}

BOOL IsWindowVisible(HWND hwnd) {
    if (DialogWindow* d = DialogWindows::Instance().Dialog(hwnd)) return d->visible;
    if (DialogControl* c = DialogWindows::Instance().Control(hwnd)) return c->visible && c->dialog->visible;
    return hwnd && hwnd == hostrt::WindowRegistry::Instance().MainWindow();
}

BOOL EnableWindow(HWND hwnd, BOOL enable) {
    bool* enabled = nullptr;
    if (DialogWindow* d = DialogWindows::Instance().Dialog(hwnd)) enabled = &d->enabled;
    else if (DialogControl* c = DialogWindows::Instance().Control(hwnd)) enabled = &c->enabled;
    if (!enabled) return FALSE;
    const BOOL wasDisabled = *enabled ? FALSE : TRUE;
    *enabled = enable != FALSE;
    return wasDisabled;
}

BOOL IsWindowEnabled(HWND hwnd) {
    if (DialogWindow* d = DialogWindows::Instance().Dialog(hwnd)) return d->enabled;
    if (DialogControl* c = DialogWindows::Instance().Control(hwnd)) return c->enabled;
    return hwnd && hwnd == hostrt::WindowRegistry::Instance().MainWindow();
}

UINT IsDlgButtonChecked(HWND dialog, int id) {
    DialogControl* c = ItemOf(dialog, id);
    return c && c->IsCheckable() ? c->check : BST_UNCHECKED;
}

BOOL CheckDlgButton(HWND dialog, int id, UINT check) {
    DialogControl* c = ItemOf(dialog, id);
    if (!c || !c->IsCheckable() || check > BST_INDETERMINATE) return FALSE;
    c->check = check;
    return TRUE;
}

LRESULT SendMessageW(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (DialogControl* c = DialogWindows::Instance().Control(hwnd)) {
        switch (message) {
            case WM_SETTEXT: c->text = lParam ? reinterpret_cast<LPCWSTR>(lParam) : L""; return TRUE;
            case WM_GETTEXT: return CopyText(c->text, reinterpret_cast<LPWSTR>(lParam), int(wParam));
            case WM_GETTEXTLENGTH: return LRESULT(c->text.size());
            case BM_GETCHECK: return c->IsCheckable() ? c->check : BST_UNCHECKED;
            case BM_SETCHECK:
                if (c->IsCheckable() && wParam <= BST_INDETERMINATE) c->check = UINT(wParam);
                return 0;
            case EM_SETSEL: return 0;
            case EM_SETREADONLY:
                c->style = wParam ? (c->style | ES_READONLY) : (c->style & ~DWORD(ES_READONLY));
                return TRUE;
            case CB_ADDSTRING:
                c->items.emplace_back(lParam ? reinterpret_cast<LPCWSTR>(lParam) : L"");
                return LRESULT(c->items.size() - 1);
            case CB_RESETCONTENT:
                c->items.clear();
                c->selection = CB_ERR;
                c->text.clear();
                return 0;
            case CB_GETCOUNT: return LRESULT(c->items.size());
            case CB_GETCURSEL: return c->selection;
            case CB_SETCURSEL:
                // An index out of the list clears the selection (and answers CB_ERR), as Windows does.
                if (wParam < c->items.size()) {
                    c->selection = int(wParam);
                    c->text = c->items[wParam];
                    return LRESULT(wParam);
                }
                c->selection = CB_ERR;
                c->text.clear();
                return CB_ERR;
            case CB_GETLBTEXTLEN: return wParam < c->items.size() ? LRESULT(c->items[wParam].size()) : CB_ERR;
            case CB_GETLBTEXT: {
                // The caller's buffer holds the item: CB_GETLBTEXTLEN + 1 characters.
                if (wParam >= c->items.size() || !lParam) return CB_ERR;
                const std::wstring& item = c->items[wParam];
                std::wmemcpy(reinterpret_cast<LPWSTR>(lParam), item.c_str(), item.size() + 1);
                return LRESULT(item.size());
            }
            default: return 0;
        }
    }
    if (DialogWindow* d = DialogWindows::Instance().Dialog(hwnd)) {
        switch (message) {
            case WM_SETTEXT: d->caption = lParam ? reinterpret_cast<LPCWSTR>(lParam) : L""; return TRUE;
            case WM_GETTEXT: return CopyText(d->caption, reinterpret_cast<LPWSTR>(lParam), int(wParam));
            case WM_GETTEXTLENGTH: return LRESULT(d->caption.size());
            default: return d->Send(message, wParam, lParam);
        }
    }
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return 0;
}

LRESULT SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam) {
    DialogControl* c = ItemOf(dialog, id);
    return c ? SendMessageW(c, message, wParam, lParam) : 0;
}

HWND GetParent(HWND hwnd) {
    if (DialogControl* c = DialogWindows::Instance().Control(hwnd)) return c->dialog;
    if (DialogWindow* d = DialogWindows::Instance().Dialog(hwnd)) return d->parent;
    return nullptr;
}

BOOL GetWindowRect(HWND hwnd, LPRECT rect) {
    RECT r;
    if (!rect || !RectOf(hwnd, r)) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return FALSE;
    }
    *rect = r;
    return TRUE;
}

namespace {
LONG_PTR* SlotOf(HWND hwnd, int index) {
    if (DialogWindow* d = DialogWindows::Instance().Dialog(hwnd)) {
        if (index == GWLP_USERDATA) return &d->userData;
        if (index == DWLP_USER) return &d->dlgUser;
        if (index == DWLP_MSGRESULT) return &d->msgResult;
    } else if (DialogControl* c = DialogWindows::Instance().Control(hwnd)) {
        if (index == GWLP_USERDATA) return &c->userData;
    }
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
}
}  // namespace

LONG_PTR SetWindowLongPtrW(HWND hwnd, int index, LONG_PTR value) {
    LONG_PTR* slot = SlotOf(hwnd, index);
    if (!slot) return 0;
    const LONG_PTR previous = *slot;
    *slot = value;
    return previous;
}

LONG_PTR GetWindowLongPtrW(HWND hwnd, int index) {
    LONG_PTR* slot = SlotOf(hwnd, index);
    return slot ? *slot : 0;
}

void CenterWindow(HWND hwnd, HWND parent) {
    DialogWindow* d = DialogWindows::Instance().Dialog(hwnd);
    if (!d) return;
    RECT around;
    if (!RectOf(parent, around)) around = kMainWindowRect;  // a parent the host does not know: the screen
    d->left = around.left + (around.right - around.left - d->width) / 2;
    d->top = around.top + (around.bottom - around.top - d->height) / 2;
}
