// Writing a referenced node in light form: its transform controller, object and visibility reference are
// parked in a RefHolder and the node gets stand-ins (the placeholders, or host classes when the scene is
// written merged); putting the parked items back afterwards.
#pragma once

#include "geom.h"
#include "helper/save_state.h"

class INode;
class Object;
class RefHolder;

namespace vandrels {

// Switches reference messages off for its lifetime.
class RefMessagesOffScope {
public:
    RefMessagesOffScope();
    ~RefMessagesOffScope();
    RefMessagesOffScope(const RefMessagesOffScope&) = delete;
    RefMessagesOffScope& operator=(const RefMessagesOffScope&) = delete;
};

// Whether a node's object may be swapped for a stand-in, judged by the object the node evaluates to (below all
// derived objects): not the geometry class 0x50320C9A, no Particle Flow action, not the helper class whose second
// part is 0x1EB34300. Null may not.
bool ObjectMayBeReplaced(Object* baseObject);

// A node whose local dependents cannot keep pointing at it while it stands in light form: it holds a controller
// that lightening leaves in place (the image or object motion-blur controller), which the reference file alone
// provides. An auxiliary node takes over its dependents instead.
bool NeedsStandInNode(INode* node);

// Parks node's transform controller (only with parkController), object and reference 3 in holder references
// first, first + 1 and first + 2 (the holder grows when needed) and answers what was parked.
RelinkEntry ParkNodeItems(RefHolder* holder, int first, INode* node, bool parkController);

// Gives node its stand-ins, with reference messages off: a placeholder object made from its base object (when
// the object may be replaced), a placeholder controller holding tm (when hasTm), no reference 3. With merged,
// the stand-ins are the host's dummy helper and a new position-rotation-scale controller set to tm.
void LightenNode(INode* node, const Matrix3& tm, bool hasTm, bool merged);

// Puts the parked items back on their node, with reference messages off.
void RestoreParkedItems(const RelinkEntry& entry);

}  // namespace vandrels
