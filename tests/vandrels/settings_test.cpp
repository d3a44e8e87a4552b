// The library's settings through a real host INI file: the MAXScript texts run by the host's interpreter, the
// read rules and defaults, the print-times and save-merged rules, and a setting that outlives the host run.
#include "vandrels_library.h"

#include "maxapi.h"
#include "winshim.h"

#include "platform/host_dirs.h"
#include "platform/ini_file.h"
#include "platform/ui_state.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cwctype>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

// The settings code is built into the tests too (tests/CMakeLists.txt), so that the readers the dialogs will
// use can be called directly.
#include "script/dialog_settings.h"
#include "helper/save_merged.h"
#include "frame/settings.h"

namespace fs = std::filesystem;
using namespace vandrels;

namespace {

class SettingsTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir_ = fs::temp_directory_path() / ("vandrels-settings-" + std::to_string(getpid()));
        fs::create_directories(dir_);
        ini_ = dir_ / "3dsMax.ini";
        fs::remove(ini_);
        hostrt::SetIniPath(ini_);
    }
    void TearDown() override {
        hostrt::SetIniPath({});
        fs::remove_all(dir_);
    }
    void Store(const wchar_t* key, const wchar_t* value) { hostrt::IniFile(ini_).Set(L"Vandrels", key, value); }
    std::wstring Stored(const wchar_t* key) const { return hostrt::IniFile(ini_).Get(L"Vandrels", key); }

    fs::path dir_;
    fs::path ini_;
};

TEST_F(SettingsTest, MissingSectionGivesDefaultsAndOnlyPrintTimesIsWritten) {
    EXPECT_FALSE(GetMergeForNetworkRender());
    EXPECT_TRUE(GetShowDuplicatedNamesWarning());
    hostrt::UiState::Instance().SetScaleFactor(1.5f);
    const ManagerGeometry g = ReadManagerGeometry();
    hostrt::UiState::Instance().SetScaleFactor(1.0f);
    EXPECT_EQ(g.sizeX, 1080);
    EXPECT_EQ(g.sizeY, 600);
    EXPECT_EQ(g.posX, 300);
    EXPECT_EQ(g.posY, 300);
    const AdvancedResetChoices choices = ReadAdvancedResetChoices();
    EXPECT_EQ(choices.selection, 1);
    EXPECT_TRUE(choices.categories[7] && choices.parameters[8]);
    int untouched = 42;
    EXPECT_FALSE(ReadIntSetting(L"LastFileDir", untouched));
    EXPECT_EQ(untouched, 42);
    EXPECT_FALSE(fs::exists(ini_) && !hostrt::IniFile(ini_).Keys(L"Vandrels").empty());

    // Print times: read once per run; a missing value is written as 0 by that first query.
    EXPECT_FALSE(GetPrintTimes());
    EXPECT_EQ(hostrt::IniFile(ini_).Keys(L"Vandrels"), std::vector<std::wstring>{L"PrintTimes"});
    EXPECT_EQ(Stored(L"PrintTimes"), L"0");
    Store(L"PrintTimes", L"1");
    EXPECT_FALSE(GetPrintTimes());  // not read again in this run
    SetPrintTimes(true);
    EXPECT_TRUE(GetPrintTimes());
    SetPrintTimes(false);
    EXPECT_EQ(Stored(L"PrintTimes"), L"0");
}

TEST_F(SettingsTest, ReadRulesFollowTheStoredText) {
    for (const wchar_t* off : {L"-5", L"abc", L"0", L""}) {
        Store(L"MergeForNetworkRender", off);
        EXPECT_FALSE(GetMergeForNetworkRender()) << WStr(off).ToUTF8();
    }
    Store(L"MergeForNetworkRender", L"2");
    EXPECT_TRUE(GetMergeForNetworkRender());
    SetMergeForNetworkRender(false);
    EXPECT_EQ(Stored(L"MergeForNetworkRender"), L"0");
    SetMergeForNetworkRender(true);
    EXPECT_EQ(Stored(L"MergeForNetworkRender"), L"1");

    Store(L"HideDuplicatedNamesWarning", L"abc");
    EXPECT_TRUE(GetShowDuplicatedNamesWarning());
    Store(L"HideDuplicatedNamesWarning", L" 1x");
    EXPECT_FALSE(GetShowDuplicatedNamesWarning());
    SetShowDuplicatedNamesWarning(true);
    EXPECT_EQ(Stored(L"HideDuplicatedNamesWarning"), L"0");

    Store(L"DlgSizeX", L"0");
    Store(L"DlgSizeY", L"-10");
    Store(L"DlgPosX", L"-10");
    Store(L"DlgPosY", L"12ab");
    const ManagerGeometry g = ReadManagerGeometry();
    EXPECT_EQ(g.sizeX, 720);
    EXPECT_EQ(g.sizeY, 400);
    EXPECT_EQ(g.posX, -10);
    EXPECT_EQ(g.posY, 12);

    Store(L"AdvReset_Selection", L"3");
    Store(L"AdvReset_UILayer", L"0");
    EXPECT_EQ(ReadAdvancedResetChoices().selection, 1);
    EXPECT_FALSE(ReadAdvancedResetChoices().parameters[7]);
    Store(L"AdvReset_Selection", L"2");
    EXPECT_EQ(ReadAdvancedResetChoices().selection, 2);
}

