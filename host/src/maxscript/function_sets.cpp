// Globals that group functions under one name, as MAXScript's own structs of functions do: `bit.and 6 3`,
// `macros.run "Category" "Name"`, `custAttributes.add obj def`.
#include "maxscript/builtins.h"

#include "maxscript/registry.h"

namespace hostrt::mxs {

namespace {

class FunctionSet : public ExtObject {
public:
    FunctionSet(std::wstring name, std::vector<std::pair<std::wstring, NativeFn>> functions) : name_(std::move(name)) {
        for (auto& [fnName, fn] : functions)
            functions_.emplace_back(fnName, NativeFunction(name_ + L"." + fnName, std::move(fn)));
    }
    std::wstring ClassName() const override { return L"StructDef"; }
    std::wstring Describe() const override {
        std::wstring out = L"#Struct:" + name_ + L"(";
        for (std::size_t i = 0; i < functions_.size(); ++i) out += (i ? L"; " : L"") + functions_[i].first + L":<fn>";
        return out + L")";
    }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        for (const auto& [fnName, fn] : functions_)
            if (EqualsNoCase(fnName, name)) return fn;
        return std::nullopt;
    }
    std::vector<std::wstring> PropertyNames() const override {
        std::vector<std::wstring> names;
        for (const auto& [fnName, fn] : functions_) names.push_back(fnName);
        return names;
    }

private:
    std::wstring name_;
    std::vector<std::pair<std::wstring, Value>> functions_;
};

}  // namespace

void RegisterFunctionSet(const std::wstring& name, std::vector<std::pair<std::wstring, NativeFn>> functions) {
    const Value set = Value::Ext(std::make_shared<FunctionSet>(name, std::move(functions)));
    RegisterSystemVariable(name, {[set] { return set; }, nullptr});
}

}  // namespace hostrt::mxs
