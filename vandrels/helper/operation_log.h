// A count of the helper operations that ran, by name, published to scripts and tests as the test interface
// "VandrelsOperationLog" (Count "Reload", Clear). The reference operations log every call on entry.
#pragma once

#include "maxtypes.h"

#define VANDRELS_OPERATION_LOG_ID Interface_ID(0x9663DFB0, 0x4F2738F0)

namespace vandrels {

void LogOperation(const MCHAR* name);
int CountOfOperation(const MCHAR* name);
void ClearOperationLog();

}  // namespace vandrels
