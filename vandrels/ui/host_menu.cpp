#include "ui/host_menu.h"

#include "Qt/QmaxMainWindow.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "notify.h"

#include <QMenuBar>

namespace vandrels {

void AddVandrelsMenu(void*, NotifyInfo*) {
    Interface* ip = GetCOREInterface();
    MaxSDK::QmaxMainWindow* window = ip ? ip->GetQmaxMainWindow() : nullptr;
    if (!window || window->findChild<QMenu*>("VandrelsMenu")) return;
    QMenu* menu = window->menuBar()->addMenu("&Vandrels");
    menu->setObjectName("VandrelsMenu");
    menu->addAction("&Manager...", [] {
        ExecuteMAXScriptScript(L"OpenVandrelsManager()", MAXScript::ScriptSource::Embedded, FALSE);
    });
}

}  // namespace vandrels
