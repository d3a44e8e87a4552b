#include "script/vandrels_interface.h"

#include "helper/helper_list.h"
#include "script/add_vandrel.h"
#include "script/advanced_reset.h"
#include "script/manager_requests.h"
#include "script/reference_operations.h"
#include "frame/settings.h"
#include "script/dialog_requests.h"

namespace {

using namespace vandrels;

FPValue Bool(bool value) { return FPValue(TYPE_BOOL, value ? TRUE : FALSE); }

}  // namespace

VandrelsInterface::VandrelsInterface() : FPStaticInterface(VANDRELS_INTERFACE_ID, L"Vandrels", 0, nullptr, FP_CORE) {
    const auto indexArray = [] { return FPParamDef(L"array of indices", TYPE_INDEX_TAB); };
    AppendFunction(vi_add_vandrel, L"AddVandrel", TYPE_INODE,
                   {FPParamDef(L"fileName", TYPE_STRING),
                    FPParamDef(L"proxyFileName", TYPE_STRING).Keyword(FPValue(L"")),
                    FPParamDef(L"load", TYPE_BOOL).Keyword(FPValue(true)),
                    FPParamDef(L"active", TYPE_BOOL).Keyword(FPValue(true)),
                    FPParamDef(L"proxyViewport", TYPE_BOOL).Keyword(FPValue(false)),
                    FPParamDef(L"proxyRender", TYPE_BOOL).Keyword(FPValue(false))})
        .AppendFunction(vi_add_vandrel_dialog, L"AddVandrelDialog", TYPE_VOID)
        .AppendFunction(vi_num_vandrels, L"NumVandrels", TYPE_INT)
        .AppendFunction(vi_get_vandrel, L"GetVandrel", TYPE_INODE, {FPParamDef(L"index", TYPE_INDEX)})
        .AppendFunction(vi_get_all_vandrels, L"GetAllVandrels", TYPE_INODE_TAB_BV)
        .AppendFunction(vi_remove_all_vandrels, L"RemoveAllVandrels", TYPE_VOID)
        .AppendFunction(vi_reload_vandrels, L"ReloadVandrels", TYPE_VOID, {indexArray()})
        .AppendFunction(vi_remove_vandrels, L"RemoveVandrels", TYPE_VOID, {indexArray()})
        .AppendFunction(vi_reset_vandrels, L"ResetVandrels", TYPE_VOID, {indexArray()})
        .AppendFunction(vi_duplicate_vandrels, L"DuplicateVandrels", TYPE_VOID, {indexArray()})
        .AppendFunction(vi_merge_vandrels, L"MergeVandrels", TYPE_VOID, {indexArray()})
        .AppendFunction(vi_open_manager, L"OpenManager", TYPE_VOID)
        .AppendFunction(vi_close_manager, L"CloseManager", TYPE_VOID)
        .AppendFunction(vi_is_manager_open, L"IsManagerOpen", TYPE_BOOL)
        .AppendFunction(vi_about, L"About", TYPE_VOID)
        .AppendFunction(vi_print_times, L"PrintTimes", TYPE_VOID, {FPParamDef(L"state", TYPE_BOOL)})
        .AppendFunction(vi_merge_for_network_render, L"MergeForNetworkRender", TYPE_BOOL)
        .AppendFunction(vi_set_merge_for_network_render, L"SetMergeForNetworkRender", TYPE_VOID,
                        {FPParamDef(L"state", TYPE_BOOL)})
        .AppendFunction(vi_save_refs_as_merged, L"SaveRefsAsMerged", TYPE_BOOL)
        .AppendFunction(vi_set_save_refs_as_merged, L"SetSaveRefsAsMerged", TYPE_VOID, {FPParamDef(L"state", TYPE_BOOL)})
        .AppendFunction(vi_advanced_reset, L"AdvancedReset", TYPE_VOID,
                        {FPParamDef(L"selection", TYPE_INT).Keyword(FPValue(1)),
                         FPParamDef(L"category", TYPE_BITARRAY).KeywordNone(),
                         FPParamDef(L"parameters", TYPE_BITARRAY).KeywordNone(),
                         FPParamDef(L"references", TYPE_INDEX_TAB).KeywordNone(),
                         FPParamDef(L"nodes", TYPE_INODE_TAB).KeywordNone()})
        .AppendProperty(vi_get_show_duplicated_names_warning, vi_set_show_duplicated_names_warning,
                        L"ShowDuplicatedNamesWarning", TYPE_BOOL)
        .AppendProperty(vi_get_save_vandrels_as_merged, vi_set_save_vandrels_as_merged, L"SaveVandrelsAsMerged",
                        TYPE_BOOL);
}

FPStatus VandrelsInterface::_dispatch_fn(FunctionID fid, TimeValue, FPValue& result, FPParams* p) {
    FPParams noParams;
    MaxSDK::Array<FPValue>& arg = (p ? *p : noParams).params;
    switch (fid) {
    case vi_add_vandrel:
        result = FPValue(AddVandrel(arg[0].s, arg[1].s, arg[2].i != 0, arg[3].i != 0, arg[4].i != 0, arg[5].i != 0));
        break;
    case vi_add_vandrel_dialog: AddVandrelDialog(); break;
    case vi_num_vandrels: result = FPValue(int(GetHelperList().size())); break;
    case vi_get_vandrel: {
        const int index = arg[0].i;
        const std::vector<INode*> helpers = GetHelperList();
        result = FPValue(index >= 0 && index < int(helpers.size()) ? helpers[std::size_t(index)] : nullptr);
        break;
    }
    case vi_get_all_vandrels: {
        Tab<INode*> nodes;
        for (INode* node : GetHelperList()) nodes.Append(node);
        result = FPValue(nodes, TYPE_INODE_TAB_BV);
        break;
    }
    case vi_remove_all_vandrels: RemoveAllVandrels(); break;
    case vi_reload_vandrels: ReloadVandrels(arg[0].i_tab); break;
    case vi_remove_vandrels: RemoveVandrels(arg[0].i_tab); break;
    case vi_reset_vandrels: ResetVandrels(arg[0].i_tab); break;
    case vi_duplicate_vandrels: DuplicateVandrels(arg[0].i_tab); break;
    case vi_merge_vandrels: MergeVandrels(arg[0].i_tab); break;
    case vi_open_manager: OpenManager(); break;
    case vi_close_manager: CloseManager(); break;
    case vi_is_manager_open: result = Bool(IsManagerOpen()); break;
    case vi_about: RequestAbout(); break;
    case vi_print_times: SetPrintTimes(arg[0].i != 0); break;
    case vi_merge_for_network_render: result = Bool(GetMergeForNetworkRender()); break;
    case vi_set_merge_for_network_render: SetMergeForNetworkRender(arg[0].i != 0); break;
    case vi_save_refs_as_merged:
    case vi_get_save_vandrels_as_merged: result = Bool(GetSaveRefsAsMerged()); break;
    case vi_set_save_refs_as_merged:
    case vi_set_save_vandrels_as_merged: SetSaveRefsAsMerged(arg[0].i != 0); break;
    case vi_get_show_duplicated_names_warning: result = Bool(GetShowDuplicatedNamesWarning()); break;
    case vi_set_show_duplicated_names_warning: SetShowDuplicatedNamesWarning(arg[0].i != 0); break;
    case vi_advanced_reset:
        AdvancedReset(arg[0].i, arg[1].bits, arg[2].bits, arg[3].i_tab, arg[4].n_tab);
        break;
    default: return FPS_NO_SUCH_FUNCTION;
    }
    return FPS_OK;
}
