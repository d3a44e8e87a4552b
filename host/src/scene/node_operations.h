// Operations on the scene's nodes behind Interface: creating, deleting and cloning nodes, name lookup and
// unique names.
#pragma once

#include "inode.h"

#include <vector>

class Object;

namespace hostrt {

class Node;

// A new node under the scene root holding obj, named after the object, with a position-rotation-scale
// controller (when that class is registered), on the layer manager's current layer. Broadcasts 64 and 67.
// Undoable while holding.
Node* CreateSceneNode(Object* obj);

// Deletes each node: 68 (the node), its children re-linked to its tree root (keeping their world transforms
// when keepChildTM is set; 59 each), out of the selection, every reference to it cleared, deleted, then 69.
// Handlers of 68 may delete nodes themselves; nodes already gone when their turn comes are skipped.
// Undoable while holding (see node_undo.h).
void DeleteSceneNodes(const std::vector<INode*>& nodes, bool keepChildTM);

// Clones nodes (and, with expandHierarchies, every node below them) in one remap operation: each clone gets
// a copy of the object chain (shared for NODE_INSTANCE and NODE_REFERENCE) and controllers, shares material
// and layer, a unique name, the clone of its parent as parent (else the original's parent), and is moved by
// offset when its parent was not cloned. Broadcasts 67 per clone. Answers originals and clones, in step.
struct ClonedNodes {
    std::vector<Node*> sources;
    std::vector<Node*> clones;
};
ClonedNodes CloneSceneNodes(const std::vector<INode*>& nodes, const Point3& offset, bool expandHierarchies,
                            int cloneType);

// The first node of that name in a depth-first walk below root (root itself excluded).
Node* FindNodeByName(Node* root, const MCHAR* name);

// A name like base that no node of the scene carries: trailing digits counted on ("Box001" -> "Box002"),
// three digits appended when there are none.
MSTR UniqueNodeName(const MSTR& base);

// Every node below root, parents before children, in child order (root excluded).
std::vector<Node*> NodesBelow(Node* root);

}  // namespace hostrt
