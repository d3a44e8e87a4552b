// Platform stand-ins: INI settings, message boxes and windows, file times, paths and host folders, prompt
// line, listener, and session state.
#include "listener.h"
#include "maxapi.h"
#include "winshim.h"

#include "platform/dialog_service.h"
#include "platform/file_time.h"
#include "platform/host_dirs.h"
#include "platform/ini_file.h"
#include "platform/listener_capture.h"
#include "platform/paths.h"
#include "platform/prompt_line.h"
#include "platform/session.h"
#include "platform/ui_state.h"
#include "platform/windows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// Sets an environment variable for one scope and puts the old value back.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* old = std::getenv(name)) old_ = old;
        if (value) ::setenv(name, value->c_str(), 1);
        else ::unsetenv(name);
    }
    ~ScopedEnv() {
        if (old_) ::setenv(name_, old_->c_str(), 1);
        else ::unsetenv(name_);
    }

private:
    const char* name_;
    std::optional<std::string> old_;
};

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeFile(const fs::path& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

// Every test starts from a fresh platform and gets its own scratch folder.
class PlatformTest : public ::testing::Test {
protected:
    void SetUp() override {
        hostrt::ResetPlatform();
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        dir_ = fs::temp_directory_path() /
               ("platform_test-" + std::to_string(::getpid()) + "-" + info->test_suite_name() + "-" + info->name());
        fs::remove_all(dir_);
        fs::create_directories(dir_);
    }
    void TearDown() override {
        hostrt::ResetPlatform();
        fs::remove_all(dir_);
    }
    fs::path dir_;
};

}  // namespace

// ---------------------------------------------------------------- INI settings

using PlatformIni = PlatformTest;

TEST_F(PlatformIni, WritesPersistAndAnotherInstanceReadsThemWithoutRegardToCase) {
    const fs::path path = dir_ / "not" / "yet" / "3dsMax.ini";
    hostrt::IniFile writer(path);
    EXPECT_EQ(writer.Get(L"Vandrels", L"PrintTimes"), L"");  // a missing file is an empty INI
    writer.Set(L"Vandrels", L"PrintTimes", L"1");
    writer.Set(L"Vandrels", L"Folder", LR"(C:\scenes\refs)");
    writer.Set(L"Other", L"Key", L"x");
    writer.Set(L"VANDRELS", L"printtimes", L"2");  // the same key, spelled otherwise

    hostrt::IniFile reader(path);
    EXPECT_EQ(reader.Get(L"vandrels", L"PRINTTIMES"), L"2");
    EXPECT_EQ(reader.Get(L"Vandrels", L"Folder"), LR"(C:\scenes\refs)");
    EXPECT_EQ(reader.Get(L"Vandrels", L"Missing"), L"");
    EXPECT_EQ(reader.Get(L"NoSuchSection", L"PrintTimes"), L"");
    EXPECT_FALSE(reader.Contains(L"NoSuchSection", L"PrintTimes"));
    EXPECT_EQ(reader.Keys(L"vandrels"), (std::vector<std::wstring>{L"PrintTimes", L"Folder"}));

    // A key written later by the first instance is seen by the second at once.
    writer.Set(L"Other", L"Late", L"y");
    EXPECT_EQ(reader.Get(L"other", L"late"), L"y");
    EXPECT_TRUE(reader.Remove(L"OTHER", L"key"));
    EXPECT_EQ(writer.Get(L"Other", L"Key"), L"");
    EXPECT_EQ(readFile(path), "[Vandrels]\nPrintTimes=2\nFolder=C:\\scenes\\refs\n\n[Other]\nLate=y\n");
}

