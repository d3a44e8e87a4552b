// The maxhost command line: options (anywhere on the line, `--name value` or `--name=value`, `--` ends them),
// the command and its arguments, checked before the host starts.
#pragma once

#include "commands.h"

#include <string>
#include <vector>

namespace maxhost {

struct CommandLine {
    enum class Action { Run, Help, Version, Error };
    Action action = Action::Run;
    Options options;
    std::string command;             // empty: the listener
    std::vector<std::string> args;   // the command's arguments
    std::string problem;             // for Error: what is wrong, without the program's name
};

CommandLine ParseCommandLine(int argc, const char* const* argv);

// The help text (`maxhost --help`) and the version lines (`maxhost --version`).
const char* HelpText();
std::string VersionText();

}  // namespace maxhost
