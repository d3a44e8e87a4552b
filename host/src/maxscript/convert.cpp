// Value conversions and the `as` operator.
#include "maxscript/convert.h"

#include "maxscript/errors.h"
#include "maxscript/print.h"

#include <cmath>
#include <cwctype>
#include <unordered_map>
#include <vector>

namespace hostrt::mxs {

bool ToBool(const Value& v) {
    if (v.Is(Kind::Bool)) return v.AsBool();
    throw ConversionError(v, L"Boolean");
}

int ToInt(const Value& v) {
    switch (v.kind()) {
    case Kind::Integer: return v.AsInt();
    case Kind::Float:
        if (!std::isfinite(v.AsFloat())) break;
        return int(v.AsFloat());
    case Kind::Time: return v.AsTime() / GetTicksPerFrame();
    default: break;
    }
    throw ConversionError(v, L"Integer");
}

float ToFloat(const Value& v) {
    switch (v.kind()) {
    case Kind::Integer: return float(v.AsInt());
    case Kind::Float: return v.AsFloat();
    case Kind::Time: return float(v.AsTime()) / GetTicksPerFrame();
    default: break;
    }
    throw ConversionError(v, L"Float");
}

std::wstring ToText(const Value& v) {
    if (v.Is(Kind::String) || v.Is(Kind::Name)) return v.Text();
    throw ConversionError(v, L"String");
}

Point3 ToPoint3(const Value& v) {
    if (v.Is(Kind::Point3)) return v.AsPoint3();
    if (v.Is(Kind::Color)) return Point3(v.AsColor().r, v.AsColor().g, v.AsColor().b);
    throw ConversionError(v, L"Point3");
}

TimeValue ToTime(const Value& v) {
    switch (v.kind()) {
    case Kind::Time: return v.AsTime();
    case Kind::Integer: return v.AsInt() * GetTicksPerFrame();
    case Kind::Float: return TimeValue(std::lround(double(v.AsFloat()) * GetTicksPerFrame()));
    default: break;
    }
    throw ConversionError(v, L"Time");
}

std::optional<double> ParseNumber(const std::wstring& text) {
    std::size_t b = 0, e = text.size();
    while (b < e && std::iswspace(wint_t(text[b]))) ++b;
    while (e > b && std::iswspace(wint_t(text[e - 1]))) --e;
    const std::wstring body = text.substr(b, e - b);
    if (body.empty()) return std::nullopt;
    std::size_t i = 0;
    if (body[i] == L'+' || body[i] == L'-') ++i;
    bool digits = false;
    while (i < body.size() && std::iswdigit(wint_t(body[i]))) {
        ++i;
        digits = true;
    }
    if (i < body.size() && body[i] == L'.') {
        ++i;
        while (i < body.size() && std::iswdigit(wint_t(body[i]))) {
            ++i;
            digits = true;
        }
    }
    if (!digits) return std::nullopt;
    if (i < body.size() && (body[i] == L'e' || body[i] == L'E')) {
        std::size_t j = i + 1;
        if (j < body.size() && (body[j] == L'+' || body[j] == L'-')) ++j;
        if (j < body.size() && std::iswdigit(wint_t(body[j]))) {
            while (j < body.size() && std::iswdigit(wint_t(body[j]))) ++j;
            i = j;
        }
    }
    if (i != body.size()) return std::nullopt;
    return std::wcstod(body.c_str(), nullptr);
}

namespace {

Value ToArray(CallContext& ctx, const Value& v) {
    switch (v.kind()) {
    case Kind::Array: return Value::Array(v.Items());
    case Kind::BitArray: {
        ArrayData items;
        const ::BitArray& bits = v.BitsRef();
        for (int i = 0; i < bits.GetSize(); ++i)
            if (bits[i]) items.push_back(Value::Int(i + 1));
        return Value::Array(std::move(items));
    }
    case Kind::Ext:
        if (auto items = v.ExtObj()->Items(ctx); items)
            return Value::Array(std::move(*items));
        break;
    default: break;
    }
    throw ConversionError(v, L"Array");
}

}  // namespace

Value ToBitArray(const Value& v) {
    if (v.Is(Kind::BitArray)) return Value::Bits(v.BitsRef());
    if (v.Is(Kind::Array)) {
        ::BitArray bits;
        for (const Value& item : v.Items()) {
            const int i = ToInt(item);
            if (i < 1) throw RuntimeError(L"BitArray index must be positive number, got: " + PrintForm(item));
            if (i > bits.GetSize()) bits.SetSize(i, 1);
            bits.Set(i - 1);
        }
        return Value::Bits(std::move(bits));
    }
    throw ConversionError(v, L"BitArray");
}

namespace {

std::unordered_map<std::wstring, std::vector<Conversion>>& Conversions() {
    static std::unordered_map<std::wstring, std::vector<Conversion>> conversions;
    return conversions;
}

}  // namespace

void RegisterConversion(const std::wstring& className, Conversion convert) {
    Conversions()[FoldCase(className)].push_back(std::move(convert));
}

Value ConvertAs(CallContext& ctx, const Value& v, const Value& cls) {
    if (!cls.Is(Kind::Class)) throw TypeError(L"as requires a class, got: " + PrintForm(cls));
    const std::wstring target = FoldCase(cls.Cls()->name);
    if (auto it = Conversions().find(target); it != Conversions().end())
        for (const Conversion& convert : it->second)
            if (auto converted = convert(ctx, v)) return *converted;
    if (target == L"integer") {
        if (v.Is(Kind::String)) {
            const auto n = ParseNumber(v.Text());
            if (!n || !std::isfinite(*n) || std::fabs(*n) >= 2147483648.0) return Value::Undefined();
            return Value::Int(int(*n));
        }
        return Value::Int(ToInt(v));
    }
    if (target == L"float") {
        if (v.Is(Kind::String)) {
            const auto n = ParseNumber(v.Text());
            return n ? Value::Float(float(*n)) : Value::Undefined();
        }
        return Value::Float(ToFloat(v));
    }
    if (target == L"string") {
        if (v.Is(Kind::Ext))
            if (auto text = v.ExtObj()->AsString()) return Value::String(*text);
        return Value::String(DisplayForm(v));
    }
    if (target == L"name") {
        if (v.Is(Kind::String) || v.Is(Kind::Name)) return Value::Name(v.Text());
        throw ConversionError(v, L"Name");
    }
    if (target == L"array") return ToArray(ctx, v);
    if (target == L"bitarray") return ToBitArray(v);
    if (target == L"point3") return Value::P3(ToPoint3(v));
    if (target == L"color") {
        const Point3 p = ToPoint3(v);
        return Value::Col(AColor(p.x, p.y, p.z, 255.f));
    }
    if (target == L"time") return Value::Time(ToTime(v));
    if (target == L"booleanclass") return Value::Bool(ToBool(v));
    if (EqualsNoCase(ClassNameOf(v), cls.Cls()->name)) return v;
    throw ConversionError(v, cls.Cls()->name);
}

}  // namespace hostrt::mxs
