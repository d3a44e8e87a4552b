// Interactive creation as the create command mode runs it: a node for the new object at the first click, then
// the object's creation procedure fed with mouse events until it stops or aborts.
#pragma once

#include "geom.h"

#include <vector>

class INode;
class Object;

namespace hostrt {

struct CreateMouseEvent {
    int msg;     // MOUSE_POINT, MOUSE_MOVE, MOUSE_ABORT ...
    IPoint2 m;   // screen point: the construction plane point (x, y, 0)
};

struct CreateResult {
    INode* node = nullptr;  // the new node; null when the creation was aborted (the node is deleted then)
    int lastAnswer = 0;     // the procedure's last answer
    int calls = 0;          // how many events the procedure heard
};

// Creates obj's node (64, 67) at the first MOUSE_POINT and runs obj's creation procedure over the events: the
// point index starts at 0 and grows after each MOUSE_POINT; after each call the procedure's transform becomes
// the node's. CREATE_STOP ends the creation, CREATE_ABORT deletes the node. Events after the end are not
// delivered. Objects without a procedure get a node and nothing else.
CreateResult CreateInteractively(Object* obj, const std::vector<CreateMouseEvent>& events);

}  // namespace hostrt
