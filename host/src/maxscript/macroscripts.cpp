// macroScripts: each definition is registered as an action under its category and name (a later definition
// of the same pair replaces the earlier one and keeps its id), and runs with `macros.run "Category" "Name"`,
// `macros.run id` or as an action of the macro table (`actionMan.executeAction 647394 "id"`). A run evaluates the body in a scope of its own; when the body has an `on execute`
// handler, the expressions outside the handlers set up the scope and the handler runs.
#include "maxscript/definitions.h"

#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/print.h"
#include "maxscript/registry.h"

#include <vector>

namespace hostrt::mxs {

namespace {

struct MacroScript {
    int id = 0;
    std::wstring category;
    std::wstring name;
    std::wstring buttonText;
    std::wstring toolTip;
    DefinitionSite site;
    const ast::Definition* def = nullptr;
};

std::vector<MacroScript>& Macros() {
    static std::vector<MacroScript> macros;
    return macros;
}

MacroScript* Find(const std::wstring& category, const std::wstring& name) {
    for (MacroScript& m : Macros())
        if (EqualsNoCase(m.category, category) && EqualsNoCase(m.name, name)) return &m;
    return nullptr;
}

Value Run(Interpreter& in, const MacroScript& macro) {
    auto scope = std::make_shared<Scope>();
    scope->parent = macro.site.scope;
    const DefinitionSite site{macro.site.program, scope};
    Value result;
    {
        SiteFrame frame(in, site);
        for (const ast::NodePtr& e : macro.def->body) result = in.Eval(*e, scope);
    }
    HandlerTable handlers;
    handlers.Bind(site, *macro.def, scope);
    if (handlers.Find(L"", L"execute")) result = handlers.Run(in, L"", L"execute");
    return result;
}

Value MacrosRun(CallContext& ctx, CallArgs& args) {
    CheckArgCount(L"macros.run", args, 1, 2);
    const MacroScript* macro = nullptr;
    if (args.positional.size() == 1) {
        const int id = ToInt(args.positional[0]);
        for (const MacroScript& m : Macros())
            if (m.id == id) macro = &m;
        if (!macro) throw RuntimeError(L"macros.run: no macroScript with id " + std::to_wstring(id));
    } else {
        const std::wstring category = ToText(args.positional[0]);
        const std::wstring name = ToText(args.positional[1]);
        macro = Find(category, name);
        if (!macro)
            throw RuntimeError(L"macros.run: no macroScript \"" + name + L"\" in category \"" + category + L"\"");
    }
    // The entry may be replaced while the macro runs (a macro that defines macros): run a copy.
    const MacroScript running = *macro;
    Run(ctx.interp, running);
    return Value::Bool(true);
}

}  // namespace

bool RunMacroAction(CallContext& ctx, const std::wstring& id) {
    const auto number = ParseNumber(id);
    if (!number) return false;
    for (const MacroScript& m : Macros()) {
        if (m.id != int(*number)) continue;
        const MacroScript running = m;
        Run(ctx.interp, running);
        return true;
    }
    return false;
}

Value DefineMacroScript(Interpreter& in, const DefinitionSite& site, const ast::Definition& def) {
    const auto keywords = EvalKeywords(in, site, def.keywords, site.scope);
    MacroScript m;
    m.name = def.name;
    m.category = FindKeyword(keywords, L"category") ? DisplayForm(*FindKeyword(keywords, L"category"))
                                                    : std::wstring(L"Uncategorized");
    Value caption;
    if (def.caption) {
        SiteFrame frame(in, site);
        caption = in.Eval(*def.caption, site.scope);
    }
    if (auto text = FindKeyword(keywords, L"buttonText")) caption = *text;
    m.buttonText = caption.IsUndefined() ? def.name : DisplayForm(caption);
    const auto tip = FindKeyword(keywords, L"toolTip");
    m.toolTip = tip ? DisplayForm(*tip) : m.buttonText;
    m.site = site;
    m.def = &def;
    if (MacroScript* existing = Find(m.category, m.name)) {
        m.id = existing->id;
        *existing = std::move(m);
        return Value::Int(existing->id);
    }
    m.id = Macros().empty() ? 1 : Macros().back().id + 1;
    Macros().push_back(std::move(m));
    return Value::Int(Macros().back().id);
}

void RegisterMacroBuiltins() {
    RegisterFunctionSet(L"macros", {
        {L"run", MacrosRun},
        {L"list", [](CallContext&, CallArgs& args) {
             CheckArgCount(L"macros.list", args, 0);
             for (const MacroScript& m : Macros())
                 ListenerWrite(std::to_wstring(m.id) + L" " + PrintForm(Value::String(m.name)) + L" " +
                               PrintForm(Value::String(m.category)) + L" " + PrintForm(Value::String(m.buttonText)) +
                               L"\n");
             return Value::Ok();
         }},
    });
}

}  // namespace hostrt::mxs
