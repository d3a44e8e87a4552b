// Geometry value types: matrix algebra in the row-vector convention, quaternions, boxes, intervals, colours.
#include "geom.h"

#include <algorithm>

const Point3 Point3::Origin(0.f, 0.f, 0.f);

COLORREF Color::toRGB() const {
    auto c = [](float v) { return int(std::clamp(v, 0.f, 1.f) * 255.f + 0.5f); };
    return RGB(c(r), c(g), c(b));
}

Quat Quat::operator*(const Quat& q) const {
    return {w * q.x + x * q.w + y * q.z - z * q.y, w * q.y - x * q.z + y * q.w + z * q.x,
            w * q.z + x * q.y - y * q.x + z * q.w, w * q.w - x * q.x - y * q.y - z * q.z};
}

bool Quat::Equals(const Quat& o, float eps) const {
    return std::fabs(x - o.x) <= eps && std::fabs(y - o.y) <= eps && std::fabs(z - o.z) <= eps &&
           std::fabs(w - o.w) <= eps;
}

Matrix3::Matrix3(const Point3& r0, const Point3& r1, const Point3& r2, const Point3& r3) : flags(0) {
    SetRow(0, r0);
    SetRow(1, r1);
    SetRow(2, r2);
    SetRow(3, r3);
    ValidateFlags();
}

void Matrix3::IdentityMatrix() {
    Zero();
    m[0][0] = m[1][1] = m[2][2] = 1.f;
    flags = MAT_IDENT;
}

void Matrix3::Zero() {
    for (auto& row : m) row[0] = row[1] = row[2] = 0.f;
    flags = 0;
}

bool Matrix3::IsIdentity() const { return *this == Matrix3(); }

void Matrix3::SetRow(int i, const Point3& p) {
    m[i][0] = p.x;
    m[i][1] = p.y;
    m[i][2] = p.z;
    flags &= (i == 3) ? ~DWORD(POS_IDENT) : ~DWORD(ROT_IDENT | SCL_IDENT);
}

void Matrix3::SetTrans(const Point3& p) {
    SetRow(3, p);
    if (p == Point3()) flags |= POS_IDENT;
}

void Matrix3::ValidateFlags() {
    flags &= ~DWORD(MAT_IDENT);
    if (GetRow(3) == Point3()) flags |= POS_IDENT;
    if (GetRow(0) == Point3(1.f, 0.f, 0.f) && GetRow(1) == Point3(0.f, 1.f, 0.f) && GetRow(2) == Point3(0.f, 0.f, 1.f))
        flags |= ROT_IDENT | SCL_IDENT;
}

void Matrix3::RotateX(float angle) { *this = *this * RotateXMatrix(angle); }
void Matrix3::RotateY(float angle) { *this = *this * RotateYMatrix(angle); }
void Matrix3::RotateZ(float angle) { *this = *this * RotateZMatrix(angle); }
void Matrix3::Scale(const Point3& s) { *this = *this * ScaleMatrix(s); }

Matrix3 Matrix3::operator*(const Matrix3& b) const {
    Matrix3 r(FALSE);
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 3; ++j) {
            float v = m[i][0] * b.m[0][j] + m[i][1] * b.m[1][j] + m[i][2] * b.m[2][j];
            if (i == 3) v += b.m[3][j];
            r.m[i][j] = v;
        }
    r.ValidateFlags();
    return r;
}

bool Matrix3::operator==(const Matrix3& o) const {
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 3; ++j)
            if (m[i][j] != o.m[i][j]) return false;
    return flags == o.flags;
}

bool Matrix3::Equals(const Matrix3& o, float eps) const {
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 3; ++j)
            if (std::fabs(m[i][j] - o.m[i][j]) > eps) return false;
    return true;
}

Point3 Matrix3::PointTransform(const Point3& p) const {
    return {p.x * m[0][0] + p.y * m[1][0] + p.z * m[2][0] + m[3][0],
            p.x * m[0][1] + p.y * m[1][1] + p.z * m[2][1] + m[3][1],
            p.x * m[0][2] + p.y * m[1][2] + p.z * m[2][2] + m[3][2]};
}

Point3 Matrix3::VectorTransform(const Point3& p) const {
    return {p.x * m[0][0] + p.y * m[1][0] + p.z * m[2][0], p.x * m[0][1] + p.y * m[1][1] + p.z * m[2][1],
            p.x * m[0][2] + p.y * m[1][2] + p.z * m[2][2]};
}

