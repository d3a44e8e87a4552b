// The seeded round-trip tester: for each seed, a random set of reference files, a shot that references them,
// random local edits and reference operations, the whole scene compared after every step. On a failure it prints
// the seed, the difference and the shortest failing step list it finds by dropping steps while the run still
// fails the same way.
//
//   roundtrip [--seed S] [--count N] [--steps K] [--seeds 1,5,8] [--only 3,7,9] [--no-reduce] [--describe] [--modifier-edits] [--undo-all] [--quiet]
//             [--verbose]
//
// runs seeds S to S+N-1 (default 1 and 1), or the listed seeds, and exits non-zero when any failed. --only runs just those steps
// (numbered from 1, as a failure report lists them) of each seed; --no-reduce skips the search for the shortest
// failing sequence (for long soaks); --describe prints the MAXScript that writes the seed's reference files and
// what the shot holds; --modifier-edits adds modifier edits on referenced nodes; --undo-all lets undo
// take back wire colour, hide, freeze, display and render switch edits too (off by default, so that the seeds
// found before it existed keep naming the same scenarios).
#include "shot_runner.h"

#include "core/class_directory.h"
#include "core/plugin_manager.h"
#include "hold.h"
#include "maxapi.h"
#include "platform/host_dirs.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <numeric>
#include <string>

namespace {

using roundtrip::Failure;
using roundtrip::Options;
using roundtrip::Scenario;

bool LoadVandrels() {
    auto& pm = hostrt::PluginManager::Instance();
    std::string problem;
    const auto file = std::filesystem::path(MAXHOST_PLUGIN_DIR) / "Vandrels.dlo";
    if (!pm.LoadLibrary(file, problem)) {
        std::cerr << file << ": " << problem << "\n";
        return false;
    }
    pm.Startup();
    hostrt::RegisterBuiltinClasses();
    return true;
}

struct Outcome {
    std::optional<Failure> failure;
    std::vector<std::string> log;
};

Outcome RunSteps(const Scenario& s, const std::filesystem::path& folder, const Options& o, const std::vector<int>& steps) {
    Outcome out;
    roundtrip::ShotRunner runner(s, folder, o);
    out.failure = runner.Run(steps, &out.log);
    GetCOREInterface()->FileReset(TRUE);
    theHold.FlushUndoBuffer();
    return out;
}

// The same fault: the same check failed on a step of the same kind.
bool SameFault(const Scenario& s, const Failure& a, const Failure& b) {
    if (a.what != b.what) return false;
    if (a.step < 0 || b.step < 0) return a.step == b.step;
    return s.steps[a.step].kind == s.steps[b.step].kind;
}

// Drops steps while the run still fails the same way: first halves and quarters, then one step at a time.
std::vector<int> Reduce(const Scenario& s, const std::filesystem::path& folder, const Options& o,
                        std::vector<int> steps, const Failure& original) {
    auto stillFails = [&](const std::vector<int>& candidate) {
        const Outcome out = RunSteps(s, folder, o, candidate);
        return out.failure && SameFault(s, original, *out.failure);
    };
    // Steps after the failing one never matter.
    if (original.step >= 0) steps.erase(std::find(steps.begin(), steps.end(), original.step) + 1, steps.end());
    for (std::size_t chunk = steps.size() / 2; chunk >= 1; chunk /= 2) {
        bool dropped = true;
        while (dropped) {
            dropped = false;
            for (std::size_t start = 0; start + chunk <= steps.size(); start += chunk) {
                std::vector<int> candidate(steps.begin(), steps.begin() + static_cast<long>(start));
                candidate.insert(candidate.end(), steps.begin() + static_cast<long>(start + chunk), steps.end());
                if (stillFails(candidate)) {
                    steps = candidate;
                    dropped = true;
                    break;
                }
            }
        }
        if (chunk == 1) break;
    }
    return steps;
}

void Print(const Scenario& s, const Failure& f, const std::vector<std::string>& log) {
    std::cout << "seed " << s.seed << ": FAILED " << f.what;
    if (f.step >= 0) std::cout << " (step " << f.step + 1 << ", " << roundtrip::StepName(s.steps[f.step].kind) << ")";
    std::cout << "\n";
    for (const auto& line : f.differences) std::cout << "    " << line << "\n";
    std::cout << "  steps run:\n";
    for (const auto& line : log) std::cout << "    " << line << "\n";
}

}  // namespace

