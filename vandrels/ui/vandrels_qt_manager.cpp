// The manager window's construction, its life (show, hide, close, the host notifications that refresh it, its
// stored geometry) and its keyboard undo and redo.
#include "ui/vandrels_qt_manager.h"

#include "helper/helper_params.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "notify.h"
#include "script/dialog_settings.h"
#include "frame/settings.h"
#include "ui/display_tristate_check_box.h"
#include "ui/manager_icons.h"
#include "ui/no_hover_delegate.h"
#include "ui/vandrels_qt_advanced_reset.h"

#include <QAction>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTableWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace vandrels {

namespace {

VandrelsQtManager* g_manager = nullptr;

int Px(int pixels) { return MaxSDK::UIScaled(pixels); }

// Host notifications that change the list of helpers, and the one that ends the host run.
constexpr int kRefreshNotifications[] = {NOTIFY_SYSTEM_POST_NEW, NOTIFY_SYSTEM_POST_RESET, NOTIFY_FILE_POST_MERGE3,
                                         NOTIFY_FILE_POST_OPEN};

void RefreshOnNotification(void* param, NotifyInfo*) {
    auto* manager = static_cast<VandrelsQtManager*>(param);
    if (manager->isVisible()) manager->PopulateReferences();
}

void SaveGeometryOnShutdown(void* param, NotifyInfo*) { static_cast<VandrelsQtManager*>(param)->SaveGeometry(); }

struct ColumnLayout {
    const char* header;
    int width;
};
constexpr ColumnLayout kColumns[] = {{"Reference", 110}, {"On", 35},         {"PV", 35},
                                   {"PR", 35},         {"File Name", 260}, {"Proxy File Name", 180}};

DisplayTristateCheckBox* MakeBox(const QString& text, const QString& name) {
    auto* box = new DisplayTristateCheckBox(text);
    box->setObjectName(name);
    return box;
}

QPushButton* MakeBrowseButton(const QString& name) {
    auto* button = new QPushButton("...");
    button->setObjectName(name);
    button->setFixedWidth(Px(30));
    button->setDefault(false);
    button->setAutoDefault(false);
    return button;
}

}  // namespace

VandrelsQtManager* VandrelsQtManager::Instance() { return g_manager; }
void VandrelsQtManager::SetInstance(VandrelsQtManager* manager) { g_manager = manager; }

VandrelsQtManager::VandrelsQtManager(QWidget* parent) : QDialog(parent) {
    setObjectName("VandrelsQtManager");
    setWindowTitle("Vandrels");
    setWindowFlags(windowFlags() | Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint);
    setMinimumSize(Px(305), Px(350));
    RestoreGeometry();

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Px(4), Px(4), Px(4), Px(4));
    layout->setSpacing(Px(2));
    BuildMenus();
    layout->setMenuBar(menuBar_);
    BuildToolRow();
    auto* tools = new QHBoxLayout;
    tools->setSpacing(Px(1));
    for (QToolButton* button : {addButton_, reloadButton_, removeButton_, resetButton_, duplicateButton_, mergeButton_})
        tools->addWidget(button);
    tools->addStretch();
    layout->addLayout(tools);
    auto* line = new QFrame;
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    layout->addWidget(line);
    layout->addWidget(BuildPropertyPanel());
    BuildTable();
    layout->addWidget(table_, 1);

    connect(nameEdit_, &QLineEdit::editingFinished, this, &VandrelsQtManager::OnNameEdited);
    connect(fileNameEdit_, &QLineEdit::editingFinished, this, &VandrelsQtManager::OnFileNameEdited);
    connect(proxyFileNameEdit_, &QLineEdit::editingFinished, this, &VandrelsQtManager::OnProxyFileNameEdited);
    connect(browseFileButton_, &QPushButton::clicked, this, &VandrelsQtManager::OnBrowseFile);
    connect(browseProxyButton_, &QPushButton::clicked, this, &VandrelsQtManager::OnBrowseProxyFile);
    connect(activeBox_, &QCheckBox::stateChanged, this, [this](int state) { OnActiveToggled(Qt::CheckState(state)); });
    connect(namePrefixBox_, &QCheckBox::stateChanged, this, [this](int state) { OnUseNamePrefixToggled(Qt::CheckState(state)); });
    connect(proxyViewportBox_, &QCheckBox::stateChanged, this, [this](int state) { OnProxyViewportToggled(Qt::CheckState(state)); });
    connect(proxyRenderBox_, &QCheckBox::stateChanged, this, [this](int state) { OnProxyRenderToggled(Qt::CheckState(state)); });
    connect(persistBox_, &QCheckBox::stateChanged, this, [this](int state) { OnPersistToggled(Qt::CheckState(state)); });
    connect(overlayBox_, &QCheckBox::stateChanged, this, [this](int state) { OnOverlayToggled(Qt::CheckState(state)); });
    connect(reloadCombo_, &QComboBox::currentIndexChanged, this, &VandrelsQtManager::OnReloadTypeChanged);
    connect(table_, &QTableWidget::customContextMenuRequested, this, &VandrelsQtManager::OnContextMenuRequested);
    connect(table_, &QTableWidget::itemSelectionChanged, this, &VandrelsQtManager::OnSelectionChanged);
    connect(showDupNamesAction_, &QAction::triggered, this, &VandrelsQtManager::OnToggleShowDupNamesWarnings);

    // The window filters its own keys and those of its edits (which would otherwise keep Ctrl+Z to themselves).
    installEventFilter(this);
    for (QLineEdit* edit : {nameEdit_, fileNameEdit_, proxyFileNameEdit_}) edit->installEventFilter(this);
    RefreshProperties();
}

