// The host window of a graphical session as a user meets it: a line typed into the listener runs and shows its
// result, and the selected reference helper's rollout in the command panel edits the helper: its boxes write
// the parameters, its "..." button picks the file through the open-file dialog, its Reload button reloads.
#include "window_test_support.h"

#include "Qt/QmaxMainWindow.h"
#include "maxapi.h"
#include "platform/file_dialog_service.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTreeWidget>

namespace {

using vtest::Node;
using vtest::Script;

bool Truth(const std::wstring& script) {
    FPValue v = Script(script);
    return v.type == TYPE_BOOL && v.i;
}

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
        T* widget = window_->findChild<T*>(QString("Control%1").arg(id));
        EXPECT_TRUE(widget) << id;
        return widget;
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
    QTest::mouseClick(active, Qt::LeftButton, Qt::NoModifier, QPoint(6, active->height() / 2));
    EXPECT_FALSE(Truth(L"$chairs.baseObject.Active"));
    EXPECT_FALSE(Node(L"Chair"));  // unloaded
    QTest::mouseClick(active, Qt::LeftButton, Qt::NoModifier, QPoint(6, active->height() / 2));
    EXPECT_TRUE(Node(L"Chair"));

    // The rollout's "..." picks another file; the helper loads it.
    hostrt::FileDialogService::Instance().PushAnswer({File(L"lamps").data()});
    QTest::mouseClick(Control<QPushButton>(1303), Qt::LeftButton);
    EXPECT_EQ(hostrt::FileDialogService::Instance().Records().back().request.title, L"Select File for Reference chairs");
    EXPECT_TRUE(Node(L"Lamp"));
    EXPECT_FALSE(Node(L"Chair"));
    EXPECT_EQ(Control<QLineEdit>(1301)->text(), QString::fromWCharArray(File(L"lamps").data()));

    // An edit survives the rollout's Reload; the radio buttons write the reload type.
    Script(L"$Lamp.wirecolor = color 0 200 0");
    QTest::mouseClick(Control<QPushButton>(1494), Qt::LeftButton);
    EXPECT_TRUE(Truth(L"$Lamp.wirecolor == color 0 200 0"));
    auto* manually = Control<QRadioButton>(1032);
    QTest::mouseClick(manually, Qt::LeftButton, Qt::NoModifier, QPoint(6, manually->height() / 2));
    EXPECT_TRUE(Truth(L"$chairs.baseObject.PersistReloadType == 2"));
}

}  // namespace
