// The manager window's reference operations: the tool buttons and the Reference menu (each asking first where the
// operation cannot be undone), the Tools, Options and Help menus, and the table's context menu.
#include "ui/vandrels_qt_manager.h"

#include "Qt/QmaxMainWindow.h"
#include "helper/helper_params.h"
#include "helper/vandrels_helper_interface.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "script/add_vandrel.h"
#include "script/reference_operations.h"
#include "frame/settings.h"
#include "shellapi.h"
#include "ui/about_dialog.h"
#include "ui/helper_access.h"
#include "maxscript/string_literal.h"
#include "ui/undo_hold.h"
#include "ui/vandrels_qt_advanced_reset.h"
#include "winshim.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QProcess>
#include <QTableWidget>
#include <QUrl>

#include <algorithm>

namespace vandrels {

namespace {

// Where Help takes the user.
constexpr const char* kOnlineHelp = "https://vandrels.example.com/docs/";

void ForEachHelper(const std::vector<INode*>& nodes, int (VandrelsHelperInterface::*operation)()) {
    for (INode* node : nodes)
        if (VandrelsHelperInterface* helper = HelperInterfaceOf(node)) (helper->*operation)();
}

QString FileNameOf(INode* node) {
    return QString::fromStdWString(ReadHelperString(node, vh_file_name).value_or(MSTR()).data());
}

}  // namespace

bool VandrelsQtManager::Confirm(const wchar_t* title, const wchar_t* text, bool warning) {
    const UINT type = MB_YESNO | MB_DEFBUTTON2 | (warning ? MB_ICONWARNING : MB_ICONQUESTION);
    return MessageBoxW(GetCOREInterface()->GetMAXHWnd(), text, title, type) == IDYES;
}

void VandrelsQtManager::OnAddPressed() {
    AddVandrelDialog();
    PopulateReferences();
}

void VandrelsQtManager::OnReloadPressed() {
    const std::vector<INode*> selected = SelectedHelpers();
    if (selected.empty()) return;
    ForEachHelper(selected, &VandrelsHelperInterface::Reload);
    PopulateReferences();
}

void VandrelsQtManager::OnRemovePressed() {
    const std::vector<INode*> selected = SelectedHelpers();
    if (selected.empty() ||
        !Confirm(L"Remove Reference",
                 L"Are you sure you want to remove the selected references?, this operation can't be undone."))
        return;
    INodeTab nodes;
    for (INode* node : selected) nodes.Append(1, &node);
    GetCOREInterface()->DeleteNodes(nodes, true, true);
    PopulateReferences();
}

void VandrelsQtManager::OnResetPressed() {
    const std::vector<INode*> selected = SelectedHelpers();
    if (selected.empty() ||
        !Confirm(L"Reset Reference",
                 L"Are you sure you want to reset the selected references?, this operation can't be undone."))
        return;
    ForEachHelper(selected, &VandrelsHelperInterface::Reset);
    PopulateReferences();
}

void VandrelsQtManager::OnDuplicatePressed() {
    std::vector<int> rows;
    for (const QModelIndex& index : table_->selectionModel()->selectedRows()) rows.push_back(index.row());
    if (rows.empty()) return;
    std::sort(rows.begin(), rows.end());
    Tab<int> positions;
    for (int& row : rows) positions.Append(1, &row);
    DuplicateVandrels(&positions);
    PopulateReferences();
}

void VandrelsQtManager::OnMergePressed() {
    const std::vector<INode*> selected = SelectedHelpers();
    if (selected.empty()) return;
    bool proxyInViewport = false;
    for (INode* node : selected) proxyInViewport |= ReadHelperInt(node, vh_use_proxy_in_viewport).value_or(0) != 0;
    const bool yes =
        proxyInViewport
            ? Confirm(L"Merge References and Proxies",
                      L"One or more selected references are used as Proxy in the viewport.\n\nThe Proxy will be "
                      L"merged for those references, this action can't be undone.\n\nDo you want to continue?",
                      true)
            : Confirm(L"Merge Reference",
                      L"Are you sure you want to merge the selected references?, this operation can't be undone.");
    if (!yes) return;
    ForEachHelper(selected, &VandrelsHelperInterface::Merge);
    PopulateReferences();
}

void VandrelsQtManager::OnAdvancedReset() {
    VandrelsQtAdvancedReset* dialog = VandrelsQtAdvancedReset::Instance();
    if (!dialog) {
        QWidget* parent = GetCOREInterface()->GetQmaxMainWindow();
        dialog = new VandrelsQtAdvancedReset(parent ? parent : this);
        VandrelsQtAdvancedReset::SetInstance(dialog);
    }
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

void VandrelsQtManager::OnToggleShowDupNamesWarnings(bool checked) { SetShowDuplicatedNamesWarning(checked); }

void VandrelsQtManager::OnHelp() { QDesktopServices::openUrl(QUrl(kOnlineHelp)); }

void VandrelsQtManager::OnAbout() { ShowAbout(); }

void VandrelsQtManager::OnContextMenuRequested(QPoint pos) {
    const int n = int(SelectedHelpers().size());
    QMenu menu(this);
    menu.setObjectName("ReferenceContextMenu");
    QMenu* file = menu.addMenu("&File");
    QAction* open = file->addAction("&Open", this, &VandrelsQtManager::OnContextMenuOpen);
    QAction* newSession =
        file->addAction("Open in &New 3ds Max Session", this, &VandrelsQtManager::OnContextMenuOpenNewSession);
    QAction* reveal = file->addAction("&Reveal in Explorer", this, &VandrelsQtManager::OnContextMenuRevealInExplorer);
    file->addSeparator();
    QAction* overwrite = file->addAction("&Overwrite", this, &VandrelsQtManager::OnContextMenuOverwrite);
    QAction* saveAs = file->addAction("&Save As...", this, &VandrelsQtManager::OnContextMenuSaveAs);
    QAction* selectNodes = menu.addAction("&Select Nodes", this, &VandrelsQtManager::OnContextMenuSelectNodes);
    QAction* dupNames = menu.addAction("Show &Duplicated Names", this, &VandrelsQtManager::OnContextMenuShowDupNames);
    for (QAction* action : {open, newSession, reveal, saveAs, dupNames}) action->setEnabled(n == 1);
    for (QAction* action : {overwrite, selectNodes}) action->setEnabled(n >= 1);
    menu.exec(table_->viewport()->mapToGlobal(pos));
}

void VandrelsQtManager::OnContextMenuOpen() {
    const std::vector<INode*> selected = SelectedHelpers();
    if (selected.size() != 1) return;
    const QString file = FileNameOf(selected.front());
    if (file.isEmpty()) return;
    const std::wstring script =
        L"if (checkForSave()) do loadMaxFile " + MaxScriptStringLiteral(file.toStdWString()) + L" quiet:false";
    ExecuteMAXScriptScript(script.c_str(), MAXScript::ScriptSource::Embedded, FALSE);
}

void VandrelsQtManager::OnContextMenuOpenNewSession() {
    const std::vector<INode*> selected = SelectedHelpers();
    if (selected.size() != 1) return;
    const QString file = FileNameOf(selected.front());
    if (file.isEmpty()) return;
    const QString program = QString::fromWCharArray(GetCOREInterface()->GetDir(APP_MAXROOT_DIR)) + "3dsmax.exe";
    if (!QProcess::startDetached(program, {file}, QString())) {
        const std::wstring text = L"Could not start " + program.toStdWString() + L" to open " + file.toStdWString() + L".";
        MessageBoxW(GetCOREInterface()->GetMAXHWnd(), text.c_str(), L"Open in New 3ds Max Session", MB_OK | MB_ICONERROR);
    }
}

void VandrelsQtManager::OnContextMenuRevealInExplorer() {
    const std::vector<INode*> selected = SelectedHelpers();
    if (selected.size() != 1) return;
    const QString file = FileNameOf(selected.front());
    if (file.isEmpty()) return;
    const std::wstring parameters = L"/select,\"" + QDir::toNativeSeparators(file).toStdWString() + L"\"";
    ShellExecuteW(nullptr, L"open", L"explorer.exe", parameters.c_str(), nullptr, SW_SHOWNORMAL);
}

void VandrelsQtManager::OnContextMenuOverwrite() {
    const std::vector<INode*> selected = SelectedHelpers();
    if (selected.empty() ||
        !Confirm(L"Overwrite Reference",
                 L"Are you sure you want to overwrite the selected references?, this operation can't be undone."))
        return;
    ForEachHelper(selected, &VandrelsHelperInterface::Overwrite);
}

void VandrelsQtManager::OnContextMenuSaveAs() {
    const std::vector<INode*> selected = SelectedHelpers();
    if (selected.size() != 1) return;
    INode* node = selected.front();
    const QString caption = QString("Save Reference %1 As...").arg(QString::fromWCharArray(node->GetName()));
    const QString file = QFileDialog::getSaveFileName(this, caption, fileNameEdit_->text(),
                                                      "3ds Max (*.max);;All Files (*.*)");
    if (file.isEmpty()) return;
    if (VandrelsHelperInterface* helper = HelperInterfaceOf(node)) helper->SaveAs(file.toStdWString().c_str());
}

void VandrelsQtManager::OnContextMenuSelectNodes() {
    const std::vector<INode*> selected = SelectedHelpers();
    if (selected.empty()) return;
    INodeTab nodes;
    for (INode* helperNode : selected)
        if (VandrelsHelperInterface* helper = HelperInterfaceOf(helperNode)) {
            Tab<INode*> owned = helper->GetNodes();
            for (int i = 0; i < owned.Count(); ++i)
                if (INode* node = owned[i]) nodes.Append(1, &node);
        }
    Interface* ip = GetCOREInterface();
    if (!nodes.Count()) {
        ip->ClearNodeSelection(TRUE);
        return;
    }
    UndoHold hold(kParameterChangeUndo);
    ip->ClearNodeSelection(FALSE);
    ip->SelectNodeTab(nodes, TRUE, FALSE);
    hold.Accept();
}

void VandrelsQtManager::OnContextMenuShowDupNames() {
    const std::vector<INode*> selected = SelectedHelpers();
    if (selected.size() != 1) return;
    if (VandrelsHelperInterface* helper = HelperInterfaceOf(selected.front())) helper->ShowDupNames();
}

}  // namespace vandrels
