// The host's folders and settings file, found from the executable, the environment and the command line.
#include "platform/host_dirs.h"

#include "platform/ini_file.h"

#include <cstdlib>
#include <optional>
#include <pwd.h>
#include <unistd.h>

namespace hostrt {

namespace {
std::optional<std::filesystem::path> g_installRoot;
std::optional<std::filesystem::path> g_iniPath;

// A set, non-empty environment variable.
std::optional<std::string> env(const char* name) {
    const char* value = std::getenv(name);
    if (!value || !*value) return std::nullopt;
    return std::string(value);
}

std::filesystem::path homeFolder() {
    if (auto home = env("HOME")) return *home;
    if (const passwd* pw = ::getpwuid(::getuid()); pw && pw->pw_dir) return pw->pw_dir;
    return std::filesystem::current_path();
}
}  // namespace

std::filesystem::path ExecutablePath() {
    std::error_code ec;
    auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::filesystem::path() : exe;
}

std::filesystem::path InstallRoot() {
    if (g_installRoot) return *g_installRoot;
    const std::filesystem::path folder = ExecutablePath().parent_path();
    if (folder.empty()) return std::filesystem::current_path();
    return folder.filename() == "bin" ? folder.parent_path() : folder;
}

void SetInstallRoot(const std::filesystem::path& root) {
    if (root.empty()) g_installRoot.reset();
    else g_installRoot = std::filesystem::absolute(root);
}

std::filesystem::path SystemTempFolder() {
    if (auto tmpdir = env("TMPDIR")) return *tmpdir;
    std::error_code ec;
    auto temp = std::filesystem::temp_directory_path(ec);
    return ec ? std::filesystem::path("/tmp") : temp;
}

std::filesystem::path HostTempFolder() {
    const std::filesystem::path folder =
        env("MAXHOST_TEMP") ? std::filesystem::path(*env("MAXHOST_TEMP")) : SystemTempFolder() / "maxhost-temp";
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    if (ec) throw std::filesystem::filesystem_error("cannot make the host's temporary folder", folder, ec);
    return folder;
}

std::filesystem::path ProjectFolder() {
    if (auto project = env("MAXHOST_PROJECT")) return std::filesystem::path(*project);
    if (auto data = env("XDG_DATA_HOME"); data && std::filesystem::path(*data).is_absolute())
        return std::filesystem::path(*data) / "maxhost";
    return homeFolder() / ".local" / "share" / "maxhost";
}

std::filesystem::path SceneFolder() {
    const std::filesystem::path folder = ProjectFolder() / "scenes";
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    if (ec) throw std::filesystem::filesystem_error("cannot make the scene folder", folder, ec);
    return folder;
}

std::filesystem::path HostIniPath() {
    if (g_iniPath) return *g_iniPath;
    if (auto ini = env("MAXHOST_INI")) return *ini;
    std::filesystem::path config;
    if (auto xdg = env("XDG_CONFIG_HOME"); xdg && std::filesystem::path(*xdg).is_absolute()) config = *xdg;
    else config = homeFolder() / ".config";
    return config / "maxhost" / "3dsMax.ini";
}

void SetIniPath(const std::filesystem::path& path) {
    if (path.empty()) g_iniPath.reset();
    else g_iniPath = std::filesystem::absolute(path);
}

IniFile& HostIni() {
    static IniFile ini;
    if (ini.Path() != HostIniPath()) ini = IniFile(HostIniPath());
    return ini;
}

}  // namespace hostrt
