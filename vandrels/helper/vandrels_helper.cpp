#include "helper/vandrels_helper.h"

#include "frame/class_desc.h"
#include "frame/module.h"
#include "helper/helper_records.h"
#include "helper/module_notifications.h"
#include "frame/module_state.h"
#include "helper/helper_registry.h"
#include "helper/node_callback.h"
#include "helper/scene_opened_step.h"
#include "hold.h"
#include "ilayer.h"
#include "imtl.h"
#include "inode.h"
#include "maxapi.h"
#include "notify.h"
#include "records/ref_node.h"
#include "records/ref_material.h"
#include "resource.h"

namespace {
class VandrelsHelperClassDesc : public VandrelsClassDesc {
public:
    VandrelsHelperClassDesc()
        : VandrelsClassDesc(IDS_CLASS_VANDRELSHELPER, L"VandrelsHelper", HELPER_CLASS_ID, VANDRELS_HELPER_CLASS_ID) {}
    void* Create(BOOL loading) override { return new VandrelsHelper(loading); }
};

// NOTIFY_LAYER_DELETED: a layer is about to leave the scene; the helper whose layer it is lets go of it.
void OnLayerDeletedProc(void* param, NotifyInfo* info) {
    if (param && info && info->callParam)
        static_cast<VandrelsHelper*>(param)->OnLayerDeleted(static_cast<ILayer*>(info->callParam));
}
}  // namespace

ClassDesc2* GetVandrelsHelperDesc() {
    static VandrelsHelperClassDesc desc;
    static bool described = false;
    if (!described) {
        // The block and the interface describe themselves to the descriptor they are given, so they are made
        // right after it (and are destroyed before it).
        described = true;
        GetVandrelsHelperParamBlockDesc();
        GetVandrelsHelperInterfaceDesc();
    }
    return &desc;
}

VandrelsHelper::VandrelsHelper(BOOL loading) {
    if (loading) {
        if (vandrels::LoadedHelpers().Count() == 0) vandrels::RegisterSceneOpenedStep();
        vandrels::LoadedHelpers().Append(this);
    } else {
        GetVandrelsHelperDesc()->MakeAutoParamBlocks(this);
    }
    sceneEventKey = GetISceneEventManager()->RegisterCallback(new NodeCallback(this));
    RegisterNotification(OnLayerDeletedProc, this, NOTIFY_LAYER_DELETED);
    vandrels::RegisterModuleNotifications();
    vandrels::HelperRegistry().Append(this);
}

VandrelsHelper::~VandrelsHelper() {
    DeleteAllRefs();
    vandrels::HelperRegistry().Remove(this);
    vandrels::LoadedHelpers().Remove(this);
    if (ISceneEventManager* events = GetISceneEventManager()) {
        INodeEventCallback* callback = events->GetCallbackByKey(sceneEventKey);
        events->UnRegisterCallback(sceneEventKey);
        delete callback;
    }
    UnRegisterNotification(OnLayerDeletedProc, this);
    freeLists();
}

void VandrelsHelper::freeLists() {
    for (WStr* name : nodesToDelete) delete name;
    nodesToDelete.ZeroCount();
    for (RefLayer* layer : refLayers) delete layer;
    refLayers.ZeroCount();
    for (RenamedLayer* renamed : renamedLayers) delete renamed;
    renamedLayers.ZeroCount();
}

bool VandrelsHelper::IsVandrelsHelper(Object* obj) {
    return obj && obj->ClassID() == VANDRELS_HELPER_CLASS_ID && obj->SuperClassID() == HELPER_CLASS_ID;
}

VandrelsHelper* VandrelsHelper::FromObject(Object* obj) {
    return IsVandrelsHelper(obj) ? static_cast<VandrelsHelper*>(obj) : nullptr;
}

MSTR VandrelsHelper::GetObjectName(bool) { return GetStringCopy(IDS_CLASS_VANDRELSHELPER); }

BaseInterface* VandrelsHelper::GetInterface(Interface_ID id) {
    if (id == VANDRELS_HELPER_INTERFACE_ID) return static_cast<VandrelsHelperInterface*>(this);
    return HelperObject::GetInterface(id);
}

