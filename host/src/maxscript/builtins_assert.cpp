// Test assertions: assert_true, assert_false, assert_equal, assert_defined, assert_undefined,
// assert_string_equal. A failed assertion prints what was expected and what came, with where, to the
// listener, counts as a failure of the run and answers false; the script goes on.
#include "maxscript/builtins.h"

#include "maxscript/convert.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"

namespace hostrt::mxs {

namespace {

// Equality for assertions: arrays and bit arrays by content, everything else as `==` compares.
bool DeepEqual(const Value& a, const Value& b) {
    if (a.Is(Kind::Array) && b.Is(Kind::Array)) {
        const ArrayData& x = a.Items();
        const ArrayData& y = b.Items();
        if (x.size() != y.size()) return false;
        for (std::size_t i = 0; i < x.size(); ++i)
            if (!DeepEqual(x[i], y[i])) return false;
        return true;
    }
    if (a.Is(Kind::BitArray) && b.Is(Kind::BitArray)) {
        const int n = std::max(a.BitsRef().GetSize(), b.BitsRef().GetSize());
        for (int i = 0; i < n; ++i)
            if (a.BitsRef()[i] != b.BitsRef()[i]) return false;
        return true;
    }
    return ValuesEqual(a, b);
}

Value Record(CallContext& ctx, const CallArgs& args, const std::wstring& name, bool passed,
             const std::wstring& expected, const std::wstring& actual) {
    std::wstring text;
    if (!passed) {
        const std::wstring& source = ctx.interp.SourceName();
        text = L"-- Assert failed in " + (source.empty() ? std::wstring(L"script") : source) + L", line " +
               std::to_wstring(ctx.line) + L": " + name + L"\n--   expected: " + expected + L"\n--   actual:   " +
               actual;
        if (const Value* message = args.Keyword(L"message")) text += L"\n--   message:  " + DisplayForm(*message);
    }
    ctx.interp.RecordAssertion(passed, text);
    return Value::Bool(passed);
}

void RegisterTruth(const wchar_t* name, bool wanted) {
    const std::wstring n = name;
    RegisterGlobalFunction(n, [n, wanted](CallContext& ctx, CallArgs& args) {
        CheckArgCount(n, args, 1);
        const Value& v = args.positional[0];
        const bool passed = v.Is(Kind::Bool) && v.AsBool() == wanted;
        return Record(ctx, args, n, passed, wanted ? L"true" : L"false", PrintForm(v));
    });
}

void RegisterDefinedness(const wchar_t* name, bool wantDefined) {
    const std::wstring n = name;
    RegisterGlobalFunction(n, [n, wantDefined](CallContext& ctx, CallArgs& args) {
        CheckArgCount(n, args, 1);
        const Value& v = args.positional[0];
        const bool passed = v.IsUndefined() != wantDefined;
        return Record(ctx, args, n, passed, wantDefined ? L"a defined value" : L"undefined", PrintForm(v));
    });
}

}  // namespace

void RegisterAssertBuiltins() {
    RegisterTruth(L"assert_true", true);
    RegisterTruth(L"assert_false", false);
    RegisterDefinedness(L"assert_defined", true);
    RegisterDefinedness(L"assert_undefined", false);
    RegisterGlobalFunction(L"assert_equal", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"assert_equal", args, 2);
        const Value& expected = args.positional[0];
        const Value& actual = args.positional[1];
        return Record(ctx, args, L"assert_equal", DeepEqual(expected, actual), PrintForm(expected), PrintForm(actual));
    });
    RegisterGlobalFunction(L"assert_string_equal", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"assert_string_equal", args, 2);
        const std::wstring expected = ToText(args.positional[0]);
        const std::wstring actual = ToText(args.positional[1]);
        const Value* ignoreCase = args.Keyword(L"ignoreCase");
        const bool passed = ignoreCase && ToBool(*ignoreCase) ? EqualsNoCase(expected, actual) : expected == actual;
        return Record(ctx, args, L"assert_string_equal", passed, PrintForm(args.positional[0]),
                      PrintForm(args.positional[1]));
    });
}

}  // namespace hostrt::mxs
