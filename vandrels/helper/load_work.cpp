#include "helper/load_work.h"

#include "ilayer.h"
#include "inode.h"
#include "maxapi.h"
#include "notify.h"

namespace vandrels {

void NodeList::Append(INode* node) {
    if (!node || Contains(node)) return;
    where_[node] = nodes_.Count();
    nodes_.Append(node);
}

void NodeList::Remove(INode* node) {
    auto it = where_.find(node);
    if (it == where_.end()) return;
    nodes_[it->second] = nullptr;
    where_.erase(it);
}

void NodeList::Compact() {
    int out = 0;
    for (int i = 0; i < nodes_.Count(); ++i) {
        if (!nodes_[i]) continue;
        where_[nodes_[i]] = out;
        nodes_[out++] = nodes_[i];
    }
    nodes_.SetCount(out);
}

void NodeList::Clear() {
    nodes_.ZeroCount();
    where_.clear();
}

LoadWork::LoadWork() { RegisterNotification(onNodeDeleted, this, NOTIFY_SCENE_PRE_DELETED_NODE); }

LoadWork::~LoadWork() {
    ListenForLayers(false);
    ListenForAddedNodes(false);
    UnRegisterNotification(onNodeDeleted, this, NOTIFY_SCENE_PRE_DELETED_NODE);
    FreeLayers();
}

void LoadWork::RememberPreLayers() {
    preLayers.clear();
    ILayerManager* manager = GetCOREInterface()->GetLayerManager();
    if (!manager) return;
    for (int i = 1; i < manager->GetLayerCount(); ++i)
        if (ILayer* layer = manager->GetLayer(i)) preLayers.insert(layer);
}

MergedLayer* LoadWork::layerEntry(ILayer* layer) {
    auto it = byLayer_.find(layer);
    if (it != byLayer_.end()) return it->second;
    auto* entry = new MergedLayer;
    entry->layer = layer;
    entry->name = layer->GetName();
    entry->existed = preLayers.count(layer) ? 1 : 0;
    mergedLayers.Append(entry);
    byLayer_[layer] = entry;
    return entry;
}

void LoadWork::CollectLayers() {
    ILayerManager* manager = GetCOREInterface()->GetLayerManager();
    ILayer* defaultLayer = manager ? manager->GetLayer(0) : nullptr;
    for (INode* node : mergedNodes.Nodes()) {
        if (!node) continue;
        ILayer* layer = node->GetLayer();
        if (!layer || layer == defaultLayer) continue;
        MergedLayer* entry = layerEntry(layer);
        entry->nodes.Append(node);
        nodeLayer_[node] = entry;
    }
}

void LoadWork::CollectParentLayers() {
    const int count = mergedLayers.Count();
    for (int i = 0; i < count; ++i)
        for (ILayer* parent = mergedLayers[i]->layer->GetParentLayer(); parent; parent = parent->GetParentLayer())
            if (!preLayers.count(parent)) layerEntry(parent);
}

void LoadWork::CompactLayers() {
    for (MergedLayer* entry : mergedLayers) {
        int out = 0;
        for (int i = 0; i < entry->nodes.Count(); ++i)
            if (entry->nodes[i]) entry->nodes[out++] = entry->nodes[i];
        entry->nodes.SetCount(out);
    }
}

void LoadWork::FreeLayers() {
    for (MergedLayer* entry : mergedLayers) delete entry;
    mergedLayers.ZeroCount();
    byLayer_.clear();
    nodeLayer_.clear();
}

void LoadWork::ListenForLayers(bool on) {
    if (on == layersListening_) return;
    layersListening_ = on;
    if (on)
        RegisterNotification(onLayerDeleted, this, NOTIFY_LAYER_DELETED);
    else
        UnRegisterNotification(onLayerDeleted, this, NOTIFY_LAYER_DELETED);
}

void LoadWork::ListenForAddedNodes(bool on) {
    if (on == addedListening_) return;
    addedListening_ = on;
    if (on)
        RegisterNotification(onNodeAdded, this, NOTIFY_SCENE_ADDED_NODE);
    else
        UnRegisterNotification(onNodeAdded, this, NOTIFY_SCENE_ADDED_NODE);
}

void LoadWork::onLayerDeleted(void* param, NotifyInfo* info) {
    auto* work = static_cast<LoadWork*>(param);
    auto* layer = info ? static_cast<ILayer*>(info->callParam) : nullptr;
    auto it = work->byLayer_.find(layer);
    if (it == work->byLayer_.end()) return;
    MergedLayer* entry = it->second;
    work->byLayer_.erase(it);
    for (INode* node : entry->nodes)
        if (node) work->nodeLayer_.erase(node);
    for (MergedLayer* other : work->mergedLayers)
        if (other->parent == entry) other->parent = nullptr;
    work->mergedLayers.Remove(entry);
    delete entry;
}

void LoadWork::onNodeDeleted(void* param, NotifyInfo* info) {
    auto* work = static_cast<LoadWork*>(param);
    auto* node = info ? static_cast<INode*>(info->callParam) : nullptr;
    if (!node) return;
    if (work->layersListening_) {
        auto it = work->nodeLayer_.find(node);
        if (it != work->nodeLayer_.end()) {
            Tab<INode*>& nodes = it->second->nodes;
            for (int i = 0; i < nodes.Count(); ++i)
                if (nodes[i] == node) nodes[i] = nullptr;
            work->nodeLayer_.erase(it);
        }
    }
    work->mergedNodes.Remove(node);
    work->toDelete.Remove(node);
}

void LoadWork::onNodeAdded(void* param, NotifyInfo* info) {
    auto* work = static_cast<LoadWork*>(param);
    if (auto* node = info ? static_cast<INode*>(info->callParam) : nullptr) work->mergedNodes.Append(node);
}

}  // namespace vandrels
