// Windows user-interface calls: message boxes and beeps through the dialog service, fake top-level windows,
// and cursors.
#include "winshim.h"

#include "platform/dialog_service.h"
#include "platform/dialogs.h"
#include "platform/ui_state.h"
#include "platform/windows.h"

int MessageBoxW(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type) {
    hostrt::MessageBoxRequest request;
    request.owner = owner;
    request.text = text ? text : L"";
    request.title = caption ? caption : L"Error";  // the caption Windows gives a box without one
    request.type = type;
    return hostrt::DialogService::Instance().ShowMessageBox(request);
}

BOOL MessageBeep(UINT type) {
    hostrt::DialogService::Instance().Beep(type);
    return TRUE;
}

HWND FindWindowW(LPCWSTR className, LPCWSTR windowName) {
    return hostrt::WindowRegistry::Instance().Find(className, windowName);
}

BOOL DestroyWindow(HWND hwnd) {
    auto& windows = hostrt::WindowRegistry::Instance();
    if (hwnd && hwnd == windows.MainWindow()) {
        SetLastError(ERROR_ACCESS_DENIED);  // the host's main window outlives its plug-ins
        return FALSE;
    }
    if (!windows.Destroy(hwnd)) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return FALSE;
    }
    return TRUE;
}

BOOL IsWindow(HWND hwnd) {
    auto& windows = hostrt::WindowRegistry::Instance();
    const auto& dialogs = hostrt::DialogWindows::Instance();
    return (hwnd && hwnd == windows.MainWindow()) || windows.Exists(hwnd) || dialogs.Dialog(hwnd) ||
           dialogs.Control(hwnd);
}

HCURSOR LoadCursorW(HINSTANCE instance, LPCWSTR name) {
    HCURSOR cursor = nullptr;
    if (!instance && IS_INTRESOURCE(name)) cursor = hostrt::UiState::StandardCursor(int(ULONG_PTR(name)));
    if (!cursor) SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
    return cursor;
}

HCURSOR SetCursor(HCURSOR cursor) { return hostrt::UiState::Instance().SetCursor(cursor); }

HCURSOR GetCursor() { return hostrt::UiState::Instance().Cursor(); }
