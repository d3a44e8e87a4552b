// maxhost: the host application. Reads its command line, loads the plug-in libraries, then runs a command
// (`maxhost --help` lists them): plugins, demo, run FILE.ms, eval TEXT, info SCENE, gui [SCENE], or the MAXScript
// listener.
#include "command_line.h"
#include "commands.h"
#include "platform/session.h"
#include "qt/gui_session.h"

#include <cstdio>
#include <memory>

int main(int argc, char** argv) {
    const maxhost::CommandLine line = maxhost::ParseCommandLine(argc, argv);
    switch (line.action) {
    case maxhost::CommandLine::Action::Help: std::fputs(maxhost::HelpText(), stdout); return 0;
    case maxhost::CommandLine::Action::Version: std::fputs(maxhost::VersionText().c_str(), stdout); return 0;
    case maxhost::CommandLine::Action::Error:
        std::fprintf(stderr, "maxhost: %s\nTry 'maxhost --help' for more information.\n", line.problem.c_str());
        return 2;
    case maxhost::CommandLine::Action::Run: break;
    }

    // The graphical session comes first, so that plug-ins starting up find the host's main window.
    std::unique_ptr<hostrt::GuiSession> gui;
    if (line.command == "gui") gui = std::make_unique<hostrt::GuiSession>(argc, argv, line.options.uiScale);
    maxhost::StartHost(line.options);
    int rc = 0;
    if (line.command == "plugins") rc = maxhost::ListPlugins(stdout);
    else if (line.command == "demo") rc = maxhost::RunDemo(stdout);
    else if (line.command == "run") rc = maxhost::RunScriptFile(line.args[0]);
    else if (line.command == "eval") rc = maxhost::EvalText(line.args[0]);
    else if (line.command == "info") rc = maxhost::ShowSceneInfo(line.args[0], line.options.json, stdout);
    else if (line.command == "gui") rc = maxhost::RunGui(line.options, line.args.empty() ? "" : line.args[0]);
    else rc = maxhost::RunListener(stdin);
    // quitMax in a callback script ends the application once the script that caused the callback is done.
    if (rc == 0 && hostrt::Session::Instance().QuitRequested()) rc = hostrt::Session::Instance().QuitExitCode();
    maxhost::StopHost();
    gui.reset();
    return rc;
}
