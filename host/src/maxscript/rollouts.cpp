// Rollouts and utilities without windows, and the functions that show them: createDialog, destroyDialog,
// newRolloutFloater, addRollout, removeRollout, closeRolloutFloater, openUtility, closeUtility. Opening a
// rollout makes its locals and controls afresh from the definition and runs its open handler; closing runs
// its close handler. In between its controls hold whatever the script sets, `.open` answers, and its
// handlers can be called from the script; the windows themselves come with the user interface.
#include "maxscript/definitions.h"

#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/print.h"
#include "maxscript/registry.h"
#include "maxscript/rollout_controls.h"

#include <algorithm>

namespace hostrt::mxs {

namespace {

class FloaterObject;

class RolloutObject : public ExtObject, public std::enable_shared_from_this<RolloutObject> {
public:
    RolloutObject(DefinitionSite site, const ast::Definition& def) : site_(std::move(site)), def_(def) {}

    // Evaluates what stays for the rollout's life: its title and size.
    void Define(Interpreter& in) {
        SiteFrame frame(in, site_);
        title_ = def_.caption ? Value::String(DisplayForm(in.Eval(*def_.caption, site_.scope))) : Value::String(def_.name);
        const auto keywords = EvalKeywords(in, site_, def_.keywords, site_.scope);
        if (auto w = FindKeyword(keywords, L"width")) width_ = *w;
        if (auto h = FindKeyword(keywords, L"height")) height_ = *h;
        if (auto r = FindKeyword(keywords, L"rolledUp")) rolledUp_ = ToBool(*r);
        for (const ast::NodePtr& e : def_.body) in.Eval(*e, site_.scope);
        // Locals and controls are made again when the rollout opens; what they need may come later in the
        // script, so an error now waits for the opening to be reported.
        try {
            Build(in);
        } catch (const ScriptError&) {
            scope_ = MemberScope(site_.scope);
            handlers_ = std::make_shared<HandlerTable>();
            controls_.clear();
        }
    }

    // Fresh locals, functions, handlers and controls from the definition.
    void Build(Interpreter& in) {
        scope_ = MemberScope(site_.scope);
        auto handlers = std::make_shared<HandlerTable>();
        handlers->Bind(site_, def_, scope_);
        handlers_ = handlers;
        InitMembers(in, site_, def_.members, scope_);
        controls_.clear();
        for (const ast::ControlDef& c : def_.controls) AddControl(in, c);
    }

    bool IsOpen() const { return open_; }
    bool InDialog() const { return inDialog_; }

    void Open(Interpreter& in, bool inDialog, const std::shared_ptr<FloaterObject>& floater) {
        if (open_) return;
        Build(in);
        open_ = true;
        inDialog_ = inDialog;
        floater_ = floater;
        handlers_->Run(in, FoldCase(def_.name), L"open");
    }

    void Close(Interpreter& in) {
        if (!open_) return;
        // Marked closed first, so that a close handler that closes the rollout again does nothing.
        open_ = false;
        inDialog_ = false;
        floater_.reset();
        handlers_->Run(in, FoldCase(def_.name), L"close");
    }

    void SetSize(const Value& width, const Value& height) {
        if (!width.IsUndefined()) width_ = Value::Int(ToInt(width));
        if (!height.IsUndefined()) height_ = Value::Int(ToInt(height));
    }
    void SetPos(const Value& pos) { pos_ = pos; }
    const Value& Pos() const { return pos_; }

    std::wstring ClassName() const override { return L"RolloutClass"; }
    std::wstring Describe() const override { return L"Rollout:" + def_.name; }

    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        const std::wstring key = FoldCase(name);
        if (key == L"name") return Value::String(def_.name);
        if (key == L"title") return title_;
        if (key == L"open" || key == L"isDisplayed") return Value::Bool(open_);
        if (key == L"indialog") return Value::Bool(inDialog_);
        if (key == L"width") return width_;
        if (key == L"height") return height_;
        if (key == L"rolledup") return Value::Bool(rolledUp_);
        if (key == L"controls") {
            ArrayData items;
            for (const auto& c : controls_) items.push_back(Value::Ext(c));
            return Value::Array(std::move(items));
        }
        if (Value* v = scope_->Find(key)) return *v;
        return std::nullopt;
    }

