// A global that groups functions and values under one name, as the host's own interfaces do in MAXScript
// (`pathConfig.appendPath`, `sysInfo.computername`, `callbacks.addScript`). It prints as "<Interface:name>"
// and the discovery functions (showInterface, getPropNames) list what it holds.
#pragma once

#include "maxscript/value.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace hostrt::mxs {

class NamespaceObject : public ExtObject {
public:
    explicit NamespaceObject(std::wstring name) : name_(std::move(name)) {}

    NamespaceObject& Function(const std::wstring& name, NativeFn fn);
    // A read-only value, computed when read.
    NamespaceObject& Property(const std::wstring& name, std::function<Value()> get);

    const std::wstring& Name() const { return name_; }
    std::vector<std::wstring> FunctionNames() const;
    std::vector<std::wstring> PropertyNames() const override;

    std::wstring ClassName() const override { return L"Interface"; }
    std::wstring Describe() const override { return L"<Interface:" + name_ + L">"; }
    std::optional<Value> GetProperty(CallContext& ctx, const std::wstring& name) override;

private:
    struct Member {
        std::wstring name;
        NativeFn fn;                  // a function
        std::function<Value()> get;   // or a value
    };
    std::wstring name_;
    std::vector<Member> members_;
};

// Makes the object a global of its name (a read-only system variable).
void RegisterNamespace(std::shared_ptr<NamespaceObject> object);

}  // namespace hostrt::mxs
