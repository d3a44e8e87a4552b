// Right-click menus (rcmenu) and mouse tools (tool) without windows or a mouse. A menu holds its items
// (checked, enabled, caption) and their handlers, which a script may call (`menu.item.picked()`);
// registerRightClickMenu and popUpMenu accept it, nobody picks. A tool holds its locals, functions and
// handlers; startTool runs its start handler and, as no mouse is there to click, its stop handler at once,
// and answers #abort as for a tool the user cancels.
#include "maxscript/definitions.h"

#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/print.h"
#include "maxscript/registry.h"
#include "maxscript/rollout_controls.h"

namespace hostrt::mxs {

namespace {

class MenuObject : public ExtObject {
public:
    MenuObject(DefinitionSite site, const ast::Definition& def) : site_(std::move(site)), def_(def) {}

    void Build(Interpreter& in) {
        scope_ = MemberScope(site_.scope);
        auto handlers = std::make_shared<HandlerTable>();
        handlers->Bind(site_, def_, scope_);
        handlers_ = handlers;
        InitMembers(in, site_, def_.members, scope_);
        items_.clear();
        for (const ast::ControlDef& c : def_.controls) AddItem(in, c);
    }

    std::wstring ClassName() const override { return L"RCMenu"; }
    std::wstring Describe() const override { return L"RCMenu:" + def_.name; }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        const std::wstring key = FoldCase(name);
        if (key == L"name") return Value::String(def_.name);
        if (key == L"items") {
            ArrayData items;
            for (const auto& i : items_) items.push_back(Value::Ext(i));
            return Value::Array(std::move(items));
        }
        if (Value* v = scope_->Find(key)) return *v;
        return std::nullopt;
    }
    bool SetProperty(CallContext&, const std::wstring& name, const Value& value) override {
        Value* v = scope_->Find(FoldCase(name));
        if (!v || v->Is(Kind::Function) || v->Is(Kind::Ext)) return false;
        *v = value;
        return true;
    }

private:
    void AddItem(Interpreter& in, const ast::ControlDef& c) {
        BuildControls(in, site_, c, L"submenu", scope_, handlers_, items_);
    }

    DefinitionSite site_;
    const ast::Definition& def_;
    std::shared_ptr<Scope> scope_;
    std::shared_ptr<const HandlerTable> handlers_;
    std::vector<std::shared_ptr<ControlObject>> items_;
};

class ToolObject : public ExtObject {
public:
    ToolObject(DefinitionSite site, const ast::Definition& def) : site_(std::move(site)), def_(def) {}

    void Build(Interpreter& in) {
        scope_ = MemberScope(site_.scope);
        handlers_.Bind(site_, def_, scope_);
        InitMembers(in, site_, def_.members, scope_);
        keywords_ = EvalKeywords(in, site_, def_.keywords, site_.scope);
    }

    // Starts and, with no mouse to click, stops the tool at once.
    Value Start(Interpreter& in) {
        Build(in);
        running_ = true;
        handlers_.Run(in, L"", L"start");
        running_ = false;
        handlers_.Run(in, L"", L"stop");
        return Value::Name(L"abort");
    }

    std::wstring ClassName() const override { return L"MouseTool"; }
    std::wstring Describe() const override { return L"MouseTool:" + def_.name; }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        const std::wstring key = FoldCase(name);
        if (key == L"name") return Value::String(def_.name);
        if (key == L"running") return Value::Bool(running_);
        if (auto k = FindKeyword(keywords_, key)) return *k;
        if (Value* v = scope_->Find(key)) return *v;
        // An event name answers its handler: tool.mousePoint 1.
        if (auto fn = handlers_.Find(L"", key)) return *fn;
        return std::nullopt;
    }
    bool SetProperty(CallContext&, const std::wstring& name, const Value& value) override {
        Value* v = scope_->Find(FoldCase(name));
        if (!v || v->Is(Kind::Function)) return false;
        *v = value;
        return true;
    }

private:
    DefinitionSite site_;
    const ast::Definition& def_;
    std::shared_ptr<Scope> scope_;
    HandlerTable handlers_;
    std::vector<std::pair<std::wstring, Value>> keywords_;
    bool running_ = false;
};

template <class T> std::shared_ptr<T> Arg(const Value& v, const wchar_t* className) {
    auto obj = v.Is(Kind::Ext) ? std::dynamic_pointer_cast<T>(v.ExtObj()) : nullptr;
    if (!obj) throw ConversionError(v, className);
    return obj;
}

}  // namespace

Value DefineRCMenu(Interpreter& in, const DefinitionSite& site, const ast::Definition& def) {
    auto menu = std::make_shared<MenuObject>(site, def);
    menu->Build(in);
    return Value::Ext(menu);
}

Value DefineTool(Interpreter& in, const DefinitionSite& site, const ast::Definition& def) {
    auto tool = std::make_shared<ToolObject>(site, def);
    tool->Build(in);
    return Value::Ext(tool);
}

void RegisterMenuToolBuiltins() {
    RegisterGlobalFunction(L"registerRightClickMenu", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"registerRightClickMenu", args, 1);
        Arg<MenuObject>(args.positional[0], L"RCMenu");
        return Value::Bool(true);
    });
    RegisterGlobalFunction(L"unregisterRightClickMenu", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"unregisterRightClickMenu", args, 1);
        Arg<MenuObject>(args.positional[0], L"RCMenu");
        return Value::Ok();
    });
    RegisterGlobalFunction(L"popUpMenu", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"popUpMenu", args, 1);
        Arg<MenuObject>(args.positional[0], L"RCMenu");
        return Value::Ok();
    });
    RegisterGlobalFunction(L"startTool", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"startTool", args, 1);
        return Arg<ToolObject>(args.positional[0], L"MouseTool")->Start(ctx.interp);
    });
    RegisterGlobalFunction(L"stopTool", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"stopTool", args, 1);
        Arg<ToolObject>(args.positional[0], L"MouseTool");
        return Value::Ok();
    });
}

}  // namespace hostrt::mxs