void VandrelsHelper::ReconcileReloadParameters() {
    if (!pblock) return;
    const int reloadType = pblock->GetInt(vh_persist_reload_type);
    const int reloadIfChanged = pblock->GetInt(vh_reload_if_changed) ? 1 : 0;
    if ((reloadType == 0 || reloadType == 1) && reloadType != reloadIfChanged) {
        AccessorOffScope off(this);
        pblock->SetValue(vh_persist_reload_type, 0, reloadIfChanged);
    }
}

// ---- References.

int VandrelsHelper::NumRefs() { return Slots().Count(); }

RefTargetHandle VandrelsHelper::GetReference(int i) {
    const vandrels::HelperSlots::Slot slot = Slots().At(i);
    if (!slot.inRange) return nullptr;
    switch (slot.kind) {
    case vandrels::HelperSlot::ParamBlock: return pblock;
    case vandrels::HelperSlot::SceneMaterials: return sceneMaterials;
    case vandrels::HelperSlot::NodeRecord: return refNodes[slot.index];
    case vandrels::HelperSlot::MaterialRecord: return refMaterials[slot.index];
    case vandrels::HelperSlot::Layer: return refLayers[slot.index] ? refLayers[slot.index]->layer : nullptr;
    }
    return nullptr;
}

void VandrelsHelper::SetReference(int i, RefTargetHandle rtarg) {
    const vandrels::HelperSlots::Slot slot = Slots().At(i);
    if (!slot.inRange) return;
    const int k = slot.index;
    switch (slot.kind) {
    case vandrels::HelperSlot::ParamBlock:
        pblock = static_cast<IParamBlock2*>(rtarg);
        if (pblock) {
            useNamePrefix = pblock->GetInt(vh_use_name_prefix);
            ReconcileReloadParameters();
        }
        break;
    case vandrels::HelperSlot::SceneMaterials: sceneMaterials = rtarg; break;
    case vandrels::HelperSlot::NodeRecord:
        vandrels::SetRecordHelper(refNodes[k], nullptr);
        refNodes[k] = static_cast<RefNode*>(rtarg);
        vandrels::SetRecordHelper(refNodes[k], this);
        break;
    case vandrels::HelperSlot::MaterialRecord:
        vandrels::SetRecordHelper(refMaterials[k], nullptr);
        refMaterials[k] = static_cast<RefMaterial*>(rtarg);
        vandrels::SetRecordHelper(refMaterials[k], this);
        break;
    case vandrels::HelperSlot::Layer:
        if (!refLayers[k]) refLayers[k] = new RefLayer;
        refLayers[k]->layer = static_cast<ILayer*>(rtarg);
        break;
    }
}

RefResult VandrelsHelper::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage message,
                                           BOOL) {
    if (message == REFMSG_CHANGE && hTarget && hTarget == pblock && accessorEnabled) {
        // The manager window refreshes its rows here once it exists.
    } else if (message == REFMSG_SUBANIM_STRUCTURE_CHANGED && hTarget && hTarget == sceneMaterials) {
        // The scene material library is held only while a merge runs; what the merge adds to it is not kept.
        static_cast<MtlBaseLib*>(sceneMaterials)->DeleteAll();
    }
    return REF_STOP;
}

BOOL VandrelsHelper::IsRealDependency(ReferenceTarget* rtarg) {
    if (GetPersistRef() || !vandrels::AreRecordsInessential()) return TRUE;
    if (!vandrels::IsRecord(rtarg)) return TRUE;
    return vandrels::RecordHasOverrides(static_cast<RefBase*>(rtarg)) ? TRUE : FALSE;
}

void VandrelsHelper::OnLayerDeleted(ILayer* layer) {
    // The entry stays, empty: it still counts among the layer entries, and the next layer monitoring drops it.
    for (int k = refLayers.Count() - 1; k >= 0; --k)
        if (refLayers[k] && refLayers[k]->layer == layer)
            DeleteReference(Slots().Layer(k));
}

// ---- Command panel.

