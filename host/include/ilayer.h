// Layers and the layer manager. Layer "0" is the default layer and always exists.
#pragma once

#include "ref.h"

class INode;
class ILayer;

// Broadcast before a layer leaves the layer manager; call parameter: the ILayer*.
#define NOTIFY_LAYER_DELETED 0x00000095
// Broadcast after a node moved to another layer; call parameter: a NodeLayerChange*.
#define NOTIFY_NODE_LAYER_CHANGED 0x00000096
struct NodeLayerChange {
    INode* node = nullptr;
    ILayer* oldLayer = nullptr;  // null when the node had no layer
    ILayer* newLayer = nullptr;
};

class ILayer : public ReferenceTarget {
public:
    virtual MSTR GetName() = 0;
    // Answers false (and changes nothing) for an empty name and when another layer of the scene already has
    // the name (compared without regard to case). Undoable.
    virtual bool SetName(const MSTR& name) = 0;
    virtual ILayer* GetParentLayer() = 0;
    // Null makes the layer a top-level one. False for a parent that is this layer or one of its descendants.
    virtual bool SetParentLayer(ILayer* parent) = 0;
    // The child layers, in the order of the layer manager's list (layers outside it last).
    virtual int GetNumOfChildLayers() = 0;
    virtual ILayer* GetChildLayer(int i) = 0;
    // Moves node onto this layer (the node's reference NODE_LAYER_REF); broadcasts 150 {node, old layer,
    // new layer} when the layer changed. Undoable.
    virtual bool AddToLayer(INode* node) = 0;
    // The nodes whose layer this is.
    virtual int NumNodes() = 0;
    virtual INode* GetNode(int i) = 0;
    // Whether this layer or any of its child layers (recursively) holds nodes.
    virtual bool HasNodesBelow() = 0;
    // The layer's display switches: hidden and frozen layers hide or freeze their nodes in the viewports
    // (the nodes' own switches stay as they are). Saved with the layer; send REFMSG_CHANGE.
    virtual bool IsHidden() { return false; }
    virtual bool Hide(bool hide) { return false; }
    virtual bool IsFrozen() { return false; }
    virtual bool Freeze(bool freeze) { return false; }
};

class ILayerManager {
public:
    virtual ~ILayerManager() = default;
    virtual int GetLayerCount() = 0;
    virtual ILayer* GetLayer(int i) = 0;  // index 0 is layer "0"
    virtual ILayer* GetLayer(const MSTR& name) = 0;
    // A new top-level layer with the name, appended to the list; null for an empty name or one a layer has.
    virtual ILayer* CreateLayer(const MSTR& name) = 0;
    // Takes a layer object (one deleted before) back into the manager, as the last layer. False when it is
    // listed already or another listed layer has its name.
    virtual bool AddLayer(ILayer* layer) = 0;
    // Broadcasts 149 with the layer, then removes it from the manager (references to it stay valid). Fails for
    // layer "0", the current layer, and a layer that holds nodes or child layers.
    virtual bool DeleteLayer(const MSTR& name) = 0;
    virtual ILayer* GetCurrentLayer() = 0;
    // False (nothing changes) when no layer has the name.
    virtual bool SetCurrentLayer(const MSTR& name) = 0;
    // The merge option "duplicate layer without same hierarchy": a host setting, not saved with scenes; persist
    // also stores it in the host's INI file, where start-up reads it from.
    virtual bool GetDuplicateLayerWithoutSameHierarchyOnMerge() = 0;
    virtual void SetDuplicateLayerWithoutSameHierarchyOnMerge(bool on, bool persist) = 0;
};
