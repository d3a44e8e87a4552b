// FPValue: construction, deep copying and release of owned content, type names, and the type conversions
// that script calls rely on.
#include "core/fnpub.h"
#include "core/fnpub_kind.h"

#include <cmath>
#include <cstring>
#include <cwchar>
#include <string>

namespace hostrt::fp {

Kind KindOf(int type) {
    const int plain = PlainType(type);
    if (plain == TYPE_VOID || plain == TYPE_UNSPECIFIED) return Kind::Void;
    const int base = base_type(plain);
    if (is_tab(plain)) {
        switch (base) {
        case TYPE_INT: case TYPE_BOOL: case TYPE_INDEX: case TYPE_ENUM: case TYPE_TIMEVALUE:
        case TYPE_RADIOBTN_INDEX:
            return Kind::IntTab;
        case TYPE_FLOAT: case TYPE_ANGLE: case TYPE_PCNT_FRAC: case TYPE_WORLD: case TYPE_COLOR_CHANNEL:
            return Kind::FloatTab;
        case TYPE_STRING: case TYPE_FILENAME: case TYPE_NAME:
            return Kind::StringTab;
        case TYPE_INODE:
            return Kind::NodeTab;
        case TYPE_REFTARG:
            return Kind::RefTab;
        default:
            return Kind::Raw;
        }
    }
    switch (base) {
    case TYPE_INT: case TYPE_BOOL: case TYPE_INDEX: case TYPE_ENUM: case TYPE_TIMEVALUE: case TYPE_RADIOBTN_INDEX:
        return Kind::Int;
    case TYPE_FLOAT: case TYPE_ANGLE: case TYPE_PCNT_FRAC: case TYPE_WORLD: case TYPE_COLOR_CHANNEL:
        return Kind::Float;
    case TYPE_DWORD: return Kind::Dword;
    case TYPE_bool: return Kind::Bool;
    case TYPE_INT64: return Kind::Int64;
    case TYPE_DOUBLE: return Kind::Double;
    case TYPE_INTPTR: return Kind::IntPtr;
    case TYPE_STRING: case TYPE_FILENAME: case TYPE_NAME: return Kind::String;
    case TYPE_TSTR: return Kind::TStr;
    case TYPE_INODE: return Kind::Node;
    case TYPE_REFTARG: case TYPE_MTL: case TYPE_TEXMAP: case TYPE_CONTROL: case TYPE_OBJECT: case TYPE_PBLOCK2:
        return Kind::Ref;
    case TYPE_INTERFACE: return Kind::Interface;
    case TYPE_POINT3: return Kind::Point3;
    case TYPE_POINT2: return Kind::Point2;
    case TYPE_POINT4: return Kind::Point4;
    case TYPE_RGBA: case TYPE_COLOR: return Kind::Color;
    case TYPE_FRGBA: return Kind::AColor;
    case TYPE_MATRIX3: return Kind::Matrix3;
    case TYPE_QUAT: return Kind::Quat;
    case TYPE_INTERVAL: return Kind::Interval;
    case TYPE_BITARRAY: return Kind::BitArray;
    default: return Kind::Raw;
    }
}

bool IsPointerKind(Kind k) { return k >= Kind::String; }

bool IsOwnedKind(Kind k) {
    return k == Kind::String || k == Kind::TStr || (k >= Kind::Point3 && k <= Kind::RefTab);
}

}  // namespace hostrt::fp

using hostrt::fp::Kind;
using hostrt::fp::KindOf;

