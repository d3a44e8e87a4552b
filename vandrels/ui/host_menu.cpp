// The library's menu in the host's main window: when the host starts with its graphical interface, a "Vandrels"
// menu on the main window's menu bar opens the manager window.
#include "Qt/QmaxMainWindow.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "notify.h"

#include <QMenuBar>

namespace vandrels {

namespace {

void AddMenu(void*, NotifyInfo*) {
    Interface* ip = GetCOREInterface();
    MaxSDK::QmaxMainWindow* window = ip ? ip->GetQmaxMainWindow() : nullptr;
    if (!window || window->findChild<QMenu*>("VandrelsMenu")) return;
    QMenu* menu = window->menuBar()->addMenu("&Vandrels");
    menu->setObjectName("VandrelsMenu");
    menu->addAction("&Manager...", [] {
        ExecuteMAXScriptScript(L"OpenVandrelsManager()", MAXScript::ScriptSource::Embedded, FALSE);
    });
}

struct StartupMenu {
    StartupMenu() { RegisterNotification(&AddMenu, nullptr, NOTIFY_SYSTEM_STARTUP); }
    ~StartupMenu() { UnRegisterNotification(&AddMenu, nullptr); }
} g_startupMenu;

}  // namespace

}  // namespace vandrels
