// Collect and override of the base animatable record: refreshing the LocDep bit, and after a fresh merge
// either following the merged animatable or putting the record's own animatable back at its path.
#include "anims/classifier.h"
#include "anims/record_codes.h"
#include "anims/ref_anim.h"
#include "anims/ref_anim_steps.h"
#include "anims/ref_anim_transfer.h"
#include "control.h"
#include "inode.h"
#include "iparamb.h"
#include "iparamb2.h"

namespace {

constexpr ULONG kControlInterface = 0x1010;
constexpr SClass_ID kFloatControl = 0x9003;
constexpr SClass_ID kPoint3Control = 0x9005;
constexpr SClass_ID kMatrixControl = 0x9008;
constexpr SClass_ID kPoint4Control = 0x9012;
constexpr SClass_ID kMaterial = 0x0C00;
constexpr SClass_ID kTexmap = 0x0C10;
constexpr DWORD kOptionParamFlags = 0x8010;
// A controller that the default branch replaces even when it does not split.
const Class_ID kExemptController(0x0E6F5815, 0x717F99A4);

// What an override branch did.
constexpr int kStop = 0;
constexpr int kApplied = 1;
constexpr int kNotApplied = 2;

bool IsFloatType(int type) {
    switch (type) {
    case 0: case 1: case 4: case 5: case 6: case 7: case 11: case 12: case 13: case 19: return true;
    default: return false;
    }
}

SClass_ID SuperClassOf(Animatable* anim) { return anim ? anim->SuperClassID() : 0; }

}  // namespace

void RefAnim::Collect(Animatable*) {
    if (anim_ && !TestOverrideBits(kOverrideModified | kOverrideReplaced))
        SetOverrideBits(kOverrideLocDep, IsLocDep(anim_), false);
}

bool RefAnim::blockedByOption(Animatable* found) {
    if (!found || option_) return false;
    auto* control = static_cast<Control*>(found->GetInterface(kControlInterface));
    return control && !control->IsReplaceable();
}

bool RefAnim::CanReplace(Animatable* found, Animatable* parent) {
    if (!anim_ || !found || !found->GetInterface(kControlInterface)) return false;
    if (anim_->SuperClassID() != found->SuperClassID()) return false;
    return ClassID() == REFANIM_CLASS_ID && ClassifyAnim(found, parent) == kCodePlain;
}

void RefAnim::Override(Animatable* root) {
    const bool replaced = TestOverrideBits(kOverrideReplaced) != 0;
    const bool modified = TestOverrideBits(kOverrideModified) != 0;
    Animatable* found = nullptr;
    Animatable* parent = nullptr;
    int subIndex = -1;
    int hint = -1;
    Tab<int> resolved;
    if (!GetAnimByPath(root, found, parent, subIndex, hint, resolved)) return;
    if (found == anim_) {
        pathByNumber_ = resolved;
        return;
    }
    if (!replaced && !modified) {
        SetAnim(found);
        pathByNumber_ = resolved;
        lastOperation_ = kStepDefaultOverride;
        return;
    }
    bool applied = false;
    {
        vandrels::TransferGuardScope guard(false);
        if (!parent) return;
        const SClass_ID parentClass = parent->SuperClassID();
        int outcome;
        if (parentClass == PARAMETER_BLOCK_CLASS_ID)
            outcome = overrideInBlock(parent, found, subIndex, replaced);
        else if (parentClass == PARAMETER_BLOCK2_CLASS_ID)
            outcome = overrideInBlock2(parent, found, subIndex, hint, replaced);
        else
            outcome = overrideInParent(parent, found, subIndex, replaced);
        if (outcome == kStop) return;
        applied = outcome == kApplied;
    }
    if (!applied && CanReplace(found, parent))
        static_cast<ReferenceTarget*>(anim_)->TransferReferences(static_cast<ReferenceTarget*>(found));
    pathByNumber_ = resolved;
    lastOperation_ = kStepDefaultOverride;
}

int RefAnim::overrideInBlock(Animatable* parent, Animatable* found, int subIndex, bool replaced) {
    lastOperation_ = kStepBlockPreOverride;
    auto* pb = dynamic_cast<IParamBlock*>(parent);
    const int index = subIndex - 1;
    if (!pb || index < 0 || index >= pb->NumParams()) return kStop;
    if (blockedByOption(found)) return kStop;
    const int type = pb->GetParameterType(index);
    if (!anim_) {
        if (pb->GetController(index)) pb->RemoveController(index);
        return kApplied;
    }
    const SClass_ID held = anim_->SuperClassID();
    const bool fits = ((type == 0 || type == 1 || type == 4) && held == kFloatControl) ||
                      ((type == 2 || type == 3) && held == kPoint3Control);
    if (replaced) {
        if (!fits) return kNotApplied;
        pb->SetController(index, static_cast<Control*>(anim_));
        return kApplied;
    }
    if (!found && held == kFloatControl && (type == 0 || type == 1 || type == 4)) {
        pb->SetController(index, static_cast<Control*>(anim_));
        return kApplied;
    }
    return kNotApplied;
}

