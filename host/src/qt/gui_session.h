// hostrt::GuiSession: the host's graphical session. It owns the Qt application (unless one runs already), the
// host's main window that parents plug-in windows, and shows the dialog service's message boxes and the open-file
// dialog with Qt. A headless run never makes one, so it needs no display and no Qt application.
#pragma once

#include <memory>

class QApplication;

namespace MaxSDK {
class QmaxMainWindow;
}

namespace hostrt {

class GuiSession {
public:
    // scale: the host's UI scale factor (1 = 100 %); it also scales the application's font and the marks of
    // check boxes and radio buttons (ScaledStyle).
    GuiSession(int& argc, char** argv, float scale = 1.0f);
    ~GuiSession();
    GuiSession(const GuiSession&) = delete;
    GuiSession& operator=(const GuiSession&) = delete;

    MaxSDK::QmaxMainWindow& MainWindow() { return *window_; }

private:
    std::unique_ptr<QApplication> ownApp_;
    std::unique_ptr<MaxSDK::QmaxMainWindow> window_;
};

}  // namespace hostrt
