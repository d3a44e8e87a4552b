// Loads Vandrels.dlo into the test process once, the way maxhost loads it at start-up.
#pragma once

#include "core/plugin_manager.h"

namespace vtest {

// The loaded library (loaded and started on first use; the test fails hard when it cannot be loaded).
const hostrt::LoadedLibrary& VandrelsLibrary();

}  // namespace vtest
