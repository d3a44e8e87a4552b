// Parameter values: which storage kind each parameter type uses, and conversions between kinds.
#include "iparamb2.h"

#include <cmath>

namespace hostrt {

ValueKind KindOfType(int type) {
    switch (base_type(type)) {
    case TYPE_INT:
    case TYPE_BOOL:
    case TYPE_TIMEVALUE:
    case TYPE_RADIOBTN_INDEX:
    case TYPE_INDEX:
        return ValueKind::Int;
    case TYPE_FLOAT:
    case TYPE_ANGLE:
    case TYPE_PCNT_FRAC:
    case TYPE_WORLD:
    case TYPE_COLOR_CHANNEL:
        return ValueKind::Float;
    case TYPE_RGBA:
    case TYPE_POINT3:
    case TYPE_HSV:
        return ValueKind::Point3;
    case TYPE_POINT4:
    case TYPE_FRGBA:
        return ValueKind::Point4;
    case TYPE_POINT2:
        return ValueKind::Point2;
    case TYPE_MATRIX3:
        return ValueKind::Matrix3;
    case TYPE_STRING:
    case TYPE_FILENAME:
        return ValueKind::String;
    case TYPE_MTL:
    case TYPE_TEXMAP:
    case TYPE_INODE:
    case TYPE_REFTARG:
    case TYPE_PBLOCK2:
        return ValueKind::Ref;
    default:
        return ValueKind::None;
    }
}

bool IsReferenceType(int type) { return KindOfType(type) == ValueKind::Ref; }

ValueKind ParamValue::Kind() const {
    static constexpr ValueKind kinds[] = {ValueKind::None,   ValueKind::Int,    ValueKind::Float,
                                          ValueKind::Point2, ValueKind::Point3, ValueKind::Point4,
                                          ValueKind::Matrix3, ValueKind::String, ValueKind::Ref};
    return kinds[v_.index()];
}

std::optional<ParamValue> ParamValue::ConvertedTo(ValueKind kind) const {
    const ValueKind mine = Kind();
    if (mine == kind) return *this;
    if (mine == ValueKind::Float && kind == ValueKind::Int) return ParamValue(int(std::lround(std::get<float>(v_))));
    if (mine == ValueKind::Int && kind == ValueKind::Float) return ParamValue(float(std::get<int>(v_)));
    return std::nullopt;
}

ParamValue ParamValue::ZeroOf(ValueKind kind) {
    switch (kind) {
    case ValueKind::Int: return ParamValue(0);
    case ValueKind::Float: return ParamValue(0.0f);
    case ValueKind::Point2: return ParamValue(Point2());
    case ValueKind::Point3: return ParamValue(Point3());
    case ValueKind::Point4: return ParamValue(Point4());
    case ValueKind::Matrix3: return ParamValue(Matrix3());
    case ValueKind::String: return ParamValue(MSTR());
    case ValueKind::Ref: return ParamValue(nullptr);
    case ValueKind::None: break;
    }
    return ParamValue();
}

int ParamValue::AsInt() const {
    if (auto* f = std::get_if<float>(&v_)) return int(std::lround(*f));
    if (auto* i = std::get_if<int>(&v_)) return *i;
    return 0;
}

float ParamValue::AsFloat() const {
    if (auto* i = std::get_if<int>(&v_)) return float(*i);
    if (auto* f = std::get_if<float>(&v_)) return *f;
    return 0.0f;
}

Point2 ParamValue::AsPoint2() const {
    auto* p = std::get_if<Point2>(&v_);
    return p ? *p : Point2();
}

Point3 ParamValue::AsPoint3() const {
    auto* p = std::get_if<Point3>(&v_);
    return p ? *p : Point3();
}

Point4 ParamValue::AsPoint4() const {
    auto* p = std::get_if<Point4>(&v_);
    return p ? *p : Point4();
}

Matrix3 ParamValue::AsMatrix3() const {
    auto* m = std::get_if<Matrix3>(&v_);
    return m ? *m : Matrix3();
}

const MSTR& ParamValue::AsString() const {
    static const MSTR empty;
    auto* s = std::get_if<MSTR>(&v_);
    return s ? *s : empty;
}

ReferenceTarget* ParamValue::AsRef() const {
    auto* r = std::get_if<ReferenceTarget*>(&v_);
    return r ? *r : nullptr;
}

}  // namespace hostrt
