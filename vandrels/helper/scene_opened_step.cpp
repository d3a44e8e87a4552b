#include "helper/scene_opened_step.h"

#include "helper/module_state.h"
#include "notify.h"

namespace vandrels {
namespace {
void OnSceneOpenedStep(void*, NotifyInfo*) {
    UnregisterSceneOpenedStep();
    Tab<VandrelsHelper*> waiting = LoadedHelpers();
    LoadedHelpers().ZeroCount();
    // Loading or reloading each waiting helper according to its persist setting and reload type comes with
    // the loading pipeline; until then the helpers only leave the list.
    (void)waiting;
}
}  // namespace

void RegisterSceneOpenedStep() {
    RegisterNotification(OnSceneOpenedStep, nullptr, NOTIFY_FILE_POST_OPEN);
    RegisterNotification(OnSceneOpenedStep, nullptr, NOTIFY_FILE_POST_MERGE3);
}

void UnregisterSceneOpenedStep() { UnRegisterNotification(OnSceneOpenedStep, nullptr); }

}  // namespace vandrels
