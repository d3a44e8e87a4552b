#include "helper/scene_opened_step.h"

#include "helper/file_time.h"
#include "helper/helper_params.h"
#include "helper/merge_reference_file.h"
#include "helper/helper_registry.h"
#include "helper/reference_batch.h"
#include "helper/vandrels_helper.h"
#include "notify.h"
#include "records/ref_node.h"
#include "winshim.h"

namespace vandrels {
namespace {

// An overlay reference loads only in the scene that holds it directly.
bool ShouldLoadHere(VandrelsHelper* helper) {
    return !(helper->ParamBlock()->GetInt(vh_overlay) && helper->IsNested());
}

// The file whose time tells whether a persisted reference changed: the proxy when the viewport shows it.
MSTR PersistedFile(VandrelsHelper* helper) {
    return ReferenceFilePath(helper, helper->ParamBlock()->GetInt(vh_use_proxy_in_viewport) != 0);
}

void ProcessHelper(VandrelsHelper* helper) {
    if (!helper->ParamBlock()) return;
    if (!helper->GetPersistRef()) {
        if (ShouldLoadHere(helper)) helper->Load();
        return;
    }
    // The reference's content was saved with the scene.
    if (!ShouldLoadHere(helper)) {
        helper->Unload();
        return;
    }
    bool reload = false;
    switch (helper->ParamBlock()->GetInt(vh_persist_reload_type)) {
    case 1:
        reload = ReadLastWriteTime(PersistedFile(helper)) != helper->FileTimeAtLoad();
        break;
    case 0: {
        const MSTR file = PersistedFile(helper);
        reload = !file.isNull() && PathFileExistsW(file.data());
        break;
    }
    default:
        break;
    }
    if (reload) {
        helper->Reload();
        return;
    }
    // The content saved with the scene is the reference's content in the scene: a later load must not merge it
    // a second time, and an unload takes it out.
    for (RefNode* record : helper->NodeRecords())
        if (record && record->IsNodeLoaded() && record->GetNode()) {
            helper->SetLoaded(true);
            break;
        }
}

void OnSceneOpenedStep(void*, NotifyInfo*) {
    UnregisterSceneOpenedStep();
    Tab<VandrelsHelper*> waiting = LoadedHelpers();
    LoadedHelpers().ZeroCount();
    BatchScope batch;
    for (VandrelsHelper* helper : waiting)
        // A helper processed earlier may have merged (and so deleted) a later one.
        if (HelperRegistry().Contains(helper)) ProcessHelper(helper);
}
}  // namespace

void RegisterSceneOpenedStep() {
    RegisterNotification(OnSceneOpenedStep, nullptr, NOTIFY_FILE_POST_OPEN);
    RegisterNotification(OnSceneOpenedStep, nullptr, NOTIFY_FILE_POST_MERGE3);
}

void UnregisterSceneOpenedStep() { UnRegisterNotification(OnSceneOpenedStep, nullptr); }

}  // namespace vandrels
