// Reading the maxhost command line.
#include "command_line.h"

#include "maxtypes.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace maxhost {

namespace {

constexpr const char* kVersion = "1.0";

struct CommandSpec {
    const char* name;
    std::size_t arguments;     // at least
    std::size_t maxArguments;  // at most
    const char* wants;         // what a wrong count is told
};

constexpr CommandSpec kCommands[] = {
    {"plugins", 0, 0, "takes no arguments"},
    {"demo", 0, 0, "takes no arguments"},
    {"run", 1, 1, "needs one script file"},
    {"eval", 1, 1, "needs one text"},
    {"info", 1, 1, "needs one scene file"},
    {"gui", 0, 1, "takes at most one scene file"},
};

const CommandSpec* findCommand(const std::string& name) {
    for (const CommandSpec& c : kCommands)
        if (name == c.name) return &c;
    return nullptr;
}

// An option is "--name" or "-h"; anything else, "-1 + 2" among it, is an argument.
bool looksLikeOption(const std::string& a) {
    return a.size() > 2 ? a.compare(0, 2, "--") == 0 : a == "-h";
}

// The settings file must go into a folder that is there: a mistyped folder is no folder to make.
std::string checkIniFile(const std::string& file) {
    namespace fs = std::filesystem;
    std::error_code ec;
    const fs::path path(file);
    if (fs::is_directory(path, ec)) return "--ini " + file + ": that is a folder, not a settings file";
    const fs::path folder = path.parent_path();
    if (!folder.empty() && !fs::is_directory(folder, ec))
        return "--ini " + file + ": the folder " + folder.string() + " does not exist";
    return {};
}

}  // namespace

CommandLine ParseCommandLine(int argc, const char* const* argv) {
    CommandLine line;
    std::vector<std::string> words;
    auto fail = [&line](std::string problem) {
        line.action = CommandLine::Action::Error;
        line.problem = std::move(problem);
        return line;
    };
    bool optionsEnded = false;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i];
        if (!optionsEnded && a == "--") {
            optionsEnded = true;
            continue;
        }
        if (optionsEnded || !looksLikeOption(a)) {
            words.push_back(a);
            continue;
        }
        // --name=value or --name value for the options that take a value.
        const std::size_t eq = a.find('=');
        const std::string name = a.substr(0, eq);
        const bool takesValue =
            name == "--plugins" || name == "--ini" || name == "--ui-scale" || name == "--script" || name == "--grab";
        std::string value;
        if (takesValue) {
            if (eq != std::string::npos) value = a.substr(eq + 1);
            else if (i + 1 < argc) value = argv[++i];
            else return fail(name + " needs a value");
            if (value.empty()) return fail(name + " needs a value");
        } else if (eq != std::string::npos) {
            return fail(name + " takes no value");
        }
        if (name == "--plugins") line.options.pluginDirs.push_back(value);
        else if (name == "--ini") line.options.iniFile = value;
        else if (name == "--quiet") line.options.quiet = true;
        else if (name == "--json") line.options.json = true;
        else if (name == "--ui-scale") {
            char* end = nullptr;
            const double scale = std::strtod(value.c_str(), &end);
            if (*end || !(scale >= 0.5 && scale <= 4)) return fail("--ui-scale " + value + ": not a scale from 0.5 to 4");
            line.options.uiScale = float(scale);
        } else if (name == "--script") line.options.guiScript = value;
        else if (name == "--grab") line.options.grabFolder = value;
        else if (name == "--help" || name == "-h") line.action = CommandLine::Action::Help;
        else if (name == "--version") line.action = CommandLine::Action::Version;
        else return fail("unknown option " + name);
    }
    if (line.action != CommandLine::Action::Run) return line;

    if (!words.empty()) {
        const CommandSpec* spec = findCommand(words.front());
        if (!spec) return fail("unknown command '" + words.front() + "'");
        line.command = words.front();
        line.args.assign(words.begin() + 1, words.end());
        if (line.args.size() < spec->arguments || line.args.size() > spec->maxArguments)
            return fail(line.command + " " + spec->wants);
    }
    if (!line.options.iniFile.empty())
        if (std::string problem = checkIniFile(line.options.iniFile); !problem.empty()) return fail(problem);
    return line;
}

const char* HelpText() {
    return "usage: maxhost [options] [<command> [<argument>]]\n"
           "\n"
           "commands:\n"
           "  plugins         list every loaded plug-in library and the classes it declares\n"
           "  demo            reference a small scene with Vandrels, edit it, save the shot and open it again\n"
           "  run FILE.ms     run a MAXScript file; the listener goes to standard output\n"
           "  eval TEXT       run a MAXScript text and print its value\n"
           "  info SCENE      list what a scene file's reference helpers hold (files, options, records and\n"
           "                  their overrides) without loading the references; --json for pipelines\n"
           "  gui [SCENE]     the host's window: the scene's node tree, the MAXScript listener and the command\n"
           "                  panel; opens SCENE (a .max file) when given\n"
           "  (none)          a MAXScript listener reading lines from standard input\n"
           "\n"
           "options (before or after the command; -- ends them):\n"
           "  --plugins DIR   load the plug-in libraries of DIR instead of the default folder (the \"plugins\"\n"
           "                  folder beside \"bin\"); give it again to load several folders, in order\n"
           "  --ini FILE      the host's settings file (default: $MAXHOST_INI, else\n"
           "                  $XDG_CONFIG_HOME/maxhost/3dsMax.ini); its folder must exist\n"
           "  --quiet         quiet mode: message boxes and dialogs are not shown and answer their default\n"
           "  --ui-scale F    gui: the user interface's scale factor (1 = 100 %, 1.5 = 150 %)\n"
           "  --script FILE   gui: run this MAXScript file once the window is shown\n"
           "  --grab DIR      gui: after the script, save every shown window as DIR/<window>.png and exit\n"
           "  --json          info: write the listing as JSON\n"
           "  --version       print the version and exit\n"
           "  -h, --help      print this help and exit\n"
           "\n"
           "Options take their value as --name VALUE or --name=VALUE.\n";
}

std::string VersionText() {
    char text[160];
    std::snprintf(text, sizeof text, "maxhost %s\nplug-in interface version 0x%08X (release %d, interface %d, revision %d)\n",
                  kVersion, unsigned(VERSION_3DSMAX), MAX_RELEASE, MAX_API_NUM, MAX_SDK_REV);
    return text;
}

}  // namespace maxhost
