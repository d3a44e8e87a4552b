// Opening a document or a web address with the program the system associates with it (ShellExecuteW). The host
// records the request (hostrt::ShellRequests) and opens nothing itself.
#pragma once

#include "winshim.h"

// Answers a value above 32 on success, as Windows does; an empty file is refused with 2 (file not found).
HINSTANCE ShellExecuteW(HWND hwnd, LPCWSTR operation, LPCWSTR file, LPCWSTR parameters, LPCWSTR directory,
                        int showCommand);
#define ShellExecute ShellExecuteW
