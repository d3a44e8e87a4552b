#include "helper/helper_bulk_operations.h"

#include "frame/module_state.h"
#include "helper/vandrels_helper.h"
#include "imtl.h"
#include "inode.h"
#include "maxapi.h"
#include "records/ref_material.h"
#include "records/ref_node.h"
#include "records/scene_utils.h"
#include "ref.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace vandrels {
namespace {

// Mask bits the helper handles itself.
constexpr DWORD kResetMaterialBit = 0x4000;
constexpr DWORD kResetLayersBit = 0x40000;
constexpr DWORD kResetDeletedNodesBit = 0x80000;

// The nodes whose material is mtl.
void AddNodesUsing(Mtl* mtl, std::vector<INode*>& nodes) {
    DependentIterator it(mtl);
    while (ReferenceMaker* dep = it.Next())
        if (dep->SuperClassID() == BASENODE_CLASS_ID && static_cast<INode*>(dep)->GetMtl() == mtl)
            nodes.push_back(static_cast<INode*>(dep));
}

// One copy made by the node cloning: the helper it was cloned from and the new helper.
struct HelperCopy {
    VandrelsHelper* source;
    VandrelsHelper* copy;
};

// The clone of the node a record of the source holds, or null.
INode* CloneOf(RefNode* original, const std::unordered_map<INode*, INode*>& clones) {
    if (!original || !original->WasNodeLoadedAtCollect()) return nullptr;
    auto it = clones.find(original->GetNode());
    return it == clones.end() || FindNodeRecord(it->second) ? nullptr : it->second;
}

// The copy's records stand for the cloned nodes: a cloned record (one with overrides) is bound to the clone of
// its original's node and finishes its load; then a slot left empty gets a new record for that clone, so that
// the whole copied content belongs to the copy (it leaves the scene with an unload of the copy and is not
// written into shots).
void BindCopiedRecords(const HelperCopy& pair, const std::unordered_map<INode*, INode*>& clones) {
    VandrelsHelper* source = pair.source;
    VandrelsHelper* copy = pair.copy;
    const int count = std::min(source->NodeRecords().Count(), copy->NodeRecords().Count());
    for (int k = 0; k < count; ++k) {
        RefNode* record = copy->NodeRecords()[k];
        INode* clone = record ? CloneOf(source->NodeRecords()[k], clones) : nullptr;
        if (!clone) continue;
        record->ReplaceReference(0, clone);
        record->BuildSubAnimTree();
    }
    for (RefNode* record : copy->NodeRecords())
        if (record) record->FinishLoad();
    for (int k = 0; k < count; ++k)
        if (!copy->NodeRecords()[k])
            if (INode* clone = CloneOf(source->NodeRecords()[k], clones))
                copy->ReplaceReference(copy->Slots().NodeRecord(k), new RefNode(clone, copy));
    copy->SetLoaded(source->IsLoaded());
}

}  // namespace

void DuplicateHelpers(const std::vector<VandrelsHelper*>& helpers) {
    OperationModeScope mode(kModeDuplicating);
    std::vector<VandrelsHelper*> chosen;
    for (VandrelsHelper* helper : helpers)
        if (helper && helper->GetNode() && std::find(chosen.begin(), chosen.end(), helper) == chosen.end())
            chosen.push_back(helper);
    if (chosen.empty()) return;
    for (VandrelsHelper* helper : chosen) helper->RunCollectPass();

    // The helpers' nodes with the content of their records, each once.
    std::vector<INode*> nodes;
    for (VandrelsHelper* helper : chosen) {
        nodes.push_back(helper->GetNode());
        for (RefNode* record : helper->NodeRecords())
            if (record && record->WasNodeLoadedAtCollect() && record->GetNode()) nodes.push_back(record->GetNode());
        for (RefMaterial* record : helper->MaterialRecords())
            if (record && record->GetMaterial()) AddNodesUsing(record->GetMaterial(), nodes);
    }
    INodeTab table;
    std::unordered_set<INode*> seen;
    for (INode* node : nodes)
        if (node && seen.insert(node).second) table.Append(node);

    INodeTab sources, targets;
    GetCOREInterface()->CloneNodes(table, Point3(0, 0, 0), false, NODE_COPY, &sources, &targets);
    std::unordered_map<INode*, INode*> clones;
    std::vector<HelperCopy> copies;
    for (int i = 0; i < sources.Count() && i < targets.Count(); ++i) {
        clones[sources[i]] = targets[i];
        VandrelsHelper* copy = targets[i] ? VandrelsHelper::FromObject(targets[i]->GetObjectRef()) : nullptr;
        VandrelsHelper* source = sources[i] ? VandrelsHelper::FromObject(sources[i]->GetObjectRef()) : nullptr;
        if (!copy || !source || copy == source) continue;
        if (std::none_of(copies.begin(), copies.end(), [&](const HelperCopy& c) { return c.copy == copy; }))
            copies.push_back({source, copy});
    }
    for (const HelperCopy& pair : copies) BindCopiedRecords(pair, clones);
    // The collect pass marked the originals' nodes as gone; they are still there.
    for (VandrelsHelper* helper : chosen)
        for (RefNode* record : helper->NodeRecords())
            if (record) record->FinishLoad();
}

}  // namespace vandrels

int VandrelsHelper::ResetByMask(DWORD mask) {
    using namespace vandrels;
    RefBase::BeginResetPass();
    for (int k = 0; k < data_.refNodes.Count(); ++k)
        if (RefNode* record = data_.refNodes[k]) record->ResetOverrides(mask);
    if (mask & kResetMaterialBit)
        for (int k = 0; k < data_.refMaterials.Count(); ++k)
            if (RefMaterial* record = data_.refMaterials[k]) record->ResetOverrides(mask);
    if (mask & kResetLayersBit) {
        for (RenamedLayer* renamed : data_.renamedLayers) delete renamed;
        data_.renamedLayers.ZeroCount();
        for (int k = data_.refLayers.Count() - 1; k >= 0; --k) {
            DeleteReference(Slots().Layer(k));
            delete data_.refLayers[k];
        }
        data_.refLayers.ZeroCount();
    }
    if (mask & kResetDeletedNodesBit) {
        for (WStr* name : data_.nodesToDelete) delete name;
        data_.nodesToDelete.ZeroCount();
    }
    return 1;
}
