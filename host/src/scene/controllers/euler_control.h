// The Euler XYZ rotation controller (class (0x2012, 0), superclass 0x900C): three float tracks of angles in
// radians, applied about X, then Y, then Z.
#pragma once

#include "scene/controllers/compound_control.h"

namespace hostrt {

class EulerXYZControl : public CompoundControl<3> {
public:
    explicit EulerXYZControl(bool loading = false);
    Class_ID ClassID() override;
    SClass_ID SuperClassID() override { return CTRL_ROTATION_CLASS_ID; }
    void GetClassName(MSTR& s, bool localized = true) const override { s = L"Euler XYZ"; }

    // Absolute: Quat. Relative: the incoming Matrix3 turned by the rotation (rotation x incoming).
    void GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method = CTRL_ABSOLUTE) override;
    // Absolute: the Quat to take. Relative: a Quat applied after the current rotation.
    void SetValue(TimeValue t, void* val, int commit = 1, GetSetMethod method = CTRL_ABSOLUTE) override;
    Control* GetXController() override { return Sub(0); }
    Control* GetYController() override { return Sub(1); }
    Control* GetZController() override { return Sub(2); }

    // The rotation at t as a matrix, and its three angles.
    Matrix3 RotationAt(TimeValue t, Interval& valid);
    Point3 AnglesAt(TimeValue t, Interval& valid);
    void SetAngles(TimeValue t, const Point3& angles);

    RefTargetHandle Clone(RemapDir& remap) override;
};

}  // namespace hostrt
