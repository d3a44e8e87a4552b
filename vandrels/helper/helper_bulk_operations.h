// Reference operations on several helpers, which the scripting interface and the manager window drive:
// duplicating helpers with their overridden records. The source file also holds the helper's reset of chosen
// override categories (VandrelsHelper::ResetByMask).
#pragma once

#include <vector>

class VandrelsHelper;

namespace vandrels {

// Duplicates the helpers together with their content: each copy stands beside its original with clones of its
// nodes, its records with overrides (bound to the clones) and new records for the other cloned nodes.
void DuplicateHelpers(const std::vector<VandrelsHelper*>& helpers);

}  // namespace vandrels
