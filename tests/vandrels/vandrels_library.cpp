#include "vandrels_library.h"

#include "core/class_directory.h"
#include "hold.h"
#include "maxapi.h"
#include "platform/host_dirs.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace vtest {

const hostrt::LoadedLibrary& VandrelsLibrary() {
    static const hostrt::LoadedLibrary* lib = [] {
        // Each test runs in a process of its own, often beside another: a settings file per process keeps their
        // settings apart.
        static const std::filesystem::path ini =
            std::filesystem::temp_directory_path() / ("vandrels_tests_" + std::to_string(::getpid()) + ".ini");
        hostrt::SetIniPath(ini);
        std::atexit([] { std::filesystem::remove(ini); });
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

void SceneTest::SetUp() {
    VandrelsLibrary();
    hostrt::RegisterBuiltinClasses();
    GetCOREInterface()->FileReset(TRUE);
    theHold.FlushUndoBuffer();
    file_ = MSTR::FromUTF8(
        (std::filesystem::temp_directory_path() / (stem_ + "_" + std::to_string(::getpid()) + ".max")).string());
}

void SceneTest::TearDown() {
    theHold.FlushUndoBuffer();
    GetCOREInterface()->FileReset(TRUE);
    std::filesystem::remove(file_.ToUTF8());
}

}  // namespace vtest