Matrix3 Inverse(const Matrix3& a) {
    const auto& m = a.m;
    float det = m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) - m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
                m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
    Matrix3 r;
    if (det == 0.f) return r;
    float id = 1.f / det;
    r.m[0][0] = (m[1][1] * m[2][2] - m[1][2] * m[2][1]) * id;
    r.m[0][1] = (m[0][2] * m[2][1] - m[0][1] * m[2][2]) * id;
    r.m[0][2] = (m[0][1] * m[1][2] - m[0][2] * m[1][1]) * id;
    r.m[1][0] = (m[1][2] * m[2][0] - m[1][0] * m[2][2]) * id;
    r.m[1][1] = (m[0][0] * m[2][2] - m[0][2] * m[2][0]) * id;
    r.m[1][2] = (m[0][2] * m[1][0] - m[0][0] * m[1][2]) * id;
    r.m[2][0] = (m[1][0] * m[2][1] - m[1][1] * m[2][0]) * id;
    r.m[2][1] = (m[0][1] * m[2][0] - m[0][0] * m[2][1]) * id;
    r.m[2][2] = (m[0][0] * m[1][1] - m[0][1] * m[1][0]) * id;
    Point3 t = a.GetTrans();
    Point3 it = -(Point3(t.x * r.m[0][0] + t.y * r.m[1][0] + t.z * r.m[2][0],
                         t.x * r.m[0][1] + t.y * r.m[1][1] + t.z * r.m[2][1],
                         t.x * r.m[0][2] + t.y * r.m[1][2] + t.z * r.m[2][2]));
    r.m[3][0] = it.x;
    r.m[3][1] = it.y;
    r.m[3][2] = it.z;
    r.ValidateFlags();
    return r;
}

Matrix3 TransMatrix(const Point3& p) {
    Matrix3 r;
    r.SetTrans(p);
    return r;
}

Matrix3 ScaleMatrix(const Point3& s) {
    Matrix3 r;
    r.SetRow(0, {s.x, 0.f, 0.f});
    r.SetRow(1, {0.f, s.y, 0.f});
    r.SetRow(2, {0.f, 0.f, s.z});
    r.ValidateFlags();
    return r;
}

Matrix3 RotateXMatrix(float a) {
    Matrix3 r;
    float c = std::cos(a), s = std::sin(a);
    r.SetRow(1, {0.f, c, s});
    r.SetRow(2, {0.f, -s, c});
    r.ValidateFlags();
    return r;
}

Matrix3 RotateYMatrix(float a) {
    Matrix3 r;
    float c = std::cos(a), s = std::sin(a);
    r.SetRow(0, {c, 0.f, -s});
    r.SetRow(2, {s, 0.f, c});
    r.ValidateFlags();
    return r;
}

Matrix3 RotateZMatrix(float a) {
    Matrix3 r;
    float c = std::cos(a), s = std::sin(a);
    r.SetRow(0, {c, s, 0.f});
    r.SetRow(1, {-s, c, 0.f});
    r.ValidateFlags();
    return r;
}

Matrix3 RotateXYZMatrix(const Point3& angles) {
    return RotateXMatrix(angles.x) * RotateYMatrix(angles.y) * RotateZMatrix(angles.z);
}

void QuatToMatrix(const Quat& q, Matrix3& m) {
    float xx = q.x * q.x, yy = q.y * q.y, zz = q.z * q.z;
    float xy = q.x * q.y, xz = q.x * q.z, yz = q.y * q.z, wx = q.w * q.x, wy = q.w * q.y, wz = q.w * q.z;
    Point3 t = m.GetTrans();
    m.SetRow(0, {1.f - 2.f * (yy + zz), 2.f * (xy + wz), 2.f * (xz - wy)});
    m.SetRow(1, {2.f * (xy - wz), 1.f - 2.f * (xx + zz), 2.f * (yz + wx)});
    m.SetRow(2, {2.f * (xz + wy), 2.f * (yz - wx), 1.f - 2.f * (xx + yy)});
    m.SetRow(3, t);
    m.ValidateFlags();
}

Quat MatrixToQuat(const Matrix3& m) {
    Point3 r0 = m.GetRow(0).Normalize(), r1 = m.GetRow(1).Normalize(), r2 = m.GetRow(2).Normalize();
    float tr = r0.x + r1.y + r2.z;
    Quat q;
    if (tr > 0.f) {
        float s = std::sqrt(tr + 1.f) * 2.f;
        q = {(r1.z - r2.y) / s, (r2.x - r0.z) / s, (r0.y - r1.x) / s, 0.25f * s};
    } else if (r0.x > r1.y && r0.x > r2.z) {
        float s = std::sqrt(1.f + r0.x - r1.y - r2.z) * 2.f;
        q = {0.25f * s, (r1.x + r0.y) / s, (r2.x + r0.z) / s, (r1.z - r2.y) / s};
    } else if (r1.y > r2.z) {
        float s = std::sqrt(1.f + r1.y - r0.x - r2.z) * 2.f;
        q = {(r1.x + r0.y) / s, 0.25f * s, (r2.y + r1.z) / s, (r2.x - r0.z) / s};
    } else {
        float s = std::sqrt(1.f + r2.z - r0.x - r1.y) * 2.f;
        q = {(r2.x + r0.z) / s, (r2.y + r1.z) / s, 0.25f * s, (r0.y - r1.x) / s};
    }
    return q;
}

Box3& Box3::operator+=(const Point3& p) {
    if (IsEmpty()) { pmin = pmax = p; return *this; }
    pmin = {std::min(pmin.x, p.x), std::min(pmin.y, p.y), std::min(pmin.z, p.z)};
    pmax = {std::max(pmax.x, p.x), std::max(pmax.y, p.y), std::max(pmax.z, p.z)};
    return *this;
}

Interval Interval::operator&(const Interval& o) const {
    TimeValue s = std::max(start, o.start), e = std::min(end, o.end);
    return s > e ? NEVER : Interval(s, e);
}
