// The state that the whole library shares: the operation mode, the merge stack, and the flags that the
// process-wide notifications keep. Records read it as much as the helpers do; the helpers' own lists are in
// helper/helper_registry.h.
#pragma once

#include "strclass.h"
#include "tab.h"

namespace vandrels {

// The operation in progress; records and event handlers read it to ignore the library's own scene changes.
enum OperationMode : int {
    kModeIdle = 0,
    kModeLoading = 1,
    kModeUnloading = 2,
    kModeDismissing = 3,
    kModeMerging = 4,         // merging a reference's content into the scene as local content
    kModeSaving = 5,          // before the scene is written
    kModeRestoring = 6,       // after the scene was written
    kModeSavingNodes = 7,     // before the scene is written (second pass)
    kModeDuplicating = 8,
    kModeRescanning = 9,
    kModeOpeningBatch = 10,
    kModeClosingBatch = 11,
    kModeSavingAs = 12,
    kModeAdvancedReset = 13,
    kModeRenaming = 14
};

int GetOperationMode();
void SetOperationMode(int mode);

// Sets the operation mode for its lifetime and puts the previous one back on every way out.
class OperationModeScope {
public:
    explicit OperationModeScope(int mode);
    ~OperationModeScope();
    OperationModeScope(const OperationModeScope&) = delete;
    OperationModeScope& operator=(const OperationModeScope&) = delete;
    int Saved() const { return saved_; }

private:
    int saved_;
};

// True while referenced records do not matter for what is kept: unloading, saving and duplicating (modes 2, 5,
// 7, 8).
bool AreRecordsInessential();

// Full paths of the reference files whose merge is in progress, innermost last (owned strings).
Tab<WStr*>& MergeStack();
// Frees every path of the merge stack and empties it.
void ClearMergeStack();

bool IsBatchOpen();
void SetBatchOpen(bool open);
// Between the host's pre-render and post-render notifications.
bool IsRendering();
void SetRendering(bool rendering);
// While the host adds or deletes a modifier through its own operations.
bool IsMonitorSuspended();
void SetMonitorSuspended(bool suspended);
// Depth of the host's nested operations (counted by their begin and end notifications); reset when an outermost
// merge starts.
int GetNestingCounter();
void SetNestingCounter(int value);

// While the scripting interface removes many helpers at once: deleting a helper node then does not register the
// one-time follow-up that a single deletion by the user registers.
bool IsBulkRemoval();
void SetBulkRemoval(bool on);
// The file name the host's pre-save-process notification carried, kept until the next post-save clears it.
const MSTR& GetPreSaveProcessPath();
void SetPreSaveProcessPath(const MSTR& path);

// Whether the process-wide notifications (module_notifications.h) are registered.
bool AreNotificationsRegistered();
void SetNotificationsRegistered(bool registered);

}  // namespace vandrels
