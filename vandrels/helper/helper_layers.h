// The helper's plain layer records: the layers its reference brought into the scene and the renamings of those
// layers, both saved with the helper.
#pragma once

#include "strclass.h"

class ILayer;

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
