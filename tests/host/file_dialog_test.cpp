// The system open-file dialog as the host answers it: the answer's layout in the caller's buffer, the choices the
// system dialog would refuse, and quiet mode; and the shell's open requests.
#include "commdlg.h"
#include "shellapi.h"

#include "platform/file_dialog_service.h"
#include "platform/session.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

class FileDialog : public ::testing::Test {
protected:
    void SetUp() override {
        hostrt::ResetPlatform();
        folder_ = fs::temp_directory_path() / ("host_file_dialog_" + std::to_string(::getpid()));
        fs::create_directories(folder_ / "other");
        for (const char* name : {"a.max", "b.max", "other/c.max"}) std::ofstream(folder_ / name) << "x";
        folderText_ = folder_.wstring();
    }
    void TearDown() override {
        fs::remove_all(folder_);
        hostrt::ResetPlatform();
    }
    // Runs the dialog with a buffer of length characters; answers the strings it holds, or "<cancelled>".
    std::vector<std::wstring> Pick(DWORD flags, DWORD length = 260) {
        buffer_.assign(length, L'#');
        OPENFILENAMEW ofn;
        ofn.lStructSize = sizeof ofn;
        ofn.lpstrFile = buffer_.data();
        ofn.nMaxFile = length;
        ofn.lpstrInitialDir = folderText_.c_str();
        ofn.lpstrFilter = L"Scenes\0*.max\0All\0*.*\0";
        ofn.Flags = flags;
        if (!GetOpenFileNameW(&ofn)) return {L"<cancelled>"};
        offset_ = ofn.nFileOffset;
        std::vector<std::wstring> strings;
        for (const wchar_t* s = buffer_.data(); *s; s += std::wcslen(s) + 1) strings.emplace_back(s);
        return strings;
    }
    static void Answer(std::vector<std::wstring> files) { hostrt::FileDialogService::Instance().PushAnswer(std::move(files)); }

    fs::path folder_;
    std::wstring folderText_;
    std::vector<wchar_t> buffer_;
    WORD offset_ = 0;
};

TEST_F(FileDialog, AnswersOnePathOrTheFolderAndTheNames) {
    constexpr DWORD kMulti = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_ALLOWMULTISELECT;
    const std::wstring a = folderText_ + L"/a.max";
    Answer({a});
    EXPECT_EQ(Pick(kMulti), std::vector<std::wstring>{a});
    EXPECT_EQ(offset_, WORD(folderText_.size() + 1));
    Answer({L"a.max", L"b.max"});  // names are taken from the initial folder
    EXPECT_EQ(Pick(kMulti), (std::vector<std::wstring>{folderText_, L"a.max", L"b.max"}));
    EXPECT_EQ(offset_, WORD(folderText_.size() + 1));

    const auto records = hostrt::FileDialogService::Instance().Records();
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[1].request.filters,
              (std::vector<std::pair<std::wstring, std::wstring>>{{L"Scenes", L"*.max"}, {L"All", L"*.*"}}));
    EXPECT_EQ(records[1].request.title, L"Open");
}

// What the system dialog would not accept cancels it, and the record says why; nothing queued cancels too.
TEST_F(FileDialog, RefusesWhatTheSystemDialogWouldNotAccept) {
    const std::vector<std::pair<DWORD, std::vector<std::wstring>>> refused = {
        {OFN_FILEMUSTEXIST, {L"a.max", L"b.max"}},                                // one file only
        {OFN_FILEMUSTEXIST | OFN_ALLOWMULTISELECT, {L"a.max", L"other/c.max"}},  // two folders
        {OFN_FILEMUSTEXIST, {L"nothere.max"}},
        {OFN_PATHMUSTEXIST, {L"nofolder/a.max"}},
        {OFN_FILEMUSTEXIST, {}},  // Cancel pressed
    };
    for (const auto& [flags, files] : refused) {
        Answer(files);
        EXPECT_EQ(Pick(flags), std::vector<std::wstring>{L"<cancelled>"});
        EXPECT_EQ(CommDlgExtendedError(), 0u);
    }
    EXPECT_EQ(Pick(0), std::vector<std::wstring>{L"<cancelled>"});
    const auto records = hostrt::FileDialogService::Instance().Records();
    ASSERT_EQ(records.size(), refused.size() + 1);
    for (std::size_t i = 0; i + 2 < records.size(); ++i) EXPECT_FALSE(records[i].note.empty()) << i;
    EXPECT_EQ(records.back().note, L"no answer queued: cancelled");

    // An answer longer than the buffer: an error, with the length needed in the first character.
    Answer({L"a.max"});
    EXPECT_EQ(Pick(0, 8), std::vector<std::wstring>{L"<cancelled>"});
    EXPECT_EQ(CommDlgExtendedError(), DWORD(FNERR_BUFFERTOOSMALL));
    EXPECT_EQ(std::size_t(buffer_[0]), folderText_.size() + 8);
    // Quiet mode shows nothing and keeps the queued answer for the next dialog.
    hostrt::Session::Instance().SetQuiet(true);
    Answer({L"a.max"});
    EXPECT_EQ(Pick(0), std::vector<std::wstring>{L"<cancelled>"});
    EXPECT_TRUE(hostrt::FileDialogService::Instance().Records().back().suppressed);
    hostrt::Session::Instance().SetQuiet(false);
    EXPECT_EQ(Pick(0), std::vector<std::wstring>{folderText_ + L"/a.max"});
}

TEST_F(FileDialog, ShellRequestsAreRecorded) {
    EXPECT_GT(reinterpret_cast<INT_PTR>(ShellExecuteW(nullptr, L"open", L"https://example.org/", nullptr, nullptr, 1)), 32);
    EXPECT_LE(reinterpret_cast<INT_PTR>(ShellExecuteW(nullptr, L"open", L"", nullptr, nullptr, 1)), 32);
    const auto requests = hostrt::ShellRequests::Instance().Requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].file, L"https://example.org/");
    EXPECT_EQ(requests[0].operation, L"open");
}

}  // namespace
