#include "script/reference_operations.h"

#include "helper/helper_bulk_operations.h"
#include "helper/helper_list.h"
#include "frame/module_state.h"
#include "helper/reference_batch.h"
#include "helper/vandrels_helper.h"
#include "maxapi.h"
#include "script/index_list.h"
#include "script/reference_file_check.h"

#include <unordered_set>
#include <vector>

namespace vandrels {
namespace {

// Deletes the helper nodes at once; each helper's reaction to its deletion removes its content. No follow-up is
// registered per node: the manager window is refreshed once here. A failure ends the removal silently.
void RemoveHelperNodes(const std::vector<INode*>& nodes) {
    SetBulkRemoval(true);
    try {
        INodeTab table;
        std::unordered_set<INode*> seen;
        for (INode* node : nodes)
            if (node && seen.insert(node).second) table.Append(node);
        if (table.Count()) GetCOREInterface()->DeleteNodes(table, true, true);
        RefreshManagerIfOpen();
    } catch (...) {
    }
    SetBulkRemoval(false);
}

// The named helper nodes by handle, in the order of the indices: an operation of the same call may delete a
// helper node (a merge deletes its own), so each is looked up again before it is used.
std::vector<ULONG> NamedHandles(const Tab<int>* indices) {
    std::vector<ULONG> handles;
    for (INode* node : ItemsAt(indices, GetHelperList())) handles.push_back(node->GetHandle());
    return handles;
}

VandrelsHelper* HelperByHandle(ULONG handle) {
    INode* node = GetCOREInterface()->GetINodeByHandle(handle);
    return node ? VandrelsHelper::FromObject(node->GetObjectRef()) : nullptr;
}

// The named helpers that can be loaded again; the others are reported on the listener and left alone.
std::vector<ULONG> LoadableHandles(const Tab<int>* indices) {
    std::vector<ULONG> loadable;
    for (ULONG handle : NamedHandles(indices)) {
        VandrelsHelper* helper = HelperByHandle(handle);
        if (helper && !ReportReferenceFileProblem(helper, kLeftAsItWas)) loadable.push_back(handle);
    }
    return loadable;
}

// Runs operation on each helper inside one reference batch.
template <class Operation> void InOneBatch(const std::vector<ULONG>& handles, Operation operation) {
    if (handles.empty()) return;
    BatchScope batch;
    for (ULONG handle : handles)
        if (VandrelsHelper* helper = HelperByHandle(handle)) operation(helper);
}

}  // namespace

void RemoveAllVandrels() { RemoveHelperNodes(GetHelperList()); }

void RemoveVandrels(const Tab<int>* indices) { RemoveHelperNodes(ItemsAt(indices, GetHelperList())); }

void ReloadVandrels(const Tab<int>* indices) {
    InOneBatch(LoadableHandles(indices), [](VandrelsHelper* helper) { helper->Reload(); });
}

void ResetVandrels(const Tab<int>* indices) {
    InOneBatch(LoadableHandles(indices), [](VandrelsHelper* helper) { helper->Reset(); });
}

void DuplicateVandrels(const Tab<int>* indices) {
    std::vector<VandrelsHelper*> helpers;
    for (ULONG handle : NamedHandles(indices))
        if (VandrelsHelper* helper = HelperByHandle(handle)) helpers.push_back(helper);
    if (helpers.empty()) return;
    DuplicateHelpers(helpers);
    RefreshManagerIfOpen();
}

void MergeVandrels(const Tab<int>* indices) {
    const std::vector<ULONG> handles = NamedHandles(indices);
    for (ULONG handle : handles)
        if (VandrelsHelper* helper = HelperByHandle(handle)) helper->Merge();
    if (!handles.empty()) RefreshManagerIfOpen();
}

}  // namespace vandrels
