// Arithmetic and comparison.
#include "maxscript/operators.h"

#include "maxscript/convert.h"
#include "maxscript/errors.h"

#include <cmath>
#include <cstdint>

namespace hostrt::mxs {

namespace {

int Wrap(std::int64_t v) { return int(std::int32_t(std::uint32_t(std::uint64_t(v)))); }

Value IntegerOp(wchar_t op, int a, int b) {
    switch (op) {
    case L'+': return Value::Int(Wrap(std::int64_t(a) + b));
    case L'-': return Value::Int(Wrap(std::int64_t(a) - b));
    case L'*': return Value::Int(Wrap(std::int64_t(a) * b));
    case L'/':
        if (b == 0) throw RuntimeError(L"Integer divide by zero");
        return Value::Int(Wrap(std::int64_t(a) / b));
    case L'^': {
        if (b < 0) return Value::Float(float(std::pow(double(a), double(b))));
        std::int64_t r = 1;
        for (int i = 0; i < b && i < 64; ++i) r = std::int64_t(Wrap(r * a));
        return Value::Int(Wrap(r));
    }
    default: break;
    }
    return Value();
}

float FloatOp(wchar_t op, float a, float b) {
    switch (op) {
    case L'+': return a + b;
    case L'-': return a - b;
    case L'*': return a * b;
    case L'/': return a / b;
    case L'^': return float(std::pow(double(a), double(b)));
    default: return 0;
    }
}

Point3 PointOp(wchar_t op, const Point3& a, const Point3& b) {
    return Point3(FloatOp(op, a.x, b.x), FloatOp(op, a.y, b.y), FloatOp(op, a.z, b.z));
}

AColor ColorOp(wchar_t op, const AColor& a, const AColor& b) {
    return AColor(FloatOp(op, a.r, b.r), FloatOp(op, a.g, b.g), FloatOp(op, a.b, b.b), a.a);
}

::BitArray BitOp(wchar_t op, const ::BitArray& a, const ::BitArray& b) {
    const int n = std::max(a.GetSize(), b.GetSize());
    ::BitArray r(n);
    for (int i = 0; i < n; ++i) {
        const bool x = a[i], y = b[i];
        r.Set(i, op == L'+' ? (x || y) : op == L'-' ? (x && !y) : (x && y));
    }
    return r;
}

int CompareText(const std::wstring& a, const std::wstring& b) {
    const int folded = FoldCase(a).compare(FoldCase(b));
    if (folded != 0) return folded;
    return a.compare(b);
}

}  // namespace

Value Arithmetic(const std::wstring& opText, const Value& a, const Value& b) {
    const wchar_t op = opText.empty() ? L'?' : opText[0];
    const auto noMethod = [&]() { return NoMethodError(opText, a); };

    if (a.Is(Kind::Integer) && b.Is(Kind::Integer)) return IntegerOp(op, a.AsInt(), b.AsInt());
    if (a.IsNumber() && b.IsNumber()) return Value::Float(FloatOp(op, ToFloat(a), ToFloat(b)));

    switch (a.kind()) {
    case Kind::String:
        if (op != L'+') throw noMethod();
        if (!b.Is(Kind::String)) throw ConversionError(b, L"String");
        return Value::String(a.Text() + b.Text());
    case Kind::Time:
        if (b.Is(Kind::Time) && (op == L'+' || op == L'-')) return Value::Time(op == L'+' ? a.AsTime() + b.AsTime()
                                                                                          : a.AsTime() - b.AsTime());
        if (b.Is(Kind::Time) && op == L'/') return Value::Float(float(a.AsTime()) / float(b.AsTime()));
        if (b.IsNumber()) {
            if (op == L'+' || op == L'-') {
                const TimeValue t = ToTime(b);
                return Value::Time(op == L'+' ? a.AsTime() + t : a.AsTime() - t);
            }
            if (op == L'*' || op == L'/')
                return Value::Time(TimeValue(std::lround(FloatOp(op, float(a.AsTime()), ToFloat(b)))));
        }
        throw noMethod();
    case Kind::Point3:
        if (b.Is(Kind::Point3)) return Value::P3(PointOp(op, a.AsPoint3(), b.AsPoint3()));
        if (b.IsNumber()) {
            const float f = ToFloat(b);
            return Value::P3(PointOp(op, a.AsPoint3(), Point3(f, f, f)));
        }
        if (b.Is(Kind::Matrix3) && op == L'*') return Value::P3(a.AsPoint3() * b.AsMatrix());
        throw noMethod();
    case Kind::Point2:
        if (b.Is(Kind::Point2))
            return Value::P2(Point2(FloatOp(op, a.AsPoint2().x, b.AsPoint2().x),
                                    FloatOp(op, a.AsPoint2().y, b.AsPoint2().y)));
        if (b.IsNumber())
            return Value::P2(Point2(FloatOp(op, a.AsPoint2().x, ToFloat(b)), FloatOp(op, a.AsPoint2().y, ToFloat(b))));
        throw noMethod();
    case Kind::Color:
        if (b.Is(Kind::Color)) return Value::Col(ColorOp(op, a.AsColor(), b.AsColor()));
        if (b.IsNumber()) {
            const float f = ToFloat(b);
            return Value::Col(ColorOp(op, a.AsColor(), AColor(f, f, f, f)));
        }
        throw noMethod();
    case Kind::Matrix3:
        if (b.Is(Kind::Matrix3) && op == L'*') return Value::Matrix(a.AsMatrix() * b.AsMatrix());
        throw noMethod();
    case Kind::BitArray:
        if (b.Is(Kind::BitArray) && (op == L'+' || op == L'-' || op == L'*'))
            return Value::Bits(BitOp(op, a.BitsRef(), b.BitsRef()));
        throw noMethod();
    case Kind::Integer:
    case Kind::Float:
        if (op == L'*' && (b.Is(Kind::Point3) || b.Is(Kind::Color) || b.Is(Kind::Time) || b.Is(Kind::Point2)))
            return Arithmetic(opText, b, a);
        if (op == L'+' && b.Is(Kind::Time)) return Arithmetic(opText, b, a);
        if (b.Is(Kind::String) || b.Is(Kind::Undefined)) throw ConversionError(b, L"Number");
        throw NoMethodError(opText, b);
    default: break;
    }
    throw noMethod();
}

Value Negate(const Value& v) {
    switch (v.kind()) {
    case Kind::Integer: return Value::Int(Wrap(-std::int64_t(v.AsInt())));
    case Kind::Float: return Value::Float(-v.AsFloat());
    case Kind::Time: return Value::Time(-v.AsTime());
    case Kind::Point3: return Value::P3(-v.AsPoint3());
    case Kind::Point2: return Value::P2(Point2(-v.AsPoint2().x, -v.AsPoint2().y));
    case Kind::Color: {
        const AColor& c = v.AsColor();
        return Value::Col(AColor(-c.r, -c.g, -c.b, c.a));
    }
    default: break;
    }
    throw NoMethodError(L"-", v);
}

int Order(const Value& a, const Value& b) {
    if (a.IsNumber() && b.IsNumber()) {
        if (a.Is(Kind::Integer) && b.Is(Kind::Integer)) return a.AsInt() < b.AsInt() ? -1 : a.AsInt() > b.AsInt();
        const double x = a.Number(), y = b.Number();
        return x < y ? -1 : x > y;
    }
    if (a.Is(Kind::Time) && (b.Is(Kind::Time) || b.IsNumber())) {
        const TimeValue x = a.AsTime(), y = ToTime(b);
        return x < y ? -1 : x > y;
    }
    if (a.IsNumber() && b.Is(Kind::Time)) return -Order(b, a);
    if ((a.Is(Kind::String) && b.Is(Kind::String)) || (a.Is(Kind::Name) && b.Is(Kind::Name)))
        return CompareText(a.Text(), b.Text());
    throw NoMethodError(L"<", a);
}

bool Compare(const std::wstring& op, const Value& a, const Value& b) {
    int order = 0;
    try {
        order = Order(a, b);
    } catch (const ScriptError&) {
        throw NoMethodError(op, a);
    }
    if (op == L"<") return order < 0;
    if (op == L"<=") return order <= 0;
    if (op == L">") return order > 0;
    return order >= 0;
}

}  // namespace hostrt::mxs
