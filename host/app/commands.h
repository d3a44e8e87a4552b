// The commands of the maxhost executable and the host's start and stop around them.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace maxhost {

struct Options {
    std::vector<std::string> pluginDirs;  // loaded in order; none: the default plug-in folder
    std::string iniFile;    // empty: MAXHOST_INI or the user's configuration folder
    bool quiet = false;
    // gui only.
    float uiScale = 1.0f;
    std::string guiScript;   // run once the window is shown
    std::string grabFolder;  // save the shown windows there after the script, then end
    // info only.
    bool json = false;
};

// Sets the host up: settings, built-in classes, plug-in libraries, start-up broadcast.
void StartHost(const Options& opts);
// Shuts the plug-in libraries down.
void StopHost();

int ListPlugins(std::FILE* out);
// The listing of a scene file's objects that describe themselves (maxhost info), as text or JSON.
int ShowSceneInfo(const std::string& file, bool json, std::FILE* out);
int RunDemo(std::FILE* out);

// MAXScript: run a script file or a text headless (the listener on standard output, an uncaught error on
// standard error; 1 after an error or a failed assertion), or read and run lines from in as a listener.
int RunScriptFile(const std::string& path);
int RunScriptText(const std::wstring& text, const std::wstring& sourceName);
int EvalText(const std::string& text);

// The graphical host: the main window with the scene (opened from sceneFile unless empty), then the Qt event loop.
int RunGui(const Options& opts, const std::string& sceneFile);
int RunListener(std::FILE* in);

}  // namespace maxhost
