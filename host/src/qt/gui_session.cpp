#include "qt/gui_session.h"

#include "Qt/QmaxMainWindow.h"
#include "platform/dialog_service.h"
#include "platform/file_dialog_service.h"
#include "platform/qt_main_window.h"
#include "platform/session.h"
#include "platform/ui_state.h"
#include "qt/host_main_window.h"
#include "qt/qt_presenters.h"
#include "qt/scaled_style.h"
#include "qt/ui_automation.h"

#include <QApplication>

namespace hostrt {

GuiSession::GuiSession(int& argc, char** argv, float scale) {
    if (!QApplication::instance()) ownApp_ = std::make_unique<QApplication>(argc, argv);
    UiState::Instance().SetScaleFactor(scale);
    if (scale != 1.0f) {
        QFont font = QApplication::font();
        font.setPointSizeF(font.pointSizeF() * scale);
        QApplication::setFont(font);
        QApplication::setStyle(new ScaledStyle(scale));  // the application owns it
    }
    Session::Instance().SetHasUserInterface(true);
    window_ = std::make_unique<HostMainWindow>();
    SetQtMainWindow(window_.get());
    DialogService::Instance().SetPresenter(&PresentMessageBox);
    FileDialogService::Instance().SetPresenter(&PresentFileDialog);
    RegisterUiAutomation();
}

GuiSession::~GuiSession() {
    UnregisterUiAutomation();
    DialogService::Instance().SetPresenter(nullptr);
    FileDialogService::Instance().SetPresenter(nullptr);
    // Plug-in windows are children of the main window: they go with it, before the application.
    SetQtMainWindow(nullptr);
    window_.reset();
    Session::Instance().SetHasUserInterface(false);
}

}  // namespace hostrt
