// The host's derived objects: the modifier stack with its contexts, its messages, undo, chunks and cloning.
#include "scene/objects/derived_object.h"
#include "io/count_chunk.h"

#include "ioapi.h"
#include "istdplug.h"

#include <algorithm>

namespace hostrt {

namespace {

constexpr USHORT kCountChunk = 0x2500;
constexpr USHORT kContextChunk = 0x2510;
constexpr BYTE kHasTm = 0x1, kHasBox = 0x2;
constexpr ULONG kMaxModifiers = 1u << 16;

class DerivedObjectClassDesc : public ClassDesc2 {
public:
    explicit DerivedObjectClassDesc(bool worldSpace) : ws_(worldSpace) {}
    int IsPublic() override { return FALSE; }
    void* Create(BOOL loading) override { return static_cast<Animatable*>(new DerivedObject(loading != FALSE, ws_)); }
    const MCHAR* ClassName() override { return ws_ ? L"WSM Derived Object" : L"Derived Object"; }
    SClass_ID SuperClassID() override { return GEN_DERIVOB_CLASS_ID; }
    Class_ID ClassID() override { return ws_ ? HOST_WS_DERIVED_OBJECT_CLASS_ID : HOST_DERIVED_OBJECT_CLASS_ID; }
    const MCHAR* Category() override { return L""; }

private:
    bool ws_;
};

}  // namespace

ClassDesc2* DerivedObjectDesc() {
    static DerivedObjectClassDesc desc(false);
    return &desc;
}

ClassDesc2* WSDerivedObjectDesc() {
    static DerivedObjectClassDesc desc(true);
    return &desc;
}

DerivedObject::DerivedObject(bool, bool worldSpace)
    : worldSpace_(worldSpace), mods_(this, 1, [this] { structureChanged(); }) {}

Class_ID DerivedObject::ClassID() {
    return worldSpace_ ? HOST_WS_DERIVED_OBJECT_CLASS_ID : HOST_DERIVED_OBJECT_CLASS_ID;
}

void DerivedObject::GetClassName(MSTR& s, bool) const { s = worldSpace_ ? L"WSM Derived Object" : L"Derived Object"; }

MSTR DerivedObject::GetObjectName(bool localized) {
    Object* base = FindBaseObject();
    return base ? base->GetObjectName(localized) : ClassName();
}

void DerivedObject::structureChanged() {
    NotifyDependents(FOREVER, PART_ALL, REFMSG_MODIFIER_STACK_CHANGED);
    NotifyDependents(FOREVER, PART_OBJECT_CHAIN, REFMSG_CHANGE);
}

Modifier* DerivedObject::GetModifier(int index) { return dynamic_cast<Modifier*>(mods_.Target(index)); }

ModContext* DerivedObject::GetModContext(int index) {
    return mods_.InRange(index) ? &mods_.ExtraAt(index) : nullptr;
}

void DerivedObject::AddModifier(Modifier* mod, ModContext* mc, int before) {
    if (!mod) return;
    mods_.Insert(std::clamp(before, 0, NumModifiers()), mod, mc ? *mc : ModContext());
    structureChanged();
}

void DerivedObject::DeleteModifier(int index) {
    if (!mods_.InRange(index)) return;
    mods_.Remove(index);
    structureChanged();
}

void DerivedObject::SetModifier(int index, Modifier* mod) {
    if (!mods_.InRange(index) || !mod || GetModifier(index) == mod) return;
    mods_.Replace(index, mod);
    structureChanged();
}

RefResult DerivedObject::ReferenceObject(Object* obj) {
    if (obj == obj_) return REF_SUCCEED;
    const RefResult r = ReplaceReference(0, obj);
    structureChanged();
    return r;
}

Interval DerivedObject::ObjectValidity(TimeValue t) { return obj_ ? obj_->ObjectValidity(t) : FOREVER; }

Animatable* DerivedObject::SubAnim(int i) {
    if (mods_.InRange(i)) return GetModifier(i);
    return i == NumModifiers() ? obj_ : nullptr;
}

MSTR DerivedObject::SubAnimName(int i, bool localized) {
    if (mods_.InRange(i)) return GetModifier(i) ? GetModifier(i)->GetName(localized) : MSTR();
    return i == NumModifiers() ? MSTR(L"Object") : MSTR();
}

int DerivedObject::SubNumToRefNum(int subNum) {
    if (mods_.InRange(subNum)) return subNum + 1;
    return subNum == NumModifiers() ? 0 : -1;
}

RefTargetHandle DerivedObject::GetReference(int i) { return i == 0 ? obj_ : mods_.GetRef(i); }

void DerivedObject::SetReference(int i, RefTargetHandle rtarg) {
    if (i == 0)
        obj_ = dynamic_cast<Object*>(rtarg);
    else
        mods_.SetRef(i, rtarg);
}

IOResult DerivedObject::Save(ISave* isave) {
    ULONG written = 0;
    IOResult r = SaveCountChunk(isave, kCountChunk, ULONG(NumModifiers()));
    for (int i = 0; i < NumModifiers() && r == IO_OK; ++i) {
        const ModContext& mc = mods_.ExtraAt(i);
        const BYTE flags = BYTE((mc.tm ? kHasTm : 0) | (mc.box ? kHasBox : 0));
        const Matrix3 tm = mc.tm ? *mc.tm : Matrix3();
        const Box3 box = mc.box ? *mc.box : Box3();
        isave->BeginChunk(kContextChunk);
        r = isave->Write(&flags, 1, &written);
        if (r == IO_OK) r = isave->Write(&tm, sizeof tm, &written);
        if (r == IO_OK) r = isave->Write(&box, sizeof box, &written);
        isave->EndChunk();
    }
    return r;
}

IOResult DerivedObject::Load(ILoad* iload) {
    IOResult res;
    int contexts = 0;
    while ((res = iload->OpenChunk()) == IO_OK) {
        ULONG got = 0;
        bool ok = true;
        switch (iload->CurChunkID()) {
        case kCountChunk: {
            ULONG n = 0;
            ok = ReadCount(iload, kMaxModifiers, n) == IO_OK;
            if (ok) mods_.ResizeForLoad(int(n));
            break;
        }
        case kContextChunk: {
            BYTE flags = 0;
            Matrix3 tm;
            Box3 box;
            ok = contexts < NumModifiers() && iload->Read(&flags, 1, &got) == IO_OK && got == 1 &&
                 iload->Read(&tm, sizeof tm, &got) == IO_OK && got == sizeof tm &&
                 iload->Read(&box, sizeof box, &got) == IO_OK && got == sizeof box;
            if (ok)
                mods_.ExtraAt(contexts++) = ModContext(flags & kHasTm ? &tm : nullptr, flags & kHasBox ? &box : nullptr);
            break;
        }
        default:
            break;
        }
        iload->CloseChunk();
        if (!ok) return IO_ERROR;
    }
    return res == IO_END ? IO_OK : res;
}

RefTargetHandle DerivedObject::Clone(RemapDir& remap) {
    auto* c = new DerivedObject(true, worldSpace_);
    c->ReplaceReference(0, remap.CloneRef(obj_));
    for (int i = 0; i < NumModifiers(); ++i)
        c->mods_.Insert(i, remap.CloneRef(GetModifier(i)), mods_.ExtraAt(i));
    BaseClone(this, c, remap);
    return c;
}

}  // namespace hostrt

IDerivedObject* CreateDerivedObject(Object* obj) {
    auto* d = new hostrt::DerivedObject(false, false);
    if (obj) d->ReplaceReference(0, obj);
    return d;
}

IDerivedObject* CreateWSDerivedObject(Object* obj) {
    auto* d = new hostrt::DerivedObject(false, true);
    if (obj) d->ReplaceReference(0, obj);
    return d;
}
