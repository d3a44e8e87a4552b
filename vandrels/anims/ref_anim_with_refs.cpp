// The record of an animatable with references: the list of items the animatable refers to, its change check and
// its count chunk.
#include "anims/ref_anim_with_refs.h"

#include "frame/module_state.h"
#include "hold.h"
#include "records/chunk_io.h"

namespace {

constexpr USHORT kHeldRefsCountChunk = 0x002A;

bool SameRefs(const Tab<ReferenceTarget*>& a, const Tab<ReferenceTarget*>& b) {
    if (a.Count() != b.Count()) return false;
    for (int i = 0; i < a.Count(); ++i)
        if (a[i] != b[i]) return false;
    return true;
}

}  // namespace

Tab<ReferenceTarget*> RefAnimWithRefs::currentRefs() {
    Tab<ReferenceTarget*> refs;
    auto* anim = dynamic_cast<ReferenceMaker*>(GetAnim());
    if (!anim) return refs;
    for (int i = 0, n = anim->NumRefs(); i < n; ++i)
        if (ReferenceTarget* target = anim->GetReference(i)) refs.Append(target);
    return refs;
}

void RefAnimWithRefs::holdRefs(const Tab<ReferenceTarget*>& refs) {
    // Releasing first keeps NumRefs right while each reference goes.
    for (int i = heldRefs_.Count() - 1; i >= refs.Count(); --i) {
        DeleteReference(HeldRefsFirstIndex() + i, FALSE);
        heldRefs_.Delete(i, 1);
    }
    const int kept = heldRefs_.Count();
    heldRefs_.SetCount(refs.Count());
    for (int i = kept; i < refs.Count(); ++i) heldRefs_[i] = nullptr;
    for (int i = 0; i < refs.Count(); ++i)
        if (heldRefs_[i] != refs[i]) ReplaceReference(HeldRefsFirstIndex() + i, refs[i], FALSE);
}

void RefAnimWithRefs::SetAnim(Animatable* anim) {
    RefAnim::SetAnim(anim);
    if (IsUnchanged(0)) {
        following_ = 1;
        holdRefs(currentRefs());
    }
}

RefResult RefAnimWithRefs::NotifyRefChanged(const Interval& changeInt, RefTargetHandle hTarget, PartID& partID,
                                            RefMessage message, BOOL propagate) {
    if (!hTarget || hTarget != GetAnim()) return REF_STOP;
    RefAnim::NotifyRefChanged(changeInt, hTarget, partID, message, propagate);
    if (message != REFMSG_CHANGE && message != REFMSG_SUBANIM_STRUCTURE_CHANGED) return REF_STOP;
    if (vandrels::GetOperationMode() != vandrels::kModeIdle || theHold.RestoreOrRedoing()) return REF_STOP;
    const Tab<ReferenceTarget*> refs = currentRefs();
    if (SameRefs(refs, heldRefs_)) return REF_STOP;
    if (!IsModified()) SetOverrideBits(kOverrideModified, true, true);
    following_ = 0;
    holdRefs(refs);
    return REF_STOP;
}

RefTargetHandle RefAnimWithRefs::GetReference(int i) {
    if (i <= 0) return RefAnim::GetReference(0);
    return i - 1 < heldRefs_.Count() ? heldRefs_[i - 1] : nullptr;
}

void RefAnimWithRefs::SetReference(int i, RefTargetHandle target) {
    if (i <= 0) {
        RefAnim::SetReference(0, target);
        return;
    }
    if (i - 1 < heldRefs_.Count()) heldRefs_[i - 1] = target;
}

BOOL RefAnimWithRefs::IsRealDependency(ReferenceTarget* target) {
    if (target && target != GetAnim() && heldRefs_.Contains(target)) return FALSE;
    return RefAnim::IsRealDependency(target);
}

void RefAnimWithRefs::BaseClone(ReferenceTarget* from, ReferenceTarget* to, RemapDir& remap) {
    RefAnim::BaseClone(from, to, remap);
    auto* src = dynamic_cast<RefAnimWithRefs*>(from);
    auto* dst = dynamic_cast<RefAnimWithRefs*>(to);
    if (!src || !dst) return;
    // The items belong to the scene: a clone holds the items' clones where the same clone made them, else the
    // items themselves.
    Tab<ReferenceTarget*> items;
    for (ReferenceTarget* item : src->heldRefs_) {
        ReferenceTarget* mapped = item ? remap.FindMapping(item) : nullptr;
        items.Append(mapped ? mapped : item);
    }
    dst->holdRefs(items);
    dst->following_ = src->following_;
}

IOResult RefAnimWithRefs::SaveHeldRefsCount(ISave* isave) {
    return chunkio::SaveValueChunk(isave, kHeldRefsCountChunk, std::int32_t(heldRefs_.Count()));
}

IOResult RefAnimWithRefs::Save(ISave* isave) {
    if (SaveWrappedBaseChunks(isave) != IO_OK) return IO_ERROR;
    return SaveHeldRefsCount(isave);
}

IOResult RefAnimWithRefs::LoadChunk(ILoad* iload) {
    if (iload->CurChunkID() != kHeldRefsCountChunk) return IO_OK;
    std::int32_t count = 0;
    const IOResult res = chunkio::ReadCount(iload, count);
    if (res != IO_OK) return res;
    // Empty slots the host fills when it restores the references.
    chunkio::SizeWithNulls(heldRefs_, count);
    return IO_OK;
}
