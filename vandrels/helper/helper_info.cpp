// The helper in the scene-info listing (`maxhost info`, PrintData mode 2): which file it references and with
// which options, the nodes deleted locally, the renamed layers and every record that keeps something (a record
// without overrides carries nothing a save keeps) with what it overrides. Node
// records of a loaded reference also say whether their last load found their node: those that did not hold edits
// the user must look at.
#include "helper/helper_params.h"
#include "helper/merge_reference_file.h"
#include "helper/vandrels_helper.h"
#include "iparamb2.h"
#include "inode.h"
#include "records/record_info.h"
#include "records/ref_material.h"
#include "records/ref_node.h"

void VandrelsHelper::DescribeSceneInfo(InfoWriter& out) {
    out.Text(L"kind", L"Vandrels reference");
    INode* node = GetNode();
    out.Text(L"helper", node && node->GetName() ? node->GetName() : L"");
    IParamBlock2* block = data_.pblock;
    if (block) {
        out.Text(L"file", vandrels::ReferenceFilePath(this, false).data());
        out.Text(L"proxyFile", vandrels::ReferenceFilePath(this, true).data());
        out.BeginObject(L"options");
        out.Flag(L"useProxyInViewport", block->GetInt(vh_use_proxy_in_viewport) != 0);
        out.Flag(L"useProxyInRender", block->GetInt(vh_use_proxy_in_render) != 0);
        out.Flag(L"useNamePrefix", block->GetInt(vh_use_name_prefix) != 0);
        out.Flag(L"persistRef", block->GetInt(vh_persist_ref) != 0);
        out.Number(L"persistReloadType", block->GetInt(vh_persist_reload_type));
        out.Flag(L"overlay", block->GetInt(vh_overlay) != 0);
        out.EndObject();
    }
    const bool loaded = IsLoaded();
    out.Flag(L"loaded", loaded);
    out.BeginList(L"deletedNodes");
    for (WStr* name : data_.nodesToDelete)
        if (name) out.Text(nullptr, name->data());
    out.EndList();
    out.BeginList(L"renamedLayers");
    for (RenamedLayer* renamed : data_.renamedLayers) {
        if (!renamed) continue;
        out.BeginObject(nullptr);
        out.Text(L"name", renamed->name.data());
        out.Text(L"newName", renamed->newName.data());
        out.EndObject();
    }
    out.EndList();
    out.BeginList(L"nodeRecords");
    for (RefNode* record : data_.refNodes) {
        if (!record || !record->HasOverrides()) continue;
        out.BeginObject(nullptr);
        vandrels::DescribeNodeRecord(record, out, loaded);
        out.EndObject();
    }
    out.EndList();
    if (loaded) {
        out.BeginList(L"nodesNotFound");
        for (RefNode* record : data_.refNodes)
            if (record && !record->IsNodeLoaded() && record->HasOverrides()) out.Text(nullptr, record->GetName().data());
        out.EndList();
    }
    out.BeginList(L"materialRecords");
    for (RefMaterial* record : data_.refMaterials) {
        if (!record || !record->HasOverrides()) continue;
        out.BeginObject(nullptr);
        vandrels::DescribeMaterialRecord(record, out);
        out.EndObject();
    }
    out.EndList();
}
