// What the runtime and plug-ins add to MAXScript: global functions, system variables, classes (with their
// constructors), handlers for host objects (properties, indexing, printing, class, where their interfaces
// live), the resolver of $paths and `max` commands. The registrations are process-wide and every
// interpreter sees them; the built-in functions are registered the same way.
#pragma once

#include "maxscript/value.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

class INode;

namespace hostrt::mxs {

// ---- Global functions (case-insensitive names; a later registration of a name replaces the earlier one).
void RegisterGlobalFunction(const std::wstring& name, NativeFn fn);
// A function value that runs fn (a method handed out by a native object's property, for instance).
Value NativeFunction(const std::wstring& name, NativeFn fn);
void UnregisterGlobalFunction(const std::wstring& name);
// The registered function of that name as a function value; nullopt when none.
std::optional<Value> FindGlobalFunction(const std::wstring& name);

// Checks the number of positional arguments: "-- Argument count error: <name> wanted <n>, got <m>".
void CheckArgCount(const std::wstring& name, const CallArgs& args, int wanted);
void CheckArgCount(const std::wstring& name, const CallArgs& args, int least, int most);

// ---- System variables: globals whose value the host answers (sliderTime, rootNode, maxFilePath...).
// A variable without setter is read-only; assigning it is a runtime error.
struct SystemVariable {
    std::function<Value()> get;
    std::function<void(const Value&)> set;
};
void RegisterSystemVariable(const std::wstring& name, SystemVariable variable);
void UnregisterSystemVariable(const std::wstring& name);
const SystemVariable* FindSystemVariable(const std::wstring& name);

// ---- Classes. The built-in value classes (Integer, Float, String, Array, Point3...) are registered at start.
// Registering a class makes it a global of its name; a class with a constructor can be called.
Value RegisterClass(const std::wstring& name, const std::wstring& superclass, NativeFn constructor = {});
// The class of that name; nullopt when none.
std::optional<Value> FindClass(const std::wstring& name);
// The classes registered with that superclass (`GeometryClass.classes`), by name.
std::vector<Value> ClassesOfSuperclass(const std::wstring& superclass);

// ---- The names registered so far, of one kind, in no particular order (apropos lists them).
enum class RegisteredKind { Function, SystemVariable, Class };
std::vector<std::wstring> RegisteredNames(RegisteredKind kind);

// ---- Host objects: values wrapping an Animatable. Handlers are asked newest first; the first one whose
// accepts answers true (or that has no accepts) and whose hook answers (not nullopt / true) wins. After
// the handlers, the function-publishing interfaces of the object (and of its interface hosts) are tried.
struct HostObjectHandler {
    std::wstring name;  // for diagnostics
    std::function<bool(Animatable*)> accepts;
    std::function<std::optional<Value>(CallContext&, Animatable*, const std::wstring& property)> getProperty;
    std::function<bool(CallContext&, Animatable*, const std::wstring& property, const Value&)> setProperty;
    std::function<std::optional<Value>(CallContext&, Animatable*, const Value& index)> getIndex;
    std::function<bool(CallContext&, Animatable*, const Value& index, const Value&)> setIndex;
    // The text print shows ("$Box:b @ [0,0,0]"); nullopt: the next handler or the default.
    std::function<std::optional<std::wstring>(Animatable*)> describe;
    std::function<std::optional<Value>(Animatable*)> classOf;
    // Further animatables whose published interfaces this object answers (a node: its object).
    std::function<std::vector<Animatable*>(Animatable*)> interfaceHosts;
};
// Answers a key for UnregisterHostObjectHandler.
int RegisterHostObjectHandler(HostObjectHandler handler);
void UnregisterHostObjectHandler(int key);
// The handlers, newest first.
std::vector<const HostObjectHandler*> HostObjectHandlers();

// ---- Nodes crossing the function-publishing bridge (INode is the scene's; the bridge only passes pointers).
struct NodeConverters {
    std::function<Animatable*(INode*)> toAnimatable;
    std::function<INode*(Animatable*)> toNode;  // null when the animatable is no node
};
void SetNodeConverters(NodeConverters converters);
const NodeConverters& GetNodeConverters();

// ---- $paths: `$name`, `$name*` (wildcards), `$` (the selection; path empty). Without a resolver every
// path is undefined.
using PathResolver = std::function<Value(CallContext&, const std::wstring& path)>;
void SetPathResolver(PathResolver resolver);
const PathResolver& GetPathResolver();

// ---- Sub-anims reached through a property that reads as a plain value: `$b.pos.controller`,
// `$b.rotation.z_rotation`. The evaluator asks these when `owner.sub` gave a value without property `name`.
struct SubAnimAccess {
    std::function<std::optional<Value>(CallContext&, const Value& owner, const std::wstring& sub,
                                       const std::wstring& name)>
        get;
    std::function<bool(CallContext&, const Value& owner, const std::wstring& sub, const std::wstring& name,
                       const Value& value)>
        set;
};
void SetSubAnimAccess(SubAnimAccess access);
const SubAnimAccess& GetSubAnimAccess();

// ---- `max <command>` (words joined by one blank, lower case: "undo", "file open"). undo and redo are built in.
void RegisterMaxCommand(const std::wstring& command, std::function<void(CallContext&)> run);
const std::function<void(CallContext&)>* FindMaxCommand(const std::wstring& command);

}  // namespace hostrt::mxs
