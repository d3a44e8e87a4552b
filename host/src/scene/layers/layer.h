// A layer of the scene: a name, a parent layer (its reference 0), child layers and the nodes that name it as
// their layer. Children and nodes are not stored: they are the layer's dependents that point at it.
#pragma once

#include "ilayer.h"

#include <vector>

namespace hostrt {

class LayerManager;

class Layer : public ILayer {
public:
    static constexpr Class_ID kClassID = Class_ID(0x48531A01, 0x00000001);
    static constexpr int kParentRef = 0;

    explicit Layer(bool loading = false) {}
    explicit Layer(const MSTR& name) : name_(name) {}

    MSTR GetName() override { return name_; }
    bool SetName(const MSTR& name) override;
    ILayer* GetParentLayer() override { return parent_; }
    bool SetParentLayer(ILayer* parent) override;
    int GetNumOfChildLayers() override;
    ILayer* GetChildLayer(int i) override;
    bool AddToLayer(INode* node) override;
    int NumNodes() override;
    INode* GetNode(int i) override;
    bool HasNodesBelow() override;
    bool IsHidden() override { return hidden_; }
    bool Hide(bool hide) override;
    bool IsFrozen() override { return frozen_; }
    bool Freeze(bool freeze) override;

    // The layer manager listing this layer; null when none does.
    LayerManager* Manager();
    // Sets the name without checks, undo or messages (loading, undo).
    void SetNameRaw(const MSTR& name) { name_ = name; }

    Class_ID ClassID() override { return kClassID; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"Layer"; }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == kParentRef ? parent_ : nullptr; }
    void SetReference(int i, RefTargetHandle target) override;
    // Changes of the parent layer do not concern the nodes on this one.
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage, BOOL) override {
        return REF_STOP;
    }
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    // A layer of the same name and parent (the parent's clone when it is cloned in the same operation).
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    std::vector<ILayer*> children();
    // The nodes on the layer; found again when the dependents changed, or when entry check is out of date.
    const std::vector<INode*>& nodes(int check);

    MSTR name_;
    ILayer* parent_ = nullptr;
    bool hidden_ = false;
    bool frozen_ = false;
    std::vector<INode*> nodes_;
    std::vector<AnimHandle> nodeHandles_;
    std::size_t depsSeen_ = std::size_t(-1);
    bool nodesDirty_ = true;
};

}  // namespace hostrt
