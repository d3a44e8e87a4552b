// Hands the ui layer's dialogs to the scripting interface below it when the library loads.
#include "script/dialog_requests.h"
#include "ui/about_dialog.h"
#include "ui/file_dialog.h"

namespace vandrels {
namespace {
[[maybe_unused]] const bool g_dialogsHandedIn = (SetDialogPresenters(&ShowAbout, &PickFiles), true);
}  // namespace
}  // namespace vandrels
