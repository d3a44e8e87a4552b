#include "ui/vandrels_qt_advanced_reset.h"

#include "bitarray.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "script/advanced_reset.h"
#include "script/dialog_settings.h"
#include "ui/display_tristate_check_box.h"
#include "ui/vandrels_qt_manager.h"
#include "winshim.h"

#include <QButtonGroup>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>

namespace vandrels {

namespace {

VandrelsQtAdvancedReset* g_dialog = nullptr;

int Px(int pixels) { return MaxSDK::UIScaled(pixels); }

constexpr int kReferencesMode = 1, kNodesMode = 2;

const char* const kCategoryTexts[kResetCategoryCount] = {"Geometry", "Shapes",     "Lights",           "Cameras",
                                                         "Helpers",  "Space Warps", "Particle Systems", "Bone Objects"};
const char* const kParameterTexts[kResetParameterCount] = {
    "Base Object", "Modifiers", "Transform", "Material", "Object Properties", "Parenting", "Name", "Layer",
    "Deleted Nodes"};
constexpr int kDeletedNodes = 8;  // position of "Deleted Nodes" among the parameter boxes

// Checked when every box is, unchecked when none is, partially checked otherwise (disabled boxes count).
Qt::CheckState Summary(const std::vector<QCheckBox*>& boxes) {
    int checked = 0;
    for (QCheckBox* box : boxes) checked += box->isChecked();
    if (checked == int(boxes.size())) return Qt::Checked;
    return checked == 0 ? Qt::Unchecked : Qt::PartiallyChecked;
}

BitArray Bits(const std::vector<QCheckBox*>& boxes) {
    BitArray bits(int(boxes.size()));
    for (int i = 0; i < int(boxes.size()); ++i)
        if (boxes[std::size_t(i)]->isChecked()) bits.Set(i);
    return bits;
}

}  // namespace

VandrelsQtAdvancedReset* VandrelsQtAdvancedReset::Instance() { return g_dialog; }
void VandrelsQtAdvancedReset::SetInstance(VandrelsQtAdvancedReset* dialog) { g_dialog = dialog; }

VandrelsQtAdvancedReset::VandrelsQtAdvancedReset(QWidget* parent) : QDialog(parent) {
    setObjectName("VandrelsQtAdvancedReset");
    setWindowTitle("Vandrels Advanced Reset");
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint | Qt::CustomizeWindowHint);
    setModal(false);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Px(10), Px(10), Px(10), Px(10));
    layout->setSpacing(Px(8));

    auto* selection = new QGroupBox("Selection:");
    auto* selectionLayout = new QVBoxLayout(selection);
    selectionLayout->setContentsMargins(Px(10), Px(6), Px(10), Px(6));
    selectionLayout->setSpacing(Px(4));
    referencesButton_ = new QRadioButton("Selected References");
    referencesButton_->setObjectName("SelectedReferencesButton");
    nodesButton_ = new QRadioButton("Selected Nodes");
    nodesButton_->setObjectName("SelectedNodesButton");
    referencesButton_->setChecked(true);
    selectionGroup_ = new QButtonGroup(this);
    selectionGroup_->setExclusive(true);
    selectionGroup_->addButton(referencesButton_, kReferencesMode);
    selectionGroup_->addButton(nodesButton_, kNodesMode);
    selectionLayout->addWidget(referencesButton_);
    selectionLayout->addWidget(nodesButton_);
    layout->addWidget(selection);

    categoryGroup_ = BuildBoxGroup("Category:", kCategoryTexts, kResetCategoryCount, 4, categoryAll_, categoryBoxes_);
    categoryGroup_->setObjectName("CategoryGroup");
    categoryAll_->setObjectName("CategoryAllBox");
    layout->addWidget(categoryGroup_);
    parameterGroup_ =
        BuildBoxGroup("Parameters:", kParameterTexts, kResetParameterCount, 5, parameterAll_, parameterBoxes_);
    parameterGroup_->setObjectName("ParametersGroup");
    parameterAll_->setObjectName("ParametersAllBox");
    layout->addWidget(parameterGroup_);

    auto* buttons = new QHBoxLayout;
    buttons->setContentsMargins(0, Px(4), 0, 0);
    buttons->setSpacing(Px(10));
    resetButton_ = new QPushButton("Reset");
    resetButton_->setObjectName("ResetButton");
    closeButton_ = new QPushButton("Close");
    closeButton_->setObjectName("CloseButton");
    buttons->addWidget(resetButton_);
    buttons->addWidget(closeButton_);
    layout->addLayout(buttons);
    connect(resetButton_, &QPushButton::clicked, this, &VandrelsQtAdvancedReset::onResetPressed);
    connect(closeButton_, &QPushButton::clicked, this, &QDialog::close);

    connect(referencesButton_, &QRadioButton::toggled, this, &VandrelsQtAdvancedReset::onSelectionModeChanged);
    connect(nodesButton_, &QRadioButton::toggled, this, &VandrelsQtAdvancedReset::onSelectionModeChanged);
    connect(categoryAll_, &QCheckBox::stateChanged, this,
            [this](int state) { onCategoryAllToggled(Qt::CheckState(state)); });
    for (QCheckBox* box : categoryBoxes_)
        connect(box, &QCheckBox::stateChanged, this, &VandrelsQtAdvancedReset::onCategoryCheckChanged);
    connect(parameterAll_, &QCheckBox::stateChanged, this,
            [this](int state) { onParametersAllToggled(Qt::CheckState(state)); });
    for (QCheckBox* box : parameterBoxes_)
        connect(box, &QCheckBox::stateChanged, this, &VandrelsQtAdvancedReset::onParametersCheckChanged);
    installEventFilter(this);
    // 300 x 420 fits the boxes in the host's own 8-point dialog font; a larger font grows the dialog rather than
    // squeezing its rows over each other.
    const QSize needed = layout->totalMinimumSize();
    setFixedSize(std::max(Px(300), needed.width()), std::max(Px(420), needed.height()));
}