TEST_F(PlatformIni, RewritingKeepsCommentsBlankLinesLineEndsAndQuotesAreDropped) {
    const fs::path path = dir_ / "settings.ini";
    writeFile(path,
              "; maxhost settings\r\n"
              "[Vandrels]\r\n"
              "; how long a merge took\r\n"
              "PrintTimes = 0\r\n"
              "Name = \"quoted value\"\r\n"
              "\r\n"
              "[Render]\r\n"
              "Width=640\r\n");
    hostrt::IniFile ini(path);
    EXPECT_EQ(ini.Get(L"Vandrels", L"PrintTimes"), L"0");
    EXPECT_EQ(ini.Get(L"Vandrels", L"Name"), L"quoted value");
    ini.Set(L"Vandrels", L"PrintTimes", L"1");
    ini.Set(L"Vandrels", L"MergeForNetworkRender", L"-5");
    EXPECT_EQ(readFile(path),
              "; maxhost settings\r\n"
              "[Vandrels]\r\n"
              "; how long a merge took\r\n"
              "PrintTimes=1\r\n"
              "Name = \"quoted value\"\r\n"
              "MergeForNetworkRender=-5\r\n"
              "\r\n"
              "[Render]\r\n"
              "Width=640\r\n");
    EXPECT_TRUE(ini.RemoveSection(L"render"));
    EXPECT_EQ(ini.Sections(), std::vector<std::wstring>{L"Vandrels"});
}

TEST_F(PlatformIni, Utf16FilesStayUtf16AndBadInputFailsWithThePath) {
    const fs::path path = dir_ / "wide.ini";
    static const char kWide[] = "\xFF\xFE[\0A\0]\0\n\0k\0=\0\xE9\0\n\0";
    writeFile(path, std::string(kWide, sizeof kWide - 1));
    hostrt::IniFile ini(path);
    EXPECT_EQ(ini.Get(L"a", L"K"), L"\u00e9");
    ini.Set(L"A", L"n", L"\U0001F600");
    EXPECT_EQ(readFile(path).substr(0, 2), "\xFF\xFE");
    EXPECT_EQ(hostrt::IniFile(path).Get(L"A", L"N"), L"\U0001F600");

    auto expectFailure = [&](const hostrt::IniFile& file, std::wstring_view section, std::wstring_view key,
                             const std::string& needle) {
        try {
            hostrt::IniFile(file).Set(section, key, L"v");
            ADD_FAILURE() << "no error for " << needle;
        } catch (const hostrt::IniError& e) {
            EXPECT_NE(std::string(e.what()).find(needle), std::string::npos) << e.what();
            EXPECT_NE(std::string(e.what()).find(file.Path().string()), std::string::npos) << e.what();
        }
    };
    expectFailure(ini, L"A", L"a=b", "'='");
    expectFailure(ini, L"A]", L"k", "']'");
    expectFailure(ini, L"A", L"", "key is empty");
    // A folder path that runs through a file cannot be made.
    expectFailure(hostrt::IniFile(path / "below" / "x.ini"), L"A", L"k", "folder");
}

TEST_F(PlatformIni, HostIniComesFromCommandLineThenEnvironmentThenConfigFolder) {
    ScopedEnv noIni("MAXHOST_INI", std::nullopt);
    ScopedEnv xdg("XDG_CONFIG_HOME", (dir_ / "config").string());
    EXPECT_EQ(hostrt::HostIniPath(), dir_ / "config" / "maxhost" / "3dsMax.ini");
    {
        ScopedEnv relative("XDG_CONFIG_HOME", std::string("relative/config"));
        ScopedEnv home("HOME", (dir_ / "home").string());
        EXPECT_EQ(hostrt::HostIniPath(), dir_ / "home" / ".config" / "maxhost" / "3dsMax.ini");
    }
    ScopedEnv ini("MAXHOST_INI", (dir_ / "env.ini").string());
    EXPECT_EQ(hostrt::HostIniPath(), dir_ / "env.ini");
    hostrt::SetIniPath(dir_ / "cmdline.ini");
    EXPECT_EQ(GetCOREInterface()->GetMAXIniFile(), MSTR(hostrt::FromNativePath(dir_ / "cmdline.ini")));
    hostrt::HostIni().Set(L"Vandrels", L"HideDuplicatedNamesWarning", L"1");
    EXPECT_EQ(hostrt::IniFile(dir_ / "cmdline.ini").Get(L"Vandrels", L"HideDuplicatedNamesWarning"), L"1");
    EXPECT_FALSE(fs::exists(dir_ / "env.ini"));
}

