// BlockObject: a host object or modifier whose parameters are one parameter block 2 (block id 0, reference 0),
// made through its class descriptor, with controllers on its animatable parameters.
#pragma once

#include "scene/objects/host_class_desc.h"

#include "hold.h"
#include "ioapi.h"
#include "iparamb2.h"
#include "object.h"

namespace hostrt {

// Gives every animatable float and colour parameter of pb its own new controller. Not recorded for undo.
void GiveParamsControllers(IParamBlock2* pb);

template <class Base> class BlockObject : public Base {
public:
    BlockObject(ClassDesc2* cd, bool loading) : desc_(cd) {
        if (loading || !cd || cd->NumParamBlockDescs() == 0) return;
        theHold.Suspend();  // a new object has nothing to take back
        cd->MakeAutoParamBlocks(this);
        GiveParamsControllers(pblock_);
        theHold.Resume();
    }

    Class_ID ClassID() override { return desc_->ClassID(); }
    void GetClassName(MSTR& s, bool localized = true) const override { s = desc_->ClassName(); }
    ClassDesc2* Desc() const { return desc_; }
    IParamBlock2* Block() const { return pblock_; }

    int NumSubs() override { return 1; }
    Animatable* SubAnim(int i) override { return i == 0 ? pblock_ : nullptr; }
    MSTR SubAnimName(int i, bool localized = true) override { return i == 0 ? MSTR(L"Parameters") : MSTR(); }
    int SubNumToRefNum(int subNum) override { return subNum == 0 ? 0 : -1; }
    int NumParamBlocks() override { return pblock_ ? 1 : 0; }
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? pblock_ : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return id == 0 ? pblock_ : nullptr; }

    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? pblock_ : nullptr; }
    void SetReference(int i, RefTargetHandle rtarg) override {
        if (i == 0) pblock_ = dynamic_cast<IParamBlock2*>(rtarg);
    }

    RefTargetHandle Clone(RemapDir& remap) override {
        auto* c = dynamic_cast<BlockObject*>(static_cast<Animatable*>(desc_->Create(TRUE)));
        c->ReplaceReference(0, remap.CloneRef(pblock_));
        CloneExtras(c, remap);
        this->BaseClone(this, c, remap);
        return c;
    }

protected:
    // What a subclass adds to a clone besides the block.
    virtual void CloneExtras(BlockObject* clone, RemapDir& remap) {}

    ClassDesc2* desc_;
    IParamBlock2* pblock_ = nullptr;
};

// A modifier with a block: saves and loads its name and toggles, and copies them into clones.
template <class Base> class BlockModifier : public BlockObject<Base> {
public:
    using BlockObject<Base>::BlockObject;
    IOResult Save(ISave* isave) override { return this->SaveModifier(isave); }
    IOResult Load(ILoad* iload) override {
        IOResult res;
        while ((res = iload->OpenChunk()) == IO_OK) {
            IOResult chunk = IO_OK;
            this->LoadModifierChunk(iload, chunk);
            iload->CloseChunk();
            if (chunk != IO_OK) return IO_ERROR;
        }
        return res == IO_END ? IO_OK : res;
    }

protected:
    void CloneExtras(BlockObject<Base>* clone, RemapDir&) override {
        this->CopyModifierState(static_cast<BlockModifier*>(clone));
    }
};

// The class descriptor of a block object class T, made through T(descriptor, loading).
template <class T> class BlockClassDesc : public NamedClassDesc {
public:
    BlockClassDesc(const MCHAR* name, SClass_ID superClass, Class_ID classId, const MCHAR* category)
        : NamedClassDesc(name, superClass, classId, category) {}
    void* Create(BOOL loading) override { return static_cast<Animatable*>(new T(this, loading != FALSE)); }
};

}  // namespace hostrt
