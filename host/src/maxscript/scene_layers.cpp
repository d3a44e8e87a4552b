// Layers in MAXScript: the LayerManager global (newLayerFromName, getLayerFromName, getLayer, count, current,
// deleteLayerByName, the merge option) and the methods and properties of a layer (name, addNode, setName,
// setParent, getParent, children, current).
#include "maxscript/scene_values.h"

#include "ilayer.h"
#include "inode.h"
#include "maxapi.h"
#include "maxscript/builtins.h"
#include "maxscript/convert.h"
#include "maxscript/errors.h"
#include "maxscript/interpreter.h"
#include "maxscript/print.h"

namespace hostrt::mxs {

namespace {

ILayerManager* Manager() { return GetCOREInterface()->GetLayerManager(); }

Value Method(const std::wstring& name, NativeFn fn) { return NativeFunction(name, std::move(fn)); }

ILayer* AsLayer(const Value& v) {
    ILayer* layer = v.Is(Kind::HostObject) ? dynamic_cast<ILayer*>(v.Anim()) : nullptr;
    if (!layer) throw ConversionError(v, L"MixinInterface:LayerProperties");
    return layer;
}

Value LayerMethod(ILayer* layer, const std::wstring& name) {
    const AnimHandle handle = Animatable::GetHandleByAnim(layer);
    auto self = [handle]() {
        auto* l = dynamic_cast<ILayer*>(Animatable::GetAnimByHandle(handle));
        if (!l) throw RuntimeError(L"Attempt to access deleted layer");
        return l;
    };
    if (EqualsNoCase(name, L"addNode"))
        return Method(L"addNode", [self](CallContext&, CallArgs& args) {
            CheckArgCount(L"addNode", args, 1);
            return Value::Bool(self()->AddToLayer(NodeArg(args.positional[0])));
        });
    if (EqualsNoCase(name, L"setName"))
        return Method(L"setName", [self](CallContext&, CallArgs& args) {
            CheckArgCount(L"setName", args, 1);
            return Value::Bool(self()->SetName(MSTR(ToText(args.positional[0]).c_str())));
        });
    if (EqualsNoCase(name, L"getParent"))
        return Method(L"getParent", [self](CallContext&, CallArgs& args) {
            CheckArgCount(L"getParent", args, 0);
            return Value::Host(self()->GetParentLayer());
        });
    if (EqualsNoCase(name, L"setParent"))
        return Method(L"setParent", [self](CallContext&, CallArgs& args) {
            CheckArgCount(L"setParent", args, 1);
            ILayer* parent = args.positional[0].IsUndefined() ? nullptr : AsLayer(args.positional[0]);
            return Value::Bool(self()->SetParentLayer(parent));
        });
    if (EqualsNoCase(name, L"getNumChildren"))
        return Method(L"getNumChildren", [self](CallContext&, CallArgs& args) {
            CheckArgCount(L"getNumChildren", args, 0);
            return Value::Int(self()->GetNumOfChildLayers());
        });
    if (EqualsNoCase(name, L"getChild"))
        return Method(L"getChild", [self](CallContext&, CallArgs& args) {
            CheckArgCount(L"getChild", args, 1);
            const int i = ToInt(args.positional[0]);
            ILayer* l = self();
            if (i < 1 || i > l->GetNumOfChildLayers())
                throw RuntimeError(L"getChild: index " + PrintForm(args.positional[0]) + L" out of range for layer " +
                                   l->GetName().data());
            return Value::Host(l->GetChildLayer(i - 1));
        });
    if (EqualsNoCase(name, L"getNumNodes"))
        return Method(L"getNumNodes", [self](CallContext&, CallArgs& args) {
            CheckArgCount(L"getNumNodes", args, 0);
            return Value::Int(self()->NumNodes());
        });
    return Value::Undefined();
}

void RegisterLayerHandler() {
    HostObjectHandler h;
    h.name = L"layer";
    h.accepts = [](Animatable* a) { return dynamic_cast<ILayer*>(a) != nullptr; };
    h.getProperty = [](CallContext&, Animatable* a, const std::wstring& name) -> std::optional<Value> {
        auto* layer = dynamic_cast<ILayer*>(a);
        if (EqualsNoCase(name, L"name")) return Value::String(layer->GetName().data());
        if (EqualsNoCase(name, L"current")) return Value::Bool(Manager()->GetCurrentLayer() == layer);
        if (EqualsNoCase(name, L"isHidden")) return Value::Bool(layer->IsHidden());
        if (EqualsNoCase(name, L"on")) return Value::Bool(!layer->IsHidden());
        if (EqualsNoCase(name, L"isFrozen")) return Value::Bool(layer->IsFrozen());
        if (EqualsNoCase(name, L"lock")) return Value::Bool(layer->IsFrozen());
        if (EqualsNoCase(name, L"nodes")) {
            std::vector<INode*> nodes;
            for (int i = 0; i < layer->NumNodes(); ++i) nodes.push_back(layer->GetNode(i));
            return NodeArray(nodes);
        }
        Value m = LayerMethod(layer, name);
        if (!m.IsUndefined()) return m;
        return std::nullopt;
    };
    h.setProperty = [](CallContext&, Animatable* a, const std::wstring& name, const Value& v) {
        auto* layer = dynamic_cast<ILayer*>(a);
        if (EqualsNoCase(name, L"name")) {
            if (!layer->SetName(MSTR(ToText(v).c_str())))
                throw RuntimeError(L"Cannot rename layer " + std::wstring(layer->GetName().data()) + L" to " +
                                   PrintForm(v) + L": the name is empty or taken");
            return true;
        }
        if (EqualsNoCase(name, L"isHidden")) return layer->Hide(ToBool(v));
        if (EqualsNoCase(name, L"on")) return layer->Hide(!ToBool(v));
        if (EqualsNoCase(name, L"isFrozen") || EqualsNoCase(name, L"lock")) return layer->Freeze(ToBool(v));
        if (EqualsNoCase(name, L"current")) {
            if (!ToBool(v)) throw RuntimeError(L"Make another layer current instead of setting current to false");
            Manager()->SetCurrentLayer(layer->GetName());
            return true;
        }
        return false;
    };
    h.describe = [](Animatable* a) -> std::optional<std::wstring> {
        return L"<MixinInterface:LayerProperties " + std::wstring(dynamic_cast<ILayer*>(a)->GetName().data()) + L">";
    };
    h.classOf = [](Animatable*) { return FindClass(L"MixinInterface"); };
    RegisterHostObjectHandler(std::move(h));
}

// The LayerManager global.
class LayerManagerValue : public ExtObject {
public:
    std::wstring ClassName() const override { return L"Interface"; }
    std::wstring Describe() const override { return L"<Interface:LayerManager>"; }
    std::optional<Value> GetProperty(CallContext&, const std::wstring& name) override {
        if (EqualsNoCase(name, L"count")) return Value::Int(Manager()->GetLayerCount());
        if (EqualsNoCase(name, L"current")) return Value::Host(Manager()->GetCurrentLayer());
        if (EqualsNoCase(name, L"newLayerFromName"))
            return Method(name, [](CallContext&, CallArgs& args) {
                CheckArgCount(L"newLayerFromName", args, 1);
                return Value::Host(Manager()->CreateLayer(MSTR(ToText(args.positional[0]).c_str())));
            });
        if (EqualsNoCase(name, L"newLayer"))
            return Method(name, [](CallContext&, CallArgs& args) {
                CheckArgCount(L"newLayer", args, 0);
                for (int i = 1;; ++i) {
                    wchar_t buf[32];
                    std::swprintf(buf, 32, L"Layer%03d", i);
                    if (!Manager()->GetLayer(MSTR(buf))) return Value::Host(Manager()->CreateLayer(MSTR(buf)));
                }
            });
        if (EqualsNoCase(name, L"getLayerFromName"))
            return Method(name, [](CallContext&, CallArgs& args) {
                CheckArgCount(L"getLayerFromName", args, 1);
                return Value::Host(Manager()->GetLayer(MSTR(ToText(args.positional[0]).c_str())));
            });
        if (EqualsNoCase(name, L"getLayer"))
            return Method(name, [](CallContext&, CallArgs& args) {
                CheckArgCount(L"getLayer", args, 1);
                // Layer numbers start at 0, layer "0" itself.
                const int i = ToInt(args.positional[0]);
                if (i < 0 || i >= Manager()->GetLayerCount()) return Value::Undefined();
                return Value::Host(Manager()->GetLayer(i));
            });
        if (EqualsNoCase(name, L"deleteLayerByName"))
            return Method(name, [](CallContext&, CallArgs& args) {
                CheckArgCount(L"deleteLayerByName", args, 1);
                return Value::Bool(Manager()->DeleteLayer(MSTR(ToText(args.positional[0]).c_str())));
            });
        if (EqualsNoCase(name, L"GetDuplicateLayerWithoutSameHierarchyOnMerge"))
            return Method(name, [](CallContext&, CallArgs& args) {
                CheckArgCount(L"GetDuplicateLayerWithoutSameHierarchyOnMerge", args, 0);
                return Value::Bool(Manager()->GetDuplicateLayerWithoutSameHierarchyOnMerge());
            });
        if (EqualsNoCase(name, L"SetDuplicateLayerWithoutSameHierarchyOnMerge"))
            return Method(name, [](CallContext&, CallArgs& args) {
                CheckArgCount(L"SetDuplicateLayerWithoutSameHierarchyOnMerge", args, 1);
                const Value* persist = args.Keyword(L"persist");
                Manager()->SetDuplicateLayerWithoutSameHierarchyOnMerge(
                    ToBool(args.positional[0]), persist && !persist->Is(Kind::Unsupplied) && ToBool(*persist));
                return Value::Ok();
            });
        return std::nullopt;
    }
    bool SetProperty(CallContext&, const std::wstring& name, const Value& value) override {
        if (!EqualsNoCase(name, L"current")) return false;
        Manager()->SetCurrentLayer(AsLayer(value)->GetName());
        return true;
    }
};

}  // namespace

void RegisterSceneLayerFunctions() {
    RegisterLayerHandler();
    RegisterSystemVariable(L"LayerManager",
                           {[] { return Value::Ext(std::make_shared<LayerManagerValue>()); }, nullptr});
}

}  // namespace hostrt::mxs
