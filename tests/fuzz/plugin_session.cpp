#include "plugin_session.h"

#include "core/class_directory.h"
#include "platform/host_dirs.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace fuzz {

const hostrt::LoadedLibrary& StartHostWithVandrels() {
    static const hostrt::LoadedLibrary* lib = [] {
        // A settings file of the process's own, so parallel runs do not share settings.
        static const std::filesystem::path ini =
            std::filesystem::temp_directory_path() / ("vandrels_fuzz_" + std::to_string(::getpid()) + ".ini");
        hostrt::SetIniPath(ini);
        std::atexit([] { std::filesystem::remove(ini); });
        hostrt::RegisterBuiltinClasses();
        const char* dir = std::getenv("VANDRELS_FUZZ_PLUGINS");
        const auto file = std::filesystem::path(dir && *dir ? dir : MAXHOST_PLUGIN_DIR) / "Vandrels.dlo";
        auto& pm = hostrt::PluginManager::Instance();
        std::string problem;
        if (!pm.LoadLibrary(file, problem)) {
            std::fprintf(stderr, "%s: %s\n", file.string().c_str(), problem.c_str());
            std::abort();
        }
        pm.Startup();
        for (const auto& l : pm.Libraries())
            if (l.file == "Vandrels.dlo") return &l;
        std::abort();
    }();
    return *lib;
}

}  // namespace fuzz
