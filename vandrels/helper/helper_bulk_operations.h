// Reference operations on several helpers or on chosen override categories, which the scripting interface and
// the manager window drive: duplicating helpers with their overridden records, and resetting chosen override
// categories of a helper's records.
#pragma once

#include "maxtypes.h"

#include <vector>

class VandrelsHelper;

namespace vandrels {

// Resets the override categories that mask chooses on every record of helper (the node records, the material
// records with the material bit, the layer renamings with the layer bit, the locally deleted node names with
// the deleted-nodes bit). The caller reloads afterwards. Answers 1.
int ResetByMask(VandrelsHelper* helper, DWORD mask);

// Duplicates the helpers together with their content: each copy stands beside its original with clones of its
// nodes, its records with overrides (bound to the clones) and new records for the other cloned nodes.
void DuplicateHelpers(const std::vector<VandrelsHelper*>& helpers);

}  // namespace vandrels
