#include "records/ref_base.h"

#include "anims/ref_anim.h"
#include "frame/class_desc.h"
#include "ioapi.h"
#include "plugapi.h"
#include "records/chunk_io.h"
#include "resource.h"

namespace {

constexpr USHORT kFormatChunk = 0x0000;
constexpr USHORT kRefAnimCountChunk = 0x0022;
// The format version every record writes first: the single-precision value 10701.0.
constexpr std::uint32_t kFormatVersion = 0x46273400;

}  // namespace

RefBase::~RefBase() {
    // The target outlives the record: take the record off its property list. Animatable records that stay
    // alive (held by an undo step) no longer have an owner.
    if (target_) target_->RemoveAProp(this);
    for (RefAnim* record : refAnims_)
        if (record && record->GetOwner() == this) record->SetOwner(nullptr);
}

RefBase* FindRecordOf(Animatable* item) {
    return item ? static_cast<RefBase*>(item->GetAProp(REFBASE_PROPERTY_ID)) : nullptr;
}

// ------------------------------------------------------------------------------------------ references

RefTargetHandle RefBase::GetReference(int i) {
    if (i == 0) return target_;
    if (i >= 1 && i <= refAnims_.Count()) return refAnims_[i - 1];
    return nullptr;
}

void RefBase::SetReference(int i, RefTargetHandle target) {
    if (i == 0) {
        bindTarget(target);
        return;
    }
    if (i < 1 || i > refAnims_.Count()) return;
    // Only animatable records belong in these slots; anything else leaves the entry empty.
    auto* record = dynamic_cast<RefAnim*>(target);
    RefAnim* old = refAnims_[i - 1];
    if (old && old != record && old->GetOwner() == this) old->SetOwner(nullptr);
    refAnims_[i - 1] = record;
    if (record) record->SetOwner(this);
}

void RefBase::bindTarget(ReferenceTarget* target) {
    if (target_ == target) return;
    if (target_) target_->RemoveAProp(this);
    target_ = target;
    if (target_ && target_->aprops.IndexOf(this) < 0) target_->AddAProp(this);
}

void RefBase::AppendRefAnim(RefAnim* record) {
    refAnims_.Append(nullptr);
    ReplaceReference(refAnims_.Count(), record);
}

bool RefBase::HasOverrides() const {
    for (RefAnim* record : refAnims_)
        if (record && record->HasOverride()) return true;
    return false;
}

RefResult RefBase::NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage, BOOL) { return REF_STOP; }

// ------------------------------------------------------------------------------------------ cloning

RefTargetHandle RefBase::Clone(RemapDir& remap) {
    auto* made = static_cast<Animatable*>(CreateInstance(SuperClassID(), ClassID()));
    auto* clone = dynamic_cast<RefBase*>(made);
    if (!clone) {
        if (made) made->DeleteThis();
        return nullptr;
    }
    BaseClone(this, clone, remap);
    return clone;
}

void RefBase::BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) {
    ReferenceTarget::BaseClone(from, to, remap);
    auto* src = dynamic_cast<RefBase*>(from);
    auto* dst = dynamic_cast<RefBase*>(to);
    if (!src || !dst) return;
    // The clone starts unbound; it keeps the positions of the list, filled only where a record carries overrides.
    const int first = dst->refAnims_.Count();
    dst->refAnims_.SetCount(first + src->refAnims_.Count());
    for (int i = 0; i < src->refAnims_.Count(); ++i) {
        RefAnim* record = src->refAnims_[i];
        if (record && record->HasOverride()) dst->ReplaceReference(1 + first + i, remap.CloneRef(record));
    }
}

// ------------------------------------------------------------------------------------------ save and load

IOResult RefBase::SaveFormatChunk(ISave* isave) { return chunkio::SaveValueChunk(isave, kFormatChunk, kFormatVersion); }

IOResult RefBase::SaveRefAnimCountChunk(ISave* isave) {
    return chunkio::SaveValueChunk(isave, kRefAnimCountChunk, std::int32_t(refAnims_.Count()));
}

IOResult RefBase::Save(ISave* isave) {
    if (SaveFormatChunk(isave) != IO_OK) return IO_ERROR;
    return SaveRefAnimCountChunk(isave);
}

IOResult RefBase::Load(ILoad* iload) {
    IOResult res;
    while ((res = iload->OpenChunk()) == IO_OK) {
        res = LoadChunk(iload);
        iload->CloseChunk();
        if (res != IO_OK) return res;
    }
    return res == IO_END ? IO_OK : res;
}

IOResult RefBase::LoadChunk(ILoad* iload) {
    switch (iload->CurChunkID()) {
    case kFormatChunk: {
        std::uint32_t version = 0;
        return chunkio::ReadValue(iload, version);
    }
    case kRefAnimCountChunk: {
        std::int32_t count = 0;
        const IOResult res = chunkio::ReadValue(iload, count);
        if (res != IO_OK) return res;
        if (!chunkio::IsPlausibleCount(count)) return IO_ERROR;
        refAnims_.ZeroCount();
        refAnims_.SetCount(count);
        return IO_OK;
    }
    default: return IO_OK;
    }
}

// ------------------------------------------------------------------------------------------ descriptors

ClassDesc2* GetRefBaseDesc() {
    static SimpleClassDesc<RefBase> desc(IDS_CLASS_REFBASE, L"RefBase", REFBASE_SUPER_CLASS_ID, REFBASE_CLASS_ID);
    return &desc;
}

ClassDesc2* GetRefNodeDesc() {
    static SimpleClassDesc<RefNode> desc(IDS_CLASS_REFNODE, L"RefNode", REFBASE_SUPER_CLASS_ID, REFNODE_CLASS_ID);
    return &desc;
}

ClassDesc2* GetRefMaterialDesc() {
    static SimpleClassDesc<RefMaterial> desc(IDS_CLASS_REFMATERIAL, L"RefMaterial", REFBASE_SUPER_CLASS_ID,
                                             REFMATERIAL_CLASS_ID);
    return &desc;
}
