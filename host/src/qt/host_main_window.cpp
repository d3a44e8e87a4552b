#include "qt/host_main_window.h"

#include "hold.h"
#include "inode.h"
#include "maxapi.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "notify.h"
#include "object.h"
#include "platform/listener_capture.h"
#include "qt/qt_rollouts.h"
#include "ref.h"

#include <QApplication>
#include <QDockWidget>
#include <QFileDialog>
#include <QFontDatabase>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QScrollArea>
#include <QSplitter>
#include <QTimer>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace hostrt {

namespace {

QString NodeLabel(INode* node) {
    QString label = QString::fromWCharArray(node->GetName());
    if (Object* obj = node->GetObjectRef()) {
        MSTR cls;
        obj->FindBaseObject()->GetClassName(cls);
        label += "  (" + QString::fromWCharArray(cls.data()) + ")";
    }
    return label;
}

void AddChildren(QTreeWidgetItem* parentItem, QTreeWidget* tree, INode* parent) {
    for (int i = 0; i < parent->NumberOfChildren(); ++i) {
        INode* child = parent->GetChildNode(i);
        if (!child) continue;
        auto* item = parentItem ? new QTreeWidgetItem(parentItem) : new QTreeWidgetItem(tree);
        item->setText(0, NodeLabel(child));
        item->setData(0, Qt::UserRole, qulonglong(child->GetHandle()));
        if (child->Selected()) item->setSelected(true);
        AddChildren(item, tree, child);
    }
}

}  // namespace

HostMainWindow::HostMainWindow(QWidget* parent) : MaxSDK::QmaxMainWindow(parent) {
    setObjectName("HostMainWindow");
    setWindowTitle("maxhost");

    tree_ = new QTreeWidget;
    tree_->setObjectName("SceneTree");
    tree_->setHeaderLabel("Scene");
    tree_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    connect(tree_, &QTreeWidget::itemSelectionChanged, this, &HostMainWindow::OnTreeSelectionChanged);
    auto* sceneDock = new QDockWidget("Scene Explorer", this);
    sceneDock->setObjectName("SceneExplorerDock");
    sceneDock->setWidget(tree_);
    sceneDock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    addDockWidget(Qt::LeftDockWidgetArea, sceneDock);

    auto* listener = new QWidget;
    auto* listenerLayout = new QVBoxLayout(listener);
    listenerLayout->setContentsMargins(4, 4, 4, 4);
    listenerOutput_ = new QPlainTextEdit;
    listenerOutput_->setObjectName("ListenerOutput");
    listenerOutput_->setReadOnly(true);
    QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    fixed.setPointSizeF(fixed.pointSizeF() * MaxSDK::GetUIScaleFactor());
    listenerOutput_->setFont(fixed);
    listenerLine_ = new QLineEdit;
    listenerLine_->setObjectName("ListenerLine");
    listenerLine_->setPlaceholderText("MAXScript: type an expression and press Enter");
    listenerLine_->setFont(fixed);
    connect(listenerLine_, &QLineEdit::returnPressed, this, [this] {
        const QString line = listenerLine_->text();
        listenerLine_->clear();
        RunListenerLine(line);
    });
    listenerLayout->addWidget(new QLabel("MAXScript Listener"));
    listenerLayout->addWidget(listenerOutput_, 1);
    listenerLayout->addWidget(listenerLine_);
    setCentralWidget(listener);

    commandPanel_ = new QScrollArea;
    commandPanel_->setObjectName("CommandPanel");
    commandPanel_->setWidgetResizable(true);
    // Room for a rollout of the host's usual width (108 dialog units of an 8-point font) and the scroll bar.
    commandPanel_->setMinimumWidth(MaxSDK::UIScaled(180) + 40);
    auto* panelDock = new QDockWidget("Command Panel", this);
    panelDock->setObjectName("CommandPanelDock");
    panelDock->setWidget(commandPanel_);
    panelDock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    addDockWidget(Qt::RightDockWidgetArea, panelDock);
    rollouts_ = new QtRolloutPresenter(commandPanel_);

    BuildMenus();
    listenerObserver_ = Listener::Instance().AddObserver([this](std::wstring_view text) {
        Append(QString::fromWCharArray(text.data(), int(text.size())));
    });
    RegisterNotification(&HostMainWindow::OnSceneChanged, this, int(NOTIFY_ALL));
    tree_->setMinimumWidth(MaxSDK::UIScaled(240));
    resize(MaxSDK::UIScaled(1100), MaxSDK::UIScaled(640));
    RefreshSceneTree();
}

