// maxhost: the host application. Loads the plug-in libraries, then runs a command:
//   maxhost [--plugins DIR] [--ini FILE] [--quiet] plugins    list the loaded libraries and their classes
//   maxhost [options] demo                                     a short demonstration of the host
//   maxhost [options] run FILE.ms                              run a MAXScript file
//   maxhost [options] eval "TEXT"                              run a MAXScript text and print its value
//   maxhost [options]                                          the MAXScript listener on standard input
#include "commands.h"
#include "platform/host_dirs.h"
#include "platform/session.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

void usage() {
    std::fputs("usage: maxhost [--plugins DIR] [--ini FILE] [--quiet] [<command>]\n"
               "commands:\n"
               "  plugins       list every loaded plug-in library and the classes it declares\n"
               "  demo          build a small scene, save it, open it again and show what came back\n"
               "  run FILE.ms   run a MAXScript file; the listener goes to standard output\n"
               "  eval TEXT     run a MAXScript text and print its value\n"
               "  (none)        a MAXScript listener reading lines from standard input\n",
               stderr);
}

}  // namespace

int main(int argc, char** argv) {
    maxhost::Options opts;
    std::vector<std::string> rest;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto value = [&](const char* what) -> std::string {
            if (i + 1 >= argc) {
                std::fprintf(stderr, "maxhost: %s needs a value\n", what);
                std::exit(2);
            }
            return argv[++i];
        };
        if (!rest.empty()) rest.push_back(a);  // after the command: its arguments, whatever they look like
        else if (a == "--plugins") opts.pluginDir = value("--plugins");
        else if (a == "--ini") opts.iniFile = value("--ini");
        else if (a == "--quiet") opts.quiet = true;
        else if (a == "-h" || a == "--help") { usage(); return 0; }
        else if (!a.empty() && a[0] == '-') { std::fprintf(stderr, "maxhost: unknown option %s\n", a.c_str()); usage(); return 2; }
        else rest.push_back(a);
    }
    const std::string command = rest.empty() ? "" : rest.front();
    const std::size_t wanted = command == "run" || command == "eval" ? 2 : 1;
    if (!command.empty() && command != "plugins" && command != "demo" && command != "run" && command != "eval") {
        std::fprintf(stderr, "maxhost: unknown command '%s'\n", command.c_str());
        usage();
        return 2;
    }
    if (!command.empty() && rest.size() != wanted) {
        std::fprintf(stderr, "maxhost: %s %s\n", command.c_str(),
                     wanted == 2 ? (command == "run" ? "needs one script file" : "needs one text")
                                 : "takes no arguments");
        usage();
        return 2;
    }

    if (!opts.iniFile.empty()) hostrt::SetIniPath(opts.iniFile);
    hostrt::Session::Instance().SetQuiet(opts.quiet);
    maxhost::StartHost(opts);
    int rc = 0;
    if (command == "plugins") rc = maxhost::ListPlugins(stdout);
    else if (command == "demo") rc = maxhost::RunDemo(stdout);
    else if (command == "run") rc = maxhost::RunScriptFile(rest[1]);
    else if (command == "eval") rc = maxhost::EvalText(rest[1]);
    else rc = maxhost::RunListener(stdin);
    maxhost::StopHost();
    return rc;
}
