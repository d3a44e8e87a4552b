// The bulk reference operations of the scripting interface: they name helpers by 0-based positions in the
// helper list, computed once per call (index_list.h gives the rules), and drive the helpers' removal, reload,
// reset, duplication and merge. A reload or reset leaves a helper whose reference file is missing as it is,
// with a listener line (reference_file_check.h).
#pragma once

#include "script/manager_requests.h"  // RefreshManagerIfOpen, which the helper's scene events reach through here

#include "tab.h"

namespace vandrels {

// Deletes every helper node, or the named ones; each helper's reaction to its deletion removes its content.
void RemoveAllVandrels();
void RemoveVandrels(const Tab<int>* indices);
// Reload or Reset on each named helper, in the order given, inside one reference batch (shared when one is
// open already; none is opened when no helper is named).
void ReloadVandrels(const Tab<int>* indices);
void ResetVandrels(const Tab<int>* indices);
// Duplicates the named helpers together with their overridden records.
void DuplicateVandrels(const Tab<int>* indices);
// Merge on each named helper, one after another, without a batch: their content becomes local to the scene.
void MergeVandrels(const Tab<int>* indices);

}  // namespace vandrels
