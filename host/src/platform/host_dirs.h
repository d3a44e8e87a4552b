// The host's folders and settings file: installation root, system and host temporary folders, INI path.
#pragma once

#include <filesystem>

namespace hostrt {

class IniFile;

// The running executable (empty when the system cannot tell).
std::filesystem::path ExecutablePath();

// The installation root: the parent of the "bin" folder holding the running executable (the executable's
// own folder when that is not named "bin"), unless SetInstallRoot chose another. Empty path: back to default.
std::filesystem::path InstallRoot();
void SetInstallRoot(const std::filesystem::path& root);

// The system temporary folder (TMPDIR, then TMP, TEMP, TEMPDIR, else /tmp).
std::filesystem::path SystemTempFolder();

// The host's temporary folder: $MAXHOST_TEMP, else "maxhost-temp" below the system temporary folder.
// Made (with its parents) on each request; throws std::filesystem::filesystem_error when it cannot be.
std::filesystem::path HostTempFolder();

// The project folder: $MAXHOST_PROJECT, else $XDG_DATA_HOME/maxhost ($HOME/.local/share when XDG_DATA_HOME is
// unset). Its "scenes" folder is where scene files go by default; made (with its parents) on each request,
// throws std::filesystem::filesystem_error when it cannot be.
std::filesystem::path ProjectFolder();
std::filesystem::path SceneFolder();

// The host's INI file: the path given on the command line (SetIniPath), else $MAXHOST_INI, else
// $XDG_CONFIG_HOME/maxhost/3dsMax.ini ($HOME/.config when XDG_CONFIG_HOME is unset). Empty path: back to default.
std::filesystem::path HostIniPath();
void SetIniPath(const std::filesystem::path& path);
// The INI file at HostIniPath().
IniFile& HostIni();

}  // namespace hostrt
