// MAXScript functions of a graphical session for driving the windows from a script (demos, screenshots):
// uiTriggerAction "<menu entry>" triggers the first enabled menu or tool action of any window whose text,
// without its mnemonic "&", matches (case-insensitive); it answers whether one was found.
#pragma once

namespace hostrt {

void RegisterUiAutomation();
void UnregisterUiAutomation();

}  // namespace hostrt
