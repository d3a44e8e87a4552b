#include "qt/qt_presenters.h"

#include "Qt/QmaxMainWindow.h"
#include "commdlg.h"
#include "platform/qt_main_window.h"
#include "winshim.h"

#include <QApplication>
#include <QFileDialog>
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
    dialog.setNameFilter(NameFilters(request));
    dialog.setFileMode((request.flags & OFN_ALLOWMULTISELECT) ? QFileDialog::ExistingFiles
                                                              : QFileDialog::ExistingFile);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    if (dialog.exec() != QDialog::Accepted) return std::nullopt;
    std::vector<std::wstring> files;
    for (const QString& file : dialog.selectedFiles()) files.push_back(file.toStdWString());
    return files;
}

}  // namespace hostrt
