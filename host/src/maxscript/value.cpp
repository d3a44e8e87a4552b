// Value construction, access to host objects, case folding and equality.
#include "maxscript/value.h"

#include "ref.h"

#include <cwctype>

namespace hostrt::mxs {

Value Value::Bool(bool b) {
    Value v(Kind::Bool);
    v.data_ = b;
    return v;
}
Value Value::Int(int i) {
    Value v(Kind::Integer);
    v.data_ = i;
    return v;
}
Value Value::Float(float f) {
    Value v(Kind::Float);
    v.data_ = f;
    return v;
}
Value Value::Time(TimeValue ticks) {
    Value v(Kind::Time);
    v.data_ = int(ticks);
    return v;
}
Value Value::String(std::wstring s) {
    Value v(Kind::String);
    v.data_ = std::make_shared<std::wstring>(std::move(s));
    return v;
}
Value Value::Name(std::wstring s) {
    Value v(Kind::Name);
    v.data_ = std::make_shared<std::wstring>(std::move(s));
    return v;
}
Value Value::Array(ArrayData items) {
    Value v(Kind::Array);
    v.data_ = std::make_shared<ArrayData>(std::move(items));
    return v;
}
Value Value::Bits(::BitArray bits) {
    Value v(Kind::BitArray);
    v.data_ = std::make_shared<::BitArray>(std::move(bits));
    return v;
}
Value Value::P2(Point2 p) {
    Value v(Kind::Point2);
    v.data_ = p;
    return v;
}
Value Value::P3(Point3 p) {
    Value v(Kind::Point3);
    v.data_ = p;
    return v;
}
Value Value::Col(AColor c) {
    Value v(Kind::Color);
    v.data_ = c;
    return v;
}
Value Value::Matrix(const Matrix3& m) {
    Value v(Kind::Matrix3);
    v.data_ = std::make_shared<Matrix3>(m);
    return v;
}
Value Value::Function(std::shared_ptr<FunctionData> fn) {
    Value v(Kind::Function);
    v.data_ = std::move(fn);
    return v;
}
Value Value::Class(std::shared_ptr<ClassData> cls) {
    Value v(Kind::Class);
    v.data_ = std::move(cls);
    return v;
}
Value Value::Host(Animatable* anim) {
    if (!anim) return Value();
    Value v(Kind::HostObject);
    v.data_ = Animatable::GetHandleByAnim(anim);
    return v;
}
Value Value::MakeInterface(FPInterface* fpi, Animatable* owner) {
    if (!fpi) return Value();
    Value v(Kind::Interface);
    v.data_ = InterfaceRef{fpi, owner ? Animatable::GetHandleByAnim(owner) : AnimHandle(0)};
    return v;
}
Value Value::Ext(std::shared_ptr<ExtObject> obj) {
    if (!obj) return Value();
    Value v(Kind::Ext);
    v.data_ = std::move(obj);
    return v;
}

Animatable* Value::Anim() const { return Animatable::GetAnimByHandle(Handle()); }

const Value* CallArgs::Keyword(std::wstring_view name) const {
    for (const auto& [key, value] : keywords)
        if (EqualsNoCase(key, name)) return &value;
    return nullptr;
}

std::wstring FoldCase(std::wstring_view s) {
    std::wstring out(s);
    for (wchar_t& c : out) c = wchar_t(std::towlower(wint_t(c)));
    return out;
}

bool EqualsNoCase(std::wstring_view a, std::wstring_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::towlower(wint_t(a[i])) != std::towlower(wint_t(b[i]))) return false;
    return true;
}

bool ValuesEqual(const Value& a, const Value& b) {
    if (a.IsNumber() && b.IsNumber()) {
        if (a.Is(Kind::Integer) && b.Is(Kind::Integer)) return a.AsInt() == b.AsInt();
        return a.Number() == b.Number();
    }
    if (a.kind() != b.kind()) return false;
    switch (a.kind()) {
    case Kind::Undefined:
    case Kind::Unsupplied:
    case Kind::Ok: return true;
    case Kind::Bool: return a.AsBool() == b.AsBool();
    case Kind::Time: return a.AsTime() == b.AsTime();
    case Kind::String: return a.Text() == b.Text();
    case Kind::Name: return EqualsNoCase(a.Text(), b.Text());
    case Kind::Array: return &a.Items() == &b.Items();
    case Kind::BitArray: return &a.BitsRef() == &b.BitsRef();
    case Kind::Point2: return a.AsPoint2() == b.AsPoint2();
    case Kind::Point3: return a.AsPoint3() == b.AsPoint3();
    case Kind::Color: return a.AsColor() == b.AsColor();
    case Kind::Matrix3: return a.AsMatrix() == b.AsMatrix();
    case Kind::Function: return a.Fn() == b.Fn();
    case Kind::Class: return a.Cls() == b.Cls();
    case Kind::HostObject: return a.Handle() == b.Handle();
    case Kind::Interface: return a.IfaceRef().fpi == b.IfaceRef().fpi && a.IfaceRef().owner == b.IfaceRef().owner;
    case Kind::Ext: return a.ExtObj() == b.ExtObj();
    case Kind::Integer:
    case Kind::Float: break;
    }
    return false;
}

}  // namespace hostrt::mxs
