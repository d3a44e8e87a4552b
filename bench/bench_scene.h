// What the benchmarks share: the test scene they build (materials, nested layers, modifier stacks, a hierarchy
// several levels deep), the process's memory figures and a stopwatch.
#pragma once

#include "inode.h"
#include "maxscript/maxscript.h"

#include <filesystem>
#include <functional>
#include <string>

namespace bench {

// Fills the open scene with nodeCount nodes: one standard material per 50 nodes (at least 8), 8 top layers with
// 3 child layers each, trees of 500 nodes with 4 children per node (5 levels deep), every node a box or a sphere
// under 1 or 2 modifiers; node names repeat every 1,000 nodes. Throws std::runtime_error when a class is missing.
void buildScene(int nodeCount);
// The number of materials buildScene makes for nodeCount nodes (each one used by some node).
int materialCount(int nodeCount);

// Peak resident memory of the process in MiB (VmHWM), -1 when it cannot be read.
double peakMemoryMiB();
// Present resident memory of the process in MiB (VmRSS), -1 when it cannot be read.
double residentMemoryMiB();
// Starts a new peak at the present resident size; false when the kernel does not allow it.
bool resetPeakMemory();
// Hands the memory that the allocator keeps free back to the system, so that the resident size shows what is
// in use.
void releaseFreeMemory();

// Wall-clock seconds that run takes.
double seconds(const std::function<void()>& run);
double perNodeMicros(double s, int nodes);

// Loads Vandrels.dlo from folder the way the host loads its plug-ins at start-up; throws std::runtime_error.
void loadPlugin(const std::filesystem::path& folder);
// Runs a MAXScript text and answers its value; throws std::runtime_error when the script fails.
FPValue run(const std::wstring& text);

// Every node below parent, parents before their children.
void collectNodes(INode* parent, INodeTab& out);

}  // namespace bench
