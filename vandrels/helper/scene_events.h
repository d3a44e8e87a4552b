// The helper side of the host's node events: events that reference messages do not carry (links, layer
// changes, display, render, user and bone property edits, renames, group changes) are sent to the nodes'
// dependents as the library's own messages, so the node records can detect local edits; helper nodes created,
// renamed and deleted, and named selection sets, are kept in step.
#pragma once

#include "maxtypes.h"
#include "strclass.h"
#include "tab.h"

class INode;
class VandrelsHelper;
struct NotifyInfo;

namespace vandrels {

// One host notification of the scene-event group (links, creation, deletion, property edits, renames,
// selection sets, merges, scene opened); info->intcode tells which.
void OnSceneEvent(NotifyInfo* info);

// The group-changed reaction of the helpers' node-event callbacks: each node's dependents hear that its group
// state changed.
void OnGroupChanged(const Tab<ULONG>& nodeKeys);

// The helper's node was renamed: with the name prefix in use, the prefixed names of its nodes, materials and
// layers follow the new name.
void OnHelperRenamed(VandrelsHelper* helper, const MSTR& newName, const MSTR& oldName);

// Whether changes of the named selection sets are followed (on, except while a batch rebuilds the sets).
bool IsSelectionSetTracking();
void SetSelectionSetTracking(bool on);
// The names of the scene's named selection sets as last seen, in the host's order.
const Tab<WStr*>& CachedSelectionSetNames();
// Takes the names of the scene's current sets into the cache.
void RebuildSelectionSetCache();

}  // namespace vandrels
