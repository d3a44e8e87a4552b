// The Windows calls a plug-in makes, answered by the host: message boxes and beeps, fake top-level windows,
// cursors, file times, temporary folder and path splitting. Paths may use '/' or '\' as separators.
#pragma once

#include "maxtypes.h"

using HANDLE = void*;
using LPCWSTR = const wchar_t*;
using LPWSTR = wchar_t*;
using LPCSTR = const char*;
using errno_t = int;
using LONG_PTR = std::intptr_t;

struct SECURITY_ATTRIBUTES {
    DWORD nLength = 0;
    void* lpSecurityDescriptor = nullptr;
    BOOL bInheritHandle = FALSE;
};
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

// ---------------------------------------------------------------- errors of the last call (per thread)
#define ERROR_SUCCESS 0
#define ERROR_FILE_NOT_FOUND 2
#define ERROR_PATH_NOT_FOUND 3
#define ERROR_ACCESS_DENIED 5
#define ERROR_INVALID_HANDLE 6
#define ERROR_NOT_SUPPORTED 50
#define ERROR_FILE_EXISTS 80
#define ERROR_INVALID_PARAMETER 87
#define ERROR_INSUFFICIENT_BUFFER 122
#define ERROR_ALREADY_EXISTS 183
#define ERROR_INVALID_WINDOW_HANDLE 1400
#define ERROR_RESOURCE_NAME_NOT_FOUND 1814
DWORD GetLastError();
void SetLastError(DWORD code);

// ---------------------------------------------------------------- message boxes and beeps
// Buttons (low nibble), icon (second nibble), default button (third nibble).
#define MB_OK 0x00000000u
#define MB_OKCANCEL 0x00000001u
#define MB_ABORTRETRYIGNORE 0x00000002u
#define MB_YESNOCANCEL 0x00000003u
#define MB_YESNO 0x00000004u
#define MB_RETRYCANCEL 0x00000005u
#define MB_CANCELTRYCONTINUE 0x00000006u
#define MB_TYPEMASK 0x0000000Fu
#define MB_ICONHAND 0x00000010u
#define MB_ICONQUESTION 0x00000020u
#define MB_ICONEXCLAMATION 0x00000030u
#define MB_ICONASTERISK 0x00000040u
#define MB_ICONERROR MB_ICONHAND
#define MB_ICONSTOP MB_ICONHAND
#define MB_ICONWARNING MB_ICONEXCLAMATION
#define MB_ICONINFORMATION MB_ICONASTERISK
#define MB_ICONMASK 0x000000F0u
#define MB_DEFBUTTON1 0x00000000u
#define MB_DEFBUTTON2 0x00000100u
#define MB_DEFBUTTON3 0x00000200u
#define MB_DEFBUTTON4 0x00000300u
#define MB_DEFMASK 0x00000F00u
#define MB_APPLMODAL 0x00000000u
#define MB_SYSTEMMODAL 0x00001000u
#define MB_TASKMODAL 0x00002000u
#define MB_HELP 0x00004000u
#define MB_SETFOREGROUND 0x00010000u
#define MB_TOPMOST 0x00040000u

// Answers of a message box.
#define IDOK 1
#define IDCANCEL 2
#define IDABORT 3
#define IDRETRY 4
#define IDIGNORE 5
#define IDYES 6
#define IDNO 7
#define IDCLOSE 8
#define IDHELP 9
#define IDTRYAGAIN 10
#define IDCONTINUE 11

// Shows (or, headless, records and answers) a message box; see hostrt::DialogService.
int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type);
#define MessageBox MessageBoxW
// Records a beep of the given kind (MB_ICONxxx, MB_OK or 0xFFFFFFFF); always succeeds.
BOOL MessageBeep(UINT type);

// ---------------------------------------------------------------- top-level windows
// Finds a top-level window by class and/or title (null matches any); null when none.
HWND FindWindowW(LPCWSTR className, LPCWSTR windowName);
#define FindWindow FindWindowW
BOOL DestroyWindow(HWND hwnd);
BOOL IsWindow(HWND hwnd);

