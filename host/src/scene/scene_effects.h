// The scene effects list (a scene part) and the effect items with node lists that the host provides.
#pragma once

#include "iscene_effects.h"

#include <vector>

namespace hostrt {

// An effect holding numLists node lists (the class decides how many). The lists' nodes are its references,
// laid out list after list. Changing the lists is not recorded for undo.
class NodeListEffect : public ReferenceTarget, public INodeListEffect {
public:
    NodeListEffect(Class_ID classId, int numLists) : classId_(classId), lists_(std::size_t(numLists)) {}

    int NumNodeLists() override { return int(lists_.size()); }
    BOOL AddNode(INode* node, int listCode) override;
    int NumNodes(int listCode) override;
    INode* GetNode(int listCode, int i) override;
    BOOL RemoveNode(int listCode, int i) override;

    Class_ID ClassID() override { return classId_; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override;
    BaseInterface* GetInterface(Interface_ID id) override;
    using ReferenceTarget::GetInterface;
    int NumRefs() override;
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    // Node changes do not concern the effect's own dependents.
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage, BOOL) override {
        return REF_STOP;
    }
    // The entry count of each list (the nodes come back as references).
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    // The same lists; nodes cloned in the same operation are replaced by their clones.
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    // Index of the list of a code, -1 for an unknown code.
    int listOf(int listCode);
    int firstSlot(int list) const;

    Class_ID classId_;
    std::vector<std::vector<ReferenceTarget*>> lists_;
};

// The scene's effects, in order; each is a reference of the list. Changes are not recorded for undo.
class SceneEffectsList : public ReferenceTarget {
public:
    static constexpr Class_ID kClassID = Class_ID(0x48535F01, 0x00000001);

    explicit SceneEffectsList(bool loading = false) {}

    int Count() const { return int(effects_.size()); }
    ReferenceTarget* Get(int i) const;
    // Appends an effect; answers its index (-1 for null; a listed effect keeps its index).
    int Add(ReferenceTarget* effect);
    bool Remove(int i);

    Class_ID ClassID() override { return kClassID; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"SceneEffects"; }
    int NumRefs() override { return Count(); }
    RefTargetHandle GetReference(int i) override { return Get(i); }
    void SetReference(int i, RefTargetHandle target) override;
    // An effect deleted outright leaves the list.
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    std::vector<ReferenceTarget*> effects_;
};

// The effects list of the open scene (never null).
SceneEffectsList& SceneEffects();

// A new effect item of one of the three node-list classes; null for another class id.
NodeListEffect* NewNodeListEffect(Class_ID classId);

// Registers the three effect classes, the list class and the scene part. Idempotent.
void RegisterSceneEffectClasses();

}  // namespace hostrt
