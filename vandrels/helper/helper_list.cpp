#include "helper/helper_list.h"

#include "frame/class_ids.h"
#include "maxapi.h"
#include "object.h"

#include <unordered_set>

namespace vandrels {

namespace {

void Collect(INode* parent, std::vector<INode*>& list, std::unordered_set<INode*>& seen) {
    const int count = parent->NumberOfChildren();
    for (int i = 0; i < count; ++i) {
        INode* child = parent->GetChildNode(i);
        if (!child || !seen.insert(child).second) continue;
        if (IsHelperNode(child)) list.push_back(child);
        Collect(child, list, seen);
    }
}

}  // namespace

bool IsHelperNode(INode* node) {
    if (!node) return false;
    Object* obj = node->GetObjectRef();
    return obj && obj->ClassID() == VANDRELS_HELPER_CLASS_ID;
}

std::vector<INode*> GetHelperList() {
    std::vector<INode*> list;
    std::unordered_set<INode*> seen;
    if (INode* root = GetCOREInterface()->GetRootNode()) Collect(root, list, seen);
    return list;
}

}  // namespace vandrels