// ---------------------------------------------------------------- modal dialogs from a library's resources
// A dialog is built from a DIALOG/DIALOGEX template of the library's resource script and runs modally: its
// procedure gets WM_INITDIALOG, then the host's dialog service drives it (scripted actions, else the default
// button) until the procedure calls EndDialog; see hostrt::DialogService. Handles of a dialog and its controls
// are valid while the dialog runs.
#define CALLBACK
using DLGPROC = INT_PTR (*)(HWND, UINT, WPARAM, LPARAM);

struct RECT {
    LONG left = 0;
    LONG top = 0;
    LONG right = 0;
    LONG bottom = 0;
};
using LPRECT = RECT*;

#define LOWORD(l) ((WORD)(((DWORD_PTR)(l)) & 0xffff))
#define HIWORD(l) ((WORD)((((DWORD_PTR)(l)) >> 16) & 0xffff))
#define MAKEWPARAM(l, h) ((WPARAM)(DWORD)((((DWORD)(WORD)(l)) | ((DWORD)(WORD)(h)) << 16)))
#define MAKELPARAM(l, h) ((LPARAM)(DWORD)((((DWORD)(WORD)(l)) | ((DWORD)(WORD)(h)) << 16)))

// Messages a dialog procedure receives or a plug-in sends to a control.
#define WM_CLOSE 0x0010
#define WM_SETTEXT 0x000C
#define WM_GETTEXT 0x000D
#define WM_GETTEXTLENGTH 0x000E
#define WM_INITDIALOG 0x0110
#define WM_COMMAND 0x0111
#define WM_NOTIFY 0x004E
#define BM_GETCHECK 0x00F0
#define BM_SETCHECK 0x00F1
#define EM_SETSEL 0x00B1
#define EM_SETREADONLY 0x00CF
// Combo boxes: their list of texts and the selected one (CB_ERR without one).
#define CB_ADDSTRING 0x0143
#define CB_GETCOUNT 0x0146
#define CB_GETCURSEL 0x0147
#define CB_GETLBTEXT 0x0148
#define CB_GETLBTEXTLEN 0x0149
#define CB_RESETCONTENT 0x014B
#define CB_SETCURSEL 0x014E
#define CB_ERR (-1)
// Notification codes in the high word of WM_COMMAND's wParam.
#define BN_CLICKED 0
#define EN_CHANGE 0x0300
#define CBN_SELCHANGE 1
// WM_NOTIFY's lParam: the control that sends it and what happened (a link control sends NM_CLICK when clicked).
struct NMHDR {
    HWND hwndFrom = nullptr;
    UINT_PTR idFrom = 0;
    UINT code = 0;
};
#define NM_CLICK ((UINT)-2)
#define NM_RETURN ((UINT)-4)
// Check states.
#define BST_UNCHECKED 0
#define BST_CHECKED 1
#define BST_INDETERMINATE 2
// ShowWindow commands.
#define SW_HIDE 0
#define SW_SHOWNORMAL 1
#define SW_NORMAL 1
#define SW_SHOW 5
#define SW_SHOWNA 8
// Window data slots.
#define GWLP_USERDATA (-21)
#define DWLP_MSGRESULT 0
#define DWLP_USER 16

// Style bits the host looks at (the resource compiler knows the full set by name).
#define WS_CHILD 0x40000000u
#define WS_VISIBLE 0x10000000u
#define WS_DISABLED 0x08000000u
#define WS_VSCROLL 0x00200000u
#define WS_GROUP 0x00020000u
#define WS_TABSTOP 0x00010000u
#define BS_PUSHBUTTON 0x0u
#define BS_DEFPUSHBUTTON 0x1u
#define BS_CHECKBOX 0x2u
#define BS_AUTOCHECKBOX 0x3u
#define BS_RADIOBUTTON 0x4u
#define BS_3STATE 0x5u
#define BS_AUTO3STATE 0x6u
#define BS_GROUPBOX 0x7u
#define BS_AUTORADIOBUTTON 0x9u
#define BS_TYPEMASK 0xFu
#define SS_CENTER 0x1u
#define ES_MULTILINE 0x4u
#define ES_READONLY 0x800u
#define CBS_DROPDOWNLIST 0x3u

