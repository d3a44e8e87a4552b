// The change monitor of the animatable records: a change of the held animatable while the scene is idle
// makes a clean record Modified (undoably); the override bits and the transfer rule of reference 0.
#include "anims/path_by_number_restore.h"
#include "anims/ref_anim.h"
#include "anims/ref_anim_transfer.h"
#include "frame/module_state.h"
#include "hold.h"
#include "records/ref_base.h"

namespace {

// The host's part of a whole-object change, and the parts that only touch display and selection.
constexpr PartID kAllParts = 0x80003FFF;
constexpr PartID kDisplayParts = 0x70;

}  // namespace

std::uint8_t RefAnim::SetOverrideBits(std::uint8_t bits, bool on, bool hold) {
    const std::uint8_t previous = overrideState_;
    if (hold && theHold.Holding()) theHold.Put(new OverrideBitsRestore(this, bits, previous));
    if (on) {
        overrideState_ |= bits;
        return overrideState_;
    }
    overrideState_ &= std::uint8_t(~bits);
    return previous;
}

bool RefAnim::IsIgnoredPart(PartID partID) {
    if (partID != 0 && (partID == kAllParts || (partID & ~kDisplayParts) == 0)) return true;
    return vandrels::IsMonitorSuspended();
}

void RefAnim::MarkModified() {
    if (!IsModified()) SetOverrideBits(kOverrideModified, true, true);
    // The record takes over its path: the owner's other records at it or below it go.
    if (owner_) owner_->DropRecordsUnderPath(path_, pathByNumber_, this);
}

void RefAnim::MarkSharersModified() {
    if (!anim_) return;
    DependentIterator it(anim_);
    while (ReferenceMaker* dep = it.Next()) {
        if (dep->SuperClassID() != REFANIM_SUPER_CLASS_ID) continue;
        auto* other = static_cast<RefAnim*>(dep);
        if (other->GetAnim() == anim_ && !other->IsModified()) other->SetOverrideBits(kOverrideModified, true, true);
    }
}

RefResult RefAnim::NotifyRefChanged(const Interval&, RefTargetHandle hTarget, PartID& partID, RefMessage message,
                                    BOOL) {
    if (hTarget && hTarget == anim_ && message == REFMSG_CHANGE &&
        !TestOverrideBits(kOverrideModified | kOverrideReplaced) &&
        vandrels::GetOperationMode() == vandrels::kModeIdle && !theHold.RestoreOrRedoing() && !IsIgnoredPart(partID))
        SetOverrideBits(kOverrideModified, true, true);
    return REF_STOP;
}

BOOL RefAnim::CanTransferReference(int i) {
    if (i != 0) return TRUE;
    if (vandrels::GetOperationMode() != vandrels::kModeLoading) return FALSE;
    if (!vandrels::IsTransferGuardOn()) return TRUE;
    return IsModified() ? FALSE : TRUE;
}
