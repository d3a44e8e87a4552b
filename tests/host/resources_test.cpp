// Library resources: the resource compiler's string tables and LoadStringW reading them through a library's handle.
#include "winshim.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;

namespace {

struct SampleLibrary {
    void* handle = dlopen((std::string(MAXHOST_TEST_PLUGIN_DIR) + "/HostSample.dlo").c_str(), RTLD_NOW | RTLD_LOCAL);
    ~SampleLibrary() {
        if (handle) dlclose(handle);
    }
};

// Runs hostrc on a script; answers its exit status and what it wrote to stderr.
int RunCompiler(const fs::path& script, const fs::path& out, std::string& errors) {
    const fs::path log = out.string() + ".log";
    const std::string cmd = std::string(MAXHOST_BIN_DIR) + "/hostrc " + script.string() + " " + out.string() +
                            " 2> " + log.string();
    const int status = std::system(cmd.c_str());
    std::ifstream in(log);
    errors.assign(std::istreambuf_iterator<char>(in), {});
    return WEXITSTATUS(status);
}

}  // namespace

TEST(Resources, StringsComeFromTheLibraryTable) {
    SampleLibrary lib;
    ASSERT_NE(lib.handle, nullptr) << dlerror();
    wchar_t buf[512];
    EXPECT_EQ(LoadStringW(lib.handle, 1, buf, 512), 12);
    EXPECT_STREQ(buf, L"SampleTarget");
    // Escapes, doubled quotes, joined literals and characters beyond ASCII survive compilation.
    EXPECT_GT(LoadStringW(lib.handle, 0x20, buf, 512), 0);
    EXPECT_STREQ(buf, L"Line\n\t\"quoted\" \\ joined \u00e9 \u2713");
    EXPECT_EQ(LoadStringW(lib.handle, 7, buf, 512), 5);
    EXPECT_STREQ(buf, L"Seven");

    // A short buffer gets a truncated, terminated text; a missing id or library answers 0 and an empty text.
    EXPECT_EQ(LoadStringW(lib.handle, 1, buf, 7), 6);
    EXPECT_STREQ(buf, L"Sample");
    EXPECT_EQ(LoadStringW(lib.handle, 2, buf, 512), 0);
    EXPECT_STREQ(buf, L"");
    EXPECT_EQ(LoadStringW(nullptr, 1, buf, 512), 0);
}

// String tables and dialog templates alike.
TEST(Resources, CompilerReportsMistakesWithFileAndLine) {
    const fs::path dir = fs::temp_directory_path() / ("hostrc-test-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    struct Case {
        const char* script;
        const char* message;
    } cases[] = {
        {"STRINGTABLE\nBEGIN\n  1 \"a\"\n  1 \"b\"\nEND\n", ":4: string id 1 is defined twice"},
        {"STRINGTABLE\nBEGIN\n  IDS_NOPE \"a\"\nEND\n", ":3: unknown identifier IDS_NOPE"},
        {"STRINGTABLE\nBEGIN\n  2 \"open\nEND\n", ":3: unterminated string"},
        {"STRINGTABLE\nBEGIN\n  3 \"a\"\n", "STRINGTABLE is not closed"},
        {"#include \"missing.h\"\n", "missing.h: cannot be read"},
        {"5 DIALOGEX 0, 0, 10, 10\nBEGIN\n  BUTTONX \"a\", 1, 0, 0, 5, 5\nEND\n", ":3: unknown control statement 'BUTTONX'"},
        {"5 DIALOGEX 0, 0, 10, 10\nBEGIN\n  LTEXT \"a\" 1, 0, 0, 5, 5\nEND\n", ":3: ',' is expected after the control text"},
        {"5 DIALOG 0, 0, 10, 10\nBEGIN\nEND\n5 DIALOG 0, 0, 10, 10\nBEGIN\nEND\n", ":4: dialog id 5 is defined twice"},
        {"5 DIALOG 0, 0, 10, 10\nSTYLE WS_NOPE\nBEGIN\nEND\n", ":2: unknown identifier WS_NOPE"},
        {"5 DIALOG 0, 0, 10, 10\nBEGIN\n  EDITTEXT 70000, 0, 0, 5, 5\nEND\n", ":3: control id 70000 is out of range"},
        {"5 DIALOG 0, 0, 10, 10\nBEGIN\n  EDITTEXT 7, 0, 0, 5, 5\n", "dialog 5 is not closed"},
        {"5 DIALOG 0, 0, 10, 10\nSIZE 4\nBEGIN\nEND\n", ":2: unknown dialog option 'SIZE' in dialog 5"},
    };
    for (const Case& c : cases) {
        const fs::path script = dir / "bad.rc";
        std::ofstream(script) << c.script;
        const fs::path out = dir / "bad.cpp";
        std::string errors;
        EXPECT_EQ(RunCompiler(script, out, errors), 1) << c.script;
        EXPECT_NE(errors.find(c.message), std::string::npos) << errors;
        EXPECT_FALSE(fs::exists(out)) << "nothing is written on failure";
    }
    fs::remove_all(dir);
}
