// String built-ins: findString, substring, filterString, toUpper, toLower, matchPattern, substituteString,
// trimLeft, trimRight, stricmp, replace, formattedPrint, and `"text" as stringStream`.
#include "maxscript/builtins.h"

#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"

#include <cwchar>
#include <cwctype>

namespace hostrt::mxs {

namespace {

std::wstring Arg(const CallArgs& args, std::size_t i) { return ToText(args.positional[i]); }

bool KeywordBool(const CallArgs& args, const wchar_t* name, bool fallback) {
    const Value* v = args.Keyword(name);
    return v ? ToBool(*v) : fallback;
}

std::wstring Trim(const std::wstring& s, const std::wstring& chars, bool left) {
    if (left) {
        const std::size_t b = s.find_first_not_of(chars);
        return b == std::wstring::npos ? std::wstring() : s.substr(b);
    }
    const std::size_t e = s.find_last_not_of(chars);
    return e == std::wstring::npos ? std::wstring() : s.substr(0, e + 1);
}

// A printf conversion as formattedPrint takes it: "[flags][width][.precision][size]type", with or without
// its '%'. The size prefix is read and dropped; nullopt for anything else.
struct PrintfConversion {
    std::wstring head;  // "%" with flags, width and precision
    wchar_t type = L'g';
    bool integral() const { return std::wstring_view(L"diouxXc").find(type) != std::wstring_view::npos; }
};

std::optional<PrintfConversion> ParseConversion(const std::wstring& format) {
    std::size_t i = format.rfind(L'%', 0) == 0 ? 1 : 0;
    PrintfConversion conv;
    conv.head = L"%";
    while (i < format.size() && std::wstring_view(L"-+ #0").find(format[i]) != std::wstring_view::npos)
        conv.head += format[i++];
    while (i < format.size() && std::iswdigit(wint_t(format[i]))) conv.head += format[i++];
    if (i < format.size() && format[i] == L'.') {
        conv.head += format[i++];
        while (i < format.size() && std::iswdigit(wint_t(format[i]))) conv.head += format[i++];
    }
    for (const wchar_t* size : {L"I64", L"I32", L"ll", L"hh", L"l", L"h", L"L", L"I"})
        if (format.compare(i, std::wcslen(size), size) == 0) {
            i += std::wcslen(size);
            break;
        }
    if (i + 1 != format.size() || std::wstring_view(L"diouxXeEfgGaAcs").find(format[i]) == std::wstring_view::npos)
        return std::nullopt;
    conv.type = format[i];
    return conv;
}

std::wstring FormatNumber(const PrintfConversion& conv, double v, bool isInteger) {
    wchar_t buf[512];
    const std::wstring fmt = conv.head + (conv.integral() ? std::wstring(L"ll") : std::wstring()) + conv.type;
    if (conv.type == L's') {
        const std::wstring text = isInteger ? std::to_wstring((long long)v) : FormatFloat(v);
        std::swprintf(buf, 512, (conv.head + L"ls").c_str(), text.c_str());
    } else if (conv.integral()) {
        if (conv.type == L'c') std::swprintf(buf, 512, (conv.head + L"lc").c_str(), wint_t((long long)v));
        else std::swprintf(buf, 512, fmt.c_str(), (long long)v);
    } else {
        std::swprintf(buf, 512, fmt.c_str(), v);
    }
    return buf;
}

// formattedPrint <value> format:<string>: each number of the value in the format; floats default to
// "0.8g" and integers to "d".
std::wstring FormattedPrint(const Value& v, const std::optional<std::wstring>& format) {
    auto conv = [&](bool integer) {
        const std::wstring f = format ? *format : (integer ? L"d" : L"0.8g");
        auto parsed = ParseConversion(f);
        if (!parsed) throw RuntimeError(L"formattedPrint: cannot format with \"" + f + L"\"");
        return *parsed;
    };
    auto number = [&](double x, bool integer) { return FormatNumber(conv(integer), x, integer); };
    auto components = [&](std::initializer_list<float> cs, const wchar_t* open, const wchar_t* sep, const wchar_t* close) {
        std::wstring out = open;
        bool first = true;
        for (float c : cs) {
            if (!first) out += sep;
            first = false;
            out += number(c, false);
        }
        return out + close;
    };
    switch (v.kind()) {
    case Kind::Integer: return number(v.AsInt(), true);
    case Kind::Float: return number(v.AsFloat(), false);
    case Kind::Time: return number(double(v.AsTime()) / GetTicksPerFrame(), false) + L"f";
    case Kind::Bool: {
        PrintfConversion s = conv(false);
        s.type = L's';
        wchar_t buf[64];
        std::swprintf(buf, 64, (s.head + L"ls").c_str(), v.AsBool() ? L"true" : L"false");
        return buf;
    }
    case Kind::String: {
        wchar_t buf[4096];
        const PrintfConversion s = format ? conv(false) : PrintfConversion{L"%", L's'};
        std::swprintf(buf, 4096, (s.head + L"ls").c_str(), v.Text().c_str());
        return buf;
    }
    case Kind::Point2: return components({v.AsPoint2().x, v.AsPoint2().y}, L"[", L",", L"]");
    case Kind::Point3: return components({v.AsPoint3().x, v.AsPoint3().y, v.AsPoint3().z}, L"[", L",", L"]");
    case Kind::Color: {
        const AColor& c = v.AsColor();
        return components({c.r, c.g, c.b, c.a}, L"(color ", L" ", L")");
    }
    case Kind::Matrix3: {
        const Matrix3& m = v.AsMatrix();
        std::wstring out = L"(matrix3";
        for (int r = 0; r < 4; ++r) out += L" " + components({m.m[r][0], m.m[r][1], m.m[r][2]}, L"[", L",", L"]");
        return out + L")";
    }
    default: break;
    }
    throw ConversionError(v, L"Number");
}

}  // namespace

bool WildcardMatch(std::wstring_view text, std::wstring_view pattern, bool ignoreCase) {
    auto same = [ignoreCase](wchar_t a, wchar_t b) {
        return ignoreCase ? std::towlower(wint_t(a)) == std::towlower(wint_t(b)) : a == b;
    };
    std::size_t t = 0, p = 0, starP = std::wstring_view::npos, starT = 0;
    while (t < text.size()) {
        if (p < pattern.size() && (pattern[p] == L'?' || (pattern[p] != L'*' && same(pattern[p], text[t])))) {
            ++t;
            ++p;
        } else if (p < pattern.size() && pattern[p] == L'*') {
            starP = p++;
            starT = t;
        } else if (starP != std::wstring_view::npos) {
            p = starP + 1;
            t = ++starT;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == L'*') ++p;
    return p == pattern.size();
}

void RegisterStringBuiltins() {
    RegisterGlobalFunction(L"findString", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"findString", args, 2);
        const std::size_t at = Arg(args, 0).find(Arg(args, 1));
        return at == std::wstring::npos ? Value::Undefined() : Value::Int(int(at) + 1);
    });
    RegisterGlobalFunction(L"substring", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"substring", args, 3);
        const std::wstring s = Arg(args, 0);
        const int start = ToInt(args.positional[1]);
        const int count = ToInt(args.positional[2]);
        if (start < 1) throw RuntimeError(L"substring start must be positive number, got: " + std::to_wstring(start));
        if (std::size_t(start) > s.size()) return Value::String(L"");
        return Value::String(s.substr(std::size_t(start - 1), count < 0 ? std::wstring::npos : std::size_t(count)));
    });
    RegisterGlobalFunction(L"filterString", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"filterString", args, 2);
        const std::wstring s = Arg(args, 0);
        const std::wstring separators = Arg(args, 1);
        const bool keepEmpty = KeywordBool(args, L"splitEmptyTokens", false);
        ArrayData parts;
        std::wstring token;
        for (wchar_t c : s) {
            if (separators.find(c) == std::wstring::npos) {
                token += c;
                continue;
            }
            if (!token.empty() || keepEmpty) parts.push_back(Value::String(token));
            token.clear();
        }
        if (!token.empty() || (keepEmpty && !s.empty())) parts.push_back(Value::String(token));
        return Value::Array(std::move(parts));
    });
    RegisterGlobalFunction(L"toUpper", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"toUpper", args, 1);
        std::wstring s = Arg(args, 0);
        for (wchar_t& c : s) c = wchar_t(std::towupper(wint_t(c)));
        return Value::String(std::move(s));
    });
    RegisterGlobalFunction(L"toLower", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"toLower", args, 1);
        return Value::String(FoldCase(Arg(args, 0)));
    });
    RegisterGlobalFunction(L"matchPattern", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"matchPattern", args, 1);
        const Value* pattern = args.Keyword(L"pattern");
        if (!pattern) throw RuntimeError(L"matchPattern needs the keyword argument pattern:");
        return Value::Bool(WildcardMatch(Arg(args, 0), ToText(*pattern), KeywordBool(args, L"ignoreCase", true)));
    });
    RegisterGlobalFunction(L"substituteString", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"substituteString", args, 3);
        std::wstring s = Arg(args, 0);
        const std::wstring from = Arg(args, 1), to = Arg(args, 2);
        if (from.empty()) return Value::String(std::move(s));
        for (std::size_t at = s.find(from); at != std::wstring::npos; at = s.find(from, at + to.size()))
            s.replace(at, from.size(), to);
        return Value::String(std::move(s));
    });
    // stricmp: the order of two strings without regard to case (negative, 0, positive), as sort functions want.
    RegisterGlobalFunction(L"stricmp", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"stricmp", args, 2);
        const std::wstring a = FoldCase(Arg(args, 0)), b = FoldCase(Arg(args, 1));
        return Value::Int(a < b ? -1 : a > b ? 1 : 0);
    });
    RegisterGlobalFunction(L"replace", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"replace", args, 4);
        std::wstring s = Arg(args, 0);
        const int from = ToInt(args.positional[1]);
        const int count = ToInt(args.positional[2]);
        if (from < 1 || from > int(s.size()) + 1 || count < 0)
            throw RuntimeError(L"replace: position " + std::to_wstring(from) + L" and length " + std::to_wstring(count) +
                               L" are outside " + PrintForm(args.positional[0]));
        s.replace(std::size_t(from - 1), std::size_t(count), Arg(args, 3));
        return Value::String(std::move(s));
    });
    RegisterGlobalFunction(L"formattedPrint", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"formattedPrint", args, 1);
        const Value* format = args.Keyword(L"format");
        return Value::String(FormattedPrint(args.positional[0], format ? std::optional(ToText(*format)) : std::nullopt));
    });
    // `"text" as stringStream`: a string stream holding the text.
    RegisterClass(L"StringStream", L"Value");
    RegisterConversion(L"StringStream", [](CallContext& ctx, const Value& v) -> std::optional<Value> {
        if (!v.Is(Kind::String)) return std::nullopt;
        auto make = FindGlobalFunction(L"stringStream");
        if (!make) return std::nullopt;
        CallArgs args;
        args.positional.push_back(v);
        return ctx.interp.Call(*make, args);
    });
    for (const bool left : {true, false}) {
        const std::wstring name = left ? L"trimLeft" : L"trimRight";
        RegisterGlobalFunction(name, [left, name](CallContext&, CallArgs& args) {
            CheckArgCount(name, args, 1, 2);
            const std::wstring chars = args.positional.size() == 2 ? Arg(args, 1) : std::wstring(L" \t\r\n");
            return Value::String(Trim(Arg(args, 0), chars, left));
        });
    }
}

}  // namespace hostrt::mxs
