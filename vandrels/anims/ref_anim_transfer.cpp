#include "anims/ref_anim_transfer.h"

#include "anims/ref_anim.h"
#include "anims/ref_anim_steps.h"
#include "geom.h"
#include "hold.h"
#include "records/node_transfer.h"
#include "records/undo_bypass.h"

#include <algorithm>

namespace vandrels {

namespace {
bool transferGuard = false;
}

bool IsTransferGuardOn() { return transferGuard; }

TransferGuardScope::TransferGuardScope(bool on) : saved_(transferGuard) { transferGuard = on; }
TransferGuardScope::~TransferGuardScope() { transferGuard = saved_; }

}  // namespace vandrels

namespace {

constexpr PartID kTransferPart = 0x800037FF;

// Lets old delete itself when nothing needs it any more, after the lock taken for a transfer is gone.
void ReleaseOld(ReferenceTarget* old) {
    const AnimHandle handle = Animatable::GetHandleByAnim(old);
    old->ClearAFlag(A_LOCK_TARGET);
    if (Animatable::GetAnimByHandle(handle) == old) old->MaybeAutoDelete();
}

}  // namespace

void NotifyStructureAndChange(ReferenceTarget* target) {
    if (!target) return;
    target->NotifyDependents(FOREVER, kTransferPart, REFMSG_SUBANIM_STRUCTURE_CHANGED);
    target->NotifyDependents(FOREVER, kTransferPart, REFMSG_CHANGE);
}

void RefAnim::TransferSubAnims(Animatable* oldAnim, Animatable* newAnim) {
    const int subs = std::min(oldAnim->NumSubs(), newAnim->NumSubs());
    for (int i = 0; i < subs; ++i) {
        Animatable* oldSub = oldAnim->SubAnim(i);
        Animatable* newSub = newAnim->SubAnim(i);
        if (oldSub && newSub && oldSub != newSub && IsWorthTransferring(oldSub, newSub, oldAnim))
            TransferAnim(oldSub, newSub, oldAnim);
    }
}

void RefAnim::TransferAnim(Animatable* oldAnim, Animatable* newAnim, Animatable* parent) {
    auto* oldT = dynamic_cast<ReferenceTarget*>(oldAnim);
    auto* newT = dynamic_cast<ReferenceTarget*>(newAnim);
    if (!oldT || !newT || oldT == newT) return;
    TransferSubAnims(oldAnim, newAnim);
    if (!parent) {
        TransferAll(oldAnim, newAnim);
        return;
    }
    oldT->SetAFlag(A_LOCK_TARGET);
    TransRefEnumProc deps;
    oldT->DoEnumDependents(&deps);
    bool replaced = false;
    {
        UndoBypass bypass;
        for (ReferenceMaker* dep : deps.dependents) {
            if (dep == parent) continue;
            for (int j = 0; j < dep->NumRefs(); ++j) {
                if (dep->GetReference(j) != oldT || !dep->CanTransferReference(j)) continue;
                dep->ReplaceReference(j, newT, FALSE);
                replaced = true;
            }
        }
    }
    ReleaseOld(oldT);
    if (replaced) NotifyStructureAndChange(newT);
}

void RefAnim::TransferAll(Animatable* oldAnim, Animatable* newAnim) {
    auto* oldT = dynamic_cast<ReferenceTarget*>(oldAnim);
    auto* newT = dynamic_cast<ReferenceTarget*>(newAnim);
    if (!oldT || !newT || oldT == newT) return;
    oldT->SetAFlag(A_LOCK_TARGET);
    newT->TransferReferences(oldT);
    ReleaseOld(oldT);
    NotifyStructureAndChange(newT);
}

void RefAnim::ReplaceSubRef(ReferenceMaker* maker, Animatable* anim, int refIndex) {
    if (!maker) return;
    auto* target = dynamic_cast<ReferenceTarget*>(anim);
    maker->ReplaceReference(refIndex, target);
    NotifyStructureAndChange(target);
}

void RefAnim::CopyCustAttribs(Animatable* from, Animatable* to) {
    if (!from || !to) return;
    if (!to->GetCustAttribContainer()) to->AllocCustAttribContainer();
    ICustAttribContainer* target = to->GetCustAttribContainer();
    for (int i = target->GetNumCustAttribs() - 1; i >= 0; --i) target->RemoveCustAttrib(i);
    if (ICustAttribContainer* source = from->GetCustAttribContainer())
        for (int i = 0; i < source->GetNumCustAttribs(); ++i) target->AppendCustAttrib(source->GetCustAttrib(i));
    TransferAnim(from, to);
}

void RefAnim::OverrideLocDep(Animatable* newAnim) {
    if (!anim_ || !TestOverrideBits(kOverrideLocDep) || !newAnim || newAnim == anim_) return;
    if (anim_->ClassID() != newAnim->ClassID()) return;
    {
        vandrels::TransferGuardScope guard(true);
        TransferAll(anim_, newAnim);
    }
    lastOperation_ = kStepOverrideLocDep;
}
