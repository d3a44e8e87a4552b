#include "helper/vandrels_helper.h"

#include "frame/class_desc.h"
#include "frame/module.h"
#include "helper/helper_records.h"
#include "helper/manager_refresh.h"
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
    data_.nodeCallback = std::make_unique<NodeCallback>(this);
    data_.sceneEventKey = GetISceneEventManager()->RegisterCallback(data_.nodeCallback.get());
    RegisterNotification(OnLayerDeletedProc, this, NOTIFY_LAYER_DELETED);
    vandrels::RegisterModuleNotifications();
    vandrels::HelperRegistry().Append(this);
}

VandrelsHelper::~VandrelsHelper() {
    DeleteAllRefs();
    vandrels::HelperRegistry().Remove(this);
    vandrels::LoadedHelpers().Remove(this);
    if (ISceneEventManager* events = GetISceneEventManager()) events->UnRegisterCallback(data_.sceneEventKey);
    UnRegisterNotification(OnLayerDeletedProc, this);
    freeLists();
}

void VandrelsHelper::freeLists() {
    for (WStr* name : data_.nodesToDelete) delete name;
    data_.nodesToDelete.ZeroCount();
    for (RefLayer* layer : data_.refLayers) delete layer;
    data_.refLayers.ZeroCount();
    for (RenamedLayer* renamed : data_.renamedLayers) delete renamed;
    data_.renamedLayers.ZeroCount();
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
    if (id == SCENE_INFO_INTERFACE) return static_cast<ISceneInfo*>(this);
    return HelperObject::GetInterface(id);
}

void VandrelsHelper::ReconcileReloadParameters() {
    if (!data_.pblock) return;
    const int reloadType = data_.pblock->GetInt(vh_persist_reload_type);
    const int reloadIfChanged = data_.pblock->GetInt(vh_reload_if_changed) ? 1 : 0;
    if ((reloadType == 0 || reloadType == 1) && reloadType != reloadIfChanged) {
        AccessorOffScope off(this);
        data_.pblock->SetValue(vh_persist_reload_type, 0, reloadIfChanged);
    }
}

// ---- References.

int VandrelsHelper::NumRefs() { return Slots().Count(); }

RefTargetHandle VandrelsHelper::GetReference(int i) {
    const vandrels::HelperSlots::Slot slot = Slots().At(i);
    if (!slot.inRange) return nullptr;
    switch (slot.kind) {
    case vandrels::HelperSlot::ParamBlock: return data_.pblock;
    case vandrels::HelperSlot::SceneMaterials: return data_.sceneMaterials;
    case vandrels::HelperSlot::NodeRecord: return data_.refNodes[slot.index];
    case vandrels::HelperSlot::MaterialRecord: return data_.refMaterials[slot.index];
    case vandrels::HelperSlot::Layer: return data_.refLayers[slot.index] ? data_.refLayers[slot.index]->layer : nullptr;
    }
    return nullptr;
}

void VandrelsHelper::SetReference(int i, RefTargetHandle rtarg) {
    const vandrels::HelperSlots::Slot slot = Slots().At(i);
    if (!slot.inRange) return;
    const int k = slot.index;
    switch (slot.kind) {
    case vandrels::HelperSlot::ParamBlock:
        data_.pblock = static_cast<IParamBlock2*>(rtarg);
        if (data_.pblock) {
            data_.useNamePrefix = data_.pblock->GetInt(vh_use_name_prefix);
            ReconcileReloadParameters();
        }
        break;
    case vandrels::HelperSlot::SceneMaterials: data_.sceneMaterials = rtarg; break;
    case vandrels::HelperSlot::NodeRecord:
        vandrels::SetRecordHelper(data_.refNodes[k], nullptr);
        data_.refNodes[k] = static_cast<RefNode*>(rtarg);
        vandrels::SetRecordHelper(data_.refNodes[k], this);
        break;
    case vandrels::HelperSlot::MaterialRecord:
        vandrels::SetRecordHelper(data_.refMaterials[k], nullptr);
        data_.refMaterials[k] = static_cast<RefMaterial*>(rtarg);
        vandrels::SetRecordHelper(data_.refMaterials[k], this);
        break;
    case vandrels::HelperSlot::Layer:
        if (!data_.refLayers[k]) data_.refLayers[k] = new RefLayer;
        data_.refLayers[k]->layer = static_cast<ILayer*>(rtarg);
        break;
    }
}

