// The advanced reset dialog: its boxes as the user clicks them, the choices it keeps in the INI file, and the
// reset it runs, which must be the one the scripting interface's AdvancedReset runs for the same choices.
#include "window_test_support.h"

#include "hold.h"
#include "platform/dialog_service.h"
#include "scene_compare.h"
#include "winshim.h"

#include <QAction>
#include <QApplication>
#include <QGroupBox>
#include <QPushButton>
#include <QRadioButton>

namespace {

using uitest::ClickMark;
using uitest::Setting;
using uitest::Truth;
using vtest::Script;


const char* const kCategoryBoxes[] = {"GeometryBox", "ShapesBox",         "LightsBox",          "CamerasBox",
                                      "HelpersBox",  "SpaceWarpsBox",     "ParticleSystemsBox", "BoneObjectsBox"};
const char* const kParameterBoxes[] = {"BaseObjectBox", "ModifiersBox", "TransformBox", "MaterialBox",
                                       "ObjectPropertiesBox", "ParentingBox", "NameBox", "LayerBox",
                                       "DeletedNodesBox"};

class AdvancedResetDialog : public uitest::WindowTest {
protected:
    AdvancedResetDialog() : WindowTest("vandrels_advanced_reset_dialog") {}
    void TearDown() override {
        if (dialog_) dialog_->close();
        WindowTest::TearDown();
    }
    QDialog* OpenDialog() {
        OpenManager();
        Find<QAction>("AdvancedResetAction")->trigger();
        for (QWidget* widget : QApplication::allWidgets())
            if (widget->objectName() == "VandrelsQtAdvancedReset") dialog_ = qobject_cast<QDialog*>(widget);
        EXPECT_TRUE(dialog_ && dialog_->isVisible());
        return dialog_;
    }
    template <typename T>
    T* In(const char* name) {
        return uitest::FindIn<T>(dialog_, name);
    }
    QDialog* dialog_ = nullptr;
};

// The boxes with an empty INI section, after a switch of mode, and under the "All" boxes.
TEST_F(AdvancedResetDialog, BoxesFollowTheModeAndTheAllBoxes) {
    OpenDialog();
    EXPECT_TRUE(In<QRadioButton>("SelectedReferencesButton")->isChecked());
    for (const char* name : kCategoryBoxes) EXPECT_TRUE(In<QCheckBox>(name)->isChecked()) << name;
    for (const char* name : kParameterBoxes) EXPECT_TRUE(In<QCheckBox>(name)->isChecked()) << name;
    auto* categoryAll = In<QCheckBox>("CategoryAllBox");
    auto* parametersAll = In<QCheckBox>("ParametersAllBox");
    EXPECT_EQ(categoryAll->checkState(), Qt::Checked);
    EXPECT_EQ(parametersAll->checkState(), Qt::Checked);

    ClickMark(In<QRadioButton>("SelectedNodesButton"));
    EXPECT_FALSE(In<QGroupBox>("CategoryGroup")->isEnabled());
    EXPECT_FALSE(In<QCheckBox>("DeletedNodesBox")->isEnabled());
    EXPECT_TRUE(In<QCheckBox>("DeletedNodesBox")->isChecked());
    EXPECT_TRUE(In<QCheckBox>("TransformBox")->isEnabled());
    ClickMark(In<QRadioButton>("SelectedReferencesButton"));
    EXPECT_TRUE(In<QGroupBox>("CategoryGroup")->isEnabled());
    EXPECT_TRUE(In<QCheckBox>("DeletedNodesBox")->isEnabled());

    ClickMark(In<QCheckBox>("LightsBox"));
    EXPECT_EQ(categoryAll->checkState(), Qt::PartiallyChecked);
    ClickMark(categoryAll);
    EXPECT_EQ(categoryAll->checkState(), Qt::Checked);
    EXPECT_TRUE(In<QCheckBox>("LightsBox")->isChecked());
    ClickMark(parametersAll);
    for (const char* name : kParameterBoxes) EXPECT_FALSE(In<QCheckBox>(name)->isChecked()) << name;
    EXPECT_EQ(parametersAll->checkState(), Qt::Unchecked);
}

// Confirming in nodes mode with no node selected changes nothing but keeps the choices; the question names nodes.
TEST_F(AdvancedResetDialog, ConfirmingStoresTheChoicesAndNamesTheMode) {
    AddReference(L"chairs");
    Script(L"$Chair.pos = [50, 0, 0]; clearSelection()");
    OpenDialog();
    ClickMark(In<QRadioButton>("SelectedNodesButton"));
    ClickMark(In<QCheckBox>("NameBox"));
    hostrt::DialogService::Instance().PushAnswer(IDYES);
    ClickMark(In<QPushButton>("ResetButton"));
    const auto box = hostrt::DialogService::Instance().MessageBoxes().back().request;
    EXPECT_EQ(box.title, L"Advance Reset");
    EXPECT_EQ(box.text, L"Are you sure you want to reset the selected nodes?, this operation can't be undone.");
    EXPECT_TRUE(Truth(L"$Chair.pos == [50, 0, 0]"));
    EXPECT_EQ(Setting(L"AdvReset_Selection"), L"2");
    EXPECT_EQ(Setting(L"AdvReset_UIName"), L"0");
    EXPECT_EQ(Setting(L"AdvReset_UILayer"), L"1");

    // Shown again, the dialog reads its choices back.
    dialog_->close();
    Script(L"SetINISetting (getMAXIniFile()) \"Vandrels\" \"AdvReset_Selection\" \"1\"");
    OpenDialog();
    EXPECT_TRUE(In<QRadioButton>("SelectedReferencesButton")->isChecked());
    EXPECT_FALSE(In<QCheckBox>("NameBox")->isChecked());
}

// The dialog's reset of the selected reference with only Transform chosen is the script's
// `Vandrels.AdvancedReset selection:1 parameters:#{3}`: the same scene comes out, the move is gone and the
// colour edit stays.
TEST_F(AdvancedResetDialog, ResetsWhatTheScriptResetsForTheSameChoices) {
    const std::wstring shot = L"$Chair.pos = [50, 0, 0]; $Chair.wirecolor = color 200 0 0;"
                              L"(Vandrels.GetVandrel 1).baseObject.SelectedInManager = true";
    AddReference(L"chairs");
    Script(shot);
    theHold.FlushUndoBuffer();
    OpenDialog();
    ClickMark(In<QCheckBox>("ParametersAllBox"));  // all off
    ClickMark(In<QCheckBox>("TransformBox"));
    hostrt::DialogService::Instance().PushAnswer(IDYES);
    ClickMark(In<QPushButton>("ResetButton"));
    EXPECT_TRUE(Truth(L"$Chair.pos == [0, 0, 0]"));
    EXPECT_TRUE(Truth(L"$Chair.wirecolor == color 200 0 0"));
    const hostrt::test::SceneSnapshot byDialog = hostrt::test::TakeSnapshot();
    dialog_->close();

    Script(L"resetMaxFile #noPrompt");
    AddReference(L"chairs");
    Script(shot);
    theHold.FlushUndoBuffer();
    Script(L"Vandrels.AdvancedReset selection:1 parameters:#{3}");
    const hostrt::test::SceneSnapshot byScript = hostrt::test::TakeSnapshot();
    EXPECT_EQ(hostrt::test::JoinDifferences(hostrt::test::CompareSnapshots(byDialog, byScript)), "");
}

}  // namespace
