// hostrt: modal dialogs built from a library's dialog templates: the in-memory dialog window with its
// controls, and the run that drives a dialog procedure through the dialog service (see dialog_service.h).
#pragma once

#include "resource_module.h"
#include "winshim.h"

#include <memory>
#include <string>
#include <vector>

namespace hostrt {

struct DialogWindow;

// A control of a running dialog; its address is its handle.
struct DialogControl {
    DialogWindow* dialog = nullptr;
    int id = 0;
    std::wstring className;
    std::wstring text;
    DWORD style = 0;
    bool visible = true;
    bool enabled = true;
    UINT check = BST_UNCHECKED;
    LONG x = 0, y = 0, cx = 0, cy = 0;  // dialog units
    LONG_PTR userData = 0;
    std::vector<std::wstring> items;  // a combo box's list
    int selection = CB_ERR;           // the selected item of a combo box

    bool IsButton() const;
    DWORD ButtonType() const { return style & BS_TYPEMASK; }
    bool IsCheckable() const;  // check boxes and radio buttons
    bool IsAutomatic() const;  // changes its own check state when clicked
};

// A running modal dialog; its address is its handle.
struct DialogWindow {
    UINT resourceId = 0;
    HWND parent = nullptr;
    DLGPROC proc = nullptr;
    std::wstring caption;
    DWORD style = 0;
    bool visible = true;
    bool enabled = true;
    LONG left = 0, top = 0, width = 0, height = 0;  // pixels
    std::vector<std::unique_ptr<DialogControl>> controls;
    bool ended = false;
    INT_PTR result = 0;
    LONG_PTR userData = 0;   // GWLP_USERDATA
    LONG_PTR dlgUser = 0;    // DWLP_USER
    LONG_PTR msgResult = 0;  // DWLP_MSGRESULT

    DialogControl* Control(int id) const;
    // The id the dialog's default button answers: its DEFPUSHBUTTON, else IDOK.
    int DefaultButton() const;
    // Sends a message to the procedure and answers what it returned.
    INT_PTR Send(UINT message, WPARAM wParam, LPARAM lParam);
};

// The dialogs that are running (innermost last) and lookups of handles among them.
class DialogWindows {
public:
    static DialogWindows& Instance();
    DialogWindow* Dialog(HWND hwnd) const;
    DialogControl* Control(HWND hwnd) const;
    void Push(DialogWindow* dialog) { running_.push_back(dialog); }
    void Pop(DialogWindow* dialog);

private:
    std::vector<DialogWindow*> running_;
};

// Builds the dialog window of a template, not yet running (see DialogWindows::Push).
std::unique_ptr<DialogWindow> BuildDialog(const MaxResourceDialog& resource, HWND parent, DLGPROC proc);

// Builds the dialog from its template and runs it (DialogBoxParamW's work once the template is found).
INT_PTR RunDialog(const MaxResourceDialog& resource, HWND parent, DLGPROC proc, LPARAM param);

// Pixels of a length in dialog units (horizontal or vertical) at the host's UI scale.
LONG DialogUnitsToPixelsX(LONG units);
LONG DialogUnitsToPixelsY(LONG units);

}  // namespace hostrt
