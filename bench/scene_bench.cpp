// Scene benchmark: builds scenes of 1,000, 10,000 and 100,000 nodes (shared materials, nested layers, modifier
// stacks, a hierarchy several levels deep), times saving, opening and merging them and deleting every node, and
// prints the time per node, the peak memory and how each cost grows from 10,000 to 100,000 nodes (10 means
// linear). Then it times creating that many nodes from a script, named by the script and named by the host.
#include "bench_scene.h"
#include "core/class_directory.h"
#include "inode.h"
#include "maxapi.h"
#include "maxscript/interpreter.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace bench;

Interface* ip() { return GetCOREInterface(); }

struct Result {
    int nodes = 0;
    int deleted = 0;  // nodes in the scene after the merge
    double build = 0, save = 0, open = 0, merge = 0, erase = 0;
    double peakMiB = 0;
    std::uintmax_t fileBytes = 0;
};

Result measure(int nodeCount, const fs::path& dir, bool& peakReset) {
    ip()->FileReset();
    peakReset = resetPeakMemory();
    Result r;
    r.nodes = nodeCount;
    const fs::path file = dir / ("scene_" + std::to_string(nodeCount) + ".max");
    const MSTR path(file.wstring());

    r.build = seconds([&] { buildScene(nodeCount); });
    r.save = seconds([&] {
        if (!ip()->SaveToFile(path.data())) throw std::runtime_error("cannot save " + file.string());
    });
    r.fileBytes = fs::file_size(file);
    ip()->FileReset();
    r.open = seconds([&] {
        if (!ip()->LoadFromFile(path.data(), FALSE)) throw std::runtime_error("cannot open " + file.string());
    });
    // Merging the file into the scene just opened from it: every name, layer and material is a duplicate.
    r.merge = seconds([&] {
        if (!ip()->MergeFromFile(path.data(), TRUE, FALSE, FALSE, MERGE_DUPS_MERGE, nullptr, MERGE_DUP_MTL_USE_MERGED,
                                 MERGE_REPARENT_NEVER))
            throw std::runtime_error("cannot merge " + file.string());
    });
    r.peakMiB = peakMemoryMiB();
    // Deleting every node of the scene in one call, parents before their children (each parent's children are
    // linked to the root first).
    INodeTab all;
    collectNodes(ip()->GetRootNode(), all);
    r.deleted = all.Count();
    r.erase = seconds([&] { ip()->DeleteNodes(all); });
    if (ip()->GetRootNode()->NumberOfChildren() != 0) throw std::runtime_error("nodes are left after deleting them all");
    ip()->FileReset();
    fs::remove(file);
    return r;
}

void printResult(const Result& r) {
    std::printf("%9d %12.2f %12.2f %12.2f %12.2f %12.2f %10.1f %10.1f %10.1f\n", r.nodes,
                perNodeMicros(r.build, r.nodes), perNodeMicros(r.save, r.nodes), perNodeMicros(r.open, r.nodes),
                perNodeMicros(r.merge, r.nodes), perNodeMicros(r.erase, r.deleted),
                double(r.fileBytes) / (1024.0 * 1024.0), r.peakMiB, r.peakMiB * 1024.0 / r.nodes);
    std::fflush(stdout);
}

void printGrowth(const Result& a, const Result& b) {
    std::printf("growth %d -> %d nodes (x%.0f; that factor means linear): build x%.1f, save x%.1f, open x%.1f, "
                "merge x%.1f, delete x%.1f\n",
                a.nodes, b.nodes, double(b.nodes) / a.nodes, b.build / a.build, b.save / a.save, b.open / a.open,
                b.merge / a.merge, b.erase / a.erase);
}

// Creating nodes from a script, as a pipeline tool builds a scene: `box name:...` with a name of the script's
// (each one distinct), then as many boxes left to the host's unique naming ("Box001", "Box002", ...).
struct CreationResult {
    int nodes = 0;
    double named = 0, unnamed = 0;
};

