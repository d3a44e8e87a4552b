// Loading benchmark: builds scenes of 1,000, 10,000 and 100,000 nodes (shared materials, nested layers, modifier
// stacks, a hierarchy several levels deep), saves each one and then times the host's plain merge of the file
// against loading it as a reference (`Vandrels.AddVandrel`, which merges the same file and wraps every merged
// node and material in a record). Prints the time per node of both, their ratio, the peak memory per node and
// per node record, the cost of resetting the scene afterwards and how each cost grows from one size to the next.
// Then the shot: a scene that references the file with one node in ten edited locally is saved (against saving
// the same scene with the content made local) and opened again (against the plain merge of the file). Last the
// reload of that reference (unload, then load, the edits applied again) against the plain merge, and its unload
// alone against deleting the same nodes in one call.
#include "bench_scene.h"
#include "core/class_directory.h"
#include "core/plugin_manager.h"
#include "core/ref_internal.h"
#include "hold.h"
#include "inode.h"
#include "maxapi.h"
#include "maxscript/maxscript.h"
#include "object.h"
#include "platform/host_dirs.h"

#include <unistd.h>

#include <algorithm>
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

int runInt(const std::wstring& text) {
    FPValue value = run(text);
    if (value.type != TYPE_INT) throw std::runtime_error("the script answered no number: " + WStr(text.c_str()).ToUTF8());
    return value.i;
}

int countNodes() {
    INodeTab all;
    collectNodes(ip()->GetRootNode(), all);
    return all.Count();
}

// An empty scene and an empty undo buffer, with the memory freed by the previous scene handed back, and a new
// peak started at the resident size: answers that size in MiB.
double cleanStart(bool& peakReset) {
    theHold.FlushUndoBuffer();
    ip()->FileReset(TRUE);
    theHold.FlushUndoBuffer();
    releaseFreeMemory();
    peakReset = resetPeakMemory() && peakReset;
    return residentMemoryMiB();
}

struct Result {
    int nodes = 0;
    int records = 0;                        // node records the load made
    double merge = 0, load = 0;             // seconds (the best of the repeats)
    double mergeReset = 0, loadReset = 0;   // seconds to reset the scene afterwards (the best of the repeats)
    double mergeMiB = 0, loadMiB = 0;       // peak resident memory above the empty scene (the highest)
    long mergeObjects = 0, loadObjects = 0; // live animatables added to the empty scene
    double mergeKeptMiB = 0, loadKeptMiB = 0; // resident memory above the empty scene once done
};

void keepBest(double& best, double value, int repeat) { best = repeat == 0 ? value : std::min(best, value); }

// The host's plain merge of the file, with the options the helper's merge uses, and the reset after it.
void measureMerge(const fs::path& file, int nodeCount, int repeat, Result& r, bool& peakReset) {
    const MSTR path(file.wstring());
    const double base = cleanStart(peakReset);
    const long objects = long(hostrt::LiveAnimatableCount());
    keepBest(r.merge, seconds([&] {
                 if (!ip()->MergeFromFile(path.data(), TRUE, FALSE, FALSE, MERGE_DUPS_MERGE, nullptr, 1000,
                                          MERGE_REPARENT_PROMPT, FALSE))
                     throw std::runtime_error("cannot merge " + file.string());
             }),
             repeat);
    r.mergeMiB = std::max(r.mergeMiB, peakMemoryMiB() - base);
    r.mergeObjects = long(hostrt::LiveAnimatableCount()) - objects;
    releaseFreeMemory();
    r.mergeKeptMiB = residentMemoryMiB() - base;
    if (const int merged = countNodes(); merged != nodeCount)
        throw std::runtime_error("the merge brought " + std::to_string(merged) + " nodes instead of " +
                                 std::to_string(nodeCount));
    keepBest(r.mergeReset, seconds([] { ip()->FileReset(TRUE); }), repeat);
}

