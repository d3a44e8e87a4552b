// The `bit` functions on 32-bit integers: and, or, xor, not, shift, get, set, flip, and the conversions
// intAsHex, hexAsInt, intAsChar, charAsInt. Bit numbers count from 1 (the lowest bit).
#include "maxscript/builtins.h"

#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/print.h"

#include <cstdint>
#include <cwchar>

namespace hostrt::mxs {

namespace {

std::uint32_t Bits(const Value& v) { return std::uint32_t(ToInt(v)); }
Value Int(std::uint32_t bits) { return Value::Int(int(std::int32_t(bits))); }

int BitNumber(const std::wstring& fn, const Value& v) {
    const int n = ToInt(v);
    if (n < 1 || n > 32) throw RuntimeError(fn + L": bit number must be 1 to 32, got: " + PrintForm(v));
    return n;
}

NativeFn Binary(const std::wstring& name, std::uint32_t (*op)(std::uint32_t, std::uint32_t)) {
    return [name, op](CallContext&, CallArgs& args) {
        CheckArgCount(name, args, 2);
        return Int(op(Bits(args.positional[0]), Bits(args.positional[1])));
    };
}

}  // namespace

void RegisterBitBuiltins() {
    RegisterFunctionSet(L"bit", {
        {L"and", Binary(L"bit.and", [](std::uint32_t a, std::uint32_t b) { return a & b; })},
        {L"or", Binary(L"bit.or", [](std::uint32_t a, std::uint32_t b) { return a | b; })},
        {L"xor", Binary(L"bit.xor", [](std::uint32_t a, std::uint32_t b) { return a ^ b; })},
        {L"not", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"bit.not", args, 1);
             return Int(~Bits(args.positional[0]));
         }},
        // A positive count shifts left, a negative one right (without the sign).
        {L"shift", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"bit.shift", args, 2);
             const std::uint32_t v = Bits(args.positional[0]);
             const int by = ToInt(args.positional[1]);
             if (by >= 32 || by <= -32) return Value::Int(0);
             return Int(by >= 0 ? v << by : v >> -by);
         }},
        {L"get", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"bit.get", args, 2);
             const int n = BitNumber(L"bit.get", args.positional[1]);
             return Value::Bool(((Bits(args.positional[0]) >> (n - 1)) & 1u) != 0);
         }},
        {L"set", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"bit.set", args, 3);
             const int n = BitNumber(L"bit.set", args.positional[1]);
             const std::uint32_t mask = 1u << (n - 1);
             const std::uint32_t v = Bits(args.positional[0]);
             return Int(ToBool(args.positional[2]) ? v | mask : v & ~mask);
         }},
        {L"flip", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"bit.flip", args, 2);
             const int n = BitNumber(L"bit.flip", args.positional[1]);
             return Int(Bits(args.positional[0]) ^ (1u << (n - 1)));
         }},
        {L"intAsHex", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"bit.intAsHex", args, 1);
             wchar_t buf[16];
             std::swprintf(buf, 16, L"%x", unsigned(Bits(args.positional[0])));
             return Value::String(buf);
         }},
        {L"hexAsInt", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"bit.hexAsInt", args, 1);
             const std::wstring text = ToText(args.positional[0]);
             wchar_t* end = nullptr;
             const unsigned long v = std::wcstoul(text.c_str(), &end, 16);
             if (text.empty() || (end && *end)) return Value::Undefined();
             return Int(std::uint32_t(v));
         }},
        {L"intAsChar", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"bit.intAsChar", args, 1);
             return Value::String(std::wstring(1, wchar_t(ToInt(args.positional[0]))));
         }},
        {L"charAsInt", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"bit.charAsInt", args, 1);
             const std::wstring text = ToText(args.positional[0]);
             if (text.empty()) throw RuntimeError(L"bit.charAsInt needs a character, got: \"\"");
             return Value::Int(int(text[0]));
         }},
    });
}

}  // namespace hostrt::mxs
