// The dialogs the scripting interface opens: the about box and the file-open dialog that picks reference files.
// They belong to the ui layer above, which hands them in when the library loads; until then the about box does
// nothing and a file pick answers as if cancelled.
#pragma once

#include "strclass.h"

#include <vector>

namespace vandrels {

using AboutPresenter = void (*)();
using FilePicker = int (*)(MSTR& initial, const MCHAR* title, std::vector<MSTR>* list);

// Sets the functions behind the two requests (null: none).
void SetDialogPresenters(AboutPresenter about, FilePicker picker);
// Runs the about box.
void RequestAbout();
// Runs the file-open dialog (see PickFiles in ui/file_dialog.h); 0 when none was handed in.
int RequestFilePick(MSTR& initial, const MCHAR* title, std::vector<MSTR>* list = nullptr);

}  // namespace vandrels
