// Transform arithmetic of the controllers.
#include "scene/controllers/transform_math.h"

#include <cmath>

namespace hostrt {

Point3 EulerXYZFromMatrix(const Matrix3& in) {
    // RotateX(a) * RotateY(b) * RotateZ(c) has row 0 = (cb cc, cb sc, -sb), row 1 = (.., .., sa cb) and
    // row 2 = (.., .., ca cb).
    const Point3 r0 = in.GetRow(0).Normalize(), r1 = in.GetRow(1).Normalize(), r2 = in.GetRow(2).Normalize();
    const float sb = std::fmax(-1.f, std::fmin(1.f, -r0.z));
    const float b = std::asin(sb);
    if (std::fabs(sb) < 0.99999f) return {std::atan2(r1.z, r2.z), b, std::atan2(r0.y, r0.x)};
    // Gimbal lock: c is taken as 0, so row 1 = (sa sb, ca, 0) and row 2 = (ca sb, -sa, 0).
    return {std::atan2(-r2.y, r1.y), b, 0.f};
}

TransformParts Decompose(const Matrix3& m) {
    TransformParts p;
    p.position = m.GetTrans();
    Point3 rows[3] = {m.GetRow(0), m.GetRow(1), m.GetRow(2)};
    for (int i = 0; i < 3; ++i) p.scale[i] = rows[i].Length();
    if (DotProd(CrossProd(rows[0], rows[1]), rows[2]) < 0) p.scale.x = -p.scale.x;
    Matrix3 r;
    for (int i = 0; i < 3; ++i) r.SetRow(i, p.scale[i] == 0 ? Point3() : rows[i] / p.scale[i]);
    r.SetTrans(Point3());
    r.ValidateFlags();
    p.rotation = r;
    return p;
}

Matrix3 RotationOf(const Quat& q) {
    Matrix3 m;
    QuatToMatrix(q, m);
    return m;
}

}  // namespace hostrt