VandrelsQtAdvancedReset::~VandrelsQtAdvancedReset() {
    if (g_dialog == this) g_dialog = nullptr;
}

QGroupBox* VandrelsQtAdvancedReset::BuildBoxGroup(const QString& title, const char* const* texts, int count,
                                                  int firstColumnRows, DisplayTristateCheckBox*& all,
                                                  std::vector<QCheckBox*>& boxes) {
    auto* group = new QGroupBox(title);
    auto* layout = new QVBoxLayout(group);
    layout->setContentsMargins(Px(10), Px(6), Px(10), Px(6));
    layout->setSpacing(Px(4));
    all = new DisplayTristateCheckBox("All");
    layout->addWidget(all);
    auto* grid = new QGridLayout;
    grid->setSpacing(Px(4));
    grid->setContentsMargins(0, 0, 0, 0);
    for (int i = 0; i < count; ++i) {
        auto* box = new QCheckBox(texts[i]);
        box->setObjectName(QString(texts[i]).remove(' ') + "Box");
        boxes.push_back(box);
        grid->addWidget(box, i < firstColumnRows ? i : i - firstColumnRows, i < firstColumnRows ? 0 : 1);
    }
    layout->addLayout(grid);
    return group;
}

void VandrelsQtAdvancedReset::Update() {
    updating_ = true;
    const bool references = referencesButton_->isChecked();
    categoryGroup_->setEnabled(references);
    categoryAll_->setEnabled(references);
    for (QCheckBox* box : categoryBoxes_) box->setEnabled(references);
    parameterAll_->setEnabled(true);
    for (QCheckBox* box : parameterBoxes_) box->setEnabled(true);
    parameterBoxes_[kDeletedNodes]->setEnabled(references);
    categoryAll_->setCheckState(Summary(categoryBoxes_));
    parameterAll_->setCheckState(Summary(parameterBoxes_));
    updating_ = false;
}

