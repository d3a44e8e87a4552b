// Conversions between values: what a function expecting a number, a string or a boolean accepts, and the
// `as` operator (`"12" as integer`, `5 as string`, `"abc" as integer` → undefined).
#pragma once

#include "maxscript/value.h"

#include <functional>
#include <optional>
#include <string>

namespace hostrt::mxs {

// Each throws the MAXScript conversion error ("Unable to convert: x to type: Integer") when it cannot.
bool ToBool(const Value& v);
int ToInt(const Value& v);
float ToFloat(const Value& v);
// Strings and names.
std::wstring ToText(const Value& v);
Point3 ToPoint3(const Value& v);
// A time: integers and floats count frames.
TimeValue ToTime(const Value& v);
// A bit array, or an array of positive integers (1-based bit numbers) made into one.
Value ToBitArray(const Value& v);

// Parses numeric text as MAXScript numbers are written (blanks around, a sign, decimals, exponent);
// nullopt when the text is not a number.
std::optional<double> ParseNumber(const std::wstring& text);

// `v as cls`; cls is a class value.
Value ConvertAs(CallContext& ctx, const Value& v, const Value& cls);

// A conversion `as` knows besides the built-in ones, for one target class (named without regard to case):
// it answers the converted value, or nullopt when it does not convert v.
using Conversion = std::function<std::optional<Value>(CallContext&, const Value&)>;
void RegisterConversion(const std::wstring& className, Conversion convert);

}  // namespace hostrt::mxs
