#include "script/manager_requests.h"

#include "helper/manager_refresh.h"

#include "maxapi.h"
#include "maxscript/maxscript.h"

namespace vandrels {

const wchar_t* ManagerUnavailableText(bool sessionHasUserInterface) {
    return sessionHasUserInterface
               ? L"OpenVandrelsManager: the Vandrels manager window needs the graphical interface, which this build "
                 L"of Vandrels does not include; scripts reach every reference operation through the Vandrels "
                 L"interface (showInterface Vandrels)"
               : L"OpenVandrelsManager: the Vandrels manager window needs the graphical interface, and this host "
                 L"session runs without one; scripts reach every reference operation through the Vandrels "
                 L"interface (showInterface Vandrels)";
}

void OpenManager() {
    ExecuteMAXScriptScript(L"OpenVandrelsManager()", MAXScript::ScriptSource::Embedded, FALSE, nullptr, TRUE);
}

// No manager window exists in this build, so there is nothing to close, it is never open and nothing to refresh.
void CloseManager() {}
bool IsManagerOpen() { return false; }
void RefreshManagerIfOpen() {}

namespace {
// The helper's scene events reach the manager window through this refresh.
[[maybe_unused]] const bool g_refreshHandedIn = (SetManagerRefresh(&RefreshManagerIfOpen), true);
}  // namespace

}  // namespace vandrels
