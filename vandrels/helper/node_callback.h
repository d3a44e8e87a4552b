// The node-event callback of one helper: registered with the host's scene-event manager while the helper
// lives, it turns node events that reference messages do not carry into messages to the records.
#pragma once

#include "helper/scene_events.h"
#include "iscene_events.h"

class VandrelsHelper;

class NodeCallback : public INodeEventCallback {
public:
    explicit NodeCallback(VandrelsHelper* helper) : helper_(helper) {}
    VandrelsHelper* GetHelper() const { return helper_; }
    // The nodes' dependents hear that their group state changed.
    void GroupChanged(NodeKeyTab& nodes) override { vandrels::OnGroupChanged(nodes); }

private:
    VandrelsHelper* helper_;
};
