// The look-at transform controller (class (0x2006, 0), superclass 0x9008): position, roll and scale controllers
// and the node it aims at (reference 3); its negative Z axis points at the target, roll turns about it.
#pragma once

#include "scene/controllers/compound_control.h"

namespace hostrt {

class LookAtControl : public CompoundControl<3> {
public:
    explicit LookAtControl(bool loading = false);
    Class_ID ClassID() override;
    SClass_ID SuperClassID() override { return CTRL_MATRIX3_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"LookAt"; }
    BOOL IsLeaf() override { return FALSE; }

    // val is a Matrix3, as for the position-rotation-scale controller. Without a target (or with the target at
    // the controller's position) the orientation is the incoming one.
    void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method = CTRL_ABSOLUTE) override;
    // Absolute: val is a local Matrix3, of which the position and scale are taken. Relative: a SetXFormPacket;
    // XFORM_SET takes the position and scale, rotations turn the roll.
    void SetValue(TimeValue t, void* val, int commit = 1, GetSetMethod method = CTRL_ABSOLUTE) override;

    Control* GetPositionController() override { return Sub(0); }
    Control* GetRollController() override { return Sub(1); }
    Control* GetScaleController() override { return Sub(2); }
    BOOL SetPositionController(Control* c) override { return AssignController(c, 0); }
    BOOL SetScaleController(Control* c) override { return AssignController(c, 2); }
    // The target is a reference: a deleted target node leaves none. Setting it sends 80.
    INode* GetTarget() override { return target_; }
    RefResult SetTarget(INode* target) override;

    int NumRefs() override { return 4; }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle rtarg) override;
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    INode* target_ = nullptr;
    bool aiming_ = false;  // while the target's transform is evaluated
};

}  // namespace hostrt
