#include "helper/collect_pass.h"

#include "helper/layer_monitoring.h"
#include "helper/vandrels_helper.h"
#include "records/exclusion_lists.h"
#include "records/ref_material.h"
#include "records/ref_node.h"

namespace vandrels {

void RunCollectPass(VandrelsHelper* helper) {
    if (!helper) return;
    CollectLightExclusions(helper);
    CollectOtherExclusions(helper);
    // A collect may adopt or drop records; the lists are walked by index as they stand.
    for (int k = 0; k < helper->refMaterials.Count(); ++k)
        if (RefMaterial* record = helper->refMaterials[k]) record->CollectIfBound();
    for (int k = 0; k < helper->refNodes.Count(); ++k)
        if (RefNode* record = helper->refNodes[k]) record->CollectIfBound();
    RecordLayerRenamings(helper, helper->GetNamePrefix());
    ++helper->passCounter;
}

}  // namespace vandrels
