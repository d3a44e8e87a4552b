// The helper's parameter block VandrelsHelper_Parameters and the accessor that turns parameter changes into
// reference operations.
#include "helper/helper_params.h"
#include "helper/layer_monitoring.h"
#include "frame/module_state.h"
#include "helper/vandrels_helper.h"
#include "hold.h"
#include "inode.h"
#include "maxapi.h"
#include "records/ref_material.h"
#include "records/ref_node.h"
#include "resource.h"

ClassDesc2* GetVandrelsHelperDesc();

namespace {

// The automatic rollout and its controls.
constexpr int kRolloutDialog = 101;
constexpr int kActiveCheck = 1007;
constexpr int kFileNameEdit = 1301;
constexpr int kProxyFileNameEdit = 1302;
constexpr int kUseProxyInViewportCheck = 1005;
constexpr int kUseProxyInRenderCheck = 1006;
constexpr int kUseNamePrefixCheck = 1210;
constexpr int kPersistRefCheck = 1408;
constexpr int kOverlayCheck = 1410;
constexpr int kReloadAlwaysRadio = 1030;
constexpr int kReloadIfChangedRadio = 1031;
constexpr int kReloadManuallyRadio = 1032;

// Suspends the undo system for its lifetime when it is holding.
class HoldSuspended {
public:
    HoldSuspended() : suspended_(theHold.Holding()) {
        if (suspended_) theHold.Suspend();
    }
    ~HoldSuspended() {
        if (suspended_) theHold.Resume();
    }

private:
    bool suspended_;
};

class VandrelsPBAccessor : public PBAccessor {
public:
    void Set(PB2Value& v, ReferenceMaker* owner, ParamID id, int, TimeValue t) override {
        if (!owner || owner->ClassID() != VANDRELS_HELPER_CLASS_ID || owner->SuperClassID() != HELPER_CLASS_ID) return;
        auto* helper = static_cast<VandrelsHelper*>(owner);
        if (!helper->ParamBlock() || !helper->ReactsToOwnParameters()) return;
        IParamBlock2* pb = helper->ParamBlock();
        switch (id) {
        case vh_active:
            if (pb->GetInt(vh_active)) {
                helper->Load();
            } else {
                helper->Unload();
                GetCOREInterface()->RedrawViews(GetCOREInterface()->GetTime());
            }
            break;
        case vh_file_name: {
            AccessorOffScope off(helper);
            helper->Reload();
            break;
        }
        case vh_proxy_file_name:
            if (pb->GetInt(vh_use_proxy_in_viewport)) {
                AccessorOffScope off(helper);
                helper->Reload();
            }
            break;
        case vh_use_proxy_in_viewport:
            helper->Reload();
            break;
        case vh_use_name_prefix: {
            vandrels::OperationModeScope mode(vandrels::kModeRenaming);
            HoldSuspended hold;
            helper->SwitchNamePrefix(v.i);
            break;
        }
        case vh_reload_if_changed: {
            AccessorOffScope off(helper);
            pb->SetValue(vh_persist_reload_type, t, v.i ? 1 : 0);
            break;
        }
        case vh_persist_reload_type: {
            AccessorOffScope off(helper);
            pb->SetValue(vh_reload_if_changed, t, v.i == 1 ? TRUE : FALSE);
            break;
        }
        default:
            break;
        }
    }
};

VandrelsPBAccessor& TheAccessor() {
    static VandrelsPBAccessor accessor;
    return accessor;
}

}  // namespace

