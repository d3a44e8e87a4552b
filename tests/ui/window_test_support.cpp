#include "window_test_support.h"

#include "hold.h"
#include "maxscript/maxscript.h"
#include "platform/dialog_service.h"
#include "platform/file_dialog_service.h"

#include <QApplication>
#include <QTest>
#include <unistd.h>

#include <set>

namespace uitest {

using vtest::Quoted;
using vtest::Script;

void WindowTest::SetUp() {
    SceneTest::SetUp();
    folder_ = std::filesystem::temp_directory_path() / ("vandrels_ui_" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder_);
    Script(L"Vandrels.PrintTimes false");
    Script(L"box name:\"Chair\" wirecolor:(color 10 20 30); sphere name:\"Stool\"; saveMaxFile " +
           Quoted(File(L"chairs")));
    Script(L"resetMaxFile #noPrompt; sphere name:\"Lamp\"; saveMaxFile " + Quoted(File(L"lamps")));
    Script(L"resetMaxFile #noPrompt");
    // Every test starts with the windows' settings missing, as on a first run.
    Script(L"delIniSetting (getMAXIniFile()) \"Vandrels\"");
    theHold.FlushUndoBuffer();
    hostrt::DialogService::Instance().ClearAnswers();
}

void WindowTest::TearDown() {
    if (manager_) manager_->close();
    QApplication::processEvents();
    SceneTest::TearDown();
    std::filesystem::remove_all(folder_);
}

MSTR WindowTest::File(const wchar_t* stem) const {
    return MSTR::FromUTF8(folder_.string()) + L"/" + stem + L".max";
}

void WindowTest::AddReference(const wchar_t* stem) { Script(L"Vandrels.AddVandrel " + Quoted(File(stem))); }

QDialog* WindowTest::OpenManager() {
    Script(L"OpenVandrelsManager()");
    for (QWidget* widget : QApplication::allWidgets())
        if (widget->objectName() == "VandrelsQtManager") manager_ = qobject_cast<QDialog*>(widget);
    EXPECT_TRUE(manager_ && manager_->isVisible());
    return manager_;
}

void WindowTest::ClickRow(int row, Qt::KeyboardModifiers modifiers) {
    QTableWidget* table = Table();
    const QRect cell = table->visualRect(table->model()->index(row, 0));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, modifiers, cell.center());
}

void WindowTest::Click(QAbstractButton* button) {
    ASSERT_TRUE(button->isEnabled()) << button->objectName().toStdString();
    QTest::mouseClick(button, Qt::LeftButton);
}

std::vector<int> WindowTest::SelectedRows() {
    std::set<int> rows;
    for (const QModelIndex& index : Table()->selectionModel()->selectedRows()) rows.insert(index.row());
    return {rows.begin(), rows.end()};
}

void WindowTest::Invoke(const char* slot) { QMetaObject::invokeMethod(manager_, slot); }

std::wstring WindowTest::LastBoxTitle() {
    const auto boxes = hostrt::DialogService::Instance().MessageBoxes();
    return boxes.empty() ? L"<no box>" : boxes.back().request.title;
}

UINT WindowTest::LastBoxIcon() {
    const auto boxes = hostrt::DialogService::Instance().MessageBoxes();
    return boxes.empty() ? 0 : boxes.back().request.Icon();
}

}  // namespace uitest
