// Undo of the scene's structure: making a node, deleting it and linking it to another parent. Each is recorded
// while the hold is holding (and is not undoing or redoing), like every other scene edit.
#pragma once

namespace hostrt {

class Node;

// True when an edit made now goes into the undo buffer.
bool RecordingSceneUndo();

// Records that node has just entered the scene: undo takes it out again (as a deletion does: 68, its children to
// the tree root, 69), redo brings it back (67).
void RecordNodeCreated(Node* node);

// Records the parent and position of node before it is linked elsewhere: undo puts it back there (59), redo
// moves it again. Its transform comes back through its controller's own undo records.
void RecordNodeLink(Node* node);

// Takes node out of the scene (selection, parent, scene node container), tells its dependents that it is deleted,
// clears every reference to it and drops its own. While recording, the deletion is an undo record: the node stays,
// marked deleted, as long as the record can bring it back with its references (both ways), parent and position,
// container slot, selection and named selection sets. Otherwise the node is deleted at once.
void TakeNodeOutOfScene(Node* node);

}  // namespace hostrt
