// Host start and stop for the maxhost executable.
#include "commands.h"
#include "core/class_directory.h"
#include "core/plugin_manager.h"

namespace maxhost {

void StartHost(const Options& opts) {
    hostrt::RegisterBuiltinClasses();
    auto& pm = hostrt::PluginManager::Instance();
    pm.LoadFolder(opts.pluginDir.empty() ? hostrt::DefaultPluginFolder() : std::filesystem::path(opts.pluginDir));
    pm.Startup();
}

void StopHost() { hostrt::PluginManager::Instance().Shutdown(); }

}  // namespace maxhost
