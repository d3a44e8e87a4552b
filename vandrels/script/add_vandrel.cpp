#include "script/add_vandrel.h"

#include "script/reference_operations.h"

#include "frame/class_ids.h"
#include "frame/module.h"
#include "helper/helper_list.h"
#include "helper/helper_params.h"
#include "helper/name_increment.h"
#include "helper/vandrels_helper.h"
#include "resource.h"

#include "ilayer.h"
#include "iparamb2.h"
#include "maxapi.h"
#include "maxexception.h"
#include "plugapi.h"

#include <set>
#include <string>

namespace vandrels {

namespace {

// The file's name, unique among the other helper nodes of the scene (case-sensitive). A file name that gives
// no name (empty, or a folder) names the node after the helper class.
MSTR UniqueHelperName(INode* node, const MCHAR* fileName) {
    MSTR name = NameFromFileName(fileName);
    if (name.isNull()) name = GetStringCopy(IDS_CLASS_VANDRELSHELPER);
    std::set<std::wstring> taken;
    for (INode* other : GetHelperList())
        if (other != node && other->GetName()) taken.insert(other->GetName());
    return MakeUniqueName(name, [&taken](const MSTR& candidate) { return taken.count(candidate.str()) > 0; });
}

}  // namespace

INode* AddVandrel(const MCHAR* fileName, const MCHAR* proxyFileName, bool load, bool active, bool proxyViewport,
                  bool proxyRender) {
    if (!fileName) fileName = L"";
    if (!proxyFileName) proxyFileName = L"";
    Interface* ip = GetCOREInterface();
    auto* helper = static_cast<VandrelsHelper*>(CreateInstance(HELPER_CLASS_ID, VANDRELS_HELPER_CLASS_ID));
    if (!helper) throw MAXException(MSTR(L"Cannot create a VandrelsHelper for ") + fileName);
    INode* node = ip->CreateObjectNode(helper);
    if (!node) throw MAXException(MSTR(L"Cannot create a node for the VandrelsHelper of ") + fileName);
    node->Freeze(TRUE);
    node->SetName(UniqueHelperName(node, fileName).data());

    if (ILayerManager* layers = ip->GetLayerManager()) {
        ILayer* current = layers->GetCurrentLayer();
        if (current && node->GetLayer() != current) current->AddToLayer(node);
    }

    {
        AccessorOffScope accessorOff(helper);
        IParamBlock2* pblock = helper->GetParamBlock(0);
        if (!pblock) throw MAXException(MSTR(L"The VandrelsHelper of ") + fileName + L" has no parameter block");
        pblock->SetValue(vh_active, 0, active ? 1 : 0);
        pblock->SetValue(vh_file_name, 0, fileName);
        pblock->SetValue(vh_proxy_file_name, 0, proxyFileName);
        pblock->SetValue(vh_use_proxy_in_viewport, 0, proxyViewport ? 1 : 0);
        pblock->SetValue(vh_use_proxy_in_render, 0, proxyRender ? 1 : 0);
        if (load) helper->Load();
    }
    RefreshManagerIfOpen();
    return node;
}

}  // namespace vandrels