// ---------------------------------------------------------------- message boxes, beeps and windows

using PlatformDialog = PlatformTest;

TEST_F(PlatformDialog, BoxesTakeScriptedAnswersThenTheirDefaultButton) {
    auto& dialogs = hostrt::DialogService::Instance();
    HWND main = GetCOREInterface()->GetMAXHWnd();
    ASSERT_NE(main, nullptr);
    dialogs.PushAnswer(IDNO);
    dialogs.PushAnswer(IDCANCEL);
    EXPECT_EQ(MessageBoxW(main, L"Save changes?", L"Vandrels", MB_YESNO | MB_ICONQUESTION), IDNO);
    EXPECT_EQ(MessageBoxW(main, L"Retry?", L"Vandrels", MB_RETRYCANCEL), IDCANCEL);
    EXPECT_EQ(dialogs.PendingAnswers(), 0u);
    EXPECT_EQ(MessageBoxW(main, L"a", L"t", MB_YESNO), IDYES);
    EXPECT_EQ(MessageBoxW(main, L"b", L"t", MB_YESNO | MB_DEFBUTTON2), IDNO);
    EXPECT_EQ(MessageBoxW(main, L"c", L"t", MB_YESNOCANCEL | MB_DEFBUTTON3), IDCANCEL);
    EXPECT_EQ(MessageBoxW(main, L"d", L"t", MB_YESNO | MB_DEFBUTTON4), IDYES);  // past the last: the first
    EXPECT_EQ(MessageBoxW(main, L"e", nullptr, MB_OK | MB_DEFBUTTON2), IDOK);

    // An answer that is none of the box's buttons is not taken.
    dialogs.PushAnswer(IDYES);
    EXPECT_EQ(MessageBoxW(main, L"f", L"t", MB_OKCANCEL | MB_DEFBUTTON2), IDCANCEL);

    const auto boxes = dialogs.MessageBoxes();
    ASSERT_EQ(boxes.size(), 8u);
    EXPECT_EQ(boxes[0].request.text, L"Save changes?");
    EXPECT_EQ(boxes[0].request.title, L"Vandrels");
    EXPECT_EQ(boxes[0].request.Icon(), MB_ICONQUESTION);
    EXPECT_EQ(boxes[0].request.owner, main);
    EXPECT_EQ(boxes[0].outcome, hostrt::BoxOutcome::Scripted);
    EXPECT_EQ(boxes[2].outcome, hostrt::BoxOutcome::Default);
    EXPECT_EQ(boxes[6].request.title, L"Error");
    EXPECT_EQ(boxes[7].outcome, hostrt::BoxOutcome::Default);
    EXPECT_NE(boxes[7].note.find(L"scripted answer 6"), std::wstring::npos);
}

