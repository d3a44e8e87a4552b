// The multi/sub-object material (class (0x200, 0)): a variable number of sub-materials, each with an on/off
// switch, a slot name and a material id, kept as four tables of parameter block 0.
#pragma once

#include "imtl.h"
#include "iparamb2.h"

namespace hostrt {

class MultiMaterial : public Mtl {
public:
    // Tables of block 0, always of the same length: resizing the material table resizes the others (new
    // entries: empty slot, on, no name, id = slot index + 1).
    enum : ParamID { kMaterials = 0, kEnabled = 1, kNames = 2, kIds = 3 };
    static constexpr int kBlockRef = 0;
    static constexpr int kDefaultCount = 10;

    // A material with kDefaultCount standard sub-materials (when loading, its block comes back as a reference).
    explicit MultiMaterial(bool loading = false);

    IParamBlock2* ParamBlock() const { return pblock_; }
    // Sets the number of slots; new slots get new standard materials. Sends 258 when the count changes.
    void SetNumSubMtls(int n);
    int GetSubMtlID(int i);
    void SetSubMtlID(int i, int id);
    BOOL GetSubMtlEnabled(int i);
    void SetSubMtlEnabled(int i, BOOL on);
    // The slot's own name (empty unless set).
    MSTR GetSubMtlName(int i);
    void SetSubMtlName(int i, const MSTR& name);

    Class_ID ClassID() override { return MULTI_MATERIAL_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"Multi/Sub-Object"; }

    int NumSubMtls() override;
    Mtl* GetSubMtl(int i) override;
    // A material that would contain this one is refused.
    void SetSubMtl(int i, Mtl* m) override;
    // "Material #<id>", or the slot's name when it has one.
    MSTR GetSubMtlSlotName(int i, bool localized = true) override;

    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == kBlockRef ? pblock_ : nullptr; }
    void SetReference(int i, RefTargetHandle target) override;
    // The sub-materials (they are references of the block, not of the material).
    int NumSubs() override { return NumSubMtls(); }
    Animatable* SubAnim(int i) override { return GetSubMtl(i); }
    MSTR SubAnimName(int i, bool localized = true) override { return GetSubMtlSlotName(i, localized); }
    int NumParamBlocks() override { return 1; }
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? pblock_ : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return pblock_ && pblock_->ID() == id ? pblock_ : nullptr; }
    // A change of the number of sub-materials (by any route, undo included) sends 258 to the dependents.
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                               BOOL propagate) override;

    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    IParamBlock2* pblock_ = nullptr;
    int knownCount_ = 0;  // sub-material count last announced
};

// Registers the multi/sub-object material class. Idempotent.
void RegisterMultiMaterialClass();

}  // namespace hostrt
