// The collect pass of one helper: its records take in the scene's current state before the referenced content
// leaves the scene (saving, unloading) or is copied (duplicating).
#include "helper/layer_monitoring.h"
#include "helper/vandrels_helper.h"
#include "records/exclusion_lists.h"
#include "records/ref_material.h"
#include "records/ref_node.h"

void VandrelsHelper::RunCollectPass() {
    CollectLightExclusions(this);
    CollectOtherExclusions(this);
    // A collect may adopt or drop records; the lists are walked by index as they stand.
    for (int k = 0; k < data_.refMaterials.Count(); ++k)
        if (RefMaterial* record = data_.refMaterials[k]) record->CollectIfBound();
    for (int k = 0; k < data_.refNodes.Count(); ++k)
        if (RefNode* record = data_.refNodes[k]) record->CollectIfBound();
    vandrels::RecordLayerRenamings(this, GetNamePrefix());
    ++data_.passCounter;
}
