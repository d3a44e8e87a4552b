#include "frame/module_state.h"

namespace vandrels {
namespace {
struct ModuleState {
    int operationMode = kModeIdle;
    Tab<WStr*> mergeStack;
    bool batchOpen = false;
    bool rendering = false;
    bool monitorSuspended = false;
    int nestingCounter = 0;
    bool notificationsRegistered = false;
    bool bulkRemoval = false;
    MSTR preSaveProcessPath;
};

ModuleState& State() {
    static ModuleState state;
    return state;
}
}  // namespace

int GetOperationMode() { return State().operationMode; }
void SetOperationMode(int mode) { State().operationMode = mode; }

OperationModeScope::OperationModeScope(int mode) : saved_(GetOperationMode()) { SetOperationMode(mode); }
OperationModeScope::~OperationModeScope() { SetOperationMode(saved_); }

bool AreRecordsInessential() {
    const int mode = GetOperationMode();
    return mode == kModeUnloading || mode == kModeSaving || mode == kModeSavingNodes || mode == kModeDuplicating;
}

Tab<WStr*>& MergeStack() { return State().mergeStack; }

void ClearMergeStack() {
    for (WStr* path : State().mergeStack) delete path;
    State().mergeStack.ZeroCount();
}

bool IsBatchOpen() { return State().batchOpen; }
void SetBatchOpen(bool open) { State().batchOpen = open; }
bool IsRendering() { return State().rendering; }
void SetRendering(bool rendering) { State().rendering = rendering; }
bool IsMonitorSuspended() { return State().monitorSuspended; }
void SetMonitorSuspended(bool suspended) { State().monitorSuspended = suspended; }
int GetNestingCounter() { return State().nestingCounter; }
void SetNestingCounter(int value) { State().nestingCounter = value; }
bool IsBulkRemoval() { return State().bulkRemoval; }
void SetBulkRemoval(bool on) { State().bulkRemoval = on; }
const MSTR& GetPreSaveProcessPath() { return State().preSaveProcessPath; }
void SetPreSaveProcessPath(const MSTR& path) { State().preSaveProcessPath = path; }
bool AreNotificationsRegistered() { return State().notificationsRegistered; }
void SetNotificationsRegistered(bool registered) { State().notificationsRegistered = registered; }

}  // namespace vandrels
