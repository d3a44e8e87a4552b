// The resources of a plug-in library as the host reads them: the library's resource script is compiled at
// build time (host/tools/hostrc) into tables that the library exports under one name; LoadStringW and the
// dialog functions find them through the library's instance handle.
#pragma once

#include "maxtypes.h"

struct MaxResourceString {
    UINT id;
    const wchar_t* text;
};

// One control of a dialog template, as the script declared it: the window class ("Button", "Static", "Edit",
// "ComboBox", "ListBox" or a custom class name), its final style bits (the statement's defaults included, bits
// after NOT removed) and its place in dialog units. Statics without an id carry -1.
struct MaxResourceControl {
    int id;
    const wchar_t* className;
    const wchar_t* text;
    DWORD style;
    DWORD exStyle;
    short x, y, cx, cy;
};

// A dialog template (DIALOG or DIALOGEX): size and place in dialog units, style, caption, font, controls in
// the order of the script (the tab order).
struct MaxResourceDialog {
    UINT id;
    DWORD style;
    DWORD exStyle;
    short x, y, cx, cy;
    const wchar_t* caption;
    const wchar_t* fontName;  // empty without a FONT statement
    int fontSize;
    const MaxResourceControl* controls;
    int numControls;
};

struct MaxResourceModule {
    const MaxResourceString* strings;  // sorted by id, ids unique
    int numStrings;
    const MaxResourceDialog* dialogs;  // sorted by id, ids unique
    int numDialogs;
};

// The exported symbol every compiled resource script defines.
#define MAX_RESOURCE_MODULE_SYMBOL "MaxResourceModuleTable"
using MaxResourceModuleFn = const MaxResourceModule* (*)();
