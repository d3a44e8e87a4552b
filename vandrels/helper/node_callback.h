// The node-event callback of one helper: registered with the host's scene-event manager while the helper
// lives, it turns node events that reference messages do not carry into messages to the records.
#pragma once

#include "iscene_events.h"

class VandrelsHelper;

class NodeCallback : public INodeEventCallback {
public:
    explicit NodeCallback(VandrelsHelper* helper) : helper_(helper) {}
    VandrelsHelper* GetHelper() const { return helper_; }
    // The group-changed reaction (the nodes' dependents hear that their group state changed) comes with the
    // scene event handling; until then the callback only holds its registration.
    void GroupChanged(NodeKeyTab&) override {}

private:
    VandrelsHelper* helper_;
};
