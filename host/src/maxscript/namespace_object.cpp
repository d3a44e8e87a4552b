// Globals that group functions and values.
#include "maxscript/namespace_object.h"

#include "maxscript/registry.h"

namespace hostrt::mxs {

NamespaceObject& NamespaceObject::Function(const std::wstring& name, NativeFn fn) {
    members_.push_back({name, std::move(fn), {}});
    return *this;
}

NamespaceObject& NamespaceObject::Property(const std::wstring& name, std::function<Value()> get) {
    members_.push_back({name, {}, std::move(get)});
    return *this;
}

std::vector<std::wstring> NamespaceObject::FunctionNames() const {
    std::vector<std::wstring> out;
    for (const Member& m : members_)
        if (m.fn) out.push_back(m.name);
    return out;
}

std::vector<std::wstring> NamespaceObject::PropertyNames() const {
    std::vector<std::wstring> out;
    for (const Member& m : members_)
        if (m.get) out.push_back(m.name);
    return out;
}

std::optional<Value> NamespaceObject::GetProperty(CallContext&, const std::wstring& name) {
    for (const Member& m : members_) {
        if (!EqualsNoCase(m.name, name)) continue;
        if (m.get) return m.get();
        return NativeFunction(name_ + L"." + m.name, m.fn);
    }
    return std::nullopt;
}

void RegisterNamespace(std::shared_ptr<NamespaceObject> object) {
    const std::wstring name = object->Name();
    RegisterSystemVariable(name, {[object] { return Value::Ext(object); }, nullptr});
}

}  // namespace hostrt::mxs
