// The commands of the maxhost executable and the host's start and stop around them.
#pragma once

#include <cstdio>
#include <string>

namespace maxhost {

struct Options {
    std::string pluginDir;  // empty: the default plug-in folder
    std::string iniFile;    // empty: MAXHOST_INI or the user's configuration folder
    bool quiet = false;
};

// Sets the host up: settings, built-in classes, plug-in libraries, start-up broadcast.
void StartHost(const Options& opts);
// Shuts the plug-in libraries down.
void StopHost();

int ListPlugins(std::FILE* out);
int RunDemo(std::FILE* out);

}  // namespace maxhost
