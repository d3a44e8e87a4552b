// The process-wide registrations that scripts see.
#include "maxscript/registry.h"

#include "maxscript/errors.h"

#include <algorithm>
#include <map>
#include <memory>
#include <unordered_map>

namespace hostrt::mxs {

namespace {

struct Registry {
    std::unordered_map<std::wstring, std::shared_ptr<FunctionData>> functions;
    std::unordered_map<std::wstring, SystemVariable> variables;
    std::unordered_map<std::wstring, std::wstring> variableNames;  // folded name -> name as registered
    std::unordered_map<std::wstring, std::shared_ptr<ClassData>> classes;
    std::vector<std::pair<int, std::unique_ptr<HostObjectHandler>>> handlers;
    int nextHandlerKey = 1;
    NodeConverters nodes;
    PathResolver paths;
    SubAnimAccess subAnims;
    std::map<std::wstring, std::function<void(CallContext&)>> maxCommands;
};

// Function-local, so that plug-in libraries can register while they are loaded (static initialisation).
Registry& Reg() {
    static Registry registry;
    return registry;
}

}  // namespace

namespace {
std::shared_ptr<FunctionData> MakeNative(const std::wstring& name, NativeFn fn) {
    auto data = std::make_shared<FunctionData>();
    data->name = name;
    data->native = std::move(fn);
    return data;
}
}  // namespace

void RegisterGlobalFunction(const std::wstring& name, NativeFn fn) {
    Reg().functions[FoldCase(name)] = MakeNative(name, std::move(fn));
}

Value NativeFunction(const std::wstring& name, NativeFn fn) { return Value::Function(MakeNative(name, std::move(fn))); }

void UnregisterGlobalFunction(const std::wstring& name) { Reg().functions.erase(FoldCase(name)); }

std::optional<Value> FindGlobalFunction(const std::wstring& name) {
    auto& fns = Reg().functions;
    auto it = fns.find(FoldCase(name));
    if (it == fns.end()) return std::nullopt;
    return Value::Function(it->second);
}

void CheckArgCount(const std::wstring& name, const CallArgs& args, int wanted) {
    if (int(args.positional.size()) != wanted) throw ArgCountError(name, wanted, int(args.positional.size()));
}

void CheckArgCount(const std::wstring& name, const CallArgs& args, int least, int most) {
    const int got = int(args.positional.size());
    if (got < least || got > most) throw ArgCountRangeError(name, least, most, got);
}

void RegisterSystemVariable(const std::wstring& name, SystemVariable variable) {
    Reg().variables[FoldCase(name)] = std::move(variable);
    Reg().variableNames[FoldCase(name)] = name;
}

void UnregisterSystemVariable(const std::wstring& name) {
    Reg().variables.erase(FoldCase(name));
    Reg().variableNames.erase(FoldCase(name));
}

std::vector<std::wstring> RegisteredNames(RegisteredKind kind) {
    std::vector<std::wstring> names;
    const Registry& r = Reg();
    switch (kind) {
    case RegisteredKind::Function:
        for (const auto& [key, fn] : r.functions) names.push_back(fn->name);
        break;
    case RegisteredKind::SystemVariable:
        for (const auto& [key, name] : r.variableNames) names.push_back(name);
        break;
    case RegisteredKind::Class:
        for (const auto& [key, cls] : r.classes) names.push_back(cls->name);
        break;
    }
    return names;
}

const SystemVariable* FindSystemVariable(const std::wstring& name) {
    auto& vars = Reg().variables;
    auto it = vars.find(FoldCase(name));
    return it == vars.end() ? nullptr : &it->second;
}

Value RegisterClass(const std::wstring& name, const std::wstring& superclass, NativeFn constructor) {
    auto& slot = Reg().classes[FoldCase(name)];
    if (!slot) slot = std::make_shared<ClassData>();
    // Updated in place, so class values handed out before stay equal to the class.
    slot->name = name;
    slot->superclass = superclass;
    slot->construct = std::move(constructor);
    return Value::Class(slot);
}

std::optional<Value> FindClass(const std::wstring& name) {
    auto& classes = Reg().classes;
    auto it = classes.find(FoldCase(name));
    if (it == classes.end()) return std::nullopt;
    return Value::Class(it->second);
}

int RegisterHostObjectHandler(HostObjectHandler handler) {
    Registry& r = Reg();
    const int key = r.nextHandlerKey++;
    r.handlers.emplace_back(key, std::make_unique<HostObjectHandler>(std::move(handler)));
    return key;
}

void UnregisterHostObjectHandler(int key) {
    auto& hs = Reg().handlers;
    for (auto it = hs.begin(); it != hs.end(); ++it) {
        if (it->first == key) {
            hs.erase(it);
            return;
        }
    }
}

std::vector<const HostObjectHandler*> HostObjectHandlers() {
    std::vector<const HostObjectHandler*> out;
    const auto& hs = Reg().handlers;
    for (auto it = hs.rbegin(); it != hs.rend(); ++it) out.push_back(it->second.get());
    return out;
}

void SetNodeConverters(NodeConverters converters) { Reg().nodes = std::move(converters); }
const NodeConverters& GetNodeConverters() { return Reg().nodes; }

void SetPathResolver(PathResolver resolver) { Reg().paths = std::move(resolver); }
const PathResolver& GetPathResolver() { return Reg().paths; }
std::vector<Value> ClassesOfSuperclass(const std::wstring& superclass) {
    std::vector<Value> out;
    for (const auto& [key, cls] : Reg().classes)
        if (EqualsNoCase(cls->superclass, superclass)) out.push_back(Value::Class(cls));
    std::sort(out.begin(), out.end(),
              [](const Value& a, const Value& b) { return FoldCase(a.Cls()->name) < FoldCase(b.Cls()->name); });
    return out;
}

void SetSubAnimAccess(SubAnimAccess access) { Reg().subAnims = std::move(access); }
const SubAnimAccess& GetSubAnimAccess() { return Reg().subAnims; }

void RegisterMaxCommand(const std::wstring& command, std::function<void(CallContext&)> run) {
    Reg().maxCommands[FoldCase(command)] = std::move(run);
}

const std::function<void(CallContext&)>* FindMaxCommand(const std::wstring& command) {
    auto& cmds = Reg().maxCommands;
    auto it = cmds.find(FoldCase(command));
    return it == cmds.end() ? nullptr : &it->second;
}

}  // namespace hostrt::mxs
