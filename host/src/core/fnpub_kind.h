// How a function-publishing value type is held in an FPValue (which member, owned or not), and the
// conversions between types that scripts rely on. Shared by the value, description and call code.
#pragma once

#include "ifnpub.h"

namespace hostrt::fp {

enum class Kind {
    Void,
    Int,
    Float,
    Dword,
    Bool,
    Int64,
    Double,
    IntPtr,
    String,     // s, owned
    TStr,       // tstr, owned
    Node,       // n
    Ref,        // r
    Interface,  // fpi
    Point3,     // the rest up to RefTab are owned
    Point2,
    Point4,
    Color,
    AColor,
    Matrix3,
    Quat,
    Interval,
    BitArray,
    IntTab,
    FloatTab,
    StringTab,
    NodeTab,
    RefTab,
    Raw,  // ptr, not owned
};

Kind KindOf(int type);
// Whether the kind is held by pointer (so null means "none").
bool IsPointerKind(Kind k);
// Whether the kind's pointer is owned by the value.
bool IsOwnedKind(Kind k);

// The type with the by-value/by-reference/by-pointer modifiers removed.
inline int PlainType(int type) { return type & ~(TYPE_BY_VAL | TYPE_BY_REF | TYPE_BY_PTR); }
inline bool IsIndexType(int type) { return base_type(type) == TYPE_INDEX; }

// Converts v to type want where that keeps its meaning (see hostrt::CallFromScript); false, leaving v as
// it was, when it cannot.
bool ConvertTo(FPValue& v, int want);

}  // namespace hostrt::fp