int main(int argc, char** argv) {
    std::uint32_t first = 1;
    int count = 1;
    bool quiet = false;
    bool verbose = false;
    bool reduce = true;
    bool describe = false;
    std::vector<int> only;
    std::vector<int> seeds;  // instead of a range
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        auto value = [&]() -> long {
            if (i + 1 >= argc) {
                std::cerr << arg << " needs a value\n";
                std::exit(2);
            }
            return std::strtol(argv[++i], nullptr, 10);
        };
        if (arg == "--seed") first = static_cast<std::uint32_t>(value());
        else if (arg == "--count") count = static_cast<int>(value());
        else if (arg == "--steps") options.steps = static_cast<int>(value());
        else if (arg == "--modifier-edits") options.modifierEdits = true;
        else if (arg == "--undo-all") options.undoAll = true;
        else if (arg == "--quiet") quiet = true;
        else if (arg == "--verbose") verbose = true;
        else if (arg == "--no-reduce") reduce = false;
        else if (arg == "--describe") describe = true;
        else if ((arg == "--only" || arg == "--seeds") && i + 1 < argc) {
            std::vector<int>& list = arg == "--only" ? only : seeds;
            for (const char* p = argv[++i]; *p;) {
                char* end = nullptr;
                const long n = std::strtol(p, &end, 10);
                if (end == p || n < 1) {
                    std::cerr << arg << " takes numbers from 1, separated by commas\n";
                    return 2;
                }
                list.push_back(arg == "--only" ? static_cast<int>(n) - 1 : static_cast<int>(n));
                p = *end == ',' ? end + 1 : end;
            }
        }        else {
            std::cerr << "usage: roundtrip [--seed S] [--count N] [--steps K] [--seeds 1,5,8] [--only 3,7,9] [--no-reduce] "
                         "[--describe] [--modifier-edits] [--undo-all] [--quiet] [--verbose]\n";
            return 2;
        }
    }
    const auto folder = std::filesystem::temp_directory_path() / ("roundtrip_" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    hostrt::SetIniPath(folder / "settings.ini");
    if (!LoadVandrels()) return 2;
    GetCOREInterface()->SetQuietMode(TRUE);

    int failed = 0;
    const auto start = std::chrono::steady_clock::now();
    if (seeds.empty())
        for (int k = 0; k < count; ++k) seeds.push_back(static_cast<int>(first) + k);
    for (int seed : seeds) {
        const Scenario s = roundtrip::Generate(static_cast<std::uint32_t>(seed), options);
        std::vector<int> all(s.steps.size());
        std::iota(all.begin(), all.end(), 0);
        if (!only.empty()) {
            all.clear();
            for (int i : only)
                if (i < static_cast<int>(s.steps.size())) all.push_back(i);
        }
        if (describe) std::cout << roundtrip::ShotRunner(s, folder, options).SetUpScript();
        if (!quiet) std::cout << "seed " << s.seed << std::flush;
        const Outcome out = RunSteps(s, folder, options, all);
        if (!out.failure) {
            if (!quiet) std::cout << ": ok\n";
            if (verbose)
                for (const auto& line : out.log) std::cout << "    " << line << "\n";
            continue;
        }
        ++failed;
        std::cout << (quiet ? "" : "\n");
        Print(s, *out.failure, out.log);
        if (!reduce) continue;
        const auto shortest = Reduce(s, folder, options, all, *out.failure);
        const Outcome again = RunSteps(s, folder, options, shortest);
        std::cout << "  shortest failing sequence (" << shortest.size() << " of " << all.size() << " steps):";
        for (int i : shortest) std::cout << " " << i + 1;
        std::cout << "\n";
        if (again.failure) Print(s, *again.failure, again.log);
        std::cout << std::flush;
    }
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::cout << seeds.size() << " seed(s) from " << seeds.front() << ", " << failed << " failed, " << seconds << " s\n";
    std::filesystem::remove_all(folder);
    return failed ? 1 : 0;
}