void VandrelsHelper::BeginEditParams(IObjParam* ip, ULONG flags, Animatable* prev) {
    editInterface = ip;
    GetVandrelsHelperDesc()->BeginEditParams(ip, this, flags, prev);
    // The host's automatic rollouts have no window of their own to keep.
    rolloutWindow = nullptr;
    // The rollout's dialog procedure (its buttons and file pickers) comes with the rollout itself; until then
    // the automatic rollout runs without one.
    GetVandrelsHelperParamBlockDesc()->SetUserDlgProc(nullptr);
}

void VandrelsHelper::EndEditParams(IObjParam* ip, ULONG flags, Animatable* next) {
    GetVandrelsHelperDesc()->EndEditParams(ip, this, flags, next);
    editInterface = nullptr;
    rolloutWindow = nullptr;
}

// ---- Services for records.

INode* VandrelsHelper::GetNode() {
    ULONG handle = 0;
    NotifyDependents(FOREVER, reinterpret_cast<PartID>(&handle), REFMSG_GET_NODE_HANDLE);
    return handle ? GetCOREInterface()->GetINodeByHandle(handle) : nullptr;
}

WStr VandrelsHelper::GetNamePrefix() {
    if (!pblock || !pblock->GetInt(vh_use_name_prefix)) return WStr();
    INode* node = GetNode();
    return node ? WStr(node->GetName()) : WStr();
}

BOOL VandrelsHelper::GetPersistRef() { return pblock ? pblock->GetInt(vh_persist_ref) : FALSE; }

bool VandrelsHelper::IsNested() {
    if (vandrels::MergeStack().Count() > 0) return true;
    INode* node = GetNode();
    if (!node) return true;
    INode* root = node;
    while (root->GetParentNode()) root = root->GetParentNode();
    return root != GetCOREInterface()->GetRootNode();
}

bool VandrelsHelper::NeedsRenderSwitching() {
    if (!pblock) return false;
    if (loaded && holdsNested) return true;
    return pblock->GetInt(vh_use_proxy_in_viewport) != pblock->GetInt(vh_use_proxy_in_render);
}

void VandrelsHelper::ForgetName(const MCHAR* name) {
    if (theHold.Holding()) vandrels::PutNamesRestore(nodesToDelete);
    for (int k = nodesToDelete.Count() - 1; k >= 0; --k)
        if (nodesToDelete[k] && *nodesToDelete[k] == WStr(name)) {
            delete nodesToDelete[k];
            nodesToDelete.Delete(k, 1);
        }
}

Tab<INode*> VandrelsHelper::GetNodes() {
    Tab<INode*> nodes;
    for (RefNode* record : refNodes)
        if (record)
            if (ReferenceTarget* target = record->GetReference(0))
                nodes.Append(static_cast<INode*>(target));
    return nodes;
}

// ---- Clone.

RefTargetHandle VandrelsHelper::Clone(RemapDir& remap) {
    auto* clone = new VandrelsHelper(FALSE);
    clone->ReplaceReference(vandrels::HelperSlots::kParamBlock, remap.CloneRef(pblock));
    if (vandrels::GetOperationMode() == vandrels::kModeDuplicating) {
        // A duplicate keeps only the records that carry local changes; the others leave empty slots.
        clone->refNodes.SetCount(refNodes.Count());
        for (RefNode*& slot : clone->refNodes) slot = nullptr;
        clone->refMaterials.SetCount(refMaterials.Count());
        for (RefMaterial*& slot : clone->refMaterials) slot = nullptr;
        for (int k = 0; k < refNodes.Count(); ++k)
            if (refNodes[k] && vandrels::RecordHasOverrides(refNodes[k]))
                clone->ReplaceReference(clone->Slots().NodeRecord(k), remap.CloneRef(refNodes[k]));
        for (int k = 0; k < refMaterials.Count(); ++k)
            if (refMaterials[k] && vandrels::RecordHasOverrides(refMaterials[k]))
                clone->ReplaceReference(clone->Slots().MaterialRecord(k), remap.CloneRef(refMaterials[k]));
        for (WStr* name : nodesToDelete) clone->nodesToDelete.Append(new WStr(name ? *name : WStr()));
    }
    BaseClone(this, clone, remap);
    if (pblock) pblock->SetValue(vh_selected_in_manager, 0, FALSE);
    return clone;
}