ParamBlockDesc2* GetVandrelsHelperParamBlockDesc() {
    static ParamBlockDesc2 desc(vandrels_helper_params, L"VandrelsHelper_Parameters", 0, GetVandrelsHelperDesc(),
                                P_AUTO_CONSTRUCT | P_AUTO_UI);
    static bool built = false;
    if (built) return &desc;
    built = true;
    PBAccessor* accessor = &TheAccessor();
    desc.AutoConstruct(vandrels::HelperSlots::kParamBlock).AutoUI(kRolloutDialog, IDS_PARAMETERS, 0);
    desc.AddParam(vh_active, L"Active", TYPE_BOOL, P_RESET_DEFAULT | P_TRANSIENT, IDS_ACTIVE)
        .Default(TRUE).CheckBox(kActiveCheck).Accessor(accessor);
    desc.AddParam(vh_file_name, L"FileName", TYPE_FILENAME, P_RESET_DEFAULT, IDS_MAIN_FILE_PATH)
        .Default(L"").UI_CustEdit(kFileNameEdit).FileTypes(IDS_MAX_FILE_FILTER).Caption(IDS_MAIN_FILE_PATH)
        .AssetType(VH_FILE_ASSET_TYPE).Accessor(accessor);
    desc.AddParam(vh_proxy_file_name, L"ProxyFileName", TYPE_FILENAME, P_RESET_DEFAULT, IDS_PROXY_FILE_NAME)
        .Default(L"").UI_CustEdit(kProxyFileNameEdit).FileTypes(IDS_MAX_FILE_FILTER).Caption(IDS_PROXY_FILE_NAME)
        .AssetType(VH_FILE_ASSET_TYPE).Accessor(accessor);
    desc.AddParam(vh_use_proxy_in_viewport, L"UseProxyInViewport", TYPE_BOOL, P_RESET_DEFAULT, IDS_USE_PROXY_IN_VIEWPORT)
        .Default(FALSE).CheckBox(kUseProxyInViewportCheck).Accessor(accessor);
    desc.AddParam(vh_use_proxy_in_render, L"UseProxyInRender", TYPE_BOOL, P_RESET_DEFAULT, IDS_USE_PROXY_IN_RENDER)
        .Default(FALSE).CheckBox(kUseProxyInRenderCheck);
    desc.AddParam(vh_use_name_prefix, L"UseNamePrefix", TYPE_BOOL, P_RESET_DEFAULT, IDS_USE_NAME_PREFIX)
        .Default(FALSE).CheckBox(kUseNamePrefixCheck).Accessor(accessor);
    desc.AddParam(vh_persist_ref, L"PersistRef", TYPE_BOOL, P_RESET_DEFAULT, IDS_PERSIST_REFERENCE)
        .Default(FALSE).CheckBox(kPersistRefCheck);
    desc.AddParam(vh_reload_if_changed, L"ReloadIfChanged", TYPE_BOOL, P_RESET_DEFAULT, IDS_RELOAD_IF_CHANGED)
        .Default(FALSE).Accessor(accessor);
    desc.AddParam(vh_selected_in_manager, L"SelectedInManager", TYPE_BOOL, P_RESET_DEFAULT, IDS_SELECTED_IN_MANAGER)
        .Default(TRUE);
    desc.AddParam(vh_other, L"", TYPE_REFTARG, P_RESET_DEFAULT, IDS_OTHER);
    desc.AddParam(vh_hide_dup_names_warning, L"", TYPE_BOOL, P_RESET_DEFAULT, IDS_HIDE_DUP_NAMES_WARNING).Default(FALSE);
    desc.AddParam(vh_overlay, L"Overlay", TYPE_BOOL, P_RESET_DEFAULT, IDS_OVERLAY).Default(FALSE).CheckBox(kOverlayCheck);
    desc.AddParam(vh_persist_reload_type, L"PersistReloadType", TYPE_INT, P_RESET_DEFAULT, IDS_PERSIST_RELOAD_TYPE)
        .Default(1).Range(0, 2).RadioButtons({kReloadAlwaysRadio, kReloadIfChangedRadio, kReloadManuallyRadio})
        .Accessor(accessor);
    return &desc;
}

void VandrelsHelper::SwitchNamePrefix(int on) {
    // useNamePrefix still tells whether the layers carry the prefix now.
    INode* node = GetNode();
    const WStr oldPrefix = data_.useNamePrefix && node ? WStr(node->GetName()) : WStr();
    data_.useNamePrefix = on;
    const WStr prefix = GetNamePrefix();
    // Every node and material record re-applies the prefix to its item's name; the layers follow.
    for (RefNode* record : data_.refNodes)
        if (record) record->ApplyNamePrefix(prefix);
    for (RefMaterial* record : data_.refMaterials)
        if (record) record->ApplyNamePrefix(prefix);
    vandrels::ChangeLayerPrefix(this, oldPrefix, prefix);
}
