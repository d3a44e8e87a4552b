// The host window of a graphical session as a user meets it: a line typed into the listener runs and shows its
// result, and the selected reference helper's rollout in the command panel edits the helper: its boxes write
// the parameters, its "..." button picks the file through the open-file dialog, its Reload button reloads. The
// sample Dial helper's rollout shows that spinners and drop-down lists write their parameters as one undo step
// each and follow changes made from script.
#include "window_test_support.h"

#include "Qt/QmaxMainWindow.h"
#include "hold.h"
#include "inode.h"
#include "maxapi.h"
#include "object.h"
#include "platform/file_dialog_service.h"
#include "qt/scaled_style.h"

#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStyleOptionButton>
#include <QTest>
#include <QTreeWidget>

namespace {

using uitest::ClickMark;
using uitest::Truth;
using vtest::Node;
using vtest::RunInt;
using vtest::Script;

// The rollout sample's helper class (tests/ui/plugin).
constexpr Class_ID kDialClassID{0x5A3D0101, 0x00000001};

class HostWindow : public uitest::WindowTest {
protected:
    HostWindow() : WindowTest("vandrels_host_window") {}
    void SetUp() override {
        WindowTest::SetUp();
        window_ = GetCOREInterface()->GetQmaxMainWindow();
        ASSERT_TRUE(window_);
        window_->show();
    }
    void TearDown() override {
        Type("clearSelection()");
        window_->hide();
        WindowTest::TearDown();
    }
    // Types a line into the listener and lets the window catch up with the scene.
    void Type(const char* line) {
        auto* edit = window_->findChild<QLineEdit*>("ListenerLine");
        ASSERT_TRUE(edit);
        edit->setFocus();
        QTest::keyClicks(edit, line);
        QTest::keyClick(edit, Qt::Key_Return);
        QApplication::processEvents();
    }
    template <typename T>
    T* Control(int id) {
        return uitest::FindIn<T>(window_, QString("Control%1").arg(id));
    }
    QMainWindow* window_ = nullptr;
};

TEST_F(HostWindow, ListenerLineRunsAndTheTreeFollows) {
    Type("box name:\"Crate\"; 1 + 2");
    const QString output = window_->findChild<QPlainTextEdit*>("ListenerOutput")->toPlainText();
    EXPECT_TRUE(output.contains("box name:\"Crate\"; 1 + 2\n3\n")) << output.toStdString();
    auto* tree = window_->findChild<QTreeWidget*>("SceneTree");
    ASSERT_EQ(tree->topLevelItemCount(), 1);
    EXPECT_TRUE(tree->topLevelItem(0)->text(0).startsWith("Crate"));
}

TEST_F(HostWindow, HelperRolloutEditsTheSelectedHelper) {
    AddReference(L"chairs");
    Type("select $chairs");
    auto* active = Control<QCheckBox>(1007);
    ASSERT_TRUE(active);
    EXPECT_TRUE(active->isChecked());
    ClickMark(active);
    EXPECT_FALSE(Truth(L"$chairs.baseObject.Active"));
    EXPECT_FALSE(Node(L"Chair"));  // unloaded
    ClickMark(active);
    EXPECT_TRUE(Node(L"Chair"));

    // The rollout's "..." picks another file; the helper loads it.
    hostrt::FileDialogService::Instance().PushAnswer({File(L"lamps").data()});
    QTest::mouseClick(Control<QPushButton>(1303), Qt::LeftButton);
    const hostrt::FileDialogRecord pick = hostrt::FileDialogService::Instance().Records().back();
    EXPECT_EQ(pick.request.title, L"Select File for Reference chairs");
    // Picked headless too, the dialog ran the library's template: the folder went to the top of its history.
    EXPECT_TRUE(pick.request.hasHook && pick.request.hasTemplate);
    EXPECT_EQ(uitest::Setting(L"Path1", L"Vandrels History"), MSTR::FromUTF8(folder_.string()).data());
    EXPECT_TRUE(Node(L"Lamp"));
    EXPECT_FALSE(Node(L"Chair"));
    EXPECT_EQ(Control<QLineEdit>(1301)->text(), QString::fromWCharArray(File(L"lamps").data()));

    // An edit survives the rollout's Reload; the radio buttons write the reload type.
    Script(L"$Lamp.wirecolor = color 0 200 0");
    QTest::mouseClick(Control<QPushButton>(1494), Qt::LeftButton);
    EXPECT_TRUE(Truth(L"$Lamp.wirecolor == color 0 200 0"));
    auto* manually = Control<QRadioButton>(1032);
    ClickMark(manually);
    EXPECT_TRUE(Truth(L"$chairs.baseObject.PersistReloadType == 2"));
}

TEST_F(HostWindow, RolloutSpinnersAndListWriteTheirParametersAndFollowScript) {
    auto* dial = static_cast<Object*>(CreateInstance(HELPER_CLASS_ID, kDialClassID));
    ASSERT_TRUE(dial);
    GetCOREInterface()->CreateObjectNode(dial)->SetName(L"Dial");
    theHold.FlushUndoBuffer();
    Type("select $Dial");
    auto* height = Control<QDoubleSpinBox>(1001);
    auto* count = Control<QDoubleSpinBox>(1003);
    auto* shape = Control<QComboBox>(1005);
    ASSERT_TRUE(height && count && shape);
    EXPECT_EQ(height->value(), 10.0);
    EXPECT_EQ(count->value(), 3.0);
    EXPECT_EQ(shape->currentText(), "Round");
    ASSERT_EQ(shape->count(), 3);

    // Typing a value writes it when the edit is confirmed; a script's value shows; an arrow step stops at the
    // block's range; each edit is one undo step.
    height->selectAll();
    QTest::keyClicks(height, "42.5");
    QTest::keyClick(height, Qt::Key_Return);
    EXPECT_TRUE(Truth(L"$Dial.baseObject.Height == 42.5"));
    Script(L"$Dial.baseObject.Height = 99.75");
    QApplication::processEvents();
    EXPECT_EQ(height->value(), 99.75);
    QTest::keyClick(height, Qt::Key_Up);
    EXPECT_TRUE(Truth(L"$Dial.baseObject.Height == 100.0"));
    Script(L"max undo");
    QApplication::processEvents();
    EXPECT_TRUE(Truth(L"$Dial.baseObject.Height == 99.75"));
    EXPECT_EQ(height->value(), 99.75);

    // An arrow step of the integer spinner writes a whole number.
    QTest::keyClick(count, Qt::Key_Up);
    EXPECT_EQ(RunInt(L"$Dial.baseObject.Count"), 4);

    // The list writes the item's index; an undo and a script change show in the list.
    shape->setCurrentIndex(2);
    EXPECT_EQ(RunInt(L"$Dial.baseObject.Shape"), 2);
    Script(L"max undo");
    QApplication::processEvents();
    EXPECT_EQ(RunInt(L"$Dial.baseObject.Shape"), 0);
    EXPECT_EQ(shape->currentText(), "Round");
    Script(L"$Dial.baseObject.Shape = 1; $Dial.baseObject.Count = 12");
    QApplication::processEvents();
    EXPECT_EQ(shape->currentText(), "Square");
    EXPECT_EQ(count->value(), 12.0);
}

// At 150 % the marks of check boxes and radio buttons are half as big again as the style draws them at 100 %.
TEST(ScaledStyle, CheckAndRadioMarksGrowWithTheScale) {
    QCheckBox box("Active");
    box.resize(200, 40);
    QStyleOptionButton option;
    option.initFrom(&box);
    const int plain = box.style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, &box).width();
    const int plainRadio = box.style()->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth, nullptr, &box);
    ASSERT_GT(plain, 0);
    auto* scaled = new hostrt::ScaledStyle(1.5f);
    box.setStyle(scaled);
    EXPECT_EQ(scaled->subElementRect(QStyle::SE_CheckBoxIndicator, &option, &box).width(), std::lround(plain * 1.5));
    EXPECT_EQ(scaled->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth, nullptr, &box), std::lround(plainRadio * 1.5));
    EXPECT_GE(box.sizeHint().height(), std::lround(plain * 1.5));
    box.setStyle(nullptr);
    delete scaled;
}

}  // namespace
