// CompoundControl: a controller made of a fixed set of sub-controllers, each one a reference and a sub-anim
// with a name and the superclass a replacement must have (position-rotation-scale, Euler XYZ, look-at).
#pragma once

#include "control.h"

#include <array>
#include <cstddef>

namespace hostrt {

template <std::size_t N> class CompoundControl : public Control {
public:
    struct SubSpec {
        const MCHAR* name;
        SClass_ID superClass;
    };

    int NumSubs() override { return int(N); }
    Animatable* SubAnim(int i) override { return Sub(i); }
    MSTR SubAnimName(int i, bool localized = true) override {
        return valid(i) ? MSTR(specs_[std::size_t(i)].name) : MSTR();
    }
    int SubNumToRefNum(int subNum) override { return valid(subNum) ? subNum : -1; }
    BOOL CanAssignController(int subAnim) override { return valid(subAnim) ? TRUE : FALSE; }
    // Takes a controller of the sub-anim's superclass; the structure change is announced with 258, then 80.
    BOOL AssignController(Animatable* control, int subAnim) override {
        auto* c = dynamic_cast<Control*>(control);
        if (!valid(subAnim) || !c || c->SuperClassID() != specs_[std::size_t(subAnim)].superClass) return FALSE;
        ReplaceReference(subAnim, c);
        NotifyDependents(FOREVER, PART_ALL, REFMSG_SUBANIM_STRUCTURE_CHANGED);
        NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
        return TRUE;
    }
    BOOL IsAnimated() override {
        for (Control* c : subs_)
            if (c && c->IsAnimated()) return TRUE;
        return FALSE;
    }

    int NumRefs() override { return int(N); }
    RefTargetHandle GetReference(int i) override { return Sub(i); }
    void SetReference(int i, RefTargetHandle rtarg) override {
        if (valid(i)) subs_[std::size_t(i)] = dynamic_cast<Control*>(rtarg);
    }

    Control* Sub(int i) const { return valid(i) ? subs_[std::size_t(i)] : nullptr; }

protected:
    explicit CompoundControl(const std::array<SubSpec, N>& specs) : specs_(specs) {}
    static bool valid(int i) { return i >= 0 && i < int(N); }
    // Gives every sub-anim a new controller of its default class (not while loading: references come back).
    template <class... Ctrls> void MakeSubs(Ctrls*... ctrls) {
        Control* made[] = {ctrls...};
        for (std::size_t i = 0; i < N; ++i) ReplaceReference(int(i), made[i]);
    }
    // Clones the sub-controllers into c.
    void CloneSubsInto(CompoundControl* c, RemapDir& remap) {
        for (std::size_t i = 0; i < N; ++i) c->ReplaceReference(int(i), remap.CloneRef(subs_[i]));
    }

private:
    std::array<SubSpec, N> specs_;
    std::array<Control*, N> subs_{};
};

}  // namespace hostrt