namespace {

MCHAR* CopyString(const MCHAR* s) {
    if (!s) return nullptr;
    const std::size_t n = std::wcslen(s);
    auto* copy = new MCHAR[n + 1];
    std::wmemcpy(copy, s, n + 1);
    return copy;
}

template <class T> T* CopyOf(const T* p) { return p ? new T(*p) : nullptr; }

Tab<const MCHAR*>* CopyStrings(const Tab<const MCHAR*>* tab) {
    if (!tab) return nullptr;
    auto* copy = new Tab<const MCHAR*>;
    try {
        copy->Resize(tab->Count());
        for (const MCHAR* s : *tab) copy->Append(CopyString(s));
    } catch (...) {
        for (const MCHAR* s : *copy) delete[] s;
        delete copy;
        throw;
    }
    return copy;
}

// Copies the raw member of from into to (which holds nothing owned), deep-copying owned content.
void CopyContent(FPValue& to, const FPValue& from) {
    std::memcpy(&to.i64, &from.i64, sizeof(to.i64));
    switch (KindOf(from.type)) {
    case Kind::String: to.s = CopyString(from.s); break;
    case Kind::TStr: to.tstr = CopyOf(from.tstr); break;
    case Kind::Point3: to.p = CopyOf(from.p); break;
    case Kind::Point2: to.p2 = CopyOf(from.p2); break;
    case Kind::Point4: to.p4 = CopyOf(from.p4); break;
    case Kind::Color: to.clr = CopyOf(from.clr); break;
    case Kind::AColor: to.aclr = CopyOf(from.aclr); break;
    case Kind::Matrix3: to.m = CopyOf(from.m); break;
    case Kind::Quat: to.q = CopyOf(from.q); break;
    case Kind::Interval: to.intvl = CopyOf(from.intvl); break;
    case Kind::BitArray: to.bits = CopyOf(from.bits); break;
    case Kind::IntTab: to.i_tab = CopyOf(from.i_tab); break;
    case Kind::FloatTab: to.f_tab = CopyOf(from.f_tab); break;
    case Kind::StringTab: to.s_tab = CopyStrings(from.s_tab); break;
    case Kind::NodeTab: to.n_tab = CopyOf(from.n_tab); break;
    case Kind::RefTab: to.r_tab = CopyOf(from.r_tab); break;
    default: break;
    }
    to.type = from.type;
}

[[noreturn]] void BadType(const MCHAR* what, int type) {
    throw MAXException(MSTR(L"A function-publishing value of type ") + hostrt::FPTypeName(type) +
                       L" cannot be made " + what);
}

}  // namespace

FPValue::FPValue(ParamType2 t, int v) : type(t), i64(0) {
    if (KindOf(t) != Kind::Int) BadType(L"from an integer", t);
    i = v;
}

FPValue::FPValue(ParamType2 t, float v) : type(t), i64(0) {
    if (KindOf(t) != Kind::Float) BadType(L"from a float", t);
    f = v;
}

FPValue::FPValue(ParamType2 t, ReferenceTarget* v) : type(t), i64(0) {
    if (KindOf(t) != Kind::Ref) BadType(L"from a reference target", t);
    r = v;
}

FPValue::FPValue(const MCHAR* v) : type(TYPE_STRING), i64(0) { s = CopyString(v); }
FPValue::FPValue(const Point3& v) : type(TYPE_POINT3), i64(0) { p = new Point3(v); }
FPValue::FPValue(const Matrix3& v) : type(TYPE_MATRIX3), i64(0) { m = new Matrix3(v); }
FPValue::FPValue(const BitArray& v) : type(TYPE_BITARRAY), i64(0) { bits = new BitArray(v); }

FPValue::FPValue(const Tab<int>& v, ParamType2 t) : type(t), i64(0) {
    if (KindOf(t) != Kind::IntTab) BadType(L"from a table of integers", t);
    i_tab = new Tab<int>(v);
}

FPValue::FPValue(const Tab<float>& v) : type(TYPE_FLOAT_TAB), i64(0) { f_tab = new Tab<float>(v); }

FPValue::FPValue(const Tab<INode*>& v, ParamType2 t) : type(t), i64(0) {
    if (KindOf(t) != Kind::NodeTab) BadType(L"from a table of nodes", t);
    n_tab = new Tab<INode*>(v);
}

FPValue::FPValue(const Tab<ReferenceTarget*>& v) : type(TYPE_REFTARG_TAB), i64(0) {
    r_tab = new Tab<ReferenceTarget*>(v);
}

FPValue::FPValue(const Tab<const MCHAR*>& v) : type(TYPE_STRING_TAB), i64(0) { s_tab = CopyStrings(&v); }

