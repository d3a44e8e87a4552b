// Opening the manager window: what the MAXScript primitive `OpenVandrelsManager()` does (the library registers
// the primitive itself when it is attached, library_registrations.cpp).
#pragma once

namespace vandrels {

// Shows, raises and activates the manager window over the host's Qt main window (made on first use and kept for
// the host run; storing its geometry first when it is shown already) and rebuilds its rows. Raises the MAXScript
// runtime error of ManagerUnavailableText when the session has no graphical interface.
void OpenManagerWindow();

}  // namespace vandrels