// Runs dialog template id of instance's resources modally and answers what the procedure passed to EndDialog;
// -1 (and GetLastError()) when the template is missing or the procedure is null.
INT_PTR DialogBoxParamW(HINSTANCE instance, LPCWSTR templateName, HWND parent, DLGPROC proc, LPARAM param);
#define DialogBoxParam DialogBoxParamW
// Ends a running dialog with result once its procedure returns.
BOOL EndDialog(HWND dialog, INT_PTR result);
HWND GetDlgItem(HWND dialog, int id);
int GetDlgCtrlID(HWND control);
BOOL SetDlgItemTextW(HWND dialog, int id, LPCWSTR text);
#define SetDlgItemText SetDlgItemTextW
// Copies at most bufferMax-1 characters and a terminating zero; answers the number copied.
UINT GetDlgItemTextW(HWND dialog, int id, LPWSTR buffer, int bufferMax);
#define GetDlgItemText GetDlgItemTextW
BOOL SetWindowTextW(HWND hwnd, LPCWSTR text);
#define SetWindowText SetWindowTextW
int GetWindowTextW(HWND hwnd, LPWSTR buffer, int bufferMax);
#define GetWindowText GetWindowTextW
int GetWindowTextLengthW(HWND hwnd);
#define GetWindowTextLength GetWindowTextLengthW
// Shows or hides a dialog or control; answers whether it was visible before.
BOOL ShowWindow(HWND hwnd, int command);
BOOL IsWindowVisible(HWND hwnd);
// Enables or disables a window; answers whether it was disabled before.
BOOL EnableWindow(HWND hwnd, BOOL enable);
BOOL IsWindowEnabled(HWND hwnd);
UINT IsDlgButtonChecked(HWND dialog, int id);
BOOL CheckDlgButton(HWND dialog, int id, UINT check);
// Text, check and edit messages to a control; WM_COMMAND and WM_CLOSE to a dialog reach its procedure.
LRESULT SendMessageW(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
#define SendMessage SendMessageW
LRESULT SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM wParam, LPARAM lParam);
#define SendDlgItemMessage SendDlgItemMessageW
// A control's dialog; a dialog's parent (the window it was run for).
HWND GetParent(HWND hwnd);
// Screen rectangle in pixels (dialog units at the host's UI scale).
BOOL GetWindowRect(HWND hwnd, LPRECT rect);
LONG_PTR SetWindowLongPtrW(HWND hwnd, int index, LONG_PTR value);
#define SetWindowLongPtr SetWindowLongPtrW
LONG_PTR GetWindowLongPtrW(HWND hwnd, int index);
#define GetWindowLongPtr GetWindowLongPtrW
// The host SDK's helper: centres a dialog on parent (on the screen, which the host's main window covers, when
// parent is null or unknown).
void CenterWindow(HWND hwnd, HWND parent);

