// What a scene save keeps between its pre-save and its post-save step: whether the content is written merged,
// the path being written, the parking place of the referenced content (a holder node under a temporary
// external-scene entry of the scene root), the lists of what was moved and replaced, the nodes to select again
// and the timers. One instance in the process.
#pragma once

#include "geom.h"
#include "maxapi.h"
#include "strclass.h"
#include "tab.h"

#include <vector>

class Control;
class INode;
class Object;
class RefHolder;
class ReferenceTarget;

namespace vandrels {

// A node whose transform controller, object and reference 3 were parked in the holder while it is written in
// light form. controller is null when none was parked.
struct RelinkEntry {
    INode* node = nullptr;
    Control* controller = nullptr;
    Object* object = nullptr;
    ReferenceTarget* ref3 = nullptr;
};

// A node and the auxiliary node that stands in for it while the scene is written, showing tm.
struct AuxEntry {
    INode* node = nullptr;
    INode* auxiliary = nullptr;
    Matrix3 tm;
};

// A link to re-create after the write: child goes back under parent; during the write it hangs from
// destination (the scene root, or the parking place's tree root).
struct LinkEntry {
    INode* child = nullptr;
    INode* parent = nullptr;
    INode* destination = nullptr;
};

// A node to write in light form, with the transform it shows meanwhile.
struct LightenEntry {
    INode* node = nullptr;
    Matrix3 tm;
    bool hasTm = false;
};

struct SaveState {
    int saveMerged = 0;
    MSTR savePath;
    INode* holderNode = nullptr;  // "VDHN", under the parking place
    RefHolder* holder = nullptr;
    INode* parkingRoot = nullptr;  // the tree root of the temporary external-scene entry
    Tab<RelinkEntry> relinkList;
    Tab<AuxEntry> auxList;
    Tab<LinkEntry> linkList;
    Tab<LightenEntry> lightenList;
    // Each parent that a link entry names, with the order of its children before the save.
    std::vector<std::pair<INode*, std::vector<INode*>>> childOrders;
    Tab<INode*> selection;
    MaxSDK::PerformanceTools::Timer preSaveTimer, saveTimer, postSaveTimer, collectTimer;
    double collectTime = 0;
};

SaveState& GetSaveState();

}  // namespace vandrels
