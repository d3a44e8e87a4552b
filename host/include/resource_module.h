// The resources of a plug-in library as the host reads them: the library's resource script is compiled at
// build time (host/tools/hostrc) into tables that the library exports under one name; LoadStringW and the
// dialog functions find them through the library's instance handle.
#pragma once

#include "maxtypes.h"

struct MaxResourceString {
    UINT id;
    const wchar_t* text;
};

struct MaxResourceModule {
    const MaxResourceString* strings;  // sorted by id, ids unique
    int numStrings;
};

// The exported symbol every compiled resource script defines.
#define MAX_RESOURCE_MODULE_SYMBOL "MaxResourceModuleTable"
using MaxResourceModuleFn = const MaxResourceModule* (*)();