FPValue FPValue::Null(ParamType2 t) {
    if (!hostrt::fp::IsPointerKind(KindOf(t))) BadType(L"\"none\" (it is not held by pointer)", t);
    FPValue v;
    v.type = t;
    v.ptr = nullptr;
    return v;
}

FPValue::FPValue(const FPValue& o) : i64(0) { CopyContent(*this, o); }

FPValue::FPValue(FPValue&& o) noexcept : type(o.type), i64(0) {
    std::memcpy(&i64, &o.i64, sizeof(i64));
    o.type = TYPE_VOID;
    o.i64 = 0;
}

FPValue& FPValue::operator=(const FPValue& o) {
    if (this != &o) {
        FPValue copy(o);
        *this = std::move(copy);
    }
    return *this;
}

FPValue& FPValue::operator=(FPValue&& o) noexcept {
    if (this != &o) {
        Free();
        type = o.type;
        std::memcpy(&i64, &o.i64, sizeof(i64));
        o.type = TYPE_VOID;
        o.i64 = 0;
    }
    return *this;
}

void FPValue::Free() {
    switch (KindOf(type)) {
    case Kind::String: delete[] s; break;
    case Kind::TStr: delete tstr; break;
    case Kind::Point3: delete p; break;
    case Kind::Point2: delete p2; break;
    case Kind::Point4: delete p4; break;
    case Kind::Color: delete clr; break;
    case Kind::AColor: delete aclr; break;
    case Kind::Matrix3: delete m; break;
    case Kind::Quat: delete q; break;
    case Kind::Interval: delete intvl; break;
    case Kind::BitArray: delete bits; break;
    case Kind::IntTab: delete i_tab; break;
    case Kind::FloatTab: delete f_tab; break;
    case Kind::StringTab:
        if (s_tab)
            for (const MCHAR* str : *s_tab) delete[] str;
        delete s_tab;
        break;
    case Kind::NodeTab: delete n_tab; break;
    case Kind::RefTab: delete r_tab; break;
    default: break;
    }
    type = TYPE_VOID;
    i64 = 0;
}

bool FPValue::IsNull() const { return hostrt::fp::IsPointerKind(KindOf(type)) && ptr == nullptr; }

