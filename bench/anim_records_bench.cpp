// Animatable-record benchmark: a shot references a file of 10,000 nodes (the load benchmark's test scene); on
// 1,000 of the referenced nodes the artist adds a modifier on top of the stack (TurboSmooth), on 1,000 others
// changes an integer parameter of the base object (kept as a parameter snapshot). The shot is saved, then the
// time to open it (the reference merged again, every record re-bound, the overrides applied) is set against the
// host's plain merge of the reference file. Prints both times, their ratio, how many overrides came back, the
// node and animatable records the open made, and the resident memory the open keeps beyond the plain merge per
// record. Run by hand, never by ctest.
#include "bench_scene.h"
#include "core/class_directory.h"
#include "core/plugin_manager.h"
#include "hold.h"
#include "inode.h"
#include "iparamb2.h"
#include "istdplug.h"
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

namespace {

namespace fs = std::filesystem;
using namespace bench;

// The superclasses of the library's node and material records and of its animatable records.
constexpr SClass_ID kRecordSuperClass = 0x8663DFA6;
constexpr SClass_ID kAnimRecordSuperClass = 0x8663DFA8;

Interface* ip() { return GetCOREInterface(); }

double cleanStart() {
    theHold.FlushUndoBuffer();
    ip()->FileReset(TRUE);
    theHold.FlushUndoBuffer();
    releaseFreeMemory();
    return residentMemoryMiB();
}

// The referenced nodes: every node but the helper's.
INodeTab contentNodes() {
    INodeTab all;
    collectNodes(ip()->GetRootNode(), all);
    INodeTab content;
    for (INode* node : all)
        if (node->GetObjectRef() && node->GetObjectRef()->SuperClassID() != HELPER_CLASS_ID) content.Append(node);
    return content;
}

IParamBlock2* baseBlock(INode* node) {
    Object* base = node->GetObjectRef() ? node->GetObjectRef()->FindBaseObject() : nullptr;
    return base ? dynamic_cast<IParamBlock2*>(base->GetReference(0)) : nullptr;
}

// The first integer parameter of the node's base object (box length segments, sphere segments).
ParamID firstIntParam(IParamBlock2* block) {
    for (int i = 0; i < block->NumParams(); ++i) {
        const ParamID id = block->IndextoID(i);
        if (block->GetParameterType(id) == TYPE_INT) return id;
    }
    throw std::runtime_error("a base object without an integer parameter");
}

constexpr int kEditedValue = 7;

bool hasModifierOnTop(INode* node) {
    auto* stack = dynamic_cast<IDerivedObject*>(node->GetObjectRef());
    return stack && stack->NumModifiers() > 0 && stack->GetModifier(0)->ClassID() == HOST_TURBOSMOOTH_CLASS_ID;
}

bool hasEditedParam(INode* node) {
    IParamBlock2* block = baseBlock(node);
    return block && block->GetInt(firstIntParam(block)) == kEditedValue;
}

// Node i of every ten gets a TurboSmooth on top when i is 0, its integer parameter changed when i is 5.
void editShot(int& modifiers, int& params) {
    const INodeTab nodes = contentNodes();
    for (int i = 0; i < nodes.Count(); ++i) {
        INode* node = nodes[i];
        if (i % 10 == 0) {
            auto* smooth = static_cast<Modifier*>(static_cast<Animatable*>(CreateInstance(OSM_CLASS_ID,
                                                                                          HOST_TURBOSMOOTH_CLASS_ID)));
            if (!smooth || !ip()->AddModifier(*node, *smooth)) throw std::runtime_error("cannot add a TurboSmooth");
            ++modifiers;
        } else if (i % 10 == 5) {
            IParamBlock2* block = baseBlock(node);
            if (!block) throw std::runtime_error("a base object without a parameter block");
            block->SetValue(firstIntParam(block), 0, kEditedValue);
            ++params;
        }
    }
}

struct Counts {
    int nodeRecords = 0;
    int animRecords = 0;
};

// The records below every helper: node and material records, and the animatable records they hold.
Counts countRecords() {
    Counts counts;
    INodeTab all;
    collectNodes(ip()->GetRootNode(), all);
    for (INode* node : all) {
        Object* helper = node->GetObjectRef();
        if (!helper || helper->SuperClassID() != HELPER_CLASS_ID) continue;
        for (int i = 0; i < helper->NumRefs(); ++i) {
            ReferenceTarget* record = helper->GetReference(i);
            if (!record || record->SuperClassID() != kRecordSuperClass) continue;
            ++counts.nodeRecords;
            for (int j = 0; j < record->NumRefs(); ++j)
                if (ReferenceTarget* anim = record->GetReference(j); anim && anim->SuperClassID() == kAnimRecordSuperClass)
                    ++counts.animRecords;
        }
    }
    return counts;
}

}  // namespace

