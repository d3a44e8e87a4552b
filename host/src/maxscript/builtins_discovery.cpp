// Exploring from the listener what the host and its plug-ins offer: the published interfaces of a global or an
// object (showInterface, showInterfaces, showMethods), an object's properties (showProperties, getPropNames,
// isProperty, hasProperty), the globals whose names hold a text (apropos), and how objects of plug-in classes
// print: their class and, where they have one, their name ("RefNode:Chair").
#include "maxscript/builtins.h"

#include "core/class_directory.h"
#include "core/fnpub.h"
#include "inode.h"
#include "iparamb2.h"
#include "object.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/fp_bridge.h"
#include "maxscript/interpreter.h"
#include "maxscript/namespace_object.h"
#include "maxscript/print.h"
#include "maxscript/registry.h"
#include "maxscript/scene_values.h"
#include "maxscript/streams.h"

#include <algorithm>
#include <map>

namespace hostrt::mxs {

namespace {

// ---------------------------------------------------------------------------------------- what an object has

// The animatables whose published interfaces an object answers: itself, then what the handlers add (a node:
// its object).
std::vector<Animatable*> InterfaceHostsOf(Animatable* obj) {
    std::vector<Animatable*> hosts{obj};
    for (const HostObjectHandler* h : HostObjectHandlers()) {
        if (!h->interfaceHosts || (h->accepts && !h->accepts(obj))) continue;
        for (Animatable* a : h->interfaceHosts(obj))
            if (a && std::find(hosts.begin(), hosts.end(), a) == hosts.end()) hosts.push_back(a);
    }
    return hosts;
}

std::vector<FPInterface*> InterfacesOfObject(Animatable* obj) {
    std::vector<FPInterface*> out;
    for (Animatable* host : InterfaceHostsOf(obj))
        for (FPInterface* fpi : hostrt::FindMixinInterfaces(host))
            if (std::find(out.begin(), out.end(), fpi) == out.end()) out.push_back(fpi);
    return out;
}

// The interfaces a value stands for: an interface itself, a host object's mixins, a class's descriptor's
// interfaces. Empty for anything else.
std::vector<FPInterface*> InterfacesOf(const Value& v) {
    switch (v.kind()) {
    case Kind::Interface: return {v.IfaceRef().fpi};
    case Kind::HostObject: {
        Animatable* anim = v.Anim();
        if (!anim) throw RuntimeError(L"Attempt to access deleted scene object");
        return InterfacesOfObject(anim);
    }
    case Kind::Class:
        for (const hostrt::ClassEntry& entry : hostrt::ClassDirectory::Instance().Entries()) {
            if (!entry.desc || !EqualsNoCase(entry.desc->ClassName(), v.Cls()->name)) continue;
            std::vector<FPInterface*> out;
            for (int i = 0; i < entry.desc->NumInterfaces(); ++i) out.push_back(entry.desc->GetInterfaceAt(i));
            return out;
        }
        return {};
    default: return {};
    }
}

NamespaceObject* AsNamespace(const Value& v) {
    return v.Is(Kind::Ext) ? dynamic_cast<NamespaceObject*>(v.ExtObj().get()) : nullptr;
}

// The object whose parameters a value shows: a node's base object, else the object itself.
Animatable* ParameterOwner(Animatable* anim) {
    if (auto* node = dynamic_cast<INode*>(anim)) return node->GetBaseObject();
    return anim;
}

struct Parameter {
    std::wstring name;
    std::wstring type;
};

std::vector<Parameter> BlockParameters(Animatable* anim) {
    std::vector<Parameter> out;
    for (int b = 0; anim && b < anim->NumParamBlocks(); ++b) {
        IParamBlock2* block = anim->GetParamBlock(b);
        if (!block || !block->GetDesc()) continue;
        for (int i = 0; i < block->NumParams(); ++i) {
            const ParamDef& def = block->GetParamDef(block->IndextoID(i));
            if (!def.int_name.isNull()) out.push_back({def.int_name.data(), hostrt::FPTypeName(def.type).str()});
        }
    }
    return out;
}

// ------------------------------------------------------------------------------------------------- listings

std::wstring TypeTag(int type) { return L"<" + hostrt::FPTypeName(type).str() + L">"; }

std::wstring PropertyLine(const FPPropDef& p) {
    return L"    ." + p.internal_name.str() + L" : " + hostrt::FPTypeName(p.prop_type).str() +
           (p.IsReadOnly() ? L" : Read" : L" : Read|Write") + L"\n";
}

// "<node>AddVandrel <filename>fileName proxyFileName:<filename> load:<boolean>"
std::wstring MethodLine(const FPFunctionDef& f) {
    std::wstring line = L"    " + TypeTag(f.result_type) + f.internal_name.str();
    for (const FPParamDef& p : f.params) {
        if (p.IsKeyword()) line += L" " + p.internal_name.str() + L":" + TypeTag(p.type);
        else line += L" " + TypeTag(p.type) + p.internal_name.str();
    }
    return line + L"\n";
}

std::wstring InterfaceListing(FPInterface* fpi, bool properties, bool methods) {
    FPInterfaceDesc* desc = fpi ? fpi->GetDesc() : nullptr;
    std::wstring out = L"  Interface: " + hostrt::FPInterfaceName(fpi).str() + L"\n";
    if (!desc) return out;
    if (properties) {
        out += L"   Properties:\n";
        for (const FPPropDef& p : desc->props) out += PropertyLine(p);
    }
    if (methods) {
        out += L"   Methods:\n";
        for (const FPFunctionDef& f : desc->functions) out += MethodLine(f);
    }
    if (properties && methods) out += L"   Actions:\n";
    return out;
}

std::wstring NamespaceListing(const NamespaceObject& ns, bool properties, bool methods) {
    std::wstring out = L"  Interface: " + ns.Name() + L"\n";
    if (properties) {
        out += L"   Properties:\n";
        for (const std::wstring& p : ns.PropertyNames()) out += L"    ." + p + L" : Read\n";
    }
    if (methods) {
        out += L"   Methods:\n";
        for (const std::wstring& f : ns.FunctionNames()) out += L"    " + f + L"()\n";
    }
    return out;
}

void Write(const CallArgs& args, const std::wstring& text) {
    if (TextStream* stream = TargetStream(args)) stream->Write(text);
    else ListenerWrite(text);
}

// showInterface <interface>: its properties, methods and actions.
Value ShowInterface(CallContext&, CallArgs& args) {
    CheckArgCount(L"showInterface", args, 1);
    const Value& v = args.positional[0];
    if (const NamespaceObject* ns = AsNamespace(v)) {
        Write(args, NamespaceListing(*ns, true, true));
        return Value::Ok();
    }
    if (!v.Is(Kind::Interface)) throw TypeError(L"showInterface needs an interface, got: " + PrintForm(v));
    Write(args, InterfaceListing(v.IfaceRef().fpi, true, true));
    return Value::Ok();
}

// showInterfaces <object or class>: every interface it publishes, each as showInterface lists it.
Value ShowInterfaces(CallContext&, CallArgs& args) {
    CheckArgCount(L"showInterfaces", args, 1);
    const Value& v = args.positional[0];
    if (const NamespaceObject* ns = AsNamespace(v)) {
        Write(args, NamespaceListing(*ns, true, true));
        return Value::Ok();
    }
    std::wstring out;
    for (FPInterface* fpi : InterfacesOf(v)) out += InterfaceListing(fpi, true, true);
    Write(args, out);
    return Value::Ok();
}

Value ShowMethods(CallContext&, CallArgs& args) {
    CheckArgCount(L"showMethods", args, 1);
    const Value& v = args.positional[0];
    std::wstring out;
    if (const NamespaceObject* ns = AsNamespace(v)) out = NamespaceListing(*ns, false, true);
    else
        for (FPInterface* fpi : InterfacesOf(v)) out += InterfaceListing(fpi, false, true);
    Write(args, out);
    return Value::Bool(!out.empty());
}

// The property names of a value: parameters of an object (of a node: its object's), then the properties its
// interfaces publish; a namespace's values; an interface's properties.
std::vector<Parameter> PropertiesOf(const Value& v) {
    std::vector<Parameter> out;
    if (const NamespaceObject* ns = AsNamespace(v)) {
        for (const std::wstring& p : ns->PropertyNames()) out.push_back({p, L""});
        return out;
    }
    if (v.Is(Kind::HostObject)) {
        Animatable* anim = v.Anim();
        if (!anim) throw RuntimeError(L"Attempt to access deleted scene object");
        out = BlockParameters(ParameterOwner(anim));
    }
    for (FPInterface* fpi : InterfacesOf(v))
        if (FPInterfaceDesc* desc = fpi ? fpi->GetDesc() : nullptr)
            for (const FPPropDef& p : desc->props) out.push_back({p.internal_name.str(), hostrt::FPTypeName(p.prop_type).str()});
    return out;
}

Value ShowProperties(CallContext&, CallArgs& args) {
    CheckArgCount(L"showProperties", args, 1);
    const std::vector<Parameter> props = PropertiesOf(args.positional[0]);
    std::wstring out;
    for (const Parameter& p : props) out += L"  ." + p.name + (p.type.empty() ? L"" : L" : " + p.type) + L"\n";
    Write(args, out);
    return Value::Bool(!props.empty());
}

Value GetPropNames(CallContext&, CallArgs& args) {
    CheckArgCount(L"getPropNames", args, 1);
    ArrayData names;
    for (const Parameter& p : PropertiesOf(args.positional[0])) names.push_back(Value::Name(p.name));
    return Value::Array(std::move(names));
}

// Whether reading the property works: every property the value answers counts, its node properties too.
Value HasProperty(CallContext& ctx, CallArgs& args, const wchar_t* function) {
    CheckArgCount(function, args, 2);
    const std::wstring name = ToText(args.positional[1]);
    try {
        ctx.interp.GetProperty(args.positional[0], name);
        return Value::Bool(true);
    } catch (const ScriptError&) {
        return Value::Bool(false);
    }
}

// ------------------------------------------------------------------------------------------------- apropos

struct GlobalEntry {
    std::wstring name;
    std::wstring kind;
    std::function<Value()> value;
};

// apropos <text>: every global of the host and its plug-ins whose name holds the text (or matches it, when it
// has '*' or '?'), case ignored, sorted by name, with what kind of global it is and its value.
Value Apropos(CallContext&, CallArgs& args) {
    CheckArgCount(L"apropos", args, 1);
    const std::wstring pattern = ToText(args.positional[0]);
    const bool wildcards = pattern.find_first_of(L"*?") != std::wstring::npos;
    const std::wstring folded = FoldCase(pattern);
    auto matches = [&](const std::wstring& name) {
        return wildcards ? WildcardMatch(name, pattern, true) : FoldCase(name).find(folded) != std::wstring::npos;
    };
    std::map<std::wstring, GlobalEntry> found;  // by folded name: the first kind listed wins
    auto add = [&](const std::wstring& name, const wchar_t* kind, std::function<Value()> value) {
        if (matches(name)) found.emplace(FoldCase(name), GlobalEntry{name, kind, std::move(value)});
    };
    for (FPInterface* fpi : hostrt::CoreInterfaces()) {
        const std::wstring name = hostrt::FPInterfaceName(fpi).str();
        add(name, L"const Interface", [fpi] { return Value::MakeInterface(fpi); });
    }
    for (const std::wstring& name : RegisteredNames(RegisteredKind::SystemVariable))
        add(name, L"SystemGlobal", [name] {
            const SystemVariable* var = FindSystemVariable(name);
            return var && var->get ? var->get() : Value::Undefined();
        });
    for (const std::wstring& name : RegisteredNames(RegisteredKind::Function))
        add(name, L"const Primitive", [name] { return FindGlobalFunction(name).value_or(Value::Undefined()); });
    for (const std::wstring& name : RegisteredNames(RegisteredKind::Class))
        add(name, L"const MAXClass", [name] { return FindClass(name).value_or(Value::Undefined()); });
    for (const hostrt::ClassEntry& entry : hostrt::ClassDirectory::Instance().Entries())
        if (const MCHAR* name = entry.desc ? entry.desc->ClassName() : nullptr)
            add(name, L"const MAXClass", [n = std::wstring(name)] {
                return FindDescriptorClass(n).value_or(Value::Undefined());
            });

    std::wstring out;
    for (const auto& [key, entry] : found) {
        std::wstring value;
        try {
            value = PrintForm(entry.value());
        } catch (const ScriptError& e) {
            value = L"<" + e.Text() + L">";
        }
        out += entry.name + L" (" + entry.kind + L"): " + value + L"\n";
    }
    Write(args, out);
    return Value::Ok();
}

// ------------------------------------------------------------------------------------ plug-in objects' names

// The name an object of a plug-in class has: a published "Name" property or a "GetName" function without
// arguments answering a text. Empty when it has neither.
std::wstring PublishedName(Animatable* anim) {
    for (FPInterface* fpi : InterfacesOfObject(anim)) {
        FPInterfaceDesc* desc = fpi ? fpi->GetDesc() : nullptr;
        if (!desc) continue;
        try {
            if (const FPPropDef* p = desc->GetPropDef(L"Name"); p && hostrt::FPTypeName(p->prop_type) == MSTR(L"string")) {
                const FPValue v = hostrt::GetPropertyFromScript(fpi, L"Name");
                if (v.s) return v.s;
            }
            if (const FPFunctionDef* f = desc->GetFnDef(L"GetName"); f && f->params.empty()) {
                FPValue result;
                hostrt::CallFromScript(fpi, f->ID, {}, {}, result);
                if ((result.type == TYPE_STRING || result.type == TYPE_TSTR) && result.s) return result.s;
                if (result.type == TYPE_TSTR && result.tstr) return result.tstr->data();
            }
        } catch (const MAXException&) {
            // An object that cannot tell its name prints without one.
        }
    }
    return {};
}

void RegisterNamedObjectPrinting() {
    HostObjectHandler h;
    h.name = L"objects of plug-in classes, by class and name";
    h.describe = [](Animatable* anim) -> std::optional<std::wstring> {
        const std::wstring name = PublishedName(anim);
        if (name.empty()) return std::nullopt;
        return anim->ClassName().str() + L":" + name;
    };
    RegisterHostObjectHandler(std::move(h));
}

}  // namespace

void RegisterDiscoveryBuiltins() {
    RegisterNamedObjectPrinting();
    RegisterGlobalFunction(L"showInterface", ShowInterface);
    RegisterGlobalFunction(L"showInterfaces", ShowInterfaces);
    RegisterGlobalFunction(L"showMethods", ShowMethods);
    RegisterGlobalFunction(L"showProperties", ShowProperties);
    RegisterGlobalFunction(L"getPropNames", GetPropNames);
    RegisterGlobalFunction(L"isProperty",
                           [](CallContext& ctx, CallArgs& args) { return HasProperty(ctx, args, L"isProperty"); });
    RegisterGlobalFunction(L"hasProperty",
                           [](CallContext& ctx, CallArgs& args) { return HasProperty(ctx, args, L"hasProperty"); });
    RegisterGlobalFunction(L"apropos", Apropos);
}

}  // namespace hostrt::mxs
