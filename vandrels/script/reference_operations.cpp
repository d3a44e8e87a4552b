#include "script/reference_operations.h"

#include "helper/helper_list.h"
#include "helper/module_state.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "script/index_list.h"

#include <unordered_set>

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

}  // namespace

// Placeholder: the multi-selection file dialog, "LastFileDir" and one AddVandrel per chosen file come with the
// library's dialogs.
void AddVandrelDialog() {}

void RemoveAllVandrels() { RemoveHelperNodes(GetHelperList()); }

// Placeholder: Reload on each helper of ValidIndices inside one reference batch comes with the batch.
void ReloadVandrels(const Tab<int>*) {}

void RemoveVandrels(const Tab<int>* indices) { RemoveHelperNodes(ItemsAt(indices, GetHelperList())); }

// Placeholder: Reset on each named helper inside one reference batch comes with the batch.
void ResetVandrels(const Tab<int>*) {}

// Placeholder: the helpers' duplicate operation receives the indices once it exists.
void DuplicateVandrels(const Tab<int>*) {}

// Placeholder: Merge on each named helper comes with the helper's merge operation.
void MergeVandrels(const Tab<int>*) {}

// Placeholder: the mask (BuildResetMask), the mode choice and the resets and reloads come with the records'
// override resets.
void AdvancedReset(int, const BitArray*, const BitArray*, const Tab<int>*, const Tab<INode*>*) {}

void OpenManager() {
    // Errors are not suppressed: a failure reaches the user as a MAXScript error.
    ExecuteMAXScriptScript(L"OpenVandrelsManager()", MAXScript::ScriptSource::Embedded, FALSE, nullptr, TRUE);
}

// Placeholder: closing the manager window comes with the window.
void CloseManager() {}

// Placeholder: the manager window answers whether it is visible once it exists; until then it is never open.
bool IsManagerOpen() { return false; }

// Placeholder: the manager window's refresh comes with the window.
void RefreshManagerIfOpen() {}

// Placeholder: the about box comes with the library's dialog resources.
void ShowAbout() {}

}  // namespace vandrels
