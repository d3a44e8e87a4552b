// ItemList: a reference target holding a growable list of items as its references. Host tools and tests use
// it as a scene part of their own, to keep items that are not nodes in the scene (saved, opened, reset).
#pragma once

#include "ref.h"

namespace hostrt {

class ItemList : public ReferenceTarget {
public:
    static constexpr Class_ID kClassID = Class_ID(0x48530002, 0x00000001);

    int Count() const { return items_.Count(); }
    ReferenceTarget* Get(int i) const { return i >= 0 && i < items_.Count() ? items_[i] : nullptr; }
    // Appends item as a new last reference; answers its index (-1 for a null item). Not recorded for undo.
    int Add(ReferenceTarget* item);
    // Drops item i (later items move down); the item deletes itself when nothing else needs it.
    bool Remove(int i);

    Class_ID ClassID() override { return kClassID; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"ItemList"; }
    int NumRefs() override { return items_.Count(); }
    RefTargetHandle GetReference(int i) override { return Get(i); }
    void SetReference(int i, RefTargetHandle target) override;
    RefTargetHandle Clone(RemapDir& remap) override;
    // Saves the number of items (chunk 0x0001, u32); the items come back as references.
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;

private:
    Tab<ReferenceTarget*> items_;
};

void RegisterItemListClass();

}  // namespace hostrt
