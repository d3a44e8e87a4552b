// Scripted plug-ins (`plugin helper MyHelper ...`) and custom attribute definitions (`attributes ...`).
// Both hold parameter blocks, locals, functions, handlers and rollouts. A plug-in becomes a class whose
// constructor makes an instance: parameters at their defaults, then the keyword arguments (through the
// parameters' set handlers), then `on create` and `on postCreate`. An attribute definition is added to a
// scene object with custAttributes.add; its parameters then read and write as properties of that object.
// The instances live in the script only: a scripted plug-in makes no object of the scene, and attributes
// are not saved with the scene file.
#include "maxscript/definitions.h"

#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/print.h"
#include "maxscript/registry.h"
#include "ref.h"

#include <unordered_map>

namespace hostrt::mxs {

namespace {

// A parameter's value at its type's default, or converted to its type.
Value ParamDefault(const std::wstring& type) {
    if (type == L"integer" || type == L"index") return Value::Int(0);
    if (type == L"boolean") return Value::Bool(false);
    if (type == L"string") return Value::String(L"");
    if (type == L"color" || type == L"frgba") return Value::Col(AColor(0, 0, 0, 255.f));
    if (type == L"point3") return Value::P3(Point3());
    if (type == L"point2") return Value::P2(Point2());
    if (type == L"time") return Value::Time(0);
    if (type == L"matrix3") return Value::Matrix(Matrix3(TRUE));
    if (type == L"float" || type == L"worldunits" || type == L"angle" || type == L"percent" || type == L"colorchannel")
        return Value::Float(0);
    return Value::Undefined();
}

Value ParamValue(const std::wstring& type, const Value& v) {
    if (v.IsUndefined()) return v;
    if (type == L"integer" || type == L"index") return Value::Int(ToInt(v));
    if (type == L"boolean") return v.IsNumber() ? Value::Bool(ToInt(v) != 0) : Value::Bool(ToBool(v));
    if (type == L"string" || type == L"filename") return Value::String(ToText(v));
    if (type == L"float" || type == L"worldunits" || type == L"angle" || type == L"percent" || type == L"colorchannel")
        return Value::Float(ToFloat(v));
    if (type == L"point3") return Value::P3(ToPoint3(v));
    return v;
}

// A parameter block's parameter.
struct Param {
    std::wstring name;  // folded
    std::wstring written;
    std::wstring type;  // folded, without '#'; a tab type ends in "tab"
    std::shared_ptr<HandlerTable> handlers;  // its block's set and get handlers
};

// What a plug-in and an attribute definition have in common: written in a site, made into instances.
class ScriptedDefinition {
public:
    ScriptedDefinition(DefinitionSite site, const ast::Definition& def) : site_(std::move(site)), def_(def) {}
    const DefinitionSite& Site() const { return site_; }
    const ast::Definition& Def() const { return def_; }

private:
    DefinitionSite site_;
    const ast::Definition& def_;
};

class ScriptedInstance : public ExtObject, public std::enable_shared_from_this<ScriptedInstance> {
public:
    ScriptedInstance(std::shared_ptr<ScriptedDefinition> def, Value classValue)
        : def_(std::move(def)), classValue_(std::move(classValue)) {}

    // Parameters at their defaults, locals, functions, handlers and rollouts.
    void Build(Interpreter& in) {
        const DefinitionSite& site = def_->Site();
        const ast::Definition& def = def_->Def();
        scope_ = MemberScope(site.scope);
        scope_->vars[L"this"] = Value::Ext(shared_from_this());
        scope_->vars[L"delegate"] = Value::Undefined();
        for (const auto& nested : def.nested) {
            if (nested->what != ast::DefKind::Parameters) continue;
            auto handlers = std::make_shared<HandlerTable>();
            handlers->Bind(site, *nested, scope_);
            for (const ast::ControlDef& p : nested->controls) {
                const auto keywords = EvalKeywords(in, site, p.keywords, scope_);
                std::wstring type = L"float";
                if (auto t = FindKeyword(keywords, L"type")) type = FoldCase(ToText(*t));
                Value value;
                if (type.size() > 3 && type.compare(type.size() - 3, 3, L"tab") == 0) {
                    const std::wstring item = type.substr(0, type.size() - 3);
                    const int size = FindKeyword(keywords, L"tabSize") ? ToInt(*FindKeyword(keywords, L"tabSize")) : 0;
                    const Value fill = FindKeyword(keywords, L"default") ? ParamValue(item, *FindKeyword(keywords, L"default"))
                                                                         : ParamDefault(item);
                    value = Value::Array(ArrayData(std::size_t(std::max(size, 0)), fill));
                } else {
                    value = FindKeyword(keywords, L"default") ? ParamValue(type, *FindKeyword(keywords, L"default"))
                                                              : ParamDefault(type);
                }
                params_.push_back({FoldCase(p.name), p.name, type, handlers});
                scope_->vars[FoldCase(p.name)] = value;
            }
        }
        handlers_.Bind(site, def, scope_);
        InitMembers(in, site, def.members, scope_);
        // Rollouts and tools of the definition see its parameters and locals.
        const DefinitionSite inner{site.program, scope_};
        for (const auto& nested : def.nested) {
            if (nested->what == ast::DefKind::Rollout)
                scope_->vars[FoldCase(nested->name)] = DefineRollout(in, inner, *nested);
            else if (nested->what == ast::DefKind::Tool)
                scope_->vars[FoldCase(nested->name)] = DefineTool(in, inner, *nested);
        }
    }

