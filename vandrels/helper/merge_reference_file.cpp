#include "helper/merge_reference_file.h"

#include "frame/record_failure.h"
#include "assetmanagement.h"
#include "frame/module.h"
#include "helper/helper_params.h"
#include "frame/module_state.h"
#include "helper/vandrels_helper.h"
#include "imtl.h"
#include "inode.h"
#include "maxapi.h"
#include "maxexception.h"
#include "maxscript/maxscript.h"
#include "resource.h"
#include "winshim.h"

#include <unordered_set>
#include <vector>

namespace vandrels {
namespace {

// Marks the nodes that were in the scene before a merge; one shared, never-deleted instance.
class MergeProp : public AnimProperty {
public:
    static constexpr DWORD kId = 0x8663DFAF;
    DWORD ID() override { return kId; }
    BOOL DontDelete() override { return TRUE; }
};

MergeProp& Marker() {
    static MergeProp marker;
    return marker;
}

bool IsMarked(INode* node) { return node->GetAProp(MergeProp::kId) != nullptr; }

// Marks every unmarked node below node (itself included) and remembers it; a merge running inside another one
// leaves the outer merge's marks alone.
void MarkScene(INode* node, std::vector<INode*>& marked) {
    std::vector<INode*> stack{node};
    while (!stack.empty()) {
        INode* n = stack.back();
        stack.pop_back();
        if (!IsMarked(n)) {
            n->AddAProp(&Marker());
            marked.push_back(n);
        }
        for (int i = n->NumberOfChildren() - 1; i >= 0; --i) stack.push_back(n->GetChildNode(i));
    }
}

void UnmarkScene(std::vector<INode*>& marked) {
    for (INode* n : marked) n->RemoveAProp(&Marker());
    marked.clear();
}

// The unmarked nodes below root, depth first, a node before its children.
void CollectUnmarked(INode* root, Tab<INode*>& out) {
    std::unordered_set<INode*> seen;
    std::vector<INode*> stack;
    for (int i = root->NumberOfChildren() - 1; i >= 0; --i) stack.push_back(root->GetChildNode(i));
    while (!stack.empty()) {
        INode* n = stack.back();
        stack.pop_back();
        if (!IsMarked(n) && seen.insert(n).second) out.Append(n);
        for (int i = n->NumberOfChildren() - 1; i >= 0; --i) stack.push_back(n->GetChildNode(i));
    }
}

INode* SceneRootOf(INode* node) {
    while (node && node->GetParentNode()) node = node->GetParentNode();
    return node;
}

void RunScript(const MCHAR* text) { ExecuteMAXScriptScript(text, MAXScript::ScriptSource::NotSpecified, TRUE); }

// Whether a node is among the dependents of a material.
class UsedByNode : public DependentEnumProc {
public:
    bool used = false;
    int proc(ReferenceMaker* rm) override {
        if (!rm || rm->SuperClassID() != BASENODE_CLASS_ID) return DEP_ENUM_CONTINUE;
        used = true;
        return DEP_ENUM_HALT;
    }
};

// Takes the scene material library's materials that nodes use and empties the library.
Tab<MtlBase*> TakeSceneMaterials(MtlBaseLib* lib) {
    Tab<MtlBase*> kept;
    for (int i = 0; i < lib->Count(); ++i) {
        MtlBase* mtl = (*lib)[i];
        if (!mtl) continue;
        UsedByNode check;
        mtl->DoEnumDependents(&check);
        if (check.used) kept.Append(mtl);
    }
    lib->DeleteAll();
    return kept;
}

// The merge's own steps, throwing on failure.
void RunMerge(VandrelsHelper* helper, const MSTR& path, Tab<INode*>& mergedNodes, int& step) {
    Interface* ip = GetCOREInterface();
    // The host's layer option is remembered in a script global and switched off for the merge.
    RunScript(L"VDLRD=LayerManager.GetDuplicateLayerWithoutSameHierarchyOnMerge();"
              L"LayerManager.setDuplicateLayerWithoutSameHierarchyOnMerge false persist:false");
    step = IDS_STEP_MERGE_INITIALIZED;

    // The scene's materials are kept out of the library while the merge runs and put back afterwards, also when
    // the merge fails.
    struct SceneMaterials {
        VandrelsHelper* helper;
        MtlBaseLib* lib;
        Tab<MtlBase*> kept;
        ~SceneMaterials() {
            helper->DeleteReference(HelperSlots::kSceneMaterials);
            for (MtlBase* mtl : kept) lib->Add(mtl);
        }
    } materials{helper, ip->GetSceneMtls(), {}};
    materials.kept = TakeSceneMaterials(materials.lib);
    helper->ReplaceReference(HelperSlots::kSceneMaterials, materials.lib);
    step = IDS_STEP_MERGE_SCENE_MTLS;

    std::vector<INode*> marked;
    MarkScene(ip->GetRootNode(), marked);
    struct Unmark {
        std::vector<INode*>& nodes;
        ~Unmark() { UnmarkScene(nodes); }
    } unmark{marked};
    const int merged = ip->MergeFromFile(path.data(), TRUE, FALSE, FALSE, MERGE_DUPS_MERGE, nullptr, 1000,
                                         MERGE_REPARENT_PROMPT, FALSE);
    // A file the host cannot merge fails the merge with the host's own reason.
    if (!merged) throw MAXException(ip->GetLastFileError(), 0);
    step = IDS_STEP_MERGE_MERGED;
    CollectUnmarked(ip->GetRootNode(), mergedNodes);
    UnmarkScene(marked);
    helper->DeleteReference(HelperSlots::kSceneMaterials);

    // A helper inside an externally referenced scene puts the content under that scene's root.
    INode* helperNode = helper->GetNode();
    INode* otherRoot = helperNode ? SceneRootOf(helperNode) : nullptr;
    if (otherRoot && otherRoot != ip->GetRootNode())
        for (INode* node : mergedNodes)
            if (node->GetParentNode() && node->GetParentNode()->IsRootNode()) otherRoot->AttachChild(node, 0);
    step = IDS_STEP_MERGE_XREF_CHECK;
}

}  // namespace

MSTR ReferenceFilePath(VandrelsHelper* helper, bool proxy) {
    IParamBlock2* pb = helper ? helper->ParamBlock() : nullptr;
    if (!pb) return MSTR();
    const MCHAR* name = pb->GetStr(proxy ? vh_proxy_file_name : vh_file_name);
    MSTR full;
    MaxSDK::AssetManagement::AssetUser(MSTR(name ? name : L""), VH_FILE_ASSET_TYPE).GetFullFilePath(full);
    return full;
}

MSTR ChooseReferenceFile(VandrelsHelper* helper) {
    IParamBlock2* pb = helper ? helper->ParamBlock() : nullptr;
    if (!pb) return MSTR();
    const bool viewport = !IsRendering() && !GetCOREInterface()->IsNetServer();
    return ReferenceFilePath(helper, pb->GetInt(viewport ? vh_use_proxy_in_viewport : vh_use_proxy_in_render) != 0);
}

int MergeReferenceFile(VandrelsHelper* helper, const MSTR& path, Tab<INode*>& mergedNodes) {
    if (path.isNull()) return 0;
    Interface* ip = GetCOREInterface();
    bool circular = path == ip->GetCurFilePath();
    for (WStr* entry : MergeStack())
        if (entry && *entry == path) circular = true;
    if (circular) {
        if (ip->HasUserInterface())
            MessageBoxW(ip->GetMAXHWnd(),
                        (MSTR(L"There is a circular scene dependency. The Vandrel file ") + path + L" was not loaded.")
                            .data(),
                        L"Error", MB_OK | MB_ICONWARNING);
        return 0;
    }
    if (MergeStack().Count() == 0) SetNestingCounter(0);
    MergeStack().Append(new WStr(path));

    int step = 0;  // the string id of the step word in force
    auto popStack = [] {
        Tab<WStr*>& stack = MergeStack();
        if (stack.Count() == 0) return;
        delete stack[stack.Count() - 1];
        stack.Delete(stack.Count() - 1, 1);
    };
    // The step line is written even before the first step word.
    auto compose = [&step](const MCHAR* words, const MAXException* cause) {
        return RecordFailure{words, std::nullopt, step ? GetStringCopy(step) : MSTR(), RecordFailure::CauseOf(cause)}
            .ToString();
    };
    try {
        RunMerge(helper, path, mergedNodes, step);
    } catch (const MAXException& e) {
        popStack();
        throw MAXException(compose(L"Error Merging File", &e), 0);
    } catch (...) {
        popStack();
        throw MAXException(compose(L"Unknown Error Merging File", nullptr), 0);
    }
    popStack();
    RunScript(L"LayerManager.setDuplicateLayerWithoutSameHierarchyOnMerge VDLRD persist:false");
    return 1;
}

}  // namespace vandrels
