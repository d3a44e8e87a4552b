// The host side of function publishing: the registry of core interfaces, calls and property access as the
// script interpreter makes them (argument checks, keyword defaults, 1-based script indices), and the lookup
// of the mixin interfaces an object publishes.
#pragma once

#include "ifnpub.h"
#include "maxexception.h"
#include "ref.h"

#include <utility>
#include <vector>

namespace hostrt {

// Core interfaces. Registering a second interface with an id already registered is refused (false).
bool RegisterCoreInterface(FPInterface* fpi);
void UnregisterCoreInterface(FPInterface* fpi);
// The core interface with this internal name (case-insensitive, as scripts are), null when none.
FPInterface* FindCoreInterface(const MCHAR* internalName);
// Every registered core interface, in registration order.
std::vector<FPInterface*> CoreInterfaces();

// Keyword arguments of a script call: name and value, in the order written.
using FPKeywordArgs = std::vector<std::pair<MSTR, FPValue>>;

// Calls a function of fpi as a script does. Positional arguments fill the positional parameters (their
// count must match), keywords fill keyword parameters by name (case-insensitive) and absent keywords take
// their defaults. Argument values are converted to the parameter types where the conversion is lossless in
// meaning (an integer for an index or a BOOL, a float for an integer-valued parameter and back, a string for
// a TSTR, "undefined" (TYPE_VOID) for a null node or table); indices are turned from 1-based (script) to
// 0-based, element by element in index tables, and an index result is turned back to 1-based.
// Every failure throws MAXException naming the interface and the function: unknown function or keyword,
// wrong argument count or type, a no-such-function, failed or disabled status. A MAXException thrown by the
// function itself passes through unchanged; any other exception becomes a MAXException with its message.
// A function id that the description does not list is still invoked with the positional arguments as given.
void CallFromScript(FPInterface* fpi, const MCHAR* functionName, std::vector<FPValue> positional,
                    FPKeywordArgs keywords, FPValue& result, TimeValue t = 0);
void CallFromScript(FPInterface* fpi, FunctionID fid, std::vector<FPValue> positional, FPKeywordArgs keywords,
                    FPValue& result, TimeValue t = 0);

// Reads and writes a published property by name (case-insensitive) through its getter and setter.
// Writing a read-only property, or naming an unknown one, throws MAXException.
FPValue GetPropertyFromScript(FPInterface* fpi, const MCHAR* name, TimeValue t = 0);
void SetPropertyFromScript(FPInterface* fpi, const MCHAR* name, FPValue value, TimeValue t = 0);

// The interfaces listed on obj's class descriptor that obj answers from GetInterface(Interface_ID), as
// answered by obj (the implementing mixins, not the descriptions).
std::vector<FPInterface*> FindMixinInterfaces(Animatable* obj);
// The mixin of obj with this internal name (case-insensitive), null when none.
FPInterface* FindObjectInterface(Animatable* obj, const MCHAR* name);
// The first mixin of obj that publishes a function of this name, with that function; {null, null} when none.
std::pair<FPInterface*, const FPFunctionDef*> FindObjectFunction(Animatable* obj, const MCHAR* functionName);

// Script-facing name of a value type ("integer", "index", "string", "node", "bit array"...).
MSTR FPTypeName(int type);
// "Name" of an interface for messages: its internal name, or its id when it has no description.
MSTR FPInterfaceName(FPInterface* fpi);

}  // namespace hostrt
