// The helper side of the host's node events: events that reference messages do not carry (links, layer
// changes, display, render, user and bone property edits, renames, group changes) are sent to the nodes'
// dependents as the library's own messages, so the node records can detect local edits; helper nodes created,
// renamed and deleted, and named selection sets, are kept in step.
#pragma once

struct NotifyInfo;

namespace vandrels {

// One host notification of the scene-event group (links, creation, deletion, property edits, renames,
// selection sets, merges); info->intcode tells which.
void OnSceneEvent(NotifyInfo* info);

}  // namespace vandrels
