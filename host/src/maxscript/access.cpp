// Calls, property access, indexing and iteration on every kind of value: the built-in value properties
// (.count, .x, .r ...), the host's object handlers, published interfaces and native objects.
#include "maxscript/evaluator.h"
#include "maxscript/interpreter.h"

#include "maxscript/convert.h"
#include "maxscript/fp_bridge.h"
#include "maxscript/print.h"
#include "maxscript/registry.h"

namespace hostrt::mxs {

namespace {

Animatable* Live(const Value& v) {
    Animatable* anim = v.Anim();
    if (!anim) throw RuntimeError(L"Attempt to access deleted scene object");
    return anim;
}

bool Accepts(const HostObjectHandler& h, Animatable* anim) { return !h.accepts || h.accepts(anim); }

// The value-type components: 1-based index or property name -> slot number; -1 when none.
int PointSlot(const std::wstring& key, int dims) {
    if (key == L"x") return 0;
    if (key == L"y") return 1;
    if (key == L"z" && dims == 3) return 2;
    return -1;
}

int ColorSlot(const std::wstring& key) {
    if (key == L"r" || key == L"red") return 0;
    if (key == L"g" || key == L"green") return 1;
    if (key == L"b" || key == L"blue") return 2;
    if (key == L"a" || key == L"alpha") return 3;
    return -1;
}

int MatrixRow(const std::wstring& key) {
    if (key == L"row1") return 0;
    if (key == L"row2") return 1;
    if (key == L"row3") return 2;
    if (key == L"row4" || key == L"translation" || key == L"pos" || key == L"position") return 3;
    return -1;
}

float& ColorComponent(AColor& c, int slot) { return slot == 0 ? c.r : slot == 1 ? c.g : slot == 2 ? c.b : c.a; }

int PositiveIndex(const Value& index, const wchar_t* what) {
    const int i = ToInt(index);
    if (i < 1) throw RuntimeError(std::wstring(what) + L" index must be positive number, got: " + PrintForm(index));
    return i;
}

// A changed copy of a value type with component slot set; nullopt when object is no value type.
std::optional<Value> WithSlot(const Value& object, int slot, const Value& value) {
    switch (object.kind()) {
    case Kind::Point3: {
        Point3 p = object.AsPoint3();
        p[slot] = ToFloat(value);
        return Value::P3(p);
    }
    case Kind::Point2: {
        Point2 p = object.AsPoint2();
        (slot == 0 ? p.x : p.y) = ToFloat(value);
        return Value::P2(p);
    }
    case Kind::Color: {
        AColor c = object.AsColor();
        ColorComponent(c, slot) = ToFloat(value);
        return Value::Col(c);
    }
    case Kind::Matrix3: {
        Matrix3 m = object.AsMatrix();
        m.SetRow(slot, ToPoint3(value));
        return Value::Matrix(m);
    }
    default: return std::nullopt;
    }
}

}  // namespace

Value Interpreter::Call(const Value& function, CallArgs& args, int line, int column) {
    CallContext ctx{*this, line ? line : line_, column};
    if (function.Is(Kind::Function) && function.Fn()->scripted) return Evaluator::CallScripted(*this, *function.Fn(), args);
    // Native code sees the values that references (&x) stand for.
    for (std::size_t i = 0; i < args.positional.size(); ++i) {
        ValueReference* ref = AsReference(args.positional[i]);
        if (!ref) continue;
        args.references.resize(args.positional.size());
        args.references[i] = args.positional[i];
        args.positional[i] = ref->Get();
    }
    if (function.Is(Kind::Function)) return function.Fn()->native(ctx, args);
    if (function.Is(Kind::Ext) && function.ExtObj()->Callable()) {
        if (auto v = function.ExtObj()->Call(ctx, args)) return *v;
    }
    if (function.Is(Kind::Class)) {
        const ClassData& cls = *function.Cls();
        if (!cls.construct) throw RuntimeError(L"No constructor found for " + cls.name);
        return cls.construct(ctx, args);
    }
    throw TypeError(L"Call needs function or class, got: " + PrintForm(function));
}

Value Interpreter::GetProperty(const Value& object, const std::wstring& name) {
    CallContext ctx{*this, line_, 0};
    const std::wstring key = FoldCase(name);
    switch (object.kind()) {
    case Kind::Array:
        if (key == L"count") return Value::Int(int(object.Items().size()));
        break;
    case Kind::String:
        if (key == L"count") return Value::Int(int(object.Text().size()));
        break;
    case Kind::BitArray:
        if (key == L"count") return Value::Int(object.BitsRef().GetSize());
        if (key == L"numberset") return Value::Int(object.BitsRef().NumberSet());
        if (key == L"isempty") return Value::Bool(object.BitsRef().IsEmpty());
        break;
    case Kind::Point3:
        if (int s = PointSlot(key, 3); s >= 0) return Value::Float(object.AsPoint3()[s]);
        break;
    case Kind::Point2:
        if (int s = PointSlot(key, 2); s >= 0) return Value::Float(s == 0 ? object.AsPoint2().x : object.AsPoint2().y);
        break;
    case Kind::Color:
        if (int s = ColorSlot(key); s >= 0) {
            AColor c = object.AsColor();
            return Value::Float(ColorComponent(c, s));
        }
        break;
    case Kind::Matrix3:
        if (int r = MatrixRow(key); r >= 0) return Value::P3(object.AsMatrix().GetRow(r));
        break;
    case Kind::Time:
        if (key == L"frame") return Value::Float(float(object.AsTime()) / GetTicksPerFrame());
        if (key == L"ticks") return Value::Int(object.AsTime());
        break;
    case Kind::Name:
    case Kind::Class:
    case Kind::Function:
        if (key == L"classes" && object.Is(Kind::Class)) return Value::Array(ClassesOfSuperclass(object.Cls()->name));
        if (key == L"name")
            return Value::String(object.Is(Kind::Name)    ? object.Text()
                                 : object.Is(Kind::Class) ? object.Cls()->name
                                                          : object.Fn()->name);
        break;
    case Kind::Interface:
        if (auto v = InterfaceMember(ctx, object.IfaceRef(), name)) return *v;
        break;
    case Kind::HostObject: {
        Animatable* anim = Live(object);
        for (const HostObjectHandler* h : HostObjectHandlers()) {
            if (!h->getProperty || !Accepts(*h, anim)) continue;
            if (auto v = h->getProperty(ctx, anim, name)) return *v;
        }
        if (auto v = PublishedMember(ctx, anim, name)) return *v;
        break;
    }
    case Kind::Ext:
        if (auto v = object.ExtObj()->GetProperty(ctx, name)) return *v;
        break;
    default: break;
    }
    throw UnknownPropertyError(name, object);
}

void Interpreter::SetProperty(const Value& object, const std::wstring& name, const Value& value) {
    CallContext ctx{*this, line_, 0};
    const std::wstring key = FoldCase(name);
    switch (object.kind()) {
    case Kind::Array:
        if (key == L"count") {
            const int n = ToInt(value);
            if (n < 0) throw RuntimeError(L"Array count must not be negative, got: " + PrintForm(value));
            object.Items().resize(std::size_t(n));
            return;
        }
        break;
    case Kind::BitArray:
        if (key == L"count") {
            object.BitsRef().SetSize(ToInt(value), 1);
            return;
        }
        break;
    case Kind::Interface:
        if (SetInterfaceProperty(ctx, object.IfaceRef(), name, value)) return;
        break;
    case Kind::HostObject: {
        Animatable* anim = Live(object);
        for (const HostObjectHandler* h : HostObjectHandlers()) {
            if (!h->setProperty || !Accepts(*h, anim)) continue;
            if (h->setProperty(ctx, anim, name, value)) return;
        }
        if (SetPublishedProperty(ctx, anim, name, value)) return;
        break;
    }
    case Kind::Ext:
        if (object.ExtObj()->SetProperty(ctx, name, value)) return;
        break;
    default: break;
    }
    throw UnknownPropertyError(name, object);
}

std::optional<Value> Interpreter::SetComponent(const Value& object, const std::wstring& name, const Value& value) {
    const std::wstring key = FoldCase(name);
    int slot = -1;
    switch (object.kind()) {
    case Kind::Point3: slot = PointSlot(key, 3); break;
    case Kind::Point2: slot = PointSlot(key, 2); break;
    case Kind::Color: slot = ColorSlot(key); break;
    case Kind::Matrix3: slot = MatrixRow(key); break;
    default: return std::nullopt;
    }
    if (slot < 0) throw UnknownPropertyError(name, object);
    return WithSlot(object, slot, value);
}

std::optional<Value> Interpreter::SetComponentAt(const Value& object, const Value& index, const Value& value) {
    int count = 0;
    switch (object.kind()) {
    case Kind::Point3: count = 3; break;
    case Kind::Point2: count = 2; break;
    case Kind::Color: count = 4; break;
    case Kind::Matrix3: count = 4; break;
    default: return std::nullopt;
    }
    const int i = ToInt(index);
    if (i < 1 || i > count) throw RuntimeError(L"Index out of range: " + PrintForm(index));
    return WithSlot(object, i - 1, value);
}

Value Interpreter::GetIndex(const Value& object, const Value& index) {
    CallContext ctx{*this, line_, 0};
    switch (object.kind()) {
    case Kind::Array: {
        const std::size_t i = std::size_t(PositiveIndex(index, L"Array"));
        const ArrayData& items = object.Items();
        return i <= items.size() ? items[i - 1] : Value::Undefined();
    }
    case Kind::String: {
        const int i = ToInt(index);
        const std::wstring& s = object.Text();
        if (i < 1 || i > int(s.size())) throw RuntimeError(L"String index out of bounds: " + PrintForm(index));
        return Value::String(s.substr(std::size_t(i - 1), 1));
    }
    case Kind::BitArray: return Value::Bool(object.BitsRef()[PositiveIndex(index, L"BitArray") - 1] != 0);
    case Kind::Point3:
    case Kind::Point2:
    case Kind::Color:
    case Kind::Matrix3: {
        const int count = object.Is(Kind::Point3) ? 3 : object.Is(Kind::Point2) ? 2 : 4;
        const int i = ToInt(index);
        if (i < 1 || i > count) throw RuntimeError(L"Index out of range: " + PrintForm(index));
        if (object.Is(Kind::Point3)) return Value::Float(object.AsPoint3()[i - 1]);
        if (object.Is(Kind::Point2)) return Value::Float(i == 1 ? object.AsPoint2().x : object.AsPoint2().y);
        if (object.Is(Kind::Matrix3)) return Value::P3(object.AsMatrix().GetRow(i - 1));
        AColor c = object.AsColor();
        return Value::Float(ColorComponent(c, i - 1));
    }
    case Kind::HostObject: {
        Animatable* anim = Live(object);
        for (const HostObjectHandler* h : HostObjectHandlers()) {
            if (!h->getIndex || !Accepts(*h, anim)) continue;
            if (auto v = h->getIndex(ctx, anim, index)) return *v;
        }
        break;
    }
    case Kind::Ext:
        if (auto v = object.ExtObj()->GetIndex(ctx, index)) return *v;
        break;
    default: break;
    }
    throw NoMethodError(L"get", object);
}

void Interpreter::SetIndex(const Value& object, const Value& index, const Value& value) {
    CallContext ctx{*this, line_, 0};
    switch (object.kind()) {
    case Kind::Array: {
        const std::size_t i = std::size_t(PositiveIndex(index, L"Array"));
        ArrayData& items = object.Items();
        if (i > items.size()) items.resize(i);
        items[i - 1] = value;
        return;
    }
    case Kind::BitArray: {
        const int i = PositiveIndex(index, L"BitArray");
        ::BitArray& bits = object.BitsRef();
        if (i > bits.GetSize()) bits.SetSize(i, 1);
        bits.Set(i - 1, ToBool(value) ? 1 : 0);
        return;
    }
    case Kind::String: {
        const int i = ToInt(index);
        std::wstring& s = object.MutableText();
        if (i < 1 || i > int(s.size())) throw RuntimeError(L"String index out of bounds: " + PrintForm(index));
        s.replace(std::size_t(i - 1), 1, ToText(value));
        return;
    }
    case Kind::HostObject: {
        Animatable* anim = Live(object);
        for (const HostObjectHandler* h : HostObjectHandlers()) {
            if (!h->setIndex || !Accepts(*h, anim)) continue;
            if (h->setIndex(ctx, anim, index, value)) return;
        }
        break;
    }
    case Kind::Ext:
        if (object.ExtObj()->SetIndex(ctx, index, value)) return;
        break;
    default: break;
    }
    throw NoMethodError(L"put", object);
}

std::vector<Value> Interpreter::Iterate(const Value& collection) {
    CallContext ctx{*this, line_, 0};
    switch (collection.kind()) {
    case Kind::Array: return collection.Items();
    case Kind::BitArray: {
        std::vector<Value> items;
        const ::BitArray& bits = collection.BitsRef();
        for (int i = 0; i < bits.GetSize(); ++i)
            if (bits[i]) items.push_back(Value::Int(i + 1));
        return items;
    }
    case Kind::String: {
        std::vector<Value> items;
        for (wchar_t c : collection.Text()) items.push_back(Value::String(std::wstring(1, c)));
        return items;
    }
    case Kind::Ext:
        if (auto items = collection.ExtObj()->Items(ctx)) return std::move(*items);
        break;
    default: break;
    }
    throw ConversionError(collection, L"Collection");
}

}  // namespace hostrt::mxs
