#include "helper/helper_bulk_operations.h"

namespace vandrels {

// Both come with the reference operations; until then they change nothing.
int ResetByMask(VandrelsHelper*, DWORD) { return 1; }
void DuplicateHelpers(const std::vector<VandrelsHelper*>&) {}

}  // namespace vandrels