VandrelsQtManager::~VandrelsQtManager() {
    UnregisterNotifications();
    if (g_manager == this) g_manager = nullptr;
}

void VandrelsQtManager::BuildMenus() {
    menuBar_ = new QMenuBar(this);
    QMenu* reference = menuBar_->addMenu("&Reference");
    addAction_ = reference->addAction("&Add", this, &VandrelsQtManager::OnAddPressed);
    reloadAction_ = reference->addAction("&Reload", this, &VandrelsQtManager::OnReloadPressed);
    removeAction_ = reference->addAction("&Remove", this, &VandrelsQtManager::OnRemovePressed);
    resetAction_ = reference->addAction("R&eset", this, &VandrelsQtManager::OnResetPressed);
    duplicateAction_ = reference->addAction("&Duplicate", this, &VandrelsQtManager::OnDuplicatePressed);
    mergeAction_ = reference->addAction("&Merge", this, &VandrelsQtManager::OnMergePressed);
    reference->addSeparator();
    closeAction_ = reference->addAction("&Close", this, &QDialog::close);
    QMenu* tools = menuBar_->addMenu("&Tools");
    advancedResetAction_ = tools->addAction("&Advanced Reset", this, &VandrelsQtManager::OnAdvancedReset);
    QMenu* options = menuBar_->addMenu("&Options");
    showDupNamesAction_ = options->addAction("&Show Duplicated Names Warnings");
    showDupNamesAction_->setCheckable(true);
    showDupNamesAction_->setChecked(GetShowDuplicatedNamesWarning());
    QMenu* help = menuBar_->addMenu("&Help");
    helpAction_ = help->addAction("Vandrels &Help...", this, &VandrelsQtManager::OnHelp);
    aboutAction_ = help->addAction("&About", this, &VandrelsQtManager::OnAbout);
    addAction_->setObjectName("AddAction");
    reloadAction_->setObjectName("ReloadAction");
    removeAction_->setObjectName("RemoveAction");
    resetAction_->setObjectName("ResetAction");
    duplicateAction_->setObjectName("DuplicateAction");
    mergeAction_->setObjectName("MergeAction");
    advancedResetAction_->setObjectName("AdvancedResetAction");
    showDupNamesAction_->setObjectName("ShowDupNamesAction");
    helpAction_->setObjectName("HelpAction");
    aboutAction_->setObjectName("AboutAction");
}

QToolButton* VandrelsQtManager::AddToolButton(const QString& icon, const QString& tooltip,
                                              void (VandrelsQtManager::*slot)()) {
    auto* button = new QToolButton(this);
    button->setObjectName(icon + "Button");
    button->setIcon(ManagerIcon(icon));
    button->setIconSize(QSize(Px(20), Px(20)));
    button->setFixedSize(Px(28), Px(28));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setStyleSheet("QToolButton { outline: none; } QToolButton:focus { outline: none; }");
    button->setToolTip(tooltip);
    connect(button, &QToolButton::clicked, this, slot);
    return button;
}