// The same file loaded as a reference, checked for one node record per node and one material record per
// material, and the reset after it.
void measureLoad(const fs::path& file, int nodeCount, int repeat, Result& r, bool& peakReset) {
    const double base = cleanStart(peakReset);
    const long objects = long(hostrt::LiveAnimatableCount());
    const std::wstring quoted = L"@\"" + file.wstring() + L"\"";
    keepBest(r.load, seconds([&] { run(L"Vandrels.AddVandrel " + quoted); }), repeat);
    r.loadMiB = std::max(r.loadMiB, peakMemoryMiB() - base);
    r.loadObjects = long(hostrt::LiveAnimatableCount()) - objects;
    releaseFreeMemory();
    r.loadKeptMiB = residentMemoryMiB() - base;
    r.records = runInt(L"(Vandrels.GetVandrel 1).baseObject.NumRefNodes()");
    if (r.records != nodeCount)
        throw std::runtime_error("the load made " + std::to_string(r.records) + " node records for " +
                                 std::to_string(nodeCount) + " nodes");
    if (const int materials = runInt(L"(Vandrels.GetVandrel 1).baseObject.NumRefMaterials()");
        materials != materialCount(nodeCount))
        throw std::runtime_error("the load made " + std::to_string(materials) + " material records for " +
                                 std::to_string(materialCount(nodeCount)) + " materials");
    if (const int inScene = countNodes(); inScene != nodeCount + 1)  // the merged nodes and the helper's node
        throw std::runtime_error("the load left " + std::to_string(inScene) + " nodes in the scene instead of " +
                                 std::to_string(nodeCount + 1));
    keepBest(r.loadReset, seconds([] {
                 theHold.FlushUndoBuffer();
                 ip()->FileReset(TRUE);
             }),
             repeat);
}

// A shot referencing a file, with every tenth referenced node edited (its wire colour).
struct ShotResult {
    int nodes = 0;
    int overrides = 0;
    double merge = 0;                  // the host's plain merge of the reference file
    double reopen = 0;                 // opening the shot: the reference merged again, the edits applied
    double saveShot = 0, saveLocal = 0;  // saving the shot; saving the same scene with its content local
    std::uintmax_t shotBytes = 0, localBytes = 0;
    double reopenMiB = 0;              // peak resident memory of the reopen above the empty scene
};

constexpr DWORD kEditedColour = 0x00123456;

// Gives every step-th node below the root the edited wire colour; answers how many.
int editEveryNth(int step) {
    INodeTab all;
    collectNodes(ip()->GetRootNode(), all);
    int edited = 0;
    for (int i = 0; i < all.Count(); i += step)
        if (all[i]->GetObjectRef() && all[i]->GetObjectRef()->SuperClassID() != HELPER_CLASS_ID) {
            all[i]->SetWireColor(kEditedColour);
            ++edited;
        }
    return edited;
}

int countEdited() {
    INodeTab all;
    collectNodes(ip()->GetRootNode(), all);
    int edited = 0;
    for (INode* node : all) edited += node->GetWireColor() == kEditedColour;
    return edited;
}

std::uintmax_t fileSize(const fs::path& file) {
    std::error_code ec;
    const auto size = fs::file_size(file, ec);
    return ec ? 0 : size;
}

