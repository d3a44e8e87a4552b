// The host's custom-attribute container: a reference target whose references and sub-anims are the
// attributes of its owner. Changing the list makes the owner tell its dependents that its structure changed.
#include "class_directory.h"
#include "io/count_chunk.h"
#include "hold.h"
#include "ioapi.h"

namespace hostrt {
namespace {

class CustAttribContainer : public ICustAttribContainer {
public:
    Class_ID ClassID() override { return CUSTATTRIB_CONTAINER_CLASS_ID; }
    SClass_ID SuperClassID() override { return REF_MAKER_CLASS_ID; }
    void GetClassName(MSTR& s, bool) const override { s = L"CustAttribContainer"; }

    int GetNumCustAttribs() override { return attribs_.Count(); }
    CustAttrib* GetCustAttrib(int i) override { return i >= 0 && i < attribs_.Count() ? attribs_[i] : nullptr; }
    void AppendCustAttrib(CustAttrib* a) override { InsertCustAttrib(attribs_.Count(), a); }
    void InsertCustAttrib(int i, CustAttrib* a) override {
        if (!a || i < 0 || i > attribs_.Count()) return;
        CustAttrib* none = nullptr;
        attribs_.Insert(i, 1, &none);
        // Later slots moved up one: their bookkeeping is per target, so only the new slot needs setting.
        ReplaceReference(i, a);
        structureChanged();
    }
    void RemoveCustAttrib(int i) override {
        if (i < 0 || i >= attribs_.Count()) return;
        DeleteReference(i);
        attribs_.Delete(i, 1);
        structureChanged();
    }
    Animatable* GetOwner() override { return owner_; }
    void SetOwner(Animatable* owner) override { owner_ = owner; }

    int NumRefs() override { return attribs_.Count(); }
    RefTargetHandle GetReference(int i) override { return GetCustAttrib(i); }
    void SetReference(int i, RefTargetHandle t) override {
        if (i < 0 || i >= attribs_.Count()) return;
        // Only custom attributes belong here; anything else (a damaged file) leaves the slot empty.
        attribs_[i] = t && t->SuperClassID() == CUST_ATTRIB_CLASS_ID ? static_cast<CustAttrib*>(t) : nullptr;
    }
    int NumSubs() override { return attribs_.Count(); }
    Animatable* SubAnim(int i) override { return GetCustAttrib(i); }
    MSTR SubAnimName(int i, bool localized) override {
        CustAttrib* a = GetCustAttrib(i);
        return a ? MSTR(a->GetName(localized)) : MSTR();
    }

    // Only the count is saved: the attributes are references, restored after load.
    IOResult Save(ISave* isave) override { return SaveCountChunk(isave, kCountChunk, ULONG(attribs_.Count())); }
    IOResult Load(ILoad* iload) override {
        IOResult res;
        while ((res = iload->OpenChunk()) == IO_OK) {
            if (iload->CurChunkID() == kCountChunk) {
                ULONG n = 0;
                if (ReadCount(iload, 1u << 20, n) != IO_OK) return IO_ERROR;
                attribs_.SetCount(int(n));
            }
            iload->CloseChunk();
        }
        return res == IO_END ? IO_OK : res;
    }
    RefTargetHandle Clone(RemapDir& remap) override {
        auto* c = new CustAttribContainer();
        for (CustAttrib* a : attribs_)
            if (a) c->AppendCustAttrib(static_cast<CustAttrib*>(remap.CloneRef(a)));
        BaseClone(this, c, remap);
        return c;
    }

private:
    void structureChanged() {
        if (owner_ && owner_->IsRefTarget())
            static_cast<ReferenceTarget*>(owner_)->NotifyDependents(FOREVER, PART_ALL, REFMSG_SUBANIM_STRUCTURE_CHANGED);
    }
    static constexpr USHORT kCountChunk = 0x0001;
    Tab<CustAttrib*> attribs_;
    Animatable* owner_ = nullptr;
};

class CustAttribContainerClassDesc : public ClassDesc2 {
public:
    int IsPublic() override { return FALSE; }
    void* Create(BOOL) override { return new CustAttribContainer(); }
    const MCHAR* ClassName() override { return L"CustAttribContainer"; }
    SClass_ID SuperClassID() override { return REF_MAKER_CLASS_ID; }
    Class_ID ClassID() override { return CUSTATTRIB_CONTAINER_CLASS_ID; }
    const MCHAR* Category() override { return L""; }
};

}  // namespace

void RegisterCustAttribContainerClass() {
    static CustAttribContainerClassDesc desc;
    ClassDirectory::Instance().Register(&desc);
}

}  // namespace hostrt

void Animatable::AllocCustAttribContainer() {
    if (cc) return;
    hostrt::RegisterCustAttribContainerClass();
    SetCustAttribContainer(static_cast<ICustAttribContainer*>(
        hostrt::ClassDirectory::Instance().Create(REF_MAKER_CLASS_ID, CUSTATTRIB_CONTAINER_CLASS_ID, false)));
}
