// Merging a scene file into the open scene, and saving some nodes as a scene file of their own.
#pragma once

#include "maxapi.h"

#include <vector>

namespace hostrt {

struct MergeOptions {
    // Select the merged nodes (the selection is replaced); otherwise the selection is left alone.
    bool selectMerged = false;
    // MERGE_DUPS_SKIP leaves out a top-level node whose name a scene node has, MERGE_DUPS_DELOLD deletes the
    // scene's nodes of that name first; anything else keeps both.
    int dupAction = MERGE_DUPS_MERGE;
    // MERGE_DUP_MTL_USE_SCENE_MTL gives a merged node the scene library's material of the same name instead of
    // its own; anything else keeps the merged material.
    int dupMtlAction = MERGE_DUP_MTL_USE_MERGED;
};

// Reads the file with the scene-file reader and adds its top-level nodes (with everything below them and what
// they reference) as new last children of the scene root, in file order. Duplicate names are kept. The merged
// nodes' materials join the scene material library; their layers are found by name in the layer manager or
// added to it. Broadcasts 67 per merged node, then 267 with the table of merged nodes. A file that cannot be
// read throws SceneFileError and changes nothing. Answers the merged nodes, parents before children.
std::vector<INode*> MergeSceneFile(const MSTR& path, const MergeOptions& options);

// Writes a scene file holding just these nodes (a node below another listed node goes with it), everything
// below them and what they reference; no scene parts. Broadcasts 13 (the file name) and 14 around it, 14 also
// after a failure; failures throw SceneFileError.
void SaveNodesToFile(const std::vector<INode*>& nodes, const MSTR& path);

}  // namespace hostrt
