// Layers and the layer manager. Layer "0" is the default layer and always exists.
#pragma once

#include "ref.h"

class INode;

class ILayer : public ReferenceTarget {
public:
    virtual MSTR GetName() = 0;
    // Answers false (and changes nothing) when another layer already has the name.
    virtual bool SetName(const MSTR& name) = 0;
    virtual ILayer* GetParentLayer() = 0;
    virtual bool SetParentLayer(ILayer* parent) = 0;
    virtual int GetNumOfChildLayers() = 0;
    virtual ILayer* GetChildLayer(int i) = 0;
    // Moves node onto this layer; broadcasts 150 {node, old layer, new layer}.
    virtual bool AddToLayer(INode* node) = 0;
    virtual int NumNodes() = 0;
    virtual INode* GetNode(int i) = 0;
};

class ILayerManager {
public:
    virtual ~ILayerManager() = default;
    virtual int GetLayerCount() = 0;
    virtual ILayer* GetLayer(int i) = 0;  // index 0 is layer "0"
    virtual ILayer* GetLayer(const MSTR& name) = 0;
    // A new layer with the name; null when a layer of that name exists.
    virtual ILayer* CreateLayer(const MSTR& name) = 0;
    // Takes a layer object (one deleted before) back into the manager.
    virtual bool AddLayer(ILayer* layer) = 0;
    // Broadcasts 149 with the layer, then removes it from the manager (references to it stay valid). Fails for
    // layer "0", the current layer, and a layer that holds nodes or child layers.
    virtual bool DeleteLayer(const MSTR& name) = 0;
    virtual ILayer* GetCurrentLayer() = 0;
    virtual bool SetCurrentLayer(const MSTR& name) = 0;
    // The merge option "duplicate layer without same hierarchy"; persist stores it as a preference.
    virtual bool GetDuplicateLayerWithoutSameHierarchyOnMerge() = 0;
    virtual void SetDuplicateLayerWithoutSameHierarchyOnMerge(bool on, bool persist) = 0;
};