RefResult VandrelsHelper::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage message,
                                           BOOL) {
    if (message == REFMSG_CHANGE && hTarget && hTarget == data_.pblock && data_.accessorEnabled) {
        // The manager window shows the parameters in its rows.
        vandrels::RequestManagerRefresh();
    } else if (message == REFMSG_SUBANIM_STRUCTURE_CHANGED && hTarget && hTarget == data_.sceneMaterials) {
        // The scene material library is held only while a merge runs; what the merge adds to it is not kept.
        static_cast<MtlBaseLib*>(data_.sceneMaterials)->DeleteAll();
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
    for (int k = data_.refLayers.Count() - 1; k >= 0; --k)
        if (data_.refLayers[k] && data_.refLayers[k]->layer == layer)
            DeleteReference(Slots().Layer(k));
}

// ---- Command panel.

void VandrelsHelper::BeginEditParams(IObjParam* ip, ULONG flags, Animatable* prev) {
    data_.editInterface = ip;
    GetVandrelsHelperDesc()->BeginEditParams(ip, this, flags, prev);
    // The host's automatic rollouts have no window of their own to keep.
    data_.rolloutWindow = nullptr;
    // The rollout's own buttons and file pickers are handled by the user interface's rollout procedure, which
    // the block description carries (ui/helper_rollout.cpp).
}

void VandrelsHelper::EndEditParams(IObjParam* ip, ULONG flags, Animatable* next) {
    GetVandrelsHelperDesc()->EndEditParams(ip, this, flags, next);
    data_.editInterface = nullptr;
    data_.rolloutWindow = nullptr;
}

// ---- Services for records.

INode* VandrelsHelper::GetNode() {
    ULONG handle = 0;
    NotifyDependents(FOREVER, reinterpret_cast<PartID>(&handle), REFMSG_GET_NODE_HANDLE);
    return handle ? GetCOREInterface()->GetINodeByHandle(handle) : nullptr;
}

WStr VandrelsHelper::GetNamePrefix() {
    if (!data_.pblock || !data_.pblock->GetInt(vh_use_name_prefix)) return WStr();
    INode* node = GetNode();
    return node ? WStr(node->GetName()) : WStr();
}

BOOL VandrelsHelper::GetPersistRef() { return data_.pblock ? data_.pblock->GetInt(vh_persist_ref) : FALSE; }

bool VandrelsHelper::IsNested() {
    if (vandrels::MergeStack().Count() > 0) return true;
    INode* node = GetNode();
    if (!node) return true;
    INode* root = node;
    while (root->GetParentNode()) root = root->GetParentNode();
    return root != GetCOREInterface()->GetRootNode();
}

bool VandrelsHelper::NeedsRenderSwitching() {
    if (!data_.pblock) return false;
    if (data_.loaded && data_.holdsNested) return true;
    return data_.pblock->GetInt(vh_use_proxy_in_viewport) != data_.pblock->GetInt(vh_use_proxy_in_render);
}

void VandrelsHelper::ForgetName(const MCHAR* name) {
    if (theHold.Holding()) vandrels::PutNamesRestore(data_.nodesToDelete);
    for (int k = data_.nodesToDelete.Count() - 1; k >= 0; --k)
        if (data_.nodesToDelete[k] && *data_.nodesToDelete[k] == WStr(name)) {
            delete data_.nodesToDelete[k];
            data_.nodesToDelete.Delete(k, 1);
        }
}

void VandrelsHelper::RememberDeletedName(const MSTR& name) {
    if (name.isNull()) return;
    for (WStr* entry : data_.nodesToDelete)
        if (entry && *entry == WStr(name)) return;
    if (theHold.Holding()) vandrels::PutNamesRestore(data_.nodesToDelete);
    data_.nodesToDelete.Append(new WStr(name));
}

Tab<INode*> VandrelsHelper::GetNodes() {
    Tab<INode*> nodes;
    for (RefNode* record : data_.refNodes)
        if (record)
            if (ReferenceTarget* target = record->GetReference(0))
                nodes.Append(static_cast<INode*>(target));
    return nodes;
}

// ---- Clone.

RefTargetHandle VandrelsHelper::Clone(RemapDir& remap) {
    auto* clone = new VandrelsHelper(FALSE);
    clone->ReplaceReference(vandrels::HelperSlots::kParamBlock, remap.CloneRef(data_.pblock));
    if (vandrels::GetOperationMode() == vandrels::kModeDuplicating) {
        // A duplicate keeps only the records that carry local changes; the others leave empty slots.
        clone->data_.refNodes.SetCount(data_.refNodes.Count());
        for (RefNode*& slot : clone->data_.refNodes) slot = nullptr;
        clone->data_.refMaterials.SetCount(data_.refMaterials.Count());
        for (RefMaterial*& slot : clone->data_.refMaterials) slot = nullptr;
        for (int k = 0; k < data_.refNodes.Count(); ++k)
            if (data_.refNodes[k] && vandrels::RecordHasOverrides(data_.refNodes[k]))
                clone->ReplaceReference(clone->Slots().NodeRecord(k), remap.CloneRef(data_.refNodes[k]));
        for (int k = 0; k < data_.refMaterials.Count(); ++k)
            if (data_.refMaterials[k] && vandrels::RecordHasOverrides(data_.refMaterials[k]))
                clone->ReplaceReference(clone->Slots().MaterialRecord(k), remap.CloneRef(data_.refMaterials[k]));
        for (WStr* name : data_.nodesToDelete) clone->data_.nodesToDelete.Append(new WStr(name ? *name : WStr()));
    }
    BaseClone(this, clone, remap);
    if (data_.pblock) data_.pblock->SetValue(vh_selected_in_manager, 0, FALSE);
    return clone;
}
