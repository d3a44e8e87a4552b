// hostrt: the compiled resource tables of a plug-in library, found through its instance handle.
#pragma once

#include "resource_module.h"

namespace hostrt {

// The library's tables; null when the handle is null or the library exports none.
const MaxResourceModule* ResourceModuleOf(HINSTANCE instance);
// Dialog template id of the library; null when it has none.
const MaxResourceDialog* FindDialogResource(HINSTANCE instance, UINT id);

}  // namespace hostrt
