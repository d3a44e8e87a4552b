// Named selection sets in MAXScript: the selectionSets global (count, indexing by number or name, assigning a
// set by name, deleteItem) and one set (name, count, its nodes).
#include "maxscript/scene_values.h"

#include "inode.h"
#include "maxapi.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"

namespace hostrt::mxs {

namespace {

Interface* Ip() { return GetCOREInterface(); }

// The set's number now (0-based), found by name; -1 when it is gone.
int IndexOfSet(const std::wstring& name) {
    for (int i = 0; i < Ip()->GetNumNamedSelSets(); ++i)
        if (EqualsNoCase(Ip()->GetNamedSelSetName(i).data(), name)) return i;
    return -1;
}

// One named selection set, followed by its name.
class SelectionSet : public ExtObject {
public:
    explicit SelectionSet(std::wstring name) : name_(std::move(name)) {}
    std::wstring ClassName() const override { return L"SelectionSet"; }
    std::wstring Describe() const override { return L"SelectionSet:" + name_; }
    std::vector<INode*> Nodes() const {
        const int i = Index();
        std::vector<INode*> nodes;
        for (int j = 0; j < Ip()->GetNamedSelSetItemCount(i); ++j)
            if (INode* n = Ip()->GetNamedSelSetItem(i, j)) nodes.push_back(n);
        return nodes;
    }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, L"name")) return Value::String(Ip()->GetNamedSelSetName(Index()).data());
        if (EqualsNoCase(name, L"count")) return Value::Int(int(Nodes().size()));
        return std::nullopt;
    }
    bool SetProperty(CallContext&, const std::wstring& name, const Value& value) override {
        if (!EqualsNoCase(name, L"name")) return false;
        const std::wstring newName = ToText(value);
        if (!Ip()->SetNamedSelSetName(Index(), MSTR(newName.c_str())))
            throw RuntimeError(L"Cannot rename selection set " + name_ + L" to " + PrintForm(value));
        name_ = newName;
        return true;
    }
    std::optional<Value> GetIndex(CallContext&, const Value& index) override {
        const std::vector<INode*> nodes = Nodes();
        const int i = ToInt(index);
        if (i < 1 || i > int(nodes.size()))
            throw RuntimeError(L"Index out of range: " + PrintForm(index) + L" in selection set " + name_);
        return Value::Host(nodes[std::size_t(i - 1)]);
    }
    std::optional<std::vector<Value>> Items(CallContext&) override {
        std::vector<Value> items;
        for (INode* n : Nodes()) items.push_back(Value::Host(n));
        return items;
    }

private:
    int Index() const {
        const int i = IndexOfSet(name_);
        if (i < 0) throw RuntimeError(L"Selection set " + name_ + L" has been deleted");
        return i;
    }
    std::wstring name_;
};

class SelectionSets : public ExtObject {
public:
    std::wstring ClassName() const override { return L"SelectionSetArray"; }
    std::wstring Describe() const override { return L"SelectionSets"; }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, L"count")) return Value::Int(Ip()->GetNumNamedSelSets());
        return std::nullopt;
    }
    std::optional<Value> GetIndex(CallContext&, const Value& index) override {
        const int i = Find(index);
        if (i < 0) return Value::Undefined();
        return Value::Ext(std::make_shared<SelectionSet>(Ip()->GetNamedSelSetName(i).data()));
    }
    // selectionSets["name"] = nodes makes or replaces the set.
    bool SetIndex(CallContext& ctx, const Value& index, const Value& value) override {
        if (!index.Is(Kind::String) && !index.Is(Kind::Name))
            throw TypeError(L"Selection sets are assigned by name, got: " + PrintForm(index));
        std::vector<INode*> nodes = NodeListArg(ctx, value);
        INodeTab tab;
        for (INode* n : nodes) tab.Append(1, &n);
        const MSTR name(index.Text().c_str());
        if (IndexOfSet(index.Text()) >= 0) Ip()->ReplaceNamedSelSet(tab, name);
        else if (!Ip()->AddNewNamedSelSet(tab, name))
            throw RuntimeError(L"Cannot make selection set " + PrintForm(index));
        return true;
    }
    bool DeleteItem(CallContext&, const Value& index) override {
        const int i = Find(index);
        return i >= 0 && Ip()->RemoveNamedSelSet(Ip()->GetNamedSelSetName(i));
    }
    std::optional<std::vector<Value>> Items(CallContext&) override {
        std::vector<Value> items;
        for (int i = 0; i < Ip()->GetNumNamedSelSets(); ++i)
            items.push_back(Value::Ext(std::make_shared<SelectionSet>(Ip()->GetNamedSelSetName(i).data())));
        return items;
    }

private:
    static int Find(const Value& index) {
        if (index.Is(Kind::String) || index.Is(Kind::Name)) return IndexOfSet(index.Text());
        const int i = ToInt(index);
        if (i < 1 || i > Ip()->GetNumNamedSelSets())
            throw RuntimeError(L"Index out of range: " + PrintForm(index) + L" in selectionSets");
        return i - 1;
    }
};

}  // namespace

void RegisterSceneSetFunctions() {
    RegisterSystemVariable(L"selectionSets", {[] { return Value::Ext(std::make_shared<SelectionSets>()); }, nullptr});
}

}  // namespace hostrt::mxs
