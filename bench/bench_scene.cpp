#include "bench_scene.h"

#include "core/plugin_manager.h"

#include "ilayer.h"
#include "imtl.h"
#include "iparamb2.h"
#include "istdplug.h"
#include "maxapi.h"
#include "plugapi.h"

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {
namespace {

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

// A "Vm...:" line of /proc/self/status in MiB, -1 when it cannot be read.
double statusMiB(const char* field) {
    std::ifstream status("/proc/self/status");
    std::string line;
    const std::string prefix(field);
    while (std::getline(status, line))
        if (line.rfind(prefix, 0) == 0) return std::stod(line.substr(prefix.size())) / 1024.0;
    return -1;
}

}  // namespace

int materialCount(int nodeCount) { return std::max(8, nodeCount / kNodesPerMaterial); }

void buildScene(int nodeCount) {
    std::vector<Mtl*> materials;
    const int mtlCount = materialCount(nodeCount);
    for (int i = 0; i < mtlCount; ++i) {
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
        node->SetMtl(materials[std::size_t(i % mtlCount)]);
        leafLayers[std::size_t(i % int(leafLayers.size()))]->AddToLayer(node);
        const int inTree = i % kTreeSize;
        if (inTree > 0) nodes[std::size_t(i - inTree + (inTree - 1) / kBranching)]->AttachChild(node, FALSE);
        Matrix3 tm;
        tm.SetTrans(Point3(float(i % 100), float(i / 100 % 100), float(i / 10000)));
        node->SetNodeTM(0, tm);
        nodes.push_back(node);
    }
}

double peakMemoryMiB() { return statusMiB("VmHWM:"); }

double residentMemoryMiB() { return statusMiB("VmRSS:"); }

bool resetPeakMemory() {
    std::ofstream clear("/proc/self/clear_refs");
    clear << "5";
    clear.flush();
    return bool(clear);
}

void releaseFreeMemory() { malloc_trim(0); }

double seconds(const std::function<void()>& run) {
    const auto start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double perNodeMicros(double s, int nodes) { return s * 1e6 / nodes; }

void collectNodes(INode* parent, INodeTab& out) {
    for (int i = 0; i < parent->NumberOfChildren(); ++i) {
        INode* child = parent->GetChildNode(i);
        out.Append(child);
        collectNodes(child, out);
    }
}

void loadPlugin(const std::filesystem::path& folder) {
    auto& manager = hostrt::PluginManager::Instance();
    std::string problem;
    const std::filesystem::path file = folder / "Vandrels.dlo";
    if (!manager.LoadLibrary(file, problem)) throw std::runtime_error(file.string() + ": " + problem);
    manager.Startup();
}

FPValue run(const std::wstring& text) {
    FPValue value;
    if (!ExecuteMAXScriptScript(text.c_str(), MAXScript::ScriptSource::Embedded, TRUE, &value, TRUE))
        throw std::runtime_error("the script failed: " + WStr(text.c_str()).ToUTF8());
    return value;
}

}  // namespace bench
