// maxhost: the host application. Loads the plug-in libraries, then runs a command:
//   maxhost [--plugins DIR] [--ini FILE] [--quiet] plugins   list the loaded libraries and their classes
//   maxhost [options] demo                                    a short demonstration of the host
#include "core/class_directory.h"
#include "core/plugin_manager.h"
#include "commands.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

void usage() {
    std::fputs("usage: maxhost [--plugins DIR] [--ini FILE] [--quiet] <command>\n"
               "commands:\n"
               "  plugins   list every loaded plug-in library and the classes it declares\n"
               "  demo      build a small scene, save it, open it again and show what came back\n",
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
        if (a == "--plugins") opts.pluginDir = value("--plugins");
        else if (a == "--ini") opts.iniFile = value("--ini");
        else if (a == "--quiet") opts.quiet = true;
        else if (a == "-h" || a == "--help") { usage(); return 0; }
        else if (!a.empty() && a[0] == '-') { std::fprintf(stderr, "maxhost: unknown option %s\n", a.c_str()); usage(); return 2; }
        else rest.push_back(a);
    }
    const std::string command = rest.empty() ? "demo" : rest.front();
    if (command != "plugins" && command != "demo") {
        std::fprintf(stderr, "maxhost: unknown command '%s'\n", command.c_str());
        usage();
        return 2;
    }

    maxhost::StartHost(opts);
    int rc = command == "plugins" ? maxhost::ListPlugins(stdout) : maxhost::RunDemo(stdout);
    maxhost::StopHost();
    return rc;
}
