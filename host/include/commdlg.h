// The system's common open-file dialog (GetOpenFileNameW), as a plug-in calls it to let the user pick files.
// The host answers it through its file dialog service: a scripted answer when one is queued, else the graphical
// session's dialog, else the dialog is cancelled; in quiet mode nothing is shown and the dialog is cancelled.
// A hook with a template (OFN_ENABLEHOOK | OFN_ENABLETEMPLATE, the template in hInstance's resources) gets the
// template as its child dialog of the file dialog: WM_INITDIALOG (lParam the OPENFILENAMEW) when the dialog
// opens, WM_COMMAND for its controls while a user works the graphical dialog, and WM_NOTIFY with CDN_FILEOK
// when a pick is confirmed; it asks the dialog (its parent) with the CDM_ messages and confirms the typed name
// by sending it WM_COMMAND IDOK (a folder's name moves the dialog into that folder).
#pragma once

#include "winshim.h"

using LPOFNHOOKPROC = UINT_PTR (*)(HWND, UINT, WPARAM, LPARAM);

struct OPENFILENAMEW {
    DWORD lStructSize = 0;
    HWND hwndOwner = nullptr;
    HINSTANCE hInstance = nullptr;
    LPCWSTR lpstrFilter = nullptr;  // pairs of description and pattern, each ending in a zero; a second zero ends
    LPWSTR lpstrCustomFilter = nullptr;
    DWORD nMaxCustFilter = 0;
    DWORD nFilterIndex = 0;
    LPWSTR lpstrFile = nullptr;  // in: the initial file name; out: the answer (see GetOpenFileNameW)
    DWORD nMaxFile = 0;          // characters in lpstrFile
    LPWSTR lpstrFileTitle = nullptr;
    DWORD nMaxFileTitle = 0;
    LPCWSTR lpstrInitialDir = nullptr;
    LPCWSTR lpstrTitle = nullptr;
    DWORD Flags = 0;
    WORD nFileOffset = 0;     // where the (first) file name starts in lpstrFile
    WORD nFileExtension = 0;  // where its extension starts (0 without one)
    LPCWSTR lpstrDefExt = nullptr;
    LPARAM lCustData = 0;
    LPOFNHOOKPROC lpfnHook = nullptr;
    LPCWSTR lpTemplateName = nullptr;
    void* pvReserved = nullptr;
    DWORD dwReserved = 0;
    DWORD FlagsEx = 0;
};
using LPOPENFILENAMEW = OPENFILENAMEW*;

struct OFNOTIFYW {
    NMHDR hdr;  // hwndFrom: the file dialog
    LPOPENFILENAMEW lpOFN = nullptr;
    LPWSTR pszFile = nullptr;
};
static_assert(sizeof(OPENFILENAMEW) == 152, "the structure size of the 64-bit system dialog");

// What the hook asks its parent, the file dialog (wParam and lParam as Windows has them: a buffer's size in
// characters and the buffer; answers the text's size with its terminating zero).
#define WM_USER 0x0400
#define CDM_FIRST (WM_USER + 100)
#define CDM_GETSPEC (CDM_FIRST + 0x0000)        // the typed file name
#define CDM_GETFILEPATH (CDM_FIRST + 0x0001)    // the folder and the typed file name
#define CDM_GETFOLDERPATH (CDM_FIRST + 0x0002)  // the folder the dialog shows
#define CDM_SETCONTROLTEXT (CDM_FIRST + 0x0004) // wParam a control of the dialog (edt1, cmb13), lParam the text
// Controls of the file dialog: the file-name field, and the place of the dialog's own controls in a template.
#define edt1 0x0480
#define cmb13 0x047C
#define stc32 0x045F
// WM_NOTIFY codes the hook receives; lParam points to an OFNOTIFYW.
#define CDN_FIRST (0U - 601U)
#define CDN_INITDONE (CDN_FIRST - 0x0000U)
#define CDN_FILEOK (CDN_FIRST - 0x0005U)

#define OFN_READONLY 0x00000001u
#define OFN_HIDEREADONLY 0x00000004u
#define OFN_ENABLEHOOK 0x00000020u
#define OFN_ENABLETEMPLATE 0x00000040u
#define OFN_ALLOWMULTISELECT 0x00000200u
#define OFN_PATHMUSTEXIST 0x00000800u
#define OFN_FILEMUSTEXIST 0x00001000u
#define OFN_EXPLORER 0x00080000u
#define OFN_ENABLESIZING 0x00800000u

// Errors of the last dialog call (CommDlgExtendedError).
#define CDERR_STRUCTSIZE 0x0001
#define CDERR_INITIALIZATION 0x0002
#define FNERR_BUFFERTOOSMALL 0x3003

// Runs the dialog. TRUE when the user confirmed: lpstrFile then holds, for one file, its full path; with
// OFN_ALLOWMULTISELECT and several files, the folder, then each file name, each ending in a zero, and a second
// zero after the last. FALSE when cancelled (CommDlgExtendedError() 0) or on an error: a structure size other
// than sizeof(OPENFILENAMEW), no file buffer, or an answer that does not fit (FNERR_BUFFERTOOSMALL, the first
// character of lpstrFile then holds the size needed).
BOOL GetOpenFileNameW(LPOPENFILENAMEW ofn);
#define GetOpenFileName GetOpenFileNameW
DWORD CommDlgExtendedError();
