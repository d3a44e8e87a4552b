// The advanced reset: drops chosen categories of overrides from whole references or from chosen nodes, then
// reloads the references it touched so that the reference's own state comes back. The advanced reset dialog
// runs the same operation.
#pragma once

#include "bitarray.h"
#include "inode.h"
#include "tab.h"

namespace vandrels {

// categories and parameters: bit arrays of the 8 node categories and the 9 parameter groups (null: all of
// them). The references (0-based helper-list indices) choose references mode, else nodes (scene nodes) choose
// nodes mode, else selection does: 1 the helpers selected in the manager, 2 the selected scene nodes, any other
// value nothing. A helper whose reference file is missing is left alone (reference_file_check.h).
void AdvancedReset(int selection, const BitArray* categories, const BitArray* parameters, const Tab<int>* references,
                   const Tab<INode*>* nodes);

}  // namespace vandrels
