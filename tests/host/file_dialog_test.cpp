// The system open-file dialog as the host answers it: the choices the system dialog would refuse, an answer too
// long for the caller's buffer, and quiet mode. (The plug-in's tests read its answers for one and several files.)
#include "commdlg.h"

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
        std::vector<std::wstring> strings;
        for (const wchar_t* s = buffer_.data(); *s; s += std::wcslen(s) + 1) strings.emplace_back(s);
        return strings;
    }
    static void Answer(std::vector<std::wstring> files) { hostrt::FileDialogService::Instance().PushAnswer(std::move(files)); }

    fs::path folder_;
    std::wstring folderText_;
    std::vector<wchar_t> buffer_;
};

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

}  // namespace
