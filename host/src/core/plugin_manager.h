// Loads plug-in libraries (*.dlo) from the plug-in folder through their entry points, registers their class
// descriptors, runs their initialisation and, at exit, their shutdown.
#pragma once

#include "plugapi.h"

#include <filesystem>
#include <string>
#include <vector>

namespace hostrt {

struct LoadedLibrary {
    std::string file;       // file name, e.g. "Vandrels.dlo"
    std::string path;       // full path it was opened from
    void* handle = nullptr; // also the library's instance handle
    MSTR description;
    ULONG version = 0;
    std::vector<ClassDesc*> classes;  // in the order the library declares them
    LibShutdownFn shutdown = nullptr;
};

class PluginManager {
public:
    static PluginManager& Instance();

    // Loads every *.dlo of the folder, in file-name order. A library that cannot be opened, lacks an entry
    // point, was built for another host version or fails to initialise is reported (one line naming the file
    // and the reason, on standard error and in problems) and skipped. Answers the number loaded.
    int LoadFolder(const std::filesystem::path& dir);
    // Loads one library; false (and problem set) when it is skipped.
    bool LoadLibrary(const std::filesystem::path& file, std::string& problem);
    // Broadcasts system start-up (once) after the libraries are loaded.
    void Startup();
    // Ends the session (once): broadcasts the shutdown notification when the libraries were started, empties the
    // undo history, then calls every library's LibShutdown, last loaded first.
    void Shutdown();

    const std::vector<LoadedLibrary>& Libraries() const { return libs_; }
    const std::vector<std::string>& Problems() const { return problems_; }
    // The library that a handle belongs to; null when none.
    const LoadedLibrary* FindByHandle(HINSTANCE h) const;

private:
    std::vector<LoadedLibrary> libs_;
    std::vector<std::string> problems_;
    bool started_ = false;
    bool shutDown_ = false;
};

// The default plug-in folder: "plugins" beside the "bin" folder of the running executable.
std::filesystem::path DefaultPluginFolder();

}  // namespace hostrt