    const HandlerTable& Handlers() const { return handlers_; }
    const ast::Definition& Def() const { return def_->Def(); }
    const std::shared_ptr<ScriptedDefinition>& Definition() const { return def_; }

    std::wstring ClassName() const override { return def_->Def().name; }
    std::wstring Describe() const override { return def_->Def().name + L":" + def_->Def().name; }
    std::optional<Value> ClassValue() override { return classValue_; }

    std::optional<Value> GetProperty(CallContext& ctx, const std::wstring& name) override {
        const std::wstring key = FoldCase(name);
        Value* v = scope_->Find(key);
        if (!v || key == L"this") return std::nullopt;
        if (const Param* p = FindParam(key)) {
            if (auto get = p->handlers->Find(p->name, L"get")) {
                CallArgs args;
                args.positional.push_back(*v);
                return ctx.interp.Call(*get, args);
            }
        }
        return *v;
    }

    bool SetProperty(CallContext& ctx, const std::wstring& name, const Value& value) override {
        const std::wstring key = FoldCase(name);
        if (const Param* p = FindParam(key)) {
            const Value converted = p->type.size() > 3 && p->type.ends_with(L"tab") ? value : ParamValue(p->type, value);
            scope_->vars[key] = converted;
            p->handlers->Run(ctx.interp, p->name, L"set", {converted});
            return true;
        }
        Value* v = scope_->Find(key);
        if (!v || v->Is(Kind::Function) || key == L"this") return false;
        *v = value;
        return true;
    }

    std::vector<std::wstring> PropertyNames() const override {
        std::vector<std::wstring> names;
        for (const Param& p : params_) names.push_back(p.written);
        return names;
    }

private:
    const Param* FindParam(const std::wstring& key) const {
        for (const Param& p : params_)
            if (p.name == key) return &p;
        return nullptr;
    }

    std::shared_ptr<ScriptedDefinition> def_;
    Value classValue_;
    std::shared_ptr<Scope> scope_;
    std::vector<Param> params_;
    HandlerTable handlers_;
};

// Applies keyword arguments as properties (through set handlers), then runs the creation handlers.
void Create(CallContext& ctx, const std::shared_ptr<ScriptedInstance>& instance, const CallArgs& args) {
    instance->Build(ctx.interp);
    for (const auto& [name, value] : args.keywords)
        if (!instance->SetProperty(ctx, name, value)) throw UnknownPropertyError(name, Value::Ext(instance));
    instance->Handlers().Run(ctx.interp, L"", L"create");
    instance->Handlers().Run(ctx.interp, L"", L"postCreate");
}

const wchar_t* ScriptSuperclass(const std::wstring& written) {
    if (written == L"geometry" || written == L"simpleobject") return L"GeometryClass";
    if (written == L"modifier" || written == L"simplemod" || written == L"simplemeshmod") return L"modifier";
    if (written == L"shape" || written == L"simplespline") return L"shape";
    if (written == L"texturemap") return L"textureMap";
    return nullptr;
}

// ---- Attribute definitions and the objects they are added to.

class AttributeDefObject : public ExtObject {
public:
    explicit AttributeDefObject(std::shared_ptr<ScriptedDefinition> def) : def_(std::move(def)) {}
    std::wstring ClassName() const override { return L"AttributeDef"; }
    std::wstring Describe() const override { return L"<AttributeDef:" + def_->Def().name + L">"; }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, L"name")) return Value::String(def_->Def().name);
        return std::nullopt;
    }
    const std::shared_ptr<ScriptedDefinition>& Definition() const { return def_; }

private:
    std::shared_ptr<ScriptedDefinition> def_;
};

// The attributes added to each host object, by its handle.
std::unordered_map<AnimHandle, std::vector<std::shared_ptr<ScriptedInstance>>>& Attached() {
    static std::unordered_map<AnimHandle, std::vector<std::shared_ptr<ScriptedInstance>>> attached;
    return attached;
}

Animatable* HostArg(const Value& v) {
    Animatable* anim = v.Is(Kind::HostObject) ? v.Anim() : nullptr;
    if (!anim) throw ConversionError(v, L"MAXWrapper");
    return anim;
}

std::vector<std::shared_ptr<ScriptedInstance>>& AttributesOf(const Value& v) {
    return Attached()[Animatable::GetHandleByAnim(HostArg(v))];
}

std::shared_ptr<AttributeDefObject> DefArg(const Value& v) {
    auto def = v.Is(Kind::Ext) ? std::dynamic_pointer_cast<AttributeDefObject>(v.ExtObj()) : nullptr;
    if (!def) throw ConversionError(v, L"AttributeDef");
    return def;
}

