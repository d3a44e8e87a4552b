// The "Reference Error" report: composes the text, and shows it in IDD_REFERENCE_ERROR unless the host is quiet.
#include "helper/error_report.h"

#include "frame/record_failure.h"
#include "frame/module.h"
#include "maxapi.h"
#include "maxexception.h"
#include "resource.h"
#include "winshim.h"

namespace vandrels {

namespace {

MSTR& LastReport() {
    static MSTR text;
    return text;
}

// The edit control wants Windows line breaks.
MSTR WithWindowsLineBreaks(const MSTR& text) {
    MSTR out;
    for (int i = 0; i < text.Length(); ++i) {
        if (text[i] == L'\n') out += L'\r';
        out += text[i];
    }
    return out;
}

INT_PTR CALLBACK ErrorReportProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            CenterWindow(dialog, GetParent(dialog));
            SetDlgItemTextW(dialog, IDC_TEXT_LIST, reinterpret_cast<const MSTR*>(lParam)->data());
            return TRUE;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL) {
                EndDialog(dialog, LOWORD(wParam));
                return TRUE;
            }
            return FALSE;
        case WM_CLOSE:
            EndDialog(dialog, IDCANCEL);
            return TRUE;
        default:
            return FALSE;
    }
}

}  // namespace

void ReportError(const MSTR& message, int lastOperationId, const MAXException* cause) {
    ReportError(RecordFailure{message, std::nullopt, RecordFailure::StepOf(lastOperationId),
                              RecordFailure::CauseOf(cause), RecordFailure::StepLabel::Spaced});
}

void ReportError(const RecordFailure& failure) {
    const MSTR text = failure.ToString();
    LastReport() = text;

    Interface* ip = GetCOREInterface();
    if (!ip || ip->GetQuietMode()) return;
    const MSTR shown = WithWindowsLineBreaks(text);
    MessageBeep(MB_ICONERROR);
    const INT_PTR result = DialogBoxParamW(GetModuleInstance(), MAKEINTRESOURCE(IDD_REFERENCE_ERROR), ip->GetMAXHWnd(),
                                           ErrorReportProc, reinterpret_cast<LPARAM>(&shown));
    // Without its dialog the report still reaches the user, in a plain box.
    if (result == -1) MessageBoxW(ip->GetMAXHWnd(), shown.data(), L"Reference Error", MB_OK | MB_ICONERROR);
}

const MSTR& LastErrorReport() { return LastReport(); }

}  // namespace vandrels
