#include "script/reference_operations.h"

#include "maxscript/maxscript.h"

namespace vandrels {

// Placeholder: the multi-selection file dialog, "LastFileDir" and one AddVandrel per chosen file come with the
// library's dialogs.
void AddVandrelDialog() {}

// Placeholder: deleting the helper nodes under the bulk-removal flag comes with the helper's removal handling.
void RemoveAllVandrels() {}

// Placeholder: Reload on each helper of ValidIndices inside one reference batch comes with the batch.
void ReloadVandrels(const Tab<int>*) {}

// Placeholder: deleting the named helper nodes comes with the helper's removal handling.
void RemoveVandrels(const Tab<int>*) {}

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
