// `maxhost gui [SCENE]`: shows the host's main window (made by the graphical session before the plug-ins
// started), opens the scene, optionally runs a script and saves pictures of the shown windows, then runs the Qt
// event loop until the main window closes.
#include "commands.h"

#include "Qt/QmaxMainWindow.h"
#include "maxapi.h"
#include "platform/listener_capture.h"
#include "qt/host_main_window.h"
#include "strclass.h"

#include <QApplication>
#include <QDir>
#include <QThread>
#include <QWidget>

#include <cstdio>

namespace maxhost {

namespace {

void SettleEvents() {
    for (int i = 0; i < 20; ++i) {
        QApplication::processEvents();
        QThread::msleep(10);
    }
}

// Every shown top-level window as <folder>/<object name>.png; answers how many were written.
int GrabWindows(const QString& folder) {
    QDir().mkpath(folder);
    int written = 0;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (!window->isVisible() || window->objectName().isEmpty()) continue;
        const QString file = QDir(folder).filePath(window->objectName() + ".png");
        if (window->grab().save(file)) {
            std::printf("maxhost: saved %s\n", qPrintable(file));
            ++written;
        }
    }
    return written;
}

}  // namespace

int RunGui(const Options& opts, const std::string& sceneFile) {
    Interface* ip = GetCOREInterface();
    MaxSDK::QmaxMainWindow* window = ip->GetQmaxMainWindow();
    if (!window) {
        std::fprintf(stderr, "maxhost: the graphical session did not start\n");
        return 1;
    }
    hostrt::Listener::Instance().SetEcho(false);
    window->show();
    if (!sceneFile.empty() && !ip->LoadFromFile(MaxSDK::FromUTF8(sceneFile).c_str())) {
        std::fprintf(stderr, "maxhost: cannot open %s\n", sceneFile.c_str());
    }
    if (auto* host = dynamic_cast<hostrt::HostMainWindow*>(window)) host->RefreshSceneTree();
    SettleEvents();
    if (!opts.guiScript.empty()) {
        if (RunScriptFile(opts.guiScript) != 0) std::fprintf(stderr, "maxhost: %s failed\n", opts.guiScript.c_str());
        if (auto* host = dynamic_cast<hostrt::HostMainWindow*>(window)) host->RefreshSceneTree();
        SettleEvents();
    }
    int rc = 0;
    if (!opts.grabFolder.empty()) {
        rc = GrabWindows(QString::fromStdString(opts.grabFolder)) > 0 ? 0 : 1;
    } else {
        rc = QApplication::exec();
    }
    return rc;
}

}  // namespace maxhost