namespace hostrt {

MSTR FPTypeName(int type) {
    const int plain = fp::PlainType(type);
    if (plain == TYPE_VOID) return L"nothing";
    if (plain == TYPE_UNSPECIFIED) return L"unspecified";
    const int base = base_type(plain);
    const MCHAR* name = nullptr;
    switch (base) {
    case TYPE_FLOAT: name = L"float"; break;
    case TYPE_INT: name = L"integer"; break;
    case TYPE_RGBA: case TYPE_COLOR: name = L"color"; break;
    case TYPE_FRGBA: name = L"AColor"; break;
    case TYPE_POINT3: name = L"point3"; break;
    case TYPE_POINT2: name = L"point2"; break;
    case TYPE_POINT4: name = L"point4"; break;
    case TYPE_BOOL: case TYPE_bool: name = L"boolean"; break;
    case TYPE_ANGLE: name = L"angle"; break;
    case TYPE_PCNT_FRAC: name = L"percentage"; break;
    case TYPE_WORLD: name = L"world unit"; break;
    case TYPE_STRING: case TYPE_TSTR: name = L"string"; break;
    case TYPE_FILENAME: name = L"filename"; break;
    case TYPE_NAME: name = L"name"; break;
    case TYPE_TIMEVALUE: name = L"time"; break;
    case TYPE_RADIOBTN_INDEX: name = L"radio button index"; break;
    case TYPE_MTL: name = L"material"; break;
    case TYPE_TEXMAP: name = L"texture map"; break;
    case TYPE_INODE: name = L"node"; break;
    case TYPE_REFTARG: name = L"reference target"; break;
    case TYPE_INDEX: name = L"index"; break;
    case TYPE_MATRIX3: name = L"matrix3"; break;
    case TYPE_ENUM: name = L"enum"; break;
    case TYPE_INTERVAL: name = L"interval"; break;
    case TYPE_QUAT: name = L"quat"; break;
    case TYPE_BITARRAY: name = L"bit array"; break;
    case TYPE_CONTROL: name = L"controller"; break;
    case TYPE_OBJECT: name = L"object"; break;
    case TYPE_INTERFACE: name = L"interface"; break;
    case TYPE_DWORD: name = L"dword"; break;
    case TYPE_INT64: name = L"integer64"; break;
    case TYPE_DOUBLE: name = L"double"; break;
    case TYPE_INTPTR: name = L"integerptr"; break;
    default: break;
    }
    MSTR text = name ? MSTR(name) : MSTR(L"type " + std::to_wstring(base));
    return is_tab(plain) ? MSTR(L"array of ") + text : text;
}

namespace fp {

namespace {

bool IsBoolType(int type) { return base_type(type) == TYPE_BOOL; }

// Converts between kinds (not within one kind). v is replaced only on success.
bool ConvertKind(FPValue& v, Kind have, int want) {
    const Kind need = KindOf(want);
    FPValue out;
    switch (need) {
    case Kind::Int:
        if (have == Kind::Bool) { out = FPValue(ParamType2(want), v.b ? 1 : 0); break; }
        if (have == Kind::Float && std::floor(v.f) == v.f && std::fabs(v.f) < 2147483648.0f) {
            out = FPValue(ParamType2(want), int(v.f));
            break;
        }
        return false;
    case Kind::Float:
        if (have == Kind::Int) { out = FPValue(ParamType2(want), float(v.i)); break; }
        if (have == Kind::Double) { out = FPValue(ParamType2(want), float(v.dbl)); break; }
        return false;
    case Kind::Double:
        if (have != Kind::Int && have != Kind::Float) return false;
        out.type = ParamType2(want);
        out.dbl = have == Kind::Int ? double(v.i) : double(v.f);
        break;
    case Kind::Int64:
    case Kind::IntPtr:
        if (have != Kind::Int) return false;
        out.type = ParamType2(want);
        if (need == Kind::Int64) out.i64 = v.i; else out.intptr = v.i;
        break;
    case Kind::Dword:
        if (have != Kind::Int || v.i < 0) return false;
        out.type = ParamType2(want);
        out.d = DWORD(v.i);
        break;
    case Kind::Bool:
        if (have != Kind::Int) return false;
        out.type = ParamType2(want);
        out.b = v.i != 0;
        break;
    case Kind::String:
        if (have != Kind::TStr) return false;
        out = FPValue(v.tstr ? v.tstr->data() : nullptr);
        out.type = ParamType2(want);
        break;
    case Kind::TStr:
        if (have != Kind::String) return false;
        out.tstr = new MSTR(v.s);
        out.type = ParamType2(want);
        break;
    default:
        return false;
    }
    v = std::move(out);
    return true;
}

}  // namespace

bool ConvertTo(FPValue& v, int want) {
    if (v.type == want) return true;
    const Kind have = KindOf(v.type);
    const Kind need = KindOf(want);
    if (need == Kind::Void) return false;
    if (have == Kind::Void) {
        // "undefined" stands for none where none is possible.
        if (!IsPointerKind(need)) return false;
        v = FPValue::Null(ParamType2(want));
        return true;
    }
    if (have == need) {
        if (need == Kind::Ref && v.r && base_type(want) != base_type(v.type)) {
            // A reference target given for a material or texture map must be one.
            if (base_type(want) == TYPE_MTL && v.r->SuperClassID() != MATERIAL_CLASS_ID) return false;
            if (base_type(want) == TYPE_TEXMAP && v.r->SuperClassID() != TEXMAP_CLASS_ID) return false;
        }
        v.type = ParamType2(want);
        if (need == Kind::Int && IsBoolType(want)) v.i = v.i ? TRUE : FALSE;
        return true;
    }
    if (v.IsNull() && IsPointerKind(need)) {
        v = FPValue::Null(ParamType2(want));
        return true;
    }
    return ConvertKind(v, have, want);
}

}  // namespace fp
}  // namespace hostrt
