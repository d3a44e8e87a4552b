// The maxhost command line as other command-line tools have it: options before or after the command, in both
// `--name value` and `--name=value` form, --version and --help, a settings file only in a folder that is there,
// the test plug-ins only when their folder is named, and the demonstration of Vandrels.
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

class MaxhostCommandLine : public ::testing::Test {
protected:
    void SetUp() override {
        dir_ = fs::temp_directory_path() / ("maxhost_command_line_" + std::to_string(::getpid()));
        fs::create_directories(dir_);
    }
    void TearDown() override { fs::remove_all(dir_); }

    static std::string Slurp(const fs::path& p) {
        std::ifstream in(p, std::ios::binary);
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    }

    // Runs maxhost with the arguments as written (already quoted), from the test's folder.
    Outcome Maxhost(const std::string& args) {
        const std::string cmd = "cd " + dir_.string() + " && " + MAXHOST_BIN_DIR + "/maxhost " + args + " > out.txt 2> err.txt";
        const int raw = std::system(cmd.c_str());
        Outcome o;
        o.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        o.out = Slurp(dir_ / "out.txt");
        o.err = Slurp(dir_ / "err.txt");
        return o;
    }

    fs::path dir_;
};

const std::string kTestPlugins = MAXHOST_TEST_PLUGIN_DIR;

}  // namespace

TEST_F(MaxhostCommandLine, OptionsGoBeforeOrAfterTheCommandInEitherForm) {
    std::ofstream(dir_ / "where.ms") << "format \"%\\n\" (getMAXIniFile())\nprint (ScriptProbe.Echo \"probe\")\n";
    Outcome o = Maxhost("run where.ms --ini " + (dir_ / "a.ini").string() + " --plugins=" + kTestPlugins);
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(o.out, (dir_ / "a.ini").string() + "\n\"probe\"\n");

    o = Maxhost("--ini=" + (dir_ / "b.ini").string() + " eval \"getMAXIniFile()\"");
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(o.out, "\"" + (dir_ / "b.ini").string() + "\"\n");

    // A text that starts with a minus sign is the command's argument; after `--` anything is.
    o = Maxhost("eval \"-1 + 3\" --plugins=" + kTestPlugins);
    EXPECT_EQ(o.out, "2\n") << o.err;
    o = Maxhost("eval -- -h");
    EXPECT_EQ(o.status, 1) << "the text -h runs as MAXScript (and fails there), it asks for no help";
    EXPECT_EQ(o.out, "");
    EXPECT_EQ(o.err.rfind("-- No \"\"-\"\" function for undefined", 0), 0u) << o.err;
}

TEST_F(MaxhostCommandLine, MistakesAreRefusedBeforeTheHostStarts) {
    const fs::path missing = dir_ / "no-such-folder";
    for (const std::string& args : {"--ini " + (missing / "host.ini").string() + " eval 1",
                                    "eval 1 --ini=" + (missing / "host.ini").string()}) {
        const Outcome o = Maxhost(args);
        EXPECT_EQ(o.status, 2) << args;
        EXPECT_NE(o.err.find("the folder " + missing.string() + " does not exist"), std::string::npos) << o.err;
        EXPECT_EQ(o.out, "");
    }
    EXPECT_FALSE(fs::exists(missing)) << "the folder of a mistyped --ini is not made";
    EXPECT_EQ(Maxhost("--ini " + dir_.string() + " eval 1").status, 2) << "a folder is no settings file";

    struct Case {
        std::string args, complaint;
    };
    for (const Case& c : {Case{"--frobnicate", "unknown option --frobnicate"}, Case{"--ini", "--ini needs a value"},
                          Case{"--plugins=", "--plugins needs a value"}, Case{"--quiet=yes", "--quiet takes no value"},
                          Case{"render", "unknown command 'render'"}, Case{"run", "run needs one script file"},
                          Case{"run a.ms b.ms", "run needs one script file"}, Case{"plugins x", "plugins takes no arguments"}}) {
        const Outcome o = Maxhost(c.args);
        EXPECT_EQ(o.status, 2) << c.args;
        EXPECT_EQ(o.err, "maxhost: " + c.complaint + "\nTry 'maxhost --help' for more information.\n") << c.args;
    }
}

