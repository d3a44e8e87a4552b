#include "helper/scene_events.h"

#include "helper/module_state.h"
#include "inode.h"
#include "notify.h"
#include "records/ref_node.h"
#include "records/scene_utils.h"

namespace vandrels {

void OnSceneEvent(NotifyInfo* info) {
    if (!info) return;
    switch (info->intcode) {
        case NOTIFY_NODE_RENAMED: {
            // The user renamed a node; a node record takes the new name as its local name.
            if (GetOperationMode() != kModeIdle || !info->callParam) return;
            const auto* change = static_cast<const NameChange*>(info->callParam);
            if (RefNode* record = FindNodeRecord(change->node)) record->OnNodeRenamed(MSTR(change->newName));
            return;
        }
        default:
            return;
    }
}

}  // namespace vandrels