HostMainWindow::~HostMainWindow() {
    UnRegisterNotification(&HostMainWindow::OnSceneChanged, this);
    Listener::Instance().RemoveObserver(listenerObserver_);
    delete rollouts_;
}

void HostMainWindow::BuildMenus() {
    QMenu* file = menuBar()->addMenu("&File");
    file->addAction("&Open...", this, [this] {
        const QString name = QFileDialog::getOpenFileName(this, "Open Scene", {}, "3ds Max (*.max);;All Files (*)");
        if (!name.isEmpty()) GetCOREInterface()->LoadFromFile(name.toStdWString().c_str());
    });
    file->addAction("&Save As...", this, [this] {
        const QString name = QFileDialog::getSaveFileName(this, "Save Scene As", {}, "3ds Max (*.max)");
        if (!name.isEmpty()) GetCOREInterface()->SaveToFile(name.toStdWString().c_str());
    });
    file->addAction("&Reset", this, [] { GetCOREInterface()->FileReset(TRUE); });
    file->addSeparator();
    file->addAction("E&xit", this, &QWidget::close);
    QMenu* edit = menuBar()->addMenu("&Edit");
    edit->addAction("&Undo", QKeySequence::Undo, this, [this] { RunListenerLine("max undo"); });
    edit->addAction("&Redo", QKeySequence::Redo, this, [this] { RunListenerLine("max redo"); });
}

void HostMainWindow::Append(const QString& text) {
    QTextCursor cursor = listenerOutput_->textCursor();
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(text);
    listenerOutput_->setTextCursor(cursor);
    listenerOutput_->ensureCursorVisible();
}

void HostMainWindow::RunListenerLine(const QString& line) {
    auto& listener = Listener::Instance();
    listener.Write(line.toStdWString() + L"\n");
    try {
        const mxs::Value result = mxs::Interpreter::Shared().Execute(line.toStdWString());
        listener.Write(mxs::PrintForm(result) + L"\n");
    } catch (const mxs::ScriptError& e) {
        listener.Write(e.Report());
    }
    listener.Flush();
    ScheduleRefresh();
}

void HostMainWindow::OnSceneChanged(void* param, NotifyInfo*) { static_cast<HostMainWindow*>(param)->ScheduleRefresh(); }

// Scene events come in bursts (a merge adds many nodes): the tree is rebuilt once the burst is over.
void HostMainWindow::ScheduleRefresh() {
    if (refreshPending_) return;
    refreshPending_ = true;
    QTimer::singleShot(0, this, [this] {
        refreshPending_ = false;
        RefreshSceneTree();
    });
}

void HostMainWindow::RefreshSceneTree() {
    updatingTree_ = true;
    tree_->clear();
    if (INode* root = GetCOREInterface()->GetRootNode()) AddChildren(nullptr, tree_, root);
    tree_->expandAll();
    updatingTree_ = false;
    rollouts_->ShowSelection();
}

// Picking nodes in the tree selects them in the scene (one undo step), and the command panel follows.
void HostMainWindow::OnTreeSelectionChanged() {
    if (updatingTree_) return;
    Interface* ip = GetCOREInterface();
    INodeTab nodes;
    for (QTreeWidgetItem* item : tree_->selectedItems())
        if (INode* node = ip->GetINodeByHandle(ULONG(item->data(0, Qt::UserRole).toULongLong()))) nodes.Append(1, &node);
    theHold.Begin();
    ip->ClearNodeSelection(FALSE);
    if (nodes.Count()) ip->SelectNodeTab(nodes, TRUE, FALSE);
    theHold.Accept(L"Select");
    rollouts_->ShowSelection();
}

}  // namespace hostrt
