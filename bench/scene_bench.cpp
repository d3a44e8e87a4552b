// Scene benchmark: builds scenes of 1,000, 10,000 and 100,000 nodes (shared materials, nested layers, modifier
// stacks, a hierarchy several levels deep), times saving, opening and merging them and deleting every node, and
// prints the time per node, the peak memory and how each cost grows from 10,000 to 100,000 nodes (10 means
// linear).
#include "core/class_directory.h"
#include "ilayer.h"
#include "imtl.h"
#include "inode.h"
#include "iparamb2.h"
#include "istdplug.h"
#include "maxapi.h"
#include "plugapi.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

// Scene shape: one material per 50 nodes (at least 8), 8 top layers with 3 child layers each, trees of 500
// nodes with 4 children per node (5 levels deep), every node a box or a sphere under 1 or 2 modifiers.
constexpr int kNodesPerMaterial = 50;
constexpr int kTopLayers = 8;
constexpr int kChildLayers = 3;
constexpr int kTreeSize = 500;
constexpr int kBranching = 4;

Interface* ip() { return GetCOREInterface(); }

template <class T> T* create(SClass_ID superId, Class_ID id, const char* what) {
    auto* obj = dynamic_cast<T*>(static_cast<Animatable*>(CreateInstance(superId, id)));
    if (!obj) throw std::runtime_error(std::string("cannot create a ") + what + ": its class is not registered");
    return obj;
}

void setFloat(ReferenceMaker* owner, ParamID id, float v) {
    if (auto* block = dynamic_cast<IParamBlock2*>(owner->GetReference(0))) block->SetValue(id, 0, v);
}

void buildScene(int nodeCount) {
    std::vector<Mtl*> materials;
    const int materialCount = std::max(8, nodeCount / kNodesPerMaterial);
    for (int i = 0; i < materialCount; ++i) {
        Mtl* m = NewDefaultStdMat();
        m->SetName(MSTR(L"Material" + std::to_wstring(i)));
        materials.push_back(m);
    }

    ILayerManager* layers = ip()->GetLayerManager();
    std::vector<ILayer*> leafLayers;
    for (int i = 0; i < kTopLayers; ++i) {
        ILayer* top = layers->CreateLayer(MSTR(L"Layer" + std::to_wstring(i)));
        if (!top) throw std::runtime_error("cannot create layer " + std::to_string(i));
        for (int j = 0; j < kChildLayers; ++j) {
            ILayer* child = layers->CreateLayer(MSTR(L"Layer" + std::to_wstring(i) + L"_" + std::to_wstring(j)));
            if (!child || !child->SetParentLayer(top)) throw std::runtime_error("cannot nest a layer under Layer" + std::to_string(i));
            leafLayers.push_back(child);
        }
        leafLayers.push_back(top);
    }

    std::vector<INode*> nodes;
    nodes.reserve(std::size_t(nodeCount));
    for (int i = 0; i < nodeCount; ++i) {
        const bool box = i % 2 == 0;
        auto* base = box ? create<Object>(GEOMOBJECT_CLASS_ID, HOST_BOX_CLASS_ID, "box")
                         : create<Object>(GEOMOBJECT_CLASS_ID, HOST_SPHERE_CLASS_ID, "sphere");
        setFloat(base, box ? ParamID(box_length) : ParamID(sphere_radius), 1.0f + float(i % 17));
        IDerivedObject* stack = CreateDerivedObject(base);
        auto* bend = create<Modifier>(OSM_CLASS_ID, HOST_BEND_CLASS_ID, "bend modifier");
        setFloat(bend, bend_angle, float(i % 90));
        stack->AddModifier(bend);
        if (i % 3 == 0) stack->AddModifier(create<Modifier>(OSM_CLASS_ID, HOST_TAPER_CLASS_ID, "taper modifier"));

        INode* node = ip()->CreateObjectNode(stack);
        node->SetName(MSTR(L"Node" + std::to_wstring(i % 1000)));  // names repeat every 1,000 nodes
        node->SetMtl(materials[std::size_t(i % materialCount)]);
        leafLayers[std::size_t(i % int(leafLayers.size()))]->AddToLayer(node);
        const int inTree = i % kTreeSize;
        if (inTree > 0) nodes[std::size_t(i - inTree + (inTree - 1) / kBranching)]->AttachChild(node, FALSE);
        Matrix3 tm;
        tm.SetTrans(Point3(float(i % 100), float(i / 100 % 100), float(i / 10000)));
        node->SetNodeTM(0, tm);
        nodes.push_back(node);
    }
}

// Peak resident memory of the process in MiB (VmHWM), -1 when it cannot be read.
double peakMemoryMiB() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmHWM:", 0) == 0) return std::stod(line.substr(6)) / 1024.0;
    return -1;
}

// Starts a new peak at the present resident size; false when the kernel does not allow it.
bool resetPeakMemory() {
    std::ofstream clear("/proc/self/clear_refs");
    clear << "5";
    clear.flush();
    return bool(clear);
}

double seconds(const std::function<void()>& run) {
    const auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Every node below parent, parents before their children.
void collectNodes(INode* parent, INodeTab& out) {
    for (int i = 0; i < parent->NumberOfChildren(); ++i) {
        INode* child = parent->GetChildNode(i);
        out.Append(child);
        collectNodes(child, out);
    }
}

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

double perNodeMicros(double s, int nodes) { return s * 1e6 / nodes; }

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

}  // namespace

int main(int argc, char** argv) {
    std::vector<int> sizes = {1000, 10000, 100000};
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) {
            sizes = {1000, 10000};
        } else if (std::strcmp(argv[i], "--nodes") == 0 && i + 1 < argc && std::atoi(argv[i + 1]) > 0) {
            sizes = {std::atoi(argv[++i])};
        } else {
            std::fprintf(stderr, "usage: scene_bench [--quick | --nodes N]\n"
                                 "  --quick    only 1,000 and 10,000 nodes\n"
                                 "  --nodes N  only N nodes (for profiling)\n");
            return std::strcmp(argv[i], "--help") == 0 ? 0 : 2;
        }
    }

    const fs::path dir = fs::temp_directory_path() / ("scene_bench_" + std::to_string(::getpid()));
    try {
        fs::create_directories(dir);
        hostrt::RegisterBuiltinClasses();
        std::printf("%9s %12s %12s %12s %12s %12s %10s %10s %10s\n", "nodes", "build us/n", "save us/n", "open us/n",
                    "merge us/n", "delete us/n", "file MiB", "peak MiB", "peak KiB/n");
        std::vector<Result> results;
        bool peakReset = true;
        for (int n : sizes) {
            results.push_back(measure(n, dir, peakReset));
            printResult(results.back());
        }
        if (!peakReset) std::printf("(the peak could not be reset between sizes: it is the process's peak so far)\n");
        for (std::size_t i = 1; i < results.size(); ++i) printGrowth(results[i - 1], results[i]);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "scene_bench: %s\n", e.what());
        fs::remove_all(dir);
        return 1;
    }
    fs::remove_all(dir);
    return 0;
}
