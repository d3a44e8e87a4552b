// The library as a whole: its instance handle, string-table access and the file-opening flag that the start-up
// callback keeps.
#pragma once

#include "maxtypes.h"
#include "strclass.h"

// The handle the host gave the library when it attached it; null before.
HINSTANCE GetModuleInstance();

// Loads string id of the library's string table into one shared buffer of 512 wide characters and answers it;
// null when the instance handle is not known yet or there is no such string. Each call overwrites the buffer:
// copy the text before the next call.
const MCHAR* GetString(int id);
// The same text as an owned string (empty when missing).
MSTR GetStringCopy(int id);

// True between the host's file pre-open and post-open notifications.
bool IsFileOpening();
