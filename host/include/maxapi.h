// The host's core interface, Interface, reached with GetCOREInterface(): host folders and settings, session
// flags, the prompt line, time and viewport redraws; UI colours, UI scale and performance timers beside it.
#pragma once

#include "geom.h"
#include "strclass.h"

#include <chrono>

class Interface;
class ReferenceTarget;

// Host folders answered by Interface::GetDir. Every folder ends with a separator.
#define APP_MAXROOT_DIR 20  // the installation root: the folder holding the host's bin folder
#define APP_TEMP_DIR 29     // the host's temporary folder, made on first request

// Flags of Interface::RedrawViews.
#define REDRAW_BEGIN (1 << 0)
#define REDRAW_INTERACTIVE (1 << 1)
#define REDRAW_END (1 << 2)
#define REDRAW_NORMAL (1 << 3)

// Hears the next viewport redraws; may unregister itself from proc.
class RedrawViewsCallback {
public:
    virtual ~RedrawViewsCallback() = default;
    virtual void proc(Interface* ip) = 0;
};

class Interface {
public:
    Interface(const Interface&) = delete;
    Interface& operator=(const Interface&) = delete;

    // ---- Platform: host folders and settings.
    // The folder of number which (APP_xxx_DIR) with a trailing separator; "" for a number the host does not
    // know. The text stays valid until that folder is changed.
    const MCHAR* GetDir(int which);
    // Full path of the host's INI settings file.
    MSTR GetMAXIniFile();

    // ---- Platform: session state.
    // In quiet mode the host shows nothing: message boxes are answered with their default button.
    BOOL GetQuietMode();
    void SetQuietMode(BOOL quiet);
    // Whether the host renders as a network render server (without a viewport UI).
    BOOL IsNetServer();
    void SetNetServer(BOOL netServer);
    // Whether the host has a user interface; a headless run starts without one.
    BOOL HasUserInterface();
    void SetHasUserInterface(BOOL hasUI);
    // The main window: owner of message boxes and dialogs. Never null.
    HWND GetMAXHWnd();

    // ---- Platform: the prompt line.
    void PushPrompt(const MCHAR* text);
    void PopPrompt();
    // Replaces the prompt on top of the stack (pushes one when the stack is empty).
    void ReplacePrompt(const MCHAR* text);
    // Shows text over the prompt stack for msec milliseconds, or until RemoveTempPrompt.
    void DisplayTempPrompt(const MCHAR* text, int msec = 1000);
    void RemoveTempPrompt();

    // ---- Platform: time and viewports.
    // The current time in ticks (0 at start).
    TimeValue GetTime();
    void SetTime(TimeValue t, BOOL redraw = TRUE);
    // Redraws the viewports at time t: counted, and every registered redraw callback hears it.
    void RedrawViews(TimeValue t, DWORD vpFlags = REDRAW_NORMAL, ReferenceTarget* change = nullptr);
    void RegisterRedrawViewsCallback(RedrawViewsCallback* cb);
    void UnRegisterRedrawViewsCallback(RedrawViewsCallback* cb);

    // ---- Scene: nodes, scene root, files (to come).

protected:
    Interface() = default;
    ~Interface() = default;
};

// The host's one Interface.
Interface* GetCOREInterface();

// A colour of the host's user interface, components in 0..1. Colour 20 (the helper-object colour) is defined;
// every other number answers a neutral grey.
Point3 GetUIColor(int which);

namespace MaxSDK {
// The scale of the user interface (1.0 unless the host was told otherwise).
float GetUIScaleFactor();
// A size in pixels scaled by the UI scale factor (truncated).
int UIScaled(int pixels);

namespace PerformanceTools {
// Measures wall-clock time: StartTimer, then EndTimer answers the seconds since (since construction when
// StartTimer was never called).
class Timer {
public:
    Timer() : start_(std::chrono::steady_clock::now()) {}
    void StartTimer() { start_ = std::chrono::steady_clock::now(); }
    double EndTimer() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }

private:
    std::chrono::steady_clock::time_point start_;
};
}  // namespace PerformanceTools
}  // namespace MaxSDK