int main(int argc, char** argv) {
    int nodeCount = 10000;
    fs::path plugins = VANDRELS_PLUGIN_DIR;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--nodes") == 0 && i + 1 < argc && std::atoi(argv[i + 1]) >= 20) {
            nodeCount = std::atoi(argv[++i]);
        } else if (std::strcmp(argv[i], "--plugins") == 0 && i + 1 < argc) {
            plugins = argv[++i];
        } else {
            std::fprintf(stderr, "usage: anim_records_bench [--nodes N] [--plugins FOLDER]\n"
                                 "  --nodes N         N referenced nodes, one in ten with each override (default 10000)\n"
                                 "  --plugins FOLDER  the folder holding Vandrels.dlo (default: the build's)\n");
            return std::strcmp(argv[i], "--help") == 0 ? 0 : 2;
        }
    }

    const fs::path dir = fs::temp_directory_path() / ("anim_records_bench_" + std::to_string(::getpid()));
    try {
        fs::create_directories(dir);
        hostrt::SetIniPath(dir / "anim_records_bench.ini");
        loadPlugin(plugins);
        hostrt::RegisterBuiltinClasses();
        ip()->SetHasUserInterface(FALSE);
        ip()->SetQuietMode(TRUE);
        run(L"Vandrels.PrintTimes false");

        const fs::path reference = dir / "reference.max";
        const fs::path shot = dir / "shot.max";
        const MSTR referencePath(reference.wstring()), shotPath(shot.wstring());
        cleanStart();
        buildScene(nodeCount);
        if (!ip()->SaveToFile(referencePath.data())) throw std::runtime_error("cannot save the reference file");

        // The shot.
        cleanStart();
        run(L"Vandrels.AddVandrel @\"" + reference.wstring() + L"\"");
        int modifiers = 0, params = 0;
        editShot(modifiers, params);
        if (!ip()->SaveToFile(shotPath.data())) throw std::runtime_error("cannot save the shot");

        // The plain merge of the reference file, and what it keeps.
        double base = cleanStart();
        const double merge = seconds([&] {
            if (!ip()->MergeFromFile(referencePath.data(), TRUE, FALSE, FALSE, MERGE_DUPS_MERGE, nullptr, 1000,
                                     MERGE_REPARENT_PROMPT, FALSE))
                throw std::runtime_error("cannot merge the reference file");
        });
        releaseFreeMemory();
        const double mergeKeptMiB = residentMemoryMiB() - base;

        // Opening the shot.
        base = cleanStart();
        const double reopen = seconds([&] {
            if (!ip()->LoadFromFile(shotPath.data(), FALSE)) throw std::runtime_error("cannot open the shot");
        });
        releaseFreeMemory();
        const double reopenKeptMiB = residentMemoryMiB() - base;
        const Counts counts = countRecords();
        int keptModifiers = 0, keptParams = 0;
        for (INode* node : contentNodes()) {
            keptModifiers += hasModifierOnTop(node);
            keptParams += hasEditedParam(node);
        }

        const int records = counts.nodeRecords + counts.animRecords;
        std::printf("reference: %d nodes; shot: %d modifiers added on top, %d parameters changed\n", nodeCount,
                    modifiers, params);
        std::printf("plain merge of the reference file: %.3f s (%.2f us/node)\n", merge, perNodeMicros(merge, nodeCount));
        std::printf("reopen of the shot:                %.3f s (%.2f us/node)\n", reopen,
                    perNodeMicros(reopen, nodeCount));
        std::printf("ratio reopen / merge: %.2f (aim: at most 1.60)\n", reopen / merge);
        std::printf("overrides back after the reopen: %d of %d modifiers, %d of %d parameters\n", keptModifiers,
                    modifiers, keptParams, params);
        std::printf("records after the reopen: %d node and material records, %d animatable records\n",
                    counts.nodeRecords, counts.animRecords);
        std::printf("memory kept beyond the plain merge: %.1f MiB, %.2f KiB per record (node and animatable), "
                    "%.2f KiB per animatable record when the node records are counted in\n",
                    reopenKeptMiB - mergeKeptMiB, (reopenKeptMiB - mergeKeptMiB) * 1024.0 / std::max(records, 1),
                    (reopenKeptMiB - mergeKeptMiB) * 1024.0 / std::max(counts.animRecords, 1));
        std::fflush(stdout);
        cleanStart();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "anim_records_bench: %s\n", e.what());
        fs::remove_all(dir);
        return 1;
    }
    fs::remove_all(dir);
    return 0;
}
