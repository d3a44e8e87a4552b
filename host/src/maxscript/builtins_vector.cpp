// Vector and rotation built-ins: pow, dot, cross, normalize, length, the matrix makers (transMatrix,
// scaleMatrix, rotateXMatrix ... in degrees), inverse, angleAxis values and the rotation conversions
// (`eulerAngles 0 0 90 as quat`, `q as matrix3`, `q as angleAxis`), and the colour constants. Rotations follow
// the host's quaternions: eulerAngles, angleAxis, quat and matrix3 forms of one rotation convert into each
// other both ways.
#include "maxscript/builtins.h"

#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "maxscript/scene_values.h"
#include "scene/controllers/transform_math.h"

#include <algorithm>
#include <cmath>

namespace hostrt::mxs {

namespace {

constexpr double kPi = 3.14159265358979323846;
float Radians(float degrees) { return float(degrees * kPi / 180.0); }
float Degrees(float radians) { return float(radians * 180.0 / kPi); }

// A rotation as an angle in degrees about an axis.
class AngleAxisObject : public ExtObject {
public:
    AngleAxisObject(float degrees, const Point3& axis) : angle_(degrees), axis_(axis) {}
    std::wstring ClassName() const override { return L"AngleAxis"; }
    std::wstring Describe() const override {
        return L"(angleAxis " + FormatComponent(angle_) + L" " + PrintForm(Value::P3(axis_)) + L")";
    }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, L"angle")) return Value::Float(angle_);
        if (EqualsNoCase(name, L"axis")) return Value::P3(axis_);
        if (EqualsNoCase(name, L"numRevs")) return Value::Int(int(angle_ / 360.f));
        return std::nullopt;
    }
    Quat ToQuat() const {
        const Point3 axis = axis_.Normalize();
        const float half = Radians(angle_) / 2.f;
        const float s = std::sin(half);
        return Quat(axis.x * s, axis.y * s, axis.z * s, std::cos(half));
    }

private:
    float angle_;
    Point3 axis_;
};

AngleAxisObject* AsAngleAxis(const Value& v) {
    return v.Is(Kind::Ext) ? dynamic_cast<AngleAxisObject*>(v.ExtObj().get()) : nullptr;
}

// Any rotation value (quat, eulerAngles, angleAxis, the rotation part of a matrix3) as a quaternion.
std::optional<Quat> AsRotation(const Value& v) {
    if (AngleAxisObject* aa = AsAngleAxis(v)) return aa->ToQuat();
    if (v.Is(Kind::Matrix3)) return MatrixToQuat(v.AsMatrix());
    if (v.Is(Kind::Ext)) {
        try {
            return QuatArg(v);
        } catch (const ScriptError&) {
        }
    }
    return std::nullopt;
}

Value AngleAxisValue(const Quat& q) {
    const float w = std::clamp(q.w, -1.f, 1.f);
    const float angle = 2.f * std::acos(w);
    const float s = std::sqrt(std::max(0.f, 1.f - w * w));
    const Point3 axis = s < 1e-6f ? Point3(0.f, 0.f, 1.f) : Point3(q.x / s, q.y / s, q.z / s);
    return Value::Ext(std::make_shared<AngleAxisObject>(Degrees(angle), axis));
}

Point3 VectorArg(const Value& v) {
    if (v.Is(Kind::Point2)) return Point3(v.AsPoint2().x, v.AsPoint2().y, 0.f);
    return ToPoint3(v);
}

// A function of one or two vectors.
Value Dot(CallContext&, CallArgs& args) {
    CheckArgCount(L"dot", args, 2);
    return Value::Float(DotProd(VectorArg(args.positional[0]), VectorArg(args.positional[1])));
}

Value Cross(CallContext&, CallArgs& args) {
    CheckArgCount(L"cross", args, 2);
    return Value::P3(CrossProd(ToPoint3(args.positional[0]), ToPoint3(args.positional[1])));
}

Value Normalize(CallContext&, CallArgs& args) {
    CheckArgCount(L"normalize", args, 1);
    const Value& v = args.positional[0];
    if (v.Is(Kind::Point2)) {
        const Point3 p = VectorArg(v).Normalize();
        return Value::P2(Point2(p.x, p.y));
    }
    if (v.Is(Kind::Point3)) return Value::P3(v.AsPoint3().Normalize());
    if (auto q = AsRotation(v)) {
        const float n = std::sqrt(q->x * q->x + q->y * q->y + q->z * q->z + q->w * q->w);
        if (n == 0) return v;
        return QuatValue(Quat(q->x / n, q->y / n, q->z / n, q->w / n));
    }
    throw NoMethodError(L"normalize", v);
}

