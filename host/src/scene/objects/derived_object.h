// The host's derived objects (superclass 2): object-space and world-space modifier stacks with their contexts.
// Reference 0 is the object below, references 1.. the modifiers (modifier 0, the top of the stack, is reference 1).
#pragma once

#include "object.h"
#include "plugapi.h"
#include "scene/objects/ref_list.h"

namespace hostrt {

class DerivedObject : public IDerivedObject {
public:
    explicit DerivedObject(bool loading = false, bool worldSpace = false);
    Class_ID ClassID() override;
    void GetClassName(MSTR& s, bool localized = true) const override;
    MSTR GetObjectName(bool localized = true) override;

    bool IsWorldSpace() override { return worldSpace_; }
    int NumModifiers() override { return mods_.Count(); }
    Modifier* GetModifier(int index) override;
    ModContext* GetModContext(int index) override;
    // Structural changes send 249, then 80 with part 0x800037FF, to the dependents; undoable while holding.
    void AddModifier(Modifier* mod, ModContext* mc = nullptr, int before = 0) override;
    void DeleteModifier(int index = 0) override;
    void SetModifier(int index, Modifier* mod) override;
    Object* GetObjRef() override { return obj_; }
    RefResult ReferenceObject(Object* obj) override;
    Interval ObjectValidity(TimeValue t) override;

    // Sub-anims: the modifiers from the top (named by their names), then the object below ("Object").
    int NumSubs() override { return NumModifiers() + 1; }
    Animatable* SubAnim(int i) override;
    MSTR SubAnimName(int i, bool localized = true) override;
    int SubNumToRefNum(int subNum) override;

    int NumRefs() override { return 1 + mods_.Count(); }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle rtarg) override;
    // Only the object below moves with a reference transfer; the stack keeps its modifiers.
    BOOL CanTransferReference(int i) override { return i == 0; }
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    void structureChanged();

    bool worldSpace_;
    Object* obj_ = nullptr;
    RefList<ModContext> mods_;
};

// The class descriptors of both kinds, for registration.
ClassDesc2* DerivedObjectDesc();
ClassDesc2* WSDerivedObjectDesc();

}  // namespace hostrt
