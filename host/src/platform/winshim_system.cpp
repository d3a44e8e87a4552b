// The error of the last Windows call (per thread) and the library calls that need nothing on this platform.
#include "winshim.h"

namespace {
thread_local DWORD t_lastError = ERROR_SUCCESS;
}

DWORD GetLastError() { return t_lastError; }

void SetLastError(DWORD code) { t_lastError = code; }

BOOL DisableThreadLibraryCalls(HMODULE) { return TRUE; }