Value Length(CallContext&, CallArgs& args) {
    CheckArgCount(L"length", args, 1);
    const Value& v = args.positional[0];
    if (v.Is(Kind::Point2) || v.Is(Kind::Point3)) return Value::Float(VectorArg(v).Length());
    throw NoMethodError(L"length", v);
}

Value Inverse(CallContext&, CallArgs& args) {
    CheckArgCount(L"inverse", args, 1);
    const Value& v = args.positional[0];
    if (v.Is(Kind::Matrix3)) return Value::Matrix(Inverse(v.AsMatrix()));
    if (!AsAngleAxis(v)) {
        if (auto q = AsRotation(v)) {
            const float n = q->x * q->x + q->y * q->y + q->z * q->z + q->w * q->w;
            if (n == 0) throw RuntimeError(L"inverse: " + PrintForm(v) + L" has no inverse");
            return QuatValue(Quat(-q->x / n, -q->y / n, -q->z / n, q->w / n));
        }
    }
    throw NoMethodError(L"inverse", v);
}

void MatrixMaker(const wchar_t* name, Matrix3 (*make)(float)) {
    const std::wstring n = name;
    RegisterGlobalFunction(n, [n, make](CallContext&, CallArgs& args) {
        CheckArgCount(n, args, 1);
        return Value::Matrix(make(Radians(ToFloat(args.positional[0]))));
    });
}

// The colour constants; a script may assign its own colour to one of them.
void RegisterColour(const wchar_t* name, float r, float g, float b) {
    auto value = std::make_shared<Value>(Value::Col(AColor(r, g, b, 255.f)));
    RegisterSystemVariable(name, {[value] { return *value; }, [value](const Value& v) { *value = v; }});
}

void RegisterRotationConversions() {
    RegisterConversion(L"quat", [](CallContext&, const Value& v) -> std::optional<Value> {
        if (auto q = AsRotation(v)) return QuatValue(*q);
        return std::nullopt;
    });
    RegisterConversion(L"angleAxis", [](CallContext&, const Value& v) -> std::optional<Value> {
        if (AsAngleAxis(v)) return v;
        if (auto q = AsRotation(v)) return AngleAxisValue(*q);
        return std::nullopt;
    });
    RegisterConversion(L"eulerAngles", [](CallContext& ctx, const Value& v) -> std::optional<Value> {
        auto q = AsRotation(v);
        auto toEuler = FindGlobalFunction(L"quatToEuler");
        if (!q || !toEuler) return std::nullopt;
        CallArgs args;
        args.positional.push_back(QuatValue(*q));
        return ctx.interp.Call(*toEuler, args);
    });
    RegisterConversion(L"matrix3", [](CallContext&, const Value& v) -> std::optional<Value> {
        if (v.Is(Kind::Matrix3)) return v;
        if (auto q = AsRotation(v)) return Value::Matrix(hostrt::RotationOf(*q));
        return std::nullopt;
    });
}

}  // namespace

void RegisterVectorBuiltins() {
    RegisterGlobalFunction(L"pow", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"pow", args, 2);
        return Value::Float(float(std::pow(double(ToFloat(args.positional[0])), double(ToFloat(args.positional[1])))));
    });
    RegisterGlobalFunction(L"dot", Dot);
    RegisterGlobalFunction(L"cross", Cross);
    RegisterGlobalFunction(L"normalize", Normalize);
    RegisterGlobalFunction(L"length", Length);
    RegisterGlobalFunction(L"inverse", Inverse);
    RegisterGlobalFunction(L"transMatrix", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"transMatrix", args, 1);
        return Value::Matrix(TransMatrix(ToPoint3(args.positional[0])));
    });
    RegisterGlobalFunction(L"scaleMatrix", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"scaleMatrix", args, 1);
        return Value::Matrix(ScaleMatrix(ToPoint3(args.positional[0])));
    });
    MatrixMaker(L"rotateXMatrix", RotateXMatrix);
    MatrixMaker(L"rotateYMatrix", RotateYMatrix);
    MatrixMaker(L"rotateZMatrix", RotateZMatrix);
    RegisterClass(L"AngleAxis", L"Value", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"AngleAxis", args, 2);
        return Value::Ext(std::make_shared<AngleAxisObject>(ToFloat(args.positional[0]), ToPoint3(args.positional[1])));
    });
    RegisterRotationConversions();

    RegisterColour(L"red", 255, 0, 0);
    RegisterColour(L"green", 0, 255, 0);
    RegisterColour(L"blue", 0, 0, 255);
    RegisterColour(L"white", 255, 255, 255);
    RegisterColour(L"black", 0, 0, 0);
    RegisterColour(L"gray", 128, 128, 128);
    RegisterColour(L"yellow", 255, 255, 0);
    RegisterColour(L"orange", 255, 128, 0);
    RegisterColour(L"brown", 128, 64, 0);
}

}  // namespace hostrt::mxs
