// The host's Qt main window: what Interface::GetQmaxMainWindow answers in a session with a graphical interface.
// Plug-ins parent their own Qt windows to it.
#pragma once

#include <QtWidgets/QMainWindow>

namespace MaxSDK {

class QmaxMainWindow : public QMainWindow {
public:
    explicit QmaxMainWindow(QWidget* parent = nullptr, Qt::WindowFlags flags = {}) : QMainWindow(parent, flags) {}
};

}  // namespace MaxSDK
