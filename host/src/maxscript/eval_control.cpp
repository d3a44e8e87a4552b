// Evaluation of the control forms: if, loops, case, try, function definitions, declarations, contexts
// (undo, animate, at time) and max commands.
#include "maxscript/evaluator.h"

#include "hold.h"
#include "maxscript/convert.h"
#include "maxscript/print.h"
#include "maxscript/registry.h"
#include "scene/controllers/animate_mode.h"

#include <cmath>

namespace hostrt::mxs {

using namespace ast;

namespace {

// Runs one turn of a loop body; answers false when the loop must stop (exit).
bool RunBody(Interpreter& in, const Node& body, const Evaluator::ScopePtr& scope, Value& last, Value& exitValue,
             bool& exited) {
    try {
        last = in.Eval(body, scope);
    } catch (ContinueSignal&) {
        last = Value();
    } catch (ExitSignal& e) {
        exitValue = e.value;
        exited = true;
        return false;
    }
    return true;
}

}  // namespace

Value Evaluator::If(Interpreter& in, const ast::If& n, const ScopePtr& scope) {
    if (ToBool(in.Eval(*n.test, scope))) return in.Eval(*n.then, scope);
    if (n.otherwise) return in.Eval(*n.otherwise, scope);
    return Value::Undefined();
}

Value Evaluator::While(Interpreter& in, const ast::While& n, const ScopePtr& scope) {
    Value last, exitValue;
    bool exited = false;
    while (ToBool(in.Eval(*n.test, scope)))
        if (!RunBody(in, *n.body, scope, last, exitValue, exited)) break;
    return exited ? exitValue : last;
}

Value Evaluator::DoWhile(Interpreter& in, const ast::DoWhile& n, const ScopePtr& scope) {
    Value last, exitValue;
    bool exited = false;
    do {
        if (!RunBody(in, *n.body, scope, last, exitValue, exited)) break;
    } while (ToBool(in.Eval(*n.test, scope)));
    return exited ? exitValue : last;
}

Value Evaluator::For(Interpreter& in, const ast::For& n, const ScopePtr& scope) {
    auto loop = std::make_shared<Scope>();
    loop->parent = scope;
    loop->takesLocals = false;
    ArrayData collected;
    Value last, exitValue;
    bool exited = false;

    // One turn with the loop variable set to v; false when the loop ends.
    auto turn = [&](const Value& v) -> bool {
        loop->vars[n.var] = v;
        if (n.whileTest && !ToBool(in.Eval(*n.whileTest, loop))) return false;
        if (n.where && !ToBool(in.Eval(*n.where, loop))) return true;
        if (!RunBody(in, *n.body, loop, last, exitValue, exited)) return false;
        if (n.collect) collected.push_back(last);
        return true;
    };

    if (n.in) {
        const Value collection = in.Eval(*n.in, scope);
        for (const Value& item : in.Iterate(collection))
            if (!turn(item)) break;
    } else {
        const Value from = in.Eval(*n.from, scope);
        const Value to = in.Eval(*n.to, scope);
        const Value step = n.step ? in.Eval(*n.step, scope) : Value::Int(1);
        if (from.Is(Kind::Integer) && to.Is(Kind::Integer) && step.Is(Kind::Integer)) {
            const long long a = from.AsInt(), b = to.AsInt(), s = step.AsInt();
            if (s == 0) throw RuntimeError(L"for loop step must not be 0");
            for (long long i = a; s > 0 ? i <= b : i >= b; i += s)
                if (!turn(Value::Int(int(i)))) break;
        } else if (from.Is(Kind::Time) || to.Is(Kind::Time)) {
            const TimeValue a = ToTime(from), b = ToTime(to);
            const TimeValue s = n.step ? ToTime(step) : GetTicksPerFrame();
            if (s == 0) throw RuntimeError(L"for loop step must not be 0");
            for (long long t = a; s > 0 ? t <= b : t >= b; t += s)
                if (!turn(Value::Time(TimeValue(t)))) break;
        } else {
            const double a = ToFloat(from), b = ToFloat(to), s = ToFloat(step);
            if (s == 0) throw RuntimeError(L"for loop step must not be 0");
            const long long count = (long long)std::floor((b - a) / s + 1e-6);
            for (long long k = 0; k <= count; ++k)
                if (!turn(Value::Float(float(a + double(k) * s)))) break;
        }
    }
    if (exited) return exitValue;
    return n.collect ? Value::Array(std::move(collected)) : Value::Ok();
}

Value Evaluator::Case(Interpreter& in, const ast::Case& n, const ScopePtr& scope) {
    const Value subject = n.subject ? in.Eval(*n.subject, scope) : Value();
    const ast::Case::Item* fallback = nullptr;
    for (const ast::Case::Item& item : n.items) {
        if (!item.label) {
            fallback = &item;
            continue;
        }
        const Value label = in.Eval(*item.label, scope);
        const bool match = n.subject ? ValuesEqual(subject, label) : ToBool(label);
        if (match) return in.Eval(*item.body, scope);
    }
    return fallback ? in.Eval(*fallback->body, scope) : Value::Undefined();
}

Value Evaluator::Try(Interpreter& in, const ast::Try& n, const ScopePtr& scope) {
    try {
        return in.Eval(*n.body, scope);
    } catch (ScriptError& e) {
        in.caught_.push_back(e);
    }
    try {
        Value v = in.Eval(*n.handler, scope);
        in.caught_.pop_back();
        return v;
    } catch (...) {
        in.caught_.pop_back();
        throw;
    }
}

Value Evaluator::FnDef(Interpreter& in, const ast::FnDef& n, const ScopePtr& scope) {
    auto fn = std::make_shared<FunctionData>();
    fn->name = n.name;
    fn->program = in.program_;
    fn->scripted = std::shared_ptr<const ast::FnDef>(in.program_, &n);
    fn->closure = scope;
    const Value v = Value::Function(std::move(fn));
    DefineLocal(in, FoldCase(n.name), v, scope);
    return v;
}

Value Evaluator::Decl(Interpreter& in, const ast::Decl& n, const ScopePtr& scope) {
    Value last;
    for (const ast::Decl::Item& item : n.items) {
        if (n.global) {
            auto it = in.globals_.find(item.name);
            last = item.init ? in.Eval(*item.init, scope) : (it != in.globals_.end() ? it->second : Value());
            in.globals_[item.name] = last;
        } else {
            last = item.init ? in.Eval(*item.init, scope) : Value();
            DefineLocal(in, item.name, last, scope);
        }
    }
    return last;
}

namespace {

// Applies clauses[i..] around the body, undoing each when the body ends (also by an error).
// The state the clauses switch: the interpreter's animate mode, time, coordinate system and centre.
struct ContextState {
    bool& animate;
    std::optional<TimeValue>& time;
    Value& coordsys;
    Value& about;
};

Value WithClauses(Interpreter& in, const ast::Context& n, std::size_t i, const Evaluator::ScopePtr& scope,
                  ContextState& state) {
    bool& animate = state.animate;
    std::optional<TimeValue>& time = state.time;
    if (i == n.clauses.size()) return in.Eval(*n.body, scope);
    const ast::Context::Clause& clause = n.clauses[i];
    const Value value = in.Eval(*clause.value, scope);
    auto inner = [&]() { return WithClauses(in, n, i + 1, scope, state); };

    if (clause.what == L"undo") {
        const std::wstring label = clause.label ? DisplayForm(in.Eval(*clause.label, scope)) : L"MAXScript";
        if (ToBool(value)) {
            theHold.Begin();
            Value result;
            try {
                result = inner();
            } catch (...) {
                // What was done before the error stays done, and undoable.
                theHold.Accept(label.c_str());
                throw;
            }
            theHold.Accept(label.c_str());
            return result;
        }
        theHold.Suspend();
        try {
            Value result = inner();
            theHold.Resume();
            return result;
        } catch (...) {
            theHold.Resume();
            throw;
        }
    }
    if (clause.what == L"animate" || clause.what == L"time") {
        const bool savedAnimate = animate;
        const std::optional<TimeValue> savedTime = time;
        // The host's animate mode follows the script's, so that controllers set inside make keys.
        const bool savedHostAnimate = hostrt::AnimateMode();
        if (clause.what == L"animate") {
            animate = ToBool(value);
            hostrt::SetAnimateMode(animate);
        } else {
            time = ToTime(value);
        }
        auto restore = [&] {
            animate = savedAnimate;
            time = savedTime;
            hostrt::SetAnimateMode(savedHostAnimate);
        };
        try {
            Value result = inner();
            restore();
            return result;
        } catch (...) {
            restore();
            throw;
        }
    }
    if (clause.what == L"coordsys" || clause.what == L"about") {
        Value& slot = clause.what == L"coordsys" ? state.coordsys : state.about;
        const Value saved = slot;
        slot = value;
        try {
            Value result = inner();
            slot = saved;
            return result;
        } catch (...) {
            slot = saved;
            throw;
        }
    }
    // redraw and quiet switch nothing in a host without viewports; `at level` and `in <node>` are accepted
    // and have no effect of their own; other `with` switches are accepted as they are.
    if (clause.what == L"redraw" || clause.what == L"quiet") ToBool(value);
    return inner();
}

}  // namespace

Value Evaluator::Context(Interpreter& in, const ast::Context& n, const ScopePtr& scope) {
    ContextState state{in.animate_, in.time_, in.coordsys_, in.about_};
    return WithClauses(in, n, 0, scope, state);
}

Value Evaluator::SetContext(Interpreter& in, const ast::SetContext& n, const ScopePtr& scope) {
    const ast::Context::Clause& clause = n.clause;
    const Value value = in.Eval(*clause.value, scope);
    if (clause.what == L"animate") {
        in.animate_ = ToBool(value);
        hostrt::SetAnimateMode(in.animate_);
    } else if (clause.what == L"time") {
        in.time_ = ToTime(value);
    } else if (clause.what == L"coordsys") {
        in.coordsys_ = value;
    } else if (clause.what == L"about") {
        in.about_ = value;
    } else if (clause.what == L"undo") {
        // Every top-level expression is its own step here; the switch is read and kept by nobody.
        ToBool(value);
    }
    return Value::Ok();
}

Value Evaluator::MaxCmd(Interpreter& in, const ast::MaxCmd& n, const ScopePtr&) {
    const auto* run = FindMaxCommand(n.command);
    if (!run) throw RuntimeError(L"Unknown max command: " + n.command);
    CallContext ctx{in, n.line, n.column};
    (*run)(ctx);
    return Value::Ok();
}

namespace {

// Collections a mapped function goes through: arrays and native collections (node sets, dictionaries).
std::optional<std::vector<Value>> MappedItems(Interpreter& in, const Value& v) {
    if (v.Is(Kind::Array)) return v.Items();
    if (v.Is(Kind::Ext) && !AsReference(v)) {
        CallContext ctx{in, in.Line(), 0};
        return v.ExtObj()->Items(ctx);
    }
    return std::nullopt;
}

}  // namespace

Value Evaluator::CallScripted(Interpreter& in, const FunctionData& fn, CallArgs& args) {
    const ast::FnDef& def = *fn.scripted;
    if (def.mapped && !args.positional.empty()) {
        const Value first = AsReference(args.positional[0]) ? AsReference(args.positional[0])->Get()
                                                             : args.positional[0];
        if (auto items = MappedItems(in, first)) {
            for (const Value& item : *items) {
                CallArgs one = args;
                one.positional[0] = item;
                CallOnce(in, fn, one);
            }
            return Value::Ok();
        }
    }
    return CallOnce(in, fn, args);
}

Value Evaluator::CallOnce(Interpreter& in, const FunctionData& fn, CallArgs& args) {
    const ast::FnDef& def = *fn.scripted;
    std::vector<Value>& positional = args.positional;
    if (def.handler) {
        // An event handler called from a script takes the arguments it names and ignores the rest.
        positional.resize(def.params.size());
    } else if (positional.size() != def.params.size()) {
        throw ArgCountError(def.name, int(def.params.size()), int(positional.size()));
    }
    constexpr std::ptrdiff_t kStackRoom = 4 << 20;  // of the 8 MiB the host's main thread has
    const char* here = static_cast<const char*>(__builtin_frame_address(0));
    if (in.depth_ >= 1000 || (in.stackBase_ && in.stackBase_ - here > kStackRoom))
        throw RuntimeError(L"Call stack overflow in " + def.name);

    auto local = std::make_shared<Scope>();
    local->parent = fn.closure;
    // By-reference parameters give their final value back through the caller's reference.
    std::vector<std::pair<std::size_t, ValueReference*>> giveBack;
    for (std::size_t i = 0; i < def.params.size(); ++i) {
        if (ValueReference* ref = AsReference(positional[i])) {
            local->vars[def.params[i]] = ref->Get();
            if (i < def.byReference.size() && def.byReference[i]) giveBack.emplace_back(i, ref);
        } else {
            local->vars[def.params[i]] = positional[i];
        }
    }

    struct Frame {
        Interpreter& in;
        std::shared_ptr<const ast::Program> saved;
        Frame(Interpreter& i, std::shared_ptr<const ast::Program> p) : in(i), saved(std::move(in.program_)) {
            in.program_ = std::move(p);
            ++in.depth_;
        }
        ~Frame() {
            in.program_ = std::move(saved);
            --in.depth_;
        }
    };

    Value result;
    {
        Frame frame(in, fn.program);
        for (const ast::FnDef::KeywordParam& kp : def.keywords) {
            if (const Value* given = args.Keyword(kp.name)) local->vars[kp.name] = *given;
            else local->vars[kp.name] = kp.defaultValue ? in.Eval(*kp.defaultValue, local) : Value::Unsupplied();
        }
        try {
            result = in.Eval(*def.body, local);
        } catch (ReturnSignal& r) {
            result = r.value;
        } catch (ExitSignal&) {
            throw RuntimeError(L"exit used outside a loop in " + def.name);
        } catch (ContinueSignal&) {
            throw RuntimeError(L"continue used outside a loop in " + def.name);
        }
    }
    for (const auto& [i, ref] : giveBack) ref->Set(local->vars[def.params[i]]);
    return result;
}

}  // namespace hostrt::mxs
