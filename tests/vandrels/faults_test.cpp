// Faults that must lose nothing: a reference file cut short or replaced by a folder while it is reloaded or when
// the shot opens, a shot saved into a read-only folder or onto a full disk. Each gives an error with the host's reason, leaves the scene
// in memory as it was (whole-scene comparison) and the shot file on disk byte for byte as it was. And hostile
// names: a reference file, a node and a setting whose names hold quotes, backslashes, line breaks and percent
// signs are used as the names they are and run nothing.
#include "vandrels_library.h"

#include "frame/settings.h"
#include "inode.h"
#include "maxapi.h"
#include "maxscript/string_literal.h"
#include "platform/dialog_service.h"
#include "platform/listener_capture.h"
#include "scene_compare.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

using vtest::LastReport;
using vtest::Node;
using vtest::RunInt;
using vtest::Script;
namespace fs = std::filesystem;
using hostrt::test::CompareSnapshots;
using hostrt::test::JoinDifferences;
using hostrt::test::TakeSnapshot;

std::string Bytes(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void WriteBytes(const fs::path& file, const std::string& bytes) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), std::streamsize(bytes.size()));
}

std::string Utf8(const std::wstring& text) { return MSTR(text.c_str()).ToUTF8(); }

// What a script injected through a name would print: the line "pwned" the listener shows for print "pwned".
bool SomethingRan(const std::wstring& listener) { return listener.find(L"\n\"pwned\"\n") != std::wstring::npos; }

class Faults : public vtest::SceneTest {
protected:
    Faults() : SceneTest("vandrels_faults") {}
    void SetUp() override {
        SceneTest::SetUp();
        folder_ = fs::temp_directory_path() / ("vandrels_faults_" + std::to_string(::getpid()));
        fs::create_directories(folder_);
        hostrt::DialogService::Instance().Reset();
        Script(L"Vandrels.PrintTimes false");
    }
    void TearDown() override {
        hostrt::DialogService::Instance().Reset();
        std::error_code ec;
        fs::permissions(folder_, fs::perms::owner_all, fs::perm_options::add, ec);
        fs::remove_all(folder_, ec);
        SceneTest::TearDown();
    }
    MSTR Path(const std::string& name) const { return MSTR::FromUTF8((folder_ / name).string()); }
    static std::wstring Literal(const MSTR& text) { return MaxScriptStringLiteral(text.data()); }
    // The set (Base, a box with Top below it, and Ball) written to file; the scene is empty afterwards.
    void WriteSet(const MSTR& file, const std::wstring& baseName = L"Base") {
        Script(L"resetMaxFile #noPrompt; b = box name:" + MaxScriptStringLiteral(baseName) +
               L"; t = box name:\"Top\" pos:[0,0,30]; t.parent = b; sphere name:\"Ball\" pos:[0,80,0]; "
               L"saveMaxFile " + Literal(file));
        GetCOREInterface()->FileReset(TRUE);
    }
    // The shot: the set as reference h, a local box under Base and an edit of Base, saved to shot_.
    void BuildShot() {
        reference_ = Path("set.max");
        shot_ = Path("shot.max");
        WriteSet(reference_);
        Script(L"h = Vandrels.AddVandrel " + Literal(reference_) +
               L"; k = box name:\"Kid\" pos:[5,5,60]; k.parent = $Base; $Base.wirecolor = color 10 20 30; "
               L"saveMaxFile " + Literal(shot_));
    }
    fs::path folder_;
    MSTR reference_;
    MSTR shot_;
};

TEST_F(Faults, AReloadOfAFileCutShortOrReplacedByAFolderLeavesTheReferenceAsItWas) {
    BuildShot();
    const auto before = TakeSnapshot();
    const fs::path set = reference_.ToUTF8();
    const std::string whole = Bytes(set);
    auto& listener = hostrt::Listener::Instance();

    // Cut short while another program rewrites it.
    WriteBytes(set, whole.substr(0, whole.size() / 2));
    listener.Clear();
    EXPECT_EQ(RunInt(L"h.baseObject.Reload()"), 0);
    EXPECT_NE(listener.Text().find(L"Error Reloading Reference: " + std::wstring(reference_.data())),
              std::wstring::npos)
        << Utf8(listener.Text());
    EXPECT_EQ(LastReport().rfind(L"Error Reloading Reference", 0), 0u) << Utf8(LastReport());
    EXPECT_NE(LastReport().find(std::wstring(reference_.data()) + L": truncated"), std::wstring::npos)
        << Utf8(LastReport());
    EXPECT_EQ(JoinDifferences(CompareSnapshots(before, TakeSnapshot(), {true})), "");

    // Through the scripting interface the same file is reported and left alone.
    listener.Clear();
    Script(L"Vandrels.ReloadVandrels #(1)");
    EXPECT_NE(listener.Text().find(L"cannot be read"), std::wstring::npos) << Utf8(listener.Text());
    EXPECT_EQ(JoinDifferences(CompareSnapshots(before, TakeSnapshot(), {true})), "");

    // A folder where the file was: the host's reason is carried.
    fs::remove(set);
    fs::create_directory(set);
    listener.Clear();
    EXPECT_EQ(RunInt(L"h.baseObject.Reload()"), 0);
    EXPECT_NE(listener.Text().find(L"Is a directory"), std::wstring::npos) << Utf8(listener.Text());
    EXPECT_EQ(JoinDifferences(CompareSnapshots(before, TakeSnapshot(), {true})), "");

    // Once the file is whole again the reload goes through and brings back the same scene.
    fs::remove(set);
    WriteBytes(set, whole);
    EXPECT_EQ(RunInt(L"h.baseObject.Reload()"), 1);
    EXPECT_EQ(JoinDifferences(CompareSnapshots(before, TakeSnapshot(), {true})), "");
}

