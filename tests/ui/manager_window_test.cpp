// The manager window driven as a user drives it: rows selected with the mouse, boxes clicked, names typed, the
// tool buttons pressed, the undo keys, the confirmations and the context menu; and the whole way of one reference
// from the file picker to its removal.
#include "window_test_support.h"

#include "inode.h"
#include "maxapi.h"
#include "platform/dialog_service.h"
#include "platform/file_dialog_service.h"
#include "qt/qt_presenters.h"
#include "resource.h"
#include "winshim.h"

#include <QAction>
#include <QApplication>
#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <optional>

namespace {

using uitest::Setting;
using uitest::Text;
using uitest::Truth;
using vtest::Node;
using vtest::RunInt;
using vtest::Script;

// A MAXScript string literal of any text, quotes and backslashes escaped.
std::wstring Literal(const std::wstring& text) {
    std::wstring out = L"\"";
    for (wchar_t c : text) {
        if (c == L'"' || c == L'\\') out += L'\\';
        out += c;
    }
    return out + L"\"";
}
std::wstring Helper(int index, const wchar_t* property) {
    return L"(Vandrels.GetVandrel " + std::to_wstring(index) + L").baseObject." + property;
}

class ManagerWindow : public uitest::WindowTest {
protected:
    ManagerWindow() : WindowTest("vandrels_manager_window") {}
};

// With no helper in the scene nothing can be operated on; Add is the way in.
TEST_F(ManagerWindow, EmptySceneOffersOnlyAdd) {
    OpenManager();
    EXPECT_EQ(Table()->rowCount(), 0);
    EXPECT_FALSE(Find<QWidget>("PropertyPanel")->isEnabled());
    for (const char* name : {"ReloadButton", "RemoveButton", "ResetButton", "DuplicateButton", "MergeButton"})
        EXPECT_FALSE(Find<QToolButton>(name)->isEnabled()) << name;
    for (const char* name : {"ReloadAction", "RemoveAction", "ResetAction", "DuplicateAction", "MergeAction"})
        EXPECT_FALSE(Find<QAction>(name)->isEnabled()) << name;
    EXPECT_TRUE(Find<QToolButton>("AddButton")->isEnabled());
    // The icons come from the host's installation folder.
    for (const char* name : {"AddButton", "ReloadButton", "RemoveButton", "ResetButton", "DuplicateButton", "MergeButton"})
        EXPECT_FALSE(Find<QToolButton>(name)->icon().isNull()) << name;
    EXPECT_TRUE(Find<QAction>("AddAction")->isEnabled());
    EXPECT_TRUE(Truth(L"Vandrels.IsManagerOpen()"));
    Script(L"Vandrels.CloseManager()");
    EXPECT_FALSE(manager_->isVisible());
    EXPECT_FALSE(Truth(L"Vandrels.IsManagerOpen()"));
}

// Two selected helpers that disagree show a partially checked box and a blank name; a click writes one value to
// both, and the table shows it.
TEST_F(ManagerWindow, MixedSelectionShowsPartialBoxesAndClicksWriteEveryHelper) {
    AddReference(L"chairs");
    AddReference(L"lamps");
    Script(Helper(2, L"Active") + L" = false");
    OpenManager();
    ASSERT_EQ(Table()->rowCount(), 2);
    EXPECT_EQ(Table()->item(0, 0)->text(), "chairs");
    EXPECT_EQ(Table()->item(1, 1)->text(), "No");
    ClickRow(0);
    ClickRow(1, Qt::ControlModifier);
    EXPECT_EQ(SelectedRows(), (std::vector<int>{0, 1}));
    auto* active = Find<QCheckBox>("ActiveBox");
    EXPECT_EQ(active->checkState(), Qt::PartiallyChecked);
    EXPECT_EQ(Find<QLineEdit>("NameEdit")->text(), "<Multiple Selected>");
    EXPECT_FALSE(Find<QLineEdit>("NameEdit")->isEnabled());
    EXPECT_EQ(Find<QLineEdit>("FileNameEdit")->text(), "");

    Click(active);
    EXPECT_EQ(active->checkState(), Qt::Checked);
    EXPECT_TRUE(Truth(Helper(1, L"Active")) && Truth(Helper(2, L"Active")));
    EXPECT_EQ(Table()->item(1, 1)->text(), "Yes");
    Click(active);
    EXPECT_EQ(active->checkState(), Qt::Unchecked);
    EXPECT_FALSE(Truth(Helper(1, L"Active")) || Truth(Helper(2, L"Active")));
    Click(active);  // a click never makes a box partially checked again
    EXPECT_EQ(active->checkState(), Qt::Checked);
    EXPECT_EQ(SelectedRows(), (std::vector<int>{0, 1}));  // the refresh kept the selection
}

// The rows' selection lives in the helpers: undoing in the host brings the previous rows back at the next refresh.
TEST_F(ManagerWindow, UndoingRestoresTheSelectedRows) {
    AddReference(L"chairs");
    AddReference(L"lamps");
    OpenManager();
    ClickRow(0);
    ClickRow(1);
    EXPECT_FALSE(Truth(Helper(1, L"SelectedInManager")));
    EXPECT_TRUE(Truth(Helper(2, L"SelectedInManager")));
    Script(L"max undo");
    Invoke("PopulateReferences");
    EXPECT_EQ(SelectedRows(), (std::vector<int>{0}));
    EXPECT_TRUE(Find<QToolButton>("ReloadButton")->isEnabled());
}

// Only blanks in Name change nothing; a real name renames the helper node. Ctrl+Z in the Name edit undoes the
// typing while there is typing to undo, then undoes in the host.
TEST_F(ManagerWindow, NameEditRenamesAndCtrlZUndoesTypingBeforeTheHost) {
    AddReference(L"chairs");
    OpenManager();
    ClickRow(0);
    auto* name = Find<QLineEdit>("NameEdit");
    name->setFocus();
    name->selectAll();
    QTest::keyClicks(name, "   ");
    QTest::keyClick(name, Qt::Key_Return);
    EXPECT_TRUE(Node(L"chairs"));
    EXPECT_EQ(Table()->item(0, 0)->text(), "chairs");

    name->selectAll();
    QTest::keyClicks(name, "seats");
    QTest::keyClick(name, Qt::Key_Return);
    EXPECT_TRUE(Node(L"seats"));
    EXPECT_EQ(Table()->item(0, 0)->text(), "seats");

    name->setFocus();
    name->end(false);
    QTest::keyClicks(name, "X");
    EXPECT_EQ(name->text(), "seatsX");
    QTest::keySequence(name, QKeySequence::Undo);  // the typing
    EXPECT_EQ(name->text(), "seats");
    EXPECT_TRUE(Node(L"seats"));
    name->setModified(false);
    QTest::keySequence(name, QKeySequence::Undo);  // nothing typed to undo: the host undoes the rename
    EXPECT_TRUE(Node(L"chairs"));
    EXPECT_FALSE(Node(L"seats"));
}

// Opening the manager again while it is shown stores where it is and how big, and rebuilds the rows; the host's
// scene notifications rebuild them too.
TEST_F(ManagerWindow, ReopeningStoresTheGeometryAndRebuildsTheRows) {
    OpenManager();
    manager_->resize(640, 480);
    AddReference(L"chairs");  // refreshes the open window
    EXPECT_EQ(Table()->rowCount(), 1);
    Script(L"SetINISetting (getMAXIniFile()) \"Vandrels\" \"DlgSizeX\" \"1\"");
    OpenManager();
    EXPECT_EQ(Setting(L"DlgSizeX"), L"640");
    EXPECT_EQ(Setting(L"DlgSizeY"), L"480");
    EXPECT_EQ(manager_->width(), 640);
    EXPECT_EQ(Table()->rowCount(), 1);
    // A new scene empties the open window.
    Script(L"resetMaxFile #noPrompt");
    EXPECT_EQ(Table()->rowCount(), 0);
}

// Merging a reference whose proxy shows in the viewport warns; any other merge asks. No keeps the reference.
TEST_F(ManagerWindow, MergeWarnsAboutProxiesAndAsksOtherwise) {
    AddReference(L"chairs");
    Script(Helper(1, L"UseProxyInViewport") + L" = true");
    OpenManager();
    ClickRow(0);
    hostrt::DialogService::Instance().PushAnswer(IDNO);
    Click(Find<QToolButton>("MergeButton"));
    EXPECT_EQ(LastBoxTitle(), L"Merge References and Proxies");
    EXPECT_EQ(LastBoxIcon(), UINT(MB_ICONWARNING));
    EXPECT_TRUE(Node(L"chairs"));

    Script(Helper(1, L"UseProxyInViewport") + L" = false");
    Invoke("PopulateReferences");
    Click(Find<QToolButton>("MergeButton"));  // unanswered: the default button, No
    EXPECT_EQ(LastBoxTitle(), L"Merge Reference");
    EXPECT_EQ(LastBoxIcon(), UINT(MB_ICONQUESTION));
    EXPECT_TRUE(Node(L"chairs"));
    hostrt::DialogService::Instance().PushAnswer(IDYES);
    Click(Find<QToolButton>("MergeButton"));
    EXPECT_FALSE(Node(L"chairs"));
    EXPECT_TRUE(Node(L"Chair"));  // the content stays, local now
    EXPECT_EQ(Table()->rowCount(), 0);
}

// The context menu offers per-file entries for one row only; Overwrite and Select Nodes for any selection.
TEST_F(ManagerWindow, ContextMenuEnablesEntriesBySelection) {
    AddReference(L"chairs");
    AddReference(L"lamps");
    OpenManager();
    ClickRow(0);
    ClickRow(1, Qt::ControlModifier);
    const std::map<QString, bool> expected = {{"&File", true},
                                              {"&Open", false},
                                              {"Open in &New 3ds Max Session", false},
                                              {"&Reveal in Explorer", false},
                                              {"&Overwrite", true},
                                              {"&Save As...", false},
                                              {"&Select Nodes", true},
                                              {"Show &Duplicated Names", false}};
    EXPECT_EQ(ContextMenuEntries(), expected);

    // Select Nodes picks the referenced nodes of both helpers, as one undo step.
    Script(L"clearSelection()");
    QMetaObject::invokeMethod(manager_, "OnContextMenuSelectNodes");
    EXPECT_EQ(RunInt(L"selection.count"), 3);
}

// One reference's way by mouse: picked in the file dialog, selected, its node edited, reloaded (the edit stays),
// removed after the question.
TEST_F(ManagerWindow, AddEditReloadAndRemoveByMouse) {
    OpenManager();
    hostrt::FileDialogService::Instance().PushAnswer({File(L"chairs").data()});
    Click(Find<QToolButton>("AddButton"));
    ASSERT_EQ(Table()->rowCount(), 1);
    EXPECT_EQ(Table()->item(0, 4)->text(), QString::fromWCharArray(File(L"chairs").data()));
    EXPECT_EQ(SelectedRows(), (std::vector<int>{0}));  // a new reference shows selected
    ClickRow(0);
    EXPECT_EQ(Find<QLineEdit>("NameEdit")->text(), "chairs");

    Script(L"$Chair.wirecolor = color 200 0 0");
    Click(Find<QToolButton>("ReloadButton"));
    EXPECT_TRUE(Truth(L"$Chair.wirecolor == color 200 0 0"));
    EXPECT_EQ(Table()->rowCount(), 1);

    Click(Find<QToolButton>("RemoveButton"));  // unanswered: No
    EXPECT_EQ(LastBoxTitle(), L"Remove Reference");
    EXPECT_TRUE(Node(L"Chair"));
    hostrt::DialogService::Instance().PushAnswer(IDYES);
    Click(Find<QToolButton>("RemoveButton"));
    EXPECT_EQ(Table()->rowCount(), 0);
    EXPECT_FALSE(Node(L"chairs"));
    EXPECT_FALSE(Node(L"Chair"));
    EXPECT_FALSE(Find<QToolButton>("RemoveButton")->isEnabled());
}

// With one row selected every entry is on. Reveal asks the shell to show the reference file selected in Explorer;
// Open makes it the scene. The file's name holds quotes: it is opened as a name, never run as script.
TEST_F(ManagerWindow, ContextMenuRevealsAndOpensTheReferenceFile) {
    const std::filesystem::path odd = folder_ / "shot \"A\" 'v2'.max";
    std::filesystem::copy_file(folder_ / "chairs.max", odd);
    const std::wstring oddName = MSTR::FromUTF8(odd.string()).data();
    Script(L"Vandrels.AddVandrel " + Literal(oddName));
    OpenManager();
    ClickRow(0);
    for (const auto& [entry, on] : ContextMenuEntries()) EXPECT_TRUE(on) << entry.toStdString();

    Invoke("OnContextMenuRevealInExplorer");
    const auto shell = hostrt::ShellRequests::Instance().Requests();
    ASSERT_FALSE(shell.empty());
    EXPECT_EQ(shell.back().operation, L"open");
    EXPECT_EQ(shell.back().file, L"explorer.exe");
    EXPECT_EQ(shell.back().parameters, L"/select,\"" + oddName + L"\"");

    Invoke("OnContextMenuOpen");
    EXPECT_EQ(uitest::Text(L"maxFileName"), L"shot \"A\" 'v2'.max");
    EXPECT_TRUE(Node(L"Chair"));
    EXPECT_TRUE(Node(L"Stool"));
    EXPECT_EQ(RunInt(L"Vandrels.NumVandrels()"), 0);  // the reference file holds no reference
    EXPECT_EQ(Table()->rowCount(), 0);
}

// Save As asks for a name in a save dialog titled after the reference and writes the reference's nodes there;
// Cancel writes nothing.
TEST_F(ManagerWindow, ContextMenuSaveAsWritesTheReferenceUnderTheChosenName) {
    AddReference(L"chairs");
    OpenManager();
    ClickRow(0);
    const std::filesystem::path copy = folder_ / "chairs_copy.max";
    uitest::WithNextFileDialog([](QFileDialog& dialog) { dialog.reject(); }, [&] { Invoke("OnContextMenuSaveAs"); });
    EXPECT_FALSE(std::filesystem::exists(copy));
    QString title;
    uitest::WithNextFileDialog(
        [&](QFileDialog& dialog) {
            title = dialog.windowTitle();
            // The dialog selects the reference's own file once its folder listing has loaded; type the new
            // name only then, or the late selection takes its place. Then end it as Save does.
            const QString original = QString::fromStdWString(File(L"chairs").data());
            EXPECT_TRUE(QTest::qWaitFor([&] { return dialog.selectedFiles().value(0) == original; }, 5000));
            const QString chosen = QString::fromStdString(copy.string());
            if (auto* list = dialog.findChild<QAbstractItemView*>("listView")) list->clearSelection();
            if (auto* name = dialog.findChild<QLineEdit*>("fileNameEdit")) name->setText(chosen);
            EXPECT_EQ(dialog.selectedFiles().value(0).toStdString(), chosen.toStdString());
            static_cast<QDialog&>(dialog).done(QDialog::Accepted);
        },
        [&] { Invoke("OnContextMenuSaveAs"); });
    EXPECT_EQ(title, "Save Reference chairs As...");
    ASSERT_TRUE(std::filesystem::exists(copy));
    Script(L"resetMaxFile #noPrompt; mergeMaxFile " + vtest::Quoted(MSTR::FromUTF8(copy.string())));
    EXPECT_TRUE(Node(L"Chair"));
    EXPECT_TRUE(Node(L"Stool"));
}

// Help opens the online documentation in the browser. About shows the about box with the library's version; its
// link opens the product's page.
TEST_F(ManagerWindow, HelpOpensTheDocumentationAndAboutShowsTheVersion) {
    OpenManager();
    {
        uitest::UrlCatcher browser("https");
        Find<QAction>("HelpAction")->trigger();
        EXPECT_EQ(browser.urls, QStringList{"https://vandrels.example.com/docs/"});
    }
    auto& dialogs = hostrt::DialogService::Instance();
    dialogs.PushDialogScript({hostrt::DialogAction::PressButton(IDC_ABOUT_LINK)});
    Find<QAction>("AboutAction")->trigger();
    const hostrt::DialogRecord about = dialogs.Dialogs().back();
    EXPECT_EQ(about.resourceId, UINT(IDD_ABOUT));
    ASSERT_TRUE(about.Control(IDC_ABOUT_VERSION));
    EXPECT_EQ(about.Control(IDC_ABOUT_VERSION)->text, L"1.12.02");
    EXPECT_EQ(about.result, IDOK);
    EXPECT_EQ(hostrt::ShellRequests::Instance().Requests().back().file, L"https://vandrels.example.com/");
}

// The file picker as the graphical session shows it: the folder history under the dialog moves it to a folder
// picked before, "+" numbers the typed name on and confirms it, and the folder goes to the top of the history.
// Disabled: about one run in three the Qt dialog's late selection of a listed file replaces the typed name before
// "+" reads it, so the test is not yet deterministic (the headless "+" test below covers the numbering).
TEST_F(ManagerWindow, DISABLED_FilePickerHistoryMovesToAFolderAndPlusNumbersTheNameOn) {
    const std::filesystem::path shots = folder_ / "shots";
    std::filesystem::create_directories(shots);
    for (const char* name : {"shot07.max", "shot08.max"}) std::filesystem::copy_file(folder_ / "chairs.max", shots / name);
    const std::wstring shotsFolder = MSTR::FromUTF8(shots.string()).data();
    Script(L"SetINISetting (getMAXIniFile()) \"Vandrels History\" \"Path1\" " + Literal(shotsFolder));
    OpenManager();
    auto& files = hostrt::FileDialogService::Instance();
    files.SetPresenter(&hostrt::PresentFileDialog);
    QString movedTo;
    uitest::WithNextFileDialog(
        [&](QFileDialog& dialog) {
            auto* history = dialog.findChild<QComboBox*>("Control3229");
            auto* plus = dialog.findChild<QPushButton*>("Control3231");
            ASSERT_TRUE(history && plus);
            const int item = history->findText(QString::fromStdWString(shotsFolder));
            ASSERT_GE(item, 0);
            history->activated(item);
            movedTo = dialog.directory().absolutePath();
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText("shot07.max");
            plus->click();
        },
        [&] { Click(Find<QToolButton>("AddButton")); });
    files.SetPresenter(nullptr);
    EXPECT_EQ(movedTo, QString::fromStdWString(shotsFolder));
    ASSERT_EQ(Table()->rowCount(), 1);
    EXPECT_EQ(Table()->item(0, 4)->text(), QString::fromStdWString(shotsFolder + L"/shot08.max"));
    EXPECT_EQ(Setting(L"Path1", L"Vandrels History"), shotsFolder);
}

// The "+" button numbers the typed name on whatever it ends in, keeping an extension of up to five characters.
TEST_F(ManagerWindow, FilePickerPlusNumbersEveryKindOfNameOn) {
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"shot07.max", L"shot08.max"}, {L"shot.max", L"shot01.max"}, {L"shot99.max", L"shot100.max"},
        {L"take9.max", L"take901.max"}, {L"v12.backup", L"v12.backup01"}};
    const std::wstring folder = MSTR::FromUTF8(folder_.string()).data();
    auto& files = hostrt::FileDialogService::Instance();
    for (const auto& [typed, expected] : cases) {
        std::filesystem::copy_file(folder_ / "lamps.max", folder_ / MSTR(expected).ToUTF8());
        // A user who types the name and presses "+" in the picker's template.
        files.SetPresenter([&, typed = typed](const hostrt::FileDialogRequest& request) {
            std::optional<std::vector<std::wstring>> picked;
            if (!request.extension) return picked;
            request.extension->SetCurrent(folder, typed);
            request.extension->Press(IDC_NEXT_NUMBER);
            if (request.extension->TakeConfirm()) picked = std::vector<std::wstring>{folder + L"/" + request.extension->Name()};
            return picked;
        });
        Script(L"Vandrels.AddVandrelDialog()");
        files.SetPresenter(nullptr);
        EXPECT_EQ(Text(L"(Vandrels.GetVandrel (Vandrels.NumVandrels())).baseObject.FileName"), folder + L"/" + expected)
            << typed;
    }
}

}  // namespace
