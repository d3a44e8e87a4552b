// The IK guard's single module-wide switch and its callback registration.
#include "anims/ik_guard.h"

#include "frame/module_state.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "winshim.h"

namespace {

IKCreationCallback gCallback;
ISceneEventManager::CallbackKey gCallbackKey = 0;
bool gGuardActive = false;

void RunScript(const MCHAR* text) {
    ExecuteMAXScriptScript(text, MAXScript::ScriptSource::Embedded, TRUE, nullptr, TRUE);
}

}  // namespace

void IKCreationCallback::ControllerStructured(NodeKeyTab&) {
    if (!gGuardActive) return;
    Interface* ip = GetCOREInterface();
    if (!ip->GetQuietMode())
        MessageBoxW(ip->GetMAXHWnd(), L"An IK Solver can't be assigned to a refed node.", L"Reference Error",
                    MB_OK | MB_ICONWARNING);
    RunScript(L"actionMan.executeAction 0 \"40015\";undo on select selection");
    gGuardActive = false;
    if (gCallbackKey) GetISceneEventManager()->UnRegisterCallback(gCallbackKey);
    gCallbackKey = 0;
}

namespace vandrels {

bool GuardIKCreation() {
    if (GetOperationMode() == kModeLoading || gGuardActive) return false;
    gGuardActive = true;
    gCallbackKey = GetISceneEventManager()->RegisterCallback(&gCallback);
    RunScript(L"undo off select selection");
    return true;
}

bool IsIKGuardActive() { return gGuardActive; }

}  // namespace vandrels