TEST_F(SettingsTest, WritesKeepTheirValuesExactly) {
    WriteStringSetting(L"LastFileDir", L"C:\\My Scenes\\props\\");
    EXPECT_EQ(Stored(L"LastFileDir"), L"C:\\My Scenes\\props\\");
    MSTR text;
    ASSERT_TRUE(ReadStringSetting(L"LastFileDir", text));
    EXPECT_EQ(text, MSTR(L"C:\\My Scenes\\props\\"));
    WriteStringSetting(L"Note", L"a \"quoted\" \\ word");  // quotes and backslashes are taken as text
    ASSERT_TRUE(ReadStringSetting(L"Note", text));
    EXPECT_EQ(text, MSTR(L"a \"quoted\" \\ word"));

    ManagerGeometry g;
    g.sizeX = 900;
    g.sizeY = 500;
    g.posX = -40;
    g.posY = 15;
    WriteManagerGeometry(g);
    EXPECT_EQ(Stored(L"DlgPosX"), L"-40");
    EXPECT_EQ(ReadManagerGeometry().sizeY, 500);
    AdvancedResetChoices choices;
    choices.selection = 2;
    choices.categories[2] = false;
    WriteAdvancedResetChoices(choices);
    EXPECT_EQ(Stored(L"AdvReset_UILights"), L"0");
    EXPECT_EQ(Stored(L"AdvReset_UIGeometry"), L"1");
    EXPECT_EQ(ReadAdvancedResetChoices().selection, 2);
}

TEST_F(SettingsTest, SaveMergedDecision) {
    const std::string systemTemp = (dir_ / "sys").string(), hostTemp = (dir_ / "host").string();
    const char* oldTmp = std::getenv("TMPDIR");
    const std::string savedTmp = oldTmp ? oldTmp : "";
    setenv("TMPDIR", systemTemp.c_str(), 1);
    setenv("MAXHOST_TEMP", hostTemp.c_str(), 1);
    wchar_t buffer[1024];
    ASSERT_GT(GetTempPathW(1024, buffer), 0u);
    const std::wstring systemPrefix = buffer;
    const std::wstring hostPrefix = GetCOREInterface()->GetDir(APP_TEMP_DIR);
    ASSERT_EQ(hostPrefix.back(), L'/');
    const std::wstring elsewhere = L"/projects/scene.max";

    Store(L"MergeForNetworkRender", L"0");
    EXPECT_FALSE(ShouldSaveMerged((systemPrefix + L"job.max").c_str()));
    SetSaveRefsAsMerged(true);
    EXPECT_TRUE(ShouldSaveMerged(elsewhere.c_str()));
    SetSaveRefsAsMerged(false);

    Store(L"MergeForNetworkRender", L"1");
    EXPECT_TRUE(ShouldSaveMerged((systemPrefix + L"job.max").c_str()));
    EXPECT_TRUE(ShouldSaveMerged((hostPrefix + L"job.max").c_str()));
    EXPECT_TRUE(ShouldSaveMerged((hostPrefix.substr(0, hostPrefix.size() - 1) + L"\\job.max").c_str()));
    EXPECT_FALSE(ShouldSaveMerged(systemPrefix.substr(0, systemPrefix.size() - 1).c_str()));  // shorter
    std::wstring upper = systemPrefix;
    for (wchar_t& c : upper) c = wchar_t(std::towupper(c));
    EXPECT_FALSE(ShouldSaveMerged((upper + L"job.max").c_str()));
    EXPECT_FALSE(ShouldSaveMerged(elsewhere.c_str()));

    unsetenv("MAXHOST_TEMP");
    if (oldTmp) setenv("TMPDIR", savedTmp.c_str(), 1);
    else unsetenv("TMPDIR");
}

// Output of `maxhost run` with the library loaded against this test's INI file.
std::string RunMaxhost(const fs::path& ini, const fs::path& script, const std::string& text) {
    std::ofstream(script) << text;
    const std::string cmd = std::string(MAXHOST_BIN_DIR) + "/maxhost --plugins " + MAXHOST_PLUGIN_DIR + " --ini " +
                            ini.string() + " run " + script.string() + " 2>&1";
    FILE* p = popen(cmd.c_str(), "r");
    if (!p) return "popen failed";
    std::string out;
    char buf[512];
    while (fgets(buf, sizeof buf, p)) out += buf;
    pclose(p);
    return out;
}

TEST_F(SettingsTest, MergeForNetworkRenderOutlivesTheHostRun) {
    const std::string first = RunMaxhost(ini_, dir_ / "first.ms",
                                         "format \"before %\\n\" (Vandrels.MergeForNetworkRender())\n"
                                         "Vandrels.SetMergeForNetworkRender true\n"
                                         "format \"after %\\n\" (Vandrels.MergeForNetworkRender())\n");
    EXPECT_NE(first.find("before false"), std::string::npos) << first;
    EXPECT_NE(first.find("after true"), std::string::npos) << first;
    const std::string second =
        RunMaxhost(ini_, dir_ / "second.ms", "format \"again %\\n\" (Vandrels.MergeForNetworkRender())\n");
    EXPECT_NE(second.find("again true"), std::string::npos) << second;
    EXPECT_EQ(Stored(L"MergeForNetworkRender"), L"1");
}

}  // namespace
