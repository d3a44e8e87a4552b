#include "platform/qt_main_window.h"

#include "maxapi.h"

namespace hostrt {

namespace {
MaxSDK::QmaxMainWindow* g_mainWindow = nullptr;
}

MaxSDK::QmaxMainWindow* QtMainWindow() { return g_mainWindow; }
void SetQtMainWindow(MaxSDK::QmaxMainWindow* window) { g_mainWindow = window; }

}  // namespace hostrt

MaxSDK::QmaxMainWindow* Interface::GetQmaxMainWindow() { return hostrt::QtMainWindow(); }
