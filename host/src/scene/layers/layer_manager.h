// The layer manager of a scene: its list of layers (references; layer "0" always first), the current layer,
// and the host-wide merge option for layers. One manager per scene, kept as a scene part.
#pragma once

#include "ilayer.h"

#include <vector>

namespace hostrt {

class LayerManager : public ReferenceTarget, public ILayerManager {
public:
    static constexpr Class_ID kClassID = Class_ID(0x48531A02, 0x00000001);

    // A manager holding layer "0", the current layer (when loading, the layers come back as references).
    explicit LayerManager(bool loading = false);

    int GetLayerCount() override { return int(layers_.size()); }
    ILayer* GetLayer(int i) override;
    // Names compare without regard to case.
    ILayer* GetLayer(const MSTR& name) override;
    ILayer* CreateLayer(const MSTR& name) override;
    bool AddLayer(ILayer* layer) override;
    bool DeleteLayer(const MSTR& name) override;
    ILayer* GetCurrentLayer() override;
    bool SetCurrentLayer(const MSTR& name) override;
    bool GetDuplicateLayerWithoutSameHierarchyOnMerge() override;
    void SetDuplicateLayerWithoutSameHierarchyOnMerge(bool on, bool persist) override;

    // Index of a listed layer, -1 when it is not listed.
    int IndexOf(ILayer* layer) const;

    Class_ID ClassID() override { return kClassID; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"LayerManager"; }
    int NumRefs() override { return int(layers_.size()); }
    RefTargetHandle GetReference(int i) override { return GetLayer(i); }
    void SetReference(int i, RefTargetHandle target) override;
    // A layer deleted outright leaves the list (a new layer "0" replaces a deleted default layer).
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;
    // The number of layers and the index of the current one.
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    // A manager listing the same layers (their clones when cloned in the same operation).
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    void append(ILayer* layer);
    // Drops entry i from the list; the layer stays alive while anything references it.
    void drop(int i);

    std::vector<ILayer*> layers_;
    ILayer* current_ = nullptr;
    int loadedCurrent_ = 0;  // index of the current layer read by Load, resolved once the layers are back
};

// The layer manager of the open scene (never null).
LayerManager& SceneLayerManager();

// Reads the layer merge option from the host's INI file (done once at start-up; again on request).
void LoadLayerPreferences();

// Registers the layer and layer manager classes and the layer manager scene part. Idempotent.
void RegisterLayerClasses();

}  // namespace hostrt