    bool SetProperty(CallContext&, const std::wstring& name, const Value& value) override {
        const std::wstring key = FoldCase(name);
        if (key == L"title") {
            title_ = Value::String(ToText(value));
            return true;
        }
        if (key == L"width" || key == L"height") {
            (key == L"width" ? width_ : height_) = Value::Int(ToInt(value));
            return true;
        }
        if (key == L"rolledup") {
            rolledUp_ = ToBool(value);
            return true;
        }
        // Locals can be set from outside; controls and functions cannot be replaced.
        if (Value* v = scope_->Find(key); v && !v->Is(Kind::Function) && !IsControl(*v)) {
            *v = value;
            return true;
        }
        return false;
    }

    std::vector<std::wstring> PropertyNames() const override {
        std::vector<std::wstring> names{L"name", L"title", L"open", L"inDialog", L"width", L"height", L"controls"};
        for (const auto& c : controls_) names.push_back(c->Name());
        for (const ast::Member& m : def_.members) names.push_back(m.written);
        return names;
    }

private:
    static bool IsControl(const Value& v) {
        return v.Is(Kind::Ext) && dynamic_cast<ControlObject*>(v.ExtObj().get()) != nullptr;
    }

    void AddControl(Interpreter& in, const ast::ControlDef& c) {
        BuildControls(in, site_, c, L"group", scope_, handlers_, controls_);
    }

    DefinitionSite site_;
    const ast::Definition& def_;
    std::shared_ptr<Scope> scope_;
    std::shared_ptr<const HandlerTable> handlers_;
    std::vector<std::shared_ptr<ControlObject>> controls_;
    Value title_;
    Value width_ = Value::Int(160);
    Value height_;
    Value pos_;
    bool rolledUp_ = false;
    bool open_ = false;
    bool inDialog_ = false;
    std::weak_ptr<FloaterObject> floater_;
};

// A floating window of rollouts: newRolloutFloater "Title" 200 300.
class FloaterObject : public ExtObject {
public:
    FloaterObject(std::wstring title, int width, int height) : title_(std::move(title)), width_(width), height_(height) {}

    std::wstring ClassName() const override { return L"RolloutFloater"; }
    std::wstring Describe() const override { return L"RolloutFloater:" + title_; }

    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        const std::wstring key = FoldCase(name);
        if (key == L"title") return Value::String(title_);
        if (key == L"open") return Value::Bool(open_);
        if (key == L"size") return Value::P2(Point2(float(width_), float(height_)));
        if (key == L"width") return Value::Int(width_);
        if (key == L"height") return Value::Int(height_);
        if (key == L"pos") return pos_;
        if (key == L"rollouts") {
            ArrayData items;
            for (const auto& r : rollouts_) items.push_back(Value::Ext(r));
            return Value::Array(std::move(items));
        }
        return std::nullopt;
    }
    bool SetProperty(CallContext&, const std::wstring& name, const Value& value) override {
        const std::wstring key = FoldCase(name);
        if (key == L"title") title_ = ToText(value);
        else if (key == L"size") {
            if (!value.Is(Kind::Point2)) throw ConversionError(value, L"Point2");
            width_ = int(value.AsPoint2().x);
            height_ = int(value.AsPoint2().y);
        } else if (key == L"width") width_ = ToInt(value);
        else if (key == L"height") height_ = ToInt(value);
        else if (key == L"pos") pos_ = value;
        else return false;
        return true;
    }

    bool IsOpen() const { return open_; }
    void SetPos(const Value& pos) { pos_ = pos; }
    void Add(const std::shared_ptr<RolloutObject>& r) { rollouts_.push_back(r); }
    void Remove(const RolloutObject* r) {
        rollouts_.erase(std::remove_if(rollouts_.begin(), rollouts_.end(), [r](const auto& x) { return x.get() == r; }),
                        rollouts_.end());
    }
    void Close(Interpreter& in) {
        if (!open_) return;
        open_ = false;
        const auto rollouts = rollouts_;
        for (const auto& r : rollouts) r->Close(in);
        rollouts_.clear();
    }

private:
    std::wstring title_;
    int width_;
    int height_;
    Value pos_ = Value::P2(Point2(0, 0));
    bool open_ = true;
    std::vector<std::shared_ptr<RolloutObject>> rollouts_;
};

std::shared_ptr<RolloutObject> RolloutArg(const Value& v) {
    auto r = v.Is(Kind::Ext) ? std::dynamic_pointer_cast<RolloutObject>(v.ExtObj()) : nullptr;
    if (!r) throw ConversionError(v, L"RolloutClass");
    return r;
}

