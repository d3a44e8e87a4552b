// The helper list: every scene node whose object is a reference helper, depth-first in pre-order from the
// scene root, each node once. The scripting interface's indices and the manager's rows follow it; it is
// computed afresh at every use.
#pragma once

#include "inode.h"

#include <vector>

namespace vandrels {

// Whether the node's object is a reference helper (by class identifier).
bool IsHelperNode(INode* node);

// The helper nodes of the open scene in helper-list order.
std::vector<INode*> GetHelperList();

}  // namespace vandrels
