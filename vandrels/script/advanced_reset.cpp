#include "script/advanced_reset.h"

#include "helper/helper_bulk_operations.h"
#include "helper/helper_list.h"
#include "frame/module_state.h"
#include "helper/reference_batch.h"
#include "helper/vandrels_helper.h"
#include "maxapi.h"
#include "imtl.h"
#include "records/ref_material.h"
#include "records/scene_utils.h"
#include "script/index_list.h"
#include "script/reference_file_check.h"
#include "script/reset_mask.h"

#include <unordered_map>
#include <vector>

namespace vandrels {

namespace {

enum class ResetMode { None, References, Nodes };

ResetMode ChooseMode(int selection, bool referencesGiven, bool nodesGiven) {
    if (referencesGiven) return ResetMode::References;
    if (nodesGiven) return ResetMode::Nodes;
    if (selection == 1) return ResetMode::References;
    if (selection == 2) return ResetMode::Nodes;
    return ResetMode::None;
}

// The helpers an advanced reset reloads, in the order they were met: each once, or as often as they were met
// when repeats count (an index list names a helper as often as it likes). A helper whose reference cannot be
// loaded is reported once and refused.
class ReloadList {
public:
    explicit ReloadList(bool repeatsCount) : repeatsCount_(repeatsCount) {}
    bool Accept(VandrelsHelper* helper) {
        if (!helper) return false;
        auto [it, fresh] = loadable_.try_emplace(helper, false);
        if (fresh) it->second = !ReportReferenceFileProblem(helper, kLeftAsItWas);
        if (it->second && (fresh || repeatsCount_)) order_.push_back(helper);
        return it->second;
    }
    // Reload on each listed helper, inside a batch of the reset's own.
    void ReloadAll() const {
        if (order_.empty()) return;
        BatchScope batch;
        for (VandrelsHelper* helper : order_) helper->Reload();
    }

private:
    bool repeatsCount_;
    std::unordered_map<VandrelsHelper*, bool> loadable_;
    std::vector<VandrelsHelper*> order_;
};

VandrelsHelper* HelperOf(INode* node) { return node ? VandrelsHelper::FromObject(node->GetObjectRef()) : nullptr; }

void ResetReferences(DWORD mask, const Tab<int>* references) {
    std::vector<INode*> chosen;
    if (references) {
        chosen = ItemsAt(references, GetHelperList());
    } else {
        for (INode* node : GetHelperList()) {
            VandrelsHelper* helper = HelperOf(node);
            IParamBlock2* params = helper ? helper->ParamBlock() : nullptr;
            if (params && params->GetInt(vh_selected_in_manager)) chosen.push_back(node);
        }
    }
    ReloadList reloads(true);
    for (INode* node : chosen) {
        VandrelsHelper* helper = HelperOf(node);
        if (reloads.Accept(helper)) helper->ResetByMask(mask | kResetReferences);
    }
    reloads.ReloadAll();
}

void ResetNodes(DWORD mask, const Tab<INode*>* nodes) {
    std::vector<INode*> chosen;
    if (nodes) {
        for (INode* node : *nodes) chosen.push_back(node);
    } else {
        Interface* ip = GetCOREInterface();
        for (int i = 0; i < ip->GetSelNodeCount(); ++i) chosen.push_back(ip->GetSelNode(i));
    }
    // One reset pass for all the nodes: an animatable that several of their records share is reset once. (A
    // helper's reset by mask starts a pass of its own.)
    RefBase::BeginResetPass();
    ReloadList reloads(false);
    for (INode* node : chosen) {
        if (!node) continue;
        if (RefNode* record = FindNodeRecord(node); record && reloads.Accept(VandrelsHelper::FromOwner(record->GetHelper())))
            record->ResetOverrides(mask | kResetNodes);
        if (!(mask & kResetMaterial)) continue;
        Mtl* material = node->GetMtl();
        RefBase* materialRecord = material ? FindRecordOf(material) : nullptr;
        if (materialRecord && materialRecord->ClassID() == REFMATERIAL_CLASS_ID &&
            reloads.Accept(VandrelsHelper::FromOwner(materialRecord->GetHelper())))
            materialRecord->ResetOverrides(mask | kResetNodes);
    }
    reloads.ReloadAll();
}

}  // namespace

void AdvancedReset(int selection, const BitArray* categories, const BitArray* parameters, const Tab<int>* references,
                   const Tab<INode*>* nodes) {
    const DWORD mask = BuildResetMask(categories, parameters);
    OperationModeScope mode(kModeAdvancedReset);
    switch (ChooseMode(selection, references != nullptr, nodes != nullptr)) {
        case ResetMode::References: ResetReferences(mask, references); break;
        case ResetMode::Nodes: ResetNodes(mask, nodes); break;
        case ResetMode::None: break;
    }
}

}  // namespace vandrels
