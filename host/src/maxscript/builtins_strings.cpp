// String built-ins: findString, substring, filterString, toUpper, toLower, matchPattern, substituteString,
// trimLeft, trimRight.
#include "maxscript/builtins.h"

#include "maxscript/convert.h"
#include "maxscript/errors.h"

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
