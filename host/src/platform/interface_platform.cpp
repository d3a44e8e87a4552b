// The platform members of Interface, GetCOREInterface, the UI colours and the UI scale factor.
#include "maxapi.h"

#include "platform/host_dirs.h"
#include "platform/paths.h"
#include "platform/prompt_line.h"
#include "platform/session.h"
#include "platform/ui_state.h"
#include "platform/windows.h"

#include <iostream>
#include <map>

namespace {
// The one Interface object; Interface itself cannot be made outside the host.
class CoreInterface final : public Interface {};

// Answers of GetDir: the texts stay put until the same folder is asked for and has changed.
std::map<int, std::wstring>& dirTexts() {
    static std::map<int, std::wstring> texts;
    return texts;
}

// A folder made on request; when it cannot be made, its name all the same (the caller's file call then fails).
std::wstring madeFolderText(std::filesystem::path (*make)()) {
    try {
        return hostrt::WithTrailingSeparator(hostrt::FromNativePath(make()));
    } catch (const std::filesystem::filesystem_error& e) {
        std::cerr << "maxhost: " << e.what() << "\n";
        return hostrt::WithTrailingSeparator(hostrt::FromNativePath(e.path1()));
    }
}

std::wstring dirText(int which) {
    switch (which) {
        case APP_MAXROOT_DIR: return hostrt::WithTrailingSeparator(hostrt::FromNativePath(hostrt::InstallRoot()));
        case APP_TEMP_DIR: return madeFolderText(hostrt::HostTempFolder);
        case APP_SCENE_DIR: return madeFolderText(hostrt::SceneFolder);
        default: return {};
    }
}
}  // namespace

Interface* GetCOREInterface() {
    static CoreInterface core;
    return &core;
}

const MCHAR* Interface::GetDir(int which) {
    std::wstring text = dirText(which);
    std::wstring& kept = dirTexts()[which];
    if (kept != text) kept = std::move(text);
    return kept.c_str();
}

MSTR Interface::GetMAXIniFile() { return MSTR(hostrt::FromNativePath(hostrt::HostIniPath())); }

BOOL Interface::GetQuietMode() { return hostrt::Session::Instance().Quiet(); }
void Interface::SetQuietMode(BOOL quiet) { hostrt::Session::Instance().SetQuiet(quiet != FALSE); }
BOOL Interface::IsNetServer() { return hostrt::Session::Instance().NetServer(); }
void Interface::SetNetServer(BOOL netServer) { hostrt::Session::Instance().SetNetServer(netServer != FALSE); }
BOOL Interface::GetSceneExplorerLiveUpdate() { return hostrt::Session::Instance().ExplorerLiveUpdate(); }
void Interface::SetSceneExplorerLiveUpdate(BOOL on) { hostrt::Session::Instance().SetExplorerLiveUpdate(on != FALSE); }
BOOL Interface::HasUserInterface() { return hostrt::Session::Instance().HasUserInterface(); }
void Interface::SetHasUserInterface(BOOL hasUI) { hostrt::Session::Instance().SetHasUserInterface(hasUI != FALSE); }
HWND Interface::GetMAXHWnd() { return hostrt::WindowRegistry::Instance().MainWindow(); }

void Interface::PushPrompt(const MCHAR* text) { hostrt::PromptLine::Instance().Push(text ? text : L""); }
void Interface::PopPrompt() { hostrt::PromptLine::Instance().Pop(); }
void Interface::ReplacePrompt(const MCHAR* text) { hostrt::PromptLine::Instance().Replace(text ? text : L""); }
void Interface::DisplayTempPrompt(const MCHAR* text, int msec) {
    hostrt::PromptLine::Instance().ShowTemp(text ? text : L"", msec);
}
void Interface::RemoveTempPrompt() { hostrt::PromptLine::Instance().RemoveTemp(); }

TimeValue Interface::GetTime() { return hostrt::Session::Instance().Time(); }

void Interface::SetTime(TimeValue t, BOOL redraw) {
    hostrt::Session::Instance().SetTime(t);
    if (redraw) RedrawViews(t);
}

void Interface::RedrawViews(TimeValue t, DWORD vpFlags, ReferenceTarget* change) {
    if (hostrt::Session::Instance().SceneRedrawDisabled()) return;
    hostrt::Session::Instance().Redraw(this, t);
}

void Interface::DisableSceneRedraw() { hostrt::Session::Instance().DisableSceneRedraw(); }
void Interface::EnableSceneRedraw() { hostrt::Session::Instance().EnableSceneRedraw(); }
int Interface::IsSceneRedrawDisabled() { return hostrt::Session::Instance().SceneRedrawDisabled() ? 1 : 0; }

void Interface::RegisterRedrawViewsCallback(RedrawViewsCallback* cb) {
    hostrt::Session::Instance().AddRedrawCallback(cb);
}

void Interface::UnRegisterRedrawViewsCallback(RedrawViewsCallback* cb) {
    hostrt::Session::Instance().RemoveRedrawCallback(cb);
}

Point3 GetUIColor(int which) { return hostrt::UiState::Instance().Color(which); }

float MaxSDK::GetUIScaleFactor() { return hostrt::UiState::Instance().ScaleFactor(); }

int MaxSDK::UIScaled(int pixels) { return int(float(pixels) * GetUIScaleFactor()); }
