// FollowRemap: makes a clone's reference follow the clone operation. The clone first references the original
// target; when the operation ends, the reference moves to the target's clone if the target was cloned too.
#pragma once

#include "ref.h"

namespace hostrt {

class FollowRemapProc : public PostPatchProc {
public:
    FollowRemapProc(ReferenceMaker* clone, int ref, ReferenceTarget* original)
        : clone_(clone), handle_(Animatable::GetHandleByAnim(clone)), ref_(ref), original_(original) {}
    int Proc(RemapDir& remap) override {
        if (Animatable::GetAnimByHandle(handle_) != clone_ || clone_->GetReference(ref_) != original_) return TRUE;
        if (RefTargetHandle mapped = remap.FindMapping(original_)) clone_->ReplaceReference(ref_, mapped);
        return TRUE;
    }

private:
    ReferenceMaker* clone_;
    AnimHandle handle_;
    int ref_;
    ReferenceTarget* original_;
};

// Sets reference ref of clone to original now and to original's clone when the operation ends (if any).
inline void FollowRemap(RemapDir& remap, ReferenceMaker* clone, int ref, ReferenceTarget* original) {
    if (!original) return;
    clone->ReplaceReference(ref, original);
    remap.AddPostPatchProc(new FollowRemapProc(clone, ref, original), true);
}

}  // namespace hostrt
