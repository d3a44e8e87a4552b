// The manager window: a non-modal Qt dialog over the host's main window that lists every reference helper of the
// scene, shows the parameters of the selected ones in a panel above the table (mixed values as partially checked
// boxes and blank edits), writes them under undo and runs the reference operations from its menus, tool buttons
// and the table's context menu. It owns nothing of the scene; the table's selection is kept in the helpers'
// SelectedInManager parameter, so undo brings it back. One window per host run, hidden (never deleted) on close.
#pragma once

#include "inode.h"

#include <QDialog>

#include <vector>

class QAction;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLineEdit;
class QMenu;
class QMenuBar;
class QPushButton;
class QTableWidget;
class QToolButton;

namespace vandrels {

class DisplayTristateCheckBox;

class VandrelsQtManager : public QDialog {
    Q_OBJECT
public:
    explicit VandrelsQtManager(QWidget* parent = nullptr);
    ~VandrelsQtManager() override;

    // The one window of this host run (created by OpenVandrelsManager), or null.
    static VandrelsQtManager* Instance();
    static void SetInstance(VandrelsQtManager* manager);

    // Stores the window's size and place in the INI file (nothing while it is minimised).
    void SaveGeometry();
    // The helper nodes of the selected rows, in row order.
    std::vector<INode*> SelectedHelpers() const;

public slots:
    void PopulateReferences();
    void OnSelectionChanged();
    void RefreshProperties();
    void OnAddPressed();
    void OnReloadPressed();
    void OnRemovePressed();
    void OnResetPressed();
    void OnDuplicatePressed();
    void OnMergePressed();
    void OnAdvancedReset();
    void OnToggleShowDupNamesWarnings(bool checked);
    void OnHelp();
    void OnAbout();
    void OnContextMenuRequested(QPoint pos);
    void OnContextMenuOpen();
    void OnContextMenuOpenNewSession();
    void OnContextMenuRevealInExplorer();
    void OnContextMenuOverwrite();
    void OnContextMenuSaveAs();
    void OnContextMenuSelectNodes();
    void OnContextMenuShowDupNames();
    void OnNameEdited();
    void OnFileNameEdited();
    void OnProxyFileNameEdited();
    void OnBrowseFile();
    void OnBrowseProxyFile();
    void OnActiveToggled(Qt::CheckState state);
    void OnUseNamePrefixToggled(Qt::CheckState state);
    void OnProxyViewportToggled(Qt::CheckState state);
    void OnProxyRenderToggled(Qt::CheckState state);
    void OnPersistToggled(Qt::CheckState state);
    void OnOverlayToggled(Qt::CheckState state);
    void OnReloadTypeChanged(int index);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void BuildMenus();
    void BuildToolRow();
    QWidget* BuildPropertyPanel();
    void BuildTable();
    QToolButton* AddToolButton(const QString& icon, const QString& tooltip, void (VandrelsQtManager::*slot)());
    void RestoreGeometry();
    void RegisterNotifications();
    void UnregisterNotifications();
    void LeaveWindow();
    void EnableOperations(bool enabled);
    // The box slots' common part: writes the parameter on every selected helper under one undo step.
    bool WriteSelectedBool(int param, Qt::CheckState state);
    void WriteSelectedFileName(QLineEdit* edit, int param);
    void BrowseInto(QLineEdit* edit, int param, const QString& caption);
    // Asks a Yes/No question whose default is No; true for Yes.
    bool Confirm(const wchar_t* title, const wchar_t* text, bool warning = false);

    // Menus and actions.
    QMenuBar* menuBar_ = nullptr;
    QAction* addAction_ = nullptr;
    QAction* reloadAction_ = nullptr;
    QAction* removeAction_ = nullptr;
    QAction* resetAction_ = nullptr;
    QAction* duplicateAction_ = nullptr;
    QAction* mergeAction_ = nullptr;
    QAction* closeAction_ = nullptr;
    QAction* advancedResetAction_ = nullptr;
    QAction* showDupNamesAction_ = nullptr;
    QAction* helpAction_ = nullptr;
    QAction* aboutAction_ = nullptr;
    // Tool buttons.
    QToolButton* addButton_ = nullptr;
    QToolButton* reloadButton_ = nullptr;
    QToolButton* removeButton_ = nullptr;
    QToolButton* resetButton_ = nullptr;
    QToolButton* duplicateButton_ = nullptr;
    QToolButton* mergeButton_ = nullptr;
    // Property panel.
    QWidget* panel_ = nullptr;
    DisplayTristateCheckBox* activeBox_ = nullptr;
    DisplayTristateCheckBox* namePrefixBox_ = nullptr;
    DisplayTristateCheckBox* proxyViewportBox_ = nullptr;
    DisplayTristateCheckBox* proxyRenderBox_ = nullptr;
    DisplayTristateCheckBox* persistBox_ = nullptr;
    DisplayTristateCheckBox* overlayBox_ = nullptr;
    QLineEdit* nameEdit_ = nullptr;
    QLineEdit* fileNameEdit_ = nullptr;
    QLineEdit* proxyFileNameEdit_ = nullptr;
    QPushButton* browseFileButton_ = nullptr;
    QPushButton* browseProxyButton_ = nullptr;
    QGroupBox* proxyGroup_ = nullptr;
    QGroupBox* advancedGroup_ = nullptr;
    QComboBox* reloadCombo_ = nullptr;
    QTableWidget* table_ = nullptr;

    std::vector<INode*> rows_;  // the helper node of each row
    bool updating_ = false;
    bool selectionSync_ = false;
    bool notificationsRegistered_ = false;
};

}  // namespace vandrels
