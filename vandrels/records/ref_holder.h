// RefHolder: a plain object that keeps an array of references, so that what it holds stays alive and is saved
// with the scene (the saving pipeline parks content on a holder node). Scripts resize it through the
// "RefHolder" interface.
#pragma once

#include "frame/class_ids.h"
#include "ifnpub.h"
#include "object.h"

#define REFHOLDER_INTERFACE_ID Interface_ID(0x8663DFA5, 0x3F273890)

// The holder's function-publishing mixin.
class RefHolderInterface : public FPMixinInterface {
public:
    enum : FunctionID { kSetNumRefs = 0 };

    virtual void SetNumRefs(int count) = 0;

    FPInterfaceDesc* GetDesc() override;

protected:
    FPStatus _dispatch_fn(FunctionID fid, TimeValue t, FPValue& result, FPParams* params) override;
};

class RefHolder : public GeomObject, public RefHolderInterface {
public:
    Class_ID ClassID() override { return REFHOLDER_CLASS_ID; }
    void GetClassName(MSTR& s, bool /*localized*/ = true) const override { s = L"RefHolder"; }

    // Resizes the array; new entries are empty, entries beyond count are released first.
    void SetNumRefs(int count) override;

    int NumRefs() override { return refs_.Count(); }
    RefTargetHandle GetReference(int i) override { return i >= 0 && i < refs_.Count() ? refs_[i] : nullptr; }
    void SetReference(int i, RefTargetHandle target) override {
        if (i >= 0 && i < refs_.Count()) refs_[i] = target;
    }

    BaseInterface* GetInterface(Interface_ID id) override;
    using GeomObject::GetInterface;

    // A holder of the same size whose references are the clones of the originals.
    RefTargetHandle Clone(RemapDir& remap) override;
    // Chunk 0x0000: the number of references (int32).
    IOResult Save(ISave* isave) override;
    IOResult Load(ILoad* iload) override;

private:
    Tab<ReferenceTarget*> refs_;
};
