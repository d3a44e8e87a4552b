// The helper's scripting interface VandrelsHelperInterface: its description on the helper's class descriptor,
// the dispatch of its function ids, and PrintData.
#include "helper/vandrels_helper.h"
#include "ilayer.h"
#include "listener.h"
#include "records/ref_node.h"
#include "records/ref_material.h"
#include "sceneinfo.h"

ClassDesc2* GetVandrelsHelperDesc();

namespace {
// The PrintData mode of the scene-info listing (scripts pass mode:3: the mode is an index and they count from 1).
constexpr int kPrintSceneInfo = 2;
}  // namespace

FPInterfaceDesc* GetVandrelsHelperInterfaceDesc() {
    static FPInterfaceDesc desc(
        VANDRELS_HELPER_INTERFACE_ID, L"VandrelsHelper", 0, GetVandrelsHelperDesc(), 0,
        {FPFunctionDef(vh_fn_reload, L"Reload", TYPE_INT),
         FPFunctionDef(vh_fn_unload, L"Unload", TYPE_INT),
         FPFunctionDef(vh_fn_merge, L"Merge", TYPE_INT),
         FPFunctionDef(vh_fn_dismiss, L"Dismiss", TYPE_INT),
         FPFunctionDef(vh_fn_reset, L"Reset", TYPE_INT),
         FPFunctionDef(vh_fn_overwrite, L"Overwrite", TYPE_INT),
         FPFunctionDef(vh_fn_save_as, L"SaveAs", TYPE_INT, {FPParamDef(L"fileName", TYPE_STRING)}),
         FPFunctionDef(vh_fn_print_data, L"PrintData", TYPE_VOID,
                       {FPParamDef(L"mode", TYPE_INDEX).Keyword(FPValue(TYPE_INDEX, 0))}),
         FPFunctionDef(vh_fn_num_ref_nodes, L"NumRefNodes", TYPE_INT),
         FPFunctionDef(vh_fn_get_ref_node, L"GetRefNode", TYPE_REFTARG, {FPParamDef(L"index", TYPE_INDEX)}),
         FPFunctionDef(vh_fn_num_ref_materials, L"NumRefMaterials", TYPE_INT),
         FPFunctionDef(vh_fn_get_ref_material, L"GetRefMaterial", TYPE_REFTARG, {FPParamDef(L"index", TYPE_INDEX)}),
         FPFunctionDef(vh_fn_get_nodes, L"GetNodes", TYPE_INODE_TAB_BV),
         FPFunctionDef(vh_fn_show_dup_names, L"ShowDupNames", TYPE_VOID)});
    return &desc;
}

FPInterfaceDesc* VandrelsHelperInterface::GetDesc() { return GetVandrelsHelperInterfaceDesc(); }

FPStatus VandrelsHelperInterface::_dispatch_fn(FunctionID fid, TimeValue, FPValue& result, FPParams* p) {
    FPParams none;
    MaxSDK::Array<FPValue>& args = (p ? p : &none)->params;
    switch (fid) {
    case vh_fn_reload: result = FPValue(Reload()); return FPS_OK;
    case vh_fn_unload: result = FPValue(Unload()); return FPS_OK;
    case vh_fn_merge: result = FPValue(Merge()); return FPS_OK;
    case vh_fn_dismiss: result = FPValue(Dismiss()); return FPS_OK;
    case vh_fn_reset: result = FPValue(Reset()); return FPS_OK;
    case vh_fn_overwrite: result = FPValue(Overwrite()); return FPS_OK;
    case vh_fn_save_as: result = FPValue(SaveAs(args[0].s)); return FPS_OK;
    case vh_fn_print_data: PrintData(args[0].i); return FPS_OK;
    case vh_fn_num_ref_nodes: result = FPValue(NumRefNodes()); return FPS_OK;
    case vh_fn_get_ref_node: result = FPValue(static_cast<ReferenceTarget*>(GetRefNode(args[0].i))); return FPS_OK;
    case vh_fn_num_ref_materials: result = FPValue(NumRefMaterials()); return FPS_OK;
    case vh_fn_get_ref_material:
        result = FPValue(static_cast<ReferenceTarget*>(GetRefMaterial(args[0].i)));
        return FPS_OK;
    case vh_fn_get_nodes: result = FPValue(GetNodes(), TYPE_INODE_TAB_BV); return FPS_OK;
    case vh_fn_show_dup_names: ShowDupNames(); return FPS_OK;
    default: return FPS_NO_SUCH_FUNCTION;
    }
}

void VandrelsHelper::PrintData(int mode) {
    if (mode == kPrintSceneInfo) {
        mputs(SceneInfoText([this](InfoWriter& out) { DescribeSceneInfo(out); }).data());
        mflush();
        return;
    }
    mprintf(L"\nNum RefNodes: %d\nNum RefMaterials:%d\nNum RefLayers:%d\nNum NodesToDelete:%d\n\n",
            data_.refNodes.Count(), data_.refMaterials.Count(), data_.refLayers.Count(), data_.nodesToDelete.Count());
    mflush();
    mputs(L"\nNodesToDelete:\n");
    for (WStr* name : data_.nodesToDelete) mprintf(L"%s,\n", name ? name->data() : L"");
    if (data_.nodesToDelete.Count() == 0) mputs(L"None\n");
    mflush();
    mputs(L"\nRenamedLayers:\n");
    for (RenamedLayer* renamed : data_.renamedLayers) {
        if (!renamed) continue;
        mprintf(L"%s -> %s%s\n", renamed->name.data(), renamed->newName.data(), renamed->noPrefix ? L" (Full)" : L"");
    }
    if (data_.renamedLayers.Count() == 0) mputs(L"None\n");
    mflush();
    mputs(L"\n");
    mflush();
    for (RefNode* record : data_.refNodes) {
        if (record)
            record->PrintData(mode);
        else
            mputs(L"\nRefNode: NULL\n\n");
    }
    mflush();
    for (RefMaterial* record : data_.refMaterials) {
        if (record)
            record->PrintData(mode);
        else
            mputs(L"\nRefMaterial: NULL\n\n");
    }
    mflush();
    for (RefLayer* entry : data_.refLayers) {
        ILayer* layer = entry ? entry->layer : nullptr;
        mprintf(L"\nRefLayer: %s\n\n", layer ? layer->GetName().data() : L"NULL");
    }
    mflush();
}
