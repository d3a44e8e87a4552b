#include "records/exclusion_lists.h"

#include "inode.h"
#include "iscene_effects.h"
#include "maxapi.h"
#include "object.h"
#include "records/ref_node.h"

namespace {

// The host's holder of every scene node: a dependent of each node whose references are the nodes.
const Class_ID kNodeContainer(0x2A930130, 0x168B3DD9);

// The node record of node when it belongs to helper (to any helper when helper is null), else null. The
// record hangs on its node's property list.
RefNode* RecordOf(INode* node, RecordOwner* helper) {
    AnimProperty* prop = node ? node->GetAProp(REFBASE_PROPERTY_ID) : nullptr;
    if (!prop) return nullptr;
    auto* record = static_cast<RefBase*>(prop);
    if (record->ClassID() != REFNODE_CLASS_ID) return nullptr;
    if (helper && record->GetHelper() != helper) return nullptr;
    return static_cast<RefNode*>(record);
}

// A node of the scene, from the root's tree or an external-scene entry's; null for a scene without nodes.
INode* AnySceneNode() {
    INode* root = GetCOREInterface()->GetRootNode();
    if (!root) return nullptr;
    if (root->NumberOfChildren() > 0) return root->GetChildNode(0);
    for (int i = 0; i < root->GetXRefFileCount(); ++i) {
        INode* tree = root->GetXRefTree(i);
        if (tree && tree->NumberOfChildren() > 0) return tree->GetChildNode(0);
    }
    return nullptr;
}

// The node container, found once among a scene node's dependents and kept for the rest of the process. Null
// while the scene has no node (and so no light either).
ReferenceTarget* NodeContainer() {
    static ReferenceTarget* container = nullptr;
    if (container) return container;
    INode* node = AnySceneNode();
    if (!node) return nullptr;
    DependentIterator it(node);
    while (ReferenceMaker* dep = it.Next())
        if (dep->ClassID() == kNodeContainer) {
            container = static_cast<ReferenceTarget*>(dep);
            break;
        }
    return container;
}

// How many node lists an effect of this class has; 0 for other items.
int NodeListsOf(ReferenceTarget* item) {
    const Class_ID id = item->ClassID();
    if (id == SCENE_EFFECT_THREE_LISTS_CLASS_ID) return 3;
    if (id == SCENE_EFFECT_ONE_LIST_CLASS_ID || id == SCENE_EFFECT_ONE_LIST_B_CLASS_ID) return 1;
    return 0;
}

INodeListEffect* NodeListsInterface(ReferenceTarget* item) {
    return item ? static_cast<INodeListEffect*>(item->GetInterface(SCENE_EFFECT_NODE_LISTS_INTERFACE)) : nullptr;
}

}  // namespace

void CollectLightExclusions(RecordOwner* helper) {
    ReferenceTarget* container = NodeContainer();
    if (!container) return;
    for (int i = 0; i < container->NumRefs(); ++i) {
        ReferenceTarget* ref = container->GetReference(i);
        if (!ref || ref->SuperClassID() != BASENODE_CLASS_ID) continue;
        Object* object = static_cast<INode*>(ref)->GetObjectRef();
        Object* base = object ? object->FindBaseObject() : nullptr;
        auto* light = base && base->SuperClassID() == LIGHT_CLASS_ID ? dynamic_cast<LightObject*>(base) : nullptr;
        ExclList* list = light ? light->GetExclList() : nullptr;
        if (!list) continue;
        for (int k = list->Count() - 1; k >= 0; --k) {
            INode* listed = (*list)[k];
            if (!listed) {
                list->RemoveNode(k);
                continue;
            }
            // An instanced light is met once per node that shows it: the record lists it once.
            if (RefNode* record = RecordOf(listed, helper))
                if (!record->ScratchLights().Contains(light)) record->ScratchLights().Append(light);
        }
    }
}

void CollectOtherExclusions(RecordOwner* helper) {
    Interface* core = GetCOREInterface();
    for (int i = 0; i < core->NumSceneEffects(); ++i) {
        ReferenceTarget* item = core->GetSceneEffect(i);
        const int lists = item ? NodeListsOf(item) : 0;
        INodeListEffect* nodeLists = lists ? NodeListsInterface(item) : nullptr;
        if (!nodeLists) continue;
        for (int listIndex = 0; listIndex < lists; ++listIndex) {
            const int code = INodeListEffect::ListCode(listIndex);
            for (int k = 0; k < nodeLists->NumNodes(code); ++k) {
                RefNode* record = RecordOf(nodeLists->GetNode(code, k), helper);
                if (!record) continue;
                Tab<RefNode::ScratchExclusion>& scratch = record->ScratchOthers();
                bool listed = false;
                for (const RefNode::ScratchExclusion& entry : scratch)
                    listed = listed || (entry.item == item && entry.listIndex == listIndex);
                if (!listed) scratch.Append({item, listIndex});
            }
        }
    }
}

bool AddNodeToNodeList(ReferenceTarget* item, int listIndex, INode* node) {
    INodeListEffect* nodeLists = NodeListsInterface(item);
    if (!nodeLists || !node || listIndex < 0 || listIndex > 2) return false;
    return nodeLists->AddNode(node, INodeListEffect::ListCode(listIndex)) != FALSE;
}
