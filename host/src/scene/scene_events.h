// Node events of the scene-event manager: host code raises them while it changes nodes; they are delivered to
// the registered INodeEventCallbacks when the outermost host operation (a NodeEventBatch) ends.
#pragma once

#include "iscene_events.h"

namespace hostrt {

enum class NodeEvent : int {
    Added,
    Deleted,
    LinkChanged,
    LayerChanged,
    GroupChanged,
    ModelStructured,
    ControllerStructured,
    MaterialStructured,
    NameChanged,
    WireColorChanged,
    RenderPropertiesChanged,
    DisplayPropertiesChanged,
    UserPropertiesChanged,
    PropertiesOtherEvent,
    SelectionChanged,
    HideChanged,
    FreezeChanged,
    Count
};

// Records that the node of key had an event. Delivered when the outermost batch ends, at once when none is
// open. Nothing is recorded while no callback is registered.
void RaiseNodeEvent(NodeEvent kind, NodeEventNamespace::NodeKey key);

// One host operation: events raised while any batch is open are delivered when the outermost one ends.
class NodeEventBatch {
public:
    NodeEventBatch();
    ~NodeEventBatch();
    NodeEventBatch(const NodeEventBatch&) = delete;
    NodeEventBatch& operator=(const NodeEventBatch&) = delete;
};

// Delivers what is pending now, even inside a batch (for tests and for the host's idle point).
void FlushNodeEvents();

}  // namespace hostrt
