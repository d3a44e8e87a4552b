// How values look as text: the print form (`print`, the listener, arrays: strings quoted, names with '#')
// and the display form (`format`, `as string`: strings and names as they are).
#pragma once

#include "maxscript/value.h"

#include <string>

namespace hostrt::mxs {

std::wstring PrintForm(const Value& v);
std::wstring DisplayForm(const Value& v);

// A float as MAXScript writes it: six significant digits, integral values with ".0" (2.0, 0.333333, 1e+07).
std::wstring FormatFloat(double f);
// A float inside a point or colour: no ".0" for integral values ([1,2.5,0]).
std::wstring FormatComponent(double f);
// A time: frames with "f" (10f, 2.5f).
std::wstring FormatTime(TimeValue ticks);

// The name of the value's class as errors show it ("Integer", "String", "undefined"...).
std::wstring ClassNameOf(const Value& v);

}  // namespace hostrt::mxs
