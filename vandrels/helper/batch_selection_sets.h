// The named selection sets across a reference batch: referenced nodes that leave the scene leave their sets. When
// a batch opens, every set's members are noted in order and the node records learn which sets hold their nodes;
// a record whose node comes back puts the fresh node on the pending member list of those sets, and when the batch
// closes each such set gets its members back in the order they had, the fresh nodes in the places of the nodes
// they replace. Set events caused meanwhile are not followed.
#pragma once

namespace vandrels {

void RememberSelectionSets();
void RebuildSelectionSets();

}  // namespace vandrels
