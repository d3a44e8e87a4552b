// Opening the manager window, and what the scripting interface's manager requests do with it.
#include "ui/manager_primitive.h"

#include "Qt/QmaxMainWindow.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "script/manager_requests.h"
#include "ui/vandrels_qt_manager.h"

namespace vandrels {

namespace {

void CloseWindow() {
    if (VandrelsQtManager* manager = VandrelsQtManager::Instance(); manager && manager->isVisible())
        manager->close();
}
bool WindowOpen() {
    VandrelsQtManager* manager = VandrelsQtManager::Instance();
    return manager && manager->isVisible();
}
void RefreshWindow() {
    if (WindowOpen()) VandrelsQtManager::Instance()->PopulateReferences();
}

}  // namespace

void OpenManagerWindow() {
    Interface* ip = GetCOREInterface();
    MaxSDK::QmaxMainWindow* mainWindow = ip ? ip->GetQmaxMainWindow() : nullptr;
    if (!mainWindow) throw RuntimeError(ManagerUnavailableText());
    VandrelsQtManager* manager = VandrelsQtManager::Instance();
    if (!manager) {
        manager = new VandrelsQtManager(mainWindow);
        manager->setAttribute(Qt::WA_DeleteOnClose, false);
        VandrelsQtManager::SetInstance(manager);
        SetManagerWindowHooks({&CloseWindow, &WindowOpen, &RefreshWindow});
    } else if (manager->isVisible()) {
        manager->SaveGeometry();
    }
    manager->show();
    manager->raise();
    manager->activateWindow();
    manager->PopulateReferences();
}

}  // namespace vandrels
