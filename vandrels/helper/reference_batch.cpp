#include "helper/reference_batch.h"

#include "helper/batch_material_editor.h"
#include "helper/batch_selection_sets.h"
#include "frame/module_state.h"
#include "helper/scene_events.h"
#include "helper/vandrels_helper.h"
#include "maxapi.h"
#include "maxexception.h"
#include "notify.h"
#include "helper/error_report.h"
#include "winshim.h"

namespace vandrels {
namespace {
struct BatchState {
    int savedTaskMode = TASK_MODE_CREATE;
    bool facilitySuspended = false;
    int batchCounter = 0;
};

constexpr const MCHAR* kParticleViewTitle = L"Particle View";
constexpr int kParticleViewAttempts = 10;

BatchState& Batch() {
    static BatchState state;
    return state;
}

template <class Op> void RunReported(const MCHAR* words, Op op) {
    try {
        op();
    } catch (const MAXException& e) {
        ReportError(MSTR(words), 0, &e);
    } catch (...) {
        ReportError(MSTR(words));
    }
}
}  // namespace

int GetBatchCounter() { return Batch().batchCounter; }

void PreProcess() {
    RunReported(L"Error In PreProcess", [] {
        OperationModeScope mode(kModeOpeningBatch);
        SetBatchOpen(true);
        Interface* ip = GetCOREInterface();
        BatchState& batch = Batch();
        // The scene explorer would follow every node the batch adds or removes.
        batch.facilitySuspended = ip->GetSceneExplorerLiveUpdate() != FALSE;
        if (batch.facilitySuspended) ip->SetSceneExplorerLiveUpdate(FALSE);
        batch.savedTaskMode = ip->GetCommandPanelTaskMode();
        if (batch.savedTaskMode != TASK_MODE_CREATE) {
            BaseObject* edited = ip->GetCurEditObject();
            if (!VandrelsHelper::IsVandrelsHelper(dynamic_cast<Object*>(edited)))
                ip->SetCommandPanelTaskMode(TASK_MODE_CREATE);
        }
        HoldEditorMaterials();
        RememberSelectionSets();
        // The particle editor would show the flows of nodes that leave the scene.
        for (int attempt = 0; attempt < kParticleViewAttempts; ++attempt) {
            HWND window = FindWindowW(nullptr, kParticleViewTitle);
            if (!window) break;
            DestroyWindow(window);
        }
        BroadcastNotification(kNotifyBatchOpened);
        ++batch.batchCounter;
    });
}

void PostProcess() {
    RunReported(L"Error In PostProcess", [] {
        OperationModeScope mode(kModeClosingBatch);
        BroadcastNotification(kNotifyBatchClosing);
        Interface* ip = GetCOREInterface();
        BatchState& batch = Batch();
        if (batch.facilitySuspended) {
            ip->SetSceneExplorerLiveUpdate(TRUE);
            batch.facilitySuspended = false;
        }
        if (batch.savedTaskMode != TASK_MODE_CREATE) ip->SetCommandPanelTaskMode(batch.savedTaskMode);
        RestoreEditorMaterials();
        RebuildSelectionSets();
        ip->SetSaveRequiredFlag(TRUE);
    });
    // Closed also when a step above failed.
    SetSelectionSetTracking(true);
    SetBatchOpen(false);
}

BatchScope::BatchScope() {
    if (IsBatchOpen()) return;
    PreProcess();
    opened_ = true;
}

BatchScope::~BatchScope() { Close(); }

void BatchScope::Close() {
    if (!opened_) return;
    opened_ = false;
    if (IsBatchOpen()) PostProcess();
}

}  // namespace vandrels