void VandrelsQtManager::BuildToolRow() {
    addButton_ = AddToolButton("Add", "Add Reference", &VandrelsQtManager::OnAddPressed);
    reloadButton_ = AddToolButton("Reload", "Reload Reference", &VandrelsQtManager::OnReloadPressed);
    removeButton_ = AddToolButton("Remove", "Remove Reference", &VandrelsQtManager::OnRemovePressed);
    resetButton_ = AddToolButton("Reset", "Reset Reference", &VandrelsQtManager::OnResetPressed);
    duplicateButton_ = AddToolButton("Duplicate", "Duplicate Reference", &VandrelsQtManager::OnDuplicatePressed);
    mergeButton_ = AddToolButton("Merge", "Merge Reference", &VandrelsQtManager::OnMergePressed);
    EnableOperations(false);
}

QWidget* VandrelsQtManager::BuildPropertyPanel() {
    panel_ = new QWidget(this);
    panel_->setObjectName("PropertyPanel");
    auto* layout = new QVBoxLayout(panel_);
    layout->setContentsMargins(0, Px(4), 0, Px(2));
    layout->setSpacing(Px(2));

    activeBox_ = MakeBox("Active", "ActiveBox");
    namePrefixBox_ = MakeBox("Use Name Prefix", "UseNamePrefixBox");
    auto* switches = new QHBoxLayout;
    switches->setSpacing(Px(10));
    switches->addSpacing(Px(8));
    switches->addWidget(activeBox_);
    switches->addWidget(namePrefixBox_);
    switches->addStretch();
    layout->addLayout(switches);

    nameEdit_ = new QLineEdit;
    nameEdit_->setObjectName("NameEdit");
    fileNameEdit_ = new QLineEdit;
    fileNameEdit_->setObjectName("FileNameEdit");
    browseFileButton_ = MakeBrowseButton("BrowseFileButton");
    auto* grid = new QGridLayout;
    grid->setContentsMargins(Px(8), 0, Px(9), 0);
    grid->setHorizontalSpacing(Px(4));
    grid->setVerticalSpacing(Px(2));
    grid->addWidget(new QLabel("Name:"), 0, 0);
    grid->addWidget(nameEdit_, 0, 1, 1, 2);
    grid->addWidget(new QLabel("File Name:"), 1, 0);
    grid->addWidget(fileNameEdit_, 1, 1);
    grid->addWidget(browseFileButton_, 1, 2);
    layout->addLayout(grid);
    layout->addSpacing(Px(6));

    proxyGroup_ = new QGroupBox("Proxy");
    auto* proxy = new QVBoxLayout(proxyGroup_);
    proxy->setContentsMargins(Px(3), Px(2), Px(3), Px(2));
    proxy->setSpacing(Px(1));
    proxyViewportBox_ = MakeBox("Use in Viewport", "UseInViewportBox");
    proxyRenderBox_ = MakeBox("Use in Render", "UseInRenderBox");
    auto* uses = new QHBoxLayout;
    uses->setSpacing(Px(10));
    uses->addWidget(proxyViewportBox_);
    uses->addWidget(proxyRenderBox_);
    uses->addStretch();
    proxy->addLayout(uses);
    proxyFileNameEdit_ = new QLineEdit;
    proxyFileNameEdit_->setObjectName("ProxyFileNameEdit");
    browseProxyButton_ = MakeBrowseButton("BrowseProxyFileButton");
    auto* proxyFile = new QHBoxLayout;
    proxyFile->setSpacing(Px(4));
    proxyFile->addWidget(new QLabel("Proxy File Name:"));
    proxyFile->addWidget(proxyFileNameEdit_);
    proxyFile->addWidget(browseProxyButton_);
    proxy->addLayout(proxyFile);
    layout->addWidget(proxyGroup_);

    advancedGroup_ = new QGroupBox("Advanced");
    auto* advanced = new QVBoxLayout(advancedGroup_);
    advanced->setContentsMargins(Px(4), Px(2), Px(4), 0);
    advanced->setSpacing(Px(1));
    persistBox_ = MakeBox("Persist in Scene", "PersistInSceneBox");
    reloadCombo_ = new QComboBox;
    reloadCombo_->setObjectName("ReloadCombo");
    reloadCombo_->addItems({"Reload always", "Reload if file has changed", "Reload manually"});
    auto* persist = new QHBoxLayout;
    persist->setSpacing(Px(6));
    persist->addWidget(persistBox_);
    persist->addSpacing(Px(10));
    persist->addWidget(new QLabel("Reload:"));
    persist->addWidget(reloadCombo_);
    persist->addStretch();
    advanced->addLayout(persist);
    overlayBox_ = MakeBox("Overlay", "OverlayBox");
    auto* overlay = new QHBoxLayout;
    overlay->addWidget(overlayBox_);
    overlay->addStretch();
    advanced->addLayout(overlay);
    layout->addWidget(advancedGroup_);
    return panel_;
}

