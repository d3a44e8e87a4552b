// Session switches, the current time and viewport redraws; resetting every platform service.
#include "platform/session.h"

#include "maxapi.h"
#include "platform/dialog_service.h"
#include "platform/file_dialog_service.h"
#include "platform/host_dirs.h"
#include "platform/listener_capture.h"
#include "platform/prompt_line.h"
#include "platform/ui_state.h"
#include "platform/windows.h"

#include <algorithm>

namespace hostrt {

Session& Session::Instance() {
    static Session session;
    return session;
}

void Session::Redraw(Interface* ip, TimeValue t) {
    ++redraws_;
    lastRedraw_ = t;
    const std::vector<RedrawViewsCallback*> snapshot = redrawCallbacks_;
    for (RedrawViewsCallback* cb : snapshot)
        if (std::find(redrawCallbacks_.begin(), redrawCallbacks_.end(), cb) != redrawCallbacks_.end()) cb->proc(ip);
}

void Session::AddRedrawCallback(RedrawViewsCallback* cb) {
    if (cb && std::find(redrawCallbacks_.begin(), redrawCallbacks_.end(), cb) == redrawCallbacks_.end())
        redrawCallbacks_.push_back(cb);
}

void Session::RemoveRedrawCallback(RedrawViewsCallback* cb) { std::erase(redrawCallbacks_, cb); }

void Session::Reset() { *this = Session(); }

void ResetPlatform() {
    Session::Instance().Reset();
    Listener::Instance().Reset();
    DialogService::Instance().Reset();
    FileDialogService::Instance().Reset();
    ShellRequests::Instance().Reset();
    WindowRegistry::Instance().Reset();
    PromptLine::Instance().Reset();
    UiState::Instance().Reset();
    SetInstallRoot({});
    SetIniPath({});
}

}  // namespace hostrt