ShotResult measureShot(const fs::path& reference, int nodeCount, const fs::path& dir, bool& peakReset) {
    ShotResult r;
    r.nodes = nodeCount;
    const fs::path shot = dir / ("shot_" + std::to_string(nodeCount) + ".max");
    const fs::path local = dir / ("local_" + std::to_string(nodeCount) + ".max");
    const MSTR shotPath(shot.wstring()), localPath(local.wstring()), referencePath(reference.wstring());

    cleanStart(peakReset);
    run(L"Vandrels.AddVandrel @\"" + reference.wstring() + L"\"");
    r.overrides = editEveryNth(10);
    r.saveShot = seconds([&] {
        if (!ip()->SaveToFile(shotPath.data())) throw std::runtime_error("cannot save " + shot.string());
    });
    r.shotBytes = fileSize(shot);
    run(L"(Vandrels.GetVandrel 1).baseObject.Merge()");  // the same scene, its content now local
    r.saveLocal = seconds([&] {
        if (!ip()->SaveToFile(localPath.data())) throw std::runtime_error("cannot save " + local.string());
    });
    r.localBytes = fileSize(local);

    const double base = cleanStart(peakReset);
    r.reopen = seconds([&] {
        if (!ip()->LoadFromFile(shotPath.data(), FALSE)) throw std::runtime_error("cannot open " + shot.string());
    });
    r.reopenMiB = peakMemoryMiB() - base;
    if (const int inScene = countNodes(); inScene != nodeCount + 1)
        throw std::runtime_error("the reopened shot holds " + std::to_string(inScene) + " nodes instead of " +
                                 std::to_string(nodeCount + 1));
    if (const int kept = countEdited(); kept != r.overrides)
        throw std::runtime_error("the reopened shot kept " + std::to_string(kept) + " of " +
                                 std::to_string(r.overrides) + " edits");

    cleanStart(peakReset);
    r.merge = seconds([&] {
        if (!ip()->MergeFromFile(referencePath.data(), TRUE, FALSE, FALSE, MERGE_DUPS_MERGE, nullptr, 1000,
                                 MERGE_REPARENT_PROMPT, FALSE))
            throw std::runtime_error("cannot merge " + reference.string());
    });
    cleanStart(peakReset);
    fs::remove(shot);
    fs::remove(local);
    return r;
}

void printShotHeader() {
    std::printf("%9s %9s %11s %11s %7s %11s %11s %7s %10s %10s %12s\n", "nodes", "overrides", "merge us/n",
                "reopen us/n", "ratio", "save us/n", "local us/n", "ratio", "shot KiB", "local KiB",
                "reopen KiB/rec");
}

void printShot(const ShotResult& r) {
    std::printf("%9d %9d %11.2f %11.2f %7.2f %11.2f %11.2f %7.2f %10.0f %10.0f %12.2f\n", r.nodes, r.overrides,
                perNodeMicros(r.merge, r.nodes), perNodeMicros(r.reopen, r.nodes), r.reopen / r.merge,
                perNodeMicros(r.saveShot, r.nodes), perNodeMicros(r.saveLocal, r.nodes), r.saveShot / r.saveLocal,
                double(r.shotBytes) / 1024.0, double(r.localBytes) / 1024.0, r.reopenMiB * 1024.0 / r.nodes);
    std::fflush(stdout);
}

void printShotGrowth(const ShotResult& a, const ShotResult& b) {
    std::printf("growth %d -> %d nodes (x%.0f; that factor means linear): merge x%.1f, reopen x%.1f, save x%.1f\n",
                a.nodes, b.nodes, double(b.nodes) / a.nodes, b.merge / a.merge, b.reopen / a.reopen,
                b.saveShot / a.saveShot);
}

// Reloading a reference with every tenth node edited, and unloading it.
struct ReloadResult {
    int nodes = 0;
    int overrides = 0;
    double merge = 0;    // the host's plain merge of the reference file
    double reload = 0;   // the helper's Reload: its content unloaded, the file merged again, the edits applied
    double unload = 0;   // the helper's Unload alone
    double remove = 0;   // deleting the same nodes in one call of the host
};

ReloadResult measureReload(const fs::path& reference, int nodeCount, bool& peakReset) {
    ReloadResult r;
    r.nodes = nodeCount;
    const MSTR referencePath(reference.wstring());
    cleanStart(peakReset);
    r.merge = seconds([&] {
        if (!ip()->MergeFromFile(referencePath.data(), TRUE, FALSE, FALSE, MERGE_DUPS_MERGE, nullptr, 1000,
                                 MERGE_REPARENT_PROMPT, FALSE))
            throw std::runtime_error("cannot merge " + reference.string());
    });

    cleanStart(peakReset);
    run(L"h = Vandrels.AddVandrel @\"" + reference.wstring() + L"\"");
    r.overrides = editEveryNth(10);
    r.reload = seconds([] {
        if (runInt(L"h.baseObject.Reload()") != 1) throw std::runtime_error("the reload failed");
    });
    if (const int inScene = countNodes(); inScene != nodeCount + 1)
        throw std::runtime_error("the reload left " + std::to_string(inScene) + " nodes instead of " +
                                 std::to_string(nodeCount + 1));
    if (const int kept = countEdited(); kept != r.overrides)
        throw std::runtime_error("the reload kept " + std::to_string(kept) + " of " + std::to_string(r.overrides) +
                                 " edits");

    r.unload = seconds([] { run(L"h.baseObject.Unload()"); });
    if (const int inScene = countNodes(); inScene != 1)
        throw std::runtime_error("the unload left " + std::to_string(inScene) + " nodes");
    run(L"h.baseObject.Reload()");
    INodeTab nodes;
    collectNodes(ip()->GetRootNode(), nodes);
    INodeTab content;
    for (INode* node : nodes)
        if (node->GetObjectRef() && node->GetObjectRef()->SuperClassID() != HELPER_CLASS_ID) content.Append(node);
    r.remove = seconds([&] { ip()->DeleteNodes(content, true, false); });
    cleanStart(peakReset);
    return r;
}

