// Script values <-> FPValues, core interfaces as globals, interface members and the published interfaces
// of host objects.
#include "maxscript/fp_bridge.h"

#include "core/fnpub.h"
#include "core/fnpub_kind.h"
#include "maxscript/convert.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"
#include "maxscript/registry.h"
#include "ref.h"

#include <cmath>

namespace hostrt::mxs {

namespace {

using FK = fp::Kind;

ReferenceTarget* AsRefTarget(const Value& v) {
    Animatable* anim = v.Anim();
    if (!anim) throw RuntimeError(L"Attempt to access deleted scene object");
    auto* target = dynamic_cast<ReferenceTarget*>(anim);
    if (!target) throw ConversionError(v, L"ReferenceTarget");
    return target;
}

INode* AsNode(const Value& v) {
    Animatable* anim = v.Anim();
    if (!anim) throw RuntimeError(L"Attempt to access deleted scene object");
    const NodeConverters& nc = GetNodeConverters();
    INode* node = nc.toNode ? nc.toNode(anim) : nullptr;
    if (!node) throw ConversionError(v, L"node");
    return node;
}

FPValue TableOf(const Value& v, int type) {
    const int base = base_type(type);
    const ArrayData& items = v.Items();
    switch (fp::KindOf(base)) {
    case FK::Int:
    case FK::Bool: {
        Tab<int> tab;
        for (const Value& item : items) tab.Append(item.Is(Kind::Bool) ? (item.AsBool() ? 1 : 0) : ToInt(item));
        return FPValue(tab, base == TYPE_BOOL ? TYPE_BOOL_TAB : TYPE_INT_TAB);
    }
    case FK::Float: {
        Tab<float> tab;
        for (const Value& item : items) tab.Append(ToFloat(item));
        return FPValue(tab);
    }
    case FK::String:
    case FK::TStr: {
        std::vector<std::wstring> texts;
        for (const Value& item : items) texts.push_back(ToText(item));
        Tab<const MCHAR*> tab;
        for (const std::wstring& t : texts) tab.Append(t.c_str());
        return FPValue(tab);  // copies the strings
    }
    case FK::Node: {
        Tab<INode*> tab;
        for (const Value& item : items) tab.Append(item.IsUndefined() ? nullptr : AsNode(item));
        return FPValue(tab);
    }
    case FK::Ref: {
        Tab<ReferenceTarget*> tab;
        for (const Value& item : items) tab.Append(item.IsUndefined() ? nullptr : AsRefTarget(item));
        return FPValue(tab);
    }
    default: break;
    }
    throw ConversionError(v, FPTypeName(type).str());
}

FPValue Natural(const Value& v) {
    switch (v.kind()) {
    case Kind::Undefined:
    case Kind::Unsupplied:
    case Kind::Ok: return FPValue();
    case Kind::Bool: return FPValue(v.AsBool());
    case Kind::Integer: return FPValue(v.AsInt());
    case Kind::Float: return FPValue(v.AsFloat());
    case Kind::Time: return FPValue(TYPE_TIMEVALUE, int(v.AsTime()));
    case Kind::String: return FPValue(v.Text().c_str());
    case Kind::Name: {
        FPValue f(v.Text().c_str());
        f.type = TYPE_NAME;
        return f;
    }
    case Kind::BitArray: return FPValue(v.BitsRef());
    case Kind::Point3: return FPValue(v.AsPoint3());
    case Kind::Matrix3: return FPValue(v.AsMatrix());
    case Kind::Interface: return FPValue(v.IfaceRef().fpi);
    case Kind::HostObject: {
        const NodeConverters& nc = GetNodeConverters();
        Animatable* anim = v.Anim();
        if (!anim) throw RuntimeError(L"Attempt to access deleted scene object");
        if (INode* node = nc.toNode ? nc.toNode(anim) : nullptr) return FPValue(node);
        return FPValue(AsRefTarget(v));
    }
    case Kind::Array: {
        bool allInts = true;
        for (const Value& item : v.Items()) allInts = allInts && item.Is(Kind::Integer);
        if (allInts) return TableOf(v, TYPE_INT_TAB);
        break;
    }
    default: break;
    }
    throw ConversionError(v, L"a published function's argument");
}

}  // namespace

FPValue ToFPValue(const Value& v, int type) {
    if (type == TYPE_UNSPECIFIED || v.IsUndefined() || v.Is(Kind::Unsupplied)) return Natural(v);
    const int plain = fp::PlainType(type);
    if (is_tab(plain)) {
        if (v.Is(Kind::BitArray) && fp::KindOf(base_type(plain)) == FK::Int) {
            // A bit array where a list of numbers is wanted stands for the numbers of its set bits, as
            // scripts pass selections of indices (#{1..3} for #(1, 2, 3)).
            const BitArray& bits = v.BitsRef();
            Tab<int> tab;
            for (int i = 0; i < bits.GetSize(); ++i)
                if (bits[i]) tab.Append(i + 1);
            return FPValue(tab, TYPE_INT_TAB);
        }
        if (!v.Is(Kind::Array)) throw ConversionError(v, L"Array");
        return TableOf(v, plain);
    }
    switch (fp::KindOf(plain)) {
    case FK::Node: return FPValue(AsNode(v));
    case FK::Ref: return FPValue(ParamType2(plain), AsRefTarget(v));
    case FK::BitArray:
        return FPValue(ToBitArray(v).BitsRef());
    case FK::String:
    case FK::TStr:
        if (v.Is(Kind::String) || v.Is(Kind::Name)) return FPValue(v.Text().c_str());
        throw ConversionError(v, L"String");
    case FK::Point3:
        return FPValue(ToPoint3(v));
    case FK::Int:
        if (plain == TYPE_TIMEVALUE) return FPValue(TYPE_TIMEVALUE, int(ToTime(v)));
        return Natural(v);
    default: return Natural(v);
    }
}

Value FromFPValue(const FPValue& v) {
    const int plain = fp::PlainType(v.type);
    const int base = base_type(plain);
    switch (fp::KindOf(v.type)) {
    case FK::Void: return Value::Ok();
    case FK::Int:
        if (base == TYPE_BOOL) return Value::Bool(v.i != 0);
        if (base == TYPE_TIMEVALUE) return Value::Time(v.i);
        return Value::Int(v.i);
    case FK::Float: return Value::Float(v.f);
    case FK::Dword: return Value::Int(int(v.d));
    case FK::Bool: return Value::Bool(v.b);
    case FK::Int64:
        if (v.i64 >= INT32_MIN && v.i64 <= INT32_MAX) return Value::Int(int(v.i64));
        return Value::Float(float(v.i64));
    case FK::Double: return Value::Float(float(v.dbl));
    case FK::IntPtr: return Value::Int(int(v.intptr));
    case FK::String:
        if (!v.s) return Value::Undefined();
        return base == TYPE_NAME ? Value::Name(v.s) : Value::String(v.s);
    case FK::TStr: return v.tstr ? Value::String(v.tstr->str()) : Value::Undefined();
    case FK::Node: {
        if (!v.n) return Value::Undefined();
        const NodeConverters& nc = GetNodeConverters();
        if (!nc.toAnimatable) throw RuntimeError(L"No node values in this host: the scene is not loaded");
        return Value::Host(nc.toAnimatable(v.n));
    }
    case FK::Ref: return Value::Host(v.r);
    case FK::Interface: return Value::MakeInterface(v.fpi);
    case FK::Point3: return v.p ? Value::P3(*v.p) : Value::Undefined();
    case FK::Point2: return v.p2 ? Value::P2(*v.p2) : Value::Undefined();
    case FK::Color:
        return v.clr ? Value::Col(AColor(v.clr->r * 255.f, v.clr->g * 255.f, v.clr->b * 255.f, 255.f))
                     : Value::Undefined();
    case FK::AColor:
        return v.aclr ? Value::Col(AColor(v.aclr->r * 255.f, v.aclr->g * 255.f, v.aclr->b * 255.f, v.aclr->a * 255.f))
                      : Value::Undefined();
    case FK::Matrix3: return v.m ? Value::Matrix(*v.m) : Value::Undefined();
    case FK::BitArray: return v.bits ? Value::Bits(*v.bits) : Value::Undefined();
    case FK::IntTab: {
        if (!v.i_tab) return Value::Undefined();
        ArrayData items;
        for (int i : *v.i_tab) items.push_back(base == TYPE_BOOL ? Value::Bool(i != 0) : Value::Int(i));
        return Value::Array(std::move(items));
    }
    case FK::FloatTab: {
        if (!v.f_tab) return Value::Undefined();
        ArrayData items;
        for (float f : *v.f_tab) items.push_back(Value::Float(f));
        return Value::Array(std::move(items));
    }
    case FK::StringTab: {
        if (!v.s_tab) return Value::Undefined();
        ArrayData items;
        for (const MCHAR* s : *v.s_tab) items.push_back(s ? Value::String(s) : Value::Undefined());
        return Value::Array(std::move(items));
    }
    case FK::NodeTab: {
        if (!v.n_tab) return Value::Undefined();
        ArrayData items;
        for (INode* n : *v.n_tab) items.push_back(FromFPValue(FPValue(n)));
        return Value::Array(std::move(items));
    }
    case FK::RefTab: {
        if (!v.r_tab) return Value::Undefined();
        ArrayData items;
        for (ReferenceTarget* r : *v.r_tab) items.push_back(Value::Host(r));
        return Value::Array(std::move(items));
    }
    default: break;
    }
    throw RuntimeError(L"Cannot show a value of type " + FPTypeName(v.type).str() + L" to scripts");
}

ScriptError FromHostException(const MAXException& e) {
    const std::wstring message = e.message.str();
    if (message.rfind(L"Argument count error: ", 0) == 0) return ScriptError(ErrorKind::ArgCount, message);
    if (message.rfind(L"Type error: ", 0) == 0) return ScriptError(ErrorKind::Type, message);
    ScriptError err = RuntimeError(message);
    err.SetMessage(message);
    return err;
}

std::optional<Value> FindCoreInterfaceValue(const std::wstring& name) {
    if (FPInterface* fpi = hostrt::FindCoreInterface(name.c_str())) return Value::MakeInterface(fpi);
    return std::nullopt;
}

namespace {

Animatable* OwnerOf(const InterfaceRef& iface) {
    if (!iface.owner) return nullptr;
    Animatable* owner = Animatable::GetAnimByHandle(iface.owner);
    if (!owner) throw RuntimeError(L"Attempt to access deleted scene object");
    return owner;
}

// A published function as a method value. The owner (0: a core interface) must still exist when called.
Value Method(FPInterface* fpi, const FPFunctionDef& fn, AnimHandle owner) {
    auto data = std::make_shared<FunctionData>();
    const FunctionID fid = fn.ID;
    data->name = fn.internal_name.str();
    data->native = [fpi, fid, owner](CallContext& ctx, CallArgs& args) -> Value {
        if (owner && !Animatable::GetAnimByHandle(owner))
            throw RuntimeError(L"Attempt to access deleted scene object");
        FPInterfaceDesc* desc = fpi->GetDesc();
        const FPFunctionDef* def = desc ? desc->GetFnDef(fid) : nullptr;
        std::vector<FPValue> positional;
        hostrt::FPKeywordArgs keywords;
        for (std::size_t i = 0; i < args.positional.size(); ++i) {
            const bool described = def && int(i) < def->NumPositional();
            positional.push_back(ToFPValue(args.positional[i], described ? def->params[i].type : TYPE_UNSPECIFIED));
        }
        for (auto& [name, value] : args.keywords) {
            const FPParamDef* param = def ? def->FindKeyword(name.c_str()) : nullptr;
            keywords.emplace_back(MSTR(name), ToFPValue(value, param ? param->type : TYPE_UNSPECIFIED));
        }
        FPValue result;
        try {
            hostrt::CallFromScript(fpi, fid, std::move(positional), std::move(keywords), result, ctx.interp.Time());
        } catch (const MAXException& e) {
            throw FromHostException(e);
        }
        return FromFPValue(result);
    };
    return Value::Function(std::move(data));
}

std::optional<Value> MemberOf(CallContext& ctx, FPInterface* fpi, AnimHandle owner, const std::wstring& name) {
    FPInterfaceDesc* desc = fpi ? fpi->GetDesc() : nullptr;
    if (!desc) return std::nullopt;
    if (desc->GetPropDef(name.c_str())) {
        try {
            return FromFPValue(hostrt::GetPropertyFromScript(fpi, name.c_str(), ctx.interp.Time()));
        } catch (const MAXException& e) {
            throw FromHostException(e);
        }
    }
    if (const FPFunctionDef* fn = desc->GetFnDef(name.c_str())) return Method(fpi, *fn, owner);
    return std::nullopt;
}

bool SetMember(CallContext& ctx, FPInterface* fpi, const std::wstring& name, const Value& value) {
    FPInterfaceDesc* desc = fpi ? fpi->GetDesc() : nullptr;
    const FPPropDef* prop = desc ? desc->GetPropDef(name.c_str()) : nullptr;
    if (!prop) return false;
    try {
        hostrt::SetPropertyFromScript(fpi, name.c_str(), ToFPValue(value, prop->prop_type), ctx.interp.Time());
    } catch (const MAXException& e) {
        throw FromHostException(e);
    }
    return true;
}

// The object and the further animatables its handlers name as interface hosts.
std::vector<Animatable*> InterfaceHosts(Animatable* obj) {
    std::vector<Animatable*> hosts{obj};
    for (const HostObjectHandler* h : HostObjectHandlers()) {
        if (!h->interfaceHosts || (h->accepts && !h->accepts(obj))) continue;
        for (Animatable* a : h->interfaceHosts(obj))
            if (a && std::find(hosts.begin(), hosts.end(), a) == hosts.end()) hosts.push_back(a);
    }
    return hosts;
}

}  // namespace

std::optional<Value> InterfaceMember(CallContext& ctx, const InterfaceRef& iface, const std::wstring& name) {
    OwnerOf(iface);
    return MemberOf(ctx, iface.fpi, iface.owner, name);
}

bool SetInterfaceProperty(CallContext& ctx, const InterfaceRef& iface, const std::wstring& name, const Value& value) {
    OwnerOf(iface);
    return SetMember(ctx, iface.fpi, name, value);
}

std::optional<Value> PublishedMember(CallContext& ctx, Animatable* obj, const std::wstring& name) {
    for (Animatable* host : InterfaceHosts(obj)) {
        const AnimHandle owner = Animatable::GetHandleByAnim(host);
        if (auto [fpi, fn] = hostrt::FindObjectFunction(host, name.c_str()); fpi && fn) return Method(fpi, *fn, owner);
        if (FPInterface* fpi = hostrt::FindObjectInterface(host, name.c_str())) return Value::MakeInterface(fpi, host);
        for (FPInterface* fpi : hostrt::FindMixinInterfaces(host))
            if (auto v = MemberOf(ctx, fpi, owner, name)) return v;
    }
    return std::nullopt;
}

bool SetPublishedProperty(CallContext& ctx, Animatable* obj, const std::wstring& name, const Value& value) {
    for (Animatable* host : InterfaceHosts(obj))
        for (FPInterface* fpi : hostrt::FindMixinInterfaces(host))
            if (SetMember(ctx, fpi, name, value)) return true;
    return false;
}

}  // namespace hostrt::mxs
