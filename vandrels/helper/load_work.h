// The working lists of one load: the merged nodes, the scene's layers before the merge, the merged layers with
// their nodes and the merged nodes to delete again. While a load runs, nodes and layers that leave or enter the
// scene are kept out of or added to these lists through the host's notifications.
#pragma once

#include "helper/helper_layers.h"
#include "tab.h"

#include <unordered_map>
#include <unordered_set>

class ILayer;
class INode;
struct NotifyInfo;

namespace vandrels {

// A list of nodes in order with constant-time removal: a removed node leaves an empty slot until Compact.
class NodeList {
public:
    void Append(INode* node);
    // Empties the node's slot; nothing for a node not listed.
    void Remove(INode* node);
    bool Contains(INode* node) const { return where_.count(node) > 0; }
    // Drops the empty slots, keeping the order.
    void Compact();
    // The listed nodes in order (empty slots included until Compact).
    const Tab<INode*>& Nodes() const { return nodes_; }
    int Count() const { return int(where_.size()); }
    void Clear();

private:
    Tab<INode*> nodes_;
    std::unordered_map<INode*, int> where_;
};

class LoadWork {
public:
    LoadWork();
    ~LoadWork();
    LoadWork(const LoadWork&) = delete;
    LoadWork& operator=(const LoadWork&) = delete;

    NodeList mergedNodes;
    NodeList toDelete;
    std::unordered_set<ILayer*> preLayers;
    Tab<MergedLayer*> mergedLayers;

    // Remembers the layers of the scene (all but the default layer).
    void RememberPreLayers();
    // Sorts the merged nodes into merged layers, then adds the new parent layers of every merged layer.
    void CollectLayers();
    void CollectParentLayers();
    // The merged layers' node lists without the nodes deleted meanwhile.
    void CompactLayers();
    void FreeLayers();

    // Listening. A deleted node (68) leaves the node lists for the whole load, so that no list ever holds a node
    // that is gone; it leaves the layers' node lists from the layer collection to the layer monitoring, when a
    // deleted layer (NOTIFY_LAYER_DELETED) leaves the merged layers too; a node added to the scene (NOTIFY_SCENE_ADDED_NODE) joins the merged nodes
    // while records are bound and nodes deleted.
    void ListenForLayers(bool on);
    void ListenForAddedNodes(bool on);

private:
    MergedLayer* layerEntry(ILayer* layer);
    static void onLayerDeleted(void* param, NotifyInfo* info);
    static void onNodeDeleted(void* param, NotifyInfo* info);
    static void onNodeAdded(void* param, NotifyInfo* info);

    std::unordered_map<ILayer*, MergedLayer*> byLayer_;
    std::unordered_map<INode*, MergedLayer*> nodeLayer_;
    bool layersListening_ = false;
    bool addedListening_ = false;
};

}  // namespace vandrels
