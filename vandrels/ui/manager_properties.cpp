// The manager window's table and property panel: rebuilding the rows from the scene, keeping the table's selection
// in the helpers (undoably), showing the selected helpers' parameters (mixed values as partially checked boxes and
// blank edits) and writing the user's edits back under one undo step each.
#include "ui/vandrels_qt_manager.h"

#include "commdlg.h"
#include "helper/helper_list.h"
#include "helper/helper_params.h"
#include "maxapi.h"
#include "ui/display_tristate_check_box.h"
#include "ui/helper_access.h"
#include "ui/undo_hold.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTableWidget>

#include <optional>
#include <set>

namespace vandrels {

namespace {

constexpr int kColumnName = 0, kColumnActive = 1, kColumnProxyViewport = 2, kColumnProxyRender = 3,
              kColumnFileName = 4, kColumnProxyFileName = 5;

QString ToQ(const MSTR& s) { return QString::fromWCharArray(s.data(), int(s.Length())); }
MSTR FromQ(const QString& s) { return MSTR(s.toStdWString().c_str()); }

QTableWidgetItem* Cell(const QString& text, bool centred = false) {
    auto* item = new QTableWidgetItem(text);
    if (centred) item->setTextAlignment(Qt::AlignCenter);
    return item;
}

QString YesNo(bool on) { return on ? "Yes" : "No"; }

// A combined value over several helpers: the common one, or none when they differ.
template <typename T>
struct Common {
    std::optional<T> value;
    bool mixed = false;
    bool any = false;
    void Add(const T& v) {
        if (!any) value = v;
        else if (!mixed && !(*value == v)) mixed = true;
        any = true;
    }
    bool Agreed() const { return any && !mixed; }
};

void ShowBool(QCheckBox* box, const Common<bool>& common) {
    if (common.Agreed()) box->setCheckState(*common.value ? Qt::Checked : Qt::Unchecked);
    else box->setCheckState(common.any ? Qt::PartiallyChecked : Qt::Unchecked);
}

struct BoxParam {
    int param;
    DisplayTristateCheckBox* box;
};

}  // namespace

std::vector<INode*> VandrelsQtManager::SelectedHelpers() const {
    std::vector<INode*> nodes;
    if (!table_) return nodes;
    std::set<int> rows;
    for (const QModelIndex& index : table_->selectionModel()->selectedRows()) rows.insert(index.row());
    for (int row : rows)
        if (row < int(rows_.size())) nodes.push_back(rows_[std::size_t(row)]);
    return nodes;
}

void VandrelsQtManager::PopulateReferences() {
    if (!table_ || selectionSync_) return;
    const bool wasUpdating = updating_;
    updating_ = true;
    {
        const QSignalBlocker tableSignals(table_);
        const QSignalBlocker selectionSignals(table_->selectionModel());
        table_->clearContents();
        table_->setRowCount(0);
        rows_ = GetHelperList();
        table_->setRowCount(int(rows_.size()));
        for (int row = 0; row < int(rows_.size()); ++row) {
            INode* node = rows_[std::size_t(row)];
            const auto active = ReadHelperInt(node, vh_active);
            const auto viewport = ReadHelperInt(node, vh_use_proxy_in_viewport);
            const auto render = ReadHelperInt(node, vh_use_proxy_in_render);
            table_->setItem(row, kColumnName, Cell(QString::fromWCharArray(node->GetName())));
            table_->setItem(row, kColumnActive, Cell(YesNo(active.value_or(1) != 0), true));
            table_->setItem(row, kColumnProxyViewport, Cell(YesNo(viewport.value_or(0) != 0), true));
            table_->setItem(row, kColumnProxyRender, Cell(YesNo(render.value_or(0) != 0), true));
            table_->setItem(row, kColumnFileName, Cell(ToQ(ReadHelperString(node, vh_file_name).value_or(MSTR()))));
            table_->setItem(row, kColumnProxyFileName,
                            Cell(ToQ(ReadHelperString(node, vh_proxy_file_name).value_or(MSTR()))));
            if (ReadHelperInt(node, vh_selected_in_manager).value_or(0))
                table_->selectionModel()->select(table_->model()->index(row, 0),
                                                 QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }
    updating_ = wasUpdating;
    OnSelectionChanged();
}

void VandrelsQtManager::OnSelectionChanged() {
    if (!updating_) {
        std::set<int> selected;
        for (const QModelIndex& index : table_->selectionModel()->selectedRows()) selected.insert(index.row());
        UndoHold hold(kSelectionChangeUndo);
        selectionSync_ = true;
        for (int row = 0; row < int(rows_.size()); ++row) {
            const int want = selected.count(row) ? 1 : 0;
            const auto stored = ReadHelperInt(rows_[std::size_t(row)], vh_selected_in_manager);
            if (stored && *stored != want) WriteHelperInt(rows_[std::size_t(row)], vh_selected_in_manager, want);
        }
        selectionSync_ = false;
        hold.Accept();
    }
    EnableOperations(!table_->selectionModel()->selectedRows().isEmpty());
    RefreshProperties();
}

void VandrelsQtManager::RefreshProperties() {
    const bool wasUpdating = updating_;
    updating_ = true;
    const std::vector<INode*> selected = SelectedHelpers();
    const BoxParam boxes[] = {{vh_active, activeBox_},
                              {vh_use_name_prefix, namePrefixBox_},
                              {vh_use_proxy_in_viewport, proxyViewportBox_},
                              {vh_use_proxy_in_render, proxyRenderBox_},
                              {vh_persist_ref, persistBox_},
                              {vh_overlay, overlayBox_}};
    if (selected.empty()) {
        panel_->setEnabled(false);
        for (QLineEdit* edit : {nameEdit_, fileNameEdit_, proxyFileNameEdit_}) edit->clear();
        for (const BoxParam& b : boxes) b.box->setCheckState(Qt::Unchecked);
        reloadCombo_->setCurrentIndex(-1);
        reloadCombo_->setEnabled(false);
    } else {
        panel_->setEnabled(true);
        const bool one = selected.size() == 1;
        nameEdit_->setEnabled(one);
        nameEdit_->setText(one ? QString::fromWCharArray(selected.front()->GetName()) : "<Multiple Selected>");
        for (const BoxParam& b : boxes) {
            Common<bool> common;
            for (INode* node : selected)
                if (auto v = ReadHelperInt(node, b.param)) common.Add(*v != 0);
            ShowBool(b.box, common);
        }
        Common<std::wstring> file, proxy;
        Common<int> reloadType;
        bool anyPersist = false;
        for (INode* node : selected) {
            file.Add(ReadHelperString(node, vh_file_name).value_or(MSTR()).data());
            proxy.Add(ReadHelperString(node, vh_proxy_file_name).value_or(MSTR()).data());
            if (auto v = ReadHelperInt(node, vh_persist_reload_type)) reloadType.Add(*v);
            anyPersist = anyPersist || ReadHelperInt(node, vh_persist_ref).value_or(0) != 0;
        }
        fileNameEdit_->setText(file.Agreed() ? QString::fromStdWString(*file.value) : QString());
        proxyFileNameEdit_->setText(proxy.Agreed() ? QString::fromStdWString(*proxy.value) : QString());
        const int type = reloadType.Agreed() ? *reloadType.value : -1;
        reloadCombo_->setCurrentIndex(type >= 0 && type <= 2 ? type : -1);
        reloadCombo_->setEnabled(anyPersist);
    }
    updating_ = wasUpdating;
}

bool VandrelsQtManager::WriteSelectedBool(int param, Qt::CheckState state) {
    if (updating_ || state == Qt::PartiallyChecked) return false;
    UndoHold hold(kParameterChangeUndo);
    for (INode* node : SelectedHelpers()) WriteHelperInt(node, param, state == Qt::Checked ? 1 : 0);
    hold.Accept();
    return true;
}

void VandrelsQtManager::OnActiveToggled(Qt::CheckState state) {
    if (WriteSelectedBool(vh_active, state)) PopulateReferences();
}
void VandrelsQtManager::OnUseNamePrefixToggled(Qt::CheckState state) { WriteSelectedBool(vh_use_name_prefix, state); }
void VandrelsQtManager::OnProxyViewportToggled(Qt::CheckState state) {
    if (WriteSelectedBool(vh_use_proxy_in_viewport, state)) PopulateReferences();
}
void VandrelsQtManager::OnProxyRenderToggled(Qt::CheckState state) {
    if (WriteSelectedBool(vh_use_proxy_in_render, state)) PopulateReferences();
}
void VandrelsQtManager::OnPersistToggled(Qt::CheckState state) {
    if (updating_ || state == Qt::PartiallyChecked) return;
    reloadCombo_->setEnabled(state == Qt::Checked);
    WriteSelectedBool(vh_persist_ref, state);
}
void VandrelsQtManager::OnOverlayToggled(Qt::CheckState state) { WriteSelectedBool(vh_overlay, state); }

void VandrelsQtManager::OnReloadTypeChanged(int index) {
    if (updating_ || index < 0) return;
    UndoHold hold(kParameterChangeUndo);
    for (INode* node : SelectedHelpers()) WriteHelperInt(node, vh_persist_reload_type, index);
    hold.Accept();
}

void VandrelsQtManager::OnNameEdited() {
    if (updating_ || !nameEdit_->isModified()) return;
    const std::vector<INode*> selected = SelectedHelpers();
    if (selected.size() != 1) return;
    const QString name = nameEdit_->text().trimmed();
    if (name.isEmpty()) return;
    INode* node = selected.front();
    if (name == QString::fromWCharArray(node->GetName())) {
        nameEdit_->setModified(false);
        return;
    }
    UndoHold hold(kParameterChangeUndo);
    node->SetName(FromQ(name).data());
    hold.Accept();
    nameEdit_->setModified(false);
    PopulateReferences();
}

void VandrelsQtManager::WriteSelectedFileName(QLineEdit* edit, int param) {
    if (updating_ || !edit->isModified()) return;
    const std::vector<INode*> selected = SelectedHelpers();
    const MSTR text = FromQ(edit->text().trimmed());
    bool allEqual = true;
    for (INode* node : selected) allEqual = allEqual && ReadHelperString(node, param).value_or(MSTR()) == text;
    if (selected.empty() || allEqual) {
        edit->setModified(false);
        return;
    }
    UndoHold hold(kParameterChangeUndo);
    for (INode* node : selected) WriteHelperString(node, param, text);
    hold.Accept();
    edit->setModified(false);
    PopulateReferences();
}

void VandrelsQtManager::OnFileNameEdited() { WriteSelectedFileName(fileNameEdit_, vh_file_name); }
void VandrelsQtManager::OnProxyFileNameEdited() { WriteSelectedFileName(proxyFileNameEdit_, vh_proxy_file_name); }

// The open-file dialog of the host (a Qt file dialog in a graphical session), starting at the edit's text.
void VandrelsQtManager::BrowseInto(QLineEdit* edit, int param, const QString& caption) {
    const std::vector<INode*> selected = SelectedHelpers();
    if (selected.empty()) return;
    std::vector<wchar_t> buffer(2048, L'\0');
    const std::wstring title = caption.toStdWString();
    const std::wstring start = edit->text().toStdWString();
    static const wchar_t kFilter[] = L"3ds Max (*.max)\0*.max\0All Files (*.*)\0*.*\0";
    OPENFILENAMEW ofn;
    ofn.lStructSize = sizeof(OPENFILENAMEW);
    ofn.hwndOwner = GetCOREInterface()->GetMAXHWnd();
    ofn.lpstrFilter = kFilter;
    ofn.lpstrFile = buffer.data();
    ofn.nMaxFile = DWORD(buffer.size());
    ofn.lpstrInitialDir = start.c_str();
    ofn.lpstrTitle = title.c_str();
    ofn.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_ENABLESIZING;
    if (!GetOpenFileNameW(&ofn) || !buffer[0]) return;
    UndoHold hold(kParameterChangeUndo);
    for (INode* node : selected) WriteHelperString(node, param, MSTR(buffer.data()));
    hold.Accept();
    PopulateReferences();
}

void VandrelsQtManager::OnBrowseFile() { BrowseInto(fileNameEdit_, vh_file_name, "Select Reference File"); }
void VandrelsQtManager::OnBrowseProxyFile() {
    BrowseInto(proxyFileNameEdit_, vh_proxy_file_name, "Select Proxy File");
}

}  // namespace vandrels
