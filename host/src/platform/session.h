// hostrt::Session: switches and values of the running host application: quiet mode, user interface,
// network rendering, the current time, viewport redraws and their callbacks.
#pragma once

#include "maxtypes.h"

#include <vector>

class Interface;
class RedrawViewsCallback;

namespace hostrt {

class Session {
public:
    static Session& Instance();

    bool Quiet() const { return quiet_; }
    void SetQuiet(bool quiet) { quiet_ = quiet; }
    // A headless run starts without a user interface; the application says when it has one.
    bool HasUserInterface() const { return hasUI_; }
    void SetHasUserInterface(bool hasUI) { hasUI_ = hasUI; }
    // Renders as a network render server, without a viewport UI.
    bool NetServer() const { return netServer_; }
    void SetNetServer(bool netServer) { netServer_ = netServer; }

    // The scene explorer's live update: a host facility that reports itself enabled and that bulk scene work
    // switches off while it runs.
    bool ExplorerLiveUpdate() const { return explorerLiveUpdate_; }
    void SetExplorerLiveUpdate(bool on) { explorerLiveUpdate_ = on; }

    TimeValue Time() const { return time_; }
    void SetTime(TimeValue t) { time_ = t; }

    // Counts a redraw and runs the redraw callbacks (over a snapshot; callbacks removed meanwhile are skipped).
    void Redraw(Interface* ip, TimeValue t);
    int RedrawCount() const { return redraws_; }
    TimeValue LastRedrawTime() const { return lastRedraw_; }
    void AddRedrawCallback(RedrawViewsCallback* cb);
    // Scene redraws switched off (counted: each disable needs its enable; an enable too many does nothing).
    void DisableSceneRedraw() { ++redrawsDisabled_; }
    void EnableSceneRedraw() {
        if (redrawsDisabled_ > 0) --redrawsDisabled_;
    }
    bool SceneRedrawDisabled() const { return redrawsDisabled_ > 0; }

    // quitMax: the application ends once the running script has stopped, with this exit status.
    void RequestQuit(int exitCode) {
        quitRequested_ = true;
        exitCode_ = exitCode;
    }
    bool QuitRequested() const { return quitRequested_; }
    int QuitExitCode() const { return exitCode_; }
    void RemoveRedrawCallback(RedrawViewsCallback* cb);

    void Reset();

private:
    Session() = default;
    bool quiet_ = false;
    bool hasUI_ = false;
    bool netServer_ = false;
    bool explorerLiveUpdate_ = true;
    int redrawsDisabled_ = 0;
    bool quitRequested_ = false;
    int exitCode_ = 0;
    TimeValue time_ = 0;
    int redraws_ = 0;
    TimeValue lastRedraw_ = 0;
    std::vector<RedrawViewsCallback*> redrawCallbacks_;
};

// Puts every platform service back in its start state (session, listener, dialogs, windows, prompt line,
// cursor, UI look, folder and INI overrides). For tests.
void ResetPlatform();

}  // namespace hostrt
