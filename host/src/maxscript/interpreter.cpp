// The interpreter: running scripts, globals and their lookup, the evaluation context and assertions.
#include "maxscript/interpreter.h"

#include "maxscript/builtins.h"
#include "maxscript/evaluator.h"
#include "maxscript/fp_bridge.h"
#include "maxscript/lexer.h"
#include "maxscript/parser.h"
#include "maxscript/registry.h"
#include "platform/listener_capture.h"
#include "platform/session.h"

#include <chrono>
#include <new>

namespace hostrt::mxs {

namespace {

thread_local Interpreter* current = nullptr;

// Stamps where an error happened (the innermost expression that knows it).
void Locate(ScriptError& e, const ast::Node& node, const ast::Program* program) {
    if (e.HasLocation()) return;
    e.SetLocation(node.line, node.column);
    if (program) e.SetSource(program->sourceName, SourceLine(program->source, node.line));
}

}  // namespace

Value* Scope::Find(const std::wstring& key) {
    auto it = vars.find(key);
    return it == vars.end() ? nullptr : &it->second;
}

Interpreter::Interpreter()
    : random_(std::uint32_t(std::chrono::steady_clock::now().time_since_epoch().count())) {
    RegisterBuiltins();
}

Interpreter::~Interpreter() = default;

Interpreter& Interpreter::Shared() {
    static Interpreter shared;
    return shared;
}

Interpreter& Interpreter::Current() { return current ? *current : Shared(); }

Value Interpreter::Execute(std::wstring_view source, const std::wstring& sourceName) {
    auto program = std::make_shared<ast::Program>();
    program->source = std::wstring(source);
    program->sourceName = sourceName;
    ScriptReader reader(program);
    return RunTopLevel(program, [&reader]() { return reader.Next(); });
}

Value Interpreter::Run(const std::shared_ptr<ast::Program>& program) {
    std::size_t i = 0;
    const auto& body = program->top->body;
    return RunTopLevel(program, [&]() -> const ast::Node* { return i < body.size() ? body[i++].get() : nullptr; });
}

template <class Next> Value Interpreter::RunTopLevel(const std::shared_ptr<ast::Program>& program, Next next) {
    struct Running {
        Interpreter& in;
        Interpreter* outer;
        std::shared_ptr<const ast::Program> savedProgram;
        std::wstring savedSource;
        Running(Interpreter& i, std::shared_ptr<const ast::Program> p)
            : in(i), outer(current), savedProgram(std::move(i.program_)), savedSource(i.sourceName_) {
            if (in.running_++ == 0) in.stackBase_ = static_cast<const char*>(__builtin_frame_address(0));
            current = &in;
            in.sourceName_ = p->sourceName;
            in.program_ = std::move(p);
        }
        ~Running() {
            if (--in.running_ == 0) in.stackBase_ = nullptr;
            current = outer;
            in.program_ = std::move(savedProgram);
            in.sourceName_ = std::move(savedSource);
        }
    } running(*this, program);

    auto outside = [&](const wchar_t* what) {
        ScriptError e = RuntimeError(std::wstring(what) + L" used outside a loop");
        e.SetLocation(line_, 1);
        e.SetSource(program->sourceName, SourceLine(program->source, line_));
        return e;
    };
    try {
        Value last;
        while (const ast::Node* node = next()) {
            last = Eval(*node, nullptr);
            lastResult_ = last;
        }
        return last;
    } catch (ReturnSignal& r) {
        return r.value;
    } catch (ExitSignal&) {
        throw outside(L"exit");
    } catch (ContinueSignal&) {
        throw outside(L"continue");
    }
}

Value Interpreter::Eval(const ast::Node& node, const std::shared_ptr<Scope>& scope) {
    line_ = node.line;
    try {
        return Evaluator::Dispatch(*this, node, scope);
    } catch (ScriptError& e) {
        Locate(e, node, program_.get());
        throw;
    } catch (const MAXException& host) {
        ScriptError e = FromHostException(host);
        Locate(e, node, program_.get());
        throw e;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& other) {
        ScriptError e = RuntimeError(MaxSDK::FromUTF8(other.what()));
        Locate(e, node, program_.get());
        throw e;
    }
}

std::optional<Value> Interpreter::GetGlobal(const std::wstring& name) const {
    auto it = globals_.find(FoldCase(name));
    if (it == globals_.end()) return std::nullopt;
    return it->second;
}

void Interpreter::SetGlobal(const std::wstring& name, Value value) { globals_[FoldCase(name)] = std::move(value); }

Value Interpreter::LookupGlobal(const std::wstring& name) {
    const std::wstring key = FoldCase(name);
    if (auto it = globals_.find(key); it != globals_.end()) return it->second;
    if (const SystemVariable* sys = FindSystemVariable(key)) return sys->get ? sys->get() : Value();
    if (auto fn = FindGlobalFunction(key)) return *fn;
    if (auto cls = FindClass(key)) return *cls;
    if (auto iface = FindCoreInterfaceValue(name)) return *iface;
    if (auto cls = FindDescriptorClass(name)) return *cls;
    return Value::Undefined();
}

TimeValue Interpreter::Time() const { return time_ ? *time_ : hostrt::Session::Instance().Time(); }

void Interpreter::RecordAssertion(bool passed, const std::wstring& failureText) {
    ++assertionsRun_;
    if (passed) return;
    ++assertionsFailed_;
    hostrt::Listener::Instance().Write(failureText + L"\n");
}

}  // namespace hostrt::mxs
