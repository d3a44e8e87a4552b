// The position-rotation-scale transform controller.
#include "scene/controllers/prs_control.h"

#include "istdplug.h"
#include "scene/controllers/euler_control.h"
#include "scene/controllers/keyed_control.h"
#include "scene/controllers/transform_math.h"

namespace hostrt {

void ApplyPRS(Control* pos, Control* rot, Control* scl, TimeValue t, Matrix3& m, Interval& valid) {
    for (Control* c : {pos, rot, scl})
        if (c) c->GetValue(t, &m, valid, CTRL_RELATIVE);
}

void SetPRS(Control* pos, Control* rot, Control* scl, TimeValue t, const SetXFormPacket& x) {
    switch (x.command) {
    case XFORM_SET: {
        const TransformParts parts = Decompose(x.tmAxis * Inverse(x.tmParent));
        Point3 p = parts.position;
        Quat q = MatrixToQuat(parts.rotation);
        ScaleValue s(parts.scale);
        if (pos) pos->SetValue(t, &p, 1, CTRL_ABSOLUTE);
        if (rot) rot->SetValue(t, &q, 1, CTRL_ABSOLUTE);
        if (scl) scl->SetValue(t, &s, 1, CTRL_ABSOLUTE);
        break;
    }
    case XFORM_MOVE: {
        Point3 p = x.p;
        if (pos) pos->SetValue(t, &p, 1, CTRL_RELATIVE);
        break;
    }
    case XFORM_ROTATE: {
        Quat q = x.q;
        if (rot) rot->SetValue(t, &q, 1, CTRL_RELATIVE);
        break;
    }
    case XFORM_SCALE: {
        ScaleValue s(x.p);
        if (scl) scl->SetValue(t, &s, 1, CTRL_RELATIVE);
        break;
    }
    }
}

PRSControl::PRSControl(bool loading)
    : CompoundControl<3>({{{L"Position", CTRL_POSITION_CLASS_ID},
                           {L"Rotation", CTRL_ROTATION_CLASS_ID},
                           {L"Scale", CTRL_SCALE_CLASS_ID}}}) {
    if (!loading) MakeSubs(new PositionKeyControl(), new EulerXYZControl(), new ScaleKeyControl());
}

Class_ID PRSControl::ClassID() { return Class_ID(PRS_CONTROL_CLASS_ID, 0); }

void PRSControl::GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method) {
    auto* m = static_cast<Matrix3*>(val);
    if (method == CTRL_ABSOLUTE) m->IdentityMatrix();
    ApplyPRS(Sub(0), Sub(1), Sub(2), t, *m, valid);
}

void PRSControl::SetValue(TimeValue t, void* val, int, GetSetMethod method) {
    if (method == CTRL_ABSOLUTE)
        SetPRS(Sub(0), Sub(1), Sub(2), t, SetXFormPacket(*static_cast<Matrix3*>(val)));
    else
        SetPRS(Sub(0), Sub(1), Sub(2), t, *static_cast<SetXFormPacket*>(val));
}

RefTargetHandle PRSControl::Clone(RemapDir& remap) {
    auto* c = new PRSControl(true);
    CloneSubsInto(c, remap);
    BaseClone(this, c, remap);
    return c;
}

}  // namespace hostrt
