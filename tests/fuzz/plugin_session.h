// Starts the host in a fuzzer's process the way maxhost starts it: built-in classes, then Vandrels.dlo from the
// plug-in folder ($VANDRELS_FUZZ_PLUGINS, else the build's plug-in folder) with the start-up broadcast.
#pragma once

#include "core/plugin_manager.h"

namespace fuzz {

// Loads and starts the plug-in once; aborts when it cannot be loaded. Answers the loaded library.
const hostrt::LoadedLibrary& StartHostWithVandrels();

}  // namespace fuzz
