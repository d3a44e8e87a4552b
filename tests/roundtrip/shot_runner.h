// Runs a round-trip scenario in the host: writes the reference files, builds the shot, then runs the chosen steps,
// comparing the whole scene with what it must be after every step. What it must be is kept two ways: a snapshot
// of the scene taken after each local edit (what saving, reloading, unloading and undoing must give back), and,
// after a reference file changed, a fresh shot built from the changed files with the same local edits made again.
#pragma once

#include "scenario.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace roundtrip {

struct Failure {
    int step = -1;                          // index into the scenario's steps, -1 for the set-up or the final check
    std::string what;                       // what was checked ("after save and reopen: the scene differs")
    std::vector<std::string> differences;   // the scene comparison's lines, or the script that failed
};

class ShotRunner {
public:
    ShotRunner(const Scenario& scenario, std::filesystem::path folder, Options options);

    // Runs the set-up, the listed steps (indices into the scenario's steps, in order) and the final check.
    // `log` receives one line per step saying what it did. Answers the first failure, or nothing.
    std::optional<Failure> Run(const std::vector<int>& steps, std::vector<std::string>* log);

    // The MAXScript that writes the reference files and starts the shot, for reproducing a seed by hand.
    std::string SetUpScript() const;

private:
    struct State;
    const Scenario& scenario_;
    std::filesystem::path folder_;
    Options options_;
};

}  // namespace roundtrip
