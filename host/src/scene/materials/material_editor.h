// The compact material editor's 24 sample slots, a scene part. Each slot holds a material or map as a
// reference; a new scene starts with 24 standard materials named "01 - Default" ... "24 - Default".
#pragma once

#include "imtl.h"

namespace hostrt {

class MaterialEditorSlots : public ReferenceTarget {
public:
    static constexpr Class_ID kClassID = Class_ID(0x48530C02, 0x00000001);
    static constexpr int kNumSlots = 24;

    // Fills the slots with default materials unless loading.
    explicit MaterialEditorSlots(bool loading = false);

    // Null for a slot out of range.
    MtlBase* Get(int slot);
    // Puts m in a slot (undoable while holding); false for a slot out of range or no material.
    bool Put(MtlBase* m, int slot);

    Class_ID ClassID() override { return kClassID; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"MaterialEditorSlots"; }
    int NumRefs() override { return kNumSlots; }
    RefTargetHandle GetReference(int i) override { return Get(i); }
    void SetReference(int i, RefTargetHandle target) override;
    // What happens inside the slots' materials stays with them.
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage, BOOL) override {
        return REF_STOP;
    }
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    MtlBase* slots_[kNumSlots] = {};
};

// The slots of the open scene (never null).
MaterialEditorSlots& SceneMtlEditor();

}  // namespace hostrt
