// What the window tests share: a shot with reference files on disk, and the manager window and its widgets found
// by object name, driven with the mouse and the keyboard as a user would.
#pragma once

#include "vandrels_library.h"

#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QTableWidget>
#include <QToolButton>

#include <QFileDialog>
#include <QStringList>
#include <QUrl>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace uitest {

// What a MAXScript expression answers: a string ("<not a string>" else), a truth (false for anything else).
std::wstring Text(const std::wstring& script);
bool Truth(const std::wstring& script);
// A setting of the host's INI file, in the "Vandrels" section unless another is named.
std::wstring Setting(const wchar_t* key, const wchar_t* section = L"Vandrels");
// A check box or radio button reacts to clicks on its mark and its text: clicks near its left end.
void ClickMark(QAbstractButton* button);
// While it lives, the web addresses of a scheme that the application asks the desktop to open, instead of a
// browser opening them.
class UrlCatcher : public QObject {
    Q_OBJECT
public:
    explicit UrlCatcher(const QString& scheme);
    ~UrlCatcher() override;
    QStringList urls;

public slots:
    void Open(const QUrl& url) { urls << url.toString(); }

private:
    QString scheme_;
};

// The widget of that object name below root (the test fails when there is none).
template <typename T>
T* FindIn(QObject* root, const QString& name) {
    T* widget = root ? root->findChild<T*>(name) : nullptr;
    EXPECT_TRUE(widget) << name.toStdString();
    return widget;
}

// Runs answer on the next file dialog that opens modally while run() runs (the test fails when none opens).
void WithNextFileDialog(const std::function<void(QFileDialog&)>& answer, const std::function<void()>& run);

// A scene test with a folder of reference files: chairs.max (a box Chair and a sphere Stool) and lamps.max (a
// sphere Lamp). The manager window, when a test opened it, is closed at the end.
class WindowTest : public vtest::SceneTest {
protected:
    explicit WindowTest(const std::string& stem) : SceneTest(stem) {}
    void SetUp() override;
    void TearDown() override;

    MSTR File(const wchar_t* stem) const;
    // Adds a helper for the reference file stem (loaded), by script.
    void AddReference(const wchar_t* stem);

    // Opens the manager (OpenVandrelsManager()) and answers it.
    QDialog* OpenManager();
    template <typename T>
    T* Find(const char* name) {
        return FindIn<T>(manager_, name);
    }
    QTableWidget* Table() { return Find<QTableWidget>("ReferenceTable"); }
    // Clicks the table row (with Ctrl held when adding to the selection).
    void ClickRow(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void Click(QAbstractButton* button);
    // The rows selected in the table, in order.
    std::vector<int> SelectedRows();
    // Runs a slot of the manager by name (as the host's notifications and refreshes do).
    void Invoke(const char* slot);
    // Opens the table's context menu and answers its entries (texts with their mnemonics) and whether each is
    // enabled; the menu is closed again.
    std::map<QString, bool> ContextMenuEntries();

    // The last message box the dialog service saw.
    std::wstring LastBoxTitle();
    UINT LastBoxIcon();

    QDialog* manager_ = nullptr;
    std::filesystem::path folder_;
};

}  // namespace uitest
