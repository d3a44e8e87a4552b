// The position-rotation-scale transform controller (class (0x2005, 0), superclass 0x9008): a position, a
// rotation and a scale controller, sub-anims "Position", "Rotation" and "Scale".
#pragma once

#include "scene/controllers/compound_control.h"

namespace hostrt {

class PRSControl : public CompoundControl<3> {
public:
    explicit PRSControl(bool loading = false);
    Class_ID ClassID() override;
    SClass_ID SuperClassID() override { return CTRL_MATRIX3_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"Position/Rotation/Scale"; }
    BOOL IsLeaf() override { return FALSE; }

    // val is a Matrix3: in relative mode the incoming (parent) transform, replaced by local x incoming, where
    // local is the scale, then the rotation, then the position; in absolute mode it receives local.
    void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method = CTRL_ABSOLUTE) override;
    // Absolute: val is the local Matrix3 to take; relative: a SetXFormPacket (see control.h).
    void SetValue(TimeValue t, void* val, int commit = 1, GetSetMethod method = CTRL_ABSOLUTE) override;

    Control* GetPositionController() override { return Sub(0); }
    Control* GetRotationController() override { return Sub(1); }
    Control* GetScaleController() override { return Sub(2); }
    BOOL SetPositionController(Control* c) override { return AssignController(c, 0); }
    BOOL SetRotationController(Control* c) override { return AssignController(c, 1); }
    BOOL SetScaleController(Control* c) override { return AssignController(c, 2); }

    RefTargetHandle Clone(RemapDir& remap) override;
};

// Applies the position, rotation and scale controllers of a transform in relative mode to m, in that order.
void ApplyPRS(Control* pos, Control* rot, Control* scl, TimeValue t, Matrix3& m, Interval& valid);
// Sets position, rotation and scale controllers from a SetXFormPacket; rot may be null (look-at).
void SetPRS(Control* pos, Control* rot, Control* scl, TimeValue t, const SetXFormPacket& x);

}  // namespace hostrt