// ---------------------------------------------------------------- cursors
#define MAKEINTRESOURCEW(i) ((LPWSTR)((ULONG_PTR)((WORD)(i))))
#define MAKEINTRESOURCE MAKEINTRESOURCEW
#define IS_INTRESOURCE(r) ((((ULONG_PTR)(r)) >> 16) == 0)
#define IDC_ARROW MAKEINTRESOURCEW(32512)
#define IDC_IBEAM MAKEINTRESOURCEW(32513)
#define IDC_WAIT MAKEINTRESOURCEW(32514)
#define IDC_CROSS MAKEINTRESOURCEW(32515)
#define IDC_UPARROW MAKEINTRESOURCEW(32516)
#define IDC_SIZENWSE MAKEINTRESOURCEW(32642)
#define IDC_SIZENESW MAKEINTRESOURCEW(32643)
#define IDC_SIZEWE MAKEINTRESOURCEW(32644)
#define IDC_SIZENS MAKEINTRESOURCEW(32645)
#define IDC_SIZEALL MAKEINTRESOURCEW(32646)
#define IDC_NO MAKEINTRESOURCEW(32648)
#define IDC_HAND MAKEINTRESOURCEW(32649)
#define IDC_APPSTARTING MAKEINTRESOURCEW(32650)
// Copies string id of the library's string table into buffer (at most bufferMax-1 characters, then a
// terminating zero) and answers the number of characters copied; 0 when the library has no such string.
int LoadStringW(HINSTANCE instance, UINT id, LPWSTR buffer, int bufferMax);
#define LoadString LoadStringW
// Standard cursors only (instance null); null for anything else.
HCURSOR LoadCursorW(HINSTANCE instance, LPCWSTR name);
#define LoadCursor LoadCursorW
// Makes cursor the current one and answers the previous one.
HCURSOR SetCursor(HCURSOR cursor);
HCURSOR GetCursor();

// ---------------------------------------------------------------- files and folders
#define INVALID_HANDLE_VALUE ((HANDLE)(LONG_PTR)-1)
#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define FILE_SHARE_READ 0x00000001u
#define FILE_SHARE_WRITE 0x00000002u
#define FILE_SHARE_DELETE 0x00000004u
#define CREATE_NEW 1
#define CREATE_ALWAYS 2
#define OPEN_EXISTING 3
#define OPEN_ALWAYS 4
#define TRUNCATE_EXISTING 5
#define FILE_ATTRIBUTE_NORMAL 0x00000080u
#define FILE_FLAG_BACKUP_SEMANTICS 0x02000000u
#define MAX_PATH 260

// Opens a file (a folder only with FILE_FLAG_BACKUP_SEMANTICS) for its metadata; INVALID_HANDLE_VALUE and
// GetLastError() on failure. The creating dispositions create or truncate the file as Windows does.
HANDLE CreateFileW(LPCWSTR fileName, DWORD access, DWORD shareMode, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD flagsAndAttributes, HANDLE templateFile);
#define CreateFile CreateFileW
BOOL CloseHandle(HANDLE handle);
// Times of an open file in 100 ns units since 1601 (UTC); any pointer may be null. On failure the
// requested times are zero and the answer is FALSE.
BOOL GetFileTime(HANDLE file, FILETIME* creation, FILETIME* lastAccess, FILETIME* lastWrite);
// -1, 0 or 1 as first is earlier than, equal to or later than second.
LONG CompareFileTime(const FILETIME* first, const FILETIME* second);
// Whether a file or folder exists.
BOOL PathFileExistsW(LPCWSTR path);
#define PathFileExists PathFileExistsW
// The system temporary folder with a trailing separator. Answers its length when it fits in bufferLength
// characters (with the terminating zero), else the length it needs including the zero; 0 on failure.
DWORD GetTempPathW(DWORD bufferLength, LPWSTR buffer);
#define GetTempPath GetTempPathW

// Splits a path into drive ("C:"), folder (with its trailing separator), file name and extension (from the
// last '.', dot included); any output may be null with a size of 0. 0, EINVAL or ERANGE as the C library.
errno_t _wsplitpath_s(const wchar_t* path, wchar_t* drive, std::size_t driveSize, wchar_t* dir, std::size_t dirSize,
                      wchar_t* fname, std::size_t fnameSize, wchar_t* ext, std::size_t extSize);

// ---------------------------------------------------------------- libraries
// Nothing to switch off on this platform; answers TRUE.
BOOL DisableThreadLibraryCalls(HMODULE module);
