// The node properties a user reaches by name beyond the basic ones: bone settings, render values, the global-
// illumination, display and layer switches of the node's extension interfaces, display values, the skin pose
// and a light's include/exclude list; and the node-state functions (transform locks, group state, group/ungroup). Every change goes through
// the node's own setters, so it sends the same messages and notifications as any other edit.
#pragma once

#include "maxscript/registry.h"
#include "maxscript/value.h"

#include <optional>
#include <string>

class INode;

namespace hostrt::mxs {

// The property's value, nullopt when the name is none of these properties.
std::optional<Value> GetNodeStateProperty(INode* node, const std::wstring& name);
// False when the name is none of these properties; a value of the wrong kind is a conversion error.
bool SetNodeStateProperty(CallContext& ctx, INode* node, const std::wstring& name, const Value& value);

// getTransformLockFlags, setTransformLockFlags, isGroupHead ... setGroupOpen, group, ungroup.
void RegisterNodeStateFunctions();

}  // namespace hostrt::mxs