void VandrelsQtAdvancedReset::onSelectionModeChanged() {
    if (!updating_) Update();
}
void VandrelsQtAdvancedReset::onCategoryCheckChanged() {
    if (!updating_) Update();
}
void VandrelsQtAdvancedReset::onParametersCheckChanged() {
    if (!updating_) Update();
}

void VandrelsQtAdvancedReset::SetAll(std::vector<QCheckBox*>& boxes, Qt::CheckState state) {
    if (updating_) return;
    updating_ = true;
    for (QCheckBox* box : boxes) box->setChecked(state == Qt::Checked);
    updating_ = false;
    Update();
}

void VandrelsQtAdvancedReset::onCategoryAllToggled(Qt::CheckState state) { SetAll(categoryBoxes_, state); }
void VandrelsQtAdvancedReset::onParametersAllToggled(Qt::CheckState state) { SetAll(parameterBoxes_, state); }

void VandrelsQtAdvancedReset::LoadSettings() {
    updating_ = true;
    const AdvancedResetChoices choices = ReadAdvancedResetChoices();
    (choices.selection == kNodesMode ? nodesButton_ : referencesButton_)->setChecked(true);
    for (int i = 0; i < kResetCategoryCount; ++i) categoryBoxes_[std::size_t(i)]->setChecked(choices.categories[i]);
    for (int i = 0; i < kResetParameterCount; ++i) parameterBoxes_[std::size_t(i)]->setChecked(choices.parameters[i]);
    updating_ = false;
    Update();
}

void VandrelsQtAdvancedReset::SaveSettings() {
    AdvancedResetChoices choices;
    choices.selection = nodesButton_->isChecked() ? kNodesMode : kReferencesMode;
    for (int i = 0; i < kResetCategoryCount; ++i) choices.categories[i] = categoryBoxes_[std::size_t(i)]->isChecked();
    for (int i = 0; i < kResetParameterCount; ++i) choices.parameters[i] = parameterBoxes_[std::size_t(i)]->isChecked();
    WriteAdvancedResetChoices(choices);
}

void VandrelsQtAdvancedReset::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    LoadSettings();
}

void VandrelsQtAdvancedReset::closeEvent(QCloseEvent* event) {
    SaveSettings();
    QDialog::closeEvent(event);
}

void VandrelsQtAdvancedReset::onResetPressed() {
    const int selection = referencesButton_->isChecked() ? kReferencesMode : kNodesMode;
    const std::wstring text = L"Are you sure you want to reset the selected " +
                              std::wstring(selection == kReferencesMode ? L"references" : L"nodes") +
                              L"?, this operation can't be undone.";
    if (MessageBoxW(GetCOREInterface()->GetMAXHWnd(), text.c_str(), L"Advance Reset",
                    MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES)
        return;
    const BitArray categories = Bits(categoryBoxes_);
    const BitArray parameters = Bits(parameterBoxes_);
    SaveSettings();
    AdvancedReset(selection, &categories, &parameters, nullptr, nullptr);
    if (VandrelsQtManager* manager = VandrelsQtManager::Instance(); manager && manager->isVisible())
        manager->PopulateReferences();
}

// The undo keys always go to the host here, whichever widget has the focus.
bool VandrelsQtAdvancedReset::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        const bool undo = key->matches(QKeySequence::Undo);
        const bool redo = !undo && (key->matches(QKeySequence::Redo) ||
                                    key->keyCombination() == QKeyCombination(Qt::ControlModifier | Qt::ShiftModifier,
                                                                              Qt::Key_Z));
        if (undo || redo) {
            ExecuteMAXScriptScript(undo ? L"max undo" : L"max redo", MAXScript::ScriptSource::Embedded, TRUE);
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

}  // namespace vandrels
