// The helper's plain layer records: the layers its reference brought into the scene and the renamings of those
// layers, both saved with the helper, and the working list of the layers one merge brought in.
#pragma once

#include "strclass.h"
#include "tab.h"

class ILayer;
class INode;

// A layer of the reference: the layer (the target of one of the helper's references) and its name.
struct RefLayer {
    ILayer* layer = nullptr;
    WStr name;
};

// A layer renamed when merged: its name in the reference file, its name in the scene, and whether newName is
// used as it stands, without the helper's name prefix.
struct RenamedLayer {
    WStr name;
    WStr newName;
    int noPrefix = 0;
};

// A layer of the merged file, working data of one load: the scene layer that holds its merged nodes, its name in
// the reference file, whether the scene had a layer of that name before the merge, the merged nodes it received
// and the entry of its parent layer (null for a top-level layer or a parent that is no merged layer).
struct MergedLayer {
    ILayer* layer = nullptr;
    WStr name;
    int existed = 0;
    Tab<INode*> nodes;
    MergedLayer* parent = nullptr;
};
