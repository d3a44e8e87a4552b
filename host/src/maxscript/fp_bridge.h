// The bridge between MAXScript and function publishing: core interfaces as globals by their internal name,
// interface functions and properties, the published interfaces of host objects (mixins), and the
// conversions between script values and FPValues. Failures of a dispatch become script errors carrying
// the message.
#pragma once

#include "ifnpub.h"
#include "maxexception.h"
#include "maxscript/errors.h"
#include "maxscript/value.h"

#include <optional>
#include <string>

namespace hostrt::mxs {

// A script value as an argument of a parameter of type `type` (TYPE_UNSPECIFIED: by the value's own kind).
// Arrays become tables of the parameter's element type, host objects nodes or reference targets,
// undefined "none". Throws ScriptError when the value cannot be one.
FPValue ToFPValue(const Value& v, int type = TYPE_UNSPECIFIED);
// A function-publishing value as a script value (void: ok; null pointers: undefined; tables: arrays).
Value FromFPValue(const FPValue& v);

// The core interface of that internal name as a value; nullopt when none is registered.
std::optional<Value> FindCoreInterfaceValue(const std::wstring& name);

// `iface.name`: a property's value or a function as a method value; nullopt when the interface has neither.
std::optional<Value> InterfaceMember(CallContext& ctx, const InterfaceRef& iface, const std::wstring& name);
// `iface.name = value`; false when the interface has no such property.
bool SetInterfaceProperty(CallContext& ctx, const InterfaceRef& iface, const std::wstring& name, const Value& value);

// `obj.name` through the interfaces obj publishes (functions as methods, interfaces by name, properties).
std::optional<Value> PublishedMember(CallContext& ctx, Animatable* obj, const std::wstring& name);
bool SetPublishedProperty(CallContext& ctx, Animatable* obj, const std::wstring& name, const Value& value);

// A host exception as the script error it stands for ("Argument count error: ...", "Type error: ..."
// keep their kind; anything else is a runtime error with the message).
ScriptError FromHostException(const MAXException& e);

}  // namespace hostrt::mxs
