// The guard that refuses IK solvers on referenced nodes. When the classifier meets an IK solver being put on a
// referenced node, the guard takes the selection out of undo and waits for the node's controller change; it
// then tells the user, undoes the assignment and stands down.
#pragma once

#include "iscene_events.h"

// Hears the controller change that the IK solver's assignment makes, once.
class IKCreationCallback : public INodeEventCallback {
public:
    void ControllerStructured(NodeKeyTab& nodes) override;
};

namespace vandrels {

// Arms the guard unless a reference is loading or the guard is already armed; answers whether it armed it.
bool GuardIKCreation();
// Whether the guard waits for the controller change.
bool IsIKGuardActive();

}  // namespace vandrels
