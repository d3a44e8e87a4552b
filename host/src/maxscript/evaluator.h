// The parts of the tree-walking evaluator: expressions (evaluator.cpp) and control forms (eval_control.cpp).
// Internal to the interpreter.
#pragma once

#include "maxscript/interpreter.h"

#include <memory>

namespace hostrt::mxs {

// `&x`: a reference to a variable, property or item, read and written through the expression it was made
// from. A function whose parameter is written `&p` gives its final value back to the caller through it.
class ValueReference : public ExtObject {
public:
    ValueReference(Interpreter& in, std::shared_ptr<const ast::Program> program, const ast::Node& target,
                   std::shared_ptr<Scope> scope);
    std::wstring ClassName() const override { return L"ValueRef"; }
    Value Get() const;
    void Set(const Value& v) const;

private:
    Interpreter& in_;
    std::shared_ptr<const ast::Program> program_;  // keeps the target's expression alive
    const ast::Node& target_;
    std::shared_ptr<Scope> scope_;
};
// The reference a value holds; null for any other value.
ValueReference* AsReference(const Value& v);
// The reference a value holds; "Cannot dereference" for any other value (`*x`).
ValueReference& Dereference(const Value& v);

class Evaluator {
public:
    using ScopePtr = std::shared_ptr<Scope>;

    static Value Dispatch(Interpreter& in, const ast::Node& node, const ScopePtr& scope);

    // ---- Variables.
    // `a.b.c` where `a.b` reads as a plain value: the sub-anim b of a answers c (`$b.pos.controller`).
    static Value SubProperty(Interpreter& in, const ast::Property& p, const ScopePtr& scope);
    static bool SetSubAnimProperty(Interpreter& in, const ast::Property& p, const Value& v, const ScopePtr& scope);
    static Value ReadVar(Interpreter& in, const ast::Var& var, const ScopePtr& scope);
    // Assigns an existing variable, else makes an implicit local (inside a block or function) or a global.
    static void WriteVar(Interpreter& in, const std::wstring& key, const std::wstring& name, const Value& v,
                         const ScopePtr& scope);
    // Declares a variable in the innermost block or function scope (a global at the top level).
    static void DefineLocal(Interpreter& in, const std::wstring& key, const Value& v, const ScopePtr& scope);
    // Stores into an assignable expression (variable, property, index); points and colours are stored back.
    static void Store(Interpreter& in, const ast::Node& target, const Value& v, const ScopePtr& scope);

    // ---- Expressions (evaluator.cpp).
    static Value Binary(Interpreter& in, const ast::Binary& n, const ScopePtr& scope);
    static Value Assign(Interpreter& in, const ast::Assign& n, const ScopePtr& scope);
    static Value CallNode(Interpreter& in, const ast::Call& n, const ScopePtr& scope);
    static Value Block(Interpreter& in, const ast::Block& n, const ScopePtr& scope);

    // ---- Control forms (eval_control.cpp).
    static Value If(Interpreter& in, const ast::If& n, const ScopePtr& scope);
    static Value While(Interpreter& in, const ast::While& n, const ScopePtr& scope);
    static Value DoWhile(Interpreter& in, const ast::DoWhile& n, const ScopePtr& scope);
    static Value For(Interpreter& in, const ast::For& n, const ScopePtr& scope);
    static Value Case(Interpreter& in, const ast::Case& n, const ScopePtr& scope);
    static Value Try(Interpreter& in, const ast::Try& n, const ScopePtr& scope);
    static Value FnDef(Interpreter& in, const ast::FnDef& n, const ScopePtr& scope);
    static Value Decl(Interpreter& in, const ast::Decl& n, const ScopePtr& scope);
    static Value Context(Interpreter& in, const ast::Context& n, const ScopePtr& scope);
    static Value SetContext(Interpreter& in, const ast::SetContext& n, const ScopePtr& scope);
    static Value MaxCmd(Interpreter& in, const ast::MaxCmd& n, const ScopePtr& scope);

    // ---- Change handlers (change_handlers.cpp) and definitions (eval_definitions.cpp).
    static Value When(Interpreter& in, const ast::When& n, const ScopePtr& scope);
    static Value Definition(Interpreter& in, const ast::Definition& n, const ScopePtr& scope);
    // The script whose code runs now (definitions keep it alive for their functions and handlers).
    static const std::shared_ptr<const ast::Program>& CurrentProgram(Interpreter& in) { return in.program_; }
    // Makes p the running script and answers the one that ran before.
    static std::shared_ptr<const ast::Program> SwapProgram(Interpreter& in, std::shared_ptr<const ast::Program> p) {
        std::swap(in.program_, p);
        return p;
    }

    // Calls a scripted function (interpreter.cpp calls it for function values with a definition). A mapped
    // function given a collection first runs once per item and answers OK.
    static Value CallScripted(Interpreter& in, const FunctionData& fn, CallArgs& args);

private:
    static Value CallOnce(Interpreter& in, const FunctionData& fn, CallArgs& args);
};

}  // namespace hostrt::mxs
