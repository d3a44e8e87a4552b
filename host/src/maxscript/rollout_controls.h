// The controls of rollouts and the items of right-click menus, as scripts see them without a window: each
// holds its properties (caption, value, state, items ...) with the checks a real control makes (a spinner
// keeps to its range, a list's selection to its items), and answers its event handlers by event name, so
// `ro.btn.pressed()` runs `on btn pressed do`.
#pragma once

#include "maxscript/definitions.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace hostrt::mxs {

class ControlObject : public ExtObject {
public:
    // type: the written control type, folded (button, spinner, menuitem ...); name as written.
    ControlObject(std::wstring type, std::wstring name, std::shared_ptr<const HandlerTable> handlers);

    // Sets the caption and the written keywords (range:, items:, checked: ...) on a fresh control.
    void Init(const Value& caption, const std::vector<std::pair<std::wstring, Value>>& keywords);

    const std::wstring& Name() const { return name_; }
    const std::wstring& Type() const { return type_; }

    std::wstring ClassName() const override;
    std::wstring Describe() const override { return ClassName() + L":" + name_; }
    std::optional<Value> GetProperty(CallContext& ctx, const std::wstring& name) override;
    bool SetProperty(CallContext& ctx, const std::wstring& name, const Value& value) override;
    std::vector<std::wstring> PropertyNames() const override;

private:
    Value* Slot(const std::wstring& key);
    void Put(const std::wstring& key, Value v);
    // The value a property takes when set to v (clamped, converted); throws for a value of the wrong kind.
    Value Checked(const std::wstring& key, const Value& v);
    void ClampSelection();

    std::wstring type_;
    std::wstring name_;
    std::shared_ptr<const HandlerTable> handlers_;
    std::vector<std::pair<std::wstring, Value>> props_;  // folded names, in the order they were made
};

// Makes the controls a rollout or menu declares, in order: the written caption and keywords evaluated in the
// definition's scope, each control bound there under its name. Groups and submenus (container) only gather
// their children.
void BuildControls(Interpreter& in, const DefinitionSite& site, const ast::ControlDef& c, const wchar_t* container,
                   const std::shared_ptr<Scope>& scope, const std::shared_ptr<const HandlerTable>& handlers,
                   std::vector<std::shared_ptr<ControlObject>>& into);

}  // namespace hostrt::mxs
