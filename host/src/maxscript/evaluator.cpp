// Evaluation of expressions: literals, variables, paths, operators, assignment, property access, indexing
// and calls.
#include "maxscript/evaluator.h"

#include "maxscript/convert.h"
#include "maxscript/operators.h"
#include "maxscript/print.h"
#include "maxscript/registry.h"

namespace hostrt::mxs {

using namespace ast;

namespace {

Value EvalArray(Interpreter& in, const ArrayLit& n, const Evaluator::ScopePtr& scope) {
    ArrayData items;
    items.reserve(n.items.size());
    for (const NodePtr& item : n.items) items.push_back(in.Eval(*item, scope));
    return Value::Array(std::move(items));
}

int BitIndex(const Value& v) {
    const int i = ToInt(v);
    if (i < 1) throw RuntimeError(L"BitArray index must be positive number, got: " + PrintForm(v));
    return i;
}

Value EvalBitArray(Interpreter& in, const BitArrayLit& n, const Evaluator::ScopePtr& scope) {
    ::BitArray bits;
    auto set = [&bits](int i) {
        if (i > bits.GetSize()) bits.SetSize(i, 1);
        bits.Set(i - 1);
    };
    for (const BitArrayLit::Item& item : n.items) {
        const int from = BitIndex(in.Eval(*item.from, scope));
        const int to = item.to ? BitIndex(in.Eval(*item.to, scope)) : from;
        for (int i = from; i <= to; ++i) set(i);
    }
    return Value::Bits(std::move(bits));
}

Value EvalPoint(Interpreter& in, const PointLit& n, const Evaluator::ScopePtr& scope) {
    float c[3] = {0, 0, 0};
    for (std::size_t i = 0; i < n.components.size(); ++i) c[i] = ToFloat(in.Eval(*n.components[i], scope));
    if (n.components.size() == 2) return Value::P2(Point2(c[0], c[1]));
    return Value::P3(Point3(c[0], c[1], c[2]));
}

bool IsCallable(const Value& v) {
    return v.Is(Kind::Function) || (v.Is(Kind::Class) && v.Cls()->construct) ||
           (v.Is(Kind::Ext) && v.ExtObj()->Callable());
}

// `$box*` (an array the path answered) and node sets: assigning a property sets it on every item.
bool AssignsToEachItem(const Value& object, const Node& written) {
    if (object.Is(Kind::Array)) return written.kind == NodeKind::Path;
    return object.Is(Kind::Ext) && object.ExtObj()->MapsPropertyAssignment();
}

// `$selection` and `$objects` name the node sets, not nodes of those names.
std::optional<Value> NamedNodeSet(Interpreter& in, const std::wstring& path) {
    if (EqualsNoCase(path, L"selection") || EqualsNoCase(path, L"objects")) return in.LookupGlobal(path);
    return std::nullopt;
}

}  // namespace

// ---- References (&x): read and written through the expression they were made from.

ValueReference::ValueReference(Interpreter& in, std::shared_ptr<const ast::Program> program, const ast::Node& target,
                               std::shared_ptr<Scope> scope)
    : in_(in), program_(std::move(program)), target_(target), scope_(std::move(scope)) {}

Value ValueReference::Get() const { return in_.Eval(target_, scope_); }

void ValueReference::Set(const Value& v) const { Evaluator::Store(in_, target_, v, scope_); }

ValueReference* AsReference(const Value& v) {
    return v.Is(Kind::Ext) ? dynamic_cast<ValueReference*>(v.ExtObj().get()) : nullptr;
}

ValueReference& Dereference(const Value& v) {
    ValueReference* ref = AsReference(v);
    if (!ref) throw RuntimeError(L"Cannot dereference: " + PrintForm(v));
    return *ref;
}

Value Evaluator::Dispatch(Interpreter& in, const Node& node, const ScopePtr& scope) {
    switch (node.kind) {
    case NodeKind::Literal: {
        const Value& v = static_cast<const Literal&>(node).value;
        return v.Is(Kind::String) ? Value::String(v.Text()) : v;
    }
    case NodeKind::Var: return ReadVar(in, static_cast<const Var&>(node), scope);
    case NodeKind::Path: {
        CallContext ctx{in, node.line, node.column};
        const std::wstring& path = static_cast<const Path&>(node).path;
        if (auto set = NamedNodeSet(in, path)) return *set;
        const PathResolver& resolve = GetPathResolver();
        return resolve ? resolve(ctx, path) : Value::Undefined();
    }
    case NodeKind::ArrayLit: return EvalArray(in, static_cast<const ArrayLit&>(node), scope);
    case NodeKind::BitArrayLit: return EvalBitArray(in, static_cast<const BitArrayLit&>(node), scope);
    case NodeKind::PointLit: return EvalPoint(in, static_cast<const PointLit&>(node), scope);
    case NodeKind::Block: return Block(in, static_cast<const ast::Block&>(node), scope);
    case NodeKind::Unary: {
        const auto& u = static_cast<const Unary&>(node);
        const Value v = in.Eval(*u.operand, scope);
        if (u.op == L"*") return Dereference(v).Get();
        return u.op == L"not" ? Value::Bool(!ToBool(v)) : Negate(v);
    }
    case NodeKind::Binary: return Binary(in, static_cast<const ast::Binary&>(node), scope);
    case NodeKind::Assign: return Assign(in, static_cast<const ast::Assign&>(node), scope);
    case NodeKind::Property: {
        const auto& p = static_cast<const Property&>(node);
        if (p.object->kind == NodeKind::Property) return SubProperty(in, p, scope);
        const Value object = in.Eval(*p.object, scope);
        return in.GetProperty(object, p.name);
    }
    case NodeKind::Index: {
        const auto& ix = static_cast<const Index&>(node);
        const Value object = in.Eval(*ix.object, scope);
        const Value index = in.Eval(*ix.index, scope);
        return in.GetIndex(object, index);
    }
    case NodeKind::Call: return CallNode(in, static_cast<const Call&>(node), scope);
    case NodeKind::If: return If(in, static_cast<const ast::If&>(node), scope);
    case NodeKind::While: return While(in, static_cast<const ast::While&>(node), scope);
    case NodeKind::DoWhile: return DoWhile(in, static_cast<const ast::DoWhile&>(node), scope);
    case NodeKind::For: return For(in, static_cast<const ast::For&>(node), scope);
    case NodeKind::Case: return Case(in, static_cast<const ast::Case&>(node), scope);
    case NodeKind::Try: return Try(in, static_cast<const ast::Try&>(node), scope);
    case NodeKind::FnDef: return FnDef(in, static_cast<const ast::FnDef&>(node), scope);
    case NodeKind::Decl: return Decl(in, static_cast<const ast::Decl&>(node), scope);
    case NodeKind::Return: {
        const auto& r = static_cast<const Return&>(node);
        throw ReturnSignal{r.value ? in.Eval(*r.value, scope) : Value::Ok()};
    }
    case NodeKind::Exit: {
        const auto& e = static_cast<const Exit&>(node);
        throw ExitSignal{e.value ? in.Eval(*e.value, scope) : Value::Ok()};
    }
    case NodeKind::Continue: throw ContinueSignal{};
    case NodeKind::Context: return Context(in, static_cast<const ast::Context&>(node), scope);
    case NodeKind::MaxCmd: return MaxCmd(in, static_cast<const ast::MaxCmd&>(node), scope);
    case NodeKind::LastResult: return in.lastResult_;
    case NodeKind::RefArg:
        return Value::Ext(std::make_shared<ValueReference>(in, in.program_, *static_cast<const RefArg&>(node).target,
                                                           scope));
    case NodeKind::SetContext: return SetContext(in, static_cast<const ast::SetContext&>(node), scope);
    case NodeKind::When: return When(in, static_cast<const ast::When&>(node), scope);
    case NodeKind::Definition: return Definition(in, static_cast<const ast::Definition&>(node), scope);
    }
    throw RuntimeError(L"Unknown expression");
}

Value Evaluator::SubProperty(Interpreter& in, const Property& p, const ScopePtr& scope) {
    const auto& inner = static_cast<const Property&>(*p.object);
    const Value owner = in.Eval(*inner.object, scope);
    const Value object = in.GetProperty(owner, inner.name);
    try {
        return in.GetProperty(object, p.name);
    } catch (const ScriptError& e) {
        const SubAnimAccess& access = GetSubAnimAccess();
        if (e.Kind() != ErrorKind::UnknownProperty || !access.get || !owner.Is(Kind::HostObject)) throw;
        CallContext ctx{in, p.line, p.column};
        if (auto v = access.get(ctx, owner, inner.name, p.name)) return *v;
        throw;
    }
}

bool Evaluator::SetSubAnimProperty(Interpreter& in, const Property& p, const Value& v, const ScopePtr& scope) {
    if (p.object->kind != NodeKind::Property) return false;
    const auto& inner = static_cast<const Property&>(*p.object);
    const SubAnimAccess& access = GetSubAnimAccess();
    if (!access.set) return false;
    const Value owner = in.Eval(*inner.object, scope);
    if (!owner.Is(Kind::HostObject)) return false;
    CallContext ctx{in, p.line, p.column};
    return access.set(ctx, owner, inner.name, p.name, v);
}

Value Evaluator::ReadVar(Interpreter& in, const Var& var, const ScopePtr& scope) {
    if (var.global) return in.LookupGlobal(var.name);
    for (Scope* s = scope.get(); s; s = s->parent.get())
        if (Value* v = s->Find(var.key)) return *v;
    return in.LookupGlobal(var.name);
}

void Evaluator::WriteVar(Interpreter& in, const std::wstring& key, const std::wstring& name, const Value& v,
                         const ScopePtr& scope) {
    for (Scope* s = scope.get(); s; s = s->parent.get()) {
        if (Value* slot = s->Find(key)) {
            *slot = v;
            return;
        }
    }
    if (auto it = in.globals_.find(key); it != in.globals_.end()) {
        it->second = v;
        return;
    }
    if (const SystemVariable* sys = FindSystemVariable(key)) {
        if (!sys->set) throw RuntimeError(L"Cannot assign to read-only variable: " + name);
        sys->set(v);
        return;
    }
    DefineLocal(in, key, v, scope);
}

void Evaluator::DefineLocal(Interpreter& in, const std::wstring& key, const Value& v, const ScopePtr& scope) {
    for (Scope* s = scope.get(); s; s = s->parent.get()) {
        if (s->takesLocals) {
            s->vars[key] = v;
            return;
        }
    }
    in.globals_[key] = v;
}

void Evaluator::Store(Interpreter& in, const Node& target, const Value& v, const ScopePtr& scope) {
    switch (target.kind) {
    case NodeKind::Var: {
        const auto& var = static_cast<const Var&>(target);
        WriteVar(in, var.key, var.name, v, var.global ? nullptr : scope);
        return;
    }
    case NodeKind::Property: {
        const auto& p = static_cast<const Property&>(target);
        const Value object = in.Eval(*p.object, scope);
        in.line_ = target.line;
        if (AssignsToEachItem(object, *p.object)) {
            for (const Value& item : in.Iterate(object)) in.SetProperty(item, p.name, v);
            return;
        }
        if (auto changed = in.SetComponent(object, p.name, v)) {
            Store(in, *p.object, *changed, scope);
            return;
        }
        try {
            in.SetProperty(object, p.name, v);
        } catch (const ScriptError& e) {
            if (e.Kind() != ErrorKind::UnknownProperty || !SetSubAnimProperty(in, p, v, scope)) throw;
            return;
        }
        // A table read from a property (`$b.weights.count = 3`) is written back to where it came from.
        if (object.Is(Kind::Array) && p.object->kind == NodeKind::Property) Store(in, *p.object, object, scope);
        return;
    }
    case NodeKind::Index: {
        const auto& ix = static_cast<const Index&>(target);
        const Value object = in.Eval(*ix.object, scope);
        const Value index = in.Eval(*ix.index, scope);
        in.line_ = target.line;
        if (auto changed = in.SetComponentAt(object, index, v)) {
            Store(in, *ix.object, *changed, scope);
            return;
        }
        in.SetIndex(object, index, v);
        if (object.Is(Kind::Array) && ix.object->kind == NodeKind::Property) Store(in, *ix.object, object, scope);
        return;
    }
    case NodeKind::Unary:
        if (static_cast<const Unary&>(target).op == L"*") {
            Dereference(in.Eval(*static_cast<const Unary&>(target).operand, scope)).Set(v);
            return;
        }
        return;
    default:
        // A value that is no variable (a call's result...): a changed copy has nowhere to go.
        return;
    }
}

Value Evaluator::Binary(Interpreter& in, const ast::Binary& n, const ScopePtr& scope) {
    if (n.op == L"and") return Value::Bool(ToBool(in.Eval(*n.left, scope)) && ToBool(in.Eval(*n.right, scope)));
    if (n.op == L"or") return Value::Bool(ToBool(in.Eval(*n.left, scope)) || ToBool(in.Eval(*n.right, scope)));
    const Value a = in.Eval(*n.left, scope);
    if (n.op == L"as") {
        // `x as name` means the class Name even where a variable of that name exists.
        Value cls;
        if (n.right->kind == NodeKind::Var) {
            if (auto found = FindClass(static_cast<const Var&>(*n.right).name)) cls = *found;
        }
        if (!cls.Is(Kind::Class)) cls = in.Eval(*n.right, scope);
        CallContext ctx{in, n.line, n.column};
        return ConvertAs(ctx, a, cls);
    }
    const Value b = in.Eval(*n.right, scope);
    in.line_ = n.line;
    if (n.op == L"==") return Value::Bool(ValuesEqual(a, b));
    if (n.op == L"!=") return Value::Bool(!ValuesEqual(a, b));
    if (n.op == L"<" || n.op == L"<=" || n.op == L">" || n.op == L">=") return Value::Bool(Compare(n.op, a, b));
    return Arithmetic(n.op, a, b);
}

Value Evaluator::Assign(Interpreter& in, const ast::Assign& n, const ScopePtr& scope) {
    Value v = in.Eval(*n.value, scope);
    if (n.op != L"=") {
        const Value current = in.Eval(*n.target, scope);
        in.line_ = n.line;
        v = Arithmetic(n.op.substr(0, 1), current, v);
    }
    Store(in, *n.target, v, scope);
    return v;
}

Value Evaluator::CallNode(Interpreter& in, const Call& n, const ScopePtr& scope) {
    const Value callee = in.Eval(*n.callee, scope);
    CallArgs args;
    args.positional.reserve(n.args.size());
    for (const NodePtr& a : n.args) args.positional.push_back(in.Eval(*a, scope));
    for (const KeywordArg& k : n.keywords) args.keywords.emplace_back(k.name, in.Eval(*k.value, scope));
    in.line_ = n.line;
    if (n.ambiguousMinus && !IsCallable(callee)) return Arithmetic(L"-", callee, Negate(args.positional[0]));
    return in.Call(callee, args, n.line, n.column);
}

Value Evaluator::Block(Interpreter& in, const ast::Block& n, const ScopePtr& scope) {
    ScopePtr inner = scope;
    if (n.scoped) {
        inner = std::make_shared<Scope>();
        inner->parent = scope;
    }
    Value last;
    for (const NodePtr& e : n.body) last = in.Eval(*e, inner);
    return last;
}

}  // namespace hostrt::mxs
