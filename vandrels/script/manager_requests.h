// The scripting interface's requests to the manager window. The window belongs to the user interface, which
// registers what closing, asking about and refreshing it do when it makes the window (SetManagerWindowHooks);
// until then the window is never open, and closing or refreshing it does nothing. A session without the graphical
// interface never has one: `OpenVandrelsManager()` refuses with a MAXScript error that says so.
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

// What the manager window does for the three requests above.
struct ManagerWindowHooks {
    void (*close)() = nullptr;
    bool (*isOpen)() = nullptr;
    void (*refreshIfOpen)() = nullptr;
};
void SetManagerWindowHooks(const ManagerWindowHooks& hooks);

// The error `OpenVandrelsManager()` raises in a session without the graphical interface.
const wchar_t* ManagerUnavailableText();

}  // namespace vandrels