TEST_F(PlatformDialog, QuietModeSuppressesBoxesAndAPresenterAnswersWhenNothingIsScripted) {
    auto& dialogs = hostrt::DialogService::Instance();
    Interface* ip = GetCOREInterface();
    EXPECT_FALSE(ip->GetQuietMode());
    ip->SetQuietMode(TRUE);
    dialogs.PushAnswer(IDNO);
    EXPECT_EQ(MessageBoxW(ip->GetMAXHWnd(), L"There is a circular scene dependency.", L"Error",
                          MB_YESNO | MB_ICONWARNING),
              IDYES);
    EXPECT_EQ(dialogs.PendingAnswers(), 1u);  // nothing was shown, so nothing was answered
    EXPECT_EQ(dialogs.ShownCount(), 0);
    ASSERT_EQ(dialogs.MessageBoxes().size(), 1u);
    EXPECT_EQ(dialogs.MessageBoxes()[0].outcome, hostrt::BoxOutcome::Suppressed);

    ip->SetQuietMode(FALSE);
    std::vector<std::wstring> presented;
    dialogs.SetPresenter([&](const hostrt::MessageBoxRequest& r) {
        presented.push_back(r.text);
        return IDCANCEL;
    });
    EXPECT_EQ(MessageBoxW(nullptr, L"scripted", L"t", MB_YESNO), IDNO);  // the queued answer goes first
    EXPECT_EQ(MessageBoxW(nullptr, L"shown", L"t", MB_YESNOCANCEL), IDCANCEL);
    EXPECT_EQ(presented, std::vector<std::wstring>{L"shown"});
    EXPECT_EQ(dialogs.MessageBoxes().back().outcome, hostrt::BoxOutcome::Presented);
    EXPECT_EQ(dialogs.ShownCount(), 2);

    EXPECT_TRUE(MessageBeep(MB_ICONEXCLAMATION));
    MessageBeep(MB_ICONHAND);
    MessageBeep(MB_ICONEXCLAMATION);
    EXPECT_EQ(dialogs.BeepCount(MB_ICONEXCLAMATION), 2);
    EXPECT_EQ(dialogs.BeepCount(MB_ICONHAND), 1);
}

TEST_F(PlatformDialog, TopLevelWindowsAreFoundByTitleAndDestroyed) {
    EXPECT_EQ(FindWindowW(nullptr, L"Particle View"), nullptr);
    auto& windows = hostrt::WindowRegistry::Instance();
    windows.AddWindow(L"Particle View");
    windows.AddWindow(L"Animation Workbench");
    windows.AddWindow(L"Particle View");
    int attempts = 0;
    while (HWND hwnd = FindWindowW(nullptr, L"Particle View")) {
        ASSERT_LT(++attempts, 10);
        EXPECT_TRUE(DestroyWindow(hwnd));
        EXPECT_FALSE(IsWindow(hwnd));
        EXPECT_FALSE(DestroyWindow(hwnd));
        EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_WINDOW_HANDLE));
    }
    EXPECT_EQ(attempts, 2);
    EXPECT_EQ(windows.OpenTitles(), std::vector<std::wstring>{L"Animation Workbench"});
    EXPECT_EQ(windows.DestroyedTitles(), (std::vector<std::wstring>{L"Particle View", L"Particle View"}));
    HWND main = GetCOREInterface()->GetMAXHWnd();
    EXPECT_FALSE(DestroyWindow(main));
    EXPECT_TRUE(IsWindow(main));
}

// ---------------------------------------------------------------- files, paths and host folders

using PlatformFiles = PlatformTest;

namespace {
FILETIME lastWriteThroughHandle(const std::wstring& path) {
    HANDLE h = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_NE(h, INVALID_HANDLE_VALUE) << hostrt::ToNativePath(path);
    FILETIME t{};
    EXPECT_TRUE(GetFileTime(h, nullptr, nullptr, &t));
    EXPECT_TRUE(CloseHandle(h));
    return t;
}
}  // namespace

