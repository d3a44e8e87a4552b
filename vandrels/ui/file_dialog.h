// The library's file-open dialog, used to pick reference files: the system's open-file dialog over the host's
// main window, with the scene-file filters, in single or multiple selection, extended by the library's template:
// a history of the folders files were picked from (kept in the host's INI file) and a "+" button that numbers
// the typed file name on and confirms it.
#pragma once

#include "strclass.h"

#include <string>
#include <vector>

namespace vandrels {

// Shows the dialog titled title, starting in initial (a folder or a file path). Without a list it lets the user
// pick one file and writes its full path into initial. With a list it allows several files and appends what the
// dialog answers: one full path when one file was picked, else the folder followed by each file name. Answers
// the number of strings written (0 when cancelled or when the dialog failed; nothing is changed then).
int PickFiles(MSTR& initial, const MCHAR* title, std::vector<MSTR>* list = nullptr);

// The "+" button's name: an extension of up to five characters set aside, a name ending in two digits counted
// on by one ("shot07.max" to "shot08.max", "shot99.max" to "shot100.max"), any other name given "01".
std::wstring NextNumberedName(const std::wstring& name);

}  // namespace vandrels
