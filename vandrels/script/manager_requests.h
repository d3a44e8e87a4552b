// The scripting interface's requests to the manager window, and the MAXScript primitive `OpenVandrelsManager`
// that opens it. The manager window belongs to the graphical interface, which this build of the library does
// not include: opening it is refused with a MAXScript error that says so, it is never open, and closing or
// refreshing it does nothing.
#pragma once

namespace vandrels {

// Runs "OpenVandrelsManager()" with its errors shown, so a refusal reaches the user as a MAXScript error.
void OpenManager();
// Closes (hides) the manager window when it is shown.
void CloseManager();
// Whether the manager window is shown.
bool IsManagerOpen();
// Brings the manager window's rows up to date when it is shown.
void RefreshManagerIfOpen();

// The error `OpenVandrelsManager()` raises while no manager window can be shown; it depends on whether the
// host session has a graphical interface.
const wchar_t* ManagerUnavailableText(bool sessionHasUserInterface);

}  // namespace vandrels