TEST_F(Faults, AShotOpenedWhileItsReferenceIsAFolderLosesNoEdit) {
    BuildShot();
    const auto before = TakeSnapshot();
    const fs::path set = reference_.ToUTF8();
    fs::rename(set, folder_ / "set.whole");
    fs::create_directory(set);
    auto& listener = hostrt::Listener::Instance();
    listener.Clear();

    // The shot opens without the set's content, says why, and its records keep the edits through another save.
    ASSERT_TRUE(GetCOREInterface()->LoadFromFile(shot_.data()));
    EXPECT_NE(listener.Text().find(std::wstring(reference_.data()) + L": cannot open: Is a directory"),
              std::wstring::npos)
        << Utf8(listener.Text());
    EXPECT_EQ(Node(L"Base"), nullptr);
    ASSERT_EQ(RunInt(L"if saveMaxFile " + Literal(shot_) + L" then 1 else 0"), 1);

    // With the file back the shot opens as it was.
    fs::remove(set);
    fs::rename(folder_ / "set.whole", set);
    ASSERT_TRUE(GetCOREInterface()->LoadFromFile(shot_.data()));
    EXPECT_EQ(JoinDifferences(CompareSnapshots(before, TakeSnapshot(), {true})), "");
}

TEST_F(Faults, AShotSavedIntoAReadOnlyFolderFailsAndKeepsSceneAndFile) {
    BuildShot();
    Script(L"$Top.wirecolor = color 200 0 0");
    const auto before = TakeSnapshot();
    const std::string saved = Bytes(shot_.ToUTF8());
    fs::permissions(folder_, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    auto& listener = hostrt::Listener::Instance();
    listener.Clear();

    EXPECT_EQ(RunInt(L"if saveMaxFile " + Literal(shot_) + L" then 1 else 0"), 0);
    EXPECT_NE(listener.Text().find(L"cannot write: the folder is read-only"), std::wstring::npos)
        << Utf8(listener.Text());
    EXPECT_EQ(JoinDifferences(CompareSnapshots(before, TakeSnapshot(), {true})), "");
    EXPECT_EQ(Bytes(shot_.ToUTF8()), saved);
    EXPECT_EQ(RunInt(L"if getSaveRequired() then 1 else 0"), 1);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()), 2);  // no temporary left
}

TEST_F(Faults, AShotSavedOntoAFullDiskFailsAndKeepsSceneAndFile) {
    BuildShot();
    Script(L"for i in 1 to 40 do box name:(\"Filler\" + i as string)");
    const auto before = TakeSnapshot();
    const std::string saved = Bytes(shot_.ToUTF8());
    auto& listener = hostrt::Listener::Instance();
    listener.Clear();

    // The system refuses every byte past the old file's size, as a full disk does.
    struct rlimit old {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
    const auto oldSignal = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = old;
    small.rlim_cur = rlim_t(saved.size());
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const int result = RunInt(L"if saveMaxFile " + Literal(shot_) + L" then 1 else 0");
    ::setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldSignal);

    EXPECT_EQ(result, 0);
    EXPECT_NE(listener.Text().find(L"cannot write: File too large"), std::wstring::npos) << Utf8(listener.Text());
    EXPECT_EQ(JoinDifferences(CompareSnapshots(before, TakeSnapshot(), {true})), "");
    EXPECT_EQ(Bytes(shot_.ToUTF8()), saved);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()), 2);

    // With room again the same save goes through and the shot opens as it was.
    ASSERT_EQ(RunInt(L"if saveMaxFile " + Literal(shot_) + L" then 1 else 0"), 1);
    ASSERT_TRUE(GetCOREInterface()->LoadFromFile(shot_.data()));
    EXPECT_EQ(JoinDifferences(CompareSnapshots(before, TakeSnapshot(), {true})), "");
}

TEST_F(Faults, HostileNamesAreUsedAsNamesAndRunNothing) {
    const std::wstring hostile = L"a\"b\nprint \"pwned\"";
    reference_ = Path(Utf8(hostile) + ".max");
    shot_ = Path("shot.max");
    const std::wstring nodeName = L"Q\"uote\\d\r\nprint \"pwned\" 100%";
    WriteSet(reference_, nodeName);
    auto& listener = hostrt::Listener::Instance();
    listener.Clear();

    Script(L"h = Vandrels.AddVandrel " + Literal(reference_));
    INode* base = Node(nodeName.c_str());
    ASSERT_NE(base, nullptr);
    Script(L"(getNodeByName " + MaxScriptStringLiteral(nodeName) + L").wirecolor = color 1 2 3");
    Script(L"Vandrels.ReloadVandrels #(1)");
    Script(L"saveMaxFile " + Literal(shot_));
    ASSERT_TRUE(GetCOREInterface()->LoadFromFile(shot_.data()));
    base = Node(nodeName.c_str());
    ASSERT_NE(base, nullptr);
    EXPECT_EQ(base->GetWireColor(), RGB(1, 2, 3));
    EXPECT_EQ(RunInt(L"(Vandrels.GetVandrel 1).baseObject.NumRefNodes()"), 3);

    // A setting holding quotes, a backslash and a percent sign reads back as written.
    const MCHAR* value = L"C:\\shots\\\"final\" 100%\\";
    vandrels::WriteStringSetting(L"LastFileDir", value);
    MSTR read;
    ASSERT_TRUE(vandrels::ReadStringSetting(L"LastFileDir", read));
    EXPECT_EQ(read, MSTR(value));
    EXPECT_FALSE(SomethingRan(listener.Text())) << Utf8(listener.Text());
}

}  // namespace
