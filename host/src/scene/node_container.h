// The scene node container: one object for the whole process whose references are the nodes of the scene,
// so that it is a dependent of every node. It survives reset, new and open, is never saved, and its
// references are no real dependency (nodes belong to the scene, not to it).
#pragma once

#include "ref.h"

#include <set>
#include <vector>

namespace hostrt {

class Node;

class SceneNodeContainer : public ReferenceTarget {
public:
    static constexpr Class_ID kClassID = Class_ID(0x2A930130, 0x168B3DD9);
    static SceneNodeContainer& Instance();

    // Takes node in (the lowest free slot is reused) / lets it go. Neither sends messages nor records undo.
    // Each is constant time (logarithmic in the free slots): a node knows its slot.
    void Add(Node* node);
    void Remove(Node* node);
    // Takes node back into slot when that slot is free (undoing a deletion), else as Add does.
    void AddAt(Node* node, int slot);
    // Number of nodes held.
    int NodeCount() const { return int(slots_.size() - free_.size()); }

    Class_ID ClassID() override { return kClassID; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"SceneNodeContainer"; }
    int NumRefs() override { return int(slots_.size()); }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    // Messages of the nodes end here. A node being deleted leaves its slot at once, so the deletion need not
    // look for it among the slots.
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID&, RefMessage message, BOOL) override;
    BOOL IsRealDependency(ReferenceTarget*) override { return FALSE; }
    BOOL CanTransferReference(int) override { return FALSE; }
    RefResult MaybeAutoDelete() override { return REF_FAIL; }

private:
    SceneNodeContainer() { SetAFlag(A_LOCK_TARGET); }
    std::vector<RefTargetHandle> slots_;
    std::set<int> free_;  // empty slots below the last used one
};

}  // namespace hostrt
