#include "vandrels_library.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace vtest {

const hostrt::LoadedLibrary& VandrelsLibrary() {
    static const hostrt::LoadedLibrary* lib = [] {
        auto& pm = hostrt::PluginManager::Instance();
        std::string problem;
        const auto file = std::filesystem::path(MAXHOST_PLUGIN_DIR) / "Vandrels.dlo";
        if (!pm.LoadLibrary(file, problem)) {
            ADD_FAILURE() << file << ": " << problem;
            std::abort();
        }
        pm.Startup();
        for (const auto& l : pm.Libraries())
            if (l.file == "Vandrels.dlo") return &l;
        std::abort();
    }();
    return *lib;
}

}  // namespace vtest
