#include "qt/qt_presenters.h"

#include "Qt/QmaxMainWindow.h"
#include "commdlg.h"
#include "platform/qt_main_window.h"
#include "winshim.h"

#include <functional>
#include <memory>

#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

namespace hostrt {

namespace {

QString ToQ(const std::wstring& s) { return QString::fromStdWString(s); }

QWidget* DialogParent() {
    if (QWidget* active = QApplication::activeModalWidget()) return active;
    if (QWidget* active = QApplication::activeWindow()) return active;
    return QtMainWindow();
}

QMessageBox::StandardButton ButtonFor(int answer) {
    switch (answer) {
    case IDOK: return QMessageBox::Ok;
    case IDCANCEL: return QMessageBox::Cancel;
    case IDABORT: return QMessageBox::Abort;
    case IDRETRY: return QMessageBox::Retry;
    case IDIGNORE: return QMessageBox::Ignore;
    case IDYES: return QMessageBox::Yes;
    case IDNO: return QMessageBox::No;
    case IDHELP: return QMessageBox::Help;
    case IDTRYAGAIN: return QMessageBox::Retry;
    case IDCONTINUE: return QMessageBox::Ignore;
    default: return QMessageBox::NoButton;
    }
}

QMessageBox::Icon IconFor(UINT icon) {
    switch (icon) {
    case MB_ICONHAND: return QMessageBox::Critical;
    case MB_ICONQUESTION: return QMessageBox::Question;
    case MB_ICONEXCLAMATION: return QMessageBox::Warning;
    case MB_ICONASTERISK: return QMessageBox::Information;
    default: return QMessageBox::NoIcon;
    }
}

// "Description (*.max)" and "*.max" pairs as one Qt name filter each.
QString NameFilters(const FileDialogRequest& request) {
    QStringList filters;
    for (const auto& [description, pattern] : request.filters) {
        QString text = ToQ(description);
        if (!text.contains('(')) text += " (" + ToQ(pattern).replace(';', ' ') + ")";
        filters << text;
    }
    return filters.join(";;");
}

// A plug-in's template in the dialog: its controls in a row under the dialog's own, each action passed to the
// plug-in's hook with the folder and name the user left, and what the hook then asks done to the dialog.
class ExtensionRow {
public:
    ExtensionRow(QFileDialog& dialog, FileDialogExtension& extension) : dialog_(dialog), extension_(extension) {
        auto* row = new QWidget(&dialog);
        row->setObjectName("FileDialogTemplate");
        auto* layout = new QHBoxLayout(row);
        layout->setContentsMargins(0, 0, 0, 0);
        for (const FileDialogExtension::Control& c : extension.Controls()) {
            if (!c.visible) continue;
            QWidget* widget = nullptr;
            const QString name = QString("Control%1").arg(c.id);
            if (c.className == L"ComboBox") {
                auto* combo = new QComboBox(row);
                combos_.emplace_back(c.id, combo);
                const int id = c.id;
                QObject::connect(combo, &QComboBox::activated, row, [this, id](int item) {
                    Act([this, id, item] { extension_.Choose(id, item); });
                });
                widget = combo;
                layout->addWidget(widget, 1);
            } else if (c.className == L"Button") {
                auto* button = new QPushButton(ToQ(c.text), row);
                button->setAutoDefault(false);
                const int id = c.id;
                QObject::connect(button, &QPushButton::clicked, row, [this, id] {
                    Act([this, id] { extension_.Press(id); });
                });
                widget = button;
                layout->addWidget(widget);
            } else {
                widget = new QLabel(ToQ(c.text).trimmed(), row);
                layout->addWidget(widget);
            }
            widget->setObjectName(name);
            widget->setEnabled(c.enabled);
        }
        Refresh();
        // The non-native dialog lays itself out in a grid: the template goes in a row of its own at the bottom.
        if (auto* grid = qobject_cast<QGridLayout*>(dialog.layout()))
            grid->addWidget(row, grid->rowCount(), 0, 1, grid->columnCount());
    }

private:
    // The hook hears the dialog as the user left it, then the dialog does what the hook asked.
    void Act(const std::function<void()>& action) {
        const auto* nameEdit = dialog_.findChild<QLineEdit*>("fileNameEdit");
        extension_.SetCurrent(QDir::toNativeSeparators(dialog_.directory().absolutePath()).toStdWString(),
                              nameEdit ? nameEdit->text().toStdWString() : std::wstring());
        action();
        Refresh();
        if (extension_.TakeFolderChange()) dialog_.setDirectory(ToQ(extension_.Folder()));
        if (extension_.TakeConfirm()) {
            if (!extension_.Name().empty()) dialog_.selectFile(ToQ(extension_.Name()));
            static_cast<QDialog&>(dialog_).accept();  // the file dialog checks the name as its OK button does
        }
    }

    // The combo boxes show the lists the hook keeps.
    void Refresh() {
        const auto controls = extension_.Controls();
        for (auto& [id, combo] : combos_)
            for (const FileDialogExtension::Control& c : controls)
                if (c.id == id) {
                    const QSignalBlocker quiet(combo);
                    combo->clear();
                    for (const std::wstring& item : c.items) combo->addItem(ToQ(item));
                    combo->setCurrentIndex(c.selection);
                }
    }

    QFileDialog& dialog_;
    FileDialogExtension& extension_;
    std::vector<std::pair<int, QComboBox*>> combos_;
};

}  // namespace

int PresentMessageBox(const MessageBoxRequest& request) {
    QMessageBox box(IconFor(request.Icon()), ToQ(request.title), ToQ(request.text), QMessageBox::NoButton,
                    DialogParent());
    const std::vector<int> answers = request.Answers();
    std::vector<std::pair<QAbstractButton*, int>> buttons;
    for (int answer : answers) {
        QAbstractButton* button = box.addButton(ButtonFor(answer));
        buttons.emplace_back(button, answer);
        if (answer == request.DefaultAnswer()) box.setDefaultButton(static_cast<QPushButton*>(button));
    }
    box.exec();
    for (const auto& [button, answer] : buttons)
        if (box.clickedButton() == button) return answer;
    // Closed from the title bar: Cancel where there is one, else the default button.
    for (int answer : answers)
        if (answer == IDCANCEL) return IDCANCEL;
    return request.DefaultAnswer();
}

std::optional<std::vector<std::wstring>> PresentFileDialog(const FileDialogRequest& request) {
    QFileDialog dialog(DialogParent(), ToQ(request.title), ToQ(request.initialDir));
    // A plug-in's template needs the dialog's own widgets to sit beside.
    if (request.extension) dialog.setOption(QFileDialog::DontUseNativeDialog);
    dialog.setNameFilter(NameFilters(request));
    dialog.setFileMode((request.flags & OFN_ALLOWMULTISELECT) ? QFileDialog::ExistingFiles
                                                              : QFileDialog::ExistingFile);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setObjectName("FileDialog");
    std::unique_ptr<ExtensionRow> extension;
    if (request.extension) extension = std::make_unique<ExtensionRow>(dialog, *request.extension);
    if (dialog.exec() != QDialog::Accepted) return std::nullopt;
    std::vector<std::wstring> files;
    for (const QString& file : dialog.selectedFiles()) files.push_back(file.toStdWString());
    return files;
}

}  // namespace hostrt