std::shared_ptr<FloaterObject> FloaterArg(const Value& v) {
    auto f = v.Is(Kind::Ext) ? std::dynamic_pointer_cast<FloaterObject>(v.ExtObj()) : nullptr;
    if (!f) throw ConversionError(v, L"RolloutFloater");
    return f;
}

// createDialog <rollout> [width height [x y]] [width:] [height:] [pos:] [style:] [modal:] ...
Value CreateDialog(CallContext& ctx, CallArgs& args) {
    CheckArgCount(L"CreateDialog", args, 1, 5);
    auto r = RolloutArg(args.positional[0]);
    if (r->IsOpen()) return Value::Bool(true);
    const auto& p = args.positional;
    r->SetSize(p.size() > 1 ? p[1] : Value(), p.size() > 2 ? p[2] : Value());
    if (const Value* w = args.Keyword(L"width")) r->SetSize(*w, Value());
    if (const Value* h = args.Keyword(L"height")) r->SetSize(Value(), *h);
    if (p.size() > 4) r->SetPos(Value::P2(Point2(ToFloat(p[3]), ToFloat(p[4]))));
    if (const Value* pos = args.Keyword(L"pos")) r->SetPos(*pos);
    r->Open(ctx.interp, true, nullptr);
    return Value::Bool(true);
}

}  // namespace

Value DefineRollout(Interpreter& in, const DefinitionSite& site, const ast::Definition& def) {
    auto r = std::make_shared<RolloutObject>(site, def);
    r->Define(in);
    return Value::Ext(r);
}

void RegisterRolloutBuiltins() {
    RegisterGlobalFunction(L"CreateDialog", CreateDialog);
    RegisterGlobalFunction(L"DestroyDialog", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"DestroyDialog", args, 1);
        auto r = RolloutArg(args.positional[0]);
        if (r->InDialog()) r->Close(ctx.interp);
        return Value::Ok();
    });
    RegisterGlobalFunction(L"GetDialogPos", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"GetDialogPos", args, 1);
        auto r = RolloutArg(args.positional[0]);
        return r->Pos().IsUndefined() ? Value::P2(Point2(0, 0)) : r->Pos();
    });
    RegisterGlobalFunction(L"SetDialogPos", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"SetDialogPos", args, 2);
        auto r = RolloutArg(args.positional[0]);
        if (!args.positional[1].Is(Kind::Point2)) throw ConversionError(args.positional[1], L"Point2");
        r->SetPos(args.positional[1]);
        return Value::Ok();
    });
    RegisterGlobalFunction(L"newRolloutFloater", [](CallContext&, CallArgs& args) {
        CheckArgCount(L"newRolloutFloater", args, 3, 5);
        auto f = std::make_shared<FloaterObject>(ToText(args.positional[0]), ToInt(args.positional[1]),
                                                 ToInt(args.positional[2]));
        if (args.positional.size() == 5)
            f->SetPos(Value::P2(Point2(ToFloat(args.positional[3]), ToFloat(args.positional[4]))));
        return Value::Ext(f);
    });
    RegisterGlobalFunction(L"addRollout", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"addRollout", args, 2);
        auto r = RolloutArg(args.positional[0]);
        auto f = FloaterArg(args.positional[1]);
        if (!f->IsOpen()) throw RuntimeError(L"addRollout: the rollout floater is closed");
        if (r->IsOpen()) return Value::Ok();
        f->Add(r);
        r->Open(ctx.interp, false, f);
        if (const Value* rolled = args.Keyword(L"rolledUp")) r->SetProperty(ctx, L"rolledUp", *rolled);
        return Value::Ok();
    });
    RegisterGlobalFunction(L"removeRollout", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"removeRollout", args, 1, 2);
        auto r = RolloutArg(args.positional[0]);
        if (args.positional.size() == 2) FloaterArg(args.positional[1])->Remove(r.get());
        r->Close(ctx.interp);
        return Value::Ok();
    });
    RegisterGlobalFunction(L"closeRolloutFloater", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"closeRolloutFloater", args, 1);
        FloaterArg(args.positional[0])->Close(ctx.interp);
        return Value::Ok();
    });
    RegisterGlobalFunction(L"openUtility", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"openUtility", args, 1);
        RolloutArg(args.positional[0])->Open(ctx.interp, false, nullptr);
        return Value::Bool(true);
    });
    RegisterGlobalFunction(L"closeUtility", [](CallContext& ctx, CallArgs& args) {
        CheckArgCount(L"closeUtility", args, 1);
        RolloutArg(args.positional[0])->Close(ctx.interp);
        return Value::Bool(true);
    });
}

}  // namespace hostrt::mxs
