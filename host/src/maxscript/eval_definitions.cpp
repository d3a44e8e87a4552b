// Evaluating definitions: the dispatch to each kind's definer and what the definers share (member scopes,
// bound functions, handler tables).
#include "maxscript/definitions.h"

#include "maxscript/evaluator.h"

namespace hostrt::mxs {

SiteFrame::SiteFrame(Interpreter& in, const DefinitionSite& site) : in_(in) {
    saved_ = Evaluator::SwapProgram(in_, site.program);
}

SiteFrame::~SiteFrame() { Evaluator::SwapProgram(in_, std::move(saved_)); }

std::shared_ptr<Scope> MemberScope(const std::shared_ptr<Scope>& parent) {
    auto scope = std::make_shared<Scope>();
    scope->parent = parent;
    scope->takesLocals = false;
    return scope;
}

Value BindFunction(const DefinitionSite& site, const ast::FnDef& fn, const std::shared_ptr<Scope>& closure) {
    auto data = std::make_shared<FunctionData>();
    data->name = fn.name;
    data->program = site.program;
    data->scripted = std::shared_ptr<const ast::FnDef>(site.program, &fn);
    data->closure = closure;
    return Value::Function(std::move(data));
}

void InitMembers(Interpreter& in, const DefinitionSite& site, const std::vector<ast::Member>& members,
                 const std::shared_ptr<Scope>& scope) {
    SiteFrame frame(in, site);
    // Functions are there first, so an initial value may call any of them.
    for (const ast::Member& m : members)
        if (m.function) scope->vars[m.name] = BindFunction(site, static_cast<const ast::FnDef&>(*m.init), scope);
    for (const ast::Member& m : members)
        if (!m.function) scope->vars[m.name] = m.init ? in.Eval(*m.init, scope) : Value::Undefined();
}

std::vector<std::pair<std::wstring, Value>> EvalKeywords(Interpreter& in, const DefinitionSite& site,
                                                         const std::vector<ast::KeywordArg>& keywords,
                                                         const std::shared_ptr<Scope>& scope) {
    SiteFrame frame(in, site);
    std::vector<std::pair<std::wstring, Value>> out;
    for (const ast::KeywordArg& k : keywords) out.emplace_back(k.name, in.Eval(*k.value, scope));
    return out;
}

std::optional<Value> FindKeyword(const std::vector<std::pair<std::wstring, Value>>& keywords, std::wstring_view name) {
    for (const auto& [key, value] : keywords)
        if (EqualsNoCase(key, name)) return value;
    return std::nullopt;
}

void HandlerTable::Bind(const DefinitionSite& site, const ast::Definition& def, const std::shared_ptr<Scope>& closure) {
    entries_.clear();
    for (const ast::Definition::Handler& h : def.handlers)
        entries_.push_back({h.target, h.event, BindFunction(site, *h.fn, closure)});
}

std::optional<Value> HandlerTable::Find(std::wstring_view target, std::wstring_view event) const {
    for (const Entry& e : entries_)
        if (EqualsNoCase(e.target, target) && EqualsNoCase(e.event, event)) return e.fn;
    return std::nullopt;
}

Value HandlerTable::Run(Interpreter& in, std::wstring_view target, std::wstring_view event,
                        std::vector<Value> args) const {
    const std::optional<Value> fn = Find(target, event);
    if (!fn) return Value::Undefined();
    CallArgs call;
    call.positional = std::move(args);
    return in.Call(*fn, call);
}

void RegisterDefinitionBuiltins() {
    RegisterRolloutBuiltins();
    RegisterMenuToolBuiltins();
    RegisterPluginBuiltins();
    RegisterMacroBuiltins();
    RegisterChangeHandlerBuiltins();
}

Value Evaluator::Definition(Interpreter& in, const ast::Definition& n, const ScopePtr& scope) {
    const DefinitionSite site{in.program_, scope};
    Value v;
    bool named = true;  // the definition is also a variable of its name
    switch (n.what) {
    case ast::DefKind::Struct: v = DefineStruct(in, site, n); break;
    case ast::DefKind::Rollout:
    case ast::DefKind::Utility: v = DefineRollout(in, site, n); break;
    case ast::DefKind::RCMenu: v = DefineRCMenu(in, site, n); break;
    case ast::DefKind::Tool: v = DefineTool(in, site, n); break;
    case ast::DefKind::Plugin:
        // A plug-in is a class, known by its name everywhere.
        v = DefinePlugin(in, site, n);
        named = false;
        break;
    case ast::DefKind::Attributes: v = DefineAttributes(in, site, n); break;
    case ast::DefKind::MacroScript:
        v = DefineMacroScript(in, site, n);
        named = false;
        break;
    case ast::DefKind::Parameters: throw RuntimeError(L"A parameter block belongs in a plugin or attributes definition");
    }
    // The name goes to a variable already visible (a global declared before, as tool scripts declare their
    // dialogs), else it becomes a variable of the scope the definition is written in.
    if (named && !n.name.empty() && n.name.find_first_of(L" \t") == std::wstring::npos)
        WriteVar(in, FoldCase(n.name), n.name, v, scope);
    return v;
}

}  // namespace hostrt::mxs
