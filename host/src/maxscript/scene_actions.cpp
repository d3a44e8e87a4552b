// The action manager as scripts reach it (actionMan): the host runs the actions of its main table by their
// persistent ids, and macroScripts from the macro table by their ids. Only the main actions that scripts and
// plug-ins use are known; any other id answers false.
#include "maxscript/scene_values.h"

#include "hold.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/definitions.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/registry.h"

#include <functional>
#include <map>
#include <string>

namespace hostrt::mxs {

namespace {

// The main action table (0): persistent id -> action; each answers whether it did something.
const std::map<std::wstring, std::function<bool()>>& MainActions() {
    static const std::map<std::wstring, std::function<bool()>> actions = {
        {L"40015", [] { return theHold.Undo(); }},  // Edit: undo the last scene operation
        {L"40016", [] { return theHold.Redo(); }},  // Edit: redo it
    };
    return actions;
}

class ActionManagerValue : public ExtObject {
public:
    std::wstring ClassName() const override { return L"Interface"; }
    std::wstring Describe() const override { return L"<Interface:actionMan>"; }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, L"numActionTables")) return Value::Int(2);
        if (EqualsNoCase(name, L"executeAction"))
            return NativeFunction(name, [](CallContext& ctx, CallArgs& args) {
                CheckArgCount(L"executeAction", args, 2);
                const int table = ToInt(args.positional[0]);
                const std::wstring id = ToText(args.positional[1]);
                if (table == kMacroScriptActionTable) return Value::Bool(RunMacroAction(ctx, id));
                if (table != 0) return Value::Bool(false);
                auto it = MainActions().find(id);
                return Value::Bool(it != MainActions().end() && it->second());
            });
        return std::nullopt;
    }
};

}  // namespace

void RegisterSceneActionFunctions() {
    RegisterSystemVariable(L"actionMan",
                           {[] { return Value::Ext(std::make_shared<ActionManagerValue>()); }, nullptr});
}

}  // namespace hostrt::mxs