CreationResult measureCreation(int nodeCount) {
    auto& interp = hostrt::mxs::Interpreter::Shared();
    CreationResult r;
    r.nodes = nodeCount;
    const std::wstring count = std::to_wstring(nodeCount);
    // Each run starts from an empty scene with the allocator's free memory handed back, so that neither pays
    // for the free lists the scene before it left behind.
    auto emptyScene = [] {
        ip()->FileReset();
        releaseFreeMemory();
    };
    emptyScene();
    r.named = seconds([&] { interp.Execute(L"for i = 1 to " + count + L" do box name:(\"chair_\" + i as string)"); });
    emptyScene();
    r.unnamed = seconds([&] { interp.Execute(L"for i = 1 to " + count + L" do box()"); });
    const int made = ip()->GetRootNode()->NumberOfChildren();
    ip()->FileReset();
    if (made != nodeCount) throw std::runtime_error("the script made " + std::to_string(made) + " nodes");
    return r;
}

void printCreation(const CreationResult& r) {
    std::printf("%9d %16.2f %16.2f\n", r.nodes, perNodeMicros(r.named, r.nodes), perNodeMicros(r.unnamed, r.nodes));
    std::fflush(stdout);
}

void printCreationGrowth(const CreationResult& a, const CreationResult& b) {
    std::printf("growth %d -> %d nodes (x%.0f; that factor means linear): named x%.1f, host-named x%.1f\n", a.nodes,
                b.nodes, double(b.nodes) / a.nodes, b.named / a.named, b.unnamed / a.unnamed);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<int> sizes = {1000, 10000, 100000};
    bool files = true, creation = true;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) {
            sizes = {1000, 10000};
        } else if (std::strcmp(argv[i], "--create") == 0) {
            files = false;
            sizes = {10000, 100000};
        } else if (std::strcmp(argv[i], "--files") == 0) {
            creation = false;
        } else if (std::strcmp(argv[i], "--nodes") == 0 && i + 1 < argc && std::atoi(argv[i + 1]) > 0) {
            sizes = {std::atoi(argv[++i])};
        } else {
            std::fprintf(stderr, "usage: scene_bench [--quick | --nodes N] [--create | --files]\n"
                                 "  --quick    only 1,000 and 10,000 nodes\n"
                                 "  --nodes N  only N nodes (for profiling)\n"
                                 "  --create   only creating nodes from a script (10,000 and 100,000 nodes)\n"
                                 "  --files    only saving, opening, merging and deleting\n");
            return std::strcmp(argv[i], "--help") == 0 ? 0 : 2;
        }
    }

    const fs::path dir = fs::temp_directory_path() / ("scene_bench_" + std::to_string(::getpid()));
    try {
        fs::create_directories(dir);
        hostrt::RegisterBuiltinClasses();
        if (files) {
            std::printf("%9s %12s %12s %12s %12s %12s %10s %10s %10s\n", "nodes", "build us/n", "save us/n",
                        "open us/n", "merge us/n", "delete us/n", "file MiB", "peak MiB", "peak KiB/n");
            std::vector<Result> results;
            bool peakReset = true;
            for (int n : sizes) {
                results.push_back(measure(n, dir, peakReset));
                printResult(results.back());
            }
            if (!peakReset) std::printf("(the peak could not be reset between sizes: it is the process's peak so far)\n");
            for (std::size_t i = 1; i < results.size(); ++i) printGrowth(results[i - 1], results[i]);
        }
        if (creation) {
            std::printf("\n%9s %16s %16s\n", "nodes", "named us/n", "host-named us/n");
            std::vector<CreationResult> made;
            for (int n : sizes) {
                made.push_back(measureCreation(n));
                printCreation(made.back());
            }
            for (std::size_t i = 1; i < made.size(); ++i) printCreationGrowth(made[i - 1], made[i]);
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "scene_bench: %s\n", e.what());
        fs::remove_all(dir);
        return 1;
    }
    fs::remove_all(dir);
    return 0;
}
