// The scene node container: slots of the scene's nodes, reused as nodes come and go.
#include "scene/node_container.h"

#include "core/ref_internal.h"
#include "scene/node.h"

namespace hostrt {

SceneNodeContainer& SceneNodeContainer::Instance() {
    static auto* container = new SceneNodeContainer();  // lives as long as the process
    return *container;
}

void SceneNodeContainer::Add(Node* node) {
    if (!node || node->containerSlot >= 0) return;
    int slot;
    if (!free_.empty()) {
        slot = *free_.begin();
        free_.erase(free_.begin());
    } else {
        slot = int(slots_.size());
        slots_.push_back(nullptr);
    }
    RestoreReference(this, slot, node);
    node->containerSlot = slot;
}

void SceneNodeContainer::AddAt(Node* node, int slot) {
    if (!node || node->containerSlot >= 0) return;
    if (slot < 0 || (slot < int(slots_.size()) && slots_[std::size_t(slot)])) {
        Add(node);
        return;
    }
    while (int(slots_.size()) <= slot) {
        if (int(slots_.size()) < slot) free_.insert(int(slots_.size()));
        slots_.push_back(nullptr);
    }
    RestoreReference(this, slot, node);
    node->containerSlot = slot;
}

void SceneNodeContainer::Remove(Node* node) {
    if (!node || node->containerSlot < 0) return;
    const int slot = node->containerSlot;
    if (slot < int(slots_.size()) && slots_[std::size_t(slot)] == node) RestoreReference(this, slot, nullptr);
    node->containerSlot = -1;
}

RefResult SceneNodeContainer::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage message,
                                               BOOL) {
    if (message == REFMSG_TARGET_DELETED && hTarget)
        if (auto* n = dynamic_cast<Node*>(hTarget); n && n->containerSlot >= 0 && GetReference(n->containerSlot) == n)
            Remove(n);
    return REF_STOP;
}

RefTargetHandle SceneNodeContainer::GetReference(int i) {
    return i >= 0 && i < int(slots_.size()) ? slots_[std::size_t(i)] : nullptr;
}

void SceneNodeContainer::SetReference(int i, RefTargetHandle target) {
    if (i < 0 || i >= int(slots_.size())) return;
    RefTargetHandle& slot = slots_[std::size_t(i)];
    if (slot && !target) {
        free_.insert(i);
        if (auto* n = dynamic_cast<Node*>(slot)) n->containerSlot = -1;
    } else if (!slot && target) {
        free_.erase(i);
        if (auto* n = dynamic_cast<Node*>(target)) n->containerSlot = i;
    }
    slot = target;
    // Trailing free slots go, so the slot list does not keep the size of the largest scene.
    while (!slots_.empty() && !slots_.back()) {
        free_.erase(int(slots_.size()) - 1);
        slots_.pop_back();
    }
}

}  // namespace hostrt
