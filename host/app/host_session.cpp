// Host start and stop for the maxhost executable.
#include "commands.h"
#include "core/class_directory.h"
#include "core/plugin_manager.h"
#include "platform/host_dirs.h"
#include "platform/listener_capture.h"
#include "platform/session.h"

namespace maxhost {

void StartHost(const Options& opts) {
    if (!opts.iniFile.empty()) hostrt::SetIniPath(opts.iniFile);
    hostrt::Session::Instance().SetQuiet(opts.quiet);
    hostrt::Listener::Instance().SetEcho(true);
    hostrt::RegisterBuiltinClasses();
    auto& pm = hostrt::PluginManager::Instance();
    if (opts.pluginDirs.empty()) pm.LoadFolder(hostrt::DefaultPluginFolder());
    for (const std::string& dir : opts.pluginDirs) pm.LoadFolder(dir);
    pm.Startup();
}

void StopHost() { hostrt::PluginManager::Instance().Shutdown(); }

}  // namespace maxhost
