#include "script/manager_requests.h"

#include "helper/manager_refresh.h"

#include "maxscript/maxscript.h"

namespace vandrels {

namespace {
ManagerWindowHooks g_hooks;
}

const wchar_t* ManagerUnavailableText() {
    return L"OpenVandrelsManager: the Vandrels manager window needs the graphical interface, and this host session "
           L"runs without one; scripts reach every reference operation through the Vandrels interface "
           L"(showInterface Vandrels)";
}

void OpenManager() {
    ExecuteMAXScriptScript(L"OpenVandrelsManager()", MAXScript::ScriptSource::Embedded, FALSE, nullptr, TRUE);
}

void SetManagerWindowHooks(const ManagerWindowHooks& hooks) { g_hooks = hooks; }

void CloseManager() {
    if (g_hooks.close) g_hooks.close();
}
bool IsManagerOpen() { return g_hooks.isOpen && g_hooks.isOpen(); }
void RefreshManagerIfOpen() {
    if (g_hooks.refreshIfOpen) g_hooks.refreshIfOpen();
}

namespace {
// The helper's scene events reach the manager window through this refresh.
[[maybe_unused]] const bool g_refreshHandedIn = (SetManagerRefresh(&RefreshManagerIfOpen), true);
}  // namespace

}  // namespace vandrels