void printReloadHeader() {
    std::printf("%9s %9s %11s %11s %7s %11s %11s %7s\n", "nodes", "overrides", "merge us/n", "reload us/n", "ratio",
                "unload us/n", "delete us/n", "ratio");
}

void printReload(const ReloadResult& r) {
    std::printf("%9d %9d %11.2f %11.2f %7.2f %11.2f %11.2f %7.2f\n", r.nodes, r.overrides,
                perNodeMicros(r.merge, r.nodes), perNodeMicros(r.reload, r.nodes), r.reload / r.merge,
                perNodeMicros(r.unload, r.nodes), perNodeMicros(r.remove, r.nodes), r.unload / r.remove);
    std::fflush(stdout);
}

void printReloadGrowth(const ReloadResult& a, const ReloadResult& b) {
    std::printf("growth %d -> %d nodes (x%.0f; that factor means linear): merge x%.1f, reload x%.1f, unload x%.1f, "
                "delete x%.1f\n",
                a.nodes, b.nodes, double(b.nodes) / a.nodes, b.merge / a.merge, b.reload / a.reload,
                b.unload / a.unload, b.remove / a.remove);
}

Result measure(int nodeCount, int repeats, const fs::path& dir, bool& peakReset, std::vector<ShotResult>& shots,
               std::vector<ReloadResult>& reloads) {
    Result r;
    r.nodes = nodeCount;
    const fs::path file = dir / ("reference_" + std::to_string(nodeCount) + ".max");
    cleanStart(peakReset);
    buildScene(nodeCount);
    if (!ip()->SaveToFile(MSTR(file.wstring()).data())) throw std::runtime_error("cannot save " + file.string());
    for (int i = 0; i < repeats; ++i) {
        measureMerge(file, nodeCount, i, r, peakReset);
        measureLoad(file, nodeCount, i, r, peakReset);
    }
    shots.push_back(measureShot(file, nodeCount, dir, peakReset));
    reloads.push_back(measureReload(file, nodeCount, peakReset));
    fs::remove(file);
    return r;
}

void printHeader() {
    std::printf("%9s %11s %11s %7s %10s %10s %12s %12s %11s %9s %9s %12s %12s\n", "nodes", "merge us/n",
                "load us/n", "ratio", "merge MiB", "load MiB", "merge KiB/n", "load KiB/rec", "rec KiB/rec",
                "merge o/n", "load o/n", "reset1 us/n", "reset2 us/n");
}

void printResult(const Result& r) {
    std::printf("%9d %11.2f %11.2f %7.2f %10.1f %10.1f %12.2f %12.2f %11.2f %9.1f %9.1f %12.2f %12.2f\n", r.nodes,
                perNodeMicros(r.merge, r.nodes), perNodeMicros(r.load, r.nodes), r.load / r.merge, r.mergeMiB,
                r.loadMiB, r.mergeMiB * 1024.0 / r.nodes, r.loadMiB * 1024.0 / r.records,
                (r.loadKeptMiB - r.mergeKeptMiB) * 1024.0 / r.records, double(r.mergeObjects) / r.nodes, double(r.loadObjects) / r.nodes, perNodeMicros(r.mergeReset, r.nodes),
                perNodeMicros(r.loadReset, r.nodes));
    std::fflush(stdout);
}

