// The scans that find, for the node records, the lights and the other scene items whose node lists name their
// nodes (ahead of a collect, which turns them into the exclusion-list overrides), and the way an override puts
// a node back into such a list.
#pragma once

class INode;
class ReferenceTarget;
class RecordOwner;

// Every light with an include/exclude list loses the list's empty entries (nodes deleted since), and every
// listed node that has a node record of helper (of any helper when helper is null) gets the light on the
// record's scratch light list.
void CollectLightExclusions(RecordOwner* helper);

// Every scene effect of the kinds with node lists (three lists, or one): each listed node that has a node
// record of helper (of any helper when null) gets the effect with the list's index on the record's scratch
// list of other exclusions.
void CollectOtherExclusions(RecordOwner* helper);

// Appends node to item's node list listIndex (0 to 2). False when item has no node lists, the index is
// outside them or the list did not take the node.
bool AddNodeToNodeList(ReferenceTarget* item, int listIndex, INode* node);
