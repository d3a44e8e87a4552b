#include "window_test_support.h"

#include "hold.h"
#include "maxscript/maxscript.h"
#include "platform/dialog_service.h"
#include "platform/file_dialog_service.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QMenu>
#include <QTest>
#include <QTimer>
#include <unistd.h>

#include <set>

namespace uitest {

using vtest::Quoted;
using vtest::Script;

std::wstring Text(const std::wstring& script) {
    FPValue v = Script(script);
    return v.type == TYPE_STRING && v.s ? v.s : L"<not a string>";
}

bool Truth(const std::wstring& script) {
    FPValue v = Script(script);
    return v.type == TYPE_BOOL && v.i;
}

std::wstring Setting(const wchar_t* key, const wchar_t* section) {
    return Text(std::wstring(L"GetINISetting (getMAXIniFile()) \"") + section + L"\" \"" + key + L"\"");
}

void ClickMark(QAbstractButton* button) {
    QTest::mouseClick(button, Qt::LeftButton, Qt::NoModifier, QPoint(6, button->height() / 2));
}

UrlCatcher::UrlCatcher(const QString& scheme) : scheme_(scheme) { QDesktopServices::setUrlHandler(scheme, this, "Open"); }

UrlCatcher::~UrlCatcher() { QDesktopServices::unsetUrlHandler(scheme_); }

void WithNextFileDialog(const std::function<void(QFileDialog&)>& answer, const std::function<void()>& run) {
    bool answered = false;
    QTimer poll;
    poll.setInterval(10);
    QString unexpected;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || !modal->isVisible()) return;
        auto* dialog = qobject_cast<QFileDialog*>(modal);
        if (!dialog || answered) {
            // Any other window that waits for an answer would hold the test forever: close it and fail.
            if (auto* box = qobject_cast<QDialog*>(modal)) {
                unexpected = box->windowTitle();
                box->reject();
            }
            return;
        }
        answered = true;
        answer(*dialog);
        if (dialog->isVisible()) dialog->reject();  // an answer that did not end the dialog: Cancel
    });
    poll.start();
    run();
    poll.stop();
    EXPECT_TRUE(answered) << "no file dialog opened";
    EXPECT_TRUE(unexpected.isEmpty()) << "an unexpected dialog opened: " << unexpected.toStdString();
}

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

std::map<QString, bool> WindowTest::ContextMenuEntries() {
    std::map<QString, bool> enabled;
    QTimer::singleShot(0, [&enabled] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu) return;
        for (QAction* action : menu->findChildren<QAction*>())
            if (!action->text().isEmpty()) enabled[action->text()] = action->isEnabled();
        menu->close();
    });
    QMetaObject::invokeMethod(manager_, "OnContextMenuRequested", Q_ARG(QPoint, QPoint(5, 5)));
    return enabled;
}

std::wstring WindowTest::LastBoxTitle() {
    const auto boxes = hostrt::DialogService::Instance().MessageBoxes();
    return boxes.empty() ? L"<no box>" : boxes.back().request.title;
}

UINT WindowTest::LastBoxIcon() {
    const auto boxes = hostrt::DialogService::Instance().MessageBoxes();
    return boxes.empty() ? 0 : boxes.back().request.Icon();
}

}  // namespace uitest
