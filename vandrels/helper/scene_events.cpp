#include "helper/scene_events.h"

#include "frame/module.h"
#include "helper/layer_monitoring.h"
#include "frame/module_state.h"
#include "helper/helper_registry.h"
#include "helper/vandrels_helper.h"
#include "hold.h"
#include "ilayer.h"
#include "iscene_events.h"
#include "inode.h"
#include "maxapi.h"
#include "notify.h"
#include "records/node_messages.h"
#include "records/ref_material.h"
#include "records/ref_node.h"
#include "records/scene_utils.h"
#include "helper/manager_refresh.h"

namespace vandrels {
namespace {

struct SelectionSetState {
    Tab<WStr*> names;
    bool tracking = true;
};

SelectionSetState& SelectionSets() {
    static SelectionSetState state;
    return state;
}

// The message is about this node: its own dependents hear it and do not pass it on, so that a record whose node
// merely depends on this one (a camera aiming at it) does not take the event for its own.
void Tell(INode* node, RefMessage message, PartID part = 0) {
    if (node) node->NotifyDependents(FOREVER, part, message, NOTIFY_ALL, FALSE);
}

VandrelsHelper* HelperOf(INode* node) { return node ? VandrelsHelper::FromObject(node->GetObjectRef()) : nullptr; }

// The one-time follow-up of a helper node's deletion by the user: once the node is gone, the manager window
// shows the rest and the undo buffer, which can no longer bring the reference back, is cleared.
void AfterHelperDeleted(void*, NotifyInfo*) {
    UnRegisterNotification(AfterHelperDeleted, nullptr, NOTIFY_SCENE_POST_DELETED_NODE);
    RequestManagerRefresh();
    theHold.FlushUndoBuffer();
}

// A set was made, removed or renamed. When one is gone, every node record hears the index it had.
void OnSelectionSetsChanged() {
    if (!SelectionSets().tracking) return;
    Interface* ip = GetCOREInterface();
    const int count = ip->GetNumNamedSelSets();
    const Tab<WStr*>& cached = SelectionSets().names;
    if (count < cached.Count()) {
        int removed = -1;
        for (int k = 0; k < cached.Count() && removed < 0; ++k) {
            bool present = false;
            for (int i = 0; i < count && !present; ++i) present = cached[k] && *cached[k] == ip->GetNamedSelSetName(i);
            if (!present) removed = k;
        }
        if (removed >= 0)
            for (VandrelsHelper* helper : HelperRegistry())
                if (helper)
                    for (RefNode* record : helper->NodeRecords())
                        if (record) record->OnSelectionSetRemoved(removed);
    }
    RebuildSelectionSetCache();
}

// A node property without a notification of its own changed: its records hear it, unless the library is at
// work or a scene file is being opened.
void OnNodePropertyChanged(const NodePropertyChange* change) {
    if (!change || GetOperationMode() != kModeIdle || IsFileOpening()) return;
    INode* node = change->node;
    if (!node || !node->GetObjectRef() || change->propertyId == 0) return;
    Tell(node, nodemsg::kNodeChanged, PartID(change->propertyId));
}

void OnNodeRenamed(const NameChange* change) {
    if (!change || !change->node || GetOperationMode() != kModeIdle) return;
    if (RefNode* record = FindNodeRecord(change->node)) {
        record->OnNodeRenamed(MSTR(change->newName));
        return;
    }
    if (VandrelsHelper* helper = HelperOf(change->node))
        OnHelperRenamed(helper, MSTR(change->newName), MSTR(change->oldName ? change->oldName : L""));
}

// A referenced node the user deletes stays deleted: its helper keeps the node's name in the reference file and
// deletes the node again after every merge (undoably, so that undoing the deletion forgets the name). Deletions
// made by the library itself, by undo and redo, and while a file opens are not the user's.
void RememberDeletedReferencedNode(INode* node) {
    if (GetOperationMode() != kModeIdle || IsFileOpening() || theHold.RestoreOrRedoing()) return;
    RefNode* record = FindNodeRecord(node);
    if (!record) return;
    if (auto* owner = dynamic_cast<VandrelsHelper*>(record->GetHelper())) owner->RememberDeletedName(record->GetName());
}

void OnNodeAboutToBeDeleted(INode* node) {
    RememberDeletedReferencedNode(node);
    VandrelsHelper* helper = HelperOf(node);
    if (!helper) return;
    helper->Dismiss();
    if (!IsBulkRemoval()) RegisterNotification(AfterHelperDeleted, nullptr, NOTIFY_SCENE_POST_DELETED_NODE);
}

void TellEachNode(const NotifyInfo* info, RefMessage message) {
    const auto* nodes = static_cast<const INodeTab*>(info->callParam);
    if (!nodes) return;
    for (INode* node : *nodes) Tell(node, message);
}

}  // namespace

void OnSceneEvent(NotifyInfo* info) {
    if (!info) return;
    switch (info->intcode) {
        case NOTIFY_NODE_LINKED: {
            auto* node = static_cast<INode*>(info->callParam);
            if (!node) return;
            Tell(node, nodemsg::kParentChanged);
            INode* parent = node->GetParentNode();
            if (parent && !parent->IsRootNode()) Tell(parent, nodemsg::kChildAttached, reinterpret_cast<PartID>(node));
            return;
        }
        case NOTIFY_NODE_LAYER_CHANGED: {
            const auto* change = static_cast<const NodeLayerChange*>(info->callParam);
            if (change) Tell(change->node, nodemsg::kLayerChanged, reinterpret_cast<PartID>(change->newLayer));
            return;
        }
        case NOTIFY_POST_NODE_DISPLAY_PROP_CHANGED:
            TellEachNode(info, nodemsg::kDisplayChanged);
            return;
        case NOTIFY_POST_NODE_RENDER_PROP_CHANGED:
            TellEachNode(info, nodemsg::kRenderChanged);
            return;
        case NOTIFY_POST_NODE_USER_PROP_CHANGED:
            TellEachNode(info, nodemsg::kUserPropsChanged);
            return;
        case NOTIFY_POST_NODE_BONE_PROP_CHANGED:
            TellEachNode(info, nodemsg::kBoneChanged);
            return;
        case NOTIFY_NODE_PROPERTY_CHANGED:
        case NOTIFY_NODE_STRUCTURE_CHANGED:
            OnNodePropertyChanged(static_cast<const NodePropertyChange*>(info->callParam));
            return;
        case NOTIFY_NODE_RENAMED:
            OnNodeRenamed(static_cast<const NameChange*>(info->callParam));
            return;
        case NOTIFY_NODE_CREATED: {
            // A helper node is frozen, as the add-reference function freezes the ones it makes.
            auto* node = static_cast<INode*>(info->callParam);
            if (HelperOf(node) && !node->IsFrozen()) node->Freeze(TRUE);
            return;
        }
        case NOTIFY_SCENE_PRE_DELETED_NODE:
            OnNodeAboutToBeDeleted(static_cast<INode*>(info->callParam));
            return;
        case NOTIFY_NAMED_SEL_SET_CREATED:
        case NOTIFY_NAMED_SEL_SET_DELETED:
        case NOTIFY_NAMED_SEL_SET_RENAMED:
            OnSelectionSetsChanged();
            return;
        case NOTIFY_FILE_POST_OPEN:
            RebuildSelectionSetCache();
            return;
        case NOTIFY_FILE_POST_MERGE3:
            if (GetOperationMode() == kModeIdle) RequestManagerRefresh();
            return;
        case NOTIFY_FILE_PRE_SAVE_PROCESS: {
            const auto* process = static_cast<const NotifyFileProcess*>(info->callParam);
            SetPreSaveProcessPath(process && process->fileName ? MSTR(process->fileName) : MSTR());
            return;
        }
        default:
            return;
    }
}

void OnGroupChanged(const Tab<ULONG>& nodeKeys) {
    for (ULONG key : nodeKeys) Tell(NodeEventNamespace::GetNodeByKey(key), nodemsg::kGroupChanged);
}

void OnHelperRenamed(VandrelsHelper* helper, const MSTR& newName, const MSTR& oldName) {
    if (!helper || !helper->ParamBlock() || !helper->ParamBlock()->GetInt(vh_use_name_prefix)) return;
    OperationModeScope mode(kModeRenaming);
    for (RefNode* record : helper->NodeRecords())
        if (record) record->ApplyNamePrefix(newName);
    for (RefMaterial* record : helper->MaterialRecords())
        if (record) record->ApplyNamePrefix(newName);
    ChangeLayerPrefix(helper, oldName, newName);
}

void RebuildSelectionSetCache() {
    Tab<WStr*>& names = SelectionSets().names;
    for (WStr* name : names) delete name;
    names.ZeroCount();
    Interface* ip = GetCOREInterface();
    for (int i = 0; i < ip->GetNumNamedSelSets(); ++i) names.Append(new WStr(ip->GetNamedSelSetName(i)));
}

bool IsSelectionSetTracking() { return SelectionSets().tracking; }
void SetSelectionSetTracking(bool on) { SelectionSets().tracking = on; }
const Tab<WStr*>& CachedSelectionSetNames() { return SelectionSets().names; }

}  // namespace vandrels
