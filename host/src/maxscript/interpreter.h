// hostrt::mxs::Interpreter: runs MAXScript. It keeps the user's globals, the evaluation context (the time of
// `at time`, `animate on`), the assertion tally of a test run and the random generator. Property access,
// indexing and calls on any value go through it, so built-ins and the host's handlers share one behaviour.
#pragma once

#include "maxscript/ast.h"
#include "maxscript/errors.h"
#include "maxscript/value.h"

#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace hostrt::mxs {

// Local variables of a block, loop or function call; parent links to the enclosing scope (for a function:
// the scope it was defined in).
struct Scope {
    std::shared_ptr<Scope> parent;
    std::unordered_map<std::wstring, Value> vars;  // folded names
    // Blocks and function calls take the variables first assigned in them (implicit locals); loops do not.
    bool takesLocals = true;

    Value* Find(const std::wstring& key);
};

class Interpreter {
public:
    Interpreter();
    Interpreter(const Interpreter&) = delete;
    Interpreter& operator=(const Interpreter&) = delete;
    ~Interpreter();

    // The interpreter of the host: ExecuteMAXScriptScript, the listener and plug-ins share its globals.
    static Interpreter& Shared();
    // The interpreter running a script right now (the innermost), else the shared one.
    static Interpreter& Current();

    // Runs a script expression by expression and answers the value of its last expression. Each top-level
    // expression is read and run before the next is read, so a syntax error stops the script where it is
    // written, after what comes before it has run. Errors are thrown as ScriptError carrying the source
    // name, line, column and line text.
    Value Execute(std::wstring_view source, const std::wstring& sourceName = L"");
    // Runs a script parsed as a whole.
    Value Run(const std::shared_ptr<ast::Program>& program);

    // ---- Globals the scripts made (not the registered functions and system variables).
    std::optional<Value> GetGlobal(const std::wstring& name) const;
    void SetGlobal(const std::wstring& name, Value value);
    // What a script reading the name gets: user global, system variable, function, class, core interface.
    Value LookupGlobal(const std::wstring& name);

    // ---- Operations on values, as scripts perform them (errors thrown as ScriptError).
    Value Call(const Value& function, CallArgs& args, int line = 0, int column = 0);
    Value GetProperty(const Value& object, const std::wstring& name);
    // Sets a property of a shared or host value. Points, colours and matrices are values: SetComponent
    // answers the changed copy instead, which the caller stores back.
    void SetProperty(const Value& object, const std::wstring& name, const Value& value);
    Value GetIndex(const Value& object, const Value& index);
    void SetIndex(const Value& object, const Value& index, const Value& value);
    // For value types (Point2, Point3, Color, Matrix3): the copy with one property or index changed.
    std::optional<Value> SetComponent(const Value& object, const std::wstring& name, const Value& value);
    std::optional<Value> SetComponentAt(const Value& object, const Value& index, const Value& value);
    // The items `for x in c` visits.
    std::vector<Value> Iterate(const Value& collection);

    // ---- Evaluation context.
    // The time of `at time`, else the host's current time (ticks).
    TimeValue Time() const;
    bool Animating() const { return animate_; }
    // The coordinate system of `in coordsys` / `set coordsys`: #world, #local, #parent, #screen ... or a
    // node value (its transform).
    const Value& CoordSystem() const { return coordsys_; }
    // The transform centre of `about`: #pivot, #selection, #center, #coordsys, or a node or point value.
    const Value& TransformCentre() const { return about_; }
    // The value of the last top-level expression (what `?` reads).
    const Value& LastResult() const { return lastResult_; }
    // Where the expression being evaluated is written.
    int Line() const { return line_; }
    const std::wstring& SourceName() const { return sourceName_; }

    // ---- Test assertions: a failed one prints its message to the listener and counts.
    void RecordAssertion(bool passed, const std::wstring& failureText);
    int AssertionsRun() const { return assertionsRun_; }
    int AssertionsFailed() const { return assertionsFailed_; }
    void ResetAssertions() { assertionsRun_ = assertionsFailed_ = 0; }

    std::mt19937& Random() { return random_; }

    // The error being handled by the innermost catch; null outside catch.
    const ScriptError* CurrentException() const {
        return caught_.empty() ? nullptr : &caught_.back();
    }

    // Evaluates one node in a scope (null: the global scope). Used by the evaluator's parts.
    Value Eval(const ast::Node& node, const std::shared_ptr<Scope>& scope);

private:
    friend class Evaluator;
    // Evaluates top-level expressions as next hands them out (null at the end).
    template <class Next> Value RunTopLevel(const std::shared_ptr<ast::Program>& program, Next next);

    std::unordered_map<std::wstring, Value> globals_;  // folded names
    std::optional<TimeValue> time_;
    bool animate_ = false;
    Value coordsys_ = Value::Name(L"world");
    Value about_ = Value::Name(L"pivot");
    Value lastResult_;
    int line_ = 0;
    int depth_ = 0;
    std::shared_ptr<const ast::Program> program_;  // the script whose code runs now
    std::wstring sourceName_;
    int assertionsRun_ = 0;
    int assertionsFailed_ = 0;
    std::mt19937 random_;
    std::vector<ScriptError> caught_;
    Interpreter* previous_ = nullptr;  // the interpreter that was current before this one ran
    int running_ = 0;
    // Where the stack stood when the outermost script began: deep recursion stops while the stack still has
    // room, also in builds whose frames are large.
    const char* stackBase_ = nullptr;
};

}  // namespace hostrt::mxs
