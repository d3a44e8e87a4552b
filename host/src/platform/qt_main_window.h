// Where the host keeps its Qt main window while a graphical session runs (host/src/qt sets it); the runtime itself
// does not use Qt.
#pragma once

namespace MaxSDK {
class QmaxMainWindow;
}

namespace hostrt {

MaxSDK::QmaxMainWindow* QtMainWindow();
void SetQtMainWindow(MaxSDK::QmaxMainWindow* window);

}  // namespace hostrt