void VandrelsQtManager::BuildTable() {
    table_ = new QTableWidget(0, int(std::size(kColumns)), this);
    table_->setObjectName("ReferenceTable");
    QStringList headers;
    for (const ColumnLayout& column : kColumns) headers << column.header;
    table_->setHorizontalHeaderLabels(headers);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    table_->setAlternatingRowColors(false);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setDefaultSectionSize(Px(19));
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setStyleSheet("QTableWidget { outline: none; } QTableWidget::item { outline: none; }");
    table_->setItemDelegate(new NoHoverDelegate(table_));
    QHeaderView* header = table_->horizontalHeader();
    QFont font = header->font();
    font.setBold(false);
    header->setFont(font);
    header->setHighlightSections(false);
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setStretchLastSection(true);
    for (int i = 0; i < int(std::size(kColumns)); ++i) table_->setColumnWidth(i, Px(kColumns[i].width));
    table_->setContextMenuPolicy(Qt::CustomContextMenu);
}

void VandrelsQtManager::EnableOperations(bool enabled) {
    for (QToolButton* button : {reloadButton_, removeButton_, resetButton_, duplicateButton_, mergeButton_})
        if (button) button->setEnabled(enabled);
    for (QAction* action : {reloadAction_, removeAction_, resetAction_, duplicateAction_, mergeAction_})
        if (action) action->setEnabled(enabled);
}

// ---- Geometry and life.

void VandrelsQtManager::RestoreGeometry() {
    const ManagerGeometry geometry = ReadManagerGeometry();
    resize(geometry.sizeX, geometry.sizeY);
    move(geometry.posX, geometry.posY);
}

void VandrelsQtManager::SaveGeometry() {
    if (isMinimized()) return;
    ManagerGeometry geometry;
    geometry.sizeX = width();
    geometry.sizeY = height();
    geometry.posX = frameGeometry().x();
    geometry.posY = frameGeometry().y();
    if (geometry.sizeX >= 1 && geometry.sizeY >= 1) WriteManagerGeometry(geometry);
}

void VandrelsQtManager::RegisterNotifications() {
    if (notificationsRegistered_) return;
    for (int code : kRefreshNotifications) RegisterNotification(&RefreshOnNotification, this, code);
    RegisterNotification(&SaveGeometryOnShutdown, this, NOTIFY_SYSTEM_SHUTDOWN);
    notificationsRegistered_ = true;
}

void VandrelsQtManager::UnregisterNotifications() {
    if (!notificationsRegistered_) return;
    UnRegisterNotification(&RefreshOnNotification, this);
    UnRegisterNotification(&SaveGeometryOnShutdown, this);
    notificationsRegistered_ = false;
}

void VandrelsQtManager::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    RestoreGeometry();
    RegisterNotifications();
    showDupNamesAction_->setChecked(GetShowDuplicatedNamesWarning());
    PopulateReferences();
}

void VandrelsQtManager::LeaveWindow() {
    if (VandrelsQtAdvancedReset* reset = VandrelsQtAdvancedReset::Instance(); reset && reset->isVisible())
        reset->close();
    SaveGeometry();
    UnregisterNotifications();
}

void VandrelsQtManager::hideEvent(QHideEvent* event) {
    LeaveWindow();
    QDialog::hideEvent(event);
}

void VandrelsQtManager::closeEvent(QCloseEvent* event) {
    LeaveWindow();
    QDialog::closeEvent(event);
}

// Ctrl+Z and the redo keys: a focused line edit with typing to undo (or redo) keeps them, else the host undoes.
bool VandrelsQtManager::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        const bool undo = key->matches(QKeySequence::Undo);
        const bool redo = !undo && (key->matches(QKeySequence::Redo) ||
                                    key->keyCombination() == QKeyCombination(Qt::ControlModifier | Qt::ShiftModifier,
                                                                              Qt::Key_Z));
        if (undo || redo) {
            // The edit the key went to, else the window's focused one.
            auto* edit = qobject_cast<QLineEdit*>(watched);
            if (!edit) edit = qobject_cast<QLineEdit*>(focusWidget());
            if (edit && isAncestorOf(edit) && (undo ? edit->isUndoAvailable() : edit->isRedoAvailable())) return false;
            ExecuteMAXScriptScript(undo ? L"max undo" : L"max redo", MAXScript::ScriptSource::Embedded, TRUE);
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

}  // namespace vandrels
