// Adding a record to the helper's reference layout: the record's list gets an empty slot, then the helper
// references the record at that slot's index, so the host records the addition like any reference change.
#include "helper/vandrels_helper.h"
#include "records/ref_material.h"
#include "records/ref_node.h"

RefNode* VandrelsHelper::AppendNodeRecord(INode* node) {
    auto* record = new RefNode(node, this);
    data_.refNodes.Append(nullptr);
    ReplaceReference(Slots().NodeRecord(data_.refNodes.Count() - 1), record);
    return record;
}

RefMaterial* VandrelsHelper::AppendMaterialRecord(Mtl* mtl) {
    auto* record = new RefMaterial(mtl, this);
    data_.refMaterials.Append(nullptr);
    ReplaceReference(Slots().MaterialRecord(data_.refMaterials.Count() - 1), record);
    return record;
}
