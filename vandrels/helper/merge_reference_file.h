// The merge step of a load: brings a reference file into the scene through the host's merge, guarded against
// circular references, and answers the nodes the merge added.
#pragma once

#include "strclass.h"
#include "tab.h"

class INode;
class VandrelsHelper;

namespace vandrels {

// The helper's proxy file or main file as a full path (empty when the helper names none).
MSTR ReferenceFilePath(VandrelsHelper* helper, bool proxy);

// The file a load merges: the proxy or the main file, by the helper's proxy settings for viewport or render;
// resolved to a full path (empty when the helper names no file).
MSTR ChooseReferenceFile(VandrelsHelper* helper);

// Merges path (a full path) for helper and appends the merged nodes to mergedNodes, in depth-first pre-order
// from the scene root. Answers 0 without merging for an empty path or a circular reference (the open scene
// itself, or a file whose merge is in progress), 1 when merged. A failure is thrown on as a MAXException
// ("Error Merging File" ...).
int MergeReferenceFile(VandrelsHelper* helper, const MSTR& path, Tab<INode*>& mergedNodes);

}  // namespace vandrels