TEST_F(MaxhostCommandLine, VersionAndHelpGoToStandardOutput) {
    Outcome o = Maxhost("--version");
    EXPECT_EQ(o.status, 0);
    EXPECT_EQ(o.out.rfind("maxhost ", 0), 0u) << o.out;
    EXPECT_NE(o.out.find("0x6CFC4400"), std::string::npos) << o.out;

    for (const char* help : {"--help", "-h", "run x.ms --help"}) {
        o = Maxhost(help);
        EXPECT_EQ(o.status, 0) << help;
        EXPECT_EQ(o.out.rfind("usage: maxhost", 0), 0u) << o.out;
        EXPECT_NE(o.out.find("--ini FILE"), std::string::npos);
        EXPECT_EQ(o.err, "");
    }
}

TEST_F(MaxhostCommandLine, TestPluginsAreListedOnlyWhenTheirFolderIsNamed) {
    Outcome o = Maxhost("plugins");
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_NE(o.out.find("Vandrels.dlo"), std::string::npos) << o.out;
    for (const char* test : {"HostSample", "ScriptProbe", "SceneCompare"})
        EXPECT_EQ(o.out.find(test), std::string::npos) << test << " is in the default plug-in folder:\n" << o.out;

    // Named folders replace the default one and load in order.
    o = Maxhost("plugins --plugins " + kTestPlugins);
    EXPECT_NE(o.out.find("3 plug-in libraries loaded"), std::string::npos) << o.out;
    EXPECT_EQ(o.out.find("Vandrels.dlo"), std::string::npos) << o.out;
    o = Maxhost("plugins --plugins " + std::string(MAXHOST_PLUGIN_DIR) + " --plugins=" + kTestPlugins);
    EXPECT_NE(o.out.find("4 plug-in libraries loaded\nVandrels.dlo"), std::string::npos) << o.out;
}

TEST_F(MaxhostCommandLine, DemoReferencesASetAndKeepsTheShotsEditsOverReopening) {
    Outcome o = Maxhost("demo --ini " + (dir_ / "demo.ini").string());
    ASSERT_EQ(o.status, 0) << o.out << o.err;
    const std::size_t reopened = o.out.find("== The shot opened again: 3 objects");
    ASSERT_NE(reopened, std::string::npos) << o.out;
    const std::string after = o.out.substr(reopened);
    EXPECT_NE(after.find("set  (VandrelsHelper)"), std::string::npos) << after;
    EXPECT_NE(after.find("table  (Box)  parent:-  pos:[0,0,90]"), std::string::npos) << after;
    EXPECT_NE(after.find("lamp  (Sphere)  parent:table  pos:[40,0,105]  wirecolor:(color 255 220 0)"), std::string::npos)
        << after;

    o = Maxhost("demo --plugins " + kTestPlugins);
    EXPECT_EQ(o.status, 1);
    EXPECT_NE(o.err.find("the Vandrels plug-in is not loaded"), std::string::npos) << o.err;
}

TEST_F(MaxhostCommandLine, QuitMaxEndsTheRunWithItsExitCodeEvenInsideTry) {
    std::ofstream(dir_ / "quit.ms") << "print 1\ntry (quitMax #noPrompt exitCode:3) catch (print \"caught\")\nprint 2\n";
    Outcome o = Maxhost("run quit.ms --ini " + (dir_ / "q.ini").string());
    EXPECT_EQ(o.status, 3) << o.err;
    EXPECT_EQ(o.out, "1\n");
    o = Maxhost("eval \"quitMax()\" --ini " + (dir_ / "q.ini").string());
    EXPECT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(o.out, "") << "the value of a quitting text is not printed";
}
