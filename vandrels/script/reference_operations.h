// The bulk reference operations of the scripting interface that drive the helpers' reload, reset, duplicate,
// merge and removal, the manager window and the about box. Indices are 0-based positions in the helper list
// (index_list.h gives the rules).
#pragma once

#include "bitarray.h"
#include "inode.h"
#include "tab.h"

namespace vandrels {

void AddVandrelDialog();
void RemoveAllVandrels();
void ReloadVandrels(const Tab<int>* indices);
void RemoveVandrels(const Tab<int>* indices);
void ResetVandrels(const Tab<int>* indices);
void DuplicateVandrels(const Tab<int>* indices);
void MergeVandrels(const Tab<int>* indices);
void AdvancedReset(int selection, const BitArray* categories, const BitArray* parameters, const Tab<int>* references,
                   const Tab<INode*>* nodes);

// Opens the manager window through the MAXScript primitive that shows it.
void OpenManager();
void CloseManager();
bool IsManagerOpen();
// Brings the manager window's rows up to date when it is open.
void RefreshManagerIfOpen();
void ShowAbout();

}  // namespace vandrels
