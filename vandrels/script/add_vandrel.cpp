#include "script/add_vandrel.h"

#include "script/manager_requests.h"
#include "script/reference_file_check.h"
#include "frame/settings.h"

#include "frame/class_ids.h"
#include "frame/module.h"
#include "helper/helper_list.h"
#include "helper/helper_params.h"
#include "helper/name_increment.h"
#include "helper/reference_batch.h"
#include "helper/vandrels_helper.h"
#include "resource.h"
#include "script/dialog_requests.h"

#include "ilayer.h"
#include "iparamb2.h"
#include "maxapi.h"
#include "maxexception.h"
#include "plugapi.h"

#include <set>
#include <string>
#include <vector>

namespace vandrels {

namespace {

// The file's name, unique among the other helper nodes of the scene (case-sensitive). A file name that gives
// no name (a folder) names the node after the helper class.
MSTR UniqueHelperName(INode* node, const MCHAR* fileName) {
    MSTR name = NameFromFileName(fileName);
    if (name.isNull()) name = GetStringCopy(IDS_CLASS_VANDRELSHELPER);
    std::set<std::wstring> taken;
    for (INode* other : GetHelperList())
        if (other != node && other->GetName()) taken.insert(other->GetName());
    return MakeUniqueName(name, [&taken](const MSTR& candidate) { return taken.count(candidate.str()) > 0; });
}

bool IsSeparator(MCHAR c) { return c == L'\\' || c == L'/'; }

// The folder of a full path, without its trailing separator (a root keeps it).
MSTR FolderOf(const MSTR& path) {
    const std::wstring text = path.str();
    std::size_t cut = text.size();
    while (cut > 0 && !IsSeparator(text[cut - 1])) --cut;
    if (cut == 0) return MSTR();
    return MSTR(text.substr(0, cut > 1 ? cut - 1 : cut));
}

// The files of a multiple-selection file dialog's answer (one full path, or the folder followed by the file
// names) as full paths, and the folder they are in (without a trailing separator).
struct PickedFiles {
    std::vector<MSTR> paths;
    MSTR folder;
};

PickedFiles FilesFromDialogAnswer(const std::vector<MSTR>& answer) {
    PickedFiles picked;
    if (answer.size() == 1) {
        picked.paths.push_back(answer.front());
        picked.folder = FolderOf(answer.front());
    } else if (answer.size() > 1) {
        picked.folder = answer.front();
        // A backslash joins them, unless the folder is written with forward slashes only.
        const std::wstring folder = picked.folder.str();
        const bool forward = folder.find(L'/') != std::wstring::npos && folder.find(L'\\') == std::wstring::npos;
        MSTR prefix = picked.folder;
        if (!folder.empty() && !IsSeparator(folder.back())) prefix += forward ? L'/' : L'\\';
        for (std::size_t i = 1; i < answer.size(); ++i) picked.paths.push_back(prefix + answer[i]);
    }
    return picked;
}

// A file name that names no file; nothing is made.
MAXException NoFileName(const MCHAR* what) {
    return MAXException(MSTR(L"Vandrels.AddVandrel: the file name is ") + what +
                        L"; pass the path of a scene file (nothing was added)");
}

}  // namespace

INode* AddVandrel(const MCHAR* fileName, const MCHAR* proxyFileName, bool load, bool active, bool proxyViewport,
                  bool proxyRender) {
    if (!fileName) throw NoFileName(L"undefined");
    if (!*fileName) throw NoFileName(L"empty");
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
        if (load) {
            ReportReferenceFileProblem(helper, kAddedWithoutContent);
            helper->Load();
        }
    }
    RefreshManagerIfOpen();
    return node;
}

void AddVandrelDialog() {
    MSTR folder;
    ReadStringSetting(L"LastFileDir", folder);
    std::vector<MSTR> answer;
    if (RequestFilePick(folder, L"Select One or More Reference Files", &answer) == 0) return;
    const PickedFiles picked = FilesFromDialogAnswer(answer);

    for (INode* node : GetHelperList())
        if (VandrelsHelper* helper = VandrelsHelper::FromObject(node->GetObjectRef()))
            if (helper->ParamBlock()) helper->ParamBlock()->SetValue(vh_selected_in_manager, 0, FALSE);

    if (picked.paths.size() == 1) {
        AddVandrel(picked.paths.front().data(), L"", true, true, false, false);
    } else {
        BatchScope batch;
        for (const MSTR& path : picked.paths) AddVandrel(path.data(), L"", true, true, false, false);
    }
    WriteStringSetting(L"LastFileDir", picked.folder.data());
}

}  // namespace vandrels
