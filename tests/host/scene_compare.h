// Structural comparison of scenes for tests: a snapshot records what the open scene holds as readable text
// (nodes with every property a user edits, objects, modifier stacks, controllers, materials, layers, external-
// scene entries); two snapshots answer their differences, pairing nodes by place or by name path.
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
    // Nodes only: the names from the top-level node down ("Box01/Sphere01"), with " #2", " #3" ... after the
    // second and later nodes of the same path.
    std::string path = {};
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
    // The external-scene entries of the scene root in their order: asset file name and node count of the tree.
    std::vector<SnapshotItem> entries;
};

struct CompareOptions {
    // Pair nodes by name path instead of by place: a scene reopened after referenced nodes were merged back as
    // new last children of the root still pairs each node with its namesake.
    bool byName = false;
};

// Records the open scene.
SceneSnapshot TakeSnapshot();

// The differences between two snapshots as readable lines, empty when the scenes agree, e.g.
// "node 'Box01'/'Box02': wire colour 0x00FF0000 vs 0x0000FF00" or "node 'Box03' (at 4) only in the second scene"
// ("(at Group01/Box03)" when pairing by name).
std::vector<std::string> CompareSnapshots(const SceneSnapshot& first, const SceneSnapshot& second,
                                          const CompareOptions& options = {});

// The snapshot as readable lines, one per property ("node 'Box01': wire colour 0x00FF0000").
std::vector<std::string> DescribeSnapshot(const SceneSnapshot& snapshot);

// The snapshot as a stable text, one line per property and a line feed after each: nodes sorted by name path
// ("node 'Box01/Sphere01': parent 'Box01'"), then materials sorted by name and occurrence, layers sorted by
// name, external-scene entries in their order. Within an item the properties keep their fixed order. Nothing
// in it varies between runs of the same scene (no addresses, handles or times), so it serves as a baseline.
std::string SnapshotText(const SceneSnapshot& snapshot);

// All differences joined with newlines (for test failure messages).
std::string JoinDifferences(const std::vector<std::string>& differences);

}  // namespace hostrt::test
