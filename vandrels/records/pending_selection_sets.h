// The members of named selection sets waiting to be put back: while referenced nodes leave and come back in
// a reference batch, the node records note, per set index, which of their nodes belong in that set; the batch
// then rebuilds the sets from these lists.
#pragma once

#include "tab.h"

class INode;

namespace vandrels {

// Makes the table count entries long (one per named selection set), every entry without members.
void ResetPendingSelectionSets(int count);
int NumPendingSelectionSets();
// The members noted for a set index; null while none were noted or for an index outside the table.
const Tab<INode*>* PendingSelectionMembers(int setIndex);
// Empties the table once the sets are rebuilt.
void ClearPendingSelectionSets();

}  // namespace vandrels

// Notes node as a member of the set with setIndex. False, noting nothing, for an index outside the table.
bool AddPendingSelectionMember(INode* node, int setIndex);
