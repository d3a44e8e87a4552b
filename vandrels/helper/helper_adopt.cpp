// The helper's node adoption: a node that records of this reference depend on (a bone a referenced rig uses,
// an item a referenced modifier holds) becomes one of the reference's nodes.
#include "helper/vandrels_helper.h"

#include "inode.h"
#include "records/node_messages.h"
#include "records/ref_node.h"
#include "records/scene_utils.h"

namespace {

// Tells a node's dependents (its node record among them) that a helper adopted it.

}  // namespace

RefNode* VandrelsHelper::AdoptNode(INode* node, const MCHAR* name) {
    if (!node || FindNodeRecord(node)) return nullptr;
    RefNode* record = AppendNodeRecord(node);
    MSTR taken;
    if (name && *name) {
        record->SetOverrideFlags(kNodeOverriddenName, kNodeOverriddenName);
        record->SetName(name);
        taken = name;
    } else {
        taken = node->GetName();
    }
    ForgetName(taken.data());
    node->NotifyDependents(FOREVER, PART_ALL, nodemsg::kNodeAdopted);
    return record;
}