int RefAnim::overrideInBlock2(Animatable* parent, Animatable* found, int subIndex, int hint, bool replaced) {
    lastOperation_ = kStepBlock2PreOverride;
    auto* pb = dynamic_cast<IParamBlock2*>(parent);
    if (!pb) return kStop;
    int paramIndex = hint;
    int tabIndex = subIndex;
    if (hint == -1) {
        paramIndex = subIndex - 1;
        tabIndex = 0;
    }
    if (paramIndex < 0 || paramIndex >= pb->NumParams()) return kStop;
    const ParamID id = pb->IndextoID(paramIndex);
    const ParamDef& def = pb->GetParamDef(id);
    if (!(def.flags & P_ANIMATABLE) && !hostrt::IsReferenceType(def.type)) return kStop;
    if (def.IsTable() && tabIndex >= pb->Count(id)) return kStop;
    if ((def.flags & kOptionParamFlags) && !option_) return kStop;
    if (blockedByOption(found)) return kStop;
    const int type = int(def.type) & ~int(TYPE_TAB);
    const SClass_ID held = SuperClassOf(anim_);
    if (replaced) {
        SClass_ID needed = 0;
        if (IsFloatType(type)) needed = kFloatControl;
        else if (type == 2 || type == 3) needed = kPoint3Control;
        else if (type == 20) needed = kMatrixControl;
        else if (type == 22 || type == 23) needed = kPoint4Control;
        if (needed) {
            if (held != needed) return kStop;
            pb->SetController(id, tabIndex, static_cast<Control*>(anim_));
            return kApplied;
        }
        if (type == 14) needed = kMaterial;
        else if (type == 15) needed = kTexmap;
        else if (type == 17) needed = BASENODE_CLASS_ID;
        else return kStop;
        if (anim_ && held != needed) return kStop;
        pb->SetValue(id, 0, static_cast<ReferenceTarget*>(anim_), tabIndex);
        return kApplied;
    }
    if (!found) {
        if (!anim_ || held != kFloatControl || !IsFloatType(type)) return kNotApplied;
        pb->SetController(id, tabIndex, static_cast<Control*>(anim_));
    } else if (anim_ && found->ClassID() == anim_->ClassID()) {
        TransferAnim(found, anim_);
    } else {
        return kNotApplied;
    }
    return kApplied;
}

int RefAnim::overrideInParent(Animatable* parent, Animatable* found, int subIndex, bool replaced) {
    lastOperation_ = kStepParentOverride;
    const int index = subIndex - 1;
    if (!anim_) {
        if (!found || !replaced) return kNotApplied;
        if (!parent->CanDeleteSubAnim(index)) return kStop;
        parent->DeleteSubAnim(index);
        return kApplied;
    }
    const bool exempt = replaced && found && found->ClassID() == kExemptController;
    if (!exempt && blockedByOption(found)) return kStop;
    if (subIndex == 3 && parent->SuperClassID() == BASENODE_CLASS_ID) {
        // The node's transform: set as its controller, or the merged one's users move to the held one.
        auto* node = static_cast<INode*>(parent);
        if (replaced) {
            if (anim_->SuperClassID() == kMatrixControl) node->SetTMController(static_cast<Control*>(anim_));
        } else if (found && found->ClassID() == anim_->ClassID()) {
            TransferAnim(found, anim_);
        }
        return kApplied;
    }
    auto* maker = dynamic_cast<ReferenceMaker*>(parent);
    const int refIndex = parent->SubNumToRefNum(index);
    const bool assignable = maker && refIndex >= 0 && refIndex < maker->NumRefs() &&
                            maker->CanTransferReference(refIndex) && parent->CanAssignController(index);
    if (replaced) {
        if (!assignable && (!option_ || refIndex < 0)) return kNotApplied;
        ReplaceSubRef(maker, anim_, refIndex);
    } else {
        if (!assignable && !option_) return kStop;
        if (!found || found->ClassID() != anim_->ClassID()) return kStop;
        TransferAnim(found, anim_);
    }
    // the parent's sub-anim naming interface (0x444E7687, 0x722E6E36) hears of the index with the host class
    return kApplied;
}
