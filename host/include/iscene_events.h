// The scene-event manager: node-event callbacks hear, at the end of each host operation, which nodes were
// added, deleted, re-linked, renamed, regrouped or otherwise changed, as tables of node keys.
#pragma once

#include "tab.h"

class INode;

namespace NodeEventNamespace {
// A node's key is its handle (INode::GetHandle).
using NodeKey = ULONG;
// The node of a key; null when the node is gone.
INode* GetNodeByKey(NodeKey key);
NodeKey GetKeyByNode(INode* node);
}  // namespace NodeEventNamespace

using NodeKeyTab = Tab<NodeEventNamespace::NodeKey>;

// Override the events of interest. Each method hears every node that had that kind of event during the
// operation, once, in the order of the events. CallbackBegin and CallbackEnd frame one delivery.
class INodeEventCallback {
public:
    virtual ~INodeEventCallback() = default;

    virtual void CallbackBegin() {}
    virtual void CallbackEnd() {}

    // Hierarchy.
    virtual void Added(NodeKeyTab& nodes) {}
    virtual void Deleted(NodeKeyTab& nodes) {}
    virtual void LinkChanged(NodeKeyTab& nodes) {}
    virtual void LayerChanged(NodeKeyTab& nodes) {}
    virtual void GroupChanged(NodeKeyTab& nodes) {}
    // Model, controllers and materials: the object, a controller or the material of the node was replaced.
    virtual void ModelStructured(NodeKeyTab& nodes) {}
    virtual void ControllerStructured(NodeKeyTab& nodes) {}
    virtual void MaterialStructured(NodeKeyTab& nodes) {}
    // Properties.
    virtual void NameChanged(NodeKeyTab& nodes) {}
    virtual void WireColorChanged(NodeKeyTab& nodes) {}
    virtual void RenderPropertiesChanged(NodeKeyTab& nodes) {}
    virtual void DisplayPropertiesChanged(NodeKeyTab& nodes) {}
    virtual void UserPropertiesChanged(NodeKeyTab& nodes) {}
    // Bone properties, object offset, transform locks and skin pose.
    virtual void PropertiesOtherEvent(NodeKeyTab& nodes) {}
    // Display state.
    virtual void SelectionChanged(NodeKeyTab& nodes) {}
    virtual void HideChanged(NodeKeyTab& nodes) {}
    virtual void FreezeChanged(NodeKeyTab& nodes) {}
};

class ISceneEventManager {
public:
    using CallbackKey = UINT;
    virtual ~ISceneEventManager() = default;
    // Registers cb and answers its key (never 0). A callback registered twice gets two keys.
    virtual CallbackKey RegisterCallback(INodeEventCallback* cb, BOOL polling = FALSE, DWORD delayMilliseconds = 0,
                                         BOOL notifyOnMerge = FALSE) = 0;
    // Safe from inside a callback: an unregistered callback hears nothing more, also in the delivery running.
    virtual void UnRegisterCallback(CallbackKey key) = 0;
    virtual INodeEventCallback* GetCallbackByKey(CallbackKey key) = 0;
};

ISceneEventManager* GetISceneEventManager();
