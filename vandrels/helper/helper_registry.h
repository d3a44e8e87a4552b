// The lists of reference helpers the library keeps for the whole process: every live helper, and the helpers a
// scene open created that still wait for their reference to be processed.
#pragma once

#include "tab.h"

class VandrelsHelper;

namespace vandrels {

// Every live helper, in construction order.
Tab<VandrelsHelper*>& HelperRegistry();
// Helpers created while a scene file was being opened that still wait for their reference to be processed.
Tab<VandrelsHelper*>& LoadedHelpers();

}  // namespace vandrels
