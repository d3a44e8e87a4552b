// Two small classes the demonstration builds its scene from: a crate with a parameter block, and a shelf
// that references crates.
#pragma once

#include "max.h"

namespace maxhost::demo {

// Registers the demonstration classes in the class directory (once).
void RegisterDemoClasses();

class Crate : public ReferenceTarget {
public:
    static constexpr Class_ID kClassID{0x3D7E0A01, 0x00000001};
    enum { kWidth = 0, kHeight = 1, kLabel = 2 };
    explicit Crate(BOOL loading);
    Class_ID ClassID() override { return kClassID; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void GetClassName(MSTR& s, bool) const override { s = L"Crate"; }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? pblock : nullptr; }
    void SetReference(int i, RefTargetHandle t) override { if (i == 0) pblock = static_cast<IParamBlock2*>(t); }
    int NumSubs() override { return 1; }
    Animatable* SubAnim(int i) override { return i == 0 ? pblock : nullptr; }
    MSTR SubAnimName(int, bool) override { return MSTR(L"Parameters"); }
    RefTargetHandle Clone(RemapDir& remap) override;

    IParamBlock2* pblock = nullptr;
};

// Holds any number of crates; prints every change it hears from them.
class Shelf : public ReferenceTarget {
public:
    static constexpr Class_ID kClassID{0x3D7E0A02, 0x00000001};
    Class_ID ClassID() override { return kClassID; }
    SClass_ID SuperClassID() override { return REF_TARGET_CLASS_ID; }
    void GetClassName(MSTR& s, bool) const override { s = L"Shelf"; }
    int NumRefs() override { return crates.Count(); }
    RefTargetHandle GetReference(int i) override { return i >= 0 && i < crates.Count() ? crates[i] : nullptr; }
    void SetReference(int i, RefTargetHandle t) override { if (i >= 0 && i < crates.Count()) crates[i] = t; }
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle from, PartID&, RefMessage msg, BOOL) override;
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    // Adds a crate as a new last reference.
    void Add(ReferenceTarget* crate);

    Tab<ReferenceTarget*> crates;
    bool verbose = false;
};

}  // namespace maxhost::demo
