// Controllers and animation in MAXScript: controller properties (value, keys, the position, rotation and
// scale sub-controllers), numKeys, addNewKey, deleteKeys, getKeyTime, and the rotation values `quat` and
// `eulerAngles` that node rotations read and take.
#include "maxscript/scene_values.h"

#include "control.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "scene/controllers/transform_math.h"

#include <cmath>

namespace hostrt::mxs {

namespace {

constexpr double kDegrees = 180.0 / M_PI;

// A rotation: quat x y z w.
class QuatObject : public ExtObject {
public:
    explicit QuatObject(const Quat& q) : q_(q) {}
    std::wstring ClassName() const override { return L"Quat"; }
    std::wstring Describe() const override {
        return L"(quat " + FormatComponent(q_.x) + L" " + FormatComponent(q_.y) + L" " + FormatComponent(q_.z) + L" " +
               FormatComponent(q_.w) + L")";
    }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, L"x")) return Value::Float(q_.x);
        if (EqualsNoCase(name, L"y")) return Value::Float(q_.y);
        if (EqualsNoCase(name, L"z")) return Value::Float(q_.z);
        if (EqualsNoCase(name, L"w")) return Value::Float(q_.w);
        return std::nullopt;
    }
    const Quat& Get() const { return q_; }

private:
    Quat q_;
};

// A rotation as three angles in degrees, applied x, then y, then z.
class EulerObject : public ExtObject {
public:
    explicit EulerObject(const Point3& degrees) : a_(degrees) {}
    std::wstring ClassName() const override { return L"EulerAngles"; }
    std::wstring Describe() const override {
        return L"(eulerAngles " + FormatComponent(a_.x) + L" " + FormatComponent(a_.y) + L" " + FormatComponent(a_.z) +
               L")";
    }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, L"x") || EqualsNoCase(name, L"x_rotation")) return Value::Float(a_.x);
        if (EqualsNoCase(name, L"y") || EqualsNoCase(name, L"y_rotation")) return Value::Float(a_.y);
        if (EqualsNoCase(name, L"z") || EqualsNoCase(name, L"z_rotation")) return Value::Float(a_.z);
        return std::nullopt;
    }
    Quat ToQuat() const { return MatrixToQuat(RotateXYZMatrix(a_ / float(kDegrees))); }

private:
    Point3 a_;
};

Value EulerValue(const Quat& q) { return Value::Ext(std::make_shared<EulerObject>(EulerXYZFromMatrix(RotationOf(q)) * float(kDegrees))); }

Control* AsControl(const Value& v) {
    Control* c = v.Is(Kind::HostObject) ? dynamic_cast<Control*>(v.Anim()) : nullptr;
    if (!c) throw ConversionError(v, L"Controller");
    return c;
}

Value ControllerValue(Control* c, TimeValue t) {
    Interval valid = FOREVER;
    switch (c->SuperClassID()) {
    case CTRL_FLOAT_CLASS_ID: {
        float f = 0;
        c->GetValue(t, &f, valid);
        return Value::Float(f);
    }
    case CTRL_POINT3_CLASS_ID:
    case CTRL_POSITION_CLASS_ID: {
        Point3 p;
        c->GetValue(t, &p, valid);
        return Value::P3(p);
    }
    case CTRL_ROTATION_CLASS_ID: {
        Quat q;
        c->GetValue(t, &q, valid);
        return QuatValue(q);
    }
    case CTRL_SCALE_CLASS_ID: {
        ScaleValue s;
        c->GetValue(t, &s, valid);
        return Value::P3(s.s);
    }
    case CTRL_MATRIX3_CLASS_ID: {
        Matrix3 m;
        c->GetValue(t, &m, valid, CTRL_RELATIVE);
        return Value::Matrix(m);
    }
    default: return Value::Undefined();
    }
}

void SetControllerValue(Control* c, TimeValue t, const Value& v) {
    switch (c->SuperClassID()) {
    case CTRL_FLOAT_CLASS_ID: {
        float f = ToFloat(v);
        c->SetValue(t, &f);
        return;
    }
    case CTRL_POINT3_CLASS_ID:
    case CTRL_POSITION_CLASS_ID: {
        Point3 p = ToPoint3(v);
        c->SetValue(t, &p);
        return;
    }
    case CTRL_ROTATION_CLASS_ID: {
        Quat q = QuatArg(v);
        c->SetValue(t, &q);
        return;
    }
    case CTRL_SCALE_CLASS_ID: {
        ScaleValue s(ToPoint3(v));
        c->SetValue(t, &s);
        return;
    }
    default: throw RuntimeError(L"Cannot set the value of " + PrintForm(Value::Host(c)));
    }
}

