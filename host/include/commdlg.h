// The system's common open-file dialog (GetOpenFileNameW), as a plug-in calls it to let the user pick files.
// The host answers it through its file dialog service: a scripted answer when one is queued, else the dialog is
// cancelled; in quiet mode nothing is shown and the dialog is cancelled. Hook procedures are not called.
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
static_assert(sizeof(OPENFILENAMEW) == 152, "the structure size of the 64-bit system dialog");

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
