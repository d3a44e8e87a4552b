// Making a reference local: its content stays in the scene as ordinary nodes, materials and layers; the records
// and the helper go.
#include "frame/module_state.h"
#include "helper/vandrels_helper.h"
#include "hold.h"
#include "inode.h"
#include "maxapi.h"

int VandrelsHelper::Merge() {
    vandrels::OperationModeScope mode(vandrels::kModeMerging);
    for (int k = data_.refNodes.Count() - 1; k >= 0; --k) DeleteReference(Slots().NodeRecord(k));
    data_.refNodes.ZeroCount();
    for (int k = data_.refMaterials.Count() - 1; k >= 0; --k) DeleteReference(Slots().MaterialRecord(k));
    data_.refMaterials.ZeroCount();
    for (int k = data_.refLayers.Count() - 1; k >= 0; --k) {
        DeleteReference(Slots().Layer(k));
        delete data_.refLayers[k];
    }
    data_.refLayers.ZeroCount();
    // The helper may go with its node: nothing of it is used after this.
    if (INode* node = GetNode()) GetCOREInterface()->DeleteNode(node, FALSE);
    theHold.FlushUndoBuffer();
    return 1;
}
