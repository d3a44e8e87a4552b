#include "helper/record_slots.h"

#include "helper/vandrels_helper.h"
#include "records/ref_material.h"
#include "records/ref_node.h"

namespace vandrels {

RefNode* AppendNodeRecord(VandrelsHelper* helper, INode* node) {
    auto* record = new RefNode(node, helper);
    helper->refNodes.Append(nullptr);
    helper->ReplaceReference(helper->Slots().NodeRecord(helper->refNodes.Count() - 1), record);
    return record;
}

RefMaterial* AppendMaterialRecord(VandrelsHelper* helper, Mtl* mtl) {
    auto* record = new RefMaterial(mtl, helper);
    helper->refMaterials.Append(nullptr);
    helper->ReplaceReference(helper->Slots().MaterialRecord(helper->refMaterials.Count() - 1), record);
    return record;
}

}  // namespace vandrels