TEST_F(PlatformFiles, LastWriteTimesAreFileTimesSince1601) {
    writeFile(dir_ / "old.max", "a");
    writeFile(dir_ / "new.max", "b");
    const auto y2020 = std::chrono::sys_seconds(std::chrono::seconds(1577836800));  // 2020-01-01 00:00 UTC
    fs::last_write_time(dir_ / "old.max", std::chrono::file_clock::from_sys(y2020));
    fs::last_write_time(dir_ / "new.max", std::chrono::file_clock::from_sys(y2020 + std::chrono::hours(1)));

    // Written with backslashes, as the plug-in's paths are.
    std::wstring folder = hostrt::FromNativePath(dir_);
    std::replace(folder.begin(), folder.end(), L'/', L'\\');
    const FILETIME older = lastWriteThroughHandle(folder + L"\\old.max");
    const FILETIME newer = lastWriteThroughHandle(hostrt::FromNativePath(dir_ / "new.max"));
    EXPECT_EQ(hostrt::FileTimeValue(older), 132223104000000000ull);
    EXPECT_EQ(hostrt::FileTimeValue(newer) - hostrt::FileTimeValue(older), 36000000000ull);
    EXPECT_EQ(CompareFileTime(&older, &newer), -1);
    EXPECT_EQ(CompareFileTime(&newer, &older), 1);
    EXPECT_EQ(CompareFileTime(&older, &older), 0);
    EXPECT_EQ(hostrt::FileTimeValue(*hostrt::LastWriteFileTime(dir_ / "new.max")), hostrt::FileTimeValue(newer));

    EXPECT_TRUE(PathFileExistsW((folder + L"\\old.max").c_str()));
    EXPECT_TRUE(PathFileExistsW(folder.c_str()));
    EXPECT_FALSE(PathFileExistsW((folder + L"\\gone.max").c_str()));

    // Failures: an invalid handle and zero times.
    const std::wstring missing = hostrt::FromNativePath(dir_ / "gone.max");
    EXPECT_EQ(CreateFileW(missing.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(CreateFileW(folder.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_ACCESS_DENIED));
    FILETIME t{1, 1};
    EXPECT_FALSE(GetFileTime(INVALID_HANDLE_VALUE, nullptr, nullptr, &t));
    EXPECT_EQ(hostrt::FileTimeValue(t), 0u);
    EXPECT_FALSE(CloseHandle(INVALID_HANDLE_VALUE));
    EXPECT_EQ(hostrt::FileTimeValue(hostrt::FileTimeFromUnix(-hostrt::kFileTimeEpochOffsetSeconds - 1, 0)), 0u);
}

TEST_F(PlatformFiles, PathsSplitAtBothSeparators) {
    const hostrt::PathParts parts = hostrt::SplitPath(LR"(C:\scenes/refs\city.block.max)");
    EXPECT_EQ(parts.drive, L"C:");
    EXPECT_EQ(parts.directory, LR"(\scenes/refs\)");
    EXPECT_EQ(parts.stem, L"city.block");
    EXPECT_EQ(parts.extension, L".max");
    EXPECT_EQ(hostrt::PathDirectory(LR"(/tmp\sub/file.max)"), LR"(/tmp\sub/)");
    EXPECT_EQ(hostrt::PathFileName(LR"(/tmp/sub\file.max)"), L"file.max");
    EXPECT_EQ(hostrt::PathStem(LR"(a\b/file.max)"), L"file");
    EXPECT_EQ(hostrt::PathExtension(LR"(a.dir\file)"), L"");  // a dot in a folder is no extension
    EXPECT_EQ(hostrt::PathDirectory(L"file.max"), L"");
    EXPECT_EQ(hostrt::PathFileName(L"C:file.max"), L"file.max");
    EXPECT_EQ(hostrt::PathFileName(L"/tmp/"), L"");
    EXPECT_EQ(hostrt::ToNativePath(LR"(\tmp\a b\c.max)"), fs::path("/tmp/a b/c.max"));

    wchar_t drive[3], dir[64], name[64], ext[8];
    EXPECT_EQ(_wsplitpath_s(L"D:/x\\y.chr", drive, 3, dir, 64, name, 64, ext, 8), 0);
    EXPECT_STREQ(drive, L"D:");
    EXPECT_STREQ(dir, L"/x\\");
    EXPECT_STREQ(name, L"y");
    EXPECT_STREQ(ext, L".chr");
    EXPECT_EQ(_wsplitpath_s(L"/x/name.toolong", nullptr, 0, dir, 64, name, 64, ext, 8), ERANGE);
    EXPECT_STREQ(dir, L"");
    EXPECT_EQ(_wsplitpath_s(L"/x/y", drive, 0, dir, 64, nullptr, 0, nullptr, 0), EINVAL);
}

TEST_F(PlatformFiles, TemporaryFoldersAndInstallationRoot) {
    ScopedEnv tmpdir("TMPDIR", (dir_ / "sys").string());
    wchar_t buffer[MAX_PATH];
    const std::wstring expected = hostrt::FromNativePath(dir_ / "sys") + L"/";
    EXPECT_EQ(GetTempPathW(MAX_PATH, buffer), DWORD(expected.size()));
    EXPECT_EQ(std::wstring(buffer), expected);
    EXPECT_EQ(GetTempPathW(3, buffer), DWORD(expected.size() + 1));  // too small: the size it needs

    Interface* ip = GetCOREInterface();
    {
        ScopedEnv noTemp("MAXHOST_TEMP", std::nullopt);
        EXPECT_EQ(std::wstring(ip->GetDir(APP_TEMP_DIR)), expected + L"maxhost-temp/");
        EXPECT_TRUE(fs::is_directory(dir_ / "sys" / "maxhost-temp"));
    }
    ScopedEnv temp("MAXHOST_TEMP", (dir_ / "host temp").string());
    EXPECT_EQ(std::wstring(ip->GetDir(APP_TEMP_DIR)), hostrt::FromNativePath(dir_ / "host temp") + L"/");
    EXPECT_TRUE(fs::is_directory(dir_ / "host temp"));

    // The test executable lives in <build>/bin, so the installation root is <build>.
    const fs::path built = fs::canonical(fs::path(MAXHOST_BIN_DIR).parent_path());
    EXPECT_EQ(std::wstring(ip->GetDir(APP_MAXROOT_DIR)), hostrt::FromNativePath(built) + L"/");
    hostrt::SetInstallRoot(dir_ / "install");
    EXPECT_EQ(std::wstring(ip->GetDir(APP_MAXROOT_DIR)), hostrt::FromNativePath(dir_ / "install") + L"/");
    EXPECT_EQ(std::wstring(ip->GetDir(12345)), L"");
}

// ---------------------------------------------------------------- prompt line, listener and session

using PlatformShell = PlatformTest;

TEST_F(PlatformShell, PromptLineShowsTheTemporaryPromptOverTheStack) {
    Interface* ip = GetCOREInterface();
    auto& prompt = hostrt::PromptLine::Instance();
    EXPECT_EQ(prompt.Current(), L"");
    ip->ReplacePrompt(L"Loading");  // with nothing to replace, it pushes
    ip->PushPrompt(L"Pick a node");
    ip->ReplacePrompt(L"Reference Loaded");
    EXPECT_EQ(prompt.Stack(), (std::vector<std::wstring>{L"Loading", L"Reference Loaded"}));
    ip->DisplayTempPrompt(L"Reload Successful", 2000);
    EXPECT_EQ(prompt.Current(), L"Reload Successful");
    EXPECT_EQ(prompt.LastTempText(), L"Reload Successful");
    EXPECT_EQ(prompt.LastTempDuration(), 2000);
    ip->RemoveTempPrompt();
    EXPECT_EQ(prompt.Current(), L"Reference Loaded");
    EXPECT_EQ(prompt.LastTempText(), L"Reload Successful");
    ip->DisplayTempPrompt(L"gone at once", 0);
    EXPECT_EQ(prompt.Current(), L"Reference Loaded");
    EXPECT_EQ(prompt.TempCount(), 2);
    ip->PopPrompt();
    ip->PopPrompt();
    ip->PopPrompt();
    EXPECT_EQ(prompt.Current(), L"");
}

TEST_F(PlatformShell, ListenerCapturesFormattedLinesWithWidePercentS) {
    auto& listener = hostrt::Listener::Instance();
    std::wstring observed;
    const int key = listener.AddObserver([&](std::wstring_view text) { observed += text; });
    const MCHAR* name = L"Helper\u00e901";
    mprintf(L"\nVD Merge Time: %f\nVD Initialization Time: %f\n", 1.25, 0.5);
    mprintf(L"\nRefNode: %s - %d\n", name, 7);
    mputs(L"tail");
    mflush();
    const std::wstring expected =
        L"\nVD Merge Time: 1.250000\nVD Initialization Time: 0.500000\n\nRefNode: Helper\u00e901 - 7\ntail";
    EXPECT_EQ(listener.Text(), expected);
    EXPECT_EQ(observed, expected);
    EXPECT_EQ(listener.Lines(), (std::vector<std::wstring>{L"", L"VD Merge Time: 1.250000",
                                                           L"VD Initialization Time: 0.500000", L"",
                                                           L"RefNode: Helper\u00e901 - 7", L"tail"}));
    EXPECT_EQ(listener.FlushCount(), 1);
    listener.RemoveObserver(key);
    listener.Clear();
    mputs(L"again");
    EXPECT_EQ(listener.Text(), L"again");
    EXPECT_EQ(observed, expected);
}

namespace {
// Unregisters itself on the first redraw it hears.
struct OneShotRedraw : RedrawViewsCallback {
    int calls = 0;
    void proc(Interface* ip) override {
        ++calls;
        ip->UnRegisterRedrawViewsCallback(this);
    }
};
}  // namespace

TEST_F(PlatformShell, SessionFlagsTimeRedrawsCursorColoursAndScale) {
    Interface* ip = GetCOREInterface();
    EXPECT_FALSE(ip->HasUserInterface());
    EXPECT_FALSE(ip->IsNetServer());
    ip->SetHasUserInterface(TRUE);
    ip->SetNetServer(TRUE);
    EXPECT_TRUE(ip->HasUserInterface());
    EXPECT_TRUE(ip->IsNetServer());
    EXPECT_TRUE(ip->GetSceneExplorerLiveUpdate());  // reports itself enabled until bulk work switches it off
    ip->SetSceneExplorerLiveUpdate(FALSE);
    EXPECT_FALSE(ip->GetSceneExplorerLiveUpdate());

    OneShotRedraw once;
    ip->RegisterRedrawViewsCallback(&once);
    EXPECT_EQ(ip->GetTime(), 0);
    ip->SetTime(4800);
    ip->SetTime(9600, FALSE);
    ip->RedrawViews(ip->GetTime());
    EXPECT_EQ(ip->GetTime(), 9600);
    EXPECT_EQ(hostrt::Session::Instance().RedrawCount(), 2);
    EXPECT_EQ(hostrt::Session::Instance().LastRedrawTime(), 9600);
    EXPECT_EQ(once.calls, 1);

    HCURSOR wait = LoadCursor(nullptr, IDC_WAIT);
    HCURSOR arrow = LoadCursor(nullptr, IDC_ARROW);
    ASSERT_NE(wait, nullptr);
    EXPECT_NE(wait, arrow);
    EXPECT_EQ(GetCursor(), arrow);
    EXPECT_EQ(SetCursor(wait), arrow);
    EXPECT_EQ(GetCursor(), wait);
    EXPECT_EQ(LoadCursor(nullptr, MAKEINTRESOURCE(1)), nullptr);

    const Point3 helper = GetUIColor(20);
    const Point3 other = GetUIColor(3);
    EXPECT_NE(helper, other);
    EXPECT_EQ(other, GetUIColor(21));
    for (float c : {helper.x, helper.y, helper.z, other.x}) EXPECT_TRUE(c >= 0.0f && c <= 1.0f);

    EXPECT_EQ(MaxSDK::GetUIScaleFactor(), 1.0f);
    hostrt::UiState::Instance().SetScaleFactor(1.5f);
    EXPECT_EQ(MaxSDK::UIScaled(25), 37);
    EXPECT_THROW(hostrt::UiState::Instance().SetScaleFactor(0.0f), std::invalid_argument);

    MaxSDK::PerformanceTools::Timer timer;
    timer.StartTimer();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const double seconds = timer.EndTimer();
    EXPECT_GE(seconds, 0.02);
    EXPECT_LT(seconds, 10.0);
    EXPECT_TRUE(DisableThreadLibraryCalls(nullptr));
}
