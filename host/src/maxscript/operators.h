// The arithmetic and comparison operators on values: numbers (32-bit integers wrap, integer division
// truncates), strings, times, points, colours, matrices and bit arrays.
#pragma once

#include "maxscript/value.h"

#include <string>

namespace hostrt::mxs {

// op is one of + - * / ^; throws "No ""op"" function for x" when the operands do not fit.
Value Arithmetic(const std::wstring& op, const Value& a, const Value& b);
Value Negate(const Value& v);
// op is one of < <= > >=. Numbers, times and strings (strings without regard to case first).
bool Compare(const std::wstring& op, const Value& a, const Value& b);
// Ordering for sort: negative, zero or positive; throws for values that do not order.
int Order(const Value& a, const Value& b);

}  // namespace hostrt::mxs
