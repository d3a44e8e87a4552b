// The Euler XYZ rotation controller.
#include "scene/controllers/euler_control.h"

#include "istdplug.h"
#include "scene/controllers/keyed_control.h"
#include "scene/controllers/transform_math.h"

namespace hostrt {

EulerXYZControl::EulerXYZControl(bool loading)
    : CompoundControl<3>({{{L"X Rotation", CTRL_FLOAT_CLASS_ID},
                           {L"Y Rotation", CTRL_FLOAT_CLASS_ID},
                           {L"Z Rotation", CTRL_FLOAT_CLASS_ID}}}) {
    if (!loading) MakeSubs(new FloatKeyControl(), new FloatKeyControl(), new FloatKeyControl());
}

Class_ID EulerXYZControl::ClassID() { return Class_ID(EULER_CONTROL_CLASS_ID, 0); }

Point3 EulerXYZControl::AnglesAt(TimeValue t, Interval& valid) {
    Point3 a;
    for (int i = 0; i < 3; ++i)
        if (Control* c = Sub(i)) c->GetValue(t, &a[i], valid, CTRL_ABSOLUTE);
    return a;
}

Matrix3 EulerXYZControl::RotationAt(TimeValue t, Interval& valid) { return RotateXYZMatrix(AnglesAt(t, valid)); }

void EulerXYZControl::SetAngles(TimeValue t, const Point3& angles) {
    for (int i = 0; i < 3; ++i) {
        float v = angles[i];
        if (Control* c = Sub(i)) c->SetValue(t, &v, 1, CTRL_ABSOLUTE);
    }
}

void EulerXYZControl::GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method) {
    const Matrix3 r = RotationAt(t, valid);
    if (method == CTRL_RELATIVE) {
        auto* m = static_cast<Matrix3*>(val);
        *m = r * *m;
    } else {
        *static_cast<Quat*>(val) = MatrixToQuat(r);
    }
}

void EulerXYZControl::SetValue(TimeValue t, void* val, int, GetSetMethod method) {
    const Quat q = *static_cast<Quat*>(val);
    Matrix3 r = RotationOf(q);
    if (method == CTRL_RELATIVE) {
        Interval iv = FOREVER;
        r = RotationAt(t, iv) * r;
    }
    SetAngles(t, EulerXYZFromMatrix(r));
}

RefTargetHandle EulerXYZControl::Clone(RemapDir& remap) {
    auto* c = new EulerXYZControl(true);
    CloneSubsInto(c, remap);
    BaseClone(this, c, remap);
    return c;
}

}  // namespace hostrt