// The attribute of an object given by a 1-based index or its definition; null when there is none.
std::shared_ptr<ScriptedInstance> FindAttribute(const std::vector<std::shared_ptr<ScriptedInstance>>& list,
                                                const Value& which) {
    if (which.IsNumber()) {
        const int i = ToInt(which);
        return i >= 1 && i <= int(list.size()) ? list[std::size_t(i - 1)] : nullptr;
    }
    const auto def = DefArg(which);
    for (const auto& a : list)
        if (a->Definition() == def->Definition()) return a;
    return nullptr;
}

void RegisterAttributeHandler() {
    HostObjectHandler h;
    h.name = L"custom attributes";
    h.accepts = [](Animatable* a) {
        auto it = Attached().find(Animatable::GetHandleByAnim(a));
        return it != Attached().end() && !it->second.empty();
    };
    h.getProperty = [](CallContext& ctx, Animatable* a, const std::wstring& name) -> std::optional<Value> {
        for (const auto& attr : Attached()[Animatable::GetHandleByAnim(a)]) {
            if (EqualsNoCase(attr->Def().name, name)) return Value::Ext(attr);
            if (auto v = attr->GetProperty(ctx, name)) return v;
        }
        return std::nullopt;
    };
    h.setProperty = [](CallContext& ctx, Animatable* a, const std::wstring& name, const Value& v) {
        for (const auto& attr : Attached()[Animatable::GetHandleByAnim(a)])
            if (attr->SetProperty(ctx, name, v)) return true;
        return false;
    };
    RegisterHostObjectHandler(std::move(h));
}

void RegisterCustAttributes() {
    RegisterFunctionSet(L"custAttributes", {
        {L"add", [](CallContext& ctx, CallArgs& args) {
             CheckArgCount(L"custAttributes.add", args, 2, 3);
             auto& list = AttributesOf(args.positional[0]);
             const auto def = DefArg(args.positional[1]);
             for (const auto& a : list)
                 if (a->Definition() == def->Definition()) return Value::Bool(false);
             auto instance = std::make_shared<ScriptedInstance>(def->Definition(), args.positional[1]);
             CallArgs none;
             Create(ctx, instance, none);
             list.push_back(instance);
             return Value::Bool(true);
         }},
        {L"delete", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"custAttributes.delete", args, 2);
             auto& list = AttributesOf(args.positional[0]);
             const auto found = FindAttribute(list, args.positional[1]);
             std::erase(list, found);
             return Value::Bool(found != nullptr);
         }},
        {L"count", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"custAttributes.count", args, 1);
             return Value::Int(int(AttributesOf(args.positional[0]).size()));
         }},
        {L"get", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"custAttributes.get", args, 2);
             const auto found = FindAttribute(AttributesOf(args.positional[0]), args.positional[1]);
             return found ? Value::Ext(found) : Value::Undefined();
         }},
        {L"getDef", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"custAttributes.getDef", args, 1, 2);
             std::shared_ptr<ScriptedInstance> found;
             if (args.positional.size() == 2) found = FindAttribute(AttributesOf(args.positional[0]), args.positional[1]);
             else if (args.positional[0].Is(Kind::Ext)) found = std::dynamic_pointer_cast<ScriptedInstance>(args.positional[0].ExtObj());
             if (!found) return Value::Undefined();
             return *found->ClassValue();
         }},
        {L"getDefs", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"custAttributes.getDefs", args, 1);
             const auto& list = AttributesOf(args.positional[0]);
             if (list.empty()) return Value::Undefined();
             ArrayData defs;
             for (const auto& a : list) defs.push_back(*a->ClassValue());
             return Value::Array(std::move(defs));
         }},
    });
}

}  // namespace

Value DefinePlugin(Interpreter&, const DefinitionSite& site, const ast::Definition& def) {
    auto scripted = std::make_shared<ScriptedDefinition>(site, def);
    const wchar_t* mapped = ScriptSuperclass(def.superclass);
    const std::wstring superclass = mapped ? mapped : def.superclass;
    // The class itself is what classOf answers for its instances.
    auto classSlot = std::make_shared<Value>();
    Value cls = RegisterClass(def.name, superclass, [scripted, classSlot](CallContext& ctx, CallArgs& args) {
        if (!args.positional.empty()) throw ArgCountError(scripted->Def().name, 0, int(args.positional.size()));
        auto instance = std::make_shared<ScriptedInstance>(scripted, *classSlot);
        Create(ctx, instance, args);
        return Value::Ext(instance);
    });
    *classSlot = cls;
    return cls;
}

Value DefineAttributes(Interpreter&, const DefinitionSite& site, const ast::Definition& def) {
    return Value::Ext(std::make_shared<AttributeDefObject>(std::make_shared<ScriptedDefinition>(site, def)));
}

void RegisterPluginBuiltins() {
    RegisterAttributeHandler();
    RegisterCustAttributes();
}

}  // namespace hostrt::mxs