void printGrowth(const Result& a, const Result& b) {
    std::printf("growth %d -> %d nodes (x%.0f; that factor means linear): merge x%.1f, load x%.1f, "
                "reset after merge x%.1f, reset after load x%.1f\n",
                a.nodes, b.nodes, double(b.nodes) / a.nodes, b.merge / a.merge, b.load / a.load,
                b.mergeReset / a.mergeReset, b.loadReset / a.loadReset);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<int> sizes = {1000, 10000, 100000};
    int repeats = 1;
    fs::path plugins = VANDRELS_PLUGIN_DIR;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) {
            sizes = {1000, 10000};
        } else if (std::strcmp(argv[i], "--nodes") == 0 && i + 1 < argc && std::atoi(argv[i + 1]) > 0) {
            sizes = {std::atoi(argv[++i])};
        } else if (std::strcmp(argv[i], "--repeat") == 0 && i + 1 < argc && std::atoi(argv[i + 1]) > 0) {
            repeats = std::atoi(argv[++i]);
        } else if (std::strcmp(argv[i], "--plugins") == 0 && i + 1 < argc) {
            plugins = argv[++i];
        } else {
            std::fprintf(stderr, "usage: load_bench [--quick | --nodes N] [--repeat R] [--plugins FOLDER]\n"
                                 "  --quick           only 1,000 and 10,000 nodes\n"
                                 "  --nodes N         only N nodes (for profiling)\n"
                                 "  --repeat R        merge and load each file R times, keep the best times\n"
                                 "  --plugins FOLDER  the folder holding Vandrels.dlo (default: the build's)\n");
            return std::strcmp(argv[i], "--help") == 0 ? 0 : 2;
        }
    }

    const fs::path dir = fs::temp_directory_path() / ("load_bench_" + std::to_string(::getpid()));
    try {
        fs::create_directories(dir);
        // Settings of its own, so that the user's are left alone.
        hostrt::SetIniPath(dir / "load_bench.ini");
        loadPlugin(plugins);
        hostrt::RegisterBuiltinClasses();
        ip()->SetHasUserInterface(FALSE);
        ip()->SetQuietMode(TRUE);
        run(L"Vandrels.PrintTimes false");

        std::printf("merge: the host's merge of the file; load: Vandrels.AddVandrel of the same file; ratio: "
                    "load / merge;\nMiB: peak resident memory above the empty scene; rec KiB/rec: resident memory "
                    "the load keeps beyond the merge, per node record;\no/n: objects (animatables) per node; "
                    "reset1/reset2: resetting the scene after the merge / after the load\n");
        printHeader();
        std::vector<Result> results;
        std::vector<ShotResult> shots;
        std::vector<ReloadResult> reloads;
        bool peakReset = true;
        for (int n : sizes) {
            results.push_back(measure(n, repeats, dir, peakReset, shots, reloads));
            printResult(results.back());
        }
        if (!peakReset) std::printf("(the peak could not be reset between steps: memory figures are not usable)\n");
        for (std::size_t i = 1; i < results.size(); ++i) printGrowth(results[i - 1], results[i]);

        std::printf("\nshot: the file referenced with every tenth node edited; reopen: opening the saved shot "
                    "(the reference merged again, the edits applied) against the plain merge;\nsave: saving the "
                    "shot against saving the same scene with its content local (local); reopen KiB/rec: peak "
                    "memory of the reopen per node record\n");
        printShotHeader();
        for (const ShotResult& shot : shots) printShot(shot);
        for (std::size_t i = 1; i < shots.size(); ++i) printShotGrowth(shots[i - 1], shots[i]);

        std::printf("\nreload: the same reference with every tenth node edited, reloaded (unloaded, merged again, "
                    "the edits applied) against the plain merge;\nunload: its unload alone against deleting the "
                    "same nodes in one call\n");
        printReloadHeader();
        for (const ReloadResult& reload : reloads) printReload(reload);
        for (std::size_t i = 1; i < reloads.size(); ++i) printReloadGrowth(reloads[i - 1], reloads[i]);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "load_bench: %s\n", e.what());
        fs::remove_all(dir);
        return 1;
    }
    fs::remove_all(dir);
    return 0;
}
