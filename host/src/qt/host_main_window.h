// hostrt::HostMainWindow: the host's main window in a graphical session (`maxhost gui`) and the parent of plug-in
// windows: the scene's node tree on the left, the MAXScript listener in the middle (type a line, see its result and
// everything scripts and plug-ins print), the command panel on the right with the rollouts of the selected
// object's parameter blocks. Plug-ins may add their own menus to its menu bar.
#pragma once

#include "Qt/QmaxMainWindow.h"

class QLineEdit;
class QPlainTextEdit;
class QScrollArea;
class QTreeWidget;
class QVBoxLayout;
struct NotifyInfo;

namespace hostrt {

class QtRolloutPresenter;

class HostMainWindow : public MaxSDK::QmaxMainWindow {
    Q_OBJECT
public:
    explicit HostMainWindow(QWidget* parent = nullptr);
    ~HostMainWindow() override;

    // Runs one line of MAXScript as the listener line does, showing the line and its result.
    void RunListenerLine(const QString& line);

public slots:
    // Rebuilds the node tree from the scene (the host's scene notifications schedule it).
    void RefreshSceneTree();
    void OnTreeSelectionChanged();

private:
    void ScheduleRefresh();
    void BuildMenus();
    void Append(const QString& text);
    static void OnSceneChanged(void* param, NotifyInfo* info);

    QTreeWidget* tree_ = nullptr;
    QPlainTextEdit* listenerOutput_ = nullptr;
    QLineEdit* listenerLine_ = nullptr;
    QScrollArea* commandPanel_ = nullptr;
    QtRolloutPresenter* rollouts_ = nullptr;
    int listenerObserver_ = -1;
    bool refreshPending_ = false;
    bool updatingTree_ = false;
};

}  // namespace hostrt
