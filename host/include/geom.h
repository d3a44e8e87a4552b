// Geometry and time value types: points, colours, quaternions, the 52-byte Matrix3 (four rows of three floats
// and a 32-bit flag word), boxes and time intervals.
#pragma once

#include "maxtypes.h"

#include <cmath>
#include <climits>

class Point2 {
public:
    float x = 0, y = 0;
    Point2() = default;
    Point2(float xx, float yy) : x(xx), y(yy) {}
    bool operator==(const Point2& o) const { return x == o.x && y == o.y; }
    bool operator!=(const Point2& o) const { return !(*this == o); }
};

class Point3 {
public:
    float x = 0, y = 0, z = 0;
    Point3() = default;
    Point3(float xx, float yy, float zz) : x(xx), y(yy), z(zz) {}
    Point3(double xx, double yy, double zz) : x(float(xx)), y(float(yy)), z(float(zz)) {}
    Point3(int xx, int yy, int zz) : x(float(xx)), y(float(yy)), z(float(zz)) {}
    float& operator[](int i) { return (&x)[i]; }
    float operator[](int i) const { return (&x)[i]; }
    Point3 operator+(const Point3& o) const { return {x + o.x, y + o.y, z + o.z}; }
    Point3 operator-(const Point3& o) const { return {x - o.x, y - o.y, z - o.z}; }
    Point3 operator-() const { return {-x, -y, -z}; }
    Point3 operator*(float f) const { return {x * f, y * f, z * f}; }
    Point3 operator/(float f) const { return {x / f, y / f, z / f}; }
    Point3& operator+=(const Point3& o) { x += o.x; y += o.y; z += o.z; return *this; }
    Point3& operator-=(const Point3& o) { x -= o.x; y -= o.y; z -= o.z; return *this; }
    Point3& operator*=(float f) { x *= f; y *= f; z *= f; return *this; }
    bool operator==(const Point3& o) const { return x == o.x && y == o.y && z == o.z; }
    bool operator!=(const Point3& o) const { return !(*this == o); }
    float Length() const { return std::sqrt(x * x + y * y + z * z); }
    Point3 Normalize() const { float l = Length(); return l == 0 ? *this : *this / l; }
    bool Equals(const Point3& o, float eps = 1e-6f) const {
        return std::fabs(x - o.x) <= eps && std::fabs(y - o.y) <= eps && std::fabs(z - o.z) <= eps;
    }
    static const Point3 Origin;
};
inline Point3 operator*(float f, const Point3& p) { return p * f; }
inline float DotProd(const Point3& a, const Point3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Point3 CrossProd(const Point3& a, const Point3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

class Point4 {
public:
    float x = 0, y = 0, z = 0, w = 0;
    Point4() = default;
    Point4(float xx, float yy, float zz, float ww) : x(xx), y(yy), z(zz), w(ww) {}
    bool operator==(const Point4& o) const { return x == o.x && y == o.y && z == o.z && w == o.w; }
    bool operator!=(const Point4& o) const { return !(*this == o); }
};

class Color {
public:
    float r = 0, g = 0, b = 0;
    Color() = default;
    Color(float rr, float gg, float bb) : r(rr), g(gg), b(bb) {}
    explicit Color(const Point3& p) : r(p.x), g(p.y), b(p.z) {}
    explicit Color(COLORREF c) : r(GetRValue(c) / 255.f), g(GetGValue(c) / 255.f), b(GetBValue(c) / 255.f) {}
    operator Point3() const { return {r, g, b}; }
    COLORREF toRGB() const;
    bool operator==(const Color& o) const { return r == o.r && g == o.g && b == o.b; }
    bool operator!=(const Color& o) const { return !(*this == o); }
};

class AColor {
public:
    float r = 0, g = 0, b = 0, a = 1;
    AColor() = default;
    AColor(float rr, float gg, float bb, float aa = 1) : r(rr), g(gg), b(bb), a(aa) {}
    bool operator==(const AColor& o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
    bool operator!=(const AColor& o) const { return !(*this == o); }
};

class Quat {
public:
    float x = 0, y = 0, z = 0, w = 1;
    Quat() = default;
    Quat(float xx, float yy, float zz, float ww) : x(xx), y(yy), z(zz), w(ww) {}
    void Identity() { x = y = z = 0; w = 1; }
    bool IsIdentity() const { return x == 0 && y == 0 && z == 0 && w == 1; }
    Quat operator*(const Quat& q) const;
    bool operator==(const Quat& o) const { return x == o.x && y == o.y && z == o.z && w == o.w; }
    bool operator!=(const Quat& o) const { return !(*this == o); }
    bool Equals(const Quat& o, float eps = 1e-6f) const;
};

// Scale with its orientation: three floats and a quaternion (28 bytes).
class ScaleValue {
public:
    Point3 s{1.f, 1.f, 1.f};
    Quat q;
    ScaleValue() = default;
    ScaleValue(const Point3& ss, const Quat& qq = Quat()) : s(ss), q(qq) {}
    bool operator==(const ScaleValue& o) const { return s == o.s && q == o.q; }
};

// Matrix flag bits: which parts are known to be identity.
#define POS_IDENT 1
#define ROT_IDENT 2
#define SCL_IDENT 4
#define MAT_IDENT (POS_IDENT | ROT_IDENT | SCL_IDENT)

// A 4x3 transform in the row-vector convention: a point p maps to p * M; A * B applies A first, then B.
class Matrix3 {
public:
    Matrix3() { IdentityMatrix(); }
    explicit Matrix3(BOOL init) { if (init) IdentityMatrix(); else Zero(); }
    Matrix3(const Point3& r0, const Point3& r1, const Point3& r2, const Point3& r3);

    void IdentityMatrix();
    void Zero();
    bool IsIdentity() const;
    Point3 GetRow(int i) const { return {m[i][0], m[i][1], m[i][2]}; }
    void SetRow(int i, const Point3& p);
    Point3 GetTrans() const { return GetRow(3); }
    void SetTrans(const Point3& p);
    void NoTrans() { SetTrans(Point3()); }
    void Translate(const Point3& p) { SetTrans(GetTrans() + p); }
    void RotateX(float angle);
    void RotateY(float angle);
    void RotateZ(float angle);
    void Scale(const Point3& s);
    DWORD GetIdentFlags() const { return flags; }
    void SetIdentFlags(DWORD f) { flags = f; }
    void ValidateFlags();

    Matrix3 operator*(const Matrix3& b) const;
    Matrix3& operator*=(const Matrix3& b) { return *this = *this * b; }
    bool operator==(const Matrix3& o) const;
    bool operator!=(const Matrix3& o) const { return !(*this == o); }
    bool Equals(const Matrix3& o, float eps = 1e-5f) const;
    Point3 PointTransform(const Point3& p) const;
    Point3 VectorTransform(const Point3& p) const;

    float m[4][3];
    DWORD flags;
};
static_assert(sizeof(Matrix3) == 52, "Matrix3 is saved byte for byte: 48 bytes of rows and a 32-bit flag word");

Matrix3 Inverse(const Matrix3& m);
inline Point3 operator*(const Point3& p, const Matrix3& m) { return m.PointTransform(p); }
Matrix3 TransMatrix(const Point3& p);
Matrix3 ScaleMatrix(const Point3& s);
Matrix3 RotateXMatrix(float angle);
Matrix3 RotateYMatrix(float angle);
Matrix3 RotateZMatrix(float angle);
// Rotation matrix of Euler angles applied in X, Y, Z order (radians).
Matrix3 RotateXYZMatrix(const Point3& angles);
void QuatToMatrix(const Quat& q, Matrix3& m);
Quat MatrixToQuat(const Matrix3& m);

class Box3 {
public:
    Point3 pmin, pmax;
    Box3() { Init(); }
    Box3(const Point3& a, const Point3& b) : pmin(a), pmax(b) {}
    void Init() { pmin = Point3(1e30f, 1e30f, 1e30f); pmax = Point3(-1e30f, -1e30f, -1e30f); }
    bool IsEmpty() const { return pmin.x > pmax.x || pmin.y > pmax.y || pmin.z > pmax.z; }
    Box3& operator+=(const Point3& p);
    bool operator==(const Box3& o) const { return pmin == o.pmin && pmax == o.pmax; }
    bool operator!=(const Box3& o) const { return !(*this == o); }
};
static_assert(sizeof(Box3) == 24);

#define TIME_NegInfinity TimeValue(INT_MIN)
#define TIME_PosInfinity TimeValue(INT_MAX)
#define TIME_TICKSPERSEC 4800
#define GetTicksPerFrame() 160

class Interval {
public:
    constexpr Interval() : start(TIME_NegInfinity), end(TIME_NegInfinity) {}
    constexpr Interval(TimeValue s, TimeValue e) : start(s), end(e) {}
    TimeValue Start() const { return start; }
    TimeValue End() const { return end; }
    void Set(TimeValue s, TimeValue e) { start = s; end = e; }
    void SetInfinite() { start = TIME_NegInfinity; end = TIME_PosInfinity; }
    void SetEmpty() { start = end = TIME_NegInfinity; }
    void SetInstant(TimeValue t) { start = end = t; }
    bool Empty() const { return start == TIME_NegInfinity && end == TIME_NegInfinity; }
    bool InInterval(TimeValue t) const { return t >= start && t <= end; }
    Interval operator&(const Interval& o) const;
    Interval& operator&=(const Interval& o) { return *this = *this & o; }
    bool operator==(const Interval& o) const { return start == o.start && end == o.end; }
    bool operator!=(const Interval& o) const { return !(*this == o); }

private:
    TimeValue start, end;
};
#define FOREVER Interval(TIME_NegInfinity, TIME_PosInfinity)
#define NEVER Interval(TIME_NegInfinity, TIME_NegInfinity)

class IPoint2 {
public:
    int x = 0, y = 0;
    IPoint2() = default;
    IPoint2(int xx, int yy) : x(xx), y(yy) {}
};
