// The maxhost shell's MAXScript commands: `run FILE.ms`, `eval TEXT` and the listener on standard input,
// with their output, error reports and exit statuses.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

std::string Slurp(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

class MaxScriptShell : public ::testing::Test {
protected:
    void SetUp() override {
        dir_ = fs::temp_directory_path() / ("maxscript_shell_" + std::to_string(::getpid()));
        fs::create_directories(dir_);
    }
    void TearDown() override { fs::remove_all(dir_); }

    fs::path Write(const std::string& name, const std::string& text) {
        std::ofstream(dir_ / name, std::ios::binary) << text;
        return dir_ / name;
    }

    // Runs maxhost with the arguments (already quoted) and standard input from a file.
    Outcome Maxhost(const std::string& args, const std::string& input = "") {
        const fs::path in = Write("stdin.txt", input);
        const std::string cmd = std::string(MAXHOST_BIN_DIR) + "/maxhost --plugins " + MAXHOST_TEST_PLUGIN_DIR +
                                " --ini " + (dir_ / "host.ini").string() + " " + args + " < " + in.string() + " > " +
                                (dir_ / "out.txt").string() + " 2> " + (dir_ / "err.txt").string();
        Outcome o;
        const int raw = std::system(cmd.c_str());
        o.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        o.out = Slurp(dir_ / "out.txt");
        o.err = Slurp(dir_ / "err.txt");
        return o;
    }

    fs::path dir_;
};

}  // namespace

TEST_F(MaxScriptShell, RunEchoesTheListenerAndFailsOnAnUncaughtError) {
    const fs::path good = Write("good.ms", "\xEF\xBB\xBF-- with a byte-order mark\nprint \"caf\xC3\xA9\"\nformat \"%+%\\n\" 1 2\n");
    Outcome o = Maxhost("run " + good.string());
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(o.out, "\"caf\xC3\xA9\"\n1+2\n");
    EXPECT_EQ(o.err, "");

    const fs::path bad = Write("bad.ms", "print 1\nx = undefined\nx.pos = 3\nprint 2\n");
    o = Maxhost("run " + bad.string());
    EXPECT_EQ(o.status, 1);
    EXPECT_EQ(o.out, "1\n");  // nothing after the error runs
    EXPECT_EQ(o.err, "-- Unknown property: \"pos\" in undefined\n"
                     "-- Error occurred in " + bad.string() + "; line: 3; column: 2\n"
                     "--  In line: x.pos = 3\n");

    const fs::path syntax = Write("syntax.ms", "print 1\nif x\n");
    o = Maxhost("run " + syntax.string());
    EXPECT_EQ(o.status, 1);
    EXPECT_EQ(o.out, "1\n") << "a syntax error stops the file where it is written, after what comes before it ran";
    EXPECT_NE(o.err.find("-- Syntax error: at end of script, expected then or do"), std::string::npos) << o.err;

    o = Maxhost("run " + (dir_ / "missing.ms").string());
    EXPECT_EQ(o.status, 1);
    EXPECT_NE(o.err.find("cannot open"), std::string::npos);
}

TEST_F(MaxScriptShell, FailedAssertionsFailTheRunButTheScriptGoesOn) {
    const fs::path script = Write("asserts.ms", "assert_equal 1 2\nassert_true true\nprint \"after\"\n");
    const Outcome o = Maxhost("run " + script.string());
    EXPECT_EQ(o.status, 1);
    EXPECT_EQ(o.out, "-- Assert failed in " + script.string() + ", line 1: assert_equal\n"
                     "--   expected: 1\n--   actual:   2\n\"after\"\n");
    EXPECT_EQ(o.err, "-- 1 of 2 assertions failed in " + script.string() + "\n");
}

TEST_F(MaxScriptShell, EvalPrintsTheValueAndUsesTheGivenSettingsFile) {
    Outcome o = Maxhost("eval 'setINISetting (getMAXIniFile()) \"S\" \"k\" \"v\"; getINISetting (getMAXIniFile()) \"S\" \"k\"'");
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(o.out, "\"v\"\n");
    EXPECT_NE(Slurp(dir_ / "host.ini").find("k=v"), std::string::npos);
    o = Maxhost("eval 'ScriptProbe.Echo \"plug-ins are loaded\"'");
    EXPECT_EQ(o.out, "\"plug-ins are loaded\"\n");
    o = Maxhost("eval '1 +'");
    EXPECT_EQ(o.status, 1);
    o = Maxhost("eval");
    EXPECT_EQ(o.status, 2);
}

TEST_F(MaxScriptShell, ListenerReadsLinesRunsCompleteExpressionsAndGoesOnAfterErrors) {
    const Outcome o = Maxhost("", "x = 2\nfn sq v = (\n  v * v\n)\nsq x\nnothing.here\nprint (sq 3)\n");
    EXPECT_EQ(o.status, 0);
    EXPECT_EQ(o.out, "2\nsq()\n4\n"
                     "-- Unknown property: \"here\" in undefined\n"
                     "-- Error occurred in anonymous codeblock; line: 1; column: 8\n"
                     "--  In line: nothing.here\n"
                     "9\n9\n");
}
