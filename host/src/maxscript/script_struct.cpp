// Struct definitions and their instances. A definition is called like a function to make an instance:
// positional arguments fill the data members in order, keyword arguments name them, then `on create`
// runs. Each instance keeps its members in a scope of its own, so its functions read and change them by
// name and `this` is the instance.
#include "maxscript/definitions.h"

#include "maxscript/errors.h"
#include "maxscript/print.h"
#include "maxscript/registry.h"

namespace hostrt::mxs {

namespace {

class StructDefObject : public ExtObject, public std::enable_shared_from_this<StructDefObject> {
public:
    StructDefObject(DefinitionSite site, const ast::Definition& def) : site_(std::move(site)), def_(def) {}

    std::wstring ClassName() const override { return L"StructDef"; }
    std::wstring Describe() const override {
        std::wstring out = L"#Struct:" + def_.name + L"(";
        bool first = true;
        for (const ast::Member& m : def_.members) {
            out += (first ? L"" : L"; ") + m.written + (m.function ? L":<fn>" : L":<data>");
            first = false;
        }
        return out + L")";
    }
    bool Callable() const override { return true; }
    std::optional<Value> Call(CallContext& ctx, CallArgs& args) override;
    std::optional<Value> GetProperty(CallContext& ctx, const std::wstring& name) override;
    std::vector<std::wstring> PropertyNames() const override {
        std::vector<std::wstring> names;
        for (const ast::Member& m : def_.members)
            if (!m.isPrivate) names.push_back(m.written);
        return names;
    }

    const ast::Definition& Def() const { return def_; }
    const DefinitionSite& Site() const { return site_; }
    const ast::Member* FindMember(std::wstring_view name) const {
        for (const ast::Member& m : def_.members)
            if (EqualsNoCase(m.name, name)) return &m;
        return nullptr;
    }

private:
    DefinitionSite site_;
    const ast::Definition& def_;
    std::shared_ptr<Scope> statics_;  // members for functions called through the definition
};

class StructInstance : public ExtObject, public std::enable_shared_from_this<StructInstance> {
public:
    StructInstance(std::shared_ptr<StructDefObject> def, std::shared_ptr<Scope> scope)
        : def_(std::move(def)), scope_(std::move(scope)) {}

    std::wstring ClassName() const override { return def_->Def().name; }
    std::wstring Describe() const override {
        std::wstring out = L"(" + def_->Def().name;
        for (const ast::Member& m : def_->Def().members) {
            if (m.function) continue;
            const Value* v = scope_->Find(m.name);
            out += L" " + m.written + L":" + (v ? PrintForm(*v) : std::wstring(L"undefined"));
        }
        return out + L")";
    }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        const ast::Member* m = def_->FindMember(FoldCase(name));
        if (!m || m->isPrivate) return std::nullopt;
        return *scope_->Find(m->name);
    }
    bool SetProperty(CallContext&, const std::wstring& name, const Value& value) override {
        const ast::Member* m = def_->FindMember(FoldCase(name));
        if (!m || m->isPrivate || m->function) return false;
        scope_->vars[m->name] = value;
        return true;
    }
    std::optional<Value> ClassValue() override { return Value::Ext(def_); }
    std::optional<Value> Copy(CallContext& ctx) override {
        auto scope = MemberScope(scope_->parent);
        for (const ast::Member& m : def_->Def().members)
            if (!m.function) scope->vars[m.name] = *scope_->Find(m.name);
        auto copy = Finish(def_, scope);
        copy->handlers_.Run(ctx.interp, L"", L"clone");
        return Value::Ext(copy);
    }
    std::vector<std::wstring> PropertyNames() const override { return def_->PropertyNames(); }

    // Binds the functions and handlers of a new instance whose data members are in scope.
    static std::shared_ptr<StructInstance> Finish(const std::shared_ptr<StructDefObject>& def,
                                                  const std::shared_ptr<Scope>& scope) {
        auto instance = std::make_shared<StructInstance>(def, scope);
        const DefinitionSite& site = def->Site();
        for (const ast::Member& m : def->Def().members)
            if (m.function) scope->vars[m.name] = BindFunction(site, static_cast<const ast::FnDef&>(*m.init), scope);
        scope->vars[L"this"] = Value::Ext(instance);
        instance->handlers_.Bind(site, def->Def(), scope);
        return instance;
    }
    const HandlerTable& Handlers() const { return handlers_; }

private:
    std::shared_ptr<StructDefObject> def_;
    std::shared_ptr<Scope> scope_;
    HandlerTable handlers_;
};

std::optional<Value> StructDefObject::Call(CallContext& ctx, CallArgs& args) {
    auto self = shared_from_this();
    auto scope = MemberScope(site_.scope);
    // The functions come first, so that initial values may call them.
    auto instance = StructInstance::Finish(self, scope);
    {
        SiteFrame frame(ctx.interp, site_);
        for (const ast::Member& m : def_.members)
            if (!m.function) scope->vars[m.name] = m.init ? ctx.interp.Eval(*m.init, scope) : Value::Undefined();
    }
    std::vector<const ast::Member*> data;
    for (const ast::Member& m : def_.members)
        if (!m.function && !m.isPrivate) data.push_back(&m);
    if (args.positional.size() > data.size())
        throw ArgCountRangeError(def_.name, 0, int(data.size()), int(args.positional.size()));
    for (std::size_t i = 0; i < args.positional.size(); ++i) scope->vars[data[i]->name] = args.positional[i];
    for (const auto& [name, value] : args.keywords) {
        const ast::Member* m = FindMember(FoldCase(name));
        if (!m || m->function || m->isPrivate) throw UnknownPropertyError(name, Value::Ext(self));
        scope->vars[m->name] = value;
    }
    instance->Handlers().Run(ctx.interp, L"", L"create");
    return Value::Ext(instance);
}

std::optional<Value> StructDefObject::GetProperty(CallContext& ctx, const std::wstring& name) {
    const ast::Member* m = FindMember(FoldCase(name));
    if (!m || !m->function || m->isPrivate) return std::nullopt;
    // A function called through the definition sees the members' initial values.
    if (!statics_) {
        statics_ = MemberScope(site_.scope);
        InitMembers(ctx.interp, site_, def_.members, statics_);
    }
    return *statics_->Find(m->name);
}

}  // namespace

Value DefineStruct(Interpreter&, const DefinitionSite& site, const ast::Definition& def) {
    for (const ast::Definition::Handler& h : def.handlers)
        if (h.event != L"create" && h.event != L"clone")
            throw RuntimeError(L"Unknown struct event handler: " + h.fn->name + L" in struct " + def.name);
    return Value::Ext(std::make_shared<StructDefObject>(site, def));
}

}  // namespace hostrt::mxs
