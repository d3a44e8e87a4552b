// How a graphical session shows what the dialog services ask: a message box as a QMessageBox, the open-file
// dialog as a QFileDialog (with a plug-in's template, when it brings one, as a row of its controls under the
// dialog's own, their actions passed to the plug-in's hook). Both are modal over the active window (else the
// host's main window).
#pragma once

#include "platform/dialog_service.h"
#include "platform/file_dialog_service.h"

#include <optional>
#include <string>
#include <vector>

namespace hostrt {

int PresentMessageBox(const MessageBoxRequest& request);
std::optional<std::vector<std::wstring>> PresentFileDialog(const FileDialogRequest& request);

}  // namespace hostrt
