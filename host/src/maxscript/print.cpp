// The print and display forms of values.
#include "maxscript/print.h"

#include "core/fnpub.h"
#include "maxscript/registry.h"
#include "maxscript/string_literal.h"
#include "ref.h"

#include <cmath>
#include <cwchar>

namespace hostrt::mxs {

namespace {

std::wstring BitArrayForm(const ::BitArray& bits) {
    std::wstring out = L"#{";
    bool first = true;
    for (int i = 0; i < bits.GetSize();) {
        if (!bits[i]) {
            ++i;
            continue;
        }
        int j = i;
        while (j + 1 < bits.GetSize() && bits[j + 1]) ++j;
        if (!first) out += L", ";
        first = false;
        out += std::to_wstring(i + 1);
        if (j > i) out += L".." + std::to_wstring(j + 1);
        i = j + 1;
    }
    return out + L"}";
}

std::wstring PointForm(std::initializer_list<float> components) {
    std::wstring out = L"[";
    bool first = true;
    for (float c : components) {
        if (!first) out += L",";
        first = false;
        out += FormatComponent(c);
    }
    return out + L"]";
}

std::wstring HostObjectForm(const Value& v) {
    Animatable* anim = v.Anim();
    if (!anim) return L"<deleted scene object>";
    for (const HostObjectHandler* h : HostObjectHandlers()) {
        if (!h->describe || (h->accepts && !h->accepts(anim))) continue;
        if (auto text = h->describe(anim)) return *text;
    }
    return L"ReferenceTarget:" + anim->ClassName().str();
}

std::wstring InterfaceForm(const InterfaceRef& ref) {
    const std::wstring name = hostrt::FPInterfaceName(ref.fpi).str();
    return ref.owner ? L"<MixinInterface:" + name + L">" : L"<Interface:" + name + L">";
}

std::wstring Form(const Value& v, bool print) {
    switch (v.kind()) {
    case Kind::Undefined: return L"undefined";
    case Kind::Unsupplied: return L"unsupplied";
    case Kind::Ok: return L"OK";
    case Kind::Bool: return v.AsBool() ? L"true" : L"false";
    case Kind::Integer: return std::to_wstring(v.AsInt());
    case Kind::Float: return FormatFloat(v.AsFloat());
    case Kind::Time: return FormatTime(v.AsTime());
    case Kind::String: return print ? MaxScriptStringLiteral(v.Text()) : v.Text();
    case Kind::Name: return print ? L"#" + v.Text() : v.Text();
    case Kind::Array: {
        std::wstring out = L"#(";
        bool first = true;
        for (const Value& item : v.Items()) {
            if (!first) out += L", ";
            first = false;
            out += Form(item, true);
        }
        return out + L")";
    }
    case Kind::BitArray: return BitArrayForm(v.BitsRef());
    case Kind::Point2: return PointForm({v.AsPoint2().x, v.AsPoint2().y});
    case Kind::Point3: return PointForm({v.AsPoint3().x, v.AsPoint3().y, v.AsPoint3().z});
    case Kind::Color: {
        const AColor& c = v.AsColor();
        std::wstring out = L"(color " + FormatComponent(c.r) + L" " + FormatComponent(c.g) + L" " +
                           FormatComponent(c.b);
        if (c.a != 255.f) out += L" " + FormatComponent(c.a);
        return out + L")";
    }
    case Kind::Matrix3: {
        const Matrix3& m = v.AsMatrix();
        std::wstring out = L"(matrix3";
        for (int r = 0; r < 4; ++r) out += L" " + PointForm({m.m[r][0], m.m[r][1], m.m[r][2]});
        return out + L")";
    }
    case Kind::Function: return v.Fn()->name + L"()";
    case Kind::Class: return v.Cls()->name;
    case Kind::HostObject: return HostObjectForm(v);
    case Kind::Interface: return InterfaceForm(v.IfaceRef());
    case Kind::Ext: return v.ExtObj()->Describe();
    }
    return L"?";
}

}  // namespace

std::wstring PrintForm(const Value& v) { return Form(v, true); }
std::wstring DisplayForm(const Value& v) { return Form(v, false); }

std::wstring FormatFloat(double f) {
    std::wstring text = FormatComponent(f);
    if (std::isfinite(f) && text.find_first_of(L".e") == std::wstring::npos) text += L".0";
    return text;
}

std::wstring FormatComponent(double f) {
    if (std::isnan(f)) return L"nan";
    if (std::isinf(f)) return f < 0 ? L"-inf" : L"inf";
    wchar_t buf[64];
    std::swprintf(buf, 64, L"%g", f);
    std::wstring text = buf;
    if (text == L"-0") text = L"0";
    return text;
}

std::wstring FormatTime(TimeValue ticks) {
    const double frames = double(ticks) / GetTicksPerFrame();
    return FormatComponent(frames) + L"f";
}

std::wstring ClassNameOf(const Value& v) {
    switch (v.kind()) {
    case Kind::Undefined: return L"UndefinedClass";
    case Kind::Unsupplied: return L"UnsuppliedClass";
    case Kind::Ok: return L"OkClass";
    case Kind::Bool: return L"BooleanClass";
    case Kind::Integer: return L"Integer";
    case Kind::Float: return L"Float";
    case Kind::Time: return L"Time";
    case Kind::String: return L"String";
    case Kind::Name: return L"Name";
    case Kind::Array: return L"Array";
    case Kind::BitArray: return L"BitArray";
    case Kind::Point2: return L"Point2";
    case Kind::Point3: return L"Point3";
    case Kind::Color: return L"Color";
    case Kind::Matrix3: return L"Matrix3";
    case Kind::Function: return L"MAXScriptFunction";
    case Kind::Class: return L"Class";
    case Kind::HostObject: {
        Animatable* anim = v.Anim();
        if (!anim) return L"ReferenceTarget";
        for (const HostObjectHandler* h : HostObjectHandlers()) {
            if (!h->classOf || (h->accepts && !h->accepts(anim))) continue;
            if (auto cls = h->classOf(anim); cls && cls->Is(Kind::Class)) return cls->Cls()->name;
        }
        return anim->ClassName().str();
    }
    case Kind::Interface: return v.IfaceRef().owner ? L"MixinInterface" : L"Interface";
    case Kind::Ext: return v.ExtObj()->ClassName();
    }
    return L"Value";
}

}  // namespace hostrt::mxs
