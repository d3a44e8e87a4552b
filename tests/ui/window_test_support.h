// What the window tests share: a shot with reference files on disk, and the manager window and its widgets found
// by object name, driven with the mouse and the keyboard as a user would.
#pragma once

#include "vandrels_library.h"

#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QTableWidget>
#include <QToolButton>

#include <filesystem>
#include <string>
#include <vector>

namespace uitest {

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
        T* widget = manager_->findChild<T*>(name);
        EXPECT_TRUE(widget) << name;
        return widget;
    }
    QTableWidget* Table() { return Find<QTableWidget>("ReferenceTable"); }
    // Clicks the table row (with Ctrl held when adding to the selection).
    void ClickRow(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void Click(QAbstractButton* button);
    // The rows selected in the table, in order.
    std::vector<int> SelectedRows();
    // Runs a slot of the manager by name (as the host's notifications and refreshes do).
    void Invoke(const char* slot);

    // The last message box the dialog service saw.
    std::wstring LastBoxTitle();
    UINT LastBoxIcon();

    QDialog* manager_ = nullptr;
    std::filesystem::path folder_;
};

}  // namespace uitest
