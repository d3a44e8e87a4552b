// Number built-ins: abs, amax, amin, random, seed, timeStamp, sqrt, floor, ceil, mod, the trigonometric
// functions (in degrees, as MAXScript takes angles), exp, log, log10 and pi.
#include "maxscript/builtins.h"

#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/operators.h"

#include <chrono>
#include <cmath>
#include <ctime>
#include <memory>

namespace hostrt::mxs {

namespace {

// amax/amin: the extreme of the arguments, or of the one array given; undefined when there is none.
Value Extreme(const std::wstring& name, CallArgs& args, bool largest) {
    if (args.positional.empty()) throw ArgCountRangeError(name, 1, 1 << 20, 0);
    const ArrayData items = args.positional.size() == 1 && args.positional[0].Is(Kind::Array)
                                ? args.positional[0].Items()
                                : args.positional;
    if (items.empty()) return Value::Undefined();
    Value best = items.front();
    for (const Value& v : items) {
        const int order = Order(v, best);
        if (largest ? order > 0 : order < 0) best = v;
    }
    return best;
}

float RandomFloat(std::mt19937& gen, float a, float b) {
    if (a > b) std::swap(a, b);
    return std::uniform_real_distribution<float>(a, std::nextafter(b, b + 1.f))(gen);
}

Value Random(CallContext& ctx, CallArgs& args) {
    CheckArgCount(L"random", args, 2);
    const Value& a = args.positional[0];
    const Value& b = args.positional[1];
    std::mt19937& gen = ctx.interp.Random();
    if (a.Is(Kind::Integer) && b.Is(Kind::Integer)) {
        const int lo = std::min(a.AsInt(), b.AsInt()), hi = std::max(a.AsInt(), b.AsInt());
        return Value::Int(std::uniform_int_distribution<int>(lo, hi)(gen));
    }
    if (a.IsNumber() && b.IsNumber()) return Value::Float(RandomFloat(gen, ToFloat(a), ToFloat(b)));
    if (a.Is(Kind::Point3) && b.Is(Kind::Point3)) {
        const Point3 p = a.AsPoint3(), q = b.AsPoint3();
        const float x = RandomFloat(gen, p.x, q.x);
        const float y = RandomFloat(gen, p.y, q.y);
        const float z = RandomFloat(gen, p.z, q.z);
        return Value::P3(Point3(x, y, z));
    }
    if (a.Is(Kind::Color) && b.Is(Kind::Color)) {
        const AColor p = a.AsColor(), q = b.AsColor();
        const float r = RandomFloat(gen, p.r, q.r);
        const float g = RandomFloat(gen, p.g, q.g);
        const float bl = RandomFloat(gen, p.b, q.b);
        return Value::Col(AColor(r, g, bl, 255.f));
    }
    if (a.Is(Kind::Time) || b.Is(Kind::Time)) {
        const TimeValue lo = std::min(ToTime(a), ToTime(b)), hi = std::max(ToTime(a), ToTime(b));
        return Value::Time(std::uniform_int_distribution<int>(lo, hi)(gen));
    }
    throw NoMethodError(L"random", a);
}

Value TimeStamp(CallContext&, CallArgs& args) {
    CheckArgCount(L"timeStamp", args, 0);
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    localtime_r(&seconds, &local);
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    return Value::Int(int(((local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec) * 1000 + ms));
}

// A float function of one number.
void Unary(const wchar_t* name, double (*fn)(double)) {
    const std::wstring n = name;
    RegisterGlobalFunction(n, [n, fn](CallContext&, CallArgs& args) {
        CheckArgCount(n, args, 1);
        return Value::Float(float(fn(double(ToFloat(args.positional[0])))));
    });
}

}  // namespace

void RegisterMathBuiltins() {
    RegisterGlobalFunction(L"abs", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"abs", args, 1);
        const Value& v = args.positional[0];
        if (v.Is(Kind::Integer)) return v.AsInt() < 0 ? Negate(v) : v;
        if (v.Is(Kind::Time)) return Value::Time(std::abs(v.AsTime()));
        return Value::Float(std::fabs(ToFloat(v)));
    });
    RegisterGlobalFunction(L"amax", [](CallContext&, CallArgs& args) { return Extreme(L"amax", args, true); });
    RegisterGlobalFunction(L"amin", [](CallContext&, CallArgs& args) { return Extreme(L"amin", args, false); });
    RegisterGlobalFunction(L"random", Random);
    RegisterGlobalFunction(L"seed", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"seed", args, 1);
        ctx.interp.Random().seed(std::uint32_t(ToInt(args.positional[0])));
        return Value::Ok();
    });
    RegisterGlobalFunction(L"timeStamp", TimeStamp);
    Unary(L"sqrt", [](double x) { return std::sqrt(x); });
    Unary(L"floor", [](double x) { return std::floor(x); });
    Unary(L"ceil", [](double x) { return std::ceil(x); });
    constexpr double kDegrees = 180.0 / 3.14159265358979323846;
    Unary(L"sin", [](double x) { return std::sin(x / kDegrees); });
    Unary(L"cos", [](double x) { return std::cos(x / kDegrees); });
    Unary(L"tan", [](double x) { return std::tan(x / kDegrees); });
    Unary(L"asin", [](double x) { return std::asin(x) * kDegrees; });
    Unary(L"acos", [](double x) { return std::acos(x) * kDegrees; });
    Unary(L"atan", [](double x) { return std::atan(x) * kDegrees; });
    Unary(L"exp", [](double x) { return std::exp(x); });
    Unary(L"log", [](double x) { return std::log(x); });
    Unary(L"log10", [](double x) { return std::log10(x); });
    Unary(L"degToRad", [](double x) { return x / kDegrees; });
    Unary(L"radToDeg", [](double x) { return x * kDegrees; });
    RegisterGlobalFunction(L"atan2", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"atan2", args, 2);
        return Value::Float(float(std::atan2(double(ToFloat(args.positional[0])), double(ToFloat(args.positional[1]))) *
                                  kDegrees));
    });
    // pi is a global a script may assign, as MAXScript's is.
    auto pi = std::make_shared<Value>(Value::Float(3.14159265f));
    RegisterSystemVariable(L"pi", {[pi] { return *pi; }, [pi](const Value& v) { *pi = v; }});
    RegisterGlobalFunction(L"mod", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"mod", args, 2);
        const float b = ToFloat(args.positional[1]);
        if (b == 0) throw RuntimeError(L"mod by zero");
        return Value::Float(std::fmod(ToFloat(args.positional[0]), b));
    });
}

}  // namespace hostrt::mxs
