// What the definitions of a script share at run time: where a definition was written (interpreter, script,
// scope), members evaluated into a scope of their own, functions bound to it and event handlers looked up
// by target and event. The definers of each kind (struct, rollout, rcmenu, tool, plugin, attributes,
// macroScript) are declared here and live in their own files.
#pragma once

#include "maxscript/ast.h"
#include "maxscript/interpreter.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hostrt::mxs {

// Where a definition is written: its code runs later (a handler, a constructor, a macro) in that script and
// scope, with errors reporting that script's lines, in whichever interpreter runs it then.
struct DefinitionSite {
    std::shared_ptr<const ast::Program> program;
    std::shared_ptr<Scope> scope;  // null at the top level
};

// Makes the site's script the running one of in while it lives, so errors point into it.
class SiteFrame {
public:
    SiteFrame(Interpreter& in, const DefinitionSite& site);
    ~SiteFrame();
    SiteFrame(const SiteFrame&) = delete;
    SiteFrame& operator=(const SiteFrame&) = delete;

private:
    Interpreter& in_;
    std::shared_ptr<const ast::Program> saved_;
};

// A scope for an object's members: the members live in it; variables first assigned inside the object's
// functions stay local to those functions.
std::shared_ptr<Scope> MemberScope(const std::shared_ptr<Scope>& parent);
// A function value of a written function whose free variables are looked up from closure.
Value BindFunction(const DefinitionSite& site, const ast::FnDef& fn, const std::shared_ptr<Scope>& closure);
// Evaluates the members (variables with their initial values, functions) in written order into scope.
void InitMembers(Interpreter& in, const DefinitionSite& site, const std::vector<ast::Member>& members,
                 const std::shared_ptr<Scope>& scope);
// Evaluates keyword arguments in scope.
std::vector<std::pair<std::wstring, Value>> EvalKeywords(Interpreter& in, const DefinitionSite& site,
                                                         const std::vector<ast::KeywordArg>& keywords,
                                                         const std::shared_ptr<Scope>& scope);
// The value of the written keyword of that name (no case), nullopt when it is not written.
std::optional<Value> FindKeyword(const std::vector<std::pair<std::wstring, Value>>& keywords, std::wstring_view name);

// The event handlers of one object, bound to its member scope.
class HandlerTable {
public:
    void Bind(const DefinitionSite& site, const ast::Definition& def, const std::shared_ptr<Scope>& closure);
    // The handler of target (empty: the object's own events) and event; nullopt when none is written.
    std::optional<Value> Find(std::wstring_view target, std::wstring_view event) const;
    // Runs the handler when one is written and answers its value; undefined when none is.
    Value Run(Interpreter& in, std::wstring_view target, std::wstring_view event, std::vector<Value> args = {}) const;

private:
    struct Entry {
        std::wstring target;
        std::wstring event;
        Value fn;
    };
    std::vector<Entry> entries_;
};

// ---- The definers: each evaluates its definition and answers the value the definition expression has.
Value DefineStruct(Interpreter& in, const DefinitionSite& site, const ast::Definition& def);       // script_struct.cpp
Value DefineRollout(Interpreter& in, const DefinitionSite& site, const ast::Definition& def);      // rollouts.cpp
Value DefineRCMenu(Interpreter& in, const DefinitionSite& site, const ast::Definition& def);       // menus_tools.cpp
Value DefineTool(Interpreter& in, const DefinitionSite& site, const ast::Definition& def);         // menus_tools.cpp
Value DefinePlugin(Interpreter& in, const DefinitionSite& site, const ast::Definition& def);       // scripted_plugins.cpp
Value DefineAttributes(Interpreter& in, const DefinitionSite& site, const ast::Definition& def);   // scripted_plugins.cpp
Value DefineMacroScript(Interpreter& in, const DefinitionSite& site, const ast::Definition& def);  // macroscripts.cpp

// The action table of macroScripts (actionMan.executeAction 647394 "<macro id>").
constexpr int kMacroScriptActionTable = 647394;
// Runs the macroScript whose id is written in id; false when there is none.
bool RunMacroAction(CallContext& ctx, const std::wstring& id);

// The built-in functions that go with them, each kind's in its file; RegisterDefinitionBuiltins registers
// them all.
void RegisterDefinitionBuiltins();
void RegisterRolloutBuiltins();        // createDialog, destroyDialog, floaters, openUtility ...
void RegisterMenuToolBuiltins();       // registerRightClickMenu, popUpMenu, startTool, stopTool
void RegisterPluginBuiltins();         // custAttributes
void RegisterMacroBuiltins();          // macros.run, macros.list
void RegisterChangeHandlerBuiltins();  // deleteChangeHandler, deleteAllChangeHandlers

}  // namespace hostrt::mxs
