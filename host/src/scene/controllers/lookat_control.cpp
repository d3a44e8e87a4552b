// The look-at transform controller.
#include "scene/controllers/lookat_control.h"

#include "inode.h"
#include "istdplug.h"
#include "scene/controllers/keyed_control.h"
#include "scene/controllers/prs_control.h"
#include "scene/objects/remap_follow.h"

#include <cmath>

namespace hostrt {

LookAtControl::LookAtControl(bool loading)
    : CompoundControl<3>({{{L"Position", CTRL_POSITION_CLASS_ID},
                           {L"Roll", CTRL_FLOAT_CLASS_ID},
                           {L"Scale", CTRL_SCALE_CLASS_ID}}}) {
    if (!loading) MakeSubs(new PositionKeyControl(), new FloatKeyControl(), new ScaleKeyControl());
}

Class_ID LookAtControl::ClassID() { return Class_ID(LOOKAT_CONTROL_CLASS_ID, 0); }

RefTargetHandle LookAtControl::GetReference(int i) {
    return i == LOOKAT_TARGET_REF ? target_ : CompoundControl<3>::GetReference(i);
}

void LookAtControl::SetReference(int i, RefTargetHandle rtarg) {
    if (i == LOOKAT_TARGET_REF)
        target_ = rtarg && rtarg->SuperClassID() == BASENODE_CLASS_ID ? static_cast<INode*>(rtarg) : nullptr;
    else
        CompoundControl<3>::SetReference(i, rtarg);
}

RefResult LookAtControl::SetTarget(INode* target) {
    const RefResult r = ReplaceReference(LOOKAT_TARGET_REF, target);
    NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    return r;
}

void LookAtControl::GetValue(TimeValue t, void* val, Interval& valid, GetSetMethod method) {
    auto* m = static_cast<Matrix3*>(val);
    if (method == CTRL_ABSOLUTE) m->IdentityMatrix();
    Matrix3 placed = *m;
    if (Control* pos = Sub(0)) pos->GetValue(t, &placed, valid, CTRL_RELATIVE);
    const Point3 at = placed.GetTrans();

    Point3 rows[3] = {placed.GetRow(0).Normalize(), placed.GetRow(1).Normalize(), placed.GetRow(2).Normalize()};
    // Two look-at controllers aiming at each other's nodes: the inner one keeps the incoming orientation.
    if (target_ && !aiming_) {
        aiming_ = true;
        const Point3 targetPos = target_->GetNodeTM(t, &valid).GetTrans();
        aiming_ = false;
        const Point3 z = at - targetPos;
        if (z.Length() > 1e-6f) {
            const Point3 zn = z.Normalize();
            Point3 x = CrossProd(Point3(0.f, 0.f, 1.f), zn);
            if (x.Length() < 1e-6f) x = CrossProd(Point3(0.f, 1.f, 0.f), zn);
            x = x.Normalize();
            rows[0] = x;
            rows[1] = CrossProd(zn, x);
            rows[2] = zn;
        }
    }
    Matrix3 r(rows[0], rows[1], rows[2], Point3());
    float roll = 0.f;
    if (Control* c = Sub(1)) c->GetValue(t, &roll, valid, CTRL_ABSOLUTE);
    if (roll != 0.f) r = RotateZMatrix(roll) * r;
    if (Control* c = Sub(2)) c->GetValue(t, &r, valid, CTRL_RELATIVE);
    r.SetTrans(at);
    r.ValidateFlags();
    *m = r;
}

void LookAtControl::SetValue(TimeValue t, void* val, int, GetSetMethod method) {
    if (method == CTRL_ABSOLUTE) {
        SetPRS(Sub(0), nullptr, Sub(2), t, SetXFormPacket(*static_cast<Matrix3*>(val)));
        return;
    }
    const auto& x = *static_cast<SetXFormPacket*>(val);
    if (x.command == XFORM_ROTATE) {
        // Only the turn about the viewing axis is the controller's own.
        const Point3 angles = [&] {
            Matrix3 m;
            QuatToMatrix(x.q, m);
            return Point3(0.f, 0.f, std::atan2(m.GetRow(0).y, m.GetRow(0).x));
        }();
        float roll = angles.z;
        if (Control* c = Sub(1)) c->SetValue(t, &roll, 1, CTRL_RELATIVE);
        return;
    }
    SetPRS(Sub(0), nullptr, Sub(2), t, x);
}

RefTargetHandle LookAtControl::Clone(RemapDir& remap) {
    auto* c = new LookAtControl(true);
    CloneSubsInto(c, remap);
    // The target follows the clone operation when it is cloned too, else stays the same node.
    FollowRemap(remap, c, LOOKAT_TARGET_REF, target_);
    BaseClone(this, c, remap);
    return c;
}

}  // namespace hostrt