void RegisterControllerHandler() {
    HostObjectHandler h;
    h.name = L"controller";
    h.accepts = [](Animatable* a) { return dynamic_cast<Control*>(a) != nullptr; };
    h.getProperty = [](CallContext& ctx, Animatable* a, const std::wstring& name) -> std::optional<Value> {
        auto* c = dynamic_cast<Control*>(a);
        if (EqualsNoCase(name, L"value")) return ControllerValue(c, ctx.interp.Time());
        if (EqualsNoCase(name, L"controller")) return Value::Host(c);
        if (EqualsNoCase(name, L"keys")) {
            ArrayData keys;
            for (int i = 0; i < c->NumKeys(); ++i) keys.push_back(Value::Time(c->GetKeyTime(i)));
            return Value::Array(std::move(keys));
        }
        if (EqualsNoCase(name, L"isAnimated")) return Value::Bool(c->IsAnimated() != 0);
        if (EqualsNoCase(name, L"position") || EqualsNoCase(name, L"pos"))
            return c->GetPositionController() ? Value::Host(c->GetPositionController()) : std::optional<Value>();
        if (EqualsNoCase(name, L"rotation"))
            return c->GetRotationController() ? Value::Host(c->GetRotationController()) : std::optional<Value>();
        for (const wchar_t* axis : {L"x", L"y", L"z"}) {
            for (const wchar_t* kind : {L"_position", L"_rotation", L"_scale"}) {
                if (!EqualsNoCase(name, std::wstring(axis) + kind)) continue;
                Control* sub = axis[0] == L'x' ? c->GetXController() : axis[0] == L'y' ? c->GetYController()
                                                                                        : c->GetZController();
                if (sub) return Value::Host(sub);
            }
        }
        if (EqualsNoCase(name, L"scale"))
            return c->GetScaleController() ? Value::Host(c->GetScaleController()) : std::optional<Value>();
        return std::nullopt;
    };
    h.setProperty = [](CallContext& ctx, Animatable* a, const std::wstring& name, const Value& v) {
        if (!EqualsNoCase(name, L"value")) return false;
        SetControllerValue(dynamic_cast<Control*>(a), ctx.interp.Time(), v);
        return true;
    };
    h.describe = [](Animatable* a) -> std::optional<std::wstring> {
        return L"Controller:" + std::wstring(a->ClassName().data());
    };
    RegisterHostObjectHandler(std::move(h));
}

}  // namespace

Value QuatValue(const Quat& q) { return Value::Ext(std::make_shared<QuatObject>(q)); }

Value ControllerScriptValue(Control* c, TimeValue t) { return ControllerValue(c, t); }
void SetControllerScriptValue(Control* c, TimeValue t, const Value& v) { SetControllerValue(c, t, v); }

Quat QuatArg(const Value& v) {
    if (v.Is(Kind::Ext)) {
        if (auto* q = dynamic_cast<QuatObject*>(v.ExtObj().get())) return q->Get();
        if (auto* e = dynamic_cast<EulerObject*>(v.ExtObj().get())) return e->ToQuat();
    }
    throw ConversionError(v, L"Quat");
}

void RegisterSceneAnimationFunctions() {
    RegisterControllerHandler();
    RegisterClass(L"Quat", L"Value", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"Quat", args, 4);
        const auto& p = args.positional;
        return QuatValue(Quat(ToFloat(p[0]), ToFloat(p[1]), ToFloat(p[2]), ToFloat(p[3])));
    });
    RegisterClass(L"EulerAngles", L"Value", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"EulerAngles", args, 3);
        const auto& p = args.positional;
        return Value::Ext(std::make_shared<EulerObject>(Point3(ToFloat(p[0]), ToFloat(p[1]), ToFloat(p[2]))));
    });
    RegisterGlobalFunction(L"quatToEuler", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"quatToEuler", args, 1);
        return EulerValue(QuatArg(args.positional[0]));
    });
    RegisterGlobalFunction(L"eulerToQuat", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"eulerToQuat", args, 1);
        return QuatValue(QuatArg(args.positional[0]));
    });
    // numKeys answers -1 for controllers that take no keys.
    RegisterGlobalFunction(L"numKeys", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"numKeys", args, 1);
        Control* c = AsControl(args.positional[0]);
        return Value::Int(c->IsKeyable() ? c->NumKeys() : -1);
    });
    RegisterGlobalFunction(L"addNewKey", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"addNewKey", args, 2);
        Control* c = AsControl(args.positional[0]);
        if (!c->IsKeyable()) throw RuntimeError(L"addNewKey: " + PrintForm(args.positional[0]) + L" takes no keys");
        c->AddNewKey(ToTime(args.positional[1]));
        return Value::Ok();
    });
    RegisterGlobalFunction(L"deleteKeys", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"deleteKeys", args, 1);
        AsControl(args.positional[0])->DeleteKeys();
        return Value::Ok();
    });
    RegisterGlobalFunction(L"getKeyTime", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"getKeyTime", args, 2);
        Control* c = AsControl(args.positional[0]);
        const int i = ToInt(args.positional[1]);
        if (i < 1 || i > c->NumKeys())
            throw RuntimeError(L"getKeyTime: key " + PrintForm(args.positional[1]) + L" out of range for " +
                               PrintForm(args.positional[0]));
        return Value::Time(c->GetKeyTime(i - 1));
    });
}

}  // namespace hostrt::mxs
