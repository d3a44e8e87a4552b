// Structural comparison of scenes for tests: a snapshot records what the open scene holds as readable text
// (nodes, objects, modifier stacks, controllers, materials, layers); two snapshots answer their differences.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace hostrt::test {

// One item of a scene and its properties, each a name and a value as text, in a fixed order.
struct SnapshotItem {
    std::string label;  // how differences name the item: "node 'Box01'", "material 'Red' (2)", "layer 'walls'"
    std::string name;   // the item's own name (for "'a'/'b'" labels when paired items differ in name)
    std::vector<std::pair<std::string, std::string>> properties;
};

// What a scene held when the snapshot was taken. It keeps no pointers, so it outlives the scene.
struct SceneSnapshot {
    // Nodes in depth-first order from the scene root; each is keyed by its position (child indices from the
    // root, "2.0.1"), so a node is compared with the node at the same place of the other scene.
    std::vector<std::pair<std::string, SnapshotItem>> nodes;
    // Materials the nodes use and those of the scene material library, each once, in the order they are met.
    // A material is known by its name and, from the second material of a name on, its occurrence ("'Red' (2)");
    // nodes and multi-materials name theirs that way, so a copy in place of a shared material shows.
    std::vector<SnapshotItem> materials;
    // The layer manager's layers in its order.
    std::vector<SnapshotItem> layers;
};

// Records the open scene.
SceneSnapshot TakeSnapshot();

// The differences between two snapshots as readable lines, empty when the scenes agree, e.g.
// "node 'Box01'/'Box02': wire colour 0x00FF0000 vs 0x0000FF00" or "node 'Box03' (at 4) only in the second scene".
std::vector<std::string> CompareSnapshots(const SceneSnapshot& first, const SceneSnapshot& second);

// All differences joined with newlines (for test failure messages).
std::string JoinDifferences(const std::vector<std::string>& differences);

}  // namespace hostrt::test
