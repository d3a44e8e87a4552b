#include "helper/reference_batch.h"

#include "helper/module_state.h"
#include "helper/vandrels_helper.h"
#include "maxapi.h"
#include "maxexception.h"
#include "notify.h"
#include "ui/error_report.h"

namespace vandrels {
namespace {
struct BatchState {
    int savedTaskMode = TASK_MODE_CREATE;
    bool facilitySuspended = false;
    int batchCounter = 0;
};

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
        // The material editor slots, the schematic material views and the named selection sets are kept
        // across a batch by the unloading pipeline, which is what changes them.
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
        ip->SetSaveRequiredFlag(TRUE);
    });
    // Closed also when a step above failed.
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
